#include "BiosStandardSettingAssistant.h"

#include <vector>

#include "JsonNodes.h"
#include "Results.h"
#include "SystemDiscovery.h"
#include "Trace.h"

namespace Tavrine
{

namespace
{

/// What stands between the first two double quotes, so that a weak etag gives its bare
/// token; a text without double quotes stays as it is.
std::string BareEtag(const std::string& etag)
{
    const std::size_t opening = etag.find('"');
    if (opening == std::string::npos)
    {
        return etag;
    }
    const std::size_t closing = etag.find('"', opening + 1);
    return etag.substr(opening + 1, closing == std::string::npos ? closing : closing - opening - 1);
}

} // namespace

BiosStandardSettingAssistant::BiosStandardSettingAssistant(const TavrineConnection::ConnectionInfo& connection)
    : BMCBaseAssistant(connection, SystemTypeValueResource)
{
}

RedfishConfigResult BiosStandardSettingAssistant::ComplementQueryValuesURL()
{
    return DiscoverValueURL(*this, SystemsCollectionURL, m_ValueURL);
}

RedfishConfigResult BiosStandardSettingAssistant::QueryValueURLResponse()
{
    TAVRINE_LOG(LogDetail) << "Enter RedfishRegistryAssistant::QueryValueURLResponse()";
    RedfishConfigResult result = BareResult(ResultSuccess);
    if (m_ValueURL.empty())
    {
        result = ComplementQueryValuesURL();
        if (result != ResultSuccess)
        {
            TAVRINE_LOG(LogDetail) << "The resource URL is empty.";
            return result;
        }
    }
    result = GetData(m_ValueURL, m_ValueResponse);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Fail to get the resource.";
        return result;
    }
    if (m_ValueResponse.empty())
    {
        TAVRINE_LOG(LogFailure) << "Fail to get the value response.";
        return BareResult(ResultBmcError);
    }
    TAVRINE_LOG(LogDetail) << "Exit BiosStandardSettingAssistant::QueryValueURLResponse()";
    return result;
}

RedfishConfigResult BiosStandardSettingAssistant::QueryPatchURL()
{
    TAVRINE_LOG(LogOperation) << "Enter BiosBasicSettingAssistant::QueryPatchURL()";
    RedfishConfigResult result = BareResult(ResultSuccess);
    if (!m_PatchURL.empty())
    {
        return result;
    }
    if (m_ValueResponse.empty())
    {
        result = QueryValueURLResponse();
        if (result != ResultSuccess)
        {
            TAVRINE_LOG(LogFailure) << "Failed to get the response info for current values.";
            return result;
        }
    }
    if (!ReadStringNode(m_ValueResponse, {"@Redfish.Settings", "SettingsObject", "@odata.id"}, m_PatchURL))
    {
        TAVRINE_LOG(LogFailure) << "Failed to get the odata id";
        return BareResult(ResultQueryFailed);
    }
    if (m_PatchURL.empty())
    {
        TAVRINE_LOG(LogFailure) << "Failed to get the patch URL.";
        return {ResultBmcError, "BMC internal error.", ""};
    }
    TAVRINE_LOG(LogOperation) << "Exit BiosBasicSettingAssistant::QueryPatchURL()";
    return result;
}

RedfishConfigResult BiosStandardSettingAssistant::QueryEffectiveValue(SettingValueMap& values)
{
    if (m_ValueResponse.empty())
    {
        RedfishConfigResult result = QueryValueURLResponse();
        if (result != ResultSuccess)
        {
            TAVRINE_LOG(LogFailure) << "Failed to get the response info for effective values.";
            return result;
        }
    }
    RedfishConfigResult result = ParseSettingValuesFromResponse(m_ValueResponse, values);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed to get the current values.";
    }
    return result;
}

RedfishConfigResult BiosStandardSettingAssistant::QueryPendingValue(SettingValueMap&)
{
    RedfishConfigResult result = BareResult(ResultSuccess);
    if (m_PatchURL.empty())
    {
        result = QueryPatchURL();
        if (result != ResultSuccess)
        {
            TAVRINE_LOG(LogDetail) << "Failed to get the pending URL.";
            return result;
        }
    }
    std::string response;
    result = GetData(m_PatchURL, response);
    if (result == ResultSuccess)
    {
        result = ParseSettingValuesFromResponse(response, m_PendingValues);
    }
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed to get pending values map with ret=" << result.ErrorCode();
    }
    return result;
}

void BiosStandardSettingAssistant::SetValueResponse(const std::string& response) { m_ValueResponse = response; }

RedfishConfigResult BiosStandardSettingAssistant::BuildPatchHeaders(SettingStringMap& headers)
{
    RedfishConfigResult result = BareResult(ResultSuccess);
    if (m_ValueResponse.empty())
    {
        result = QueryValueURLResponse();
        if (result != ResultSuccess)
        {
            TAVRINE_LOG(LogFailure) << "Failed to get the response info for current values.";
            return result;
        }
    }
    std::string etag;
    if (!ReadStringNode(m_ValueResponse, {"@odata.etag"}, etag))
    {
        TAVRINE_LOG(LogFailure) << "Failed to get the odata id";
        return BareResult(ResultQueryFailed);
    }
    headers["If-None-Match"] = BareEtag(etag);
    headers["Expect"] = "";
    return result;
}

RedfishConfigResult BiosStandardSettingAssistant::FlushChanges()
{
    TAVRINE_LOG(LogDetail) << "Entering  Tavrine::BiosStandardSettingAssistant::FlushChanges";
    if (m_ChangedValues.empty())
    {
        TAVRINE_LOG(LogDetail) << "Nothing need to do for flush changes.";
        return BareResult(ResultSuccess);
    }
    RedfishConfigResult result = BareResult(ResultSuccess);
    if (m_PatchURL.empty())
    {
        result = QueryPatchURL();
        if (result != ResultSuccess)
        {
            TAVRINE_LOG(LogDetail) << "Failed to get the pending URL.";
            return result;
        }
    }

    std::string pairs;
    std::string maskedPairs;
    for (const auto& [name, text] : m_ChangedValues)
    {
        const std::string start = (pairs.empty() ? "\"" : ",\"") + name + "\":";
        pairs += start + text;
        maskedPairs += start + "********";
    }
    TAVRINE_LOG(LogDetail) << "send patch data: {\"Attributes\":{" << maskedPairs << "}} to: " << m_PatchURL;

    SettingStringMap headers;
    result = BuildPatchHeaders(headers);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed to parse etag from value response.";
        return result;
    }
    std::vector<RedfishConfigResult> errors;
    result = PatchData(m_PatchURL, "{\"Attributes\":{" + pairs + "}}", errors, true, headers);
    TakeFlushErrors(errors);
    TAVRINE_LOG(LogDetail) << "Exiting  Tavrine::BiosStandardSettingAssistant::FlushChanges";
    return result;
}

} // namespace Tavrine
