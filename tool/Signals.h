#pragma once

namespace Tavrine::Tool
{

/// From now on SIGINT, SIGTERM and SIGHUP end the run in good order: requests fail,
/// and the ordinary way out closes the session and restores the terminal. A second
/// signal ends the process at once. A signal that is ignored stays so (nohup).
/// Writing to a closed pipe becomes an error of the write.
void InstallStopSignals();

/// The signal that came, 0 for none.
int StopSignal();

/// Waits until `descriptor` can be read or a stop signal comes, and misses neither.
/// @return false when there is nothing to read: a signal came, or the wait failed.
bool WaitForInput(int descriptor);

} // namespace Tavrine::Tool
