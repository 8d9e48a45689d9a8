#pragma once

#include "Fixture.h"

#include <string>
#include <vector>

namespace bmctest
{

constexpr const char* BiosPath = "/redfish/v1/Systems/1/Bios";
constexpr const char* SettingsPath = "/redfish/v1/Systems/1/Bios/Settings";
constexpr const char* SystemPath = "/redfish/v1/Systems/1";
constexpr const char* ResetPath = "/redfish/v1/Systems/1/Actions/ComputerSystem.Reset";
constexpr const char* ResetBiosPath = "/redfish/v1/Systems/1/Bios/Actions/Bios.ResetBios";
constexpr const char* ReadProtected = "/redfish/v1/Systems/1/Bios/Actions/Oem/ZorvanBios.GetProtectedAttributes";
constexpr const char* WriteProtected = "/redfish/v1/Systems/1/Bios/Actions/Oem/ZorvanBios.SetProtectedAttributes";
constexpr const char* ReadFilePath = "/redfish/v1/Systems/1/Actions/Oem/ZorvanComputerSystem.DSReadFile";
constexpr const char* WriteFilePath = "/redfish/v1/Systems/1/Actions/Oem/ZorvanComputerSystem.DSWriteFile";
constexpr const char* JsonType = "application/json";

/// The messages of an answer, each as "KEY|ARGUMENT|…|PROPERTY".
std::vector<std::string> Messages(const httplib::Result& answer);
std::vector<std::string> DescribeMessages(const json::value& messages);

/// Changes of a simulator's values.
class ChangeTest : public SimulatorTest
{
  protected:
    /// @param attributes  the JSON object of the new values.
    httplib::Result Patch(const std::string& attributes, const httplib::Headers& headers = {});
    httplib::Result Post(const std::string& path, const std::string& body);
    /// Fails the test when the change is refused.
    void Accept(const std::string& attributes);
    void Restart(const std::string& type = "ForceRestart");

    json::value Effective() { return At(GetJson(BiosPath), "/Attributes"); }
    json::value Pending() { return At(GetJson(SettingsPath), "/Attributes"); }
    json::value Protected(bool pending);
};

} // namespace bmctest
