// Loading defaults: the reset of all, one setting, and setting by setting.
#include "BiosRedfishConfigProc.h"

#include "BiosBasicSettingProc.h"
#include "BiosRedfishProcCreator.h"
#include "BiosSettingAssistant.h"
#include "BiosSettingManager.h"
#include "RedfishConfigSettingManager.h"
#include "Results.h"
#include "Trace.h"
#include "ValueConversions.h"

namespace Tavrine
{

namespace
{

const std::string ResetRequest = "reset-bios";
const std::string PostRequest = "post";

} // namespace

RedfishConfigResult BiosRedfishConfigProc::PostDefaultvalue(const std::string& setting, const std::string& request)
{
    TAVRINE_LOG(LogOperation) << "Enter Bios PostDefaultvalue() for setting: " << setting
                              << " with customer request: " << request;
    if (request == ResetRequest)
    {
        return m_SettingAssistant->PostResetBiosAction();
    }
    RedfishConfigResult result = QuerySettingManagerWithoutValue();
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed to get setting manager with error: " << result.ErrorMsg();
        return result;
    }
    if (request == PostRequest)
    {
        result = PatchSettingNewValueWithOutCheck(std::string(PostLoadSetting), std::string(PostLoadValue), false);
        if (result == ResultUnknownSetting)
        {
            TAVRINE_LOG(LogFailure) << "Current system is not support option '--post' for BIOS default.";
            return BareResult(ResultNotSupported);
        }
        return result;
    }
    return setting.empty() ? m_SettingAssistant->PostResetBiosAction() : PostSingleSettingToDefault(setting);
}

RedfishConfigResult BiosRedfishConfigProc::PostSingleSettingToDefault(const std::string& setting)
{
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
        TAVRINE_LOG(LogFailure) << "Failed to get setting manager with error: " << result.ErrorMsg();
        return result;
    }
    m_SettingManager->UpdateSettingValue(current);

    const std::string workName = CurrentNameOf(setting);
    std::string defaultValue;
    result = m_SettingManager->QuerySettingDefaultValue(workName, defaultValue);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed to get the default value for " << setting << " due to " << result.ErrorMsg();
        RenameInMessage(result, workName, setting);
        return result;
    }
    const auto entry = current.find(workName);
    std::string currentText;
    if (entry != current.end() && GetOptionalVarAsString(entry->second, currentText) && currentText == defaultValue)
    {
        TAVRINE_LOG(LogDetail) << "Setting " << setting << " value is default value, no need to load to default.";
        return BareResult(ResultSuccess);
    }

    std::string patchContext;
    result = m_SettingManager->PreparePatchContext(workName, defaultValue, patchContext, FilterDefaultOne);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed to prepare the patch context during post setting " << setting
                                << " to default.";
        RenameInMessage(result, workName, setting);
        return result;
    }
    return SendSingleDefault(setting, workName, patchContext);
}

RedfishConfigResult BiosRedfishConfigProc::SendSingleDefault(const std::string& setting, const std::string& workName,
                                                             const std::string& patchContext)
{
    RedfishConfigSettingInfoStru info;
    RedfishConfigResult result = m_SettingManager->GetSettingProperties(workName, info);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed to get setting info: " << result.ErrorMsg();
        RenameInMessage(result, workName, setting);
        return result;
    }
    std::shared_ptr<BiosBasicSettingProc> proc;
    result = m_ProcCreator->CreateProcForSetting(info, proc);
    if (result != ResultSuccess || proc == nullptr)
    {
        TAVRINE_LOG(LogFailure) << "Can not create BIOS redfish procs.";
        return result;
    }
    const std::string& key = info.AttributeKey.value();
    proc->m_Assistant->m_ChangedValues[key] = patchContext;
    proc->m_Assistant->UpdateSettingValueCache(key, patchContext);
    m_SettingAssistant->CacheSetContext(key, patchContext);

    result = FlushChanges();
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed to post default value to BMC though: " << result.ErrorMsg();
        for (std::size_t index = 0; index < m_ErrorList.size(); ++index)
        {
            RedfishConfigResult& error = m_ErrorList[index];
            TAVRINE_LOG(LogFailure) << "index: [" << index << "]: error_setting: " << error.ErrorSetting()
                                    << ", code: " << error.ErrorCode() << ", message: " << error.ErrorMsg();
        }
        m_ErrorList.clear();
    }
    RenameInMessage(result, workName, setting);
    return result;
}

