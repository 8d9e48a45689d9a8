#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ConnectionInfo.h"
#include "RedfishConfigProc.h"

class RedfishConfigSettingManager;

namespace Tavrine
{

class BiosBasicSettingProc;
class BiosRedfishProcCreator;
class BiosSettingAssistant;
enum class ManagerValues;

/// The BIOS/UEFI settings of one server, through its BMC: the Bios resource of the first system,
/// the settings object and the attribute registry that it names (DSP8010; DSP0266, "Settings
/// resource"), and on a UEFI system the protected settings, which OEM actions of system 1 carry.
/// What is told at an operation here adds to what RedfishConfigProc tells of it.
///
/// Construction and destruction send nothing; what is queued and not flushed is lost with the
/// last copy. Everything is fetched when it is first needed, and kept: values stay those of that
/// moment, and are read again only after a flush that failed before a related change
/// (PatchSettingNewValue). To see what the BMC has, make a new object.
///
/// A queued change shows in the current and in the pending values only where these were read before and
/// hold the name, and stays there when the BMC refuses it; where it shows among the current ones,
/// PatchSettingNewValue answers 1, "in place", to the same change again. A checked change shows as its JSON
/// text without double quotes, so that a text with a backslash or a double quote shows as another one; an
/// unchecked one as it was given, without double quotes: a number of HexValueMode as if it were decimal.
///
/// A copy has its own strings, options and lists, and shares the rest: the values that were and will be
/// fetched, the queued changes, and the registry where it was read before. None of it is guarded: an
/// object and its copies are used by one thread at a time, all together. Objects that were
/// constructed, not copied, may be used at once, also over one BmcConnection.
///
/// Hidden settings are those whose names hold, case counting, one of the words that the item
/// HIDDEN_CONFIG_KEYWORDS_LIST of the configuration (GlobalConfig) lists, separated by commas, quotes and
/// blanks aside; an empty word hides all. Answers of values and comparisons are searched by their full
/// keys, the caller's own entries among them, and JSON by its one key, the prefix.
///
/// An object that was first asked for a protected setting by its name knows no others until it is
/// asked for an ordinary one: up to then operations that read the others answer 26, and the
/// comparison of all pending values 0 with nothing in it. The first PatchSettingNewValue of an ordinary
/// setting sees no values of ordinary ones, not even that its own is in place.
class TAVRINE_EXPORT BiosRedfishConfigProc : public RedfishConfigProc
{
  public:
    /// Prefixes of names become "UEFI" for SystemTypeUefi and "BIOS" otherwise. All three are
    /// copied; a BmcConnection that `connection` comes from outlives the object and its copies (what
    /// they do without it is told there).
    /// m_Options is left alone afterwards: parts of the object keep the options of construction.
    BiosRedfishConfigProc(const TavrineConnection::ConnectionInfo& connection,
                          ConfigurateSupportedSystemType systemType, const Config_Options& options);
    BiosRedfishConfigProc(const BiosRedfishConfigProc& other);
    BiosRedfishConfigProc& operator=(const BiosRedfishConfigProc& other);
    ~BiosRedfishConfigProc() override;

