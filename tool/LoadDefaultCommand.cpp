#include "LoadDefaultCommand.h"

#include <locale>
#include <utility>

#include <CLI/CLI.hpp>
#include <boost/algorithm/string/predicate.hpp>
#include <boost/json/object.hpp>

#include "Bmc.h"
#include "CauseLog.h"
#include "Confirmation.h"
#include "JsonOutput.h"
#include "LoadDefaultSend.h"
#include "MissingActions.h"
#include "NamePatterns.h"
#include "Options.h"
#include "OutcomeWords.h"
#include "RequestEnd.h"
#include "SettingNames.h"
#include "SettingPairs.h"
#include "TextOutput.h"

namespace json = boost::json;

namespace Tavrine::Tool
{
namespace
{

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

const char* WordOf(const std::optional<LoadOutcome>& outcome)
{
    switch (outcome.value_or(LoadOutcome::Unknown))
    {
    case LoadOutcome::Sent:
        return OutcomeWords::Sent;
    case LoadOutcome::InPlace:
        return OutcomeWords::InPlace;
    case LoadOutcome::Refused:
        return OutcomeWords::Refused;
    case LoadOutcome::NotSent:
        return OutcomeWords::NotSent;
    case LoadOutcome::Unknown:
        return OutcomeWords::Unknown;
    }
    return OutcomeWords::Unknown;
}

const char* WordOf(RequestEnd end)
{
    switch (end)
    {
    case RequestEnd::Accepted:
        return OutcomeWords::Sent;
    case RequestEnd::Unfit:
    case RequestEnd::TurnedAway:
    case RequestEnd::Refused:
        return OutcomeWords::Refused;
    case RequestEnd::NotSent:
        return OutcomeWords::NotSent;
    case RequestEnd::Unknown:
        return OutcomeWords::Unknown;
    }
    return OutcomeWords::Unknown;
}

/// @param reason  empty for none.
void PutOutcome(const std::string& shown, const std::string& word, const std::string& reason, const Options& options,
                Answer& answer)
{
    if (!options.Json)
    {
        answer.Text += EscapeText(shown) + ": " + word + (reason.empty() ? "" : ": " + EscapeText(reason)) + "\n";
        return;
    }
    json::object entry{{"outcome", word}};
    if (!reason.empty())
    {
        entry["reason"] = ValidUtf8(reason);
    }
    answer.Data[ValidUtf8(shown)] = std::move(entry);
}

/// What is told of a setting beyond its outcome. A run that a signal stops tells no failures, but this it must tell.
std::string ReasonOf(const DefaultLoad& load)
{
    const std::string reason = load.Why ? load.Why->Message : "";
    const std::string named = load.ShownName + ": ";
    return reason.starts_with(named) ? reason.substr(named.size()) : reason;
}

void TellLoad(const DefaultLoad& load, const Options& options, Answer& answer)
{
    PutOutcome(load.ShownName, WordOf(load.Outcome), ReasonOf(load), options, answer);
    if (!load.Why)
    {
        return;
    }
    Failure failure = *load.Why;
    if (!load.Answered)
    {
        failure.Message.insert(0,
                               load.ShownName + (load.Outcome == LoadOutcome::NotSent ? ": not sent, since " : ": "));
    }
    AddFailure(answer, std::move(failure));
}

WaitingChanges WaitingOf(const std::vector<DefaultLoad>& loads)
{
    WaitingChanges waiting;
    for (const DefaultLoad& load : loads)
    {
        waiting.Unknown = waiting.Unknown || load.Outcome == LoadOutcome::Unknown;
        const bool isLeftOut = load.Outcome == LoadOutcome::Refused || load.Outcome == LoadOutcome::NotSent;
        waiting.RequestFailed = waiting.RequestFailed || (load.HasFailedRequest() && isLeftOut);
        waiting.Refused = waiting.Refused || load.Outcome == LoadOutcome::Refused;
        if (load.Expected)
        {
            waiting.Expected.push_back({load.Key, *load.Expected});
        }
        else if (load.Outcome == LoadOutcome::Sent)
        {
            waiting.Unreadable.push_back(load.ShownName);
        }
        if (load.SecretDefault)
        {
            waiting.Secrets.emplace_back(std::string(load.SecretDefault->Text()));
        }
    }
    return waiting;
}

/// The defaults that a load of all of them brings, of the settings that have values, can be
/// written and are no passwords. They are decimal whatever the options say.
RedfishConfigResult AllDefaults(RedfishConfigProc& front, const ManagerReader& readManager,
                                std::vector<ExpectedValue>& expected)
{
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
        if (manager->GetSettingOutline(entry.first, info) == CodeSucceed && info.CurrentValue &&
            info.SettingType != "Password")
        {
            expected.push_back({entry.first, defaults[entry.first]});
        }
    }
    return {CodeSucceed, "", ""};
}

/// Whether the BMC shows that all settings wait for their defaults.
bool ShowsWaitingDefaults(const BmcRequests& requests)
{
    SystemResource system;
    BiosResource bios;
    return IsSuccess(ReadSystemAndBios(requests, system, bios).ErrorCode()) &&
           IsSuccess(ReadPostLoad(requests, bios).ErrorCode()) && bios.DefaultsPending;
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
        const RedfishConfigResult result = AllDefaults(*bmc.StandardFront(), bmc.SettingManagers(), expected);
        if (!IsSuccess(result.ErrorCode()))
        {
            AddFailure(answer, FailureOf(result));
            return answer;
        }
    }
    answer = LoadAllDefaults(*bmc.Front(), RequestsOf(bmc), options);
    if (IsSuccess(answer.Code))
    {
        RebootMeans means = MeansOf(bmc);
        means.LoadsDefaults = true;
        RebootAndVerify(means, options, expected, answer);
    }
    return answer;
}

