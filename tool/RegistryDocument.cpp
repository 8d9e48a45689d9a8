#include "RegistryDocument.h"

#include <algorithm>
#include <set>
#include <string_view>

#include <boost/json/array.hpp>
#include <boost/json/monotonic_resource.hpp>
#include <boost/json/parse.hpp>

namespace json = boost::json;

namespace Tavrine::Tool
{
namespace
{

std::string TextOf(const json::object& object, const char* member)
{
    const json::value* value = object.if_contains(member);
    const json::string* text = value != nullptr ? value->if_string() : nullptr;
    return text != nullptr ? std::string(*text) : std::string();
}

/// Calls `act` with each object of an array member.
template <typename Act> void ForEachObject(const json::object& owner, const char* member, const Act& act)
{
    const json::value* value = owner.if_contains(member);
    const json::array* array = value != nullptr ? value->if_array() : nullptr;
    if (array == nullptr)
    {
        return;
    }
    for (const json::value& element : *array)
    {
        if (const json::object* object = element.if_object())
        {
            act(*object);
        }
    }
}

/// "./A/B/" and "/A/B" are "A/B".
std::string NormalPath(std::string_view path)
{
    std::string normal;
    while (!path.empty())
    {
        const std::string_view part = path.substr(0, path.find('/'));
        if (!part.empty() && part != ".")
        {
            normal += (normal.empty() ? "" : "/") + std::string(part);
        }
        path.remove_prefix(std::min(part.size() + 1, path.size()));
    }
    return normal;
}

/// A menu holds what stands in it and in the menus below.
bool StandsIn(const std::string& path, const std::string& menu)
{
    return menu.empty() || path == menu || path.starts_with(menu + "/");
}

} // namespace

bool RegistryDocument::Read(const std::string& text)
{
    json::error_code failure;
    m_Document.emplace(json::parse(text, failure, json::make_shared_resource<json::monotonic_resource>()));
    const json::object* root = failure ? nullptr : m_Document->if_object();
    const json::value* entries = root != nullptr ? root->if_contains("RegistryEntries") : nullptr;
    if (entries == nullptr || !entries->is_object())
    {
        return false;
    }
    ReadSettings(entries->get_object());
    ReadDependencies(entries->get_object());
    return true;
}

void RegistryDocument::ReadSettings(const json::object& entries)
{
    ForEachObject(entries, "Attributes",
                  [&](const json::object& attribute)
                  {
                      RegistrySetting setting;
                      setting.Name = TextOf(attribute, "AttributeName");
                      if (setting.Name.empty() || !m_Index.emplace(setting.Name, m_Settings.size()).second)
                      {
                          return;
                      }
                      setting.Type = TextOf(attribute, "Type");
                      setting.DisplayName = TextOf(attribute, "DisplayName");
                      setting.HelpText = TextOf(attribute, "HelpText");
                      setting.WarningText = TextOf(attribute, "WarningText");
                      setting.Members = &attribute;
                      ForEachObject(attribute, "Value",
                                    [&](const json::object& value)
                                    {
                                        setting.ValueTexts.push_back(TextOf(value, "ValueName"));
                                        setting.ValueTexts.push_back(TextOf(value, "ValueDisplayName"));
                                    });
                      if (attribute.contains("MenuPath"))
                      {
                          m_MenuPaths[setting.Name] = NormalPath(TextOf(attribute, "MenuPath"));
                      }
                      m_Settings.push_back(std::move(setting));
                  });
}

void RegistryDocument::ReadDependencies(const json::object& entries)
{
    std::map<std::string, std::string> menus;
    ForEachObject(entries, "Menus",
                  [&](const json::object& menu)
                  { menus.emplace(TextOf(menu, "MenuName"), NormalPath(TextOf(menu, "MenuPath"))); });
    ForEachObject(entries, "Dependencies",
                  [&](const json::object& entry)
                  {
                      const json::value* body = entry.if_contains("Dependency");
                      const json::object* map = body != nullptr ? body->if_object() : nullptr;
                      if (map == nullptr)
                      {
                          return;
                      }
                      Dependency dependency;
                      const std::string target = TextOf(*map, "MapToAttribute");
                      if (m_Index.contains(target))
                      {
                          dependency.Attribute = target;
                      }
                      else if (const auto menu = menus.find(target); menu != menus.end())
                      {
                          dependency.MenuPath = menu->second;
                      }
                      ForEachObject(*map, "MapFrom",
                                    [&](const json::object& term)
                                    { dependency.From.push_back(TextOf(term, "MapFromAttribute")); });
                      m_Dependencies.push_back(std::move(dependency));
                  });
}

const RegistrySetting* RegistryDocument::Find(const std::string& name) const
{
    const auto found = m_Index.find(name);
    return found == m_Index.end() ? nullptr : &m_Settings[found->second];
}

bool RegistryDocument::Forces(const Dependency& dependency, const std::string& name) const
{
    if (!dependency.MenuPath)
    {
        return dependency.Attribute == name;
    }
    const auto path = m_MenuPaths.find(name);
    return path != m_MenuPaths.end() && StandsIn(path->second, *dependency.MenuPath);
}

SettingRelations RegistryDocument::Sort(const std::string& name, const std::vector<std::string>& related) const
{
    std::set<std::string> sources;
    std::vector<const Dependency*> effects;
    for (const Dependency& dependency : m_Dependencies)
    {
        if (Forces(dependency, name))
        {
            sources.insert(dependency.From.begin(), dependency.From.end());
        }
        if (std::find(dependency.From.begin(), dependency.From.end(), name) != dependency.From.end())
        {
            effects.push_back(&dependency);
        }
    }
    SettingRelations relations;
    for (const std::string& other : related)
    {
        if (sources.contains(other))
        {
            relations.DependsOn.push_back(other);
        }
        if (std::any_of(effects.begin(), effects.end(),
                        [&](const Dependency* effect) { return Forces(*effect, other); }))
        {
            relations.NeededBy.push_back(other);
        }
    }
    return relations;
}

} // namespace Tavrine::Tool
