#include "Progress.h"

#include <system_error>
#include <unistd.h>
#include <utility>

#include "Signals.h"
#include "StandardStreams.h"

namespace Tavrine::Tool
{

namespace
{

/// Of the main thread, which alone makes these objects.
Progress* g_Current = nullptr;

} // namespace

Progress::Progress(std::string line, std::chrono::milliseconds patience)
{
    if (isatty(STDERR_FILENO) != 1)
    {
        return;
    }
    const HeldStopSignals held;
    try
    {
        m_Thread = std::thread([this, line = std::move(line), patience] { Tell(line, patience); });
    }
    catch (const std::system_error&)
    {
        return; // no thread is to be had, which is no reason to end a run
    }
    g_Current = this;
}

void Progress::Tell(const std::string& line, std::chrono::milliseconds patience)
{
    std::unique_lock lock(m_Mutex);
    while (!m_Done)
    {
        m_Wake.wait(lock, [this] { return m_Done || !m_Held; });
        if (!m_Wake.wait_for(lock, patience, [this] { return m_Done || m_Held; }))
        {
            WriteError("tavrine: " + line + "\n");
            break;
        }
    }
}

void Progress::Set(bool Progress::*state, bool value)
{
    {
        const std::lock_guard lock(m_Mutex);
        this->*state = value;
    }
    m_Wake.notify_all();
}

Progress::~Progress()
{
    g_Current = g_Current == this ? nullptr : g_Current;
    Set(&Progress::m_Done, true);
    if (m_Thread.joinable())
    {
        m_Thread.join();
    }
}

Progress::Pause::Pause() : m_Paused(g_Current)
{
    if (m_Paused != nullptr)
    {
        m_Paused->Set(&Progress::m_Held, true);
    }
}

Progress::Pause::~Pause()
{
    if (m_Paused != nullptr)
    {
        m_Paused->Set(&Progress::m_Held, false);
    }
}

} // namespace Tavrine::Tool
