#pragma once

#include <list>
#include <string>
#include <vector>

#include "Answer.h"
#include "Restart.h"
#include "Secret.h"

namespace CLI
{
class App;
}

// Restarts for changes, and whether these are in force behind them.
namespace Tavrine::Tool
{

struct Options;

/// A value that has to be in force after a reboot.
struct ExpectedValue
{
    /// Bare name.
    std::string Name;
    /// As the BMC has it: numbers in decimal.
    std::string Text;
};

/// What a reboot is to bring into force.
struct WaitingChanges
{
    /// Those whose values can be read afterwards.
    std::vector<ExpectedValue> Expected;
    /// Shown names of those whose values can not, or are shown nowhere.
    std::vector<std::string> Unreadable;
    /// Nobody knows what else waits.
    bool Unknown = false;
    /// A request failed, so that not everything that was meant to waits.
    bool RequestFailed = false;
    /// Some that were asked for do not wait, since they were refused. Half of a change is not for this tool to bring
    /// into force.
    bool Refused = false;
    /// What the BMC may repeat when it tells what came of the changes. These outlive the commands' own plans.
    std::list<Secret> Secrets = {};
};

/// The options `--reboot` and `--wait`.
void AddRebootOptions(CLI::App& command, Options& options);
/// What is wrong with them; empty for nothing.
std::string RebootFault(const Options& options);

/// Does what `--reboot` asks for once changes have been sent: reboots, and with `--wait`
/// waits and looks whether each value is in force. What it finds goes into the answer;
/// a value that is not in force is a failure with code 18. Without `--reboot` nothing
/// is done.
void RebootAndVerify(const RebootMeans& means, const Options& options, const std::vector<ExpectedValue>& expected,
                     Answer& answer);

/// The same for changes of single settings, which are restarted for only where something waits and what waits is
/// known: otherwise a note tells why not.
void RebootForChanges(const RebootMeans& means, const Options& options, const WaitingChanges& waiting, Answer& answer);

} // namespace Tavrine::Tool
