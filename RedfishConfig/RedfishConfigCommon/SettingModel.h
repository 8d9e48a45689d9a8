#pragma once

#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "AttributeRegistry.h"
#include "SettingGroups.h"

namespace Tavrine
{

/// A registry and the indexes that keep every question about it cheap. Never
/// changed once built, so it is shared freely.
class SettingModel
{
  public:
    explicit SettingModel(AttributeRegistry registry);

    const AttributeRegistry& Registry() const { return m_Registry; }
    const RegistryAttribute& Attribute(std::size_t index) const { return m_Registry.Attributes[index]; }

    /// A slot is what dependencies can force, a property of one attribute or a flag of one menu; by slot, which.
    const std::vector<SettingProperty>& Slots() const { return m_Slots; }
    std::size_t SlotOfDependency(std::size_t dependency) const { return m_SlotOfDependency[dependency]; }
    /// Whether dependencies name it as what they force.
    bool HasDependencies(std::size_t attribute) const { return !m_DependenciesOn[attribute].empty(); }
    /// NoIndex where no dependency forces it.
    std::size_t SlotOfAttribute(std::size_t attribute, SettingProperty property) const;
    std::size_t SlotOfMenu(std::size_t menu, SettingProperty flag) const;

    /// The name of its group, as GroupSettings has it.
    std::string GroupOf(std::size_t attribute) const;

    /// All attributes in the order of their names.
    const std::vector<std::size_t>& ByName() const;

    /// The other settings that dependencies connect with this one, in either
    /// direction, each once, in the order of the registry.
    std::vector<std::string> RelatedSettings(std::size_t attribute) const;
    /// The same, by the direction.
    RedfishConfigSettingRelations Relations(std::size_t attribute) const;

    /// The one name that differs from `name` in case alone; nothing for none or
    /// several.
    std::optional<std::string> NameDifferingInCase(const std::string& name) const;
    /// The attributes of this name, whatever its case.
    std::vector<std::size_t> AttributesNamed(const std::string& name) const;

  private:
    std::size_t FindSlot(std::size_t owner, SettingProperty property) const;
    std::size_t OwnerOf(const RegistryDependency& dependency) const;
    void IndexDependencies();
    std::vector<std::size_t> Sources(std::size_t attribute) const;
    std::vector<std::size_t> Targets(std::size_t attribute) const;
    std::vector<std::string> NamesOf(std::vector<std::size_t> attributes, std::size_t but) const;
    void AddSettingsBelow(std::vector<std::size_t> menus, std::vector<std::size_t>& settings) const;

    AttributeRegistry m_Registry;
    std::vector<SettingProperty> m_Slots;
    std::vector<std::size_t> m_SlotOfDependency;
    std::unordered_map<std::size_t, std::size_t> m_SlotIndex;
    /// Dependencies by what they force (attributes, then menus) and by the
    /// attributes that they read.
    std::vector<std::vector<std::size_t>> m_DependenciesOn;
    std::vector<std::vector<std::size_t>> m_DependenciesFrom;
    std::vector<std::vector<std::size_t>> m_SettingsOfMenu;
    std::vector<std::vector<std::size_t>> m_ChildMenus;
    const std::vector<std::size_t>& ByLoweredName() const;

    /// Attribute indexes, by name and in the order of CaseInsensitiveComparator; sorted at the first
    /// question, since most runs have none.
    mutable std::vector<std::size_t> m_ByName;
    mutable std::once_flag m_NamesSorted;
    mutable std::vector<std::size_t> m_ByLoweredName;
    mutable std::once_flag m_LoweredNamesSorted;
    /// Made at the first question as well.
    mutable std::optional<SettingGroups> m_Groups;
    mutable std::once_flag m_GroupsNamed;
};

} // namespace Tavrine
