#pragma once

#include <functional>
#include <string>
#include <vector>

#include "RedfishConfigResult.h"

namespace Tavrine::Tool
{

class Bmc;

/// Single requests to a BMC, as BmcConnection makes them.
struct BmcRequests
{
    std::function<RedfishConfigResult(const std::string& url, std::string& response)> Get;
    std::function<RedfishConfigResult(const std::string& url, const std::string& body, std::string& response)> Post;
};

BmcRequests RequestsOf(const Bmc& bmc);

/// What the BMC tells of the computer system (DSP0268, ComputerSystem); texts that it
/// lacks are empty. It is the system that the library works with: the first one.
struct SystemResource
{
    std::string Path;
    std::string Manufacturer;
    std::string Model;
    std::string SerialNumber;
    std::string BiosVersion;
    std::string PowerState;
    /// "LastState" of its "BootProgress".
    std::string BootState;
    std::string LastReset;
    std::string ResetTarget;
    /// Resource that lists the values of the reset action; empty where ResetTypes does.
    std::string ResetInfo;
    std::vector<std::string> ResetTypes;
};

/// One message of "@Redfish.Settings" (DSP0266, "Settings resource").
struct ChangeMessage
{
    /// Bare names of the settings that it is about; empty for one about all of them.
    std::vector<std::string> Settings;
    /// "OK", "Warning", "Critical" or empty.
    std::string Severity;
    std::string Text;
};

/// What the Bios resource tells beside the values.
struct BiosResource
{
    std::string Registry;
    /// When the last changes were applied; empty for never.
    std::string ChangeTime;
    std::vector<ChangeMessage> Messages;
    /// All settings go to their defaults at the next start.
    bool DefaultsPending = false;
    /// The value in force of the setting that loads the defaults at the next start (PostLoadSetting), of which
    /// DefaultsPending does not know; empty where the system has no such setting.
    std::string PostLoad;
    /// Where what waits for a reboot stands.
    std::string SettingsObject;
};

/// @return 0 with `system` filled; else why it could not be read.
RedfishConfigResult ReadSystem(const BmcRequests& requests, SystemResource& system);
/// Reads the system again, whose Path is known.
RedfishConfigResult RefreshSystem(const BmcRequests& requests, SystemResource& system);
RedfishConfigResult ReadBios(const BmcRequests& requests, const SystemResource& system, BiosResource& bios);
/// Completes DefaultsPending by PostLoad: the value that waits, or else that in force. Sends nothing for a system that
/// has no such setting.
RedfishConfigResult ReadPostLoad(const BmcRequests& requests, BiosResource& bios);
/// The one, then the other.
RedfishConfigResult ReadSystemAndBios(const BmcRequests& requests, SystemResource& system, BiosResource& bios);
/// Completes ResetTypes from ResetInfo, where that is there.
RedfishConfigResult ReadResetTypes(const BmcRequests& requests, SystemResource& system);

} // namespace Tavrine::Tool
