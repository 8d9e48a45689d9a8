#include "AbortFlag.h"

#include <atomic>

namespace Tavrine::AbortFlag
{

namespace
{
std::atomic<bool> raised{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler sets this");
} // namespace

void Raise() { raised.store(true); }
bool IsRaised() { return raised.load(); }
void Lower() { raised.store(false); }

} // namespace Tavrine::AbortFlag
