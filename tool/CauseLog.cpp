#include "CauseLog.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "LibraryTexts.h"

namespace Tavrine::Tool
{
namespace
{

constexpr std::size_t MostLines = 64;

} // namespace

CauseLog::CauseLog()
    : m_Sink(Logging::AddSink(LibraryTexts::FailureLevel,
                              [this](const LogRecord& record)
                              {
                                  if (record.Text.starts_with(LibraryTexts::NoKeywordsLine))
                                  {
                                      return;
                                  }
                                  const std::lock_guard lock(m_Mutex);
                                  if (m_Lines.size() == MostLines)
                                  {
                                      m_Lines.erase(m_Lines.begin());
                                  }
                                  m_Lines.push_back(record.Text);
                              }))
{
}

CauseLog::~CauseLog() { Logging::RemoveSink(m_Sink); }

Failure CauseLog::Explain(RedfishConfigResult result, const std::string& setting)
{
    std::vector<std::string> lines;
    {
        const std::lock_guard lock(m_Mutex);
        lines.swap(m_Lines);
    }
    Failure failure = FailureOf(result, setting);
    if (result.ErrorMsg().empty() && !IsSuccess(failure.Code))
    {
        for (auto line = lines.rbegin(); line != lines.rend() && failure.Cause.empty(); ++line)
        {
            failure.Cause = QuotedCause(*line);
        }
    }
    return failure;
}

std::string QuotedCause(const std::string& line)
{
    for (const std::string_view introduction : LibraryTexts::Introductions)
    {
        if (const std::size_t found = line.find(introduction); found != std::string::npos)
        {
            return line.substr(found + introduction.size());
        }
    }
    return line;
}

} // namespace Tavrine::Tool
