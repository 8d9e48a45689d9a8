#include "BmcConnection.h"

#include <new>

#include "AbortFlag.h"
#include "ClientPool.h"
#include "Log.h"
#include "PlainText.h"
#include "RedfishClient.h"

namespace TavrineConnection
{

BmcConnection::BmcConnection(const ConnectionInfo& info, const ConnectionProfile& profile)
{
    auto [handle, client] = Tavrine::ClientPool::Register(info, profile);
    m_Info = info;
    // The client has it, and the record is copied into all that is made from it.
    Tavrine::Wipe(m_Info.Password);
    m_Info.ProfileId = handle;
    m_Client = std::move(client);
}

BmcConnection::~BmcConnection()
{
    try
    {
        RedfishConfigResult closed = CloseSession();
        if (closed != 0)
        {
            Tavrine::Log(1, __FILE__, __LINE__).Stream() << "Failed to log out: " << closed.ErrorMsg();
        }
    }
    catch (const std::bad_alloc&)
    {
        // No words can be made of it; a session that was left open ends by the BMC's own clock.
    }
}

const ConnectionInfo& BmcConnection::Info() const { return m_Info; }

RedfishConfigResult BmcConnection::OpenSession() { return m_Client->OpenSession(); }

RedfishConfigResult BmcConnection::CloseSession() { return m_Client->CloseSession(); }

RedfishConfigResult BmcConnection::Get(const std::string& url, std::string& response)
{
    return m_Client->Get(url, response);
}

RedfishConfigResult BmcConnection::Post(const std::string& url, const std::string& body, std::string& response,
                                        int timeoutSeconds)
{
    return m_Client->Change({Tavrine::HttpVerb::Post, url, body, m_Client->TimeoutOf(timeoutSeconds), nullptr, false},
                            response, nullptr);
}

RedfishConfigResult BmcConnection::Delete(const std::string& url, std::string& response)
{
    return m_Client->Delete(url, response);
}

std::uint32_t BmcConnection::RetryAfter() const { return m_Client->RetryAfter(); }

Traffic BmcConnection::Counters() const { return m_Client->Counters(); }

RequestFailure BmcConnection::LastFailure() const { return m_Client->LastFailure(); }

void BmcConnection::AbortRequests() { Tavrine::AbortFlag::Raise(); }

} // namespace TavrineConnection
