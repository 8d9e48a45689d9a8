#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "Answer.h"

// Files that a command line names, as input.
namespace Tavrine::Tool
{

struct FileContent
{
    std::string Text;
    /// Else it may be that whatever writes into it failed: a pipe ends then as any other does.
    bool IsPlainFile = false;
};

/// Waits until something can be read, and reads it.
/// @return how many bytes, 0 at the end; nothing when a stop signal came or it cannot be read, and `error` tells which.
std::optional<std::size_t> ReadSome(int descriptor, char* buffer, std::size_t most, std::string& error);

/// Reads a whole file, "-" for standard input. A stop signal ends the wait for what writes into it.
/// @param most  the file is refused when it is larger.
/// @return empty, or why it could not be read.
std::string ReadWholeFile(const std::string& path, std::size_t most, FileContent& content);

/// The same for a command: the failure has code 38.
std::optional<Failure> LoadFile(const std::string& path, std::size_t most, FileContent& content);

/// What ReadWholeFile reads, within a sentence: "the file PATH", or "standard input".
std::string InputName(const std::string& path);
/// The same where a sentence begins.
std::string InputNameFirst(const std::string& path);

/// How often a file is read by its name.
enum class Reading
{
    Once,
    /// All but a plain file would be empty the second time.
    Often
};

/// Looks at a file that others will read by its name. Nothing is taken from one that gives each byte once.
/// @return empty, or why it could not be read.
std::string WhyNotReadable(const std::string& path, Reading reading);

} // namespace Tavrine::Tool
