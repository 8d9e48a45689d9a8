#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "Answer.h"
#include "Logging.h"
#include "RedfishConfigResult.h"

namespace Tavrine::Tool
{

/// Listens to the library's failure lines (level 1). Some of its operations answer
/// with a bare code where the line tells what happened.
class CauseLog
{
  public:
    CauseLog();
    CauseLog(const CauseLog&) = delete;
    CauseLog& operator=(const CauseLog&) = delete;
    ~CauseLog();

    /// FailureOf, with the cause from the lines since the last call where the result
    /// is bare.
    Failure Explain(RedfishConfigResult result, const std::string& setting = {});

  private:
    std::mutex m_Mutex;
    std::vector<std::string> m_Lines;
    Logging::SinkId m_Sink;
};

/// What a failure line quotes behind its "though: " or "error: "; the whole line
/// where it has neither, and empty where nothing is quoted.
std::string QuotedCause(const std::string& line);

} // namespace Tavrine::Tool
