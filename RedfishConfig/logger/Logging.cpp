#include "Logging.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <exception>
#include <new>
#include <utility>

#include "Dispatch.h"

namespace Tavrine
{

namespace
{

struct SinkEntry
{
    Logging::SinkId Id = 0;
    unsigned int MaxLevel = 0;
    Logging::Sink Take;
    std::string FirstFailure;
    std::uint64_t LostRecords = 0;
};

struct Registry
{
    std::mutex Mutex;
    std::vector<SinkEntry> Sinks;
    Logging::SinkId LastId = 0;
};

// Never destroyed: destructors of other static objects may still log.
Registry& TheRegistry()
{
    static Registry& registry = *new Registry;
    return registry;
}

// One above the highest level that a sink takes; 0 without a sink. Like the two
// below it has no destructor, so it is there as long as any code runs.
constinit std::atomic<std::uint64_t> g_LevelLimit{0};
constinit thread_local const LogContext* t_Context = nullptr;
constinit thread_local bool t_InSink = false;

void UpdateLevelLimit(const Registry& registry)
{
    std::uint64_t limit = 0;
    for (const SinkEntry& entry : registry.Sinks)
    {
        limit = std::max(limit, std::uint64_t{entry.MaxLevel} + 1);
    }
    g_LevelLimit.store(limit, std::memory_order_release);
}

void NoteFailure(SinkEntry& entry, const char* cause) noexcept
try
{
    if (entry.LostRecords++ == 0)
    {
        entry.FirstFailure = cause;
    }
}
catch (const std::bad_alloc&)
{
    entry.FirstFailure = "no memory"; // which is short enough to need none
}

// The one place where exceptions of sinks, spdlog's included, end.
void Feed(SinkEntry& entry, const LogRecord& record)
{
    try
    {
        entry.Take(record);
    }
    catch (const std::exception& failure)
    {
        NoteFailure(entry, failure.what());
    }
    catch (...)
    {
        NoteFailure(entry, "unknown failure");
    }
}

auto FindSink(Registry& registry, Logging::SinkId id)
{
    return std::find_if(registry.Sinks.begin(), registry.Sinks.end(),
                        [id](const SinkEntry& entry) { return entry.Id == id; });
}

} // namespace

namespace Logging
{

bool IsWanted(unsigned int level) { return level < g_LevelLimit.load(std::memory_order_acquire); }

void Dispatch(const LogRecord& record)
{
    if (t_InSink)
    {
        return;
    }
    Registry& registry = TheRegistry();
    const std::lock_guard lock(registry.Mutex);
    t_InSink = true;
    for (SinkEntry& entry : registry.Sinks)
    {
        if (record.Level <= entry.MaxLevel)
        {
            Feed(entry, record);
        }
    }
    t_InSink = false;
}

void Lose(unsigned int level, const char* cause) noexcept
{
    if (t_InSink)
    {
        return;
    }
    Registry& registry = TheRegistry();
    const std::lock_guard lock(registry.Mutex);
    for (SinkEntry& entry : registry.Sinks)
    {
        if (level <= entry.MaxLevel)
        {
            NoteFailure(entry, cause);
        }
    }
}

SinkId AddSink(unsigned int maxLevel, Sink sink)
{
    if (!sink)
    {
        return 0;
    }
    Registry& registry = TheRegistry();
    const std::lock_guard lock(registry.Mutex);
    const SinkId id = ++registry.LastId;
    registry.Sinks.push_back({id, maxLevel, std::move(sink), {}, 0});
    UpdateLevelLimit(registry);
    return id;
}

void RemoveSink(SinkId id)
{
    // Outlives the lock, as what the sink holds may log when it is destroyed.
    Sink removed;
    Registry& registry = TheRegistry();
    const std::lock_guard lock(registry.Mutex);
    const auto found = FindSink(registry, id);
    if (found != registry.Sinks.end())
    {
        removed = std::move(found->Take);
        registry.Sinks.erase(found);
        UpdateLevelLimit(registry);
    }
}

std::string Trouble(SinkId id)
{
    Registry& registry = TheRegistry();
    const std::lock_guard lock(registry.Mutex);
    const auto found = FindSink(registry, id);
    if (found == registry.Sinks.end() || found->LostRecords == 0)
    {
        return "";
    }
    return "lost " + std::to_string(found->LostRecords) + " log record(s): " + found->FirstFailure;
}

} // namespace Logging

LogContext::LogContext(std::string tag) : m_Tag(std::move(tag)), m_Former(t_Context) { t_Context = this; }

LogContext::~LogContext() { t_Context = m_Former; }

std::string Logging::CurrentContext() { return t_Context != nullptr ? t_Context->m_Tag : std::string(); }

CapturingLogSink::CapturingLogSink(unsigned int maxLevel)
    : m_Id(Logging::AddSink(maxLevel,
                            [this](const LogRecord& record)
                            {
                                const std::lock_guard lock(m_Mutex);
                                m_Records.push_back(record);
                            }))
{
}

CapturingLogSink::~CapturingLogSink() { Logging::RemoveSink(m_Id); }

std::vector<LogRecord> CapturingLogSink::Records() const
{
    const std::lock_guard lock(m_Mutex);
    return m_Records;
}

} // namespace Tavrine
