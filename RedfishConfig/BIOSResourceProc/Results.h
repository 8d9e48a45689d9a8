#pragma once

#include <string>

#include <boost/algorithm/string/replace.hpp>

#include "RedfishConfigResult.h"

namespace Tavrine
{

/// The codes that this library sets or decides on (see ResultMessageTable).
enum ResultCode : int
{
    ResultSuccess = 0,
    ResultResetRequired = 1,
    ResultNoPendingValue = 2,
    ResultPasswordChanged = 4,
    ResultCommandFailed = 6,
    ResultPartlyFailed = 7,
    ResultInvalidProperty = 8,
    ResultInvalidNewValue = 10,
    ResultNotSupported = 11,
    ResultInternalError = 13,
    /// Has no entry in the table: its builder always gives a message.
    ResultLoadDefaultFailed = 14,
    ResultInvalidParameter = 16,
    ResultUnknownSetting = 20,
    ResultQueryFailed = 26,
    ResultParseFailed = 27,
    ResultBmcError = 32,
    ResultBmcBusy = 33,
    ResultHidden = 34,
};

/// A result with two empty texts.
inline RedfishConfigResult BareResult(int code) { return {code, "", ""}; }

/// Shows a setting under another name in the message of a result.
inline void RenameInMessage(RedfishConfigResult& result, const std::string& name, const std::string& shownName)
{
    result.SetErrorMsg(boost::algorithm::replace_all_copy(result.ErrorMsg(), name, shownName));
}

} // namespace Tavrine
