#pragma once

#include <optional>
#include <string>

#include "Answer.h"

namespace Tavrine::Tool
{

struct Options;

/// Whether nobody can be asked and `--yes` does not stand in for him; then the text that
/// says so.
std::string ConfirmationFault(const Options& options, const std::string& what);

/// Asks on the terminal, unless there is `--yes`, and takes "yes" alone for an answer.
/// @param what  what would be done, a sentence without its full stop.
/// @return nothing when it is to be done.
std::optional<Failure> Confirm(const Options& options, const std::string& what);

} // namespace Tavrine::Tool
