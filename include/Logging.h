#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Export.h"

namespace Tavrine
{

/// A record as the sinks see it.
struct LogRecord
{
    unsigned int Level = 0;
    std::string SourcePath;
    int SourceLine = 0;
    /// The tag of the thread that wrote it (LogContext), empty for none.
    std::string Context;
    std::string Text;
    std::chrono::system_clock::time_point Time;
};

/// Where log records go. Without a sink they go nowhere. All operations are
/// safe from any thread; sinks are called one at a time.
namespace Logging
{

using Sink = std::function<void(const LogRecord&)>;
using SinkId = unsigned int;

/// Adds a sink that takes records of `maxLevel` and below. A sink must not add or
/// remove sinks; what it logs itself is dropped. An exception that leaves it costs
/// that record (see Trouble).
/// @return never 0, save for an empty sink, which is not added.
TAVRINE_EXPORT SinkId AddSink(unsigned int maxLevel, Sink sink);
/// Removes a sink; when this returns the sink is not running and runs no more.
TAVRINE_EXPORT void RemoveSink(SinkId id);

/// Adds a sink that appends lines to a file, made with mode 0600 if it is new.
/// A line reads `TIME LEVEL [CONTEXT] SOURCE:LINE TEXT`, with the time in UTC
/// (ISO 8601); control characters are escaped, so that a record is one line, and
/// each line is handed to the system at once.
/// @param error  filled with path and cause on failure.
/// @return the sink, or 0 when the file cannot be opened for writing.
TAVRINE_EXPORT SinkId AddFileSink(const std::string& path, unsigned int maxLevel, std::string& error);

/// Empty while the sink took all its records (and for an unknown sink); else how
/// many it lost by throwing, a full disk for example, or for lack of memory, with the
/// first cause.
TAVRINE_EXPORT std::string Trouble(SinkId id);

/// The tag that records of this thread carry now; empty for none.
TAVRINE_EXPORT std::string CurrentContext();

} // namespace Logging

/// Tags the records of this thread for its own lifetime, with the name of a BMC
/// for example; tags nest, and the former one comes back. To be destroyed by the
/// thread that made it, the youngest first.
class TAVRINE_EXPORT LogContext
{
  public:
    explicit LogContext(std::string tag);
    LogContext(const LogContext&) = delete;
    LogContext& operator=(const LogContext&) = delete;
    ~LogContext();

  private:
    friend std::string Logging::CurrentContext();

    std::string m_Tag;
    const LogContext* m_Former;
};

/// Keeps all records written during its lifetime, by whatever thread.
class TAVRINE_EXPORT CapturingLogSink
{
  public:
    explicit CapturingLogSink(unsigned int maxLevel = 4);
    CapturingLogSink(const CapturingLogSink&) = delete;
    CapturingLogSink& operator=(const CapturingLogSink&) = delete;
    ~CapturingLogSink();

    /// A copy of what was written so far, in order.
    std::vector<LogRecord> Records() const;

  private:
    mutable std::mutex m_Mutex;
    std::vector<LogRecord> m_Records;
    Logging::SinkId m_Id;
};

} // namespace Tavrine