    /// Reads the Bios resource alone.
    RedfishConfigResult QueryGroupSettingValues(SettingStringMap& values) override;
    /// Reads the registry, and the resource of the setting.
    RedfishConfigResult QuerySettingValue(const std::string& setting, SettingStringMap& values) override;
    /// Reads as QuerySettingValue. The change takes no part in keeping connected settings apart.
    RedfishConfigResult PatchSettingNewValueWithOutCheck(const std::string& setting, const std::string& value,
                                                         bool batchMode) override;
    /// Reads the registry alone.
    RedfishConfigResult QueryGroupList(SettingGroupMap& groups) override;
    /// This and the two that follow read the current values, protected ones aside, and the
    /// registry, of which each call makes a new model. This one alone reads the protected values as
    /// well with OutputFormat 2.
    RedfishConfigResult QuerySettingValidValues(SettingStringMap& values, const std::string& setting) override;
    RedfishConfigResult QuerySettingDefaultValues(SettingStringMap& values, const std::string& setting) override;
    RedfishConfigResult QuerySettingDescriptions(SettingStringMap& values, const std::string& setting) override;
    /// Reads the registry and all current values, on a UEFI system the protected ones as well, allowed
    /// or not, unless none but ordinary settings were asked for by name before. A value in place
    /// answers 1 for a name in another case, too. Where queueing or flushing fails (33 aside),
    /// outside batch mode, m_ErrorList also gets what the check of the last Restore refused.
    RedfishConfigResult PatchSettingNewValue(const std::string& setting, const std::string& value,
                                             bool batchMode) override;
    /// Reads as QuerySettingDefaultValues.
    RedfishConfigResult QuerySaveSettingValues(SettingStringMap& values) override;
    /// Reads the current values, protected ones aside, and the registry. A protected setting therefore
    /// counts as unknown in `failedValues`, and is sent all the same where it is allowed. All changes go
    /// out together, connected or not. After 0 `failedValues` also has what the check of an earlier
    /// Restore of this object refused.
    RedfishConfigResult Restore(SettingStringMap& restoreValues, SettingStringMap& doneValues,
                                SettingStringMap& failedValues, bool restoreMode, bool reservedFlag) override;
    /// All but "reset-bios" read the registry first. The reset action is a POST of 60 s at most; 27
    /// when the Bios resource names none, 32 when it names an empty one. "post" sets
    /// SystemRecovery_PostLoadSetupDefault to "Enabled" without a check. The default of one setting is
    /// flushed at once with all that waits, and m_ErrorList is empty afterwards: its entries go to the log.
    RedfishConfigResult PostDefaultvalue(const std::string& setting, const std::string& request) override;
    /// A POST to the OEM action DSWriteFile of system 1, 60 s at most, on any kind of system. Values
    /// that are kept stay.
    /// @return 0; 1 done, but for a reboot; 28 refused.
    RedfishConfigResult ImportUEFICustomDefaultFile(const std::string& content) override;
    /// The same with DSReadFile; `content` is empty when no answer came.
    /// @return as ImportUEFICustomDefaultFile.
    RedfishConfigResult ExportUEFICustomDefaultFile(std::string& content) override;
    /// To be called before anything is read: values, pending values and failures of a flush keep the
    /// prefixes that were set, by this object or a copy, when their resource was first needed.
    void SetPrefix(const std::string& first, const std::string& second) override;
    /// Sends what every resource has queued: the protected settings by one POST (60 s at most), then
    /// the others by one PATCH, in its If-None-Match (RFC 9110) the tag of the Bios resource as it was read.
    /// A queue is emptied by its request, whatever came of it, also where none went out for lack of a
    /// connection; it stays where the settings object or the tag was not found.
    ///
    /// m_ErrorList then holds the failures of each resource that did not answer 0, those of its
    /// earlier flushes again, some of them repeatedly.
    /// @return 0, also with nothing to send; 1 done, but for a reboot; 18 refused; that of the
    ///         last resource that did not answer 0: a 1 can hide a failure of protected settings.
    RedfishConfigResult FlushChanges() override;
    /// Answers 0 for every name; nothing is looked at.
    RedfishConfigResult CheckSettingCouldbeSupported(const std::string& setting) override;
    /// Reads the settings object and the Bios resource, for one setting the registry before. Pending
    /// values that are kept are not read again.
    RedfishConfigResult CompareSettingPendingValues(SettingCompareMap& values, const std::string& setting) override;
    /// Reads the current values, protected ones aside, and the registry: a protected setting is
    /// unknown here.
    RedfishConfigResult CompareSettingDefaultValues(SettingCompareMap& values, const std::string& setting) override;
    /// The file's node "schema" stands in for the registry in each model that is made from now on,
    /// and "resource" for the Bios resource, where that was not needed yet; the settings object and the
    /// protected settings still come from the BMC. A file that cannot be read, is larger than 64 MiB or
    /// has no such node gives operations that need it 27. An empty path undoes nothing.
    void SetDebugConfigFile(const std::string& path) override;

