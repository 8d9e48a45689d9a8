#include "GeneratedMachine.h"

#include <boost/json/array.hpp>
#include <fmt/format.h>

namespace bmcsim
{
namespace
{

namespace json = boost::json;

constexpr unsigned int AttributesOfMenu = 40;
constexpr unsigned int MenusOfSection = 10;
constexpr unsigned int DependencyEvery = 5;
constexpr unsigned int ProtectedEvery = 50;
constexpr unsigned int Kinds = 10;

struct Generated
{
    json::object Entry;
    json::value Current;
};

std::string AttributeName(unsigned int index) { return fmt::format("Setting{:06}", index); }

std::string MenuPath(unsigned int menu) { return fmt::format("./Section{}/Group{}", menu / MenusOfSection, menu); }

json::object MakeMenu(const std::string& path, unsigned int order)
{
    const std::string name = path.substr(path.rfind('/') + 1);
    return {{"MenuName", name},  {"DisplayName", name}, {"DisplayOrder", order}, {"MenuPath", path},
            {"ReadOnly", false}, {"GrayOut", false},    {"Hidden", false}};
}

json::object MakeEntry(unsigned int index, const char* type)
{
    const std::string name = AttributeName(index);
    return {
        {"AttributeName", name},
        {"Type", type},
        {"DisplayName", fmt::format("Setting {}", index)},
        {"HelpText", fmt::format("Generated setting number {}, of no effect on anything.", index)},
        {"MenuPath", MenuPath(index / AttributesOfMenu)},
        {"DisplayOrder", index},
        {"ReadOnly", false},
        {"GrayOut", false},
        {"Hidden", false},
        {"ResetRequired", true},
    };
}

Generated MakeEnumeration(unsigned int index)
{
    json::object entry = MakeEntry(index, "Enumeration");
    json::array names;
    for (const char* name : {"Disabled", "Enabled", "Auto"})
    {
        names.push_back(json::object{{"ValueName", name}, {"ValueDisplayName", name}});
    }
    entry["Value"] = std::move(names);
    entry["DefaultValue"] = "Enabled";
    return {std::move(entry), "Enabled"};
}

Generated MakeInteger(unsigned int index)
{
    json::object entry = MakeEntry(index, "Integer");
    entry["LowerBound"] = 0;
    entry["UpperBound"] = 1000;
    entry["ScalarIncrement"] = 10;
    entry["DefaultValue"] = 100;
    return {std::move(entry), (index % 100) * 10};
}

Generated MakeBoolean(unsigned int index)
{
    json::object entry = MakeEntry(index, "Boolean");
    entry["DefaultValue"] = false;
    return {std::move(entry), index % 4 == 0};
}

Generated MakeText(unsigned int index)
{
    json::object entry = MakeEntry(index, "String");
    entry["MinLength"] = 0;
    entry["MaxLength"] = 64;
    entry["DefaultValue"] = "";
    return {std::move(entry), json::string(fmt::format("text {}", index))};
}

Generated Make(unsigned int index)
{
    switch (index % Kinds)
    {
    case 6:
    case 7:
        return MakeInteger(index);
    case 8:
        return MakeBoolean(index);
    case 9:
        return MakeText(index);
    default:
        return MakeEnumeration(index);
    }
}

/// Grays a setting out while the enumeration before it is off, which at first none is.
json::object MakeDependency(unsigned int index)
{
    const unsigned int source = index - index % Kinds;
    json::object term{{"MapFromAttribute", AttributeName(source)},
                      {"MapFromProperty", "CurrentValue"},
                      {"MapFromCondition", "EQU"},
                      {"MapFromValue", "Disabled"}};
    json::object body{{"MapFrom", json::array{std::move(term)}},
                      {"MapToAttribute", AttributeName(index)},
                      {"MapToProperty", "GrayOut"},
                      {"MapToValue", true}};
    return {{"DependencyFor", AttributeName(index)}, {"Type", "Map"}, {"Dependency", std::move(body)}};
}

json::array MakeMenus(unsigned int attributes)
{
    json::array menus;
    const unsigned int count = (attributes + AttributesOfMenu - 1) / AttributesOfMenu;
    for (unsigned int menu = 0; menu < count; ++menu)
    {
        const std::string path = MenuPath(menu);
        if (menu % MenusOfSection == 0)
        {
            menus.push_back(MakeMenu(path.substr(0, path.rfind('/')), menu));
        }
        menus.push_back(MakeMenu(path, menu));
    }
    return menus;
}

json::object MakeBios(const std::string& registry, json::object values)
{
    return {
        {"@odata.id", "/redfish/v1/Systems/1/Bios"},
        {"@odata.type", "#Bios.v1_2_0.Bios"},
        {"Id", "Bios"},
        {"Name", "BIOS Current Settings"},
        {"AttributeRegistry", registry},
        {"Attributes", std::move(values)},
        {"@Redfish.Settings",
         json::object{{"@odata.type", "#Settings.v1_3_3.Settings"},
                      {"SettingsObject", json::object{{"@odata.id", "/redfish/v1/Systems/1/Bios/Settings"}}},
                      {"Messages", json::array()}}},
        {"Actions", json::object{{"#Bios.ResetBios",
                                  json::object{{"target", "/redfish/v1/Systems/1/Bios/Actions/Bios.ResetBios"}}}}},
    };
}

} // namespace

std::map<std::string, json::object> GenerateFiles(unsigned int attributes)
{
    json::array entries;
    json::array dependencies;
    json::object values;
    json::object guarded;
    for (unsigned int index = 0; index < attributes; ++index)
    {
        auto [entry, current] = Make(index);
        json::object& place = index % ProtectedEvery == ProtectedEvery - 1 ? guarded : values;
        place.emplace(AttributeName(index), std::move(current));
        entries.push_back(std::move(entry));
        if (index % DependencyEvery == DependencyEvery - 1)
        {
            dependencies.push_back(MakeDependency(index));
        }
    }
    const std::string name = fmt::format("BiosAttributeRegistryGenerated{}.v1_0_0", attributes);
    json::object system{{"ProductName", fmt::format("Zorvan Generated {}", attributes)},
                        {"SystemId", "GEN"},
                        {"FirmwareVersion", "GEN 1.00"}};
    json::object registry{
        {"@odata.type", "#AttributeRegistry.v1_3_6.AttributeRegistry"},
        {"Id", name},
        {"Name", "Generated BIOS Attribute Registry"},
        {"Language", "en"},
        {"OwningEntity", "Zorvan"},
        {"RegistryVersion", "1.0.0"},
        {"SupportedSystems", json::array{std::move(system)}},
        {"RegistryEntries", json::object{{"Menus", MakeMenus(attributes)},
                                         {"Attributes", std::move(entries)},
                                         {"Dependencies", std::move(dependencies)}}},
    };
    return {{"bios.json", MakeBios(name, std::move(values))},
            {"protected.json", json::object{{"Attributes", std::move(guarded)}}},
            {"registry.en.json", std::move(registry)}};
}

} // namespace bmcsim
