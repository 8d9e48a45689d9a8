#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <httplib.h>

#include "Certificates.h"
#include "ConnectionInfo.h"
#include "RedfishConfigResult.h"

namespace resttest
{

/// Those of old versions of TLS, too, which OpenSSL leaves out of its own accord.
constexpr const char* AllCiphers = "ALL:@SECLEVEL=0";

struct SeenRequest
{
    std::string Method;
    std::string Target;
    std::string Body;
    httplib::Headers Headers;

    /// The value of a header; "(none)" where it is missing.
    std::string Header(const std::string& name) const
    {
        const auto found = Headers.find(name);
        return found == Headers.end() ? "(none)" : found->second;
    }
};

/// An HTTP or HTTPS server on a free port of the loopback interface. It remembers what
/// was asked.
class TestServer
{
  public:
    using Handler = std::function<void(const httplib::Request&, httplib::Response&)>;

    /// @param certificate  null for http.
    /// @param tlsVersion  the only one spoken, as OpenSSL names it, with old ciphers, too; 0 for what is usual.
    /// Throws std::runtime_error where the machine allows no such server.
    explicit TestServer(Handler handler, const Certificate* certificate = nullptr, int tlsVersion = 0);
    TestServer(const TestServer&) = delete;
    TestServer& operator=(const TestServer&) = delete;
    ~TestServer();

    std::uint16_t Port() const { return m_Port; }
    /// A record for this server; over https it takes any certificate.
    TavrineConnection::ConnectionInfo Info() const;
    std::vector<SeenRequest> Requests() const;
    /// "GET /path" of each request.
    std::vector<std::string> Calls() const;
    /// TCP connections on which a request came.
    std::size_t Connections() const;

  private:
    void Serve(const httplib::Request& request, httplib::Response& response);

    Handler m_Handler;
    bool m_Tls;
    std::unique_ptr<httplib::Server> m_Server;
    std::uint16_t m_Port = 0;
    mutable std::mutex m_Mutex;
    std::vector<SeenRequest> m_Requests;
    std::set<int> m_Peers;
    std::thread m_Thread;
};

/// Answers GETs from a table of resources, everything else with 404.
TestServer::Handler Resources(std::map<std::string, std::string> resources);

inline void AnswerJson(httplib::Response& response, const std::string& body, int status = 200)
{
    response.status = status;
    response.set_content(body, "application/json");
}

MATCHER_P(HasCode, code, "has code " + std::to_string(code))
{
    RedfishConfigResult result = arg;
    *result_listener << "whose code is " << result.ErrorCode() << " and message \"" << result.ErrorMsg() << "\"";
    return result.ErrorCode() == code;
}

MATCHER_P2(Fails, code, part, "has code " + std::to_string(code) + " and says \"" + std::string(part) + "\"")
{
    RedfishConfigResult result = arg;
    *result_listener << "whose code is " << result.ErrorCode() << " and message \"" << result.ErrorMsg() << "\"";
    return result.ErrorCode() == code && result.ErrorMsg().find(part) != std::string::npos;
}

} // namespace resttest
