#pragma once

#include <string>

#include "TemporaryFolder.h"

namespace endtoend
{

/// A small machine as a folder for the simulator. "Mode" locks "Size" where it is "Fixed",
/// so that a restore sends them one behind the other.
class LockingMachine
{
  public:
    LockingMachine()
    {
        m_Folder.Write("bios.json", R"({"@odata.id":"/redfish/v1/Systems/1/Bios",
            "@odata.type":"#Bios.v1_1_0.Bios","Id":"Bios","Name":"BIOS","AttributeRegistry":"Lock.v1_0_0",
            "@Redfish.Settings":{"SettingsObject":{"@odata.id":"/redfish/v1/Systems/1/Bios/Settings"}},
            "Attributes":{"Mode":"Fixed","Size":7,"Tag":"as it was once saved","Light":true}})");
        m_Folder.Write("registry.en.json", R"({"@odata.type":"#AttributeRegistry.v1_3_6.AttributeRegistry",
            "Id":"Lock.v1_0_0","Name":"Lock","Language":"en","OwningEntity":"Tests","RegistryVersion":"1.0.0",
            "RegistryEntries":{"Attributes":[
            {"AttributeName":"Mode","Type":"Enumeration","Value":[{"ValueName":"Free"},{"ValueName":"Fixed"}]},
            {"AttributeName":"Size","Type":"Integer","LowerBound":1,"UpperBound":9},
            {"AttributeName":"Tag","Type":"String","MaxLength":40},
            {"AttributeName":"Light","Type":"Boolean"}],"Menus":[],
            "Dependencies":[{"Type":"Map","DependencyFor":"Size","Dependency":{"MapFrom":[{"MapFromAttribute":"Mode",
            "MapFromProperty":"CurrentValue","MapFromCondition":"EQU","MapFromValue":"Fixed"}],"MapToAttribute":"Size",
            "MapToProperty":"ReadOnly","MapToValue":true}}]}})");
    }

    std::string Path() const { return m_Folder.Path().string(); }

  private:
    testdata::TemporaryFolder m_Folder;
};

} // namespace endtoend
