#pragma once

#include <optional>
#include <string>

#include "Answer.h"
#include "Secret.h"

namespace Tavrine::Tool
{

/// The longest password, wherever it comes from, in bytes; without the end of its line.
inline constexpr std::size_t LongestPassword = 4096;

/// Asks a question on the controlling terminal and reads a line without echo.
/// @param reply  is added to; made with a capacity of at least LongestPassword + 1.
/// @return empty, or what went wrong: nothing was entered, for example.
std::string AskHidden(const std::string& question, std::string& reply);

/// Finds the password: the first line of `file` ("-": standard input) where one is
/// named, else TAVRINE_PASSWORD, which is taken out of this process' environment,
/// else a prompt without echo on the controlling terminal.
/// @param who       shown in the prompt, "USER at HOST".
/// @param password  made with a capacity of at least LongestPassword + 1.
/// @return nothing when `password` is filled.
std::optional<Failure> FindPassword(const std::string& file, const std::string& who, Secret& password);

} // namespace Tavrine::Tool
