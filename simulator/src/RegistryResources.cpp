#include "RegistryResources.h"

#include "JsonFile.h"
#include "ServicePaths.h"

#include <boost/json/array.hpp>
#include <fmt/format.h>
#include <set>
#include <string_view>
#include <utility>

namespace bmcsim
{
namespace
{

namespace json = boost::json;

constexpr const char* RegistriesPath = "/redfish/v1/Registries";

json::object MakeRegistryFile(const std::string& name, const Registries& registries)
{
    json::array languages;
    json::array locations;
    for (const auto& [language, registry] : registries)
    {
        const std::string own = FindText(registry, "@odata.id");
        const std::string uri = own.empty() ? fmt::format("{}/{}.{}.json", RegistriesPath, name, language) : own;
        languages.emplace_back(language);
        locations.emplace_back(json::object{{"Language", language}, {"Uri", uri}});
    }
    return {
        {"@odata.id", fmt::format("{}/{}", RegistriesPath, name)},
        {"@odata.type", "#MessageRegistryFile.v1_1_3.MessageRegistryFile"},
        {"Id", name},
        {"Name", name + " Registry File"},
        {"Languages", std::move(languages)},
        {"Registry", name},
        {"Location", std::move(locations)},
    };
}

/// The registry for a language tag: "en-US" also finds that of "en".
Registries::const_iterator FindLanguage(const Registries& registries, const std::string& tag)
{
    const auto exact = registries.find(tag);
    return exact != registries.end() ? exact : registries.find(tag.substr(0, tag.find('-')));
}

/// Manufacturer and the like, as far as a registry tells them.
json::object DescribeProduct(const Machine& machine)
{
    for (const auto& [path, resource] : machine.Resources)
    {
        const json::array* systems = FindArray(resource, "SupportedSystems");
        const json::object* system = systems != nullptr && !systems->empty() ? systems->front().if_object() : nullptr;
        if (system != nullptr)
        {
            return {
                {"Manufacturer", FindText(resource, "OwningEntity")},
                {"Model", FindText(*system, "ProductName")},
                {"BiosVersion", FindText(*system, "FirmwareVersion")},
            };
        }
    }
    return {{"Manufacturer", "Unknown"}, {"Model", "Simulated Server"}, {"BiosVersion", "Unknown"}};
}

json::object Link(const std::string& path) { return {{"@odata.id", path}}; }

json::object MakeSystem(const Machine& machine)
{
    const std::string path = SystemPath(machine);
    json::object reset{
        {"target", UsualResetTarget(machine)},
        {"ResetType@Redfish.AllowableValues",
         json::array{"On", "ForceOff", "GracefulShutdown", "GracefulRestart", "ForceRestart", "PowerCycle"}},
    };
    json::object system{
        {"@odata.id", path},
        {"@odata.type", "#ComputerSystem.v1_13_0.ComputerSystem"},
        {"Id", machine.SystemId},
        {"Name", "Computer System"},
        {"SystemType", "Physical"},
        {"SerialNumber", "SIM0000001"},
        {"UUID", "5a1d3f00-7c1e-4b7e-9d52-0c5b6d2e9a01"},
        {"PowerState", "On"},
        {"BootProgress", json::object{{"LastState", "OSRunning"}}},
        {"Status", json::object{{"State", "Enabled"}, {"Health", "OK"}}},
        {"Bios", Link(path + "/Bios")},
        {"Actions", json::object{{"#ComputerSystem.Reset", std::move(reset)}}},
    };
    for (auto& [name, value] : DescribeProduct(machine))
    {
        system.emplace(name, value);
    }
    if (!machine.Bios)
    {
        system.erase("Bios");
    }
    return system;
}

json::object MakeServiceRoot()
{
    json::object features{
        {"ExcerptQuery", false},
        {"FilterQuery", false},
        {"OnlyMemberQuery", false},
        {"SelectQuery", false},
        {"ExpandQuery", json::object{{"ExpandAll", false}, {"Levels", false}, {"Links", false}, {"NoLinks", false}}},
    };
    return {
        {"@odata.id", "/redfish/v1/"},
        {"@odata.type", "#ServiceRoot.v1_9_0.ServiceRoot"},
        {"Id", "RootService"},
        {"Name", "Root Service"},
        {"RedfishVersion", "1.15.0"},
        {"UUID", "0f7c2f6e-5b4a-4a57-8a35-6a2f1f2f5e10"},
        {"ProtocolFeaturesSupported", std::move(features)},
        {"Systems", Link(SystemsPath)},
        {"Registries", Link(RegistriesPath)},
        {"SessionService", Link("/redfish/v1/SessionService")},
        {"Links", json::object{{"Sessions", Link("/redfish/v1/SessionService/Sessions")}}},
    };
}

json::object MakeServiceDocument()
{
    json::array entries;
    for (const auto& [name, url] :
         {std::pair{"Service", "/redfish/v1/"}, std::pair{"Systems", SystemsPath},
          std::pair{"Registries", "/redfish/v1/Registries"}, std::pair{"SessionService", "/redfish/v1/SessionService"}})
    {
        entries.push_back(json::object{{"name", name}, {"kind", "Singleton"}, {"url", url}});
    }
    return {{"@odata.context", "/redfish/v1/$metadata"}, {"value", std::move(entries)}};
}

json::object MakeCollection(const char* path, const char* type, const char* name, json::array members)
{
    return {
        {"@odata.id", path},
        {"@odata.type", type},
        {"Name", name},
        {"Members@odata.count", members.size()},
        {"Members", std::move(members)},
    };
}

json::array RegistryFileLinks(const Machine& machine)
{
    json::array members;
    for (const auto& [path, resource] : machine.Resources)
    {
        if (FindText(resource, "@odata.type").starts_with("#MessageRegistryFile."))
        {
            members.emplace_back(Link(path));
        }
    }
    return members;
}

} // namespace

void AddRegistries(Machine& machine, Registries registries, const json::object* file)
{
    const std::string name = machine.Bios ? FindText(*machine.Bios, "AttributeRegistry") : std::string();
    if (name.empty() && file == nullptr)
    {
        return;
    }
    json::object registryFile = file != nullptr ? *file : MakeRegistryFile(name, registries);
    if (const json::array* locations = FindArray(registryFile, "Location"))
    {
        for (const json::value& location : *locations)
        {
            const json::object* place = location.if_object();
            const std::string uri = place != nullptr ? FindText(*place, "Uri") : std::string();
            const auto registry =
                uri.empty() ? registries.end() : FindLanguage(registries, FindText(*place, "Language"));
            if (registry != registries.end())
            {
                machine.Resources.emplace(uri, registry->second);
            }
        }
    }
    const std::string own = FindText(registryFile, "@odata.id");
    machine.Resources.emplace(own.empty() ? fmt::format("{}/{}", RegistriesPath, name) : own, std::move(registryFile));
}

void AddServiceResources(Machine& machine)
{
    // What the machine's own files hold comes first, however its path is written.
    std::set<std::string> present;
    for (const auto& [path, resource] : machine.Resources)
    {
        present.insert(NormalPath(path));
    }
    const auto add = [&](const std::string& path, json::object resource)
    {
        if (!present.contains(NormalPath(path)))
        {
            machine.Resources.emplace(path, std::move(resource));
        }
    };
    const std::string system = SystemPath(machine);
    json::object registries =
        MakeCollection(RegistriesPath, "#MessageRegistryFileCollection.MessageRegistryFileCollection",
                       "Registry File Collection", RegistryFileLinks(machine));
    add("/redfish", json::object{{"v1", "/redfish/v1/"}});
    add("/redfish/v1", MakeServiceRoot());
    add("/redfish/v1/odata", MakeServiceDocument());
    add(system, MakeSystem(machine));
    add(SystemsPath, MakeCollection(SystemsPath, "#ComputerSystemCollection.ComputerSystemCollection",
                                    "Computer System Collection", json::array{Link(system)}));
    add(RegistriesPath, std::move(registries));
}

} // namespace bmcsim
