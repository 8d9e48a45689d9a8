#pragma once

#include <string>

#include "Answer.h"
#include "Restart.h"

namespace CLI
{
class App;
}

namespace Tavrine::Tool
{

class Bmc;
struct Options;

/// The option `--wait` of `reboot`.
void AddPowerOptions(CLI::App& command, Options& options);
/// What is wrong with the reset type of `reboot`; empty for nothing.
std::string RebootTypeFault(const Options& options);

/// `reboot [TYPE] [--wait SECONDS]`.
Answer RunReboot(const Options& options, Bmc& bmc);
/// `results`.
Answer RunResults(const Options& options, Bmc& bmc);

/// The same with these means.
Answer RestartSystem(const RebootMeans& means, const Options& options);
/// What became of the changes that were applied last, as the BMC tells it.
/// @param prefix  in front of shown names.
Answer TellResults(const BmcRequests& requests, const Options& options, const std::string& prefix);

} // namespace Tavrine::Tool
