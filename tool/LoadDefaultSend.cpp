#include "LoadDefaultSend.h"

#include <algorithm>
#include <locale>
#include <utility>

#include <boost/algorithm/string/predicate.hpp>

#include "BIOSCompatibleModule.h"
#include "CauseLog.h"
#include "ChangeDelivery.h"
#include "MissingActions.h"
#include "Options.h"
#include "PendingValues.h"
#include "SettingManager.h"
#include "SettingNames.h"
#include "SettingSelection.h"

namespace Tavrine::Tool
{
namespace
{

constexpr int CodeReboot = 1;
constexpr int CodeRefused = 18;

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
    load.Why->Message = WithShownName(load.Why->Message, load.Key, load.ShownName);
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
bool IsToJudge(const DefaultLoad& load) { return load.Outcome == LoadOutcome::Unknown; }

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

Text DefaultOf(RedfishConfigProc& front, const std::string& name)
{
    SettingStringMap defaults;
    const bool isKnown = IsSuccess(front.QuerySettingDefaultValues(defaults, name).ErrorCode()) && defaults.size() == 1;
    return isKnown ? Text(defaults.begin()->second) : std::nullopt;
}

/// What is known of one setting after the changes.
struct Knowledge
{
    Text Default;
    Text Effective;
    Text Pending;
};

Knowledge KnowledgeOf(const DefaultLoad& load, RedfishConfigProc& front, const PendingValues& values)
{
    const auto find = [&](const auto& texts)
    {
        const auto found = texts.find(load.Key);
        return found != texts.end() ? Text(found->second) : std::nullopt;
    };
    return {DefaultOf(front, load.Name), find(values.Effective), find(values.Pending)};
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
    if (!boost::algorithm::iequals(*known.Default, known.Pending.value_or(*known.Effective), std::locale::classic()))
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
    return doubt + (!known.Effective ? "; its pending value could not be read"
                    : !known.Default ? "; its default could not be read"
                                     : "; the BMC does not show it among its pending values");
}

/// @param unread  why nothing could be read back.
void Judge(DefaultLoad& load, const Knowledge& known, const std::optional<Failure>& unread)
{
    load.Outcome = OutcomeOf(load, known);
    if (load.Outcome == LoadOutcome::Sent && known.Pending)
    {
        load.Expected = known.Pending;
    }
    else if (load.Outcome == LoadOutcome::Sent && unread)
    {
        load.Expected = known.Default; // without a value in what was read it is one that no BMC shows, a password
    }
    else if (load.Outcome == LoadOutcome::Unknown)
    {
        const int code = load.Open ? load.Code : unread ? unread->Code : CodeRefused;
        load.Why = Failure{code, DoubtOf(load, known), load.ShownName, {}};
    }
}

} // namespace

std::vector<DefaultLoad> SendDefaults(const Options& options,
                                      const std::function<std::unique_ptr<RedfishConfigProc>()>& freshFront,
                                      std::vector<std::string>& notes)
{
    CauseLog causes;
    const std::unique_ptr<RedfishConfigProc> front = freshFront();
    std::vector<DefaultLoad> loads = LoadsOf(options, ShownPrefixes(*front));
    Send(loads, *front, causes, notes);
    if (std::ranges::none_of(loads, IsToJudge))
    {
        return loads;
    }
    PendingValues values;
    std::optional<Failure> unread = causes.Explain(ReadBack(loads, *freshFront(), values, notes));
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
            Judge(load, KnowledgeOf(load, *front, values), unread);
        }
    }
    return loads;
}

} // namespace Tavrine::Tool
