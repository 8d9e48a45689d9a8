#pragma once

#include <chrono>
#include <map>
#include <string>
#include <vector>

#include "BmcSimulator.h"
#include "ChildProcess.h"

namespace tooltest
{

/// One run of the tool against a simulated BMC of its own that does what rules tell.
struct FaultRun
{
    /// "@" stands for a folder with saved.conf (two settings that differ from those in
    /// force), custom (content of custom defaults) and out, which holds OldOutput.
    std::vector<std::string> Arguments;
    std::vector<std::string> Rules;
    /// tavrine's own where it is 0.
    int Timeout = 0;
    bool Https = false;
    bool Tasks = false;
};

inline constexpr const char* OldOutput = "what stood here before\n";

/// What became of it. In all texts the folder is "@", the BMC "[bmc]" and a time "TIME".
struct FaultOutcome
{
    Finished Tool;
    std::chrono::steady_clock::duration Took{};
    /// What the tool logged at the finest level.
    std::string Log;
    std::vector<bmcsim::AccessRecord> Requests;
    /// What the BMC keeps: values, files, resets.
    std::string State;
    /// The folder's files by name.
    std::map<std::string, std::string> Files;
};

FaultOutcome RunWithFaults(const FaultRun& run);

/// Of the one setting that waits for a reboot before the tool is run.
inline constexpr const char* WaitingValue = "Disabled";
inline constexpr const char* ValueInForce = "Enabled";

/// The state of every such BMC before the tool is run: one setting waits for a reboot, and
/// custom defaults are there.
std::string StateBefore();

/// What must stand in no text.
bool HoldsASecret(const std::string& text);

} // namespace tooltest
