#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Answer.h"
#include "Fronts.h"
#include "RedfishConfigProc.h"
#include "RequestEnd.h"
#include "Secret.h"
#include "SettingManager.h"
#include "ValueTypes.h"

namespace Tavrine::Tool
{

struct Options;

/// What became of one setting that was to get its default.
enum class LoadOutcome
{
    /// It has the default from the next start on.
    Sent,
    /// It has the default.
    InPlace,
    /// Nobody knows.
    Unknown,
    /// By the BMC, or by the check before it.
    Refused,
    NotSent,
};

struct DefaultLoad
{
    /// Bare name, as the caller wrote it.
    std::string Name;
    /// Under what the BMC knows it.
    std::string Key;
    std::string ShownName;
    /// Of the library's answer, or of what kept it from being asked.
    int Code = CodeSucceed;
    /// What that answer alone says about its request; without one it was not sent.
    RequestEnd End = RequestEnd::NotSent;
    bool Password = false;
    /// Its values are names of a list, not free texts.
    bool HasNames = false;
    /// Its values are shown nowhere: it is a password, or may be one.
    bool Secret = true;
    /// The default, where the BMC's words are to be searched for it.
    std::unique_ptr<Tool::Secret> SecretDefault;
    /// A value of the setting, which tells how a text becomes one; nothing where none is known.
    OptionalVar Kind;

    /// Nothing until it is settled.
    std::optional<LoadOutcome> Outcome;
    /// Of Refused, NotSent and Unknown.
    std::optional<Failure> Why;
    /// Why is what the library answered; any other message goes on from the setting's name.
    bool Answered = false;
    /// Of Sent: what has to be in force after a reboot; nothing where that cannot be found out or is a secret.
    std::optional<std::string> Expected;

    /// Nobody knows whether its request was carried out; by the answer alone.
    bool IsOpen() const { return End == RequestEnd::Unknown; }
    /// The BMC refuses it, of whom a lenient one may have done it all the same.
    bool IsRefusedByBmc() const { return End == RequestEnd::Refused; }
    /// Its request has failed, or one that kept it from being sent.
    bool HasFailedRequest() const { return End != RequestEnd::Accepted && End != RequestEnd::Unfit; }
};

/// Asks for the defaults of the settings that `options` names, one after the other, and finds out what became of each:
/// by what the BMC itself says, or else by its answers. Once it cannot be reached nothing else is sent.
/// @param freshFront  gives an object of text output that was not used yet.
/// @param readManager  tells what kinds of settings they are.
/// @param notes  receives warnings.
/// @return a record for each name, in their order, each with an outcome.
std::vector<DefaultLoad> SendDefaults(const Options& options, const FrontMaker& freshFront,
                                      const ManagerReader& readManager, std::vector<std::string>& notes);

} // namespace Tavrine::Tool
