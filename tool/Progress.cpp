#include "Progress.h"

#include <unistd.h>
#include <utility>

#include "Signals.h"
#include "StandardStreams.h"

namespace Tavrine::Tool
{

Progress::Progress(std::string line, std::chrono::milliseconds patience)
{
    if (isatty(STDERR_FILENO) != 1)
    {
        return;
    }
    const HeldStopSignals held;
    m_Thread = std::thread(
        [this, line = std::move(line), patience]
        {
            std::unique_lock lock(m_Mutex);
            if (!m_Wake.wait_for(lock, patience, [this] { return m_Done; }))
            {
                WriteError("tavrine: " + line + "\n");
            }
        });
}

Progress::~Progress()
{
    {
        const std::lock_guard lock(m_Mutex);
        m_Done = true;
    }
    m_Wake.notify_all();
    if (m_Thread.joinable())
    {
        m_Thread.join();
    }
}

} // namespace Tavrine::Tool
