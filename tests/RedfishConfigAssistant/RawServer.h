#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "ConnectionInfo.h"

namespace resttest
{

/// A TCP server that does on each connection whatever a test wants, in a thread of its
/// own. Destruction ends all connections and waits for the threads.
class RawServer
{
  public:
    using Behaviour = std::function<void(int socket, unsigned int connection)>;

    explicit RawServer(Behaviour behaviour);
    RawServer(const RawServer&) = delete;
    RawServer& operator=(const RawServer&) = delete;
    ~RawServer();

    std::uint16_t Port() const { return m_Port; }
    unsigned int Accepted() const { return m_Accepted; }
    /// A record for http, with time-outs of a second.
    TavrineConnection::ConnectionInfo Info() const;

  private:
    void Accept();

    Behaviour m_Behaviour;
    std::uint16_t m_Port = 0;
    int m_Listener;
    std::atomic<unsigned int> m_Accepted{0};
    std::mutex m_Mutex;
    std::vector<int> m_Sockets;
    std::vector<std::thread> m_Threads;
    std::thread m_Acceptor;
};

/// Reads until the head of a request is whole and its body (by Content-Length) too.
/// Empty when the peer left.
std::string ReadRequest(int socket);
/// @return false when the peer left.
bool SendAll(int socket, const std::string& text);
/// Waits until the peer leaves, or the server ends.
void WaitForPeerToLeave(int socket);

/// A port of the loopback interface on which nothing listens.
std::uint16_t ClosedPort();

} // namespace resttest
