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

/// The BIOS/UEFI settings of one server, through its BMC. Construction and
/// destruction send nothing; everything is fetched when it is first needed and
/// kept. A copy shares what was fetched and has its own strings and lists.
class TAVRINE_EXPORT BiosRedfishConfigProc : public RedfishConfigProc
{
  public:
    /// Prefixes of names become "UEFI" for SystemTypeUefi and "BIOS" otherwise.
    BiosRedfishConfigProc(const TavrineConnection::ConnectionInfo& connection,
                          ConfigurateSupportedSystemType systemType, const Config_Options& options);
    BiosRedfishConfigProc(const BiosRedfishConfigProc& other);
    BiosRedfishConfigProc& operator=(const BiosRedfishConfigProc& other);
    ~BiosRedfishConfigProc() override;

    RedfishConfigResult QueryGroupSettingValues(SettingStringMap& values) override;
    RedfishConfigResult QuerySettingValue(const std::string& setting, SettingStringMap& values) override;
    RedfishConfigResult PatchSettingNewValueWithOutCheck(const std::string& setting, const std::string& value,
                                                         bool batchMode) override;
    RedfishConfigResult QueryGroupList(SettingGroupMap& groups) override;
    RedfishConfigResult QuerySettingValidValues(SettingStringMap& values, const std::string& setting) override;
    RedfishConfigResult QuerySettingDefaultValues(SettingStringMap& values, const std::string& setting) override;
    RedfishConfigResult QuerySettingDescriptions(SettingStringMap& values, const std::string& setting) override;
    RedfishConfigResult PatchSettingNewValue(const std::string& setting, const std::string& value,
                                             bool batchMode) override;
    RedfishConfigResult QuerySaveSettingValues(SettingStringMap& values) override;
    RedfishConfigResult Restore(SettingStringMap& restoreValues, SettingStringMap& doneValues,
                                SettingStringMap& failedValues, bool restoreMode, bool reservedFlag) override;
    RedfishConfigResult PostDefaultvalue(const std::string& setting, const std::string& request) override;
    RedfishConfigResult ImportUEFICustomDefaultFile(const std::string& content) override;
    RedfishConfigResult ExportUEFICustomDefaultFile(std::string& content) override;
    void SetPrefix(const std::string& first, const std::string& second) override;
    /// Sends what every resource has queued. m_ErrorList is emptied first and then holds
    /// what failed; the code is that of the last resource that did not answer 0.
    RedfishConfigResult FlushChanges() override;
    /// Answers 0 for every name.
    RedfishConfigResult CheckSettingCouldbeSupported(const std::string& setting) override;
    RedfishConfigResult CompareSettingPendingValues(SettingCompareMap& values, const std::string& setting) override;
    /// Each setting that has both, equal or not, to its current and its default value.
    RedfishConfigResult CompareSettingDefaultValues(SettingCompareMap& values, const std::string& setting) override;
    void SetDebugConfigFile(const std::string& path) override;

  private:
    friend RedfishConfigResult TakeSettingManager(BiosRedfishConfigProc& front,
                                                  std::unique_ptr<RedfishConfigSettingManager>& manager);
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
