#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

namespace resttest
{

/// Lets the steady clock of the thread that made it run ahead, when any thread asks for it. One in a thread at a time.
class LeapingClock
{
  public:
    LeapingClock();
    LeapingClock(const LeapingClock&) = delete;
    LeapingClock& operator=(const LeapingClock&) = delete;
    ~LeapingClock();

    void Leap(std::chrono::milliseconds time) { m_Ahead += time.count(); }
    std::int64_t Ahead() const { return m_Ahead; }

  private:
    std::atomic<std::int64_t> m_Ahead{0};
};

} // namespace resttest
