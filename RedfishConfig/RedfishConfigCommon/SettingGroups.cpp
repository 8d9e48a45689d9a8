#include "SettingGroups.h"

#include <cstddef>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

namespace Tavrine
{

namespace
{

/// One name a menu. Display names repeat, so a name that an earlier menu has
/// bears the menu's path behind it.
std::vector<std::string> MenuGroupNames(const AttributeRegistry& registry)
{
    std::vector<std::string> joined;
    std::vector<std::string> names;
    std::unordered_set<std::string> taken;
    for (const RegistryMenu& menu : registry.Menus)
    {
        const bool isTop = menu.Parent == NoIndex || registry.Menus[menu.Parent].Path.empty();
        joined.push_back(isTop ? menu.DisplayName : joined[menu.Parent] + "/" + menu.DisplayName);
        std::string name = joined.back();
        while (!taken.insert(name).second)
        {
            name += " (./" + menu.Path + ")";
        }
        names.push_back(std::move(name));
    }
    return names;
}

std::string GroupOfUnknownMenu(const RegistryAttribute& attribute)
{
    std::string path = attribute.MenuPath.value_or("");
    if (NormalisedMenuPath(path).empty())
    {
        return "Other";
    }
    while (path.ends_with('/'))
    {
        path.pop_back();
    }
    return path;
}

} // namespace

SettingGroups::SettingGroups(const AttributeRegistry& registry)
    : m_Registry(registry), m_MenuNames(MenuGroupNames(registry))
{
}

std::string SettingGroups::GroupOf(const RegistryAttribute& attribute) const
{
    return m_Registry.Menus.empty() ? "BIOS"
           : attribute.MenuIsKnown  ? m_MenuNames[attribute.Menu]
                                    : GroupOfUnknownMenu(attribute);
}

SettingGroupMap GroupSettings(const AttributeRegistry& registry)
{
    const SettingGroups names(registry);
    SettingGroupMap groups;
    for (const RegistryAttribute& attribute : registry.Attributes)
    {
        groups[names.GroupOf(attribute)].push_back(attribute.Name());
    }
    return groups;
}

} // namespace Tavrine
