#include "PendingFallback.h"

#include "LibraryTexts.h"

namespace Tavrine::Tool
{

PendingFallback::PendingFallback()
    : m_Sink(Logging::AddSink(LibraryTexts::FailureLevel,
                              [this](const LogRecord& record)
                              {
                                  m_Unread = m_Unread || record.Text.starts_with(LibraryTexts::UnreadLine);
                                  m_Taken = m_Taken || (m_Unread && record.Text.starts_with(LibraryTexts::TakenLine));
                              }))
{
}

PendingFallback::~PendingFallback() { Logging::RemoveSink(m_Sink); }

std::optional<std::string> PendingFallback::Warning() const
{
    return m_Taken ? std::optional<std::string>("warning: the values that wait for a reboot could not be read; the "
                                                "values in force stand in for them")
                   : std::nullopt;
}

} // namespace Tavrine::Tool
