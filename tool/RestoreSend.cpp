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
#include "RequestEnd.h"
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

RestoreOutcome OutcomeOf(RequestEnd end)
{
    switch (end)
    {
    case RequestEnd::Accepted:
        return RestoreOutcome::Sent;
    case RequestEnd::Unfit:
    case RequestEnd::NotSent:
        return RestoreOutcome::NotSent;
    case RequestEnd::TurnedAway:
    case RequestEnd::Refused:
        return RestoreOutcome::Refused;
    case RequestEnd::Unknown:
        return RestoreOutcome::Unknown;
    }
    return RestoreOutcome::Unknown;
}

/// What is known of the settings of a call from the library's answer alone. The lists of
/// what is done say nothing: what was never sent can stand in them.
void JudgeByAnswer(RestorePlan& plan, const std::vector<std::size_t>& indices, const RestoreCall& call,
                   const Failure& failure)
{
    const bool good = IsSuccess(failure.Code);
    const RestoreOutcome outcome = OutcomeOf(EndOf(failure));
    const std::string message = good ? "" : Hidden(failure, SecretsIn(plan, indices)).Message;
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
        else
        {
            Conclude(setting, outcome, good ? CodeSucceed : failure.Code, message);
        }
    }
}

/// @param inCall  whether it was to be sent.
void JudgeByValue(RestoreSetting& setting, const std::string& value, bool waits, bool inCall)
{
    if (value == setting.Value)
    {
        // What was not sent has come there by another way.
        const bool wasSent = inCall && setting.Outcome != RestoreOutcome::NotSent;
        Conclude(setting,
                 !waits    ? RestoreOutcome::InPlace
                 : wasSent ? RestoreOutcome::Sent
                           : RestoreOutcome::Waiting,
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

/// Which settings were to be sent, by index.
std::vector<bool> InCalls(const RestorePlan& plan)
{
    std::vector<bool> inCalls(plan.Settings.size());
    for (const std::vector<std::size_t>& indices : plan.Calls)
    {
        std::ranges::for_each(indices, [&](std::size_t index) { inCalls[index] = true; });
    }
    return inCalls;
}

/// What the BMC itself shows goes before what the answers let one think.
void JudgeByValues(RestorePlan& plan, const PendingValues& values)
{
    OrderedLookup effectiveValues(values.Effective);
    OrderedLookup pendingValues(values.Pending);
    const std::vector<bool> inCalls = InCalls(plan);
    for (std::size_t index = 0; index < plan.Settings.size(); ++index)
    {
        RestoreSetting& setting = plan.Settings[index];
        const bool open =
            inCalls[index] || setting.Outcome == RestoreOutcome::InPlace || setting.Outcome == RestoreOutcome::Refused;
        const auto effective = effectiveValues.Find(setting.Name);
        if (open && !setting.Secret && effective != values.Effective.end())
        {
            const auto pending = pendingValues.Find(setting.Name);
            const bool waits = pending != values.Pending.end();
            JudgeByValue(setting, waits ? pending->second : effective->second, waits, inCalls[index]);
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

/// A call that failed, and of what settings, by index.
struct FailedCall
{
    const std::vector<std::size_t>* Indices;
    Failure Why;
    /// The library's own check refuses it: there was no request that could fail.
    bool Unfit;
};

bool IsDone(const RestorePlan& plan, const std::vector<std::size_t>& indices)
{
    return std::ranges::all_of(indices,
                               [&](std::size_t index)
                               {
                                   const RestoreOutcome outcome = plan.Settings[index].Outcome;
                                   return outcome == RestoreOutcome::Sent || outcome == RestoreOutcome::InPlace ||
                                          outcome == RestoreOutcome::Waiting;
                               });
}

/// Whether a request failed and not all is done that was to be sent. Behind one that failed others were not sent.
bool IsCallFailed(const RestorePlan& plan, const std::vector<FailedCall>& failed)
{
    const auto isUnfit = [&](const std::vector<std::size_t>& indices) {
        return std::ranges::any_of(failed,
                                   [&](const FailedCall& call) { return call.Unfit && call.Indices == &indices; });
    };
    return !std::ranges::all_of(failed, &FailedCall::Unfit) &&
           !std::ranges::all_of(plan.Calls, [&](const std::vector<std::size_t>& indices)
                                { return isUnfit(indices) || IsDone(plan, indices); });
}

/// Once all is judged: a failure that no setting tells.
void TellFailedCalls(RestorePlan& plan, const std::vector<FailedCall>& failed, std::vector<std::string>& notes)
{
    for (const FailedCall& call : failed)
    {
        if (!call.Unfit && IsDone(plan, *call.Indices))
        {
            notes.push_back(OutcomeWords::ShownAllTheSame + WordsAboutAll(plan, call.Why));
        }
    }
    plan.CallFailed = IsCallFailed(plan, failed);
    plan.CallUnfit =
        std::ranges::any_of(failed, [&](const FailedCall& call) { return call.Unfit && !IsDone(plan, *call.Indices); });
}

/// What failed, and nothing else is sent once the BMC cannot be reached.
std::vector<FailedCall> MakeCalls(RestorePlan& plan, const Options& options, const FrontMaker& freshFront,
                                  CauseLog& causes, std::vector<std::string>& notes)
{
    std::vector<FailedCall> failed;
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
        JudgeByAnswer(plan, indices, call, failure);
        if (IsSuccess(failure.Code))
        {
            continue;
        }
        failed.push_back({&indices, failure, EndOf(failure) == RequestEnd::Unfit});
        if (IsUnreachable(failure.Code))
        {
            stopped = failure.Code;
        }
        HintAtMissingAction(failure, notes);
    }
    return failed;
}

void ReadBack(RestorePlan& plan, RedfishConfigProc& front, CauseLog& causes, std::vector<std::string>& notes)
{
    PendingValues values;
    const RedfishConfigResult result = ReadPendingValues(front, values);
    if (!IsSuccess(result.ErrorCode()))
    {
        notes.push_back("warning: the values could not be read back: " + WordsAboutAll(plan, causes.Explain(result)));
        DoubtInPlace(plan, result.ErrorCode());
        return;
    }
    JudgeByValues(plan, values);
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
            JudgeByValue(setting, waiting->second, true, false);
        }
    }
}

void SendRestore(RestorePlan& plan, const Options& options, const FrontMaker& freshFront,
                 std::vector<std::string>& notes)
{
    CauseLog causes;
    const std::vector<FailedCall> failed = MakeCalls(plan, options, freshFront, causes, notes);
    ReadBack(plan, *freshFront(), causes, notes);
    TellFailedCalls(plan, failed, notes);
}

} // namespace Tavrine::Tool
