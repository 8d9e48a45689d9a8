#include "SettingModel.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <utility>

namespace Tavrine
{

namespace
{

template <class Less> std::vector<std::size_t> SortedBy(const AttributeRegistry& registry, const Less& less)
{
    std::vector<std::size_t> sorted(registry.Attributes.size());
    std::iota(sorted.begin(), sorted.end(), std::size_t{0});
    const auto before = [&](std::size_t left, std::size_t right)
    { return less(registry.Attributes[left].Name(), registry.Attributes[right].Name()); };
    // Many registries are in order.
    if (!std::is_sorted(sorted.begin(), sorted.end(), before))
    {
        std::sort(sorted.begin(), sorted.end(), before);
    }
    return sorted;
}

void SortUnique(std::vector<std::size_t>& indexes)
{
    std::sort(indexes.begin(), indexes.end());
    indexes.erase(std::unique(indexes.begin(), indexes.end()), indexes.end());
}

} // namespace

SettingModel::SettingModel(AttributeRegistry registry)
    : m_Registry(std::move(registry)), m_DependenciesOn(m_Registry.Attributes.size() + m_Registry.Menus.size()),
      m_DependenciesFrom(m_Registry.Attributes.size()), m_SettingsOfMenu(m_Registry.Menus.size()),
      m_ChildMenus(m_Registry.Menus.size())
{
    IndexDependencies();
    for (std::size_t attribute = 0; attribute < m_Registry.Attributes.size(); ++attribute)
    {
        if (m_Registry.Attributes[attribute].Menu != NoIndex)
        {
            m_SettingsOfMenu[m_Registry.Attributes[attribute].Menu].push_back(attribute);
        }
    }
    for (std::size_t menu = 0; menu < m_Registry.Menus.size(); ++menu)
    {
        if (m_Registry.Menus[menu].Parent != NoIndex)
        {
            m_ChildMenus[m_Registry.Menus[menu].Parent].push_back(menu);
        }
    }
}

std::size_t SettingModel::OwnerOf(const RegistryDependency& dependency) const
{
    return dependency.Attribute != NoIndex ? dependency.Attribute : m_Registry.Attributes.size() + dependency.Menu;
}

void SettingModel::IndexDependencies()
{
    m_SlotOfDependency.reserve(m_Registry.Dependencies.size());
    for (std::size_t index = 0; index < m_Registry.Dependencies.size(); ++index)
    {
        const RegistryDependency& dependency = m_Registry.Dependencies[index];
        const std::size_t owner = OwnerOf(dependency);
        const std::size_t key = owner * PropertyCount + static_cast<std::size_t>(dependency.Property);
        const auto [slot, isNew] = m_SlotIndex.try_emplace(key, m_Slots.size());
        if (isNew)
        {
            m_Slots.push_back(dependency.Property);
        }
        m_SlotOfDependency.push_back(slot->second);
        m_DependenciesOn[owner].push_back(index);
        for (const DependencyTerm& term : dependency.Terms)
        {
            if (term.Attribute != NoIndex)
            {
                m_DependenciesFrom[term.Attribute].push_back(index);
            }
        }
    }
}

std::size_t SettingModel::FindSlot(std::size_t owner, SettingProperty property) const
{
    const auto found = m_SlotIndex.find(owner * PropertyCount + static_cast<std::size_t>(property));
    return found != m_SlotIndex.end() ? found->second : NoIndex;
}

std::size_t SettingModel::SlotOfAttribute(std::size_t attribute, SettingProperty property) const
{
    return HasDependencies(attribute) ? FindSlot(attribute, property) : NoIndex;
}

std::size_t SettingModel::SlotOfMenu(std::size_t menu, SettingProperty flag) const
{
    return FindSlot(m_Registry.Attributes.size() + menu, flag);
}

/// What its dependencies and those of its menus read.
std::vector<std::size_t> SettingModel::Sources(std::size_t attribute) const
{
    std::vector<std::size_t> sources;
    const auto add = [&](std::size_t owner)
    {
        for (const std::size_t dependency : m_DependenciesOn[owner])
        {
            for (const DependencyTerm& term : m_Registry.Dependencies[dependency].Terms)
            {
                sources.push_back(term.Attribute);
            }
        }
    };
    add(attribute);
    for (std::size_t menu = Attribute(attribute).Menu; menu != NoIndex; menu = m_Registry.Menus[menu].Parent)
    {
        add(m_Registry.Attributes.size() + menu);
    }
    return sources;
}

/// What the dependencies that read it force.
std::vector<std::size_t> SettingModel::Targets(std::size_t attribute) const
{
    std::vector<std::size_t> targets;
    std::vector<std::size_t> menus;
    for (const std::size_t dependency : m_DependenciesFrom[attribute])
    {
        targets.push_back(m_Registry.Dependencies[dependency].Attribute);
        if (const std::size_t menu = m_Registry.Dependencies[dependency].Menu; menu != NoIndex)
        {
            menus.push_back(menu);
        }
    }
    if (!menus.empty())
    {
        AddSettingsBelow(std::move(menus), targets);
    }
    return targets;
}

std::vector<std::string> SettingModel::NamesOf(std::vector<std::size_t> attributes, std::size_t but) const
{
    SortUnique(attributes);
    std::vector<std::string> names;
    for (const std::size_t attribute : attributes)
    {
        if (attribute != but && attribute != NoIndex)
        {
            names.push_back(Attribute(attribute).Name());
        }
    }
    return names;
}

std::vector<std::string> SettingModel::RelatedSettings(std::size_t attribute) const
{
    std::vector<std::size_t> related = Sources(attribute);
    const std::vector<std::size_t> targets = Targets(attribute);
    related.insert(related.end(), targets.begin(), targets.end());
    return NamesOf(std::move(related), attribute);
}

RedfishConfigSettingRelations SettingModel::Relations(std::size_t attribute) const
{
    return {NamesOf(Sources(attribute), attribute), NamesOf(Targets(attribute), attribute)};
}

void SettingModel::AddSettingsBelow(std::vector<std::size_t> menus, std::vector<std::size_t>& settings) const
{
    SortUnique(menus);
    std::vector<bool> seen(m_Registry.Menus.size());
    while (!menus.empty())
    {
        const std::size_t menu = menus.back();
        menus.pop_back();
        if (seen[menu])
        {
            continue;
        }
        seen[menu] = true;
        settings.insert(settings.end(), m_SettingsOfMenu[menu].begin(), m_SettingsOfMenu[menu].end());
        menus.insert(menus.end(), m_ChildMenus[menu].begin(), m_ChildMenus[menu].end());
    }
}

std::string SettingModel::GroupOf(std::size_t attribute) const
{
    std::call_once(m_GroupsNamed, [this] { m_Groups.emplace(m_Registry); });
    return m_Groups->GroupOf(Attribute(attribute));
}

const std::vector<std::size_t>& SettingModel::ByName() const
{
    std::call_once(m_NamesSorted, [this] { m_ByName = SortedBy(m_Registry, std::less<>()); });
    return m_ByName;
}

const std::vector<std::size_t>& SettingModel::ByLoweredName() const
{
    std::call_once(m_LoweredNamesSorted,
                   [this] { m_ByLoweredName = SortedBy(m_Registry, CaseInsensitiveComparator()); });
    return m_ByLoweredName;
}

std::vector<std::size_t> SettingModel::AttributesNamed(const std::string& name) const
{
    const CaseInsensitiveComparator less;
    const std::vector<std::size_t>& sorted = ByLoweredName();
    const auto first = std::lower_bound(sorted.begin(), sorted.end(), name,
                                        [&](std::size_t index, const std::string& wanted)
                                        { return less(Attribute(index).Name(), wanted); });
    const auto last =
        std::find_if(first, sorted.end(), [&](std::size_t index) { return less(name, Attribute(index).Name()); });
    return {first, last};
}

std::optional<std::string> SettingModel::NameDifferingInCase(const std::string& name) const
{
    if (name.empty())
    {
        return std::nullopt; // no other name is as long, so none of them need be sorted
    }
    const std::vector<std::size_t> named = AttributesNamed(name);
    return named.size() == 1 ? std::optional(Attribute(named.front()).Name()) : std::nullopt;
}

} // namespace Tavrine
