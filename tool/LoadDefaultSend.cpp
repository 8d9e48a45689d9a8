#include "LoadDefaultSend.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "BIOSCompatibleModule.h"
#include "CauseLog.h"
#include "ChangeDelivery.h"
#include "ConfigOptions.h"
#include "MissingActions.h"
#include "Options.h"
#include "OutcomeWords.h"
#include "PendingValues.h"
#include "Secret.h"
#include "SettingNames.h"
#include "SettingSelection.h"
#include "ValueConversions.h"

namespace Tavrine::Tool
{
namespace
{

constexpr int CodeReboot = 1;

using Text = std::optional<std::string>;

std::vector<DefaultLoad> LoadsOf(const Options& options, const Prefixes& prefixes)
{
    Config_Options naming;
    naming.LegacyNameMode = options.LegacyNames;
    std::vector<DefaultLoad> loads;
    for (const std::string& name : BareNames(options.Names, prefixes))
    {
        DefaultLoad& load = loads.emplace_back();
        load.Name = name;
        load.Key = name;
        load.ShownName = prefixes.First + "." + name;
        BIOSCompatibleModule(naming).ConvertNameFromOldToNew(name, load.Key);
    }
    return loads;
}

void TakeAnswer(DefaultLoad& load, const Failure& answer, std::vector<std::string>& notes)
{
    load.Code = answer.Code;
    if (IsSuccess(answer.Code))
    {
        return;
    }
    if (MissesAction(answer))
    {
        notes.emplace_back(MissingActionHint);
    }
    load.Open = DeliveryIn(answer.Message) == Delivery::Sent;
    if (load.Open)
    {
        notes.push_back("warning: " + load.ShownName + ": " + answer.Message);
        return;
    }
    load.Outcome = LoadOutcome::Failed;
    load.Why = answer;
    load.Why->Message = WithShownName(load.Why->Message, load.Name, load.ShownName);
}

void Send(std::vector<DefaultLoad>& loads, RedfishConfigProc& front, CauseLog& causes, std::vector<std::string>& notes)
{
    int stopped = CodeSucceed;
    for (DefaultLoad& load : loads)
    {
        if (stopped != CodeSucceed)
        {
            load.Code = stopped;
            load.Outcome = LoadOutcome::NotSent;
            load.Why = Failure{stopped, "a request before it failed", load.ShownName, {}};
            continue;
        }
        TakeAnswer(load, causes.Explain(front.PostDefaultvalue(load.Name, ""), load.ShownName), notes);
        stopped = IsUnreachable(load.Code) ? load.Code : CodeSucceed;
    }
}

/// Neither the answer nor what kept a setting from being sent has settled it.
bool IsToJudge(const DefaultLoad& load) { return !load.Outcome; }

/// Whether the BMC has said something about it, which may repeat what it was sent.
bool IsAnswered(const DefaultLoad& load) { return load.Outcome == LoadOutcome::Failed && !IsUnreachable(load.Code); }

/// Without the registry each may be a password.
void TakeKinds(std::vector<DefaultLoad>& loads, RedfishConfigProc& front, const ManagerReader& readManager,
               CauseLog& causes)
{
    std::unique_ptr<RedfishConfigSettingManager> manager;
    if (!IsSuccess(causes.Explain(readManager(front, manager)).Code))
    {
        return;
    }
    for (DefaultLoad& load : loads)
    {
        RedfishConfigSettingInfoStru info;
        const bool isKnown = manager->GetSettingOutline(load.Key, info) == CodeSucceed;
        load.Password = info.SettingType == "Password";
        load.Secret = !isKnown || load.Password;
        if (!load.Secret)
        {
            load.Kind = std::move(info.CurrentValue);
        }
    }
}

/// As the BMC writes a value of the setting: a registry may have a boolean as "True".
Text DefaultOf(const DefaultLoad& load, RedfishConfigProc& front)
{
    SettingStringMap defaults;
    const RedfishConfigResult result = front.QuerySettingDefaultValues(defaults, load.Name);
    if (!IsSuccess(result.ErrorCode()) || defaults.size() != 1)
    {
        return std::nullopt;
    }
    std::string text = defaults.begin()->second;
    OptionalVar value = load.Kind;
    if (TransferStringToOptionalVar(value, text))
    {
        GetOptionalVarAsString(value, text);
    }
    return text;
}

void HideInAnswer(DefaultLoad& load, const Text& ownDefault, SecretTexts secrets)
{
    if (load.Password && ownDefault && IsShortSecret(*ownDefault))
    {
        secrets.push_back(*ownDefault);
    }
    const bool isLeftOut = HoldsShortSecret(load.Why->Message, secrets);
    load.Why->Message = (isLeftOut ? load.ShownName + ": " : "") + WithoutSecrets(load.Why->Message, secrets);
    load.Why->Cause = isLeftOut ? "" : WithoutSecrets(load.Why->Cause, secrets);
}

/// The BMC's words may repeat the default of a password. A short one is looked for in words about it alone.
void HideSecrets(std::vector<DefaultLoad>& loads, RedfishConfigProc& front, std::vector<std::string>& notes)
{
    std::vector<Text> defaults;
    for (const DefaultLoad& load : loads)
    {
        defaults.push_back(load.Secret ? DefaultOf(load, front) : std::nullopt);
    }
    SecretTexts secrets;
    for (const Text& text : defaults)
    {
        if (text && !IsShortSecret(*text))
        {
            secrets.push_back(*text);
        }
    }
    for (std::string& note : notes)
    {
        note = WithoutSecrets(note, secrets);
    }
    for (std::size_t index = 0; index < loads.size(); ++index)
    {
        if (loads[index].Outcome == LoadOutcome::Failed)
        {
            HideInAnswer(loads[index], defaults[index], secrets);
        }
    }
}

/// What is known of one setting after the changes.
struct Knowledge
{
    Text Default;
    Text Effective;
    Text Pending;
};

/// What the BMC holds now, of the settings that are to be judged.
RedfishConfigResult ReadBack(const std::vector<DefaultLoad>& loads, RedfishConfigProc& reader, PendingValues& values,
                             std::vector<std::string>& notes)
{
    RedfishConfigResult result = ReadPendingValues(reader, values);
    WarnOfDefaults(reader, notes);
    if (!IsSuccess(result.ErrorCode()))
    {
        return result;
    }
    for (const DefaultLoad& load : loads)
    {
        if (IsToJudge(load) && !values.Effective.contains(load.Key))
        {
            AddPendingValue(reader, load.Key, values); // protected, or hidden from groups
        }
    }
    return result;
}

Knowledge KnowledgeOf(const DefaultLoad& load, RedfishConfigProc& front, const PendingValues& values)
{
    const auto find = [&](const auto& texts)
    {
        const auto found = texts.find(load.Key);
        return found != texts.end() ? Text(found->second) : std::nullopt;
    };
    return {DefaultOf(load, front), find(values.Effective), find(values.Pending)};
}

/// What the BMC shows goes before its answer. Success without a need of a reboot tells nothing by itself: it may also
/// be that nothing was sent, and a change that the BMC took may wait all the same.
LoadOutcome OutcomeOf(const DefaultLoad& load, const Knowledge& known)
{
    const bool waits = !load.Open && load.Code == CodeReboot;
    if (!known.Effective)
    {
        return waits ? LoadOutcome::Sent : LoadOutcome::Unknown;
    }
    if (!known.Default)
    {
        return waits && known.Pending ? LoadOutcome::Sent : LoadOutcome::Unknown;
    }
    if (*known.Default != known.Pending.value_or(*known.Effective))
    {
        return LoadOutcome::Unknown;
    }
    return known.Pending ? LoadOutcome::Sent : LoadOutcome::InPlace;
}

/// Why nobody knows what became of a setting.
std::string DoubtOf(const DefaultLoad& load, const Knowledge& known)
{
    if (!load.Open && known.Effective && known.Default)
    {
        return "no failure was reported, but the BMC does not show the default among its pending values";
    }
    const std::string doubt(load.Open ? DeliveryWords::OutcomeUnknown
                                      : "whether it has its default, or gets it with a reboot, is not known");
    return doubt + "; " +
           (!known.Effective ? OutcomeWords::NotRead
            : !known.Default ? "its default could not be read"
                             : OutcomeWords::NotShown);
}

/// @param unread  why nothing could be read back.
void Judge(DefaultLoad& load, const Knowledge& known, const std::optional<Failure>& unread)
{
    load.Outcome = OutcomeOf(load, known);
    if (load.Outcome == LoadOutcome::Sent && !load.Secret)
    {
        // The default alone is no value to look for where the BMC, asked, shows none.
        load.Expected = known.Pending ? known.Pending : unread ? known.Default : std::nullopt;
    }
    else if (load.Outcome == LoadOutcome::Unknown)
    {
        const int code = load.Open ? load.Code : unread ? unread->Code : CodeRefused;
        load.Why = Failure{code, DoubtOf(load, known), load.ShownName, {}};
    }
}

/// What the BMC shows goes before what its answers let one think.
/// @param front  that the defaults were sent through.
void JudgeByValues(std::vector<DefaultLoad>& loads, RedfishConfigProc& front, RedfishConfigProc& reader,
                   CauseLog& causes, std::vector<std::string>& notes)
{
    PendingValues values;
    std::optional<Failure> unread = causes.Explain(ReadBack(loads, reader, values, notes));
    if (IsSuccess(unread->Code))
    {
        unread.reset();
    }
    else
    {
        notes.push_back("warning: the pending values could not be read back: " + unread->Message);
    }
    for (DefaultLoad& load : loads)
    {
        if (IsToJudge(load))
        {
            Judge(load, KnowledgeOf(load, front, values), unread);
        }
    }
}

} // namespace

std::vector<DefaultLoad> SendDefaults(const Options& options, const FrontMaker& freshFront,
                                      const ManagerReader& readManager, std::vector<std::string>& notes)
{
    CauseLog causes;
    const std::unique_ptr<RedfishConfigProc> front = freshFront();
    std::vector<DefaultLoad> loads = LoadsOf(options, ShownPrefixes(*front));
    Send(loads, *front, causes, notes);
    const bool anyToJudge = std::ranges::any_of(loads, IsToJudge);
    if (!anyToJudge && std::ranges::none_of(loads, IsAnswered))
    {
        return loads;
    }
    TakeKinds(loads, *front, readManager, causes);
    if (anyToJudge)
    {
        JudgeByValues(loads, *front, *freshFront(), causes, notes);
    }
    HideSecrets(loads, *front, notes);
    return loads;
}

} // namespace Tavrine::Tool
