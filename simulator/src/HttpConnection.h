#pragma once

#include "FaultRule.h"
#include "HttpServer.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <httplib.h>
#include <memory>
#include <optional>
#include <string>

using SSL = struct ssl_st;

namespace bmcsim
{

/// One accepted TCP connection, with or without TLS, as the stream that the HTTP
/// parser reads. Used by one thread, but for the descriptor, which the owner may
/// shut down at any time to make every wait end.
class HttpConnection final : public httplib::Stream
{
  public:
    /// @param descriptor  stays the caller's.
    HttpConnection(int descriptor, unsigned int number);
    ~HttpConnection() override;

    bool Handshake(SSL_CTX& context);
    /// Says goodbye to a TLS peer, unless CutWithoutGoodbye was called.
    void Close();
    void CutWithoutGoodbye() { m_Cut = true; }
    /// @return false when nothing came in time or the connection is gone.
    bool WaitForRequest(std::chrono::milliseconds timeout);
    void BeginRequest();
    /// Returns when the peer has closed the connection or the owner shut it down.
    void WaitUntilLeft();
    /// @return false as soon as what WaitUntilLeft waits for has come.
    bool PauseUnlessLeft(std::chrono::milliseconds pause);
    /// Keeps what is written from now on for TakeHeldBack.
    void HoldBack() { m_HoldBack = true; }
    std::string TakeHeldBack();
    /// From here on a body of the largest size is taken as well.
    void EndOfHead();
    unsigned int Number() const { return m_Number; }
    std::chrono::steady_clock::time_point Begun() const { return m_Begun; }

    bool is_readable() const override;
    bool is_writable() const override;
    ssize_t read(char* data, std::size_t size) override;
    ssize_t write(const char* data, std::size_t size) override;
    void get_remote_ip_and_port(std::string& ip, int& port) const override;
    void get_local_ip_and_port(std::string& ip, int& port) const override;
    socket_t socket() const override { return m_Descriptor; }

    /// What the request in hand is known by; set while its head is taken over.
    std::string Path;
    std::string Query;
    /// No further request can be read behind this one.
    bool MustClose = false;
    /// What happens to the answer's bytes.
    std::optional<Fault> ByteFault;

  private:
    bool Fill();

    int m_Descriptor;
    unsigned int m_Number;
    std::shared_ptr<SSL> m_Tls;
    std::array<char, 16384> m_Buffer{};
    std::size_t m_Begin = 0;
    std::size_t m_End = 0;
    std::size_t m_Budget = 0;
    bool m_Cut = false;
    bool m_HoldBack = false;
    std::string m_HeldBack;
    std::chrono::steady_clock::time_point m_Begun;
};

} // namespace bmcsim
