// Sending what is queued, and keeping related settings out of one request.
#include "BiosRedfishConfigProc.h"

#include <algorithm>

#include "BiosBasicSettingProc.h"
#include "BiosRedfishProcCreator.h"
#include "RedfishConfigSettingManager.h"
#include "Results.h"
#include "Trace.h"

namespace Tavrine
{

namespace
{

bool Holds(const std::vector<std::string>& names, const std::string& name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

} // namespace

RedfishConfigResult BiosRedfishConfigProc::FlushChanges()
{
    TAVRINE_LOG(LogDetail) << "Entering  Tavrine::BiosRedfishConfigProc::FlushChanges";
    m_ErrorList.clear();
    ProcMap procs;
    m_ProcCreator->CreateAllProcs(procs);
    if (procs.empty())
    {
        TAVRINE_LOG(LogFailure) << "Can not create BIOS redfish procs.";
        return BareResult(ResultInternalError);
    }
    RedfishConfigResult final = BareResult(ResultSuccess);
    for (const auto& [resource, proc] : procs)
    {
        const RedfishConfigResult result = proc->FlushChanges();
        if (result != ResultSuccess)
        {
            const std::vector<RedfishConfigResult> errors = proc->GetError();
            m_ErrorList.insert(m_ErrorList.end(), errors.begin(), errors.end());
            final = result;
        }
    }
    TAVRINE_LOG(LogDetail) << "Exiting  Tavrine::BiosRedfishConfigProc::FlushChanges";
    return final;
}

bool BiosRedfishConfigProc::CheckNeedDoFlushChangeNow(const std::string& name,
                                                      const std::vector<std::string>& dependencies)
{
    const bool related = Holds(m_PendingDependencies, name) || std::any_of(m_PendingNames.begin(), m_PendingNames.end(),
                                                                           [&dependencies](const std::string& pending)
                                                                           { return Holds(dependencies, pending); });
    if (related)
    {
        m_PendingDependencies = dependencies;
        m_PendingNames = {name};
        return true;
    }
    m_PendingDependencies.insert(m_PendingDependencies.end(), dependencies.begin(), dependencies.end());
    m_PendingNames.push_back(name);
    return false;
}

RedfishConfigResult BiosRedfishConfigProc::BatchFlushChange()
{
    RedfishConfigResult result = FlushChanges();
    if (result == ResultSuccess || result == ResultResetRequired)
    {
        return result;
    }
    if (result == ResultBmcBusy)
    {
        TAVRINE_LOG(LogDetail) << "Requested operation is temporarily unavailable: " << result.ErrorMsg();
        return result;
    }
    SettingValueMap values;
    result = ReloadAllSettingValues(values, true);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed to reload all values with error: " << result.ErrorMsg();
        return result;
    }
    m_SettingManager->UpdateSettingValue(values);
    return result;
}

} // namespace Tavrine
