#include "BiosBasicSettingProc.h"

#include <utility>

#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>

#include "Results.h"
#include "Trace.h"
#include "ValueConversions.h"

namespace Tavrine
{

namespace
{

/// Values of Config_Options::OutputFormat.
constexpr int TextOutput = 0;
constexpr int JsonOutput = 1;

RedfishConfigResult LogFailedRead(RedfishConfigResult result)
{
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed in get current value map though: " << result.ErrorMsg();
    }
    return result;
}

} // namespace

void BiosBasicSettingProc::TakeAssistant(std::shared_ptr<BiosBasicSettingAssistant> assistant,
                                         const Config_Options& options)
{
    m_Assistant = std::move(assistant);
    if (m_Assistant == nullptr)
    {
        TAVRINE_LOG(LogFailure) << "Failed to construct config proc assistant point.";
    }
    m_Options = options;
}

bool BiosBasicSettingProc::HasAssistant() const
{
    if (m_Assistant == nullptr)
    {
        TAVRINE_LOG(LogFailure) << "Construct assistant error.";
        return false;
    }
    return true;
}

RedfishConfigResult BiosBasicSettingProc::ReadThroughAssistant(ReadValues read, SettingValueMap& values)
{
    return HasAssistant() ? LogFailedRead((m_Assistant.get()->*read)(values)) : BareResult(ResultInternalError);
}

RedfishConfigResult BiosBasicSettingProc::NeedEffectiveValues()
{
    return HasAssistant() ? LogFailedRead(m_Assistant->NeedEffectiveValues()) : BareResult(ResultInternalError);
}

bool BiosBasicSettingProc::ShowsHex(const OptionalVar& value) const
{
    return m_Options.HexValueMode && IsNumSetting(value);
}

std::string BiosBasicSettingProc::FullName(const std::string& setting) const { return m_Prefix + "." + setting; }

RedfishConfigResult BiosBasicSettingProc::UnknownSetting(const std::string& setting) const
{
    return {ResultUnknownSetting, "Unable to find the setting " + FullName(setting), ""};
}

RedfishConfigResult BiosBasicSettingProc::QueryGroupSettingValues(SettingStringMap& values)
{
    TAVRINE_LOG(LogDetail) << "Entering  Tavrine::BiosBasicSettingProc::QueryGroupSettingValues";
    RedfishConfigResult result = NeedEffectiveValues();
    if (result != ResultSuccess)
    {
        return result;
    }
    const SettingValueMap& effective = m_Assistant->m_EffectiveValues;
    if (m_Options.OutputFormat == TextOutput)
    {
        for (const auto& [name, value] : effective)
        {
            std::string text;
            if (!GetOptionalVarAsString(value, text))
            {
                TAVRINE_LOG(LogDetail) << name << " current value is invalid, so skipped.";
                continue;
            }
            values.insert_or_assign(values.end(), m_SecondPrefix + "." + name,
                                    ShowsHex(value) ? DecToHex(text) : std::move(text));
        }
    }
    else if (m_Options.OutputFormat == JsonOutput)
    {
        values[m_SecondPrefix] = BuildValuesJson(effective);
    }
    return result;
}

RedfishConfigResult BiosBasicSettingProc::QuerySettingValue(const std::string& setting, SettingStringMap& values)
{
    TAVRINE_LOG(LogOperation) << "Enter BiosBasicSettingProc::QuerySettingValue(), try to get the current value of "
                              << setting;
    RedfishConfigResult result = NeedEffectiveValues();
    if (result != ResultSuccess)
    {
        return result;
    }
    const SettingValueMap& effective = m_Assistant->m_EffectiveValues;

    const auto entry = effective.find(setting);
    if (entry == effective.end())
    {
        result = UnknownSetting(setting);
    }
    else
    {
        std::string text;
        if (!GetOptionalVarAsString(entry->second, text))
        {
            TAVRINE_LOG(LogDetail) << "Get current value of " << setting << " failed.";
            return {ResultInvalidProperty,
                    "The setting " + FullName(setting) + " cannot be shown since it has no current value info.", ""};
        }
        if (m_Options.OutputFormat == TextOutput)
        {
            values.emplace(FullName(setting), ShowsHex(entry->second) ? DecToHex(text) : text);
        }
        else if (m_Options.OutputFormat == JsonOutput)
        {
            values.emplace(m_SecondPrefix, BuildValuesJson({*entry}));
        }
    }
    TAVRINE_LOG(LogOperation) << "Exit BiosBasicSettingProc::QuerySettingValue() of setting BIOS." << setting;
    return result;
}

