// Changing one setting: checked against the registry, or unchecked.
#include "BiosRedfishConfigProc.h"

#include "BiosBasicSettingProc.h"
#include "BiosRedfishProcCreator.h"
#include "BiosSettingAssistant.h"
#include "RedfishConfigSettingManager.h"
#include "Results.h"
#include "SettingTypeCode.h"
#include "Trace.h"

namespace Tavrine
{

namespace
{

void LogUnavailable(RedfishConfigResult& result)
{
    TAVRINE_LOG(LogDetail) << "Requested operation is temporarily unavailable: " << result.ErrorMsg();
}

/// Whether a change goes on after one of its steps: not where the BMC is busy.
/// @param alsoGood  the code that is no failure of this step, beside 0.
/// @param errors  replaced where the step failed.
bool GoesOn(RedfishConfigResult& result, int alsoGood, BiosSettingAssistant& assistant,
            std::vector<RedfishConfigResult>& errors)
{
    if (result == ResultBmcBusy)
    {
        LogUnavailable(result);
        return false;
    }
    if (result != ResultSuccess && result != alsoGood)
    {
        errors = assistant.GetError();
    }
    return true;
}

} // namespace

RedfishConfigResult BiosRedfishConfigProc::PatchSettingNewValue(const std::string& setting, const std::string& value,
                                                                bool batchMode)
{
    TAVRINE_LOG(LogOperation) << "Enter BiosRedfishConfigProc::PatchSettingNewValue()";
    if (setting.empty())
    {
        TAVRINE_LOG(LogFailure) << "update setting is empty, no need to update so quite directly.";
        return BareResult(ResultInvalidParameter);
    }
    RedfishConfigResult result = QuerySettingManagerWithoutValue();
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed to get setting manager with error: " << result.ErrorMsg();
        return result;
    }
    SettingValueMap read;
    const SettingValueMap* current = nullptr;
    result = FindCurrentValues(read, current);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed to get current value map though: " << result.ErrorMsg();
        return result;
    }
    m_SettingManager->UpdateSettingValue(*current);

    const std::string workName = CurrentNameOf(setting);
    std::string workValue = value;
    if (!CheckSettingValueChange(*current, workName, workValue))
    {
        result = ResultResetRequired;
        TAVRINE_LOG(LogDetail) << "Setting value no change, need do nothing.";
        return result;
    }

    std::string patchValue;
    std::vector<RedfishConfigResult> collectedErrors;
    bool passwordChanged = false;
    result = m_SettingManager->PreparePatchContext(workName, workValue, patchValue, FilterChange);
    if (result == ResultSuccess)
    {
        result = ProcessThePatchSetting(workName, patchValue);
        if (!GoesOn(result, ResultPasswordChanged, *m_SettingAssistant, collectedErrors))
        {
            return result;
        }
        passwordChanged = result == ResultPasswordChanged;
        if (batchMode)
        {
            TAVRINE_LOG(LogDetail) << "Will not be flush changed until FlushChanges called by batch mode.";
            return result;
        }
        result = FlushChanges();
        if (!GoesOn(result, ResultResetRequired, *m_SettingAssistant, collectedErrors))
        {
            return result;
        }
    }

    const std::vector<RedfishConfigResult> refused = m_SettingManager->TakeErrors();
    collectedErrors.insert(collectedErrors.end(), refused.begin(), refused.end());
    AppendErrors(std::move(collectedErrors));
    if (passwordChanged)
    {
        return BareResult(ResultPasswordChanged);
    }
    RenameInMessage(result, workName, setting);
    return result;
}

void BiosRedfishConfigProc::AppendErrors(std::vector<RedfishConfigResult> errors)
{
    for (RedfishConfigResult& error : errors)
    {
        const std::string fullName = m_Prefix + "." + error.ErrorSetting();
        RenameInMessage(error, error.ErrorSetting(), fullName);
        m_ErrorList.emplace_back(error.ErrorCode(), error.ErrorMsg(), fullName);
    }
}

RedfishConfigResult BiosRedfishConfigProc::PatchSettingNewValueWithOutCheck(const std::string& setting,
                                                                            const std::string& value, bool batchMode)
{
    TAVRINE_LOG(LogOperation) << "Enter BiosRedfishConfigProc::PatchSettingNewValueWithOutCheck()";
    RedfishConfigResult result = BareResult(ResultSuccess);
    if (m_SettingManager == nullptr)
    {
        result = QuerySettingManagerWithoutValue();
        if (result != ResultSuccess)
        {
            TAVRINE_LOG(LogFailure) << "Failed to get setting manager with error: " << result.ErrorMsg();
            return result;
        }
    }
    const std::string workName = CurrentNameOf(setting);
    RedfishConfigSettingInfoStru info;
    result = m_SettingManager->GetSettingProperties(workName, info);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed to get setting info: " << result.ErrorMsg();
        return result;
    }
    std::shared_ptr<BiosBasicSettingProc> proc;
    result = m_ProcCreator->CreateProcForSetting(info, proc);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Can not create BIOS redfish procs.";
        return result;
    }
    if (proc != nullptr)
    {
        result = proc->PatchSettingNewValueWithOutCheck(workName, value, batchMode);
    }
    else
    {
        result = ResultCommandFailed;
        TAVRINE_LOG(LogFailure) << "Cannot get config proc the pointer is nullptr";
    }
    TAVRINE_LOG(LogOperation) << "Exit BiosRedfishConfigProc::PatchSettingNewValueWithOutCheck() with code "
                              << result.ErrorCode();
    RenameInMessage(result, workName, setting);
    return result;
}

RedfishConfigResult BiosRedfishConfigProc::ProcessThePatchSetting(const std::string& setting, const std::string& value)
{
    RedfishConfigSettingInfoStru info;
    RedfishConfigResult result = m_SettingManager->GetSettingProperties(setting, info);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed to get setting properties: " << result.ErrorMsg();
        return result;
    }
    if (CheckNeedDoFlushChangeNow(info.AttributeKey.value(), info.DependencyNames))
    {
        result = BatchFlushChange();
        if (result == ResultBmcBusy)
        {
            LogUnavailable(result);
            return result;
        }
    }
    std::shared_ptr<BiosBasicSettingProc> proc;
    result = m_ProcCreator->CreateProcForSetting(info, proc);
    if (result != ResultSuccess || proc == nullptr)
    {
        TAVRINE_LOG(LogFailure) << "Can not create BIOS redfish procs.";
        return result;
    }
    proc->m_Assistant->m_ChangedValues[info.AttributeKey.value()] = value;
    proc->m_Assistant->UpdateSettingValueCache(info.AttributeKey.value(), value);
    if (TypeCodeOf(info.SettingType) == SettingTypeCode::Password)
    {
        return BareResult(ResultPasswordChanged);
    }
    return result;
}

} // namespace Tavrine