RedfishConfigResult BiosRedfishConfigProc::PostBIOSDefaultTraditional(const std::string& settingName)
{
    SettingValueMap current;
    RedfishConfigResult result = GetCurrentValuesMap(current, false);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed in get current value map though: " << result.ErrorMsg();
        return result;
    }
    m_SettingManager->UpdateSettingValue(current);

    SettingStringMap defaults;
    result = m_SettingManager->QueryGroupSettingDefaultValues(defaults);
    if (result != ResultSuccess && result != ResultPartlyFailed)
    {
        RenameInMessage(result, settingName, m_Prefix + "." + settingName);
        TAVRINE_LOG(LogFailure) << "Failed to get the default value for " << m_Prefix << " due to "
                                << result.ErrorMsg();
        return result;
    }
    SettingStringMap unchanged;
    SettingStringMap notFound;
    result = FilterSettingValueNotChange(current, defaults, unchanged, notFound);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "find error when filter setting value is change or not.";
        return result;
    }
    SettingStringMap contexts;
    result = m_SettingManager->PreparePatchContext(defaults, contexts,
                                                   settingName.empty() ? FilterDefaultAll : FilterDefaultOne);
    if (result != ResultSuccess && result != ResultPartlyFailed)
    {
        m_ErrorList.push_back(result);
        return result;
    }

    result = StageDefaults(contexts);
    if (result != ResultSuccess)
    {
        return result;
    }
    result = FlushChanges();
    if (result == ResultBmcBusy)
    {
        TAVRINE_LOG(LogDetail) << "Requested operation is temporarily unavailable: " << result.ErrorMsg();
        return result;
    }
    if (result != ResultSuccess && result != ResultResetRequired)
    {
        result = ResultLoadDefaultFailed;
        result.SetErrorMsg("Command loaddefault fails. Suggest you run command 'loaddefault UEFI --post' to reset "
                           "UEFI to defaults.");
    }
    std::vector<RedfishConfigResult> errors = m_SettingManager->TakeErrors();
    const std::vector<RedfishConfigResult> sent = m_SettingAssistant->GetError();
    errors.insert(errors.end(), sent.begin(), sent.end());
    AppendErrors(std::move(errors));
    return result;
}

/// Stages what can be staged; the settings that cannot be go into m_ErrorList.
/// @return 0, or 33 when a flush in between found the BMC busy.
RedfishConfigResult BiosRedfishConfigProc::StageDefaults(const SettingStringMap& contexts)
{
    RedfishConfigSettingInfoStru info;
    std::shared_ptr<BiosBasicSettingProc> proc;
    for (const auto& [name, text] : contexts)
    {
        RedfishConfigResult result = m_SettingManager->GetSettingProperties(name, info);
        if (result != ResultSuccess)
        {
            m_ErrorList.emplace_back(result.ErrorCode(), result.ErrorMsg(), m_Prefix + "." + name);
            TAVRINE_LOG(LogFailure) << "Failed in get setting info: " << result.ErrorMsg();
            continue;
        }
        if (CheckNeedDoFlushChangeNow(name, info.DependencyNames))
        {
            result = FlushChanges();
            if (result == ResultBmcBusy)
            {
                TAVRINE_LOG(LogDetail) << "Requested operation is temporarily unavailable: " << result.ErrorMsg();
                return result;
            }
        }
        result = m_ProcCreator->CreateProcForSetting(info, proc);
        if (result != ResultSuccess)
        {
            m_ErrorList.emplace_back(result.ErrorCode(), result.ErrorMsg(), m_Prefix + "." + name);
            TAVRINE_LOG(LogFailure) << "Can not create BIOS redfish procs.";
            continue;
        }
        if (proc != nullptr)
        {
            proc->m_Assistant->m_ChangedValues[name] = text;
            proc->m_Assistant->UpdateSettingValueCache(name, text);
        }
    }
    return BareResult(ResultSuccess);
}

} // namespace Tavrine
