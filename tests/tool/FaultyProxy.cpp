#include "FaultyProxy.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <atomic>
#include <cctype>
#include <mutex>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace tooltest
{
namespace
{

sockaddr_in Loopback(std::uint16_t port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

class Socket
{
  public:
    explicit Socket(int number) : m_Number(number) {}
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    ~Socket() { Close(); }
    void Close()
    {
        if (m_Number >= 0)
        {
            close(std::exchange(m_Number, -1));
        }
    }
    int Number() const { return m_Number; }

  private:
    int m_Number;
};

std::size_t BodyLength(const std::string& head)
{
    std::string lowered = head;
    std::transform(lowered.begin(), lowered.end(), lowered.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const std::string header = "\r\ncontent-length:";
    const std::size_t at = lowered.find(header);
    return at == std::string::npos ? 0 : std::stoul(lowered.substr(at + header.size()));
}

bool SendAll(int socket, const std::string& text)
{
    std::size_t done = 0;
    while (done < text.size())
    {
        const ssize_t count = send(socket, text.data() + done, text.size() - done, MSG_NOSIGNAL);
        if (count <= 0)
        {
            return false;
        }
        done += static_cast<std::size_t>(count);
    }
    return true;
}

} // namespace

class FaultyProxy::Impl
{
  public:
    Impl(const std::string& port, std::function<Fault(int, const std::string&)> judge)
        : m_ServicePort(static_cast<std::uint16_t>(std::stoi(port))), m_Judge(std::move(judge)),
          m_Listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address = Loopback(0);
        socklen_t size = sizeof(address);
        auto* plain = reinterpret_cast<sockaddr*>(&address);
        if (bind(m_Listener.Number(), plain, size) != 0 || listen(m_Listener.Number(), 16) != 0 ||
            getsockname(m_Listener.Number(), plain, &size) != 0)
        {
            throw std::runtime_error("the proxy cannot listen");
        }
        Port = ntohs(address.sin_port);
        m_Thread = std::thread([this] { Serve(); });
    }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;
    ~Impl()
    {
        m_Stop = true;
        m_Thread.join();
    }

    std::vector<std::string> Requests() const
    {
        const std::lock_guard lock(m_Mutex);
        return m_Requests;
    }

    std::vector<std::string> Bodies() const
    {
        const std::lock_guard lock(m_Mutex);
        return m_Bodies;
    }

    int Port = 0;

  private:
    /// Waits in short steps, so that the end of the proxy is noticed.
    bool WaitFor(int socket) const
    {
        pollfd waited{socket, POLLIN, 0};
        while (!m_Stop)
        {
            if (poll(&waited, 1, 20) > 0)
            {
                return true;
            }
        }
        return false;
    }

    void Serve()
    {
        while (m_Listener.Number() >= 0 && WaitFor(m_Listener.Number()))
        {
            const Socket client(accept4(m_Listener.Number(), nullptr, nullptr, SOCK_CLOEXEC));
            const Socket service(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
            const sockaddr_in address = Loopback(m_ServicePort);
            if (client.Number() < 0 ||
                connect(service.Number(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0)
            {
                continue;
            }
            while (PassOne(client.Number(), service.Number()))
            {
            }
        }
    }

    bool ReadMessage(int socket, std::string& text) const
    {
        text.clear();
        std::array<char, 65536> buffer{};
        for (;;)
        {
            const std::size_t end = text.find("\r\n\r\n");
            if (end != std::string::npos && text.size() >= end + 4 + BodyLength(text.substr(0, end + 2)))
            {
                return true;
            }
            const ssize_t count = WaitFor(socket) ? recv(socket, buffer.data(), buffer.size(), 0) : 0;
            if (count <= 0)
            {
                return false;
            }
            text.append(buffer.data(), static_cast<std::size_t>(count));
        }
    }

    bool PassOne(int client, int service)
    {
        std::string request;
        if (!ReadMessage(client, request))
        {
            return false;
        }
        const std::string line = request.substr(0, request.find(' ', request.find(' ') + 1));
        int number = 0;
        {
            const std::lock_guard lock(m_Mutex);
            m_Requests.push_back(line);
            m_Bodies.push_back(request.substr(request.find("\r\n\r\n") + 4));
            number = static_cast<int>(m_Requests.size());
        }
        if (m_Dead)
        {
            return false;
        }
        const Fault fault = m_Judge(number, line);
        m_Dead = m_Dead || fault == Fault::DeadBefore || fault == Fault::DeadAfter;
        if (fault == Fault::Busy)
        {
            return SendAll(client, "HTTP/1.1 503 Service Unavailable\r\nContent-Length: 0\r\n\r\n");
        }
        if (fault == Fault::CutHalfway)
        {
            SendAll(service, request.substr(0, request.size() / 2));
            return false;
        }
        std::string answer;
        if (fault == Fault::CutBefore || fault == Fault::DeadBefore || !SendAll(service, request) ||
            !ReadMessage(service, answer) || fault == Fault::CutAfter || fault == Fault::DeadAfter)
        {
            return false;
        }
        if (fault == Fault::CutWithin)
        {
            SendAll(client, answer.substr(0, answer.size() / 2));
            return false;
        }
        if (fault == Fault::GoneAfter)
        {
            // Before the answer, which says that the connection ends, so that the next
            // request finds nobody.
            m_Listener.Close();
            SendAll(client, answer.insert(answer.find("\r\n") + 2, "Connection: close\r\n"));
            return false;
        }
        return SendAll(client, answer);
    }

    std::uint16_t m_ServicePort;
    std::function<Fault(int, const std::string&)> m_Judge;
    Socket m_Listener;
    std::atomic<bool> m_Stop = false;
    bool m_Dead = false;
    mutable std::mutex m_Mutex;
    std::vector<std::string> m_Requests;
    std::vector<std::string> m_Bodies;
    std::thread m_Thread;
};

FaultyProxy::FaultyProxy(const std::string& port, std::function<Fault(int, const std::string&)> judge)
    : m_Impl(std::make_unique<Impl>(port, std::move(judge)))
{
}

FaultyProxy::~FaultyProxy() = default;

std::string FaultyProxy::Url() const { return "http://127.0.0.1:" + std::to_string(m_Impl->Port); }

std::vector<std::string> FaultyProxy::Requests() const { return m_Impl->Requests(); }

std::vector<std::string> FaultyProxy::Bodies() const { return m_Impl->Bodies(); }

} // namespace tooltest
