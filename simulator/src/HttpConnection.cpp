#include "HttpConnection.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/ssl.h>
#include <poll.h>
#include <sys/socket.h>
#include <utility>

namespace bmcsim
{
namespace
{

// Within a request; the pause between requests is the caller's.
constexpr timeval StallTimeout{30, 0};

bool Poll(int descriptor, short events, int timeoutMs)
{
    pollfd entry{descriptor, events, 0};
    int ready = 0;
    do
    {
        ready = poll(&entry, 1, timeoutMs);
    } while (ready < 0 && errno == EINTR);
    return ready > 0;
}

using NameFunction = int (*)(int, sockaddr*, socklen_t*);

void DescribeAddress(NameFunction function, int descriptor, std::string& ip, int& port)
{
    sockaddr_storage address{};
    socklen_t length = sizeof(address);
    std::array<char, NI_MAXHOST> host{};
    std::array<char, NI_MAXSERV> service{};
    auto* plain = reinterpret_cast<sockaddr*>(&address);
    if (function(descriptor, plain, &length) == 0 &&
        getnameinfo(plain, length, host.data(), host.size(), service.data(), service.size(),
                    NI_NUMERICHOST | NI_NUMERICSERV) == 0)
    {
        ip = host.data();
        port = static_cast<int>(std::strtol(service.data(), nullptr, 10));
    }
}

} // namespace

HttpConnection::HttpConnection(int descriptor, unsigned int number) : m_Descriptor(descriptor), m_Number(number)
{
    setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &StallTimeout, sizeof(StallTimeout));
    setsockopt(descriptor, SOL_SOCKET, SO_SNDTIMEO, &StallTimeout, sizeof(StallTimeout));
    // Head and body are sent by two writes; without this the second would wait
    // for the peer's delayed acknowledgement.
    const int on = 1;
    setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
}

HttpConnection::~HttpConnection() = default;

bool HttpConnection::Handshake(SSL_CTX& context)
{
    m_Tls.reset(SSL_new(&context), SSL_free);
    return m_Tls && SSL_set_fd(m_Tls.get(), m_Descriptor) == 1 && SSL_accept(m_Tls.get()) == 1;
}

void HttpConnection::Close()
{
    if (m_Tls && !m_Cut && SSL_is_init_finished(m_Tls.get()))
    {
        SSL_shutdown(m_Tls.get());
    }
}

bool HttpConnection::WaitForRequest(std::chrono::milliseconds timeout)
{
    if (m_Begin < m_End || (m_Tls && SSL_pending(m_Tls.get()) > 0))
    {
        return true;
    }
    return Poll(m_Descriptor, POLLIN, static_cast<int>(timeout.count()));
}

void HttpConnection::BeginRequest()
{
    m_Budget = HttpServer::MaxHead;
    m_Begun = std::chrono::steady_clock::now();
    Path.clear();
    Query.clear();
    ByteFault.reset();
}

void HttpConnection::WaitUntilLeft()
{
    while (PauseUnlessLeft(std::chrono::minutes(1)))
    {
    }
}

bool HttpConnection::PauseUnlessLeft(std::chrono::milliseconds pause)
{
    constexpr std::chrono::milliseconds longest{INT_MAX};
    return !Poll(m_Descriptor, POLLRDHUP, static_cast<int>(std::min(pause, longest).count()));
}

std::string HttpConnection::TakeHeldBack()
{
    m_HoldBack = false;
    return std::exchange(m_HeldBack, {});
}

void HttpConnection::EndOfHead()
{
    // The allowance above the body is for the marks between chunks.
    m_Budget = 2 * HttpServer::MaxBody;
}

bool HttpConnection::Fill()
{
    const auto room = static_cast<int>(m_Buffer.size());
    const ssize_t count =
        m_Tls ? SSL_read(m_Tls.get(), m_Buffer.data(), room) : recv(m_Descriptor, m_Buffer.data(), m_Buffer.size(), 0);
    m_Begin = 0;
    m_End = count > 0 ? static_cast<std::size_t>(count) : 0;
    return count > 0;
}

bool HttpConnection::is_readable() const
{
    return m_Begin < m_End || (m_Tls && SSL_pending(m_Tls.get()) > 0) || Poll(m_Descriptor, POLLIN, 0);
}

bool HttpConnection::is_writable() const { return Poll(m_Descriptor, POLLOUT, 0); }

ssize_t HttpConnection::read(char* data, std::size_t size)
{
    if (m_Budget == 0)
    {
        MustClose = true;
        return -1;
    }
    if (m_Begin == m_End && !Fill())
    {
        MustClose = true;
        return 0;
    }
    const std::size_t count = std::min({size, m_End - m_Begin, m_Budget});
    std::memcpy(data, m_Buffer.data() + m_Begin, count);
    m_Begin += count;
    m_Budget -= count;
    return static_cast<ssize_t>(count);
}

ssize_t HttpConnection::write(const char* data, std::size_t size)
{
    if (m_HoldBack)
    {
        m_HeldBack.append(data, size);
        return static_cast<ssize_t>(size);
    }
    std::size_t done = 0;
    while (done < size)
    {
        const std::size_t part = std::min<std::size_t>(size - done, INT_MAX);
        const ssize_t count = m_Tls ? SSL_write(m_Tls.get(), data + done, static_cast<int>(part))
                                    : send(m_Descriptor, data + done, part, MSG_NOSIGNAL);
        if (count <= 0)
        {
            MustClose = true;
            return -1;
        }
        done += static_cast<std::size_t>(count);
    }
    return static_cast<ssize_t>(size);
}

void HttpConnection::get_remote_ip_and_port(std::string& ip, int& port) const
{
    DescribeAddress(getpeername, m_Descriptor, ip, port);
}

void HttpConnection::get_local_ip_and_port(std::string& ip, int& port) const
{
    DescribeAddress(getsockname, m_Descriptor, ip, port);
}

} // namespace bmcsim
