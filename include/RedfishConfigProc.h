#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ConfigOptions.h"
#include "Export.h"
#include "RedfishConfigResult.h"
#include "ValueTypes.h"

namespace Tavrine
{

class RedfishConfigAssistant;

/// What a configuration tool sees of one kind of resource.
///
/// Names: a setting is given by its bare name, exactly as the attribute registry (DSP8010) writes it,
/// or, in LegacyNameMode and save in Restore, by an old name (BIOSCompatibleModule). Answers put a
/// prefix and a point before names: m_Prefix where one setting was asked for (FIRST below),
/// m_SecondPrefix where all were (SECOND below). "Old names" below is LegacyNameMode with an
/// m_Prefix other than "UEFI" and "BIOS" in any case.
///
/// Values: one is "in force" until it is replaced, one is "pending" that waits for a reboot, and
/// "current" is the pending one of a setting where it has one, else that in force.
///
/// Codes: 0 is success. Every operation may answer, beside the codes told there, what a request to
/// the BMC ended in (24, 26, 27, 28, 32, 33, see BMCBaseAssistant); 26, too, where the resource, its
/// registry or its settings object is not found or there are no values; 27, too, where a text is
/// no registry or no resource; 13 where a part of the object is missing. ResultMessageTable has
/// their texts.
///
/// Maps and texts are the caller's. They stay as they were when an operation fails, where nothing
/// else is told. An object and its copies share what they work with, and nothing guards that:
/// together they are used by one thread at a time.
class TAVRINE_EXPORT RedfishConfigProc
{
  public:
    RedfishConfigProc();
    RedfishConfigProc(const RedfishConfigProc&) = default;
    RedfishConfigProc& operator=(const RedfishConfigProc&) = default;
    virtual ~RedfishConfigProc();

