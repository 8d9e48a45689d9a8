#include "SoakModel.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <utility>

#include <boost/json/array.hpp>
#include <boost/json/serialize.hpp>

namespace json = boost::json;

namespace soak
{
namespace
{

constexpr const char* Locks[] = {"ReadOnly", "GrayOut", "Hidden", "Immutable", "WriteOnly", "IsSystemUniqueProperty"};

bool IsSet(const json::object& object, const char* member)
{
    const json::value* value = object.if_contains(member);
    return value != nullptr && value->is_bool() && value->get_bool();
}

std::string Text(const json::object& object, const char* member)
{
    const json::value* value = object.if_contains(member);
    return value != nullptr && value->is_string() ? std::string(value->get_string()) : std::string();
}

std::int64_t Number(const json::object& object, const char* member, std::int64_t otherwise)
{
    const json::value* value = object.if_contains(member);
    return value != nullptr && value->is_int64() ? value->get_int64() : otherwise;
}

/// Attributes and menus that some dependency names.
std::set<std::string> Related(const json::object& entries)
{
    std::set<std::string> names;
    for (const json::value& entry : entries.at("Dependencies").as_array())
    {
        const json::object& dependency = entry.at("Dependency").as_object();
        names.insert(Text(dependency, "MapToAttribute"));
        for (const json::value& term : dependency.at("MapFrom").as_array())
        {
            names.insert(Text(term.as_object(), "MapFromAttribute"));
        }
    }
    return names;
}

/// Paths of menus that lock, or that a dependency may lock, what stands in them.
std::vector<std::string> LockedMenus(const json::object& entries, const std::set<std::string>& related)
{
    std::vector<std::string> paths;
    for (const json::value& entry : entries.at("Menus").as_array())
    {
        const json::object& menu = entry.as_object();
        if (related.contains(Text(menu, "MenuName")) ||
            std::any_of(std::begin(Locks), std::end(Locks), [&](const char* lock) { return IsSet(menu, lock); }))
        {
            paths.push_back(Text(menu, "MenuPath"));
        }
    }
    return paths;
}

std::vector<json::value> NumbersOf(const json::object& attribute)
{
    const std::int64_t low = Number(attribute, "LowerBound", 0);
    const std::int64_t high = Number(attribute, "UpperBound", low + 100);
    const std::int64_t step = std::max<std::int64_t>(Number(attribute, "ScalarIncrement", 1), 1);
    const std::int64_t steps = (high - low) / step;
    return {low, low + step * (steps / 3), low + step * (steps / 2), low + step * steps};
}

std::vector<json::value> TextsOf(const json::object& attribute)
{
    const auto shortest = static_cast<std::size_t>(std::max<std::int64_t>(Number(attribute, "MinLength", 0), 0));
    const auto longest = static_cast<std::size_t>(Number(attribute, "MaxLength", 8));
    std::vector<json::value> texts;
    for (const std::size_t length : {std::max<std::size_t>(shortest, 1), (shortest + longest) / 2, longest})
    {
        texts.emplace_back(std::string(length, static_cast<char>('a' + length % 26)));
    }
    return texts;
}

std::vector<json::value> ValuesOf(const json::object& attribute)
{
    const std::string type = Text(attribute, "Type");
    if (type == "Boolean")
    {
        return {true, false};
    }
    if (type == "Integer")
    {
        return NumbersOf(attribute);
    }
    if (type == "String" && !attribute.contains("ValueExpression"))
    {
        return TextsOf(attribute);
    }
    std::vector<json::value> names;
    if (type == "Enumeration")
    {
        for (const json::value& value : attribute.at("Value").as_array())
        {
            names.push_back(value.at("ValueName"));
        }
    }
    return names;
}

} // namespace

std::vector<Setting> FreeSettings(const json::value& registry, const json::object& inForce)
{
    const json::object& entries = registry.at("RegistryEntries").as_object();
    const std::set<std::string> related = Related(entries);
    const std::vector<std::string> menus = LockedMenus(entries, related);
    std::vector<Setting> settings;
    for (const json::value& entry : entries.at("Attributes").as_array())
    {
        const json::object& attribute = entry.as_object();
        const std::string name = Text(attribute, "AttributeName");
        const std::string path = Text(attribute, "MenuPath");
        const json::value* value = inForce.if_contains(name);
        const bool locked =
            std::any_of(std::begin(Locks), std::end(Locks), [&](const char* lock) { return IsSet(attribute, lock); }) ||
            std::any_of(menus.begin(), menus.end(), [&](const std::string& menu) { return path.starts_with(menu); });
        if (locked || related.contains(name) || value == nullptr || value->is_null() || name == DefaultsWish ||
            !attribute.contains("DefaultValue"))
        {
            continue;
        }
        if (std::vector<json::value> values = ValuesOf(attribute); !values.empty())
        {
            settings.push_back({name, attribute.at("DefaultValue"), std::move(values)});
        }
    }
    return settings;
}

std::string TextOf(const json::value& value)
{
    const json::string* text = value.if_string();
    return text != nullptr ? std::string(*text) : json::serialize(value);
}

void Model::ResetBios()
{
    DefaultsDue = true;
    Pending.clear();
    ProtectedPending.clear();
}

bool Model::Restart(const std::vector<Setting>& settings, const std::vector<Setting>& guarded)
{
    const json::value* wish = Pending.if_contains(DefaultsWish);
    const bool load = DefaultsDue || (wish != nullptr && *wish == "Enabled");
    const auto start = [load](const std::vector<Setting>& known, json::object& inForce, json::object& pending)
    {
        for (std::size_t index = 0; load && index < known.size(); ++index)
        {
            inForce[known[index].Name] = known[index].Default;
        }
        for (const auto& [name, value] : pending)
        {
            inForce[name] = value;
        }
        pending.clear();
    };
    start(settings, InForce, Pending);
    start(guarded, ProtectedInForce, ProtectedPending);
    if (load)
    {
        InForce[DefaultsWish] = "Disabled";
    }
    DefaultsDue = false;
    return load;
}

std::map<std::string, std::pair<std::string, std::string>> Model::Waiting() const
{
    std::map<std::string, std::pair<std::string, std::string>> waiting;
    for (const auto& [name, value] : Pending)
    {
        if (const json::value& current = InForce.at(name); current != value)
        {
            waiting[name] = {TextOf(current), TextOf(value)};
        }
    }
    return waiting;
}

std::string Differences(const json::object& expected, const json::object& found)
{
    std::string text;
    std::set<std::string> names;
    for (const json::object* object : {&expected, &found})
    {
        for (const auto& member : *object)
        {
            names.emplace(member.key());
        }
    }
    for (const std::string& name : names)
    {
        const json::value* left = expected.if_contains(name);
        const json::value* right = found.if_contains(name);
        if (left == nullptr || right == nullptr || *left != *right)
        {
            text += " " + name + ": expected " + (left != nullptr ? json::serialize(*left) : "nothing") + ", found " +
                    (right != nullptr ? json::serialize(*right) : "nothing") + ";";
        }
    }
    return text;
}

} // namespace soak
