#include "Verify.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <string_view>
#include <thread>
#include <utility>

#include <CLI/CLI.hpp>
#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>
#include <fmt/format.h>

#include "Bmc.h"
#include "CauseLog.h"
#include "ChangeDelivery.h"
#include "JsonOutput.h"
#include "JsonValues.h"
#include "Options.h"
#include "OutcomeWords.h"
#include "SettingNames.h"
#include "SettingSelection.h"
#include "Signals.h"
#include "StandardStreams.h"
#include "TextOutput.h"

namespace json = boost::json;

namespace Tavrine::Tool
{
namespace
{

using std::chrono::milliseconds;

constexpr int CodeNotSupported = 11;
constexpr milliseconds FirstPause(250);
constexpr milliseconds LongestPause(10'000);
constexpr milliseconds PauseSlice(100);
/// How long values may lag behind a system that is back and does not tell when it
/// applied them.
constexpr milliseconds ValuesLag(60'000);
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

/// The pauses between looks, each longer than the one before.
class GrowingPause
{
  public:
    explicit GrowingPause(const RebootMeans& means, milliseconds until) : m_Means(means), m_Until(until) {}

    /// @return false when there is no more time.
    bool Take()
    {
        const milliseconds left = m_Until - m_Means.Now();
        if (left <= milliseconds(0) || !m_Means.Pause(std::min(m_Next, left)))
        {
            return false;
        }
        m_Next = std::min(m_Next * 3 / 2, LongestPause);
        return true;
    }

  private:
    const RebootMeans& m_Means;
    milliseconds m_Until;
    milliseconds m_Next = FirstPause;
};

/// The values of these settings that are in force now; of one without a value there is
/// no entry.
std::optional<Failure> ReadValues(const RebootMeans& means, const std::vector<ExpectedValue>& expected,
                                  SettingStringMap& values)
{
    CauseLog causes;
    const std::unique_ptr<RedfishConfigProc> front = means.FreshFront();
    TypedSettings group;
    const auto read = [&](const SettingStringMap& given)
    {
        return std::all_of(given.begin(), given.end(),
                           [&](const auto& entry) { return ReadTypedSettings(entry.second, "", group); });
    };
    SettingStringMap given;
    const RedfishConfigResult result = front->QueryGroupSettingValues(given);
    if (!IsSuccess(result.ErrorCode()))
    {
        return causes.Explain(result);
    }
    if (!read(given))
    {
        return Failure{CodeInternal, "The values of the library are no JSON object.", {}, {}};
    }
    for (const ExpectedValue& one : expected)
    {
        if (!group.contains(one.Name))
        {
            SettingStringMap single; // protected, or hidden from groups
            if (IsSuccess(front->QuerySettingValue(one.Name, single).ErrorCode()))
            {
                read(single);
            }
        }
        if (const auto value = group.find(one.Name); value != group.end() && !value->second.is_null())
        {
            values[one.Name] = ValueText(value->second);
        }
    }
    return std::nullopt;
}

bool AllInForce(const std::vector<ExpectedValue>& expected, const SettingStringMap& values)
{
    return std::all_of(expected.begin(), expected.end(),
                       [&](const ExpectedValue& one)
                       {
                           const auto value = values.find(one.Name);
                           return value != values.end() && value->second == one.Text;
                       });
}

/// What the BMC itself says about a setting that did not come into force.
std::string CauseOf(const BiosResource& bios, const std::string& name)
{
    std::string cause;
    for (const ChangeMessage& message : bios.Messages)
    {
        if (std::find(message.Settings.begin(), message.Settings.end(), name) != message.Settings.end())
        {
            cause += (cause.empty() ? "" : " ") + message.Text;
        }
    }
    return cause;
}

/// What the BMC tells before a restart; nothing where that cannot be read.
std::optional<BiosResource> ReadBefore(const RebootMeans& means, SystemResource& system)
{
    BiosResource bios;
    const bool read = IsSuccess(ReadSystem(means.Requests, system).ErrorCode()) &&
                      IsSuccess(ReadBios(means.Requests, system, bios).ErrorCode());
    return read ? std::optional(std::move(bios)) : std::nullopt;
}

struct Verification
{
    SettingStringMap Values;
    BiosResource Bios;
    std::optional<Failure> Lost;
};

Verification LookUntilInForce(const RebootMeans& means, const SystemResource& system,
                              const std::optional<std::string>& timeBefore, const std::vector<ExpectedValue>& expected,
                              milliseconds until)
{
    GrowingPause pause(means, std::min(until, means.Now() + ValuesLag));
    for (;;)
    {
        Verification found;
        const RedfishConfigResult result = ReadBios(means.Requests, system, found.Bios);
        // Before the values: what they are read after is then applied for certain.
        const bool applied = timeBefore && IsSuccess(result.ErrorCode()) && found.Bios.ChangeTime != *timeBefore;
        found.Lost = ReadValues(means, expected, found.Values);
        const bool settled = !found.Lost && (applied || AllInForce(expected, found.Values));
        if (settled || !pause.Take())
        {
            return found;
        }
    }
}

void TellVerification(const Verification& found, const std::vector<ExpectedValue>& expected, const Options& options,
                      const std::string& prefix, const SecretTexts& secrets, Answer& answer)
{
    json::object data;
    std::size_t good = 0;
    for (const ExpectedValue& one : expected)
    {
        const std::string shown = prefix + "." + one.Name;
        const auto value = found.Values.find(one.Name);
        const bool known = !found.Lost && value != found.Values.end();
        const bool inForce = known && value->second == one.Text;
        good += inForce ? 1 : 0;
        data[ValidUtf8(shown)] = inForce ? "in force" : known ? "not in force" : "unknown";
        if (!inForce && !found.Lost)
        {
            AddFailure(answer,
                       {CodeRefused,
                        shown + (known ? ": the new value is not in force after the reboot; it is " + value->second
                                       : ": whether the new value is in force is not known, since the BMC reports "
                                         "none"),
                        shown, WithoutSecrets(CauseOf(found.Bios, one.Name), secrets)});
        }
    }
    if (found.Lost)
    {
        Failure lost = Hidden(*found.Lost, secrets);
        lost.Message.insert(0, "Whether the new values are in force is not known: ");
        AddFailure(answer, std::move(lost));
    }
    if (options.Json)
    {
        answer.More["verified"] = std::move(data);
    }
    else if (!found.Lost)
    {
        answer.Text += fmt::format("{} of {} new values are in force\n", good, expected.size());
    }
}

/// Why nothing is to be restarted for these changes; empty where it is.
std::string WhyNotRestarted(const WaitingChanges& waiting)
{
    return waiting.Unknown         ? "not restarted, since what the BMC has received is not known"
           : waiting.RequestFailed ? "not restarted, since a request failed"
           : waiting.Expected.empty() && waiting.Unreadable.empty() ? "not restarted, since nothing waits for it"
                                                                    : "";
}

std::optional<Failure> PostReset(const RebootMeans& means, SystemResource& system, std::string& type)
{
    RedfishConfigResult result = ReadSystem(means.Requests, system);
    if (IsSuccess(result.ErrorCode()))
    {
        result = ReadResetTypes(means.Requests, system);
    }
    if (!IsSuccess(result.ErrorCode()))
    {
        return FailureOf(result);
    }
    if (system.ResetTarget.empty())
    {
        return Failure{CodeNotSupported, "The BMC offers no reset action for " + system.Path, {}, {}};
    }
    if (type.empty())
    {
        type = system.PowerState == "Off" ? "On" : GracefulRestart;
    }
    const std::vector<std::string>& types = system.ResetTypes;
    if (!types.empty() && std::find(types.begin(), types.end(), type) == types.end())
    {
        return Failure{CodeParameter,
                       fmt::format("The BMC does not offer the reset {}; it offers: {}", type, fmt::join(types, ", ")),
                       {},
                       {}};
    }
    std::string response;
    const std::string body = json::serialize(json::object{{"ResetType", type}});
    const RedfishConfigResult asked = means.Requests.Post(system.ResetTarget, body, response);
    return IsSuccess(asked.ErrorCode()) ? std::nullopt : std::optional(FailureOf(asked));
}

} // namespace

RebootMeans MeansOf(Bmc& bmc)
{
    return {RequestsOf(bmc), [&] { return bmc.Front(1); },
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
            [](const std::string& line) { WriteError("tavrine: " + EscapeControls(line) + "\n"); }};
}

void AddRebootOptions(CLI::App& command, Options& options)
{
    CLI::Option* reboot =
        command.add_flag("--reboot", options.Reboot, "Restart the system afterwards, so that changes come into force");
    command
        .add_option("--wait", options.Wait,
                    "Wait so long until the system is back, and verify that each change is in force")
        ->type_name("SECONDS")
        ->check(CLI::Range(std::uint32_t{1}, LongestWait))
        ->needs(reboot);
}

std::string RebootFault(const Options& options)
{
    return options.DryRun && options.Reboot ? "--dry-run and --reboot exclude each other" : "";
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
                                   : "The BMC did not come back within the time to wait: " + FailureOf(result).Message,
                           {},
                           {}};
        }
    }
}

