#include "Answer.h"

#include <algorithm>
#include <array>
#include <set>
#include <utility>

#include "ResultMessageTable.h"
#include "TextOutput.h"

namespace Tavrine::Tool
{
namespace
{

constexpr std::array SuccessCodes = {0, 1, 3, 4, 5};
constexpr int LargestStatus = 127; // above it a status reads as death by a signal

} // namespace

bool IsSuccess(int code) { return std::find(SuccessCodes.begin(), SuccessCodes.end(), code) != SuccessCodes.end(); }

bool IsOfTheBmc(int code) { return IsUnreachable(code) || code == CodeBmcFailed; }

bool IsUnreachable(int code) { return code == CodeConnection || code == CodeNotReady; }

int ExitStatus(int code)
{
    if (IsSuccess(code))
    {
        return 0;
    }
    return code > 0 && code <= LargestStatus ? code : CodeInternal;
}

std::string StandardText(int code)
{
    const auto entry = ResultMessageTable.find(code);
    return entry == ResultMessageTable.end() ? "Error " + std::to_string(code) + "." : entry->second;
}

Failure FailureOf(RedfishConfigResult result, const std::string& setting)
{
    Failure failure{result.ErrorCode(), result.ErrorMsg(), setting};
    if (failure.Message.empty())
    {
        failure.Message = (setting.empty() ? "" : setting + ": ") + StandardText(failure.Code);
    }
    return failure;
}

void AddFailure(Answer& answer, Failure failure)
{
    const bool outranks = IsOfTheBmc(failure.Code) && !IsOfTheBmc(answer.Code);
    if (!IsSuccess(failure.Code) && (IsSuccess(answer.Code) || outranks))
    {
        answer.Code = failure.Code;
        answer.Message = failure.Message;
    }
    answer.Errors.push_back(std::move(failure));
}

std::string StderrLines(const Answer& answer)
{
    std::string text;
    std::set<std::string> written;
    const auto write = [&](const std::string& line)
    {
        if (written.insert(line).second)
        {
            text += "tavrine: " + line + "\n";
        }
    };
    for (const Failure& failure : answer.Errors)
    {
        write(std::to_string(failure.Code) + " " + EscapeControls(failure.Message));
        if (!failure.Cause.empty())
        {
            write("cause: " + EscapeControls(failure.Cause));
        }
    }
    for (const std::string& note : answer.Notes)
    {
        write(EscapeControls(note));
    }
    return text;
}

} // namespace Tavrine::Tool
