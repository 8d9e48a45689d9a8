#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <list>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace bmcsim
{

/// The open sessions of the service. One that was not used for the time-out is gone.
/// Safe to use from several threads.
class Sessions
{
  public:
    static constexpr std::size_t MaxOpen = 64;

    explicit Sessions(std::chrono::milliseconds timeout) : m_Timeout(timeout) {}

    struct Opened
    {
        std::string Id;
        std::string Token;
    };
    /// When too many are open the oldest one ends.
    /// @return empty when the system has no randomness to give.
    std::optional<Opened> Open();
    /// Whether an open session has this token; if so it counts as used now.
    bool Use(const std::string& token);
    bool IsOpen(const std::string& id);
    /// @return false when there was no such session.
    bool Close(const std::string& id);
    /// In the order in which they were opened.
    std::vector<std::string> Ids();
    std::chrono::milliseconds Timeout() const { return m_Timeout; }

  private:
    struct Session
    {
        std::string Id;
        std::string Token;
        std::chrono::steady_clock::time_point LastUse;
    };
    void DropExpired();
    std::list<Session>::iterator Find(const std::string& id);

    const std::chrono::milliseconds m_Timeout;
    std::mutex m_Mutex;
    std::uint64_t m_LastNumber = 0;
    std::list<Session> m_Sessions;
};

} // namespace bmcsim
