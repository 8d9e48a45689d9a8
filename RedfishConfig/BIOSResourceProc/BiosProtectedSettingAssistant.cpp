#include "BiosProtectedSettingAssistant.h"

#include <vector>

#include "Results.h"
#include "Trace.h"

namespace Tavrine
{

namespace
{

/// Seconds that an action may take.
constexpr int ActionTimeout = 60;

} // namespace

BiosProtectedSettingAssistant::BiosProtectedSettingAssistant(const TavrineConnection::ConnectionInfo& connection)
    : BMCBaseAssistant(connection, SystemTypeValueResource)
{
}

RedfishConfigResult BiosProtectedSettingAssistant::QueryEffectiveValue(SettingValueMap& values)
{
    std::string response;
    RedfishConfigResult result = PostData(ProtectedAttributesGetURL, "{}", response, false, ActionTimeout);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogDetail) << "Fail to get protected settings value";
        return result;
    }
    result = ParseSettingValuesFromResponse(response, values);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed to get the current values.";
    }
    return result;
}

RedfishConfigResult BiosProtectedSettingAssistant::QueryPendingValue(SettingValueMap& values)
{
    TAVRINE_LOG(LogDetail) << "Entering  Tavrine::BiosProtectedSettingAssistant::QueryPendingValue";
    std::string response;
    RedfishConfigResult result =
        PostData(ProtectedAttributesGetURL, "{\"Pending\":true}", response, false, ActionTimeout);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed to get the response info for current values.";
        return result;
    }
    result = ParseSettingValuesFromResponse(response, values);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed to get the current values.";
        return result;
    }
    TAVRINE_LOG(LogDetail) << "Exiting  Tavrine::BiosProtectedSettingAssistant::QueryPendingValue";
    return result;
}

RedfishConfigResult BiosProtectedSettingAssistant::QueryValueURLResponse() { return BareResult(ResultSuccess); }

RedfishConfigResult BiosProtectedSettingAssistant::FlushChanges()
{
    TAVRINE_LOG(LogDetail) << "Entering  Tavrine::BiosProtectedSettingAssistant::FlushChanges";
    if (m_ChangedValues.empty())
    {
        TAVRINE_LOG(LogDetail) << "Nothing need to do for flush changes.";
        return BareResult(ResultSuccess);
    }
    std::string pairs;
    for (const auto& [name, text] : m_ChangedValues)
    {
        pairs += (pairs.empty() ? "\"" : ",\"") + name + "\" : " + text;
    }
    const std::string body = " {\"Attributes\":{ " + pairs + " }} ";
    TAVRINE_LOG(LogDetail) << "send patch data: " << body << " to: " << ProtectedAttributesSetURL;

    std::string response;
    std::vector<RedfishConfigResult> errors;
    RedfishConfigResult result = PostData(ProtectedAttributesSetURL, body, response, errors, true, ActionTimeout);
    if (result != ResultSuccess && result != ResultResetRequired)
    {
        TAVRINE_LOG(LogDetail) << "Fail to post info " << ProtectedAttributesSetURL;
    }
    TakeFlushErrors(errors);
    TAVRINE_LOG(LogDetail) << "Exiting  Tavrine::BiosProtectedSettingAssistant::FlushChanges";
    return result;
}

} // namespace Tavrine