Answer RunSingle(const Options& options, Bmc& bmc)
{
    WaitingChanges waiting;
    // The registry tells the kinds of protected settings as well.
    Answer answer = LoadSingleDefaults(
        options, [&] { return bmc.DecimalFront(); }, bmc.SettingManagers(ManagerValues::Ordinary), waiting);
    RebootForChanges(MeansOf(bmc), options, waiting, answer);
    return answer;
}

} // namespace

void AddLoadDefaultOptions(CLI::App& command, Options& options)
{
    command.add_flag("--post", options.Post, "The firmware loads all defaults at its next start (UEFI or BIOS alone)");
    command.add_flag("--yes", options.Yes, "Do not ask before all settings are reset");
    AddRebootOptions(command, options);
    command.footer("The one name UEFI or BIOS, the prefix of names in force, stands for all settings.\n"
                   "--reboot restarts nothing where a setting was refused or a request failed.\n"
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

Answer LoadAllDefaults(RedfishConfigProc& front, const BmcRequests& requests, const Options& options)
{
    Answer answer;
    CauseLog causes;
    const RedfishConfigResult result = front.PostDefaultvalue("", options.Post ? PostRequest : ResetRequest);
    const Failure failure = causes.Explain(result);
    HintAtMissingAction(failure, answer.Notes);
    const RequestEnd end = EndOf(failure);
    // Behind a refusal it would be somebody else's load that waits.
    const bool isShown = end == RequestEnd::Unknown && ShowsWaitingDefaults(requests);
    if (isShown)
    {
        answer.Notes.push_back(OutcomeWords::ShownAllTheSame + failure.Message);
    }
    const bool isSent = isShown || end == RequestEnd::Accepted;
    PutOutcome(front.m_Prefix, isSent ? OutcomeWords::Sent : WordOf(end), isSent ? "" : failure.Message, options,
               answer);
    if (!isSent)
    {
        AddFailure(answer, failure);
    }
    return answer;
}

Answer LoadSingleDefaults(const Options& options, const FrontMaker& freshFront, const ManagerReader& readManager,
                          WaitingChanges& waiting)
{
    Answer answer;
    const std::vector<DefaultLoad> loads = SendDefaults(options, freshFront, readManager, answer.Notes);
    for (const DefaultLoad& load : loads)
    {
        TellLoad(load, options, answer);
    }
    waiting = WaitingOf(loads);
    return answer;
}

Answer RunLoadDefault(const Options& options, Bmc& bmc)
{
    Answer answer = IsWhole(options) ? RunWhole(options, bmc) : RunSingle(options, bmc);
    answer.OfChanges = true;
    return answer;
}

} // namespace Tavrine::Tool
