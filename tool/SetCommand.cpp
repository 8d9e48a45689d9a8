#include "SetCommand.h"

#include <optional>
#include <unistd.h>
#include <utility>

#include <CLI/CLI.hpp>

#include "Bmc.h"
#include "CauseLog.h"
#include "Options.h"
#include "SetOutcome.h"
#include "SetPlan.h"
#include "Signals.h"

namespace Tavrine::Tool
{
namespace
{

constexpr int TypedOutput = 1;
constexpr int TextOutput = 0;

} // namespace

void AddSetOptions(CLI::App& command, Options& options)
{
    command.add_flag("--no-check", options.NoCheck,
                     "Send the values without a check against the registry; the BMC judges them");
    command.add_flag("--dry-run", options.DryRun,
                     "Check everything, send no change, and print the bodies that would be sent");
    command.footer(
        "NAME=- reads the value from standard input, up to its end and without the last line's end. Use it for\n"
        "passwords: what stands on a command line is seen by every user of this machine.\n"
        "\n"
        "Several settings are one batch: one request, but related settings never share one, nor do protected and\n"
        "ordinary ones. Settings that the check refuses are left out, the others are sent; after a request that\n"
        "failed no other is sent. What the BMC accepted is then read back (two or three small reads): a change is\n"
        "reported as done when the BMC shows it, or when it accepted one of a setting that cannot be read back.\n"
        "\n"
        "Further options: tavrine --help");
}

Answer ChangeSettings(RedfishConfigProc& front, const Options& options, const std::vector<SettingPair>& pairs,
                      const FrontMaker& freshFront)
{
    CauseLog causes;
    SetPlan plan = MakeSetPlan(front, options, pairs, causes);
    if (plan.Stop)
    {
        Abandon(plan, SetOutcome::NotSent, plan.Stop->Code, "not sent");
        plan.Requests.clear();
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
            plan.Notes.push_back(setting.Why ? setting.Why->Message : std::string());
        }
        std::erase(plan.Notes, std::string());
    }
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
    return ChangeSettings(*bmc.Front(TypedOutput), options, pairs, [&] { return bmc.Front(TextOutput); });
}

} // namespace Tavrine::Tool
