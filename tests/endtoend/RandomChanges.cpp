#include "RandomChanges.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <set>
#include <utility>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>

#include "SharedData.h"

namespace json = boost::json;

namespace endtoend
{
namespace
{

bool Flag(const json::object& attribute, const char* member)
{
    const json::value* flag = attribute.if_contains(member);
    return flag != nullptr && flag->is_bool() && flag->get_bool();
}

std::int64_t Number(const json::object& attribute, const char* member, std::int64_t otherwise)
{
    const json::value* number = attribute.if_contains(member);
    return number != nullptr && number->is_int64() ? number->get_int64() : otherwise;
}

std::optional<rc::Gen<std::string>> EnumerationValue(const json::object& attribute)
{
    std::vector<std::string> names;
    for (const json::value& value : attribute.at("Value").as_array())
    {
        names.emplace_back(value.at("ValueName").as_string());
    }
    return names.empty() ? std::nullopt : std::optional(rc::gen::elementOf(names));
}

/// Bounds and step; a random one, or one of the ends.
std::optional<rc::Gen<std::string>> IntegerValue(const json::object& attribute)
{
    const std::int64_t low = Number(attribute, "LowerBound", 0);
    const std::int64_t high = std::max(low, Number(attribute, "UpperBound", low + 1000));
    const std::int64_t step = std::max<std::int64_t>(1, Number(attribute, "ScalarIncrement", 1));
    const std::int64_t steps = std::min<std::int64_t>((high - low) / step, 1'000'000);
    return rc::gen::map(rc::gen::oneOf(rc::gen::inRange<std::int64_t>(0, steps + 1),
                                       rc::gen::element<std::int64_t>(0, (high - low) / step)),
                        [=](std::int64_t count) { return std::to_string(low + count * step); });
}

/// Letters and digits, which most patterns take, or any text where there is no pattern.
std::optional<rc::Gen<std::string>> StringValue(const json::object& attribute)
{
    constexpr std::int64_t Longest = 24;
    const std::int64_t least = Number(attribute, "MinLength", 0);
    const std::int64_t most = std::max(least, std::min(Longest, Number(attribute, "MaxLength", Longest)));
    const std::vector<std::string> plain = {"a", "F", "0", "7"};
    std::vector<std::string> odd = {" ", "=", "\"", "\\", "\n", "\t", "\x01", "\xC3\xBC", "\xE6\x97\xA5", "#", "{"};
    odd.insert(odd.end(), plain.begin(), plain.end());
    const bool pattern = attribute.contains("ValueExpression");
    return rc::gen::exec(
        [=, pieces = pattern ? plain : odd]
        {
            std::string text;
            for (std::int64_t left = *rc::gen::inRange(least, most + 1); left > 0; --left)
            {
                text += *rc::gen::elementOf(pieces);
            }
            return text;
        });
}

std::optional<rc::Gen<std::string>> BooleanValue(const json::object&)
{
    return rc::gen::element<std::string>("true", "false");
}

struct Kind
{
    const char* Type;
    std::optional<rc::Gen<std::string>> (*Value)(const json::object& attribute);
};

/// An order to the firmware rather than a value: it also fills settings that have no value,
/// and those stand in no saved file.
constexpr const char* LoadDefaults = "SystemRecovery_PostLoadSetupDefault";

/// Settings whose text is empty and gets a least length as others change: a machine that locks such a setting where the
/// empty text is right has no way back to it.
std::set<std::string> WithoutWayBack(const json::object& entries, const json::object& shown)
{
    std::set<std::string> names;
    const json::value* const dependencies = entries.if_contains("Dependencies");
    for (const json::value& entry : dependencies != nullptr ? dependencies->as_array() : json::array())
    {
        const json::object& dependency = entry.at("Dependency").as_object();
        const json::value* const property = dependency.if_contains("MapToProperty");
        const json::string& name = entry.at("DependencyFor").as_string();
        const json::value* const text = shown.if_contains(name);
        if (property != nullptr && *property == "MinLength" && text != nullptr && *text == "")
        {
            names.emplace(name);
        }
    }
    return names;
}

/// Passwords are shown nowhere, and so saved nowhere.
constexpr Kind Kinds[] = {
    {"Enumeration", EnumerationValue}, {"Integer", IntegerValue}, {"String", StringValue}, {"Boolean", BooleanValue}};

} // namespace

std::vector<WritableSetting> WritableSettings(const std::filesystem::path& machineDir)
{
    const json::value bios = json::parse(testdata::ReadFile(machineDir / "bios.json"));
    const json::value registry = json::parse(testdata::ReadFile(machineDir / "registry.en.json"));
    const json::object& shown = bios.at("Attributes").as_object();
    std::vector<WritableSetting> settings;
    if (!bios.as_object().contains("@Redfish.Settings"))
    {
        return settings;
    }
    const std::set<std::string> stuck = WithoutWayBack(registry.at("RegistryEntries").as_object(), shown);
    for (const json::value& entry : registry.at("RegistryEntries").at("Attributes").as_array())
    {
        const json::object& attribute = entry.as_object();
        const json::string& name = attribute.at("AttributeName").as_string();
        const json::value* current = shown.if_contains(name);
        const auto* kind = std::find_if(std::begin(Kinds), std::end(Kinds),
                                        [&](const Kind& one) { return attribute.at("Type").as_string() == one.Type; });
        const bool fixed = Flag(attribute, "ReadOnly") || Flag(attribute, "Immutable") || Flag(attribute, "WriteOnly");
        if (fixed || name == LoadDefaults || stuck.contains(std::string(name)) || current == nullptr ||
            current->is_null() || kind == std::end(Kinds))
        {
            continue;
        }
        if (auto value = kind->Value(attribute))
        {
            settings.push_back({std::string(name), *value, Flag(attribute, "IsSystemUniqueProperty")});
        }
    }
    return settings;
}

rc::Gen<Tavrine::SettingStringMap> RandomChanges(std::vector<WritableSetting> settings, std::size_t most)
{
    // Of full size, or the first runs would change the first settings alone.
    return rc::gen::resize(
        rc::kNominalSize, rc::gen::exec(
                              [settings = std::move(settings), most]
                              {
                                  Tavrine::SettingStringMap changes;
                                  for (std::size_t left = *rc::gen::inRange<std::size_t>(1, most + 1); left > 0; --left)
                                  {
                                      const std::size_t index = *rc::gen::inRange<std::size_t>(0, settings.size());
                                      changes.insert_or_assign(settings[index].Name, *settings[index].Value);
                                  }
                                  return changes;
                              }));
}

} // namespace endtoend
