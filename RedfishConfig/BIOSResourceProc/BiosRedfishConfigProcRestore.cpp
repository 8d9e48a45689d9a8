// Bringing back a whole map of values.
#include "BiosRedfishConfigProc.h"

#include <set>

#include <boost/algorithm/string/case_conv.hpp>

#include "BiosBasicSettingProc.h"
#include "BiosRedfishProcCreator.h"
#include "BiosSettingAssistant.h"
#include "OrderedLookup.h"
#include "RedfishConfigSettingManager.h"
#include "Results.h"
#include "Trace.h"

namespace Tavrine
{

RedfishConfigResult BiosRedfishConfigProc::Restore(SettingStringMap& restoreValues, SettingStringMap& doneValues,
                                                   SettingStringMap& failedValues, bool restoreMode, bool)
{
    TAVRINE_LOG(LogOperation) << "Enter BiosRedfishConfigProc::Restore()";
    SettingValueMap current;
    RedfishConfigResult result = GetCurrentValuesMap(current, false);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed in get current value map though: " << result.ErrorMsg();
        return result;
    }
    result = FilterSettingValueNotChange(current, restoreValues, doneValues, failedValues);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "find error when filter setting value is change or not.";
        return result;
    }
    result = QuerySettingManagerWithoutValue();
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed to get setting manager with error: " << result.ErrorMsg();
        return result;
    }
    m_SettingManager->UpdateSettingValue(current);

    SettingStringMap contexts;
    result = m_SettingManager->PreparePatchContext(restoreValues, contexts,
                                                   restoreMode ? FilterRestoreSameSystem : FilterRestoreOtherSystem);
    if (result != ResultSuccess)
    {
        m_SettingAssistant->UpdateError(m_SettingManager->TakeErrors());
    }
    else
    {
        result = StageRestore(contexts);
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
        if (result != ResultSuccess)
        {
            m_SettingAssistant->UpdateError(m_SettingManager->TakeErrors());
        }
    }

    SortRestored(restoreValues, doneValues, failedValues);
    TAVRINE_LOG(LogOperation) << "Exit BiosRedfishConfigProc::Restore(), ret = " << result.ErrorCode();
    return result;
}

RedfishConfigResult BiosRedfishConfigProc::StageRestore(const SettingStringMap& contexts)
{
    RedfishConfigSettingInfoStru info;
    std::shared_ptr<BiosBasicSettingProc> proc;
    for (const auto& [name, text] : contexts)
    {
        RedfishConfigResult result = m_SettingManager->GetSettingProperties(name, info);
        if (result != ResultSuccess)
        {
            TAVRINE_LOG(LogFailure) << "Failed to get setting properties: " << result.ErrorMsg();
            return result;
        }
        result = m_ProcCreator->CreateProcForSetting(info, proc);
        if (result != ResultSuccess)
        {
            TAVRINE_LOG(LogFailure) << "Can not create BIOS redfish procs.";
            return result;
        }
        SettingStringMap& changed = proc->m_Assistant->m_ChangedValues;
        PutNear(changed, changed.end(), name, text);
        proc->m_Assistant->UpdateSettingValueCache(name, text);
    }
    return BareResult(ResultSuccess);
}

void BiosRedfishConfigProc::SortRestored(const SettingStringMap& restoreValues, SettingStringMap& doneValues,
                                         SettingStringMap& failedValues)
{
    std::vector<RedfishConfigResult> errors = m_SettingAssistant->GetError();
    std::set<std::string> failedNames;
    for (RedfishConfigResult& error : errors)
    {
        failedNames.insert(boost::algorithm::to_lower_copy(error.ErrorSetting()));
    }
    for (const auto& [name, value] : restoreValues)
    {
        if (failedNames.empty() || !failedNames.contains(boost::algorithm::to_lower_copy(name)))
        {
            doneValues.emplace_hint(doneValues.end(), m_Prefix + "." + name, value);
        }
    }
    for (RedfishConfigResult& error : errors)
    {
        const std::string fullName = m_Prefix + "." + error.ErrorSetting();
        RenameInMessage(error, error.ErrorSetting(), fullName);
        failedValues.emplace(fullName, error.ErrorMsg());
    }
}

} // namespace Tavrine
