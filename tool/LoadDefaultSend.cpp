#include "LoadDefaultSend.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <locale>
#include <memory>
#include <utility>

#include <boost/algorithm/string/predicate.hpp>

#include "BIOSCompatibleModule.h"
#include "CauseLog.h"
#include "ChangeDelivery.h"
#include "ConfigOptions.h"
#include "MissingActions.h"
#include "Options.h"
#include "OutcomeWords.h"
#include "PendingValues.h"
#include "RequestEnd.h"
#include "Secret.h"
#include "SettingNames.h"
#include "SettingSelection.h"
#include "ValueConversions.h"

namespace Tavrine::Tool
{
namespace
{

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

/// A warning or hint. The words may be the BMC's, which are searched for secrets once these are known.
struct Note
{
    std::string Lead;
    std::string Words;
};

/// Lines that hold no words of the BMC.
void AddOwnWords(const std::vector<std::string>& lines, std::vector<Note>& notes)
{
    for (const std::string& line : lines)
    {
        notes.push_back({line, {}});
    }
}

void TakeAnswer(DefaultLoad& load, const Failure& answer, std::vector<Note>& notes)
{
    load.Code = answer.Code;
    load.End = EndOf(answer);
    if (load.End == RequestEnd::Accepted)
    {
        return;
    }
    std::vector<std::string> hints;
    HintAtMissingAction(answer, hints);
    AddOwnWords(hints, notes);
    if (load.IsOpen())
    {
        notes.push_back({"warning: " + load.ShownName + ": ", answer.Message});
        return;
    }
    load.Outcome = load.End == RequestEnd::NotSent ? LoadOutcome::NotSent : LoadOutcome::Refused;
    load.Answered = true;
    load.Why = answer;
    load.Why->Message = WithShownName(load.Why->Message, load.Name, load.ShownName);
}

void Send(std::vector<DefaultLoad>& loads, RedfishConfigProc& front, CauseLog& causes, std::vector<Note>& notes)
{
    int stopped = CodeSucceed;
    for (DefaultLoad& load : loads)
    {
        if (stopped != CodeSucceed)
        {
            load.Code = stopped;
            load.Outcome = LoadOutcome::NotSent;
            load.Why = Failure{stopped, "a request before it failed", load.ShownName};
            continue;
        }
        TakeAnswer(load, causes.Explain(front.PostDefaultvalue(load.Name, ""), load.ShownName), notes);
        stopped = IsUnreachable(load.Code) ? load.Code : CodeSucceed;
    }
}

/// Neither the answer nor what kept a setting from being sent has settled it for good.
bool IsToJudge(const DefaultLoad& load) { return !load.Outcome || load.IsRefusedByBmc(); }

/// Whether the BMC has said something about it, which may repeat what it was sent.
bool IsAnswered(const DefaultLoad& load)
{
    return load.Answered && load.Outcome != LoadOutcome::NotSent && QuotesBmc(*load.Why);
}

/// Stands in for the value of a setting that shows none.
OptionalVar KindOfType(const std::string& type)
{
    return type == "Boolean" ? OptionalVar(false) : type == "Integer" ? OptionalVar(std::int64_t{0}) : std::nullopt;
}

using Manager = std::unique_ptr<RedfishConfigSettingManager>;

/// Without the registry each may be a password.
/// @return what tells the defaults; null where the registry could not be read.
Manager TakeKinds(std::vector<DefaultLoad>& loads, RedfishConfigProc& front, const ManagerReader& readManager,
                  CauseLog& causes)
{
    Manager manager;
    if (!IsSuccess(causes.Explain(readManager(front, manager)).Code))
    {
        return nullptr;
    }
    for (DefaultLoad& load : loads)
    {
        RedfishConfigSettingInfoStru info;
        const bool isKnown = manager->GetSettingOutline(load.Key, info) == CodeSucceed;
        load.Password = info.SettingType == "Password";
        load.Secret = !isKnown || load.Password;
        load.HasNames = info.SettingType == "Enumeration";
        if (!load.Secret)
        {
            load.Kind = info.CurrentValue ? std::move(info.CurrentValue) : KindOfType(info.SettingType.value_or(""));
        }
    }
    return manager;
}

/// What the BMC shows tells the kind of a setting of which nothing else does.
OptionalVar KindOf(const DefaultLoad& load, const Text& shown)
{
    const bool isTruth = shown == "true" || shown == "false";
    return !load.Kind && isTruth ? OptionalVar(false) : load.Kind;
}

/// As the BMC writes a value of the setting: a registry may have a boolean as "True".
/// @param shown  a value that the BMC shows.
Text DefaultOf(const DefaultLoad& load, const Manager& manager, const Text& shown)
{
    std::string text;
    if (!manager || manager->QuerySettingDefaultValue(load.Key, text) != CodeSucceed)
    {
        return std::nullopt;
    }
    OptionalVar value = KindOf(load, shown);
    if (TransferStringToOptionalVar(value, text))
    {
        GetOptionalVarAsString(value, text);
    }
    return text;
}

/// @param secrets  of all settings; a short one is looked for in words about its own setting alone.
void HideInAnswer(DefaultLoad& load, SecretTexts secrets)
{
    std::erase_if(secrets, IsShortSecret);
    if (load.SecretDefault && IsShortSecret(load.SecretDefault->Text()))
    {
        secrets.push_back(load.SecretDefault->Text());
    }
    load.Why = Hidden(std::move(*load.Why), secrets, load.ShownName);
}

/// The BMC's words may repeat the default of a password, of which a setting that the registry does not know has none.
void HideSecrets(std::vector<DefaultLoad>& loads, const Manager& manager, std::vector<Note>& notes)
{
    SecretTexts secrets;
    for (DefaultLoad& load : loads)
    {
        Text text = load.Password ? DefaultOf(load, manager, std::nullopt) : std::nullopt;
        if (text)
        {
            load.SecretDefault = std::make_unique<Secret>(std::move(*text));
            secrets.emplace_back(load.SecretDefault->Text());
        }
    }
    for (Note& note : notes)
    {
        note.Words = WithoutSecrets(note.Words, secrets);
    }
    for (DefaultLoad& load : loads)
    {
        if (load.Answered)
        {
            HideInAnswer(load, secrets);
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
                             std::vector<Note>& notes)
{
    RedfishConfigResult result = ReadPendingValues(reader, values);
    std::vector<std::string> warnings;
    WarnOfDefaults(reader, warnings);
    AddOwnWords(warnings, notes);
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

Knowledge KnowledgeOf(const DefaultLoad& load, const Manager& manager, const PendingValues& values)
{
    const auto find = [&](const auto& texts)
    {
        const auto found = texts.find(load.Key);
        // What a BMC shows for a password, if anything, is none.
        return found != texts.end() && !load.Password ? Text(found->second) : std::nullopt;
    };
    const Text effective = find(values.Effective);
    const Text pending = find(values.Pending);
    return {DefaultOf(load, manager, pending ? pending : effective), effective, pending};
}

/// A BMC may write the name of a value that it took in letters of its own.
bool HasTakenDefault(const DefaultLoad& load, const Knowledge& known)
{
    return load.HasNames && IsSuccess(load.Code) && known.Pending &&
           boost::algorithm::iequals(*known.Default, *known.Pending, std::locale::classic());
}

/// What the BMC shows goes before its answer. Success without a need of a reboot tells nothing by itself: it may also
/// be that nothing was sent, and a change that the BMC took may wait all the same.
LoadOutcome OutcomeOf(const DefaultLoad& load, const Knowledge& known)
{
    const bool waits = load.Code == CodeReboot;
    if (!known.Effective)
    {
        return waits ? LoadOutcome::Sent : LoadOutcome::Unknown;
    }
    if (!known.Default)
    {
        return waits && known.Pending ? LoadOutcome::Sent : LoadOutcome::Unknown;
    }
    if (HasTakenDefault(load, known))
    {
        return LoadOutcome::Sent;
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
    if (!load.IsOpen() && known.Effective && known.Default)
    {
        return "no failure was reported, but the BMC does not show the default among its pending values";
    }
    const std::string doubt(load.IsOpen() ? DeliveryWords::OutcomeUnknown
                                          : "whether it has its default, or gets it with a reboot, is not known");
    return doubt + "; " +
           (load.Password      ? "it is a password"
            : !known.Effective ? OutcomeWords::NotRead
            : !known.Default   ? "its default could not be read"
                               : OutcomeWords::NotShown);
}

/// Of a refusal that the BMC belies nothing is left but a warning.
void DropRefusal(DefaultLoad& load, std::vector<Note>& notes)
{
    notes.push_back({OutcomeWords::ShownAllTheSame + load.ShownName + ": ", load.Why->Message});
    load.Why.reset();
    load.Answered = false;
}

/// @param unread  why nothing could be read back.
void Judge(DefaultLoad& load, const Knowledge& known, const std::optional<Failure>& unread, std::vector<Note>& notes)
{
    const LoadOutcome outcome = OutcomeOf(load, known);
    if (load.IsRefusedByBmc() && outcome == LoadOutcome::Unknown)
    {
        return;
    }
    if (load.IsRefusedByBmc())
    {
        DropRefusal(load, notes);
    }
    load.Outcome = outcome;
    if (load.Outcome == LoadOutcome::Sent && !load.Secret)
    {
        // The default alone is no value to look for where the BMC, asked, shows none.
        load.Expected = known.Pending ? known.Pending : unread ? known.Default : std::nullopt;
    }
    else if (load.Outcome == LoadOutcome::Unknown)
    {
        const int code = load.IsOpen() ? load.Code : unread ? unread->Code : CodeRefused;
        load.Why = Failure{code, DoubtOf(load, known), load.ShownName};
    }
}

/// What the BMC shows goes before what its answers let one think.
/// @param manager  null where it could not be read.
void JudgeByValues(std::vector<DefaultLoad>& loads, const Manager& manager, RedfishConfigProc& reader, CauseLog& causes,
                   std::vector<Note>& notes)
{
    PendingValues values;
    std::optional<Failure> unread = causes.Explain(ReadBack(loads, reader, values, notes));
    if (IsSuccess(unread->Code))
    {
        unread.reset();
    }
    else
    {
        notes.push_back({"warning: the pending values could not be read back: ", unread->Message});
    }
    for (DefaultLoad& load : loads)
    {
        if (IsToJudge(load))
        {
            Judge(load, KnowledgeOf(load, manager, values), unread, notes);
        }
    }
}

/// Finds out what became of the settings, as far as their answers leave that open.
void Settle(std::vector<DefaultLoad>& loads, RedfishConfigProc& front, const FrontMaker& freshFront,
            const ManagerReader& readManager, CauseLog& causes, std::vector<Note>& notes)
{
    const bool anyToJudge = std::ranges::any_of(loads, IsToJudge);
    if (!anyToJudge && std::ranges::none_of(loads, IsAnswered))
    {
        return;
    }
    const Manager manager = TakeKinds(loads, front, readManager, causes);
    if (anyToJudge)
    {
        JudgeByValues(loads, manager, *freshFront(), causes, notes);
    }
    HideSecrets(loads, manager, notes);
}

} // namespace

std::vector<DefaultLoad> SendDefaults(const Options& options, const FrontMaker& freshFront,
                                      const ManagerReader& readManager, std::vector<std::string>& notes)
{
    CauseLog causes;
    const std::unique_ptr<RedfishConfigProc> front = freshFront();
    std::vector<DefaultLoad> loads = LoadsOf(options, ShownPrefixes(*front));
    std::vector<Note> told;
    Send(loads, *front, causes, told);
    Settle(loads, *front, freshFront, readManager, causes, told);
    for (const Note& note : told)
    {
        notes.push_back(note.Lead + note.Words);
    }
    return loads;
}

} // namespace Tavrine::Tool
