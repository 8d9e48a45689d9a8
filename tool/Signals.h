#pragma once

#include <csignal>

namespace Tavrine::Tool
{

/// From now on SIGINT, SIGTERM and SIGHUP end the run in good order: requests fail,
/// and the ordinary way out closes the session and restores the terminal. A second
/// signal ends the process at once. A signal that is ignored stays so (nohup).
/// Writing to a closed pipe, or beyond the largest size of a file, becomes an error of the write.
void InstallStopSignals();

/// The signal that came, 0 for none.
int StopSignal();

/// Keeps stop signals from this thread while it lives, and from the threads that are started meanwhile as long as
/// those live: a signal must come to the thread that waits for it, and only that is woken by it. The signals that a
/// prompt without echo puts off are held likewise, or another thread would take them.
class HeldStopSignals
{
  public:
    HeldStopSignals();
    ~HeldStopSignals();
    HeldStopSignals(const HeldStopSignals&) = delete;
    HeldStopSignals& operator=(const HeldStopSignals&) = delete;

    /// What was held before.
    const sigset_t& Former() const { return m_Former; }

  private:
    sigset_t m_Former = {};
};

/// Waits until `descriptor` can be read or a stop signal comes, and misses neither.
/// @return false when there is nothing to read: a signal came, or the wait failed.
bool WaitForInput(int descriptor);

/// Likewise until `descriptor` can be written to.
bool WaitForOutput(int descriptor);

} // namespace Tavrine::Tool
