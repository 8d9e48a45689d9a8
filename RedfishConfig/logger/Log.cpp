#include "Log.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <exception>
#include <locale>
#include <new>
#include <utility>

#include "Dispatch.h"

namespace Tavrine
{

namespace
{

/// Insertions into a stream that is not good format nothing. One for each thread, since they
/// set its state; never destroyed, as destructors of other static objects may still log. It has
/// no memory of its own, the classic locale's being everybody's.
std::ostringstream& Unwanted()
{
    alignas(std::ostringstream) constinit thread_local std::array<std::byte, sizeof(std::ostringstream)> storage{};
    constinit thread_local std::ostringstream* stream = nullptr;
    if (stream == nullptr)
    {
        stream = new (storage.data()) std::ostringstream;
        stream->imbue(std::locale::classic());
    }
    // Whatever was done to it before.
    stream->exceptions(std::ios_base::goodbit);
    stream->setstate(std::ios_base::badbit);
    return *stream;
}

} // namespace

Log::Log(unsigned int level, const char* sourcePath, int sourceLine)
    : m_Level(level), m_SourcePath(sourcePath), m_SourceLine(sourceLine)
{
    if (Logging::IsWanted(level))
    {
        // Whatever locale the program has: a text is the same everywhere.
        m_Stream.emplace().imbue(std::locale::classic());
    }
}

Log::~Log()
{
    if (!m_Stream || !Logging::IsWanted(m_Level))
    {
        return;
    }
    // Callers log on their way out of failures, that of memory included.
    try
    {
        if (m_Stream->bad())
        {
            Logging::Lose(m_Level, "it could not be made");
            return;
        }
        LogRecord record;
        record.Level = m_Level;
        record.SourcePath = m_SourcePath != nullptr ? m_SourcePath : "";
        record.SourceLine = m_SourceLine;
        record.Context = Logging::CurrentContext();
        record.Text = std::move(*m_Stream).str();
        record.Time = std::chrono::system_clock::now();
        Logging::Dispatch(record);
    }
    catch (const std::exception& failure)
    {
        Logging::Lose(m_Level, failure.what());
    }
}

std::ostringstream& Log::Stream() { return m_Stream ? *m_Stream : Unwanted(); }

} // namespace Tavrine