    /// The values in force of all settings but the hidden and the protected ones. Text adds SECOND.NAME
    /// to the value, JSON (Config_Options::OutputFormat) SECOND to one object with the hidden
    /// ones in it; any other format shows nothing. What `values` has already stays.
    /// @return 0 as soon as `values` has an entry, be it the caller's alone; else 26, whatever the
    ///         read ended in: the log has the cause.
    virtual RedfishConfigResult QueryGroupSettingValues(SettingStringMap& values) = 0;
    /// The value in force of one setting, a hidden one too. Text adds FIRST.NAME to the value, JSON
    /// SECOND to an object of one member; any other format adds nothing and answers 0 all the same.
    /// An entry that stands there stays. Old names: text has NAME, as given, for FIRST.NAME; an
    /// entry of that name must not stand there, it may be lost.
    /// @return 20 when the registry or the BMC does not know the name, an empty one too; 8 when
    ///         the BMC reports it without a value; 34 for a protected one that is not allowed.
    virtual RedfishConfigResult QuerySettingValue(const std::string& setting, SettingStringMap& values) = 0;
    /// Changes a setting without a check against the registry, in place or not. The text goes out
    /// bare where the value in force is a number or a boolean, else between quotes with nothing
    /// escaped. In batch mode it waits for FlushChanges; otherwise it is sent, and with it all that
    /// waits for the same resource. m_ErrorList stays as it is.
    /// @return 0, queued alone in batch mode; 1 done, but for a reboot; 10 for a number that is
    ///         not hexadecimal in HexValueMode; 18 refused by the BMC; 20 and 34 as above. A password has
    ///         no code of its own.
    virtual RedfishConfigResult PatchSettingNewValueWithOutCheck(const std::string& setting, const std::string& value,
                                                                 bool batchMode) = 0;
    /// Menu group to the names of its settings, hidden and protected ones too, as
    /// RedfishConfigSettingManager::GetGroupList has them. `groups` is emptied first, whatever follows.
    /// @return 0 and no groups where the text is no registry.
    virtual RedfishConfigResult QueryGroupList(SettingGroupMap& groups) = 0;
    /// The values that a setting takes, in the form of RedfishConfigSettingManager::QuerySettingValidValues:
    /// FIRST.NAME for one, a hidden one too; with an empty name SECOND.NAME for all that are not hidden.
    /// Entries are added, or replace those of their key. Old names: bare names, and `values` is
    /// replaced. With OutputFormat 2, whatever the name, SECOND becomes the JSON text of the whole registry
    /// with the current values in it, hidden settings too.
    /// @return for one: 20 unknown; 22 an enumeration without value names. For all: 7 when some have
    ///         none and are left out; which ones is not told.
    virtual RedfishConfigResult QuerySettingValidValues(SettingStringMap& values, const std::string& setting) = 0;
    /// The defaults, numbers in decimal. Names, keys and `values` as QuerySettingValidValues; the
    /// format does not count.
    /// @return for one: 20 unknown; 21 without a default. For all: 7 when some have none and are left out.
    virtual RedfishConfigResult QuerySettingDefaultValues(SettingStringMap& values, const std::string& setting) = 0;
    /// What the settings are, in the lines of RedfishConfigSettingManager::QuerySettingDescription.
    /// Names, keys and `values` as QuerySettingValidValues; the format does not count.
    /// @return for one: 20 unknown.
    virtual RedfishConfigResult QuerySettingDescriptions(SettingStringMap& values, const std::string& setting) = 0;
    /// Changes a setting after a check against the registry, unless the value is in place. The change
    /// is queued, and outside batch mode FlushChanges is called, which sends all that waits. In both
    /// modes FlushChanges is called before where the registry connects this setting with one that
    /// was queued here; a failure of that does not show in the code, save 33.
    ///
    /// @return in batch mode:
    ///     0   queued
    ///     1   in place: nothing is checked, queued or sent, and what waits goes on waiting
    ///     4   a password, queued
    ///     10  no value for this setting
    ///     16  the name is empty
    ///     18  the setting cannot be changed now
    ///     20  unknown
    ///     33  the BMC was busy when a related change had to go first: this one is not queued
    ///     34  protected, and not allowed: not queued
    /// Otherwise 1, 10, 16, 18, 20 and 33 of the check as above; else 33 when FlushChanges answers that; 4
    /// for a password, whatever else FlushChanges answers; and the code of FlushChanges for all
    /// others, where 1 means done, but for a reboot. That code takes the place of 34 as well: a
    /// protected setting that is not allowed can answer 0 with nothing done.
    ///
    /// A refusal by the check (10, 18, 20) is added to m_ErrorList. 34, and a flush that fails without a
    /// word on single settings (24, for example), leave no entry there, also behind a 4.
    virtual RedfishConfigResult PatchSettingNewValue(const std::string& setting, const std::string& value,
                                                     bool batchMode) = 0;
    /// The current values that a save keeps (RedfishConfigSettingManager::FetchSaveSettingValues), hidden
    /// settings left out. SECOND.NAME to text, numbers in decimal, whatever the options; entries are
    /// added, or replace those of their key.
    virtual RedfishConfigResult QuerySaveSettingValues(SettingStringMap& values) = 0;
    /// Does nothing: 11.
    virtual RedfishConfigResult UnsupportedOperation1();
    /// Brings back many settings at once. Those in place are left alone; the others are checked
    /// together and, only if all of them pass, sent together with all that waits.
    /// @param restoreValues  bare name to value text, old names not translated; on return those that were not
    ///                       in place, hexadecimal numbers in decimal.
    /// @param doneValues     receives FIRST.NAME to value of what was in place, and of what has no
    ///                       failure in the list that `failedValues` is made from: also where the code
    ///                       says that nothing was sent, or that the BMC refused it (m_ErrorList has
    ///                       its reasons then, not `failedValues`), and of settings left out as unique.
    /// @param failedValues   receives FIRST.NAME to message of what the BMC does not know, and of what
    ///                       the check refused.
    /// @param restoreMode    true: the same machine. false: settings unique to a machine are left out.
    /// @param reservedFlag   without effect.
    /// @return 0; 1 done, but for a reboot; 18 refused by the BMC. With nothing sent: 7 the check refuses
    ///         some; 18 it refuses several and passes none, or the only one cannot be changed now; 10 the
    ///         only one takes no such value, or a number is not hexadecimal in HexValueMode; 20 the
    ///         only one is unknown; 34 a protected one is not allowed, those before it are queued.
    /// Entries that stand in the two answers stay, save those of settings in place or unknown. After 33,
    /// 34, a bad hexadecimal number and a failed read the maps have what was known by then. m_ErrorList
    /// is that of the flush, which comes also when all is in place, and stays as it is where a read or the
    /// check failed, or behind 34.
    virtual RedfishConfigResult Restore(SettingStringMap& restoreValues, SettingStringMap& doneValues,
                                        SettingStringMap& failedValues, bool restoreMode, bool reservedFlag) = 0;
    /// Does nothing: 11.
    virtual RedfishConfigResult UnsupportedOperation2();
    /// Loads defaults, by the word in `request`. "reset-bios": of everything by the reset action
    /// (DSP8010, Bios, "#Bios.ResetBios"), whatever `setting` is. "post": of everything by the firmware at
    /// its next start, whatever `setting` is. Any other, the empty one too: of the setting named, or, where
    /// none is, of everything by the reset action.
    /// @return the reset action: 1 done, but for a reboot, and 28 refused. "post": as
    ///         PatchSettingNewValueWithOutCheck, 11 for a system that has no such way. One setting: 0 also
    ///         when the default is in place, with nothing sent; 1; 10; 18; 20 unknown; 21 no
    ///         default; 34 protected, and not allowed.
    virtual RedfishConfigResult PostDefaultvalue(const std::string& setting, const std::string& request) = 0;
    /// Writes the file of custom defaults that the BMC keeps. Here: 11.
    virtual RedfishConfigResult ImportUEFICustomDefaultFile(const std::string& content);
    /// Reads it; `content` is replaced by the BMC's answer as it stands, also by that of a failure.
    /// Here: 11, `content` untouched.
    virtual RedfishConfigResult ExportUEFICustomDefaultFile(std::string& content);
    /// This one and those up to UnsupportedOperation10 do nothing: 11.
    virtual RedfishConfigResult UnsupportedOperation3();
    virtual RedfishConfigResult UnsupportedOperation4();
    virtual RedfishConfigResult UnsupportedOperation5();
    virtual RedfishConfigResult UnsupportedOperation6();
    virtual RedfishConfigResult UnsupportedOperation7();
    virtual RedfishConfigResult UnsupportedOperation8();
    virtual RedfishConfigResult UnsupportedOperation9();
    virtual RedfishConfigResult UnsupportedOperation10();
    /// Stores both prefixes, FIRST and SECOND.
    virtual void SetPrefix(const std::string& first, const std::string& second);
    /// Sends the changes that wait, and fills m_ErrorList anew. Here: through m_Assistant to
    /// m_FlushTarget; 13 without an assistant, else its code (RedfishConfigAssistant::FlushChanges).
    virtual RedfishConfigResult FlushChanges();
    /// Whether a setting may be worked with at all: 0 for yes.
    virtual RedfishConfigResult CheckSettingCouldbeSupported(const std::string& setting) = 0;
    /// The value in force and the pending one of a setting in which they differ, a hidden one too, or, with
    /// an empty name, of all such settings but the hidden and the protected ones. Text has FIRST.NAME
    /// or SECOND.NAME to the two, JSON FIRST or SECOND to an array of all, in which nothing is
    /// escaped, and an empty text; any other format adds nothing. Entries of their key are replaced;
    /// numbers are decimal. Old names: text of one setting has NAME, as given.
    /// @return 0, also when all that differ are hidden; 2 when nothing differs. For one: 20 when the
    ///         registry or the BMC does not know it; 34 protected, and not allowed.
    virtual RedfishConfigResult CompareSettingPendingValues(SettingCompareMap& values, const std::string& setting) = 0;
    /// The current value and the default of a setting, equal or not, a hidden one too, or, with an empty
    /// name, of all settings that have both, hidden and protected ones left out: FIRST.NAME or
    /// SECOND.NAME to the two, whatever the options, numbers in decimal. What `values` has already
    /// stays. Here: 11.
    /// @return for one: 20 unknown; 8 without a value; 21 without a default. For all: 7 when some
    ///         have no default, the others are there then.
    virtual RedfishConfigResult CompareSettingDefaultValues(SettingCompareMap& values, const std::string& setting);
    /// m_SecondPrefix.
    virtual std::string GetSecondPrefix();
    /// Names a local JSON file that stands in for answers of the BMC. Here it is stored alone.
    virtual void SetDebugConfigFile(const std::string& path);

    /// FIRST; to be set by SetPrefix.
    std::string m_Prefix;
    /// SECOND; to be set by SetPrefix.
    std::string m_SecondPrefix;
    /// What FlushChanges of this class sends through, shared with copies; derived classes may leave it empty.
    std::shared_ptr<RedfishConfigAssistant> m_Assistant;
    /// 4: some settings by fixed names are hidden. Any other number is without effect.
    std::int32_t m_SystemKind = 0;
    Config_Options m_Options;
    /// Path that FlushChanges of this class sends to; empty for the settings object of the resource.
    std::string m_FlushTarget;
    /// Failures of single settings under their full names. FlushChanges, and what calls it, empties
    /// it first; PatchSettingNewValue adds to it; operations that only read leave it alone.
    std::vector<RedfishConfigResult> m_ErrorList;
    /// What SetDebugConfigFile was given.
    std::string m_DebugConfigFile;
};

} // namespace Tavrine
