#pragma once

#include <string>

#include "TemporaryFolder.h"

namespace tooltest
{

/// A small machine of known content as a folder for the simulator.
class TestMachine
{
  public:
    TestMachine()
    {
        m_Folder.Write("machine/bios.json", R"({"@odata.id":"/redfish/v1/Systems/1/Bios",
            "@odata.type":"#Bios.v1_1_0.Bios","Id":"Bios","Name":"BIOS","AttributeRegistry":"Small.v1_0_0",
            "Attributes":{"Mode":"Uefi","Timeout":255,"NumLock":true,"Empty":null,
                          "Owner":"a\\b\nc\td\u0001\u00fc","Loose":31}})");
        m_Folder.Write("machine/registry.en.json", R"({"@odata.type":"#AttributeRegistry.v1_3_6.AttributeRegistry",
            "Id":"Small.v1_0_0","Name":"Small","Language":"en","OwningEntity":"Tests","RegistryVersion":"1.0.0",
            "RegistryEntries":{"Attributes":[
            {"AttributeName":"Mode","Type":"Enumeration","DisplayName":"Boot Mode","MenuPath":"./Boot",
             "Value":[{"ValueName":"Uefi"},{"ValueName":"Legacy"}]},
            {"AttributeName":"Timeout","Type":"Integer","DisplayName":"Timeout","MenuPath":"./Boot"},
            {"AttributeName":"NumLock","Type":"Boolean","DisplayName":"NumLock","MenuPath":"./Keys"},
            {"AttributeName":"Empty","Type":"String","DisplayName":"Empty","MenuPath":"./Keys"},
            {"AttributeName":"Owner","Type":"String","DisplayName":"Owner","MenuPath":"./Keys"},
            {"AttributeName":"Seal","Type":"String","DisplayName":"Seal","MenuPath":"./Keys",
             "Oem":{"Zorvan":{"Protected":true}}}],
            "Menus":[{"MenuName":"Root","DisplayName":"Setup","MenuPath":"./"},
                     {"MenuName":"Boot","DisplayName":"Boot Options","MenuPath":"./Boot"},
                     {"MenuName":"Keys","DisplayName":"Key\tboard","MenuPath":"./Keys"}],
            "Dependencies":[]}})");
    }

    /// Adds the OEM actions, with one protected setting.
    void AddProtected() { m_Folder.Write("machine/protected.json", R"({"Attributes":{"Seal":"unbroken"}})"); }

    std::string Path() const { return (m_Folder.Path() / "machine").string(); }
    const testdata::TemporaryFolder& Folder() const { return m_Folder; }

  private:
    testdata::TemporaryFolder m_Folder;
};

} // namespace tooltest
