#include "RestoreSend.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

#include "Answer.h"
#include "CauseLog.h"
#include "MissingActions.h"
#include "Options.h"
#include "OrderedLookup.h"
#include "OutcomeWords.h"
#include "PendingValues.h"
#include "Secret.h"
#include "SettingNames.h"
#include "SettingSelection.h"
#include "Signals.h"

namespace Tavrine::Tool
{
namespace
{

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

void Conclude(RestoreSetting& setting, RestoreOutcome outcome, int code, const std::string& why)
{
    setting.Outcome = outcome;
    setting.Code = code;
    setting.Why = why;
}

/// Passwords that the BMC may have received, whose words may repeat them; of the short ones, of which many messages are
/// full, those of the settings alone that the words can be about.
/// @param subjects  by index.
SecretTexts SecretsIn(const RestorePlan& plan, const std::vector<std::size_t>& subjects)
{
    SecretTexts secrets;
    const auto add = [&](std::size_t index, bool isShort)
    {
        const RestoreSetting& setting = plan.Settings[index];
        if (setting.Secret && IsShortSecret(setting.Value) == isShort)
        {
            secrets.push_back(setting.Value);
        }
    };
    for (const std::vector<std::size_t>& indices : plan.Calls)
    {
        std::ranges::for_each(indices, [&](std::size_t index) { add(index, false); });
    }
    std::ranges::for_each(subjects, [&](std::size_t index) { add(index, true); });
    return secrets;
}

/// What was said of the whole, which may be about each of its settings.
std::string WordsAboutAll(const RestorePlan& plan, Failure failure)
{
    std::vector<std::size_t> all;
    for (const std::vector<std::size_t>& indices : plan.Calls)
    {
        all.insert(all.end(), indices.begin(), indices.end());
    }
    return Hidden(std::move(failure), SecretsIn(plan, all)).Message;
}

/// What is known of the settings of a call from the library's answer alone. The lists of
/// what is done say nothing: what was never sent can stand in them.
void JudgeByAnswer(RestorePlan& plan, const std::vector<std::size_t>& indices, const RestoreCall& call,
                   const Failure& failure)
{
    const bool good = IsSuccess(failure.Code);
    const std::string message = Hidden(failure, SecretsIn(plan, indices)).Message;
    for (const std::size_t index : indices)
    {
        RestoreSetting& setting = plan.Settings[index];
        const auto refusal = call.Refusals.find(setting.Name);
        if (refusal != call.Refusals.end())
        {
            // Whatever became of the call, these are the BMC's words.
            Conclude(setting, RestoreOutcome::Refused, good ? CodeRefused : failure.Code,
                     WithoutSecrets(refusal->second, SecretsIn(plan, {index})));
        }
        else if (good)
        {
            Conclude(setting, RestoreOutcome::Sent, CodeSucceed, {});
        }
        else
        {
            Conclude(setting, RestoreOutcome::Unknown, failure.Code, message);
        }
    }
}

void JudgeByValue(RestoreSetting& setting, const std::string& value, bool waits)
{
    if (value == setting.Value)
    {
        const bool waited = setting.Outcome == RestoreOutcome::InPlace;
        Conclude(setting,
                 !waits   ? RestoreOutcome::InPlace
                 : waited ? RestoreOutcome::Waiting
                          : RestoreOutcome::Sent,
                 CodeSucceed, {});
    }
    else if (setting.Outcome == RestoreOutcome::Sent || setting.Outcome == RestoreOutcome::InPlace)
    {
        const bool otherWaits = waits && setting.Outcome == RestoreOutcome::InPlace;
        Conclude(setting, RestoreOutcome::Unknown, CodeRefused,
                 otherWaits ? OutcomeWords::OtherWaits : OutcomeWords::NotShown);
    }
    else if (setting.Outcome == RestoreOutcome::Unknown)
    {
        if (setting.Why.ends_with('.'))
        {
            setting.Why.pop_back();
        }
        setting.Why += std::string("; ") + OutcomeWords::NotShown;
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
            Conclude(setting, RestoreOutcome::Unknown, code, OutcomeWords::OtherMayWait);
        }
        else if (setting.Outcome == RestoreOutcome::InPlace)
        {
            setting.Why = "whether it waits for a reboot is not known";
        }
    }
}

} // namespace

void FindWaiting(RestorePlan& plan, RedfishConfigProc& front, std::vector<std::string>& notes)
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
        notes.push_back("warning: what waits for a reboot could not be read: " +
                        WordsAboutAll(plan, FailureOf(result)));
        DoubtInPlace(plan, result.ErrorCode());
        return;
    }
    OrderedLookup pending(values.Pending);
    for (RestoreSetting& setting : plan.Settings)
    {
        const auto waiting = pending.Find(setting.Name);
        if (isInPlace(setting) && waiting != values.Pending.end())
        {
            // Another value waits where the plan was made without knowing what does: it is in no call.
            JudgeByValue(setting, waiting->second, true);
        }
    }
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
                Conclude(plan.Settings[index], RestoreOutcome::NotSent, stopped.value_or(CodeConnection),
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
        notes.push_back("warning: the values could not be read back: " + WordsAboutAll(plan, causes.Explain(result)));
        DoubtInPlace(plan, result.ErrorCode());
        return;
    }
    JudgeByValues(plan, values);
}

} // namespace Tavrine::Tool
