#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <boost/json/value.hpp>

#include "Answer.h"
#include "CauseLog.h"
#include "RedfishConfigProc.h"
#include "SettingManager.h"
#include "SettingPairs.h"

namespace Tavrine::Tool
{

struct Options;

/// What became of one setting of a `set`.
enum class SetOutcome
{
    /// Nothing yet: the change is to be sent, or (with `--dry-run`) would be.
    Planned,
    Changed,
    Already,
    Refused,
    /// Nothing is wrong with it, but the BMC refused others of the same request.
    RefusedWithOthers,
    /// Nobody knows whether the change was done.
    Unknown,
    NotSent,
};

/// One setting of a `set`. Its texts are wiped when it goes, whatever they are: what is
/// a password is known only once the registry has been read.
struct SetSetting
{
    SetSetting() = default;
    SetSetting(SetSetting&&) = default;
    ~SetSetting();

    /// Bare name, as the caller wrote it.
    std::string Name;
    /// Under what the BMC knows it.
    std::string Key;
    std::string ShownName;
    /// As the caller gave it. With the check, the library is handed this text, a boolean or a number in plain form.
    std::string Value;
    /// The text that the library is handed without the check.
    std::string UncheckedText;
    /// The JSON text that the BMC is to receive; empty where nothing is to be sent.
    std::string Context;
    /// The value in force before; nothing where the BMC reports none.
    std::optional<boost::json::value> Effective;
    bool Protected = false;
    bool Password = false;
    /// The registry has it as a whole number, or as nothing that it has a word for.
    bool Number = false;
    /// The value is shown nowhere: it is a password, or may be one.
    bool Secret = false;

    SetOutcome Outcome = SetOutcome::Planned;
    /// Why, where it was not changed.
    std::optional<Failure> Why;
    /// It may have been sent to the BMC, whose words may repeat it.
    bool WasSent = false;
    /// Of Changed and Already: whether the BMC shows the value in force rather than
    /// pending; nothing where it cannot be asked.
    std::optional<bool> InForce;
};

/// What is to be done, found out without a change.
struct SetPlan
{
    /// In the order of the command line.
    std::vector<SetSetting> Settings;
    /// Settings, by index, that share one request, in the order in which they are to be
    /// handed to the library. Those that are in place already are in none.
    std::vector<std::vector<std::size_t>> Requests;
    /// What made the BMC useless for the whole call.
    std::optional<Failure> Stop;
    /// A request failed, and the BMC does not show that it was done all the same.
    bool RequestFailed = false;
    /// Shown as they stand: of what the BMC has said they quote only what may be shown.
    std::vector<std::string> Notes;
};

/// Reads what is needed through `front` and judges each pair: with the check, against
/// the attribute registry, the current values and the other changes of the call. The
/// order of the requests follows the library's own rules: related settings never share
/// one, nor do protected and ordinary settings, so that each answer is about one
/// request. A front object of typed output, and else as
/// `options` ask for, is expected.
SetPlan MakeSetPlan(RedfishConfigProc& front, const ManagerReader& readManager, const Options& options,
                    const std::vector<SettingPair>& pairs, CauseLog& causes);

/// The settings of the plan that are still Planned get this outcome and reason; a
/// reason's message begins behind the setting's name.
void Abandon(SetPlan& plan, SetOutcome outcome, int code, const std::string& reason);

} // namespace Tavrine::Tool
