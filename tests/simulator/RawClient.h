#pragma once

#include <cstdint>
#include <string>

namespace bmctest
{

/// A bare TCP connection to a simulator on this machine.
class RawClient
{
  public:
    explicit RawClient(std::uint16_t port);
    ~RawClient();
    RawClient(const RawClient&) = delete;
    RawClient& operator=(const RawClient&) = delete;

    bool Connected() const { return m_Connected; }
    /// @return false when the other side is gone.
    bool Send(const std::string& text);
    /// Everything up to the end of the connection.
    std::string ReadToEnd();
    /// One answer: its head, and as much body as its Content-Length tells.
    std::string ReadAnswer();

  private:
    bool ReadMore();

    int m_Descriptor;
    bool m_Connected;
    std::string m_Pending;
};

} // namespace bmctest
