#include "LeapingClock.h"

#include <ctime>

#include <sys/syscall.h>
#include <unistd.h>

namespace
{

thread_local const resttest::LeapingClock* leaping = nullptr;

} // namespace

/// Stands in for the system's own in this program.
extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept
{
    const long result = syscall(SYS_clock_gettime, clock, time);
    if (result == 0 && clock == CLOCK_MONOTONIC && leaping != nullptr)
    {
        constexpr long second = 1'000'000'000;
        const std::int64_t ahead = leaping->Ahead();
        time->tv_sec += ahead / 1'000;
        time->tv_nsec += static_cast<long>(ahead % 1'000) * 1'000'000;
        time->tv_sec += time->tv_nsec / second;
        time->tv_nsec %= second;
    }
    return static_cast<int>(result);
}

namespace resttest
{

LeapingClock::LeapingClock() { leaping = this; }

LeapingClock::~LeapingClock() { leaping = nullptr; }

} // namespace resttest
