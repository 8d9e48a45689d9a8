#pragma once

#include <chrono>
#include <functional>
#include <list>
#include <optional>
#include <string>
#include <vector>

#include "Answer.h"
#include "Fronts.h"
#include "RedfishConfigProc.h"
#include "Secret.h"
#include "SystemResource.h"

namespace CLI
{
class App;
}

namespace Tavrine::Tool
{

class Bmc;
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
    /// What the BMC may repeat when it tells what came of the changes. These outlive the commands' own plans.
    std::list<Secret> Secrets = {};
};

/// What a reboot is done with; in tests, something else than a BMC and a clock.
struct RebootMeans
{
    BmcRequests Requests;
    /// Gives a front object that was not used yet, of typed output.
    FrontMaker FreshFront;
    std::function<std::chrono::milliseconds()> Now;
    /// Lets so much time go by; false when the run is to end.
    std::function<bool(std::chrono::milliseconds)> Pause;
    /// Tells how far things are.
    std::function<void(const std::string&)> Tell;
    /// The restart is for the defaults of all settings; any other would bring them unasked, and is not made.
    bool LoadsDefaults = false;
};

RebootMeans MeansOf(Bmc& bmc);

/// The options `--reboot` and `--wait`.
void AddRebootOptions(CLI::App& command, Options& options);
/// What is wrong with them; empty for nothing.
std::string RebootFault(const Options& options);

/// What became of a restart.
struct RestartEnd
{
    /// It was asked for, for all that is known.
    bool Requested = false;
    std::optional<Failure> Trouble;
    /// Why the request failed, which was carried out all the same.
    std::optional<Failure> Unanswered;
};

/// The warning that tells of it.
std::string UnansweredWarning(const Failure& unanswered);

/// Asks for a reset of the system: of this type, or with an empty one for a graceful
/// restart ("On" for a system that is off). With `--wait` it waits until the system is back, also
/// where it is not known whether the request has arrived: then that tells.
/// @param until  by the clock of `means`.
/// @param system  what it was before, filled here.
/// @param type  the type that was asked for.
RestartEnd Restart(const RebootMeans& means, const Options& options, std::chrono::milliseconds until,
                   SystemResource& system, std::string& type);

/// Waits until the BMC answers and the system has started anew.
/// @param before  the system before the reset.
/// @param until  by the clock of `means`.
/// @param isAccepted  whether it is known that a reset is under way: then a BMC that does not answer tells
/// of it, and else only what the system itself shows.
std::optional<Failure> WaitUntilBack(const RebootMeans& means, const SystemResource& before,
                                     std::chrono::milliseconds until, bool isAccepted);

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
