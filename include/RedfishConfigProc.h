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

/// What a configuration tool sees of one kind of resource. Every operation that
/// returns a RedfishConfigResult answers 0 on success and one of the codes of
/// ResultMessageTable otherwise; output maps are owned by the caller. One object
/// is used by one thread at a time.
class TAVRINE_EXPORT RedfishConfigProc
{
  public:
    RedfishConfigProc();
    RedfishConfigProc(const RedfishConfigProc&) = default;
    RedfishConfigProc& operator=(const RedfishConfigProc&) = default;
    virtual ~RedfishConfigProc();

    /// All settings that may be shown, as text or JSON by Config_Options. Entries
    /// are added to `values`, which is not emptied first.
    virtual RedfishConfigResult QueryGroupSettingValues(SettingStringMap& values) = 0;
    /// One setting, by its bare name. 20 unknown, 8 without a value, 34 protected.
    virtual RedfishConfigResult QuerySettingValue(const std::string& setting, SettingStringMap& values) = 0;
    /// Changes a setting without a check against the registry; in batch mode the
    /// change waits for FlushChanges.
    virtual RedfishConfigResult PatchSettingNewValueWithOutCheck(const std::string& setting, const std::string& value,
                                                                 bool batchMode) = 0;
    /// Menu group to the names of its settings.
    virtual RedfishConfigResult QueryGroupList(SettingGroupMap& groups) = 0;
    virtual RedfishConfigResult QuerySettingValidValues(SettingStringMap& values, const std::string& setting) = 0;
    virtual RedfishConfigResult QuerySettingDefaultValues(SettingStringMap& values, const std::string& setting) = 0;
    virtual RedfishConfigResult QuerySettingDescriptions(SettingStringMap& values, const std::string& setting) = 0;
    /// Changes a setting after a check against the registry.
    virtual RedfishConfigResult PatchSettingNewValue(const std::string& setting, const std::string& value,
                                                     bool batchMode) = 0;
    /// All settings that a save keeps.
    virtual RedfishConfigResult QuerySaveSettingValues(SettingStringMap& values) = 0;
    virtual RedfishConfigResult UnsupportedOperation1();
    /// Brings back many settings at once: those already in place are left alone, the others
    /// are checked, sent and sorted.
    /// @param restoreValues  bare name to value text; on return those that were not in place.
    /// @param doneValues     receives what was in place or has no failure against it; look
    ///                       at the code and at m_ErrorList too before trusting it.
    /// @param failedValues   receives full name to message.
    /// @param restoreMode    true: the same machine, settings unique to it included.
    virtual RedfishConfigResult Restore(SettingStringMap& restoreValues, SettingStringMap& doneValues,
                                        SettingStringMap& failedValues, bool restoreMode, bool reservedFlag) = 0;
    virtual RedfishConfigResult UnsupportedOperation2();
    /// Loads defaults: of everything by the reset action ("reset-bios", or no setting), by
    /// the firmware at its next start ("post"), or of the one setting that is named.
    virtual RedfishConfigResult PostDefaultvalue(const std::string& setting, const std::string& request) = 0;
    /// Writes the file of custom defaults that the BMC keeps.
    virtual RedfishConfigResult ImportUEFICustomDefaultFile(const std::string& content);
    /// Reads it; `content` receives the BMC's answer as it stands, also of a failure.
    virtual RedfishConfigResult ExportUEFICustomDefaultFile(std::string& content);
    virtual RedfishConfigResult UnsupportedOperation3();
    virtual RedfishConfigResult UnsupportedOperation4();
    virtual RedfishConfigResult UnsupportedOperation5();
    virtual RedfishConfigResult UnsupportedOperation6();
    virtual RedfishConfigResult UnsupportedOperation7();
    virtual RedfishConfigResult UnsupportedOperation8();
    virtual RedfishConfigResult UnsupportedOperation9();
    virtual RedfishConfigResult UnsupportedOperation10();
    /// Stores both prefixes; acts on names shown by procs that are made later.
    virtual void SetPrefix(const std::string& first, const std::string& second);
    /// Sends the changes that wait. Here: through m_Assistant, 13 without one.
    virtual RedfishConfigResult FlushChanges();
    virtual RedfishConfigResult CheckSettingCouldbeSupported(const std::string& setting) = 0;
    virtual RedfishConfigResult CompareSettingPendingValues(SettingCompareMap& values, const std::string& setting) = 0;
    virtual RedfishConfigResult CompareSettingDefaultValues(SettingCompareMap& values, const std::string& setting);
    virtual std::string GetSecondPrefix();
    /// A local JSON file that stands in for answers of the BMC.
    virtual void SetDebugConfigFile(const std::string& path);

    std::string m_Prefix;
    std::string m_SecondPrefix;
    std::shared_ptr<RedfishConfigAssistant> m_Assistant;
    std::int32_t m_SystemKind = 0;
    Config_Options m_Options;
    std::string m_FlushTarget;
    /// Failures of single settings of the last change operation.
    std::vector<RedfishConfigResult> m_ErrorList;
    std::string m_DebugConfigFile;
};

} // namespace Tavrine
