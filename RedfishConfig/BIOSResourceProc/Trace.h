#pragma once

#include "Log.h"

namespace Tavrine
{

/// The levels of the log: what fails, the interface's operations, details.
inline constexpr unsigned int LogFailure = 1;
inline constexpr unsigned int LogOperation = 3;
inline constexpr unsigned int LogDetail = 4;

} // namespace Tavrine

/// The stream of one record, written at the end of the statement.
#define TAVRINE_LOG(level) ::Tavrine::Log(level, __FILE__, __LINE__).Stream()
