#include "RestoreCommand.h"

#include <algorithm>
#include <array>
#include <map>
#include <utility>

#include <CLI/CLI.hpp>
#include <boost/json/object.hpp>
#include <fmt/format.h>

#include "Bmc.h"
#include "CauseLog.h"
#include "DisplayWidth.h"
#include "JsonOutput.h"
#include "MissingActions.h"
#include "Options.h"
#include "OrderedLookup.h"
#include "PendingFallback.h"
#include "PendingValues.h"
#include "SettingManager.h"
#include "SettingNames.h"
#include "SettingPairs.h"
#include "SettingSelection.h"
#include "Signals.h"
#include "TextOutput.h"
#include "Verify.h"

namespace json = boost::json;

namespace Tavrine::Tool
{
namespace
{

constexpr int CodeNoValue = 8;
constexpr int CodeRefused = 18;
constexpr int CodeUnknownSetting = 20;
constexpr std::size_t NamesInMessage = 5;
constexpr const char* Blot = "********";

using FrontMaker = std::function<std::unique_ptr<RedfishConfigProc>()>;

const char* WordOf(RestoreOutcome outcome)
{
    switch (outcome)
    {
    case RestoreOutcome::Planned:
        return "would be sent";
    case RestoreOutcome::InPlace:
        return "in place";
    case RestoreOutcome::Waiting:
        return "already waits for a reboot";
    case RestoreOutcome::Sent:
        return "sent, takes effect after a reboot";
    case RestoreOutcome::Refused:
        return "refused";
    case RestoreOutcome::NotSent:
        return "not sent";
    default:
        return "unknown";
    }
}

std::string ReasonOf(const RestoreSetting& setting, const std::string& shownName)
{
    return WithShownName(setting.Why, setting.Name, shownName);
}

std::string Words(const RestoreSetting& setting, const std::string& shownName)
{
    const std::string reason = ReasonOf(setting, shownName);
    return WordOf(setting.Outcome) + (reason.empty() ? "" : ": " + reason);
}

/// One call of the library, and what it said.
struct RestoreCall
{
    RedfishConfigResult Result{CodeSucceed, "", ""};
    /// Bare name to message.
    SettingStringMap Refusals;
};

RestoreCall MakeCall(const RestorePlan& plan, const std::vector<std::size_t>& indices, bool sameSystem,
                     RedfishConfigProc& front)
{
    RestoreCall call;
    SettingStringMap values;
    for (const std::size_t index : indices)
    {
        values.emplace_hint(values.end(), plan.Settings[index].Name, plan.Settings[index].Value);
    }
    SettingStringMap done;
    SettingStringMap failed;
    call.Result = front.Restore(values, done, failed, sameSystem, false);
    const Prefixes prefixes = ShownPrefixes(front);
    for (RedfishConfigResult& error : front.m_ErrorList)
    {
        call.Refusals.emplace(BareName(error.ErrorSetting(), prefixes), FailureOf(error).Message);
    }
    for (const auto& [name, message] : failed)
    {
        call.Refusals.emplace(BareName(name, prefixes), message);
    }
    return call;
}

void SetOutcome(RestoreSetting& setting, RestoreOutcome outcome, int code, const std::string& why)
{
    setting.Outcome = outcome;
    setting.Code = code;
    setting.Why = why;
}

/// What is known of the settings of a call from the library's answer alone. The lists of
/// what is done say nothing: what was never sent can stand in them.
void JudgeByAnswer(RestorePlan& plan, const std::vector<std::size_t>& indices, const RestoreCall& call,
                   const Failure& failure)
{
    const bool good = IsSuccess(failure.Code);
    for (const std::size_t index : indices)
    {
        RestoreSetting& setting = plan.Settings[index];
        const auto refusal = call.Refusals.find(setting.Name);
        if (refusal != call.Refusals.end())
        {
            SetOutcome(setting, RestoreOutcome::Refused, good ? CodeRefused : failure.Code, refusal->second);
        }
        else if (good)
        {
            SetOutcome(setting, RestoreOutcome::Sent, CodeSucceed, {});
        }
        else
        {
            SetOutcome(setting, RestoreOutcome::Unknown, failure.Code, failure.Message);
        }
    }
}

void JudgeByValue(RestoreSetting& setting, const std::string& value, bool waits)
{
    if (value == setting.Value)
    {
        const bool waited = setting.Outcome == RestoreOutcome::InPlace;
        SetOutcome(setting,
                   !waits   ? RestoreOutcome::InPlace
                   : waited ? RestoreOutcome::Waiting
                            : RestoreOutcome::Sent,
                   CodeSucceed, {});
    }
    else if (setting.Outcome == RestoreOutcome::Sent || setting.Outcome == RestoreOutcome::InPlace)
    {
        SetOutcome(setting, RestoreOutcome::Unknown, CodeRefused,
                   "the BMC does not show the value among those that wait for a reboot");
    }
    else if (setting.Outcome == RestoreOutcome::Unknown)
    {
        if (setting.Why.ends_with('.'))
        {
            setting.Why.pop_back();
        }
        setting.Why += "; the BMC does not show the value among those that wait for a reboot";
    }
}

/// What the BMC itself shows goes before what the answers let one think.
void JudgeByValues(RestorePlan& plan, const PendingValues& values)
{
    OrderedLookup effectiveValues(values.Effective);
    OrderedLookup pendingValues(values.Pending);
    for (RestoreSetting& setting : plan.Settings)
    {
        const bool open = setting.Outcome == RestoreOutcome::Sent || setting.Outcome == RestoreOutcome::Unknown ||
                          setting.Outcome == RestoreOutcome::InPlace || setting.Outcome == RestoreOutcome::Refused;
        const auto effective = effectiveValues.Find(setting.Name);
        if (open && !setting.Secret && effective != values.Effective.end())
        {
            const auto pending = pendingValues.Find(setting.Name);
            const bool waits = pending != values.Pending.end();
            JudgeByValue(setting, waits ? pending->second : effective->second, waits);
        }
    }
}

/// What waits for a reboot was not to be read.
/// @param code  of the read.
void DoubtInPlace(RestorePlan& plan, int code)
{
    for (RestoreSetting& setting : plan.Settings)
    {
        if (setting.Outcome == RestoreOutcome::InPlace && plan.PendingUnread)
        {
            SetOutcome(setting, RestoreOutcome::Unknown, code, "another value may wait for a reboot");
        }
        else if (setting.Outcome == RestoreOutcome::InPlace)
        {
            setting.Why = "whether it waits for a reboot is not known";
        }
    }
}

/// Of a plan that nothing is sent of: what is in place may be so after a reboot alone.
void FindWaiting(RestorePlan& plan, RedfishConfigProc& front, Answer& answer)
{
    const auto isInPlace = [](const RestoreSetting& setting) { return setting.Outcome == RestoreOutcome::InPlace; };
    if (std::ranges::none_of(plan.Settings, isInPlace))
    {
        return;
    }
    PendingValues values;
    const RedfishConfigResult result = ReadPendingValues(front, values);
    if (!IsSuccess(result.ErrorCode()))
    {
        answer.Notes.push_back("warning: what waits for a reboot could not be read: " + FailureOf(result).Message);
        DoubtInPlace(plan, result.ErrorCode());
        return;
    }
    OrderedLookup pending(values.Pending);
    for (RestoreSetting& setting : plan.Settings)
    {
        if (isInPlace(setting) && pending.Find(setting.Name) != values.Pending.end())
        {
            setting.Outcome = RestoreOutcome::Waiting;
        }
    }
}

std::string Shortened(const std::string& name)
{
    constexpr std::size_t Longest = 60;
    return CutToWidth(EscapeControls(name), Longest);
}

void TellStrangers(const RestorePlan& plan, const Options& options, Answer& answer)
{
    std::size_t count = 0;
    std::string names;
    for (const RestoreSetting& setting : plan.Settings)
    {
        if (setting.Stranger && count++ < NamesInMessage)
        {
            names += (names.empty() ? "" : ", ") + Shortened(setting.Name);
        }
    }
    if (count > 0)
    {
        AddFailure(answer, {CodeUnknownSetting,
                            fmt::format("{} {} of the file {} not known to this system and left out: {}{}", count,
                                        count == 1 ? "setting" : "settings", count == 1 ? "is" : "are", names,
                                        count > NamesInMessage ? fmt::format(" and {} more", count - NamesInMessage)
                                                               : std::string()),
                            {},
                            "file " + options.Names.front()});
    }
}

void TellTable(const RestorePlan& plan, const Options& options, const std::string& prefix, Answer& answer)
{
    std::vector<std::vector<std::string>> rows;
    rows.reserve(plan.Settings.size());
    for (const RestoreSetting& setting : plan.Settings)
    {
        const std::string value = setting.Secret ? Blot : setting.Value;
        const std::string shown = prefix + "." + setting.Name;
        if (!options.Json)
        {
            std::vector<std::string>& row = rows.emplace_back(); // a list in braces would copy each text
            row.reserve(3);
            row.push_back(EscapeText(shown));
            row.push_back(EscapeText(value));
            row.push_back(EscapeText(Words(setting, shown)));
            continue;
        }
        json::object entry{{"value", ValidUtf8(value)}, {"outcome", WordOf(setting.Outcome)}};
        if (const std::string reason = ReasonOf(setting, shown); !reason.empty())
        {
            entry["reason"] = ValidUtf8(reason);
        }
        answer.Data[ValidUtf8(shown)] = std::move(entry);
    }
    if (!options.Json)
    {
        answer.Text += TableText({"SETTING", "VALUE", "OUTCOME"}, rows, TerminalWidth());
    }
}

class Restorer
{
  public:
    Restorer(const Options& options, Bmc& bmc) : m_Options(options), m_Bmc(bmc) {}

