#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>

#include "Answer.h"

namespace Tavrine::Tool
{

/// Permissions before the umask: of a file that anybody may see, and of one with settings in it.
inline constexpr mode_t Everybodys = 0666;
inline constexpr mode_t OwnersAlone = 0600;

/// Writes a file so that its name never stands for half of a text: to a temporary name
/// in the same folder, synced, renamed. Links to a file are followed, those to nothing refused; a
/// file that exists keeps its permissions as far as `mode` has them; what is no plain file is
/// refused. Where the folder may not be read or its file system knows no sync of folders, a loss of power may bring the
/// former file back.
/// @param mode  permissions of a new file before the umask, and the widest of any.
/// @return empty, or what went wrong; the former file is untouched then, unless the text tells that it was replaced and
///         only the sync of the folder failed.
std::string WriteWholeFile(const std::string& path, std::string_view text, mode_t mode = Everybodys);

/// The same for a command: the failure has code 38.
std::optional<Failure> SaveFile(const std::string& path, std::string_view text, mode_t mode = Everybodys);

} // namespace Tavrine::Tool
