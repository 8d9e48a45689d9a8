#include "HttpServer.h"

#include "Descriptor.h"
#include "HttpConnection.h"
#include "HttpParser.h"
#include "SystemMessage.h"

#include <array>
#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <fmt/format.h>
#include <list>
#include <mutex>
#include <netdb.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <system_error>
#include <thread>
#include <utility>

namespace bmcsim
{
namespace
{

Descriptor Listen(const std::string& address, std::uint16_t port, std::string& error)
{
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_PASSIVE | AI_NUMERICSERV;
    addrinfo* found = nullptr;
    const int status = getaddrinfo(address.c_str(), std::to_string(port).c_str(), &hints, &found);
    if (status != 0)
    {
        error = fmt::format("cannot listen on address '{}': {}", address, gai_strerror(status));
        return Descriptor();
    }
    const std::unique_ptr<addrinfo, void (*)(addrinfo*)> owner(found, freeaddrinfo);
    Descriptor listener(socket(found->ai_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const int on = 1;
    if (!listener.Valid() || setsockopt(listener.Get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on)) != 0 ||
        bind(listener.Get(), found->ai_addr, found->ai_addrlen) != 0 || listen(listener.Get(), SOMAXCONN) != 0)
    {
        error = fmt::format("cannot listen on {} port {}: {}", address, port, SystemMessage(errno));
        return Descriptor();
    }
    return listener;
}

std::uint16_t BoundPort(int descriptor)
{
    sockaddr_storage address{};
    socklen_t length = sizeof(address);
    if (getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &length) != 0)
    {
        return 0;
    }
    const auto port = address.ss_family == AF_INET6 ? reinterpret_cast<sockaddr_in6*>(&address)->sin6_port
                                                    : reinterpret_cast<sockaddr_in*>(&address)->sin_port;
    return ntohs(port);
}

} // namespace

std::string HttpRequest::Header(const std::string& name) const
{
    const auto found = Headers.find(name);
    return found == Headers.end() ? std::string() : found->second;
}

class HttpServer::Impl
{
  public:
    Impl(HttpServerOptions options, HttpServerHooks hooks, Descriptor listener, Descriptor wake)
        : m_Options(std::move(options)), m_Hooks(DelayAnswers(std::move(hooks))), m_Parser(m_Hooks),
          m_Listener(std::move(listener)), m_Wake(std::move(wake)), m_Port(BoundPort(m_Listener.Get())),
          m_Acceptor([this] { AcceptAll(); })
    {
    }

    ~Impl()
    {
        {
            const std::lock_guard lock(m_Mutex);
            m_Stopping = true;
            for (const auto& peer : m_Peers)
            {
                shutdown(peer.Socket.Get(), SHUT_RDWR);
            }
        }
        m_Stopped.notify_all();
        eventfd_write(m_Wake.Get(), 1);
        m_Acceptor.join();
        for (auto& peer : m_Peers)
        {
            peer.Worker.join();
        }
    }

    std::uint16_t Port() const { return m_Port; }

  private:
    struct Peer
    {
        Descriptor Socket;
        bool Done = false;
        std::thread Worker;
    };

    HttpServerHooks DelayAnswers(HttpServerHooks hooks)
    {
        if (m_Options.Latency.count() > 0)
        {
            hooks.Handle = [this, handle = std::move(hooks.Handle)](const HttpRequest& request)
            {
                std::unique_lock lock(m_Mutex);
                m_Stopped.wait_for(lock, m_Options.Latency, [this] { return m_Stopping; });
                lock.unlock();
                return handle(request);
            };
        }
        return hooks;
    }

    void AcceptAll()
    {
        std::array<pollfd, 2> entries{pollfd{m_Listener.Get(), POLLIN, 0}, pollfd{m_Wake.Get(), POLLIN, 0}};
        unsigned int number = 0;
        for (;;)
        {
            if (poll(entries.data(), entries.size(), -1) < 0 && errno != EINTR)
            {
                return;
            }
            if (entries[1].revents != 0)
            {
                return;
            }
            Descriptor socket(accept4(m_Listener.Get(), nullptr, nullptr, SOCK_CLOEXEC));
            if (socket.Valid())
            {
                Admit(std::move(socket), ++number);
            }
            else if (errno == EMFILE || errno == ENFILE)
            {
                // The listener stays readable, so without a pause this would spin
                // until a descriptor is given back.
                poll(&entries[1], 1, 50);
            }
        }
    }

    void Admit(Descriptor socket, unsigned int number)
    {
        const std::lock_guard lock(m_Mutex);
        m_Peers.remove_if(
            [](Peer& peer)
            {
                if (peer.Done)
                {
                    peer.Worker.join();
                }
                return peer.Done;
            });
        if (m_Stopping || m_Peers.size() >= MaxConnections)
        {
            return;
        }
        Peer& peer = m_Peers.emplace_back();
        peer.Socket = std::move(socket);
        try
        {
            peer.Worker = std::thread([this, &peer, number] { Serve(peer, number); });
        }
        catch (const std::system_error&)
        {
            // No thread to be had: the connection is closed, the others go on.
            m_Peers.pop_back();
        }
    }

    void Serve(Peer& peer, unsigned int number)
    {
        int descriptor = -1;
        {
            const std::lock_guard lock(m_Mutex);
            descriptor = peer.Socket.Get();
        }
        {
            HttpConnection connection(descriptor, number);
            if (!m_Options.Tls || connection.Handshake(*m_Options.Tls))
            {
                while (m_Parser.ServeOne(connection))
                {
                }
                connection.Close();
            }
        }
        const std::lock_guard lock(m_Mutex);
        // The number of a closed descriptor may be given out again, so it must
        // not be left where the destructor would shut it down.
        peer.Socket = Descriptor();
        peer.Done = true;
    }

    const HttpServerOptions m_Options;
    std::mutex m_Mutex;
    std::condition_variable m_Stopped;
    bool m_Stopping = false;
    std::list<Peer> m_Peers;
    const HttpServerHooks m_Hooks;
    HttpParser m_Parser;
    Descriptor m_Listener;
    Descriptor m_Wake;
    std::uint16_t m_Port;
    std::thread m_Acceptor;
};

HttpServer::HttpServer(std::unique_ptr<Impl> impl) : m_Impl(std::move(impl)) {}
HttpServer::~HttpServer() = default;

std::unique_ptr<HttpServer> HttpServer::Start(HttpServerOptions options, HttpServerHooks hooks, std::string& error)
{
    Descriptor listener = Listen(options.BindAddress, options.Port, error);
    if (!listener.Valid())
    {
        return nullptr;
    }
    Descriptor wake(eventfd(0, EFD_CLOEXEC));
    if (!wake.Valid())
    {
        error = fmt::format("cannot make an event: {}", SystemMessage(errno));
        return nullptr;
    }
    return std::unique_ptr<HttpServer>(new HttpServer(
        std::make_unique<Impl>(std::move(options), std::move(hooks), std::move(listener), std::move(wake))));
}

std::uint16_t HttpServer::Port() const { return m_Impl->Port(); }

} // namespace bmcsim
