#pragma once

#include "AttributeRegistry.h"
#include "ValueTypes.h"

namespace Tavrine
{

/// Every attribute in exactly one group, in the order of the registry. What the
/// groups are called is told at RedfishConfigSettingManager::GetGroupList.
SettingGroupMap GroupSettings(const AttributeRegistry& registry);

} // namespace Tavrine
