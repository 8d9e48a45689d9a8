#pragma once

#include <string>
#include <string_view>

namespace Tavrine::Tool
{

/// Fills the places of standard streams that the caller has closed, so that no file
/// or socket of ours takes them; using them still fails. Called first of all.
void ReserveStandardStreams();

/// Writes to standard output.
/// @return empty when all is written, or when the reader has gone; otherwise the cause, a stop
///         signal that ended the wait for him among them.
std::string WriteOutput(std::string_view text);

/// Writes to standard error; there is nowhere to tell a failure.
void WriteError(std::string_view text);

} // namespace Tavrine::Tool
