#include "PendingFallback.h"

#include <charconv>
#include <cstddef>

#include "Answer.h"
#include "LibraryTexts.h"

namespace Tavrine::Tool
{

PendingFallback::PendingFallback()
    : m_Sink(Logging::AddSink(LibraryTexts::FailureLevel, [this](const LogRecord& record) { Hear(record.Text); }))
{
}

PendingFallback::~PendingFallback() { Logging::RemoveSink(m_Sink); }

void PendingFallback::Hear(std::string_view line)
{
    if (line.starts_with(LibraryTexts::UnreadLine))
    {
        m_Unread = true;
        const std::size_t words = line.find(LibraryTexts::UnreadCode);
        const std::string_view digits =
            line.substr(words == std::string_view::npos ? line.size() : words + LibraryTexts::UnreadCode.size());
        int code = 0;
        std::from_chars(digits.data(), digits.data() + digits.size(), code);
        m_Code = IsSuccess(code) ? CodeQuery : code;
    }
    m_Taken = m_Taken || (m_Unread && line.starts_with(LibraryTexts::TakenLine));
}

std::optional<int> PendingFallback::FailedRead() const { return m_Taken ? std::optional(m_Code.load()) : std::nullopt; }

std::optional<std::string> PendingFallback::Warning() const
{
    return m_Taken ? std::optional<std::string>("warning: the values that wait for a reboot could not be read; the "
                                                "values in force stand in for them")
                   : std::nullopt;
}

} // namespace Tavrine::Tool
