#include "BMCBaseAssistant.h"

#include "ClientPool.h"
#include "RedfishClient.h"
#include "SettingValues.h"

namespace Tavrine
{

namespace
{

std::chrono::seconds PostTimeout(int seconds, const RedfishClient& client)
{
    return seconds > 0 ? std::chrono::seconds(seconds) : client.RequestTimeout();
}

} // namespace

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
    return m_Client->Change({HttpVerb::Post, url, body, PostTimeout(timeout, *m_Client), nullptr, false}, response,
                            &errors);
}

RedfishConfigResult BMCBaseAssistant::PostData(const std::string url, const std::string body, std::string& response,
                                               bool /*secretBody*/, int timeout)
{
    return m_Client->Change({HttpVerb::Post, url, body, PostTimeout(timeout, *m_Client), nullptr, false}, response,
                            nullptr);
}

RedfishConfigResult BMCBaseAssistant::GetData(const std::string url, std::string& response)
{
    return m_Client->Get(url, response);
}

RedfishConfigResult BMCBaseAssistant::DeleteData(const std::string url, std::string& response)
{
    std::string answer;
    RedfishConfigResult result =
        m_Client->Change({HttpVerb::Delete, url, {}, m_Client->RequestTimeout(), nullptr, false}, answer, nullptr);
    if (result == 0 || result == 1)
    {
        response = std::move(answer);
    }
    return result;
}

RedfishConfigResult BMCBaseAssistant::ParseSettingValuesFromResponse(const std::string response,
                                                                     SettingValueMap& values)
{
    return ReadSettingValues(response, values);
}

} // namespace Tavrine