    Answer Run()
    {
        SavedSettings saved;
        RestorePlan plan;
        if (auto failure = Prepare(saved, plan))
        {
            AddFailure(m_Answer, std::move(*failure));
            m_Answer.Notes.emplace_back("nothing was sent");
            return std::move(m_Answer);
        }
        const std::string prefix = PrefixesOf(m_Options).First;
        if (m_Options.DryRun)
        {
            FindWaiting(plan, *NextFront(), m_Answer);
        }
        else
        {
            SendRestore(
                plan, m_Options, [&] { return NextFront(); }, m_Answer.Notes);
        }
        TellRestore(plan, m_Options, prefix, m_Answer);
        if (m_Options.Reboot)
        {
            Reboot(plan);
        }
        return std::move(m_Answer);
    }

  private:
    std::optional<Failure> Prepare(SavedSettings& saved, RestorePlan& plan)
    {
        const std::string& file = m_Options.Names.front();
        std::optional<Failure> failure = ReadSavedSettings(file, saved);
        if (failure)
        {
            return failure;
        }
        if (const std::string error = TakeSavedNames(saved, PrefixesOf(m_Options), plan); !error.empty())
        {
            return Failure{CodeParameter, "The file " + file + " cannot be restored: " + error, {}, {}};
        }
        failure = CheckIdentity(saved.Header);
        return failure ? failure : Judge(plan);
    }

