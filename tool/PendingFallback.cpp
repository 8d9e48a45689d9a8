#include "PendingFallback.h"

#include <string_view>

namespace Tavrine::Tool
{
namespace
{

constexpr unsigned int FailureLevel = 1;
/// A BMC without pending values has no such line.
constexpr std::string_view UnreadLine = "Failed to get pending values map";
constexpr std::string_view TakenLine = "Query pending value error, use effective value directly.";

} // namespace

PendingFallback::PendingFallback()
    : m_Sink(Logging::AddSink(FailureLevel,
                              [this](const LogRecord& record)
                              {
                                  m_Unread = m_Unread || record.Text.starts_with(UnreadLine);
                                  m_Taken = m_Taken || (m_Unread && record.Text.starts_with(TakenLine));
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
