#include "SetCommand.h"

#include <optional>
#include <unistd.h>
#include <utility>

#include <CLI/CLI.hpp>

#include "Bmc.h"
#include "CauseLog.h"
#include "JsonValues.h"
#include "Options.h"
#include "OutcomeWords.h"
#include "Secret.h"
#include "SetOutcome.h"
#include "SetPlan.h"
#include "SettingManager.h"
#include "Signals.h"

namespace Tavrine::Tool
{
namespace
{

WaitingChanges WaitingOf(const SetPlan& plan)
{
    WaitingChanges waiting;
    waiting.RequestFailed = plan.RequestFailed;
    waiting.Refused = plan.Stop.has_value();
    for (const SetSetting& setting : plan.Settings)
    {
        waiting.Unknown = waiting.Unknown || setting.Outcome == SetOutcome::Unknown;
        waiting.Refused = waiting.Refused || setting.Outcome == SetOutcome::Refused;
        const bool changed = setting.Outcome == SetOutcome::Changed && !setting.InForce.value_or(false);
        const bool pending = setting.Outcome == SetOutcome::Already && !setting.InForce.value_or(true);
        if ((changed || pending) && !setting.Secret)
        {
            waiting.Expected.push_back({setting.Key, PlainText(setting.Context)});
        }
        if ((changed || pending) && setting.Secret)
        {
            waiting.Unreadable.push_back(setting.ShownName);
        }
        if (setting.Secret && (setting.WasSent || pending) && (setting.Password || !IsShortSecret(setting.Value)))
        {
            waiting.Secrets.emplace_back(std::string(setting.Value));
        }
    }
    return waiting;
}

} // namespace

std::string SetFault(const Options& options)
{
    const std::string fault = PairsFault(options);
    return fault.empty() ? RebootFault(options) : fault;
}

void AddSetOptions(CLI::App& command, Options& options)
{
    command.add_flag("--no-check", options.NoCheck, "Send the values without checking them; the BMC judges them");
    command.add_flag("--dry-run", options.DryRun,
                     "Check everything, send no change, and print the bodies that would be sent");
    AddRebootOptions(command, options);
    command.footer(
        "NAME=- asks for the value on a terminal, without echo, and else reads it from standard input, up to its\n"
        "end and without the last line's end. Use it for passwords: what stands on a command line is seen by every\n"
        "user of this machine.\n"
        "\n"
        "Several settings are one batch: one request, but related settings never share one, nor do protected and\n"
        "ordinary ones. Settings that the check refuses are left out, the others are sent; after a request that\n"
        "failed no other is sent. What the BMC accepted is then read back (two or three small reads): a change is\n"
        "reported as done when the BMC shows it, or when it accepted one that cannot be read back.\n"
        "--reboot restarts the system when something waits for it, unless a setting was refused or a request\n"
        "failed; what was pending already counts as changed then.\n"
        "\n"
        "Further options: tavrine --help");
}

Answer ChangeSettings(RedfishConfigProc& front, const ManagerReader& readManager, const Options& options,
                      const std::vector<SettingPair>& pairs, const FrontMaker& freshFront, WaitingChanges& waiting)
{
    CauseLog causes;
    SetPlan plan = MakeSetPlan(front, readManager, options, pairs, causes);
    WarnOfDefaults(front, plan.Notes);
    if (plan.Stop)
    {
        Abandon(plan, SetOutcome::NotSent, plan.Stop->Code, OutcomeWords::NotSent);
    }
    if (options.DryRun)
    {
        return DryRunAnswerOf(plan, options);
    }
    const std::optional<Failure> failure = SendPlan(plan, front, options, causes, freshFront);
    if (StopSignal() != 0)
    {
        // A stopped run tells no failures, but this it must tell.
        for (const SetSetting& setting : plan.Settings)
        {
            if (setting.Why)
            {
                plan.Notes.push_back(WithoutPasswords(plan, &setting, *setting.Why).Message);
            }
        }
    }
    waiting = WaitingOf(plan);
    return AnswerOf(plan, failure, options);
}

Answer RunSet(const Options& options, Bmc& bmc)
{
    std::vector<SettingPair> pairs;
    if (auto failure = ReadPairs(options, STDIN_FILENO, pairs))
    {
        Answer answer;
        AddFailure(answer, std::move(*failure));
        return answer;
    }
    WaitingChanges waiting;
    Answer answer = ChangeSettings(
        bmc.Keep(bmc.Front(OutputForm::Typed)), bmc.SettingManagers(), options, pairs, [&] { return bmc.Front(); },
        waiting);
    RebootForChanges(MeansOf(bmc), options, waiting, answer);
    answer.OfChanges = true;
    return answer;
}

} // namespace Tavrine::Tool
