#pragma once

#include <string>

#include "Logging.h"

namespace Tavrine::Logging
{

/// Whether any sink takes records of this level; one atomic read.
bool IsWanted(unsigned int level);

/// Hands the record to every sink that takes its level, one after another.
/// A sink that throws loses this record alone (see Trouble). A record written
/// by a sink itself is dropped, as a deadlock would be the alternative.
void Dispatch(const LogRecord& record);

/// Notes a record of this level that could not be made at all as lost to each sink that
/// takes its level (see Trouble).
void Lose(unsigned int level, const char* cause) noexcept;

/// The record as one line, without the line's end.
std::string FormatLine(const LogRecord& record);

} // namespace Tavrine::Logging
