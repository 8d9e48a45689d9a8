#pragma once

#include <optional>
#include <string>

#include "Answer.h"
#include "Secret.h"

namespace Tavrine::Tool
{

/// The longest password, wherever it comes from, in bytes; without the end of its line.
inline constexpr std::size_t LongestPassword = 4096;

/// Has room for the longest, so that its memory does not move while it is read.
class PasswordText : public Secret
{
  public:
    PasswordText() : Secret(LongestPassword + 1) {}
};

/// Asks a question on the controlling terminal and reads a line without echo.
/// @param reply  is added to.
/// @return empty, or what went wrong: nothing was entered, for example.
std::string AskHidden(const std::string& question, PasswordText& reply);

/// Finds the password: the first line of `file` ("-": standard input) where one is
/// named, else TAVRINE_PASSWORD, which is taken out of this process' environment,
/// else a prompt without echo on the controlling terminal.
/// @param who  shown in the prompt, "USER at HOST".
/// @return nothing when `password` is filled.
std::optional<Failure> FindPassword(const std::string& file, const std::string& who, PasswordText& password);

} // namespace Tavrine::Tool
