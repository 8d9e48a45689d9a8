#include "AbortFlag.h"

#include <algorithm>
#include <atomic>
#include <thread>

namespace Tavrine::AbortFlag
{

namespace
{
/// A signal handler cannot wake a waiting thread, so that this looks for itself.
constexpr std::chrono::milliseconds PauseStep{50};
std::atomic<bool> raised{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler sets this");
} // namespace

void Raise() { raised.store(true); }
bool IsRaised() { return raised.load(); }
bool Pause(std::chrono::milliseconds time)
{
    while (time.count() > 0 && !IsRaised())
    {
        const auto step = std::min(time, PauseStep);
        std::this_thread::sleep_for(step);
        time -= step;
    }
    return !IsRaised();
}

void Lower() { raised.store(false); }

} // namespace Tavrine::AbortFlag
