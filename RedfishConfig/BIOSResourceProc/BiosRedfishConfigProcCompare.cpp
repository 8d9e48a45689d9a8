// Two values of a setting side by side: current and default, effective and pending.
#include "BiosRedfishConfigProc.h"

#include "BiosBasicSettingProc.h"
#include "BiosRedfishProcCreator.h"
#include "OrderedLookup.h"
#include "RedfishConfigSettingManager.h"
#include "RequestedName.h"
#include "ResourceNames.h"
#include "Results.h"
#include "Trace.h"
#include "ValueConversions.h"

namespace Tavrine
{

RedfishConfigResult BiosRedfishConfigProc::CompareSettingDefaultValues(SettingCompareMap& compare,
                                                                       const std::string& setting)
{
    TAVRINE_LOG(LogDetail) << "Enter BiosRedfishConfigProc::CompareSettingDefaultValues() with settingName=" << setting;
    SettingValueMap current;
    RedfishConfigResult result = GetCurrentValuesMap(current, false);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed in get current value map though: " << result.ErrorMsg();
        return result;
    }
    result = QuerySettingManagerWithoutValue();
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed to query setting manager: " << result.ErrorMsg();
        return result;
    }
    m_SettingManager->UpdateSettingValue(current);

    return setting.empty() ? CompareAllDefaults(current, compare) : CompareOneDefault(current, compare, setting);
}

RedfishConfigResult BiosRedfishConfigProc::CompareOneDefault(const SettingValueMap& current, SettingCompareMap& compare,
                                                             const std::string& setting)
{
    const std::string workName = CurrentNameOf(setting);
    const std::string fullName = m_Prefix + "." + setting;
    const auto entry = current.find(workName);
    if (entry == current.end())
    {
        TAVRINE_LOG(LogFailure) << "Can not find setting: " << setting;
        return {ResultUnknownSetting, "Unable to find the setting " + fullName, ""};
    }
    std::string currentText;
    if (!GetOptionalVarAsString(entry->second, currentText))
    {
        TAVRINE_LOG(LogDetail) << "Get current value of " << setting << " failed.";
        return {ResultInvalidProperty,
                "The setting " + fullName + " cannot be shown since it has no current value info.", ""};
    }
    std::string defaultText;
    RedfishConfigResult result = m_SettingManager->QuerySettingDefaultValue(workName, defaultText);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed in get default value though: " << result.ErrorMsg();
        return result;
    }
    compare.emplace(fullName, std::pair(currentText, defaultText));
    TAVRINE_LOG(LogOperation) << "Exit BiosRedfishConfigProc::CompareSettingDefaultValues()";
    return result;
}

RedfishConfigResult BiosRedfishConfigProc::CompareAllDefaults(const SettingValueMap& current,
                                                              SettingCompareMap& compare)
{
    SettingStringMap defaults;
    RedfishConfigResult result = m_SettingManager->QueryGroupSettingDefaultValues(defaults);
    if (result != ResultSuccess && result != ResultPartlyFailed)
    {
        TAVRINE_LOG(LogFailure) << "Query setting default values error.";
        return result;
    }
    OrderedLookup lookup(defaults);
    for (const auto& [name, value] : current)
    {
        const auto defaultText = lookup.Find(name);
        if (defaultText == defaults.end())
        {
            TAVRINE_LOG(LogFailure) << "The Schema do not has info of the setting: " << name;
            continue;
        }
        std::string currentText;
        if (!GetOptionalVarAsString(value, currentText))
        {
            TAVRINE_LOG(LogDetail) << name << " current value is invalid, so skipped.";
            continue;
        }
        compare.emplace_hint(compare.end(), m_SecondPrefix + "." + name,
                             std::pair(std::move(currentText), defaultText->second));
    }
    HiddenSettingsByKeywords(compare);
    TAVRINE_LOG(LogOperation) << "Exit BiosRedfishConfigProc::CompareSettingDefaultValues()";
    return result;
}

RedfishConfigResult BiosRedfishConfigProc::CompareSettingPendingValues(SettingCompareMap& compare,
                                                                       const std::string& setting)
{
    TAVRINE_LOG(LogDetail) << "Enter Bios CompareSettingPendingValues() for setting " << setting;
    return setting.empty() ? CompareAllPending(compare) : CompareOnePending(compare, setting);
}

RedfishConfigResult BiosRedfishConfigProc::CompareOnePending(SettingCompareMap& compare, const std::string& setting)
{
    RedfishConfigResult result = QuerySettingManagerWithoutValue();
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed to query setting manager: " << result.ErrorMsg();
        return result;
    }
    const std::string workName = CurrentNameOf(setting);
    RedfishConfigSettingInfoStru info;
    result = m_SettingManager->GetSettingProperties(workName, info);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed in get setting info: " << result.ErrorMsg();
        return result;
    }
    std::shared_ptr<BiosBasicSettingProc> proc;
    result = m_ProcCreator->CreateProcForSetting(info, proc);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Can not create BIOS redfish procs.";
        return result;
    }
    result = proc->CompareSettingPendingValues(compare, workName);
    TAVRINE_LOG(LogOperation) << "Exit BiosRedfishConfigProc::CompareSettingPendingValues() with code "
                              << result.ErrorCode();
    RenameInMessage(result, workName, setting);
    RestoreRequestedName(compare, workName, setting);
    TAVRINE_LOG(LogDetail) << "Exit BiosRedfishConfigProc::CompareSettingPendingValues()";
    return result;
}

RedfishConfigResult BiosRedfishConfigProc::CompareAllPending(SettingCompareMap& compare)
{
    ProcMap procs;
    m_ProcCreator->CreateAllProcs(procs);
    if (procs.empty())
    {
        TAVRINE_LOG(LogFailure) << "Can not create BIOS redfish procs.";
        return BareResult(ResultInternalError);
    }
    RedfishConfigResult kept = BareResult(ResultSuccess);
    for (const auto& [resource, proc] : procs)
    {
        if (resource == ProtectedSettings)
        {
            continue;
        }
        RedfishConfigResult result = proc->CompareSettingPendingValues(compare, "");
        if (result != ResultSuccess)
        {
            TAVRINE_LOG(LogDetail) << "Bios Proc return code: " << result.ErrorCode()
                                   << " with message: " << result.ErrorMsg();
            kept = result;
        }
    }
    HiddenSettingsByKeywords(compare);
    TAVRINE_LOG(LogDetail) << "Exit BiosRedfishConfigProc::CompareSettingPendingValues()";
    return kept;
}

} // namespace Tavrine
