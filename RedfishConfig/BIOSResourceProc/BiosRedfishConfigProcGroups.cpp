// What is derived from the registry as a whole: the groups.
#include "BiosRedfishConfigProc.h"

#include "BiosSettingAssistant.h"
#include "RedfishConfigSettingManager.h"
#include "Results.h"
#include "Trace.h"

namespace Tavrine
{

RedfishConfigResult BiosRedfishConfigProc::QueryGroupList(SettingGroupMap& groups)
{
    TAVRINE_LOG(LogDetail) << "Entering  Tavrine::BiosRedfishConfigProc::QueryGroupList";
    RedfishConfigResult result = BareResult(ResultSuccess);
    groups.clear();
    if (m_Schema.empty())
    {
        if (m_SettingAssistant == nullptr)
        {
            TAVRINE_LOG(LogFailure) << "Construct assistant error.";
            return BareResult(ResultInternalError);
        }
        result = m_SettingAssistant->GetSchema(m_Schema);
        if (result != ResultSuccess)
        {
            TAVRINE_LOG(LogFailure) << "Failed in get schema though: " << result.ErrorMsg();
            return result;
        }
    }
    result = QueryGroupListFromSchema(groups);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "query menu list from sechma error. ret = " << result.ErrorCode();
    }
    TAVRINE_LOG(LogDetail) << "Exiting  Tavrine::BiosRedfishConfigProc::QueryGroupList";
    return result;
}

RedfishConfigResult BiosRedfishConfigProc::QueryGroupListFromSchema(SettingGroupMap& groups)
{
    TAVRINE_LOG(LogDetail) << "Entering  Tavrine::BiosRedfishConfigProc::QueryGroupListFromSchema";
    groups.clear();
    RedfishConfigResult result = QuerySettingManagerWithoutValue();
    if (result == ResultSuccess && m_SettingManager != nullptr)
    {
        m_SettingManager->GetGroupList(groups);
    }
    TAVRINE_LOG(LogDetail) << "Exiting  Tavrine::BiosRedfishConfigProc::QueryGroupListFromSchema";
    return result;
}

} // namespace Tavrine
