#pragma once

#include <chrono>

namespace Tavrine::AbortFlag
{

/// Makes the requests of this process fail, those under way included. Safe in a
/// signal handler.
void Raise();
bool IsRaised();
/// Waits, but not beyond an abort.
/// @return false when one was raised.
bool Pause(std::chrono::milliseconds time);
/// Takes it back; nothing but a test has a use for that.
void Lower();

} // namespace Tavrine::AbortFlag
