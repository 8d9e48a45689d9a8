#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "Answer.h"
#include "RedfishConfigSettingManager.h"
#include "SavedSettings.h"
#include "SettingNames.h"

namespace Tavrine::Tool
{

/// What became of one setting of a `restore`.
enum class RestoreOutcome
{
    /// To be sent, or (with `--dry-run`) it would be.
    Planned,
    /// In force or, where the BMC was not asked or did not answer, pending.
    InPlace,
    /// The BMC had it before, and it waits for a reboot.
    Waiting,
    /// The BMC has it, and it waits for a reboot.
    Sent,
    Refused,
    NotSent,
    Unknown,
};

struct RestoreSetting
{
    /// Bare name.
    std::string Name;
    /// As the file has it; once judged, as the BMC gets it.
    std::string Value;
    RestoreOutcome Outcome = RestoreOutcome::Planned;
    /// Result code and reason, where it is not what was wanted.
    int Code = CodeSucceed;
    std::string Why;
    /// The value is shown nowhere: it is a password.
    bool Secret = false;
    /// This system has no such setting; a file can hold any number of these.
    bool Stranger = false;
};

/// What is to be restored, found out without a change.
struct RestorePlan
{
    /// In the order of their names, each once: JudgeRestore finds them by that.
    std::vector<RestoreSetting> Settings;
    /// Settings, by index, that are handed over together, one such call behind the other.
    /// A setting that another one of the file locks goes before that one.
    std::vector<std::vector<std::size_t>> Calls;
    /// It was judged by the values in force alone, since those that wait for a reboot could not be read: where another
    /// value waits, nothing is in place.
    bool PendingUnread = false;
    /// A request failed, and the BMC does not show that all was done all the same.
    bool CallFailed = false;
    /// The library's own check refused a call, of which nothing was sent.
    bool CallUnfit = false;
};

/// Whether the BMC reports a setting at all, with a value or without; asked about those
/// alone for which the registry's text has no value.
using IsReported = std::function<bool(const std::string& name)>;

/// Begins a plan anew.
/// @param legacyNames  as TakeBareSettings has it.
/// @return empty with the settings of the file under their bare names, or which of them
///         stand in it under two.
std::string TakeSavedNames(const SavedSettings& saved, const Prefixes& prefixes, RestorePlan& plan,
                           bool legacyNames = false);

/// Judges the settings of the plan as the library will: since one that it refuses makes
/// it send none at all, those are found here and left out.
/// @param manager  of the current registry and values.
/// @param uefi  protected settings have a way of their own, which a restore does not take.
/// @return what makes the whole impossible; code 0 for nothing.
RedfishConfigResult JudgeRestore(RedfishConfigSettingManager& manager, bool sameSystem, bool uefi,
                                 const IsReported& isReported, RestorePlan& plan);

} // namespace Tavrine::Tool
