#pragma once

namespace Tavrine::AbortFlag
{

/// Makes the requests of this process fail, those under way included. Safe in a
/// signal handler.
void Raise();
bool IsRaised();
/// Takes it back; nothing but a test has a use for that.
void Lower();

} // namespace Tavrine::AbortFlag
