#include "RawServer.h"

#include <cstdlib>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace resttest
{

namespace
{

int Bound(std::uint16_t& port)
{
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (bind(listener, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) != 0)
    {
        std::abort();
    }
    port = ntohs(address.sin_port);
    return listener;
}

std::size_t ContentLength(const std::string& head)
{
    const std::size_t at = head.find("Content-Length: ");
    return at == std::string::npos ? 0 : std::strtoul(head.c_str() + at + 16, nullptr, 10);
}

} // namespace

RawServer::RawServer(Behaviour behaviour) : m_Behaviour(std::move(behaviour)), m_Listener(Bound(m_Port))
{
    listen(m_Listener, 16);
    m_Acceptor = std::thread([this] { Accept(); });
}

RawServer::~RawServer()
{
    shutdown(m_Listener, SHUT_RDWR);
    m_Acceptor.join();
    {
        const std::lock_guard lock(m_Mutex);
        for (const int open : m_Sockets)
        {
            shutdown(open, SHUT_RDWR);
        }
    }
    for (std::thread& thread : m_Threads)
    {
        thread.join();
    }
    for (const int open : m_Sockets)
    {
        close(open);
    }
    close(m_Listener);
}

void RawServer::Accept()
{
    for (int peer = accept(m_Listener, nullptr, nullptr); peer >= 0; peer = accept(m_Listener, nullptr, nullptr))
    {
        const unsigned int number = ++m_Accepted;
        const std::lock_guard lock(m_Mutex);
        m_Sockets.push_back(peer);
        m_Threads.emplace_back(
            [this, peer, number]
            {
                m_Behaviour(peer, number);
                shutdown(peer, SHUT_RDWR);
            });
    }
}

TavrineConnection::ConnectionInfo RawServer::Info() const
{
    TavrineConnection::ConnectionInfo info;
    info.Host = "127.0.0.1";
    info.Port = m_Port;
    info.Flags = TavrineConnection::FlagPlainHttp;
    info.ConnectTimeout = 1;
    info.RequestTimeout = 1;
    return info;
}

std::string ReadRequest(int socket)
{
    std::string text;
    char buffer[4096];
    std::size_t whole = std::string::npos;
    while (whole == std::string::npos || text.size() < whole)
    {
        const ssize_t bytes = recv(socket, buffer, sizeof buffer, 0);
        if (bytes <= 0)
        {
            return {};
        }
        text.append(buffer, static_cast<std::size_t>(bytes));
        const std::size_t end = text.find("\r\n\r\n");
        whole = end == std::string::npos ? end : end + 4 + ContentLength(text.substr(0, end));
    }
    return text;
}

bool SendAll(int socket, const std::string& text)
{
    std::size_t sent = 0;
    while (sent < text.size())
    {
        const ssize_t bytes = send(socket, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
        if (bytes <= 0)
        {
            return false;
        }
        sent += static_cast<std::size_t>(bytes);
    }
    return true;
}

void WaitForPeerToLeave(int socket)
{
    char buffer[4096];
    while (recv(socket, buffer, sizeof buffer, 0) > 0)
    {
    }
}

std::uint16_t ClosedPort()
{
    std::uint16_t port = 0;
    close(Bound(port));
    return port;
}

} // namespace resttest