    std::optional<Failure> CheckIdentity(const SavedHeader& header)
    {
        SystemResource system;
        BiosResource bios;
        const BmcRequests requests = RequestsOf(m_Bmc);
        RedfishConfigResult result = ReadSystem(requests, system);
        if (IsSuccess(result.ErrorCode()))
        {
            result = ReadBios(requests, system, bios);
        }
        if (!IsSuccess(result.ErrorCode()))
        {
            return FailureOf(result);
        }
        if (bios.DefaultsPending)
        {
            return Failure{
                CodeRefused,
                "All settings go to their defaults at the next start of the system, which may undo what is restored "
                "now: restart it first (tavrine reboot)",
                {},
                {}};
        }
        return OtherSystem(header, system, bios, m_Options, m_Answer.Notes);
    }

    std::optional<Failure> Judge(RestorePlan& plan)
    {
        std::unique_ptr<RedfishConfigProc> front = m_Bmc.StandardFront(0);
        std::unique_ptr<RedfishConfigSettingManager> manager;
        const PendingFallback fallback;
        RedfishConfigResult result = m_Bmc.SettingManagers()(*front, manager);
        if (IsSuccess(result.ErrorCode()))
        {
            const auto isReported = [&](const std::string& name)
            {
                SettingStringMap value;
                const RedfishConfigResult read = front->QuerySettingValue(name, value);
                return IsSuccess(read.ErrorCode()) || read == CodeNoValue;
            };
            result =
                JudgeRestore(*manager, m_Options.SameSystem, m_Options.SystemType == SystemTypeUefi, isReported, plan);
            plan.PendingUnread = fallback.Warning().has_value();
        }
        if (m_Options.SystemType == SystemTypeBios)
        {
            m_Judging = std::move(front);
        }
        return IsSuccess(result.ErrorCode()) ? std::nullopt : std::optional(m_Causes.Explain(result));
    }

