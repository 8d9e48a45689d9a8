#include "Restart.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <thread>
#include <utility>

#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>
#include <fmt/format.h>

#include "Bmc.h"
#include "ChangeDelivery.h"
#include "JsonOutput.h"
#include "Options.h"
#include "Signals.h"
#include "StandardStreams.h"

namespace json = boost::json;

namespace Tavrine::Tool
{
namespace
{

using std::chrono::milliseconds;

constexpr milliseconds FirstPause(250);
constexpr milliseconds LongestPause(10'000);
constexpr milliseconds PauseSlice(100);
constexpr const char* GracefulRestart = "GracefulRestart";

bool IsOn(const SystemResource& system) { return system.PowerState.empty() || system.PowerState == "On"; }

/// Whether the firmware is still at work (DSP0268, "BootProgressTypes").
bool IsStarting(const SystemResource& system)
{
    constexpr std::array<std::string_view, 5> States = {
        "PrimaryProcessorInitializationStarted",   "BusInitializationStarted", "MemoryInitializationStarted",
        "SecondaryProcessorInitializationStarted", "PCIResourceConfigStarted",
    };
    return std::find(States.begin(), States.end(), system.BootState) != States.end();
}

/// What became of the request for a reset.
struct Asked
{
    std::optional<Failure> Why;
    /// Whether it has arrived is not known.
    bool Open = false;
};

Asked PostReset(const RebootMeans& means, SystemResource& system, std::string& type)
{
    RedfishConfigResult result = ReadSystem(means.Requests, system);
    if (IsSuccess(result.ErrorCode()))
    {
        result = ReadResetTypes(means.Requests, system);
    }
    if (!IsSuccess(result.ErrorCode()))
    {
        return {FailureOf(result)};
    }
    if (system.ResetTarget.empty())
    {
        return {Failure{CodeNotSupported, "The BMC offers no reset action for " + system.Path}};
    }
    if (type.empty())
    {
        type = system.PowerState == "Off" ? "On" : GracefulRestart;
    }
    const std::vector<std::string>& types = system.ResetTypes;
    if (!types.empty() && std::find(types.begin(), types.end(), type) == types.end())
    {
        return {Failure{CodeParameter, fmt::format("The BMC does not offer the reset {}; it offers: {}", type,
                                                   fmt::join(types, ", "))}};
    }
    std::string response;
    const std::string body = json::serialize(json::object{{"ResetType", type}});
    const RedfishConfigResult asked = means.Requests.Post(system.ResetTarget, body, response);
    if (IsSuccess(asked.ErrorCode()))
    {
        return {};
    }
    Failure failure = FailureOf(asked);
    const bool isOpen = DeliveryIn(failure.Message) == Delivery::Sent;
    return {std::move(failure), isOpen};
}

const char* WordsOf(RestartState state)
{
    switch (state)
    {
    case RestartState::NotRequested:
        return "not requested";
    case RestartState::Open:
        return "unknown";
    case RestartState::Requested:
    case RestartState::NotBack:
        return "restart requested";
    case RestartState::Back:
        return "the system is back";
    }
    return "";
}

} // namespace

RebootMeans MeansOf(Bmc& bmc)
{
    return {RequestsOf(bmc), [&](OutputForm form) { return bmc.Front(form); },
            []
            { return std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now().time_since_epoch()); },
            [](milliseconds time)
            {
                for (; time > milliseconds(0) && StopSignal() == 0; time -= PauseSlice)
                {
                    std::this_thread::sleep_for(std::min(time, PauseSlice));
                }
                return StopSignal() == 0;
            },
            [](const std::string& line) { WriteError("tavrine: " + line + "\n"); }};
}

GrowingPause::GrowingPause(const RebootMeans& means, milliseconds until)
    : m_Means(means), m_Until(until), m_Next(FirstPause)
{
}

bool GrowingPause::Take()
{
    const milliseconds left = m_Until - m_Means.Now();
    if (left <= milliseconds(0) || !m_Means.Pause(std::min(m_Next, left)))
    {
        return false;
    }
    m_Next = std::min(m_Next * 3 / 2, LongestPause);
    return true;
}

std::optional<Failure> WaitUntilBack(const RebootMeans& means, const SystemResource& before, milliseconds until,
                                     bool isAccepted)
{
    GrowingPause pause(means, until);
    std::string told;
    bool wasAway = !IsOn(before);
    for (;;)
    {
        SystemResource now;
        now.Path = before.Path;
        RedfishConfigResult result = RefreshSystem(means.Requests, now);
        const bool answers = IsSuccess(result.ErrorCode());
        const bool starting = answers && (!IsOn(now) || IsStarting(now));
        // A BMC that does not answer restarts with the system, or else its network is what has lost the request, too.
        wasAway = wasAway || starting || (isAccepted && !answers);
        const bool restarted = wasAway || now.LastReset != before.LastReset;
        if (answers && !starting && restarted)
        {
            return std::nullopt;
        }
        const std::string line = !answers   ? "waiting for the BMC"
                                 : starting ? "waiting for the system to start"
                                            : "waiting for the system to go down";
        if (std::exchange(told, line) != line)
        {
            means.Tell(line + " …");
        }
        if (!pause.Take())
        {
            return Failure{CodeConnection,
                           answers ? starting ? "The system has not started within the time to wait"
                                              : "Whether the system was restarted within the time to wait is not known"
                                   : "The BMC did not come back within the time to wait: " + FailureOf(result).Message};
        }
    }
}

boost::json::object RestartData(RestartState state, const std::string& type)
{
    boost::json::object data;
    if (!type.empty())
    {
        data["type"] = ValidUtf8(type);
    }
    data["outcome"] = WordsOf(state);
    return data;
}

std::string UnansweredWarning(const Failure& unanswered)
{
    return "warning: the request to restart has failed, but the system was restarted: " + unanswered.Message;
}

RestartEnd Restart(const RebootMeans& means, const Options& options, milliseconds until, SystemResource& system,
                   std::string& type)
{
    // Whether a request has arrived whose answer was lost, the system will tell.
    auto [asked, isOpen] = PostReset(means, system, type);
    if (asked && !isOpen)
    {
        return {RestartState::NotRequested, std::move(asked)};
    }
    if (!options.Wait)
    {
        return {isOpen ? RestartState::Open : RestartState::Requested, std::move(asked)};
    }
    means.Tell(isOpen ? "looking whether the system restarts" : "restart requested (" + type + ")");
    std::optional<Failure> waited = WaitUntilBack(means, system, until, !isOpen);
    if (!waited)
    {
        return {RestartState::Back, std::move(asked)};
    }
    if (!isOpen)
    {
        return {RestartState::NotBack, std::move(waited)};
    }
    asked->Message += " " + waited->Message;
    return {RestartState::Open, std::move(asked)};
}

} // namespace Tavrine::Tool