std::string UnansweredWarning(const Failure& unanswered)
{
    return "warning: the request to restart has failed, but the system was restarted: " + unanswered.Message;
}

RestartEnd Restart(const RebootMeans& means, const Options& options, milliseconds until, SystemResource& system,
                   std::string& type)
{
    std::optional<Failure> asked = PostReset(means, system, type);
    // Whether a request has arrived whose answer was lost, the system will tell.
    const bool isOpen = asked && DeliveryIn(asked->Message) == Delivery::Sent;
    if (!options.Wait || (asked && !isOpen))
    {
        return {!asked, std::move(asked), {}};
    }
    means.Tell(isOpen ? "looking whether the system restarts" : "restart requested (" + type + ")");
    std::optional<Failure> waited = WaitUntilBack(means, system, until, !isOpen);
    if (!isOpen)
    {
        return {true, std::move(waited), {}};
    }
    if (!waited)
    {
        return {true, {}, std::move(asked)};
    }
    asked->Message += " " + waited->Message;
    return {false, std::move(asked), {}};
}

namespace
{

/// @param secrets  that the words of the BMC may repeat.
/// @return whether the system was seen to be back.
bool RebootAndLook(const RebootMeans& means, const Options& options, const std::vector<ExpectedValue>& expected,
                   const SecretTexts& secrets, Answer& answer)
{
    if (!options.Reboot || StopSignal() != 0)
    {
        return false;
    }
    const milliseconds until = means.Now() + std::chrono::seconds(options.Wait.value_or(0));
    SystemResource system;
    const std::optional<BiosResource> before = ReadBefore(means, system);
    if (before && before->DefaultsPending && !means.LoadsDefaults)
    {
        AddFailure(answer, {CodeRefused,
                            "The system was not restarted, since all settings would go to their defaults with it: "
                            "tavrine reboot does so",
                            {},
                            {}});
        return false;
    }
    const std::optional<std::string> timeBefore = before ? std::optional(before->ChangeTime) : std::nullopt;
    std::string type;
    RestartEnd end = Restart(means, options, until, system, type);
    if (end.Trouble)
    {
        const bool isOpen = DeliveryIn(end.Trouble->Message) == Delivery::Sent;
        end.Trouble = Hidden(std::move(*end.Trouble), secrets);
        end.Trouble->Message.insert(0, end.Requested ? ""
                                       : isOpen      ? "Whether the system is restarted is not known: "
                                                     : "The system was not restarted: ");
        end.Trouble->Message += end.Requested ? "; whether the changes are in force is not known" : "";
        AddFailure(answer, std::move(*end.Trouble));
        return false;
    }
    if (!options.Wait)
    {
        answer.Notes.push_back("restart requested (" + type + "); what comes of the changes: tavrine results");
        return false;
    }
    if (end.Unanswered)
    {
        answer.Notes.push_back(UnansweredWarning(Hidden(std::move(*end.Unanswered), secrets)));
    }
    means.Tell("the system is back");
    if (expected.empty())
    {
        return true;
    }
    const std::string prefix = means.FreshFront()->m_Prefix;
    const Verification found = LookUntilInForce(means, system, timeBefore, expected, until);
    TellVerification(found, expected, options, prefix, secrets, answer);
    return true;
}

/// What is brought into force without being looked at.
std::string NotVerified(const std::vector<std::string>& names)
{
    return OutcomeWords::FirstNames(names) +
           (names.size() == 1 ? ": its new value is not verified, since it cannot be read or may be a password"
                              : ": the new values are not verified, since they cannot be read or may be passwords");
}

} // namespace

void RebootAndVerify(const RebootMeans& means, const Options& options, const std::vector<ExpectedValue>& expected,
                     Answer& answer)
{
    RebootAndLook(means, options, expected, {}, answer);
}

void RebootForChanges(const RebootMeans& means, const Options& options, const WaitingChanges& waiting, Answer& answer)
{
    if (!options.Reboot || StopSignal() != 0)
    {
        return;
    }
    if (std::string why = WhyNotRestarted(waiting); !why.empty())
    {
        answer.Notes.push_back(std::move(why));
        return;
    }
    SecretTexts secrets;
    for (const Secret& secret : waiting.Secrets)
    {
        secrets.emplace_back(secret.Text());
    }
    if (RebootAndLook(means, options, waiting.Expected, secrets, answer) && !waiting.Unreadable.empty())
    {
        answer.Notes.push_back(NotVerified(waiting.Unreadable));
    }
}

} // namespace Tavrine::Tool
