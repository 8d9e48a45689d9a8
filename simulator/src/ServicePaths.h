#pragma once

#include "Machine.h"

#include <string>
#include <vector>

namespace bmcsim
{

constexpr const char* GetProtectedAction = "ZorvanBios.GetProtectedAttributes";
constexpr const char* SetProtectedAction = "ZorvanBios.SetProtectedAttributes";
constexpr const char* ReadFileAction = "ZorvanComputerSystem.DSReadFile";
constexpr const char* WriteFileAction = "ZorvanComputerSystem.DSWriteFile";

constexpr const char* SystemsPath = "/redfish/v1/Systems";

inline std::string SystemPath(const Machine& machine) { return std::string(SystemsPath) + '/' + machine.SystemId; }

inline std::string OemBiosAction(const Machine& machine, const std::string& name)
{
    return SystemPath(machine) + "/Bios/Actions/Oem/" + name;
}

inline std::string OemSystemAction(const Machine& machine, const std::string& name)
{
    return SystemPath(machine) + "/Actions/Oem/" + name;
}

/// Where the reset stands unless the system's resource names another place.
inline std::string UsualResetTarget(const Machine& machine)
{
    return SystemPath(machine) + "/Actions/ComputerSystem.Reset";
}

/// The action that resets the system, as the system's resource tells it.
struct SystemReset
{
    std::string Target;
    std::vector<std::string> Types;
};
SystemReset ResetAction(const Machine& machine);

} // namespace bmcsim
