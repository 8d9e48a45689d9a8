#include "Verify.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <set>
#include <utility>

#include <CLI/CLI.hpp>
#include <boost/json/object.hpp>
#include <fmt/format.h>

#include "CauseLog.h"
#include "JsonOutput.h"
#include "JsonValues.h"
#include "Options.h"
#include "OutcomeWords.h"
#include "PendingValues.h"
#include "SettingNames.h"
#include "Signals.h"

namespace json = boost::json;

namespace Tavrine::Tool
{
namespace
{

using std::chrono::milliseconds;

/// How long values may lag behind a system that is back and does not tell when it
/// applied them.
constexpr milliseconds ValuesLag(60'000);

/// The values of these settings that are in force now; of one without a value there is
/// no entry.
std::optional<Failure> ReadValues(const RebootMeans& means, const std::vector<ExpectedValue>& expected,
                                  SettingStringMap& values)
{
    CauseLog causes;
    const std::unique_ptr<RedfishConfigProc> front = means.FreshFront(OutputForm::Typed);
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
        return Failure{CodeInternal, "The values of the library are no JSON object."};
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

/// Why the system must not be restarted for changes of single settings.
/// @param told  of the read that filled `bios`.
std::optional<Failure> WhyToStay(const RebootMeans& means, const RedfishConfigResult& told, BiosResource& bios)
{
    const RedfishConfigResult read = IsSuccess(told.ErrorCode()) ? ReadPostLoad(means.Requests, bios) : told;
    if (!IsSuccess(read.ErrorCode()))
    {
        Failure unread = FailureOf(read);
        unread.Message.insert(0, "The system was not restarted, since it is not known whether all settings would go "
                                 "to their defaults with it: ");
        return unread;
    }
    if (bios.DefaultsPending)
    {
        return Failure{CodeRefused,
                       "The system was not restarted, since all settings would go to their defaults with it: "
                       "tavrine reboot does so"};
    }
    return std::nullopt;
}

/// What is known before a restart.
struct Before
{
    SystemResource System;
    /// When the BMC last applied changes; nothing where that could not be read.
    std::optional<std::string> ChangeTime;
};

struct Verification
{
    SettingStringMap Values;
    BiosResource Bios;
    std::optional<Failure> Lost;
};

Verification LookUntilInForce(const RebootMeans& means, const Before& before,
                              const std::vector<ExpectedValue>& expected, milliseconds until)
{
    GrowingPause pause(means, std::min(until, means.Now() + ValuesLag));
    for (;;)
    {
        Verification found;
        const RedfishConfigResult result = ReadBios(means.Requests, before.System, found.Bios);
        // Before the values: what they are read after is then applied for certain.
        const bool applied =
            before.ChangeTime && IsSuccess(result.ErrorCode()) && found.Bios.ChangeTime != *before.ChangeTime;
        found.Lost = ReadValues(means, expected, found.Values);
        const bool settled = !found.Lost && (applied || AllInForce(expected, found.Values));
        if (settled || !pause.Take())
        {
            return found;
        }
    }
}

void TellVerification(const Verification& found, const std::vector<ExpectedValue>& expected, const Options& options,
                      const SecretTexts& secrets, Answer& answer)
{
    const std::string prefix = PrefixesOf(options).First;
    json::object data;
    std::size_t good = 0;
    for (const ExpectedValue& one : expected)
    {
        const std::string shown = prefix + "." + one.Name;
        const auto value = found.Values.find(one.Name);
        const bool known = !found.Lost && value != found.Values.end();
        const bool inForce = known && value->second == one.Text;
        good += inForce ? 1 : 0;
        data[ValidUtf8(shown)] = inForce ? "in force" : known ? "not in force" : OutcomeWords::Unknown;
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
           : waiting.Expected.empty() && waiting.Unreadable.empty()
               ? "not restarted, since none of these changes waits for it"
           : waiting.Refused ? "not restarted, since a setting was refused; what was not comes into force with: "
                               "tavrine reboot"
                             : "";
}

/// Asked again behind each wait for the BMC, in which a signal may have come.
bool IsToRestart(const Options& options) { return options.Reboot && StopSignal() == 0; }

/// Reads what is known before a restart. @return whether it may be made; otherwise the answer tells why not.
bool MayRestart(const RebootMeans& means, const SecretTexts& secrets, Before& before, Answer& answer)
{
    BiosResource bios;
    const RedfishConfigResult read = ReadSystemAndBios(means.Requests, before.System, bios);
    if (IsSuccess(read.ErrorCode()))
    {
        before.ChangeTime = bios.ChangeTime;
    }
    std::optional<Failure> reason = means.LoadsDefaults ? std::nullopt : WhyToStay(means, read, bios);
    if (reason)
    {
        AddFailure(answer, Hidden(std::move(*reason), secrets));
    }
    return !reason;
}

/// @param type  of the reset.
/// @return whether the system was seen to be back.
bool TellRestart(const RestartEnd& end, const std::string& type, const SecretTexts& secrets, Answer& answer)
{
    const Failure why = Hidden(end.Why.value_or(Failure()), secrets);
    const auto fail = [&](const std::string& before, const std::string& behind) {
        AddFailure(answer, {why.Code, before + why.Message + behind, why.Setting, why.Cause});
    };
    switch (end.State)
    {
    case RestartState::NotRequested:
        fail("The system was not restarted: ", "");
        break;
    case RestartState::Open:
        fail("Whether the system is restarted is not known: ", "");
        break;
    case RestartState::NotBack:
        fail("", "; whether the changes are in force is not known");
        break;
    case RestartState::Requested:
        answer.Notes.push_back("restart requested (" + type + "); what comes of the changes: tavrine results");
        break;
    case RestartState::Back:
        if (end.Why)
        {
            answer.Notes.push_back(UnansweredWarning(why));
        }
        break;
    }
    return end.State == RestartState::Back;
}

/// @param secrets  that the words of the BMC may repeat.
/// @return whether the system was seen to be back.
bool RebootAndLook(const RebootMeans& means, const Options& options, const std::vector<ExpectedValue>& expected,
                   const SecretTexts& secrets, Answer& answer)
{
    if (!IsToRestart(options))
    {
        return false;
    }
    const milliseconds until = means.Now() + std::chrono::seconds(options.Wait.value_or(0));
    Before before;
    answer.More["reboot"] = RestartData(RestartState::NotRequested, {});
    if (!MayRestart(means, secrets, before, answer))
    {
        return false;
    }
    std::string type;
    const RestartEnd end = Restart(means, options, until, before.System, type);
    answer.More["reboot"] = RestartData(end.State, type);
    if (!TellRestart(end, type, secrets, answer))
    {
        return false;
    }
    means.Tell("the system is back");
    if (!expected.empty())
    {
        TellVerification(LookUntilInForce(means, before, expected, until), expected, options, secrets, answer);
    }
    return true;
}

/// What is brought into force without being looked at.
std::string NotVerified(const std::vector<std::string>& names)
{
    return OutcomeWords::FirstNames(names) +
           (names.size() == 1 ? ": its new value is not verified, since it cannot be read or may be a password"
                              : ": the new values are not verified, since they cannot be read or may be passwords");
}

/// A restart brings everything into force that waits, whoever asked for it: told at once, while that is still to come.
void TellOthers(const RebootMeans& means, const WaitingChanges& waiting, const SecretTexts& secrets,
                const Prefixes& prefixes)
{
    std::set<std::string, CaseInsensitiveComparator> own;
    for (const ExpectedValue& one : waiting.Expected)
    {
        own.insert(one.Name);
    }
    for (const std::string& shown : waiting.Unreadable)
    {
        own.insert(BareName(shown, prefixes));
    }
    CauseLog causes;
    SettingCompareMap compared;
    const RedfishConfigResult read = means.FreshFront(OutputForm::Text)->CompareSettingPendingValues(compared, "");
    if (!Answered(read))
    {
        means.Tell("warning: whether other changes wait for the restart, too, is not known: " +
                   Hidden(causes.Explain(read), secrets).Message);
        return;
    }
    std::vector<std::string> others;
    for (const auto& [name, texts] : compared)
    {
        if (!own.contains(BareName(name, prefixes)))
        {
            others.push_back(name);
        }
    }
    if (!others.empty())
    {
        means.Tell("warning: other changes wait, too, and come into force with a restart: " +
                   OutcomeWords::FirstNames(others));
    }
}

} // namespace

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

void RebootAndVerify(const RebootMeans& means, const Options& options, const std::vector<ExpectedValue>& expected,
                     Answer& answer)
{
    RebootAndLook(means, options, expected, {}, answer);
}

void RebootForChanges(const RebootMeans& means, const Options& options, const WaitingChanges& waiting, Answer& answer)
{
    if (!IsToRestart(options))
    {
        return;
    }
    if (std::string why = WhyNotRestarted(waiting); !why.empty())
    {
        answer.Notes.push_back(std::move(why));
        answer.More["reboot"] = RestartData(RestartState::NotRequested, {});
        return;
    }
    SecretTexts secrets;
    for (const Secret& secret : waiting.Secrets)
    {
        secrets.emplace_back(secret.Text());
    }
    TellOthers(means, waiting, secrets, PrefixesOf(options));
    if (RebootAndLook(means, options, waiting.Expected, secrets, answer) && !waiting.Unreadable.empty())
    {
        answer.Notes.push_back(NotVerified(waiting.Unreadable));
    }
}

} // namespace Tavrine::Tool