RedfishConfigResult BiosBasicSettingProc::PatchSettingNewValueWithOutCheck(const std::string& setting,
                                                                           const std::string& value, bool batchMode)
{
    RedfishConfigResult result = NeedEffectiveValues();
    if (result != ResultSuccess)
    {
        return result;
    }
    const SettingValueMap& effective = m_Assistant->m_EffectiveValues;
    const auto entry = effective.find(setting);
    if (entry == effective.end())
    {
        return UnknownSetting(setting);
    }

    std::string newValue = value;
    if (ShowsHex(entry->second))
    {
        if (!isHexString(newValue))
        {
            return {ResultInvalidNewValue, "Setting new value is invalid.", ""};
        }
        newValue = HexToDec(newValue);
    }
    StageChangedValue(setting, newValue, IsNumSetting(entry->second) || IsBoolenSetting(entry->second));
    m_Assistant->UpdateSettingValueCache(setting, value);

    if (batchMode)
    {
        TAVRINE_LOG(LogDetail) << "Will not be flush changed until FlushChanges called by batch mode.";
        return result;
    }
    result = m_Assistant->FlushChanges();
    switch (result.ErrorCode())
    {
    case ResultSuccess:
        TAVRINE_LOG(LogDetail) << "Exiting  Tavrine::BiosBasicSettingProc::PatchSettingNewValueWithOutCheck";
        break;
    case ResultBmcBusy:
        TAVRINE_LOG(LogFailure) << "Requested operation is temporarily unavailable: " << result.ErrorMsg();
        break;
    default:
        TAVRINE_LOG(LogFailure) << "Failed in patching data.";
    }
    return result;
}

void BiosBasicSettingProc::StageChangedValue(const std::string& setting, const std::string& value, bool raw)
{
    if (!HasAssistant())
    {
        return;
    }
    m_Assistant->m_ChangedValues[setting] = raw ? value : '"' + value + '"';
}

RedfishConfigResult BiosBasicSettingProc::CompareSettingPendingValues(SettingCompareMap& compare,
                                                                      const std::string& settingName)
{
    TAVRINE_LOG(LogDetail) << "Enter BiosBasicSettingProc::CompareSettingPendingValues() with settingName="
                           << settingName;
    if (!HasAssistant())
    {
        return BareResult(ResultInternalError);
    }
    SettingCompareMap found;
    const RedfishConfigResult result = m_Assistant->GetComparePendingValueMap(found, settingName);
    const std::string& prefix = settingName.empty() ? m_SecondPrefix : m_Prefix;
    if (m_Options.OutputFormat == TextOutput)
    {
        for (auto& [name, texts] : found)
        {
            compare.insert_or_assign(compare.end(), prefix + "." + name, std::move(texts));
        }
    }
    else if (m_Options.OutputFormat == JsonOutput && !found.empty())
    {
        compare[prefix] = {BuildCompareJson(std::move(found)), ""};
    }
    return result;
}

std::string BiosBasicSettingProc::BuildCompareJson(SettingCompareMap compare)
{
    if (compare.empty())
    {
        return "";
    }
    std::string text;
    for (const auto& [name, texts] : compare)
    {
        text += text.empty() ? "[" : ",";
        text += "{\"Setting Name\":\"" + name + "\",\"Current Value\":\"" + texts.first + "\",\"Pending Value\":\"" +
                texts.second + "\"}";
    }
    return text + "]";
}

std::string BiosBasicSettingProc::BuildValuesJson(SettingValueMap values)
{
    if (values.empty())
    {
        return "";
    }
    boost::json::object document;
    for (const auto& [name, value] : values)
    {
        document[name] = value ? VariantToJson(*value) : boost::json::value(nullptr);
    }
    return boost::json::serialize(document);
}

RedfishConfigResult BiosBasicSettingProc::FlushChanges()
{
    return HasAssistant() ? m_Assistant->FlushChanges() : BareResult(ResultInternalError);
}

RedfishConfigResult BiosBasicSettingProc::GetCurrentValuesMap(SettingValueMap& values)
{
    return ReadThroughAssistant(&BiosBasicSettingAssistant::GetCurrentValuesMap, values);
}

RedfishConfigResult BiosBasicSettingProc::ReloadAllSettingValues(SettingValueMap& values)
{
    return ReadThroughAssistant(&BiosBasicSettingAssistant::ReloadAllSettingValues, values);
}

std::vector<RedfishConfigResult> BiosBasicSettingProc::GetError()
{
    if (m_Assistant == nullptr)
    {
        return m_ErrorList;
    }
    for (RedfishConfigResult error : m_Assistant->m_Errors)
    {
        const std::string fullName = FullName(error.ErrorSetting());
        RenameInMessage(error, error.ErrorSetting(), fullName);
        m_ErrorList.emplace_back(error.ErrorCode(), error.ErrorMsg(), fullName);
    }
    return m_ErrorList;
}

void BiosBasicSettingProc::SetDebugConfigFile(const std::string& path) { m_DebugConfigFile = path; }

} // namespace Tavrine
