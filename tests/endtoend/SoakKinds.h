#pragma once

#include "SoakRun.h"

namespace soak
{

inline constexpr const char* BiosUrl = "/redfish/v1/Systems/1/Bios";
inline constexpr const char* SettingsUrl = "/redfish/v1/Systems/1/Bios/Settings";
inline constexpr const char* ResetUrl = "/redfish/v1/Systems/1/Actions/ComputerSystem.Reset";
inline constexpr const char* ReadFileUrl = "/redfish/v1/Systems/1/Actions/Oem/ZorvanComputerSystem.DSReadFile";
inline constexpr const char* ReadFileBody = R"({"FileName":"custom_default","Volatile":false})";
inline constexpr const char* WriteFileUrl = "/redfish/v1/Systems/1/Actions/Oem/ZorvanComputerSystem.DSWriteFile";
inline constexpr const char* ResetBiosUrl = "/redfish/v1/Systems/1/Bios/Actions/Bios.ResetBios";

inline constexpr const char* GetProtectedUrl =
    "/redfish/v1/Systems/1/Bios/Actions/Oem/ZorvanBios.GetProtectedAttributes";

inline constexpr Place Ordinary{"PATCH ", &Model::InForce, &Model::Pending};
inline constexpr Place Guarded{"POST /redfish/v1/Systems/1/Bios/Actions/Oem/ZorvanBios.SetProtectedAttributes",
                               &Model::ProtectedInForce, &Model::ProtectedPending};

/// A resource, and the protected values, as the BMC tells them on an unharmed way.
boost::json::object Resource(TavrineConnection::BmcConnection& clean, const std::string& url);
boost::json::object Protected(TavrineConnection::BmcConnection& clean, const char* body);

/// A kind of operation, and how often it is chosen beside the others.
struct Run::Kind
{
    const char* Name;
    std::size_t Weight;
    void (Run::*Do)();
};

} // namespace soak
