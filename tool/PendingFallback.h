#pragma once

#include <atomic>
#include <optional>
#include <string>
#include <string_view>

#include "Logging.h"

namespace Tavrine::Tool
{

/// Listens for the library taking the values in force because those that wait for a reboot
/// cannot be read: its operations succeed all the same, and only its log tells.
class PendingFallback
{
  public:
    PendingFallback();
    PendingFallback(const PendingFallback&) = delete;
    PendingFallback& operator=(const PendingFallback&) = delete;
    ~PendingFallback();

    /// What to tell the user, if it happened.
    std::optional<std::string> Warning() const;
    /// The result code of the read that failed, if it happened.
    std::optional<int> FailedRead() const;

  private:
    void Hear(std::string_view line);

    std::atomic<bool> m_Unread = false;
    std::atomic<int> m_Code = 0;
    std::atomic<bool> m_Taken = false;
    Logging::SinkId m_Sink;
};

} // namespace Tavrine::Tool
