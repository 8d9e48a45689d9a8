#pragma once

#include <string>
#include <vector>

#include "AttributeRegistry.h"
#include "ValueTypes.h"

namespace Tavrine
{

/// What the groups of a registry, which outlives this, are called is told at
/// RedfishConfigSettingManager::GetGroupList.
class SettingGroups
{
  public:
    explicit SettingGroups(const AttributeRegistry& registry);

    /// Of an attribute of that registry.
    std::string GroupOf(const RegistryAttribute& attribute) const;

  private:
    const AttributeRegistry& m_Registry;
    std::vector<std::string> m_MenuNames;
};

/// Every attribute in exactly one group, in the order of the registry.
SettingGroupMap GroupSettings(const AttributeRegistry& registry);

} // namespace Tavrine
