#include "BMCBaseAssistant.h"

#include "ClientPool.h"
#include "RedfishClient.h"
#include "SettingValues.h"

namespace Tavrine
{

// All kinds of systems are spoken to alike; the kind decides nothing here.
BMCBaseAssistant::BMCBaseAssistant(const TavrineConnection::ConnectionInfo& connection,
                                   const ConfigurateSupportedSystemType& /*systemType*/)
    : m_Client(ClientPool::Acquire(connection))
{
}

BMCBaseAssistant::~BMCBaseAssistant() = default;

RedfishConfigResult BMCBaseAssistant::PatchData(const std::string url, const std::string body,
                                                std::vector<RedfishConfigResult>& errors, bool /*secretBody*/,
                                                const SettingStringMap& headers)
{
    std::string response;
    return m_Client->Change({HttpVerb::Patch, url, body, m_Client->RequestTimeout(), &headers, false}, response,
                            &errors);
}

RedfishConfigResult BMCBaseAssistant::PostData(const std::string url, const std::string body, std::string& response,
                                               std::vector<RedfishConfigResult>& errors, bool /*secretBody*/,
                                               int timeout)
{
    return m_Client->Change({HttpVerb::Post, url, body, m_Client->TimeoutOf(timeout), nullptr, false}, response,
                            &errors);
}

RedfishConfigResult BMCBaseAssistant::PostData(const std::string url, const std::string body, std::string& response,
                                               bool /*secretBody*/, int timeout)
{
    return m_Client->Change({HttpVerb::Post, url, body, m_Client->TimeoutOf(timeout), nullptr, false}, response,
                            nullptr);
}

RedfishConfigResult BMCBaseAssistant::GetData(const std::string url, std::string& response)
{
    return m_Client->Get(url, response);
}

RedfishConfigResult BMCBaseAssistant::DeleteData(const std::string url, std::string& response)
{
    return m_Client->Delete(url, response);
}

RedfishConfigResult BMCBaseAssistant::ParseSettingValuesFromResponse(const std::string response,
                                                                     SettingValueMap& values)
{
    return ReadSettingValues(response, values);
}

} // namespace Tavrine