  private:
    friend RedfishConfigResult TakeSettingManager(BiosRedfishConfigProc& front,
                                                  std::unique_ptr<RedfishConfigSettingManager>& manager,
                                                  ManagerValues wanted);
    friend void GiveRegistry(BiosRedfishConfigProc& front, RedfishConfigSettingManager& manager);
    friend bool AwaitsDefaults(const BiosRedfishConfigProc& front);

    using ProcRead = RedfishConfigResult (BiosBasicSettingProc::*)(SettingValueMap&);

    RedfishConfigResult QuerySettingManager(bool includeProtected);
    RedfishConfigResult QuerySettingManagerWithoutValue();
    bool ManagerFlag() const;
    RedfishConfigResult FetchSchema(const char* missingAssistantText);
    std::string CurrentNameOf(const std::string& setting);
    RedfishConfigResult CollectValues(ProcRead read, SettingValueMap& values, bool includeProtected);
    RedfishConfigResult GetCurrentValuesMap(SettingValueMap& values, bool includeProtected);
    RedfishConfigResult FindCurrentValues(SettingValueMap& read, const SettingValueMap*& values);
    RedfishConfigResult ReloadAllSettingValues(SettingValueMap& values, bool includeProtected);
    bool ShowsBareNames() const;
    std::string ShownName(const std::string& setting) const;
    void RestoreRequestedName(SettingStringMap& values, const std::string& keyName, const std::string& requestedName);
    void RestoreRequestedName(SettingCompareMap& values, const std::string& keyName, const std::string& requestedName);
    std::vector<std::string> GetGlobalConfigHiddenKeywords();
    void HardcodeHiddenSettings(SettingStringMap& map);
    void HardcodeHiddenSettings(SettingCompareMap& map);
    void HiddenSettingsByKeywords(SettingStringMap& map);
    void HiddenSettingsByKeywords(SettingCompareMap& map);
    RedfishConfigResult QueryGroupListFromSchema(SettingGroupMap& groups);
    RedfishConfigResult GenerateSchemaJsonStr(SettingStringMap& output);
    struct MetadataQuery;
    RedfishConfigResult QueryMetadata(const MetadataQuery& query, SettingStringMap& values, const std::string& setting);
    RedfishConfigResult ProcessThePatchSetting(const std::string& setting, const std::string& value);
    bool CheckSettingValueChange(const SettingValueMap& current, const std::string& name, std::string& value);
    RedfishConfigResult FilterSettingValueNotChange(const SettingValueMap& current, SettingStringMap& newValues,
                                                    SettingStringMap& unchanged, SettingStringMap& notFound);
    bool CheckNeedDoFlushChangeNow(const std::string& name, const std::vector<std::string>& dependencies);
    RedfishConfigResult BatchFlushChange();
    void AppendErrors(std::vector<RedfishConfigResult> errors);
    RedfishConfigResult StageRestore(const SettingStringMap& contexts);
    void SortRestored(const SettingStringMap& restoreValues, SettingStringMap& doneValues,
                      SettingStringMap& failedValues);
    /// The defaults of all settings, sent as changes instead of by the reset action. No operation calls it.
    RedfishConfigResult PostBIOSDefaultTraditional(const std::string& settingName);
    RedfishConfigResult StageDefaults(const SettingStringMap& contexts);
    RedfishConfigResult PostSingleSettingToDefault(const std::string& setting);
    RedfishConfigResult SendSingleDefault(const std::string& setting, const std::string& workName,
                                          const std::string& patchContext);
    RedfishConfigResult CompareOneDefault(const SettingValueMap& current, SettingCompareMap& compare,
                                          const std::string& setting);
    RedfishConfigResult CompareAllDefaults(const SettingValueMap& current, SettingCompareMap& compare);
    RedfishConfigResult CompareOnePending(SettingCompareMap& compare, const std::string& setting);
    RedfishConfigResult CompareAllPending(SettingCompareMap& compare);

    std::string m_Schema;
    std::vector<std::string> m_PendingNames;
    std::vector<std::string> m_PendingDependencies;
    std::shared_ptr<BiosSettingAssistant> m_SettingAssistant;
    std::shared_ptr<BiosRedfishProcCreator> m_ProcCreator;
    std::shared_ptr<RedfishConfigSettingManager> m_SettingManager;
};

} // namespace Tavrine
