#include "LoadDefaultCommand.h"

#include <algorithm>
#include <locale>
#include <optional>
#include <utility>

#include <CLI/CLI.hpp>
#include <boost/algorithm/string/predicate.hpp>
#include <boost/json/object.hpp>

#include "BIOSCompatibleModule.h"
#include "Bmc.h"
#include "CauseLog.h"
#include "ChangeDelivery.h"
#include "Confirmation.h"
#include "JsonOutput.h"
#include "MissingActions.h"
#include "NamePatterns.h"
#include "Options.h"
#include "PendingValues.h"
#include "SettingManager.h"
#include "SettingNames.h"
#include "SettingPairs.h"
#include "SettingSelection.h"
#include "TextOutput.h"
#include "ValueConversions.h"

namespace json = boost::json;

namespace Tavrine::Tool
{
namespace
{

constexpr int CodeReboot = 1;
constexpr int CodeRefused = 18;
constexpr const char* ResetRequest = "reset-bios";
constexpr const char* PostRequest = "post";

bool Equal(const std::string& left, const std::string& right)
{
    return boost::algorithm::iequals(left, right, std::locale::classic());
}

bool IsWholeWord(const std::string& name, const Options& options)
{
    return Equal(name, PrefixesOf(options).First) || Equal(name, "UEFI") || Equal(name, "BIOS");
}

bool IsWhole(const Options& options)
{
    // To the letter, since it resets the whole machine.
    return options.Names.size() == 1 && options.Names.front() == PrefixesOf(options).First;
}

std::string WhatIsWiped(const Options& options)
{
    return options.Post ? "This sets all settings of the system to their defaults at its next start"
                        : "This resets all settings of the system to their defaults";
}

/// One setting on its way to its default.
struct DefaultLoad
{
    std::string Name;
    /// Under what the BMC knows it.
    std::string Key;
    RedfishConfigResult Result;
    /// Nobody knows whether its request was carried out.
    std::optional<Failure> Open;
};

constexpr const char* Sent = "sent, takes effect after a reboot";
constexpr const char* InPlace = "in place";
constexpr const char* Unknown = "unknown";

/// What the BMC shows of a load, or else has answered.
const char* OutcomeOf(RedfishConfigProc& front, const DefaultLoad& load, const PendingValues& values)
{
    SettingStringMap defaults;
    const bool hasDefault =
        IsSuccess(front.QuerySettingDefaultValues(defaults, load.Name).ErrorCode()) && defaults.size() == 1;
    const auto isDefault = [&](const std::string& value) { return Equal(defaults.begin()->second, value); };
    const auto effective = values.Effective.find(load.Key);
    const auto pending = values.Pending.find(load.Key);
    if (pending != values.Pending.end() && (!load.Open || (hasDefault && isDefault(pending->second))))
    {
        return Sent;
    }
    if (effective == values.Effective.end())
    {
        return load.Open ? Unknown : load.Result == CodeReboot ? Sent : InPlace;
    }
    if (hasDefault)
    {
        return isDefault(effective->second) && pending == values.Pending.end() ? InPlace : Unknown;
    }
    return load.Open || load.Result == CodeReboot ? Unknown : InPlace;
}

/// Of a load whose outcome is not known.
Failure UnknownLoad(const DefaultLoad& load, const std::string& shown, bool isRead)
{
    if (!load.Open)
    {
        return {CodeRefused,
                shown + ": the BMC accepted the change, but does not show it among its pending values",
                shown,
                {}};
    }
    return {
        load.Open->Code,
        shown + ": " + std::string(DeliveryWords::OutcomeUnknown) +
            (isRead ? "; the BMC does not show it among its pending values" : "; its pending value could not be read"),
        shown,
        {}};
}

void PutOutcome(const std::string& shown, const std::string& word, const Options& options, Answer& answer)
{
    if (options.Json)
    {
        answer.Data[ValidUtf8(shown)] = json::object{{"outcome", word}};
    }
    else
    {
        answer.Text += EscapeText(shown) + ": " + word + "\n";
    }
}

/// The defaults that a load of all of them brings, of the settings that have values and can
/// be written.
RedfishConfigResult AllDefaults(RedfishConfigProc& front, const ManagerReader& readManager,
                                std::vector<ExpectedValue>& expected)
{
    front.m_Options.HexValueMode = false; // what is expected are decimal texts
    std::unique_ptr<RedfishConfigSettingManager> manager;
    RedfishConfigResult result = readManager(front, manager);
    if (!IsSuccess(result.ErrorCode()))
    {
        return result;
    }
    SettingStringMap defaults;
    manager->QueryGroupSettingDefaultValues(defaults); // some have none, which is no matter here
    SettingStringMap contexts;
    manager->PreparePatchContext(defaults, contexts, FilterDefaultAll);
    for (const auto& entry : contexts)
    {
        RedfishConfigSettingInfoStru info;
        if (manager->GetSettingProperties(entry.first, info) == CodeSucceed && info.CurrentValue)
        {
            expected.push_back({entry.first, defaults[entry.first]});
        }
    }
    return {CodeSucceed, "", ""};
}

Answer RunWhole(const Options& options, Bmc& bmc)
{
    Answer answer;
    std::vector<ExpectedValue> expected;
    if (auto refused = Confirm(options, bmc.Name() + ": " + WhatIsWiped(options)))
    {
        AddFailure(answer, std::move(*refused));
        return answer;
    }
    if (options.Wait)
    {
        const RedfishConfigResult result = AllDefaults(*bmc.StandardFront(0), bmc.SettingManagers(), expected);
        if (!IsSuccess(result.ErrorCode()))
        {
            AddFailure(answer, FailureOf(result));
            return answer;
        }
    }
    answer = LoadAllDefaults(*bmc.Front(0), options);
    if (IsSuccess(answer.Code))
    {
        RebootMeans means = MeansOf(bmc);
        means.LoadsDefaults = true;
        RebootAndVerify(means, options, expected, answer);
    }
    return answer;
}

} // namespace

void AddLoadDefaultOptions(CLI::App& command, Options& options)
{
    command.add_flag("--post", options.Post, "The firmware loads all defaults at its next start (UEFI or BIOS alone)");
    command.add_flag("--yes", options.Yes, "Do not ask before all settings are reset");
    AddRebootOptions(command, options);
    command.footer("The one name UEFI or BIOS, the prefix of names in force, stands for all settings.\n"
                   "\n"
                   "Further options: tavrine --help");
}

std::string LoadDefaultFault(const Options& options)
{
    const std::string prefix = PrefixesOf(options).First;
    for (const std::string& name : options.Names)
    {
        if (IsWholeWord(name, options) && !IsWhole(options))
        {
            return options.Names.size() > 1 ? name + " stands for all settings and takes no other names beside it"
                                            : name + " is not the prefix in force, which is " + prefix;
        }
        if (IsPattern(name))
        {
            return "loaddefault takes no patterns";
        }
        if (BareName(name, PrefixesOf(options)).empty())
        {
            return "loaddefault needs names that are not empty";
        }
    }
    if (!IsWhole(options))
    {
        return options.Post ? "--post needs the one name " + prefix : RebootFault(options);
    }
    const std::string fault = ConfirmationFault(options, WhatIsWiped(options));
    return fault.empty() ? RebootFault(options) : fault;
}

Answer LoadAllDefaults(RedfishConfigProc& front, const Options& options)
{
    Answer answer;
    CauseLog causes;
    const RedfishConfigResult result = front.PostDefaultvalue("", options.Post ? PostRequest : ResetRequest);
    const Failure failure = causes.Explain(result);
    if (MissesAction(failure))
    {
        answer.Notes.emplace_back(MissingActionHint);
    }
    if (!IsSuccess(failure.Code))
    {
        AddFailure(answer, failure);
        return answer;
    }
    PutOutcome(front.m_Prefix, Sent, options, answer);
    return answer;
}

Answer LoadSingleDefaults(const Options& options, const std::function<std::unique_ptr<RedfishConfigProc>()>& freshFront,
                          std::vector<ExpectedValue>& expected)
{
    Answer answer;
    CauseLog causes;
    const std::unique_ptr<RedfishConfigProc> front = freshFront();
    const Prefixes prefixes = ShownPrefixes(*front);
    Config_Options naming;
    naming.LegacyNameMode = options.LegacyNames;
    std::vector<DefaultLoad> loads;
    bool stopped = false;
    for (const std::string& name : BareNames(options.Names, prefixes))
    {
        const std::string shown = prefixes.First + "." + name;
        if (stopped)
        {
            AddFailure(answer, {CodeConnection, shown + ": not sent, since a request before it failed", shown, {}});
            continue;
        }
        const RedfishConfigResult result = front->PostDefaultvalue(name, "");
        const Failure failure = causes.Explain(result, shown);
        const bool isOpen = !IsSuccess(failure.Code) && DeliveryIn(failure.Message) == Delivery::Sent;
        if (IsSuccess(failure.Code) || isOpen)
        {
            DefaultLoad& load =
                loads.emplace_back(DefaultLoad{name, name, result, isOpen ? std::optional(failure) : std::nullopt});
            BIOSCompatibleModule(naming).ConvertNameFromOldToNew(name, load.Key);
        }
        if (IsSuccess(failure.Code))
        {
            continue;
        }
        stopped = IsUnreachable(failure.Code);
        if (MissesAction(failure))
        {
            answer.Notes.emplace_back(MissingActionHint);
        }
        if (isOpen)
        {
            answer.Notes.push_back("warning: " + shown + ": " + failure.Message);
            continue;
        }
        AddFailure(answer, failure);
    }
    PendingValues values;
    const std::unique_ptr<RedfishConfigProc> reader = freshFront();
    RedfishConfigResult read(CodeSucceed, "", "");
    if (!loads.empty())
    {
        read = ReadPendingValues(*reader, values);
        WarnOfDefaults(*reader, answer.Notes);
    }
    const bool known = !loads.empty() && IsSuccess(read.ErrorCode());
    if (!IsSuccess(read.ErrorCode()))
    {
        answer.Notes.push_back("warning: the pending values could not be read back: " + causes.Explain(read).Message);
    }
    for (const DefaultLoad& load : loads)
    {
        if (known && !values.Effective.contains(load.Key))
        {
            AddPendingValue(*reader, load.Key, values); // protected, or hidden from groups
        }
        const std::string shown = prefixes.First + "." + load.Name;
        const std::string outcome = OutcomeOf(*front, load, values);
        PutOutcome(shown, outcome, options, answer);
        if (outcome == Unknown)
        {
            AddFailure(answer, UnknownLoad(load, shown, values.Effective.contains(load.Key)));
        }
        else if (const auto pending = values.Pending.find(load.Key); pending != values.Pending.end())
        {
            expected.push_back({load.Key, pending->second});
        }
    }
    return answer;
}

Answer RunLoadDefault(const Options& options, Bmc& bmc)
{
    if (IsWhole(options))
    {
        return RunWhole(options, bmc);
    }
    std::vector<ExpectedValue> expected;
    Answer answer = LoadSingleDefaults(
        options, [&] { return bmc.DecimalFront(); }, expected);
    if (options.Reboot && expected.empty())
    {
        answer.Notes.emplace_back("not restarted, since nothing waits for it");
        return answer;
    }
    RebootAndVerify(MeansOf(bmc), options, expected, answer);
    return answer;
}

} // namespace Tavrine::Tool