    /// The one that the plan was judged by, where it is as Front makes them: it has the values and the registry, and
    /// nothing was sent since. Each further one reads anew.
    std::unique_ptr<RedfishConfigProc> NextFront() { return m_Judging ? std::move(m_Judging) : m_Bmc.Front(0); }

    void Reboot(const RestorePlan& plan)
    {
        std::vector<ExpectedValue> expected;
        bool unknown = false;
        for (const RestoreSetting& setting : plan.Settings)
        {
            unknown = unknown || setting.Outcome == RestoreOutcome::Unknown;
            const bool mayWait = setting.Outcome == RestoreOutcome::InPlace && !setting.Why.empty();
            const bool waits =
                mayWait || setting.Outcome == RestoreOutcome::Sent || setting.Outcome == RestoreOutcome::Waiting;
            if (waits && !setting.Secret)
            {
                expected.push_back({setting.Name, setting.Value});
            }
        }
        if (unknown || expected.empty())
        {
            m_Answer.Notes.emplace_back(unknown ? "not restarted, since what the BMC has received is not known"
                                                : "not restarted, since nothing waits for it");
            return;
        }
        RebootAndVerify(MeansOf(m_Bmc), m_Options, expected, m_Answer);
    }

    const Options& m_Options;
    Bmc& m_Bmc;
    Answer m_Answer;
    CauseLog m_Causes;
    std::unique_ptr<RedfishConfigProc> m_Judging;
};

/// Why settings are not where they should be. What befell many of them, a lost connection for example, is told once
/// where people read; the table has them all.
void TellOutcome(const RestorePlan& plan, RestoreOutcome outcome, const Options& options, const std::string& prefix,
                 Answer& answer)
{
    const auto isToTell = [outcome](const RestoreSetting& setting)
    { return setting.Outcome == outcome && setting.Code != CodeSucceed && !setting.Stranger; };
    std::map<std::string, std::size_t> alike;
    for (const RestoreSetting& setting : plan.Settings)
    {
        if (isToTell(setting))
        {
            ++alike[setting.Why];
        }
    }
    for (const RestoreSetting& setting : plan.Settings)
    {
        if (!isToTell(setting))
        {
            continue;
        }
        const std::string shown = prefix + "." + setting.Name;
        std::size_t& count = alike[setting.Why];
        if (options.Json || (count > 0 && count <= NamesInMessage))
        {
            AddFailure(answer, {setting.Code, shown + ": " + Words(setting, shown), shown, {}});
        }
        else if (count > NamesInMessage)
        {
            AddFailure(answer, {setting.Code, fmt::format("{} settings: {}", count, Words(setting, shown)), {}, {}});
            count = 0;
        }
    }
}

} // namespace

void AddRestoreOptions(CLI::App& command, Options& options)
{
    command.add_flag("--same-system", options.SameSystem,
                     "The file is from this very machine: restore what belongs to it alone, too");
    command.add_flag("--force", options.Force, "Take a file from another model or attribute registry");
    command.add_flag("--dry-run", options.DryRun, "Check everything and send no change");
    AddRebootOptions(command, options);
    command.footer("FILE is what save has written, or lines NAME=VALUE; - reads standard input. Settings that this\n"
                   "system does not know or does not take are listed and left out, the others are sent.\n"
                   "\n"
                   "Further options: tavrine --help");
}

std::string RestoreFault(const Options& options)
{
    return options.Names.size() != 1       ? "restore takes one file"
           : options.Names.front().empty() ? "restore needs a file name that is not empty"
           : options.Hex                   ? "Saved numbers are decimal: leave out --hex"
           : options.Names.front() == "-" && options.PasswordFile == "-"
               ? "--password-file - and restore - cannot both read standard input"
               : RebootFault(options);
}

std::optional<Failure> OtherSystem(const SavedHeader& header, const SystemResource& system, const BiosResource& bios,
                                   const Options& options, std::vector<std::string>& notes)
{
    struct Trait
    {
        const char* What;
        const std::string& Saved;
        const std::string& Here;
        bool Counts;
    };
    const std::array traits = {
        Trait{"model", header.Model, system.Model, true},
        Trait{"attribute registry", header.Registry, bios.Registry, true},
        Trait{"serial number", header.SerialNumber, system.SerialNumber, options.SameSystem},
    };
    for (const Trait& trait : traits)
    {
        if (trait.Counts && !options.Force && !trait.Saved.empty() && !trait.Here.empty() && trait.Saved != trait.Here)
        {
            return Failure{CodeParameter,
                           fmt::format("The file {} is from another system: its {} is {}, and that of this system is "
                                       "{}; --force takes it all the same",
                                       options.Names.front(), trait.What, trait.Saved, trait.Here),
                           {},
                           {}};
        }
    }
    if (header.Model.empty() && header.Registry.empty())
    {
        notes.emplace_back("warning: the file does not tell which system it is from");
    }
    return std::nullopt;
}

void SendRestore(RestorePlan& plan, const Options& options, const FrontMaker& freshFront,
                 std::vector<std::string>& notes)
{
    CauseLog causes;
    std::optional<int> stopped;
    for (const std::vector<std::size_t>& indices : plan.Calls)
    {
        if (stopped || StopSignal() != 0)
        {
            for (const std::size_t index : indices)
            {
                SetOutcome(plan.Settings[index], RestoreOutcome::NotSent, stopped.value_or(CodeConnection),
                           stopped ? "a request before it failed" : "the run was stopped");
            }
            continue;
        }
        const RestoreCall call = MakeCall(plan, indices, options.SameSystem, *freshFront());
        const Failure failure = causes.Explain(call.Result);
        if (IsUnreachable(failure.Code))
        {
            stopped = failure.Code;
        }
        if (MissesAction(failure))
        {
            notes.emplace_back(MissingActionHint);
        }
        JudgeByAnswer(plan, indices, call, failure);
    }
    PendingValues values;
    const RedfishConfigResult result = ReadPendingValues(*freshFront(), values);
    if (!IsSuccess(result.ErrorCode()))
    {
        notes.push_back("warning: the values could not be read back: " + causes.Explain(result).Message);
        DoubtInPlace(plan, result.ErrorCode());
        return;
    }
    JudgeByValues(plan, values);
}

void TellRestore(const RestorePlan& plan, const Options& options, const std::string& prefix, Answer& answer)
{
    for (const RestoreOutcome outcome : {RestoreOutcome::Unknown, RestoreOutcome::Refused, RestoreOutcome::NotSent})
    {
        TellOutcome(plan, outcome, options, prefix, answer);
    }
    TellStrangers(plan, options, answer);
    TellTable(plan, options, prefix, answer);
}

Answer RunRestore(const Options& options, Bmc& bmc) { return Restorer(options, bmc).Run(); }

} // namespace Tavrine::Tool
