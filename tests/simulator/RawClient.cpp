#include "RawClient.h"

#include <arpa/inet.h>
#include <array>
#include <cstdlib>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>
#include <utility>

namespace bmctest
{

RawClient::RawClient(std::uint16_t port) : m_Descriptor(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    // A server that hangs fails the test instead of stopping it.
    const timeval patience{60, 0};
    setsockopt(m_Descriptor, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof(patience));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    m_Connected = connect(m_Descriptor, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
}

RawClient::~RawClient() { close(m_Descriptor); }

bool RawClient::Send(const std::string& text)
{
    std::size_t done = 0;
    while (done < text.size())
    {
        const ssize_t count = send(m_Descriptor, text.data() + done, text.size() - done, MSG_NOSIGNAL);
        if (count <= 0)
        {
            return false;
        }
        done += static_cast<std::size_t>(count);
    }
    return true;
}

bool RawClient::ReadMore()
{
    std::array<char, 4096> buffer;
    const ssize_t count = recv(m_Descriptor, buffer.data(), buffer.size(), 0);
    if (count > 0)
    {
        m_Pending.append(buffer.data(), static_cast<std::size_t>(count));
    }
    return count > 0;
}

std::string RawClient::ReadToEnd()
{
    while (ReadMore())
    {
    }
    return std::exchange(m_Pending, {});
}

std::string RawClient::ReadAnswer()
{
    std::size_t end = std::string::npos;
    while ((end = m_Pending.find("\r\n\r\n")) == std::string::npos)
    {
        if (!ReadMore())
        {
            return std::exchange(m_Pending, {});
        }
    }
    const std::string name = "Content-Length: ";
    const std::size_t at = m_Pending.find(name);
    const std::size_t length = at < end ? std::strtoul(m_Pending.c_str() + at + name.size(), nullptr, 10) : 0;
    while (m_Pending.size() < end + 4 + length && ReadMore())
    {
    }
    const std::string answer = m_Pending.substr(0, end + 4 + length);
    m_Pending.erase(0, answer.size());
    return answer;
}

} // namespace bmctest
