#include "Log.h"

#include <chrono>
#include <utility>

#include "Dispatch.h"

namespace Tavrine
{

Log::Log(unsigned int level, const char* sourcePath, int sourceLine)
    : m_Level(level), m_SourcePath(sourcePath), m_SourceLine(sourceLine)
{
    if (!Logging::IsWanted(level))
    {
        // Insertions into a stream that is not good format nothing.
        m_Stream.setstate(std::ios_base::badbit);
    }
}

Log::~Log()
{
    if (m_Stream.bad() || !Logging::IsWanted(m_Level))
    {
        return;
    }
    LogRecord record;
    record.Level = m_Level;
    record.SourcePath = m_SourcePath != nullptr ? m_SourcePath : "";
    record.SourceLine = m_SourceLine;
    record.Context = Logging::CurrentContext();
    record.Text = std::move(m_Stream).str();
    record.Time = std::chrono::system_clock::now();
    Logging::Dispatch(record);
}

std::ostringstream& Log::Stream() { return m_Stream; }

} // namespace Tavrine
