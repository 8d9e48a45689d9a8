#include "TestServer.h"

#include <stdexcept>

namespace resttest
{

namespace
{

std::unique_ptr<httplib::Server> ServerOf(const Certificate* certificate, int tlsVersion)
{
    if (certificate == nullptr)
    {
        return std::make_unique<httplib::Server>();
    }
    if (tlsVersion == 0)
    {
        return std::make_unique<httplib::SSLServer>(certificate->Leaf.get(), certificate->Key.get());
    }
    return std::make_unique<httplib::SSLServer>(
        [&](SSL_CTX& context)
        {
            return SSL_CTX_set_cipher_list(&context, AllCiphers) == 1 &&
                   SSL_CTX_use_certificate(&context, certificate->Leaf.get()) == 1 &&
                   SSL_CTX_use_PrivateKey(&context, certificate->Key.get()) == 1 &&
                   SSL_CTX_set_min_proto_version(&context, tlsVersion) == 1 &&
                   SSL_CTX_set_max_proto_version(&context, tlsVersion) == 1;
        });
}

} // namespace

TestServer::TestServer(Handler handler, const Certificate* certificate, int tlsVersion)
    : m_Handler(std::move(handler)), m_Tls(certificate != nullptr)
{
    m_Server = ServerOf(certificate, tlsVersion);
    if (!m_Server->is_valid())
    {
        throw std::runtime_error("no test server: OpenSSL refuses its certificate, or its version of TLS");
    }
    m_Server->set_keep_alive_max_count(100'000);
    const auto serve = [this](const httplib::Request& request, httplib::Response& response)
    { Serve(request, response); };
    m_Server->Get(".*", serve);
    m_Server->Post(".*", serve);
    m_Server->Patch(".*", serve);
    m_Server->Delete(".*", serve);
    const int port = m_Server->bind_to_any_port("127.0.0.1");
    if (port <= 0)
    {
        throw std::runtime_error("no test server: no port of 127.0.0.1 can be had");
    }
    m_Port = static_cast<std::uint16_t>(port);
    m_Thread = std::thread([this] { m_Server->listen_after_bind(); });
}

TestServer::~TestServer()
{
    // A stop before the loop has begun would be forgotten.
    while (!m_Server->is_running())
    {
        std::this_thread::yield();
    }
    m_Server->stop();
    m_Thread.join();
}

void TestServer::Serve(const httplib::Request& request, httplib::Response& response)
{
    {
        const std::lock_guard lock(m_Mutex);
        m_Requests.push_back({request.method, request.target, request.body, request.headers});
        m_Peers.insert(request.remote_port);
    }
    m_Handler(request, response);
}

TavrineConnection::ConnectionInfo TestServer::Info() const
{
    TavrineConnection::ConnectionInfo info;
    info.Host = "127.0.0.1";
    info.Port = m_Port;
    info.User = "admin";
    info.Password = "password";
    info.ConnectTimeout = 10;
    info.RequestTimeout = 20;
    info.Flags = m_Tls ? TavrineConnection::FlagNoTlsVerify : TavrineConnection::FlagPlainHttp;
    return info;
}

std::vector<SeenRequest> TestServer::Requests() const
{
    const std::lock_guard lock(m_Mutex);
    return m_Requests;
}

std::vector<std::string> TestServer::Calls() const
{
    std::vector<std::string> calls;
    for (const SeenRequest& request : Requests())
    {
        calls.push_back(request.Method + " " + request.Target);
    }
    return calls;
}

std::size_t TestServer::Connections() const
{
    const std::lock_guard lock(m_Mutex);
    return m_Peers.size();
}

TestServer::Handler Resources(std::map<std::string, std::string> resources)
{
    return [resources = std::move(resources)](const httplib::Request& request, httplib::Response& response)
    {
        const auto found = resources.find(request.target);
        if (request.method == "GET" && found != resources.end())
        {
            AnswerJson(response, found->second);
            return;
        }
        AnswerJson(response, R"({"error":{"code":"Base.1.8.GeneralError","message":"There is no such thing."}})", 404);
    };
}

} // namespace resttest
