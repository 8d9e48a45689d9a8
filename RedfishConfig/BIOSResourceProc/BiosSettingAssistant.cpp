#include "BiosSettingAssistant.h"

#include "Results.h"
#include "SystemDiscovery.h"
#include "Trace.h"

namespace Tavrine
{

BiosSettingAssistant::BiosSettingAssistant(const TavrineConnection::ConnectionInfo& connection,
                                           ConfigurateSupportedSystemType systemType)
    : RedfishRegistryAssistant(connection), m_SystemsCollectionURL(SystemsCollectionURL),
      m_SupportedSystemType(systemType)
{
}

RedfishConfigResult BiosSettingAssistant::GetSchema(std::string& schema)
{
    RedfishConfigResult result = NeedValueURL();
    if (result != ResultSuccess)
    {
        return result;
    }
    result = QuerySchema();
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Query Schema error: " << result.ErrorMsg();
        schema.clear();
        return result;
    }
    schema = m_Schema;
    return BareResult(ResultSuccess);
}

RedfishConfigResult BiosSettingAssistant::ComplementQueryValuesURL()
{
    return DiscoverValueURL(*m_BMCClient, m_SystemsCollectionURL, m_ValueURL);
}

RedfishConfigResult BiosSettingAssistant::NeedValueURL()
{
    RedfishConfigResult result = m_ValueURL.empty() ? ComplementQueryValuesURL() : BareResult(ResultSuccess);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogOperation) << "Query value url error.";
    }
    return result;
}

} // namespace Tavrine
