#include "RestoreCommand.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
#include <memory>
#include <utility>

#include <CLI/CLI.hpp>
#include <boost/json/object.hpp>
#include <fmt/format.h>

#include "Bmc.h"
#include "CauseLog.h"
#include "DisplayWidth.h"
#include "InputFile.h"
#include "JsonOutput.h"
#include "Options.h"
#include "OutcomeWords.h"
#include "PendingFallback.h"
#include "RestoreSend.h"
#include "Secret.h"
#include "SettingManager.h"
#include "SettingNames.h"
#include "SettingPairs.h"
#include "TextOutput.h"
#include "Verify.h"

namespace json = boost::json;

namespace Tavrine::Tool
{
namespace
{

using OutcomeWords::NamesInMessage;

const char* WordOf(RestoreOutcome outcome)
{
    switch (outcome)
    {
    case RestoreOutcome::Planned:
        return "would be sent";
    case RestoreOutcome::InPlace:
        return OutcomeWords::InPlace;
    case RestoreOutcome::Waiting:
        return "already waits for a reboot";
    case RestoreOutcome::Sent:
        return OutcomeWords::Sent;
    case RestoreOutcome::Refused:
        return OutcomeWords::Refused;
    case RestoreOutcome::NotSent:
        return OutcomeWords::NotSent;
    case RestoreOutcome::Unknown:
        return OutcomeWords::Unknown;
    }
    return OutcomeWords::Unknown;
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

WaitingChanges WaitingOf(const RestorePlan& plan, const std::string& prefix)
{
    WaitingChanges waiting;
    waiting.RequestFailed = plan.CallFailed;
    // A setting that the file has and the system refuses is left out of the calls and holds nothing back.
    waiting.Refused = plan.CallUnfit;
    for (const RestoreSetting& setting : plan.Settings)
    {
        waiting.Unknown = waiting.Unknown || setting.Outcome == RestoreOutcome::Unknown;
        const bool mayWait = setting.Outcome == RestoreOutcome::InPlace && !setting.Why.empty();
        const bool waits =
            mayWait || setting.Outcome == RestoreOutcome::Sent || setting.Outcome == RestoreOutcome::Waiting;
        if (setting.Secret && setting.Outcome != RestoreOutcome::NotSent && setting.Outcome != RestoreOutcome::Planned)
        {
            waiting.Secrets.emplace_back(std::string(setting.Value));
        }
        if (waits && setting.Secret)
        {
            waiting.Unreadable.push_back(prefix + "." + setting.Name);
        }
        else if (waits)
        {
            waiting.Expected.push_back({setting.Name, setting.Value});
        }
    }
    return waiting;
}

std::string Shortened(const std::string& name)
{
    constexpr std::size_t Longest = 60;
    return CutToWidth(EscapeControls(name), Longest);
}

void TellStrangers(const RestorePlan& plan, Answer& answer)
{
    std::vector<std::string> names;
    for (const RestoreSetting& setting : plan.Settings)
    {
        if (setting.Stranger)
        {
            names.push_back(names.size() < NamesInMessage ? Shortened(setting.Name) : std::string());
        }
    }
    if (!names.empty())
    {
        AddFailure(answer, {CodeNotFound,
                            fmt::format("{} {} of the file {} not known to this system and left out: {}", names.size(),
                                        names.size() == 1 ? "setting" : "settings", names.size() == 1 ? "is" : "are",
                                        OutcomeWords::FirstNames(names)),
                            {},
                            {}});
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
            FindWaiting(plan, *NextFront(), m_Answer.Notes);
        }
        else
        {
            SendRestore(
                plan, m_Options, [&] { return NextFront(); }, m_Answer.Notes);
        }
        TellRestore(plan, m_Options, prefix, m_Answer);
        RebootForChanges(MeansOf(m_Bmc), m_Options, WaitingOf(plan, prefix), m_Answer);
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
        if (const std::string error = TakeSavedNames(saved, PrefixesOf(m_Options), plan, m_Options.LegacyNames);
            !error.empty())
        {
            return Failure{CodeParameter, InputNameFirst(file) + " cannot be restored: " + error};
        }
        failure = CheckIdentity(saved.Header);
        return failure ? failure : Judge(plan);
    }

    std::optional<Failure> CheckIdentity(const SavedHeader& header)
    {
        SystemResource system;
        BiosResource bios;
        const BmcRequests requests = RequestsOf(m_Bmc);
        const RedfishConfigResult result = ReadSystemAndBios(requests, system, bios);
        if (!IsSuccess(result.ErrorCode()))
        {
            return FailureOf(result);
        }
        return OtherSystem(header, system, bios, m_Options, m_Answer.Notes);
    }

    std::optional<Failure> Judge(RestorePlan& plan)
    {
        std::unique_ptr<RedfishConfigProc> front = m_Bmc.StandardFront();
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
        const bool due = DefaultsAreDue(*front);
        if (m_Options.SystemType == SystemTypeBios)
        {
            m_Judging = std::move(front);
        }
        if (!IsSuccess(result.ErrorCode()))
        {
            return m_Causes.Explain(result);
        }
        return due ? std::optional(Failure{CodeRefused,
                                           "All settings go to their defaults at the next start of the system, which "
                                           "may undo what is restored now: restart it first (tavrine reboot)"})
                   : std::nullopt;
    }

    /// The one that the plan was judged by, where it is as Front makes them: it has the values and the registry, and
    /// nothing was sent since. Each further one reads anew.
    std::unique_ptr<RedfishConfigProc> NextFront() { return m_Judging ? std::move(m_Judging) : m_Bmc.Front(); }

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
            AddFailure(answer, {setting.Code, shown + ": " + Words(setting, shown), shown});
        }
        else if (count > NamesInMessage)
        {
            AddFailure(answer, {setting.Code, fmt::format("{} settings: {}", count, Words(setting, shown))});
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
                           fmt::format("{} is from another system: its {} is {}, and that of this system is "
                                       "{}; --force takes it all the same",
                                       InputNameFirst(options.Names.front()), trait.What, trait.Saved, trait.Here)};
        }
    }
    if (header.Model.empty() && header.Registry.empty())
    {
        notes.emplace_back("warning: the file does not tell which system it is from");
    }
    return std::nullopt;
}

void TellRestore(const RestorePlan& plan, const Options& options, const std::string& prefix, Answer& answer)
{
    for (const RestoreOutcome outcome : {RestoreOutcome::Unknown, RestoreOutcome::Refused, RestoreOutcome::NotSent})
    {
        TellOutcome(plan, outcome, options, prefix, answer);
    }
    TellStrangers(plan, answer);
    TellTable(plan, options, prefix, answer);
}

Answer RunRestore(const Options& options, Bmc& bmc)
{
    Answer answer = Restorer(options, bmc).Run();
    answer.OfChanges = true;
    return answer;
}

} // namespace Tavrine::Tool
