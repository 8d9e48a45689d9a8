#pragma once

#include <memory>
#include <string>
#include <vector>

#include "BiosBasicSettingAssistant.h"
#include "ConfigOptions.h"
#include "RedfishConfigResult.h"
#include "ValueTypes.h"

namespace Tavrine
{

/// The handler of one resource: turns the typed values of its assistant into what the
/// tool shows, and stages changes. Derived classes bring the assistant.
class BiosBasicSettingProc
{
  public:
    BiosBasicSettingProc() = default;
    virtual ~BiosBasicSettingProc() = default;

    /// All effective values, under the second prefix.
    virtual RedfishConfigResult QueryGroupSettingValues(SettingStringMap& values);
    /// One effective value. 20 unknown, 8 without a value.
    virtual RedfishConfigResult QuerySettingValue(const std::string& setting, SettingStringMap& values);
    /// Stages one change and, outside batch mode, sends it.
    virtual RedfishConfigResult PatchSettingNewValueWithOutCheck(const std::string& setting, const std::string& value,
                                                                 bool batchMode);
    virtual RedfishConfigResult CompareSettingPendingValues(SettingCompareMap& compare, const std::string& settingName);
    virtual void SetDebugConfigFile(const std::string& path);

    RedfishConfigResult FlushChanges();
    RedfishConfigResult GetCurrentValuesMap(SettingValueMap& values);
    RedfishConfigResult ReloadAllSettingValues(SettingValueMap& values);
    /// The assistant's errors under full names, added to what earlier calls gave.
    std::vector<RedfishConfigResult> GetError();
    /// Stages the JSON text of a value: as it stands when raw, else between quotes with
    /// nothing escaped.
    void StageChangedValue(const std::string& setting, const std::string& value, bool raw);
    std::string BuildValuesJson(SettingValueMap values);
    std::string BuildCompareJson(SettingCompareMap compare);

    /// Starts single names in output and messages.
    std::string m_Prefix;
    /// Starts the names of a group's output; the key of JSON output.
    std::string m_SecondPrefix;
    Config_Options m_Options;
    /// Empty if it could not be built; every operation then answers 13.
    std::shared_ptr<BiosBasicSettingAssistant> m_Assistant;
    std::string m_DebugConfigFile;
    std::vector<RedfishConfigResult> m_ErrorList;
    ConfigurateSupportedSystemType m_SystemType{};

  protected:
    /// What every derived class does once it has made its assistant.
    void TakeAssistant(std::shared_ptr<BiosBasicSettingAssistant> assistant, const Config_Options& options);

  private:
    using ReadValues = RedfishConfigResult (BiosBasicSettingAssistant::*)(SettingValueMap&);

    bool HasAssistant() const;
    RedfishConfigResult ReadThroughAssistant(ReadValues read, SettingValueMap& values);
    RedfishConfigResult NeedEffectiveValues();
    bool ShowsHex(const OptionalVar& value) const;
    std::string FullName(const std::string& setting) const;
    RedfishConfigResult UnknownSetting(const std::string& setting) const;
};

} // namespace Tavrine
