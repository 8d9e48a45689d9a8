#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include <boost/json/object.hpp>

#include "Answer.h"
#include "Fronts.h"
#include "SystemResource.h"

// Restarts of the system, and the wait until it is back.
namespace Tavrine::Tool
{

class Bmc;
struct Options;

/// What a reboot is done with; in tests, something else than a BMC and a clock.
struct RebootMeans
{
    BmcRequests Requests;
    FormedFrontMaker FreshFront;
    std::function<std::chrono::milliseconds()> Now;
    /// Lets so much time go by; false when the run is to end.
    std::function<bool(std::chrono::milliseconds)> Pause;
    /// Tells how far things are.
    std::function<void(const std::string&)> Tell;
    /// The restart is for the defaults of all settings; any other would bring them unasked, and is not made.
    bool LoadsDefaults = false;
};

RebootMeans MeansOf(Bmc& bmc);

/// The pauses between looks, each longer than the one before.
class GrowingPause
{
  public:
    /// @param until  by the clock of `means`, which must outlive this.
    GrowingPause(const RebootMeans& means, std::chrono::milliseconds until);

    /// @return false when there is no more time.
    bool Take();

  private:
    const RebootMeans& m_Means;
    std::chrono::milliseconds m_Until;
    std::chrono::milliseconds m_Next;
};

enum class RestartState
{
    NotRequested,
    /// Nobody knows whether the request was carried out.
    Open,
    /// It was asked for, and not waited for.
    Requested,
    /// It was asked for and waited for in vain.
    NotBack,
    /// The system is back.
    Back,
};

/// What became of a restart.
struct RestartEnd
{
    RestartState State = RestartState::NotRequested;
    /// Of Back: why the request failed, which was carried out all the same. Of Requested there is none.
    std::optional<Failure> Why = {};
};

/// For data: the outcome in words, and the type of the reset where one was chosen.
boost::json::object RestartData(RestartState state, const std::string& type);

/// The warning of a request that failed and was carried out all the same.
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

} // namespace Tavrine::Tool
