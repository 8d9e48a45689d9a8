#pragma once

#include <string>

#include "TemporaryFolder.h"

namespace tooltest
{

/// A small machine, as a folder for the simulator, with a setting of each kind that can
/// be changed: an ordinary one, two of which one locks the other, a password and, behind
/// the OEM actions, a protected one.
class ChangeMachine
{
  public:
    /// @param mark  begins every text that is a value in it; words that are texts of the
    ///              registry alone do not have it.
    explicit ChangeMachine(const std::string& mark = {})
    {
        const auto write = [&](const std::string& name, std::string text)
        {
            for (std::size_t at = text.find("@@"); at != std::string::npos; at = text.find("@@"))
            {
                text.replace(at, 2, mark);
            }
            m_Folder.Write("machine/" + name, text);
        };
        write("bios.json", R"({"@odata.id":"/redfish/v1/Systems/1/Bios",
            "@odata.type":"#Bios.v1_2_0.Bios","Id":"Bios","Name":"BIOS","AttributeRegistry":"Change.v1_0_0",
            "@Redfish.Settings":{"@odata.type":"#Settings.v1_3_3.Settings",
                "SettingsObject":{"@odata.id":"/redfish/v1/Systems/1/Bios/Settings"}},
            "Attributes":{"Mode":"@@Uefi","Timeout":10,"Owner":"@@me","Watchdog":"Off","WatchdogMinutes":10,
                          "AdminPassword":null}})");
        write("registry.en.json", R"({"@odata.type":"#AttributeRegistry.v1_3_6.AttributeRegistry",
            "Id":"Change.v1_0_0","Name":"Change","Language":"en","OwningEntity":"Tests","RegistryVersion":"1.0.0",
            "RegistryEntries":{"Attributes":[
            {"AttributeName":"Mode","Type":"Enumeration","Value":[{"ValueName":"@@Uefi"},{"ValueName":"@@Legacy"},{"ValueName":"@@Other"}]},
            {"AttributeName":"Timeout","Type":"Integer","LowerBound":0,"UpperBound":255},
            {"AttributeName":"Owner","Type":"String","MinLength":0,"MaxLength":64},
            {"AttributeName":"Watchdog","Type":"Enumeration","Value":[{"ValueName":"Off"},{"ValueName":"On"}]},
            {"AttributeName":"WatchdogMinutes","Type":"Integer","LowerBound":5,"UpperBound":120},
            {"AttributeName":"AdminPassword","Type":"Password","MinLength":0,"MaxLength":20},
            {"AttributeName":"Seal","Type":"String","Oem":{"Zorvan":{"Protected":true}}}],
            "Menus":[{"MenuName":"Root","DisplayName":"Setup","MenuPath":"./"}],
            "Dependencies":[{"Type":"Map","DependencyFor":"WatchdogMinutes","Dependency":{"MapFrom":[
                {"MapFromAttribute":"Watchdog","MapFromProperty":"CurrentValue","MapFromCondition":"EQU",
                 "MapFromValue":"Off"}],"MapToAttribute":"WatchdogMinutes","MapToProperty":"GrayOut",
                 "MapToValue":true}}]}})");
        write("protected.json", R"({"Attributes":{"Seal":"@@unbroken"}})");
    }

    std::string Path() const { return (m_Folder.Path() / "machine").string(); }

  private:
    testdata::TemporaryFolder m_Folder;
};

} // namespace tooltest
