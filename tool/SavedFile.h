#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Answer.h"
#include "JsonOutput.h"

namespace Tavrine::Tool
{

/// A file with saved settings, read. It is either a JSON object with a member
/// "settings" of names and values, such as `save` and `show --json` write, or one line
/// NAME=VALUE a setting, such as `show` writes, with empty lines and lines that begin
/// with "#" between them.
struct SavedFile
{
    /// By name as it stands in the file, with or without a prefix; of a name that occurs
    /// twice the later. Lines give texts alone; null where the file has no value.
    TypedSettings Settings;
};

/// The most that is read, in bytes.
inline constexpr std::size_t LargestSavedFile = std::size_t{64} << 20;

/// Reads a file: 38 when it cannot be read, 16 when it holds something else.
std::optional<Failure> ReadSavedFile(const std::string& path, SavedFile& file);

/// The same for a text.
/// @return empty, or what is wrong and where.
std::string ParseSavedFile(std::string_view text, SavedFile& file);

/// The text that EscapeText has made one line of.
/// @return nothing for one that EscapeText does not write.
std::optional<std::string> UnescapeText(std::string_view line);

} // namespace Tavrine::Tool
