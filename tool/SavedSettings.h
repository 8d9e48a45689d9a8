#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "Answer.h"
#include "SettingNames.h"
#include "ValueTypes.h"

namespace Tavrine::Tool
{

/// What a saved file says about where its settings are from. A text that is not known is
/// empty.
struct SavedHeader
{
    /// UTC, as RFC 3339 writes it.
    std::string Time;
    std::string Bmc;
    std::string Manufacturer;
    std::string Model;
    std::string SerialNumber;
    std::string BiosVersion;
    std::string Registry;
    /// Prefix of the names in the file.
    std::string Prefix;
};

/// The settings of one machine in a file: either a JSON object with the members of the
/// header and "settings", or lines NAME=VALUE behind lines "# member: text" of the header.
/// Any reader of JSON, or of such lines, can do with it.
struct SavedSettings
{
    SavedHeader Header;
    /// Name as it stands in the file to the text of the value.
    SettingStringMap Settings;
};

inline constexpr int SavedVersion = 1;
/// The most that is read, in bytes.
inline constexpr std::size_t LargestSavedSettings = std::size_t{16} << 20;

/// Whether a file of this name gets lines: it ends in ".txt" or ".conf", in whatever case.
bool WantsLines(const std::string& path);

std::string SavedDocument(const SavedSettings& saved);
std::string SavedLines(const SavedSettings& saved);

/// Reads either form; what stands in front of a file's settings may be missing, so that
/// the output of `show`, with or without `--json`, is taken as well. Stricter than a file
/// to look at needs to be: every name occurs once, and every value is a text, a whole
/// number or a boolean. Entries that are null are left out.
/// @return empty, or what is wrong and where.
std::string ParseSavedSettings(std::string_view text, SavedSettings& saved);

/// The same of a file, "-" for standard input: 38 when it cannot be read, 16 when it holds
/// something else.
std::optional<Failure> ReadSavedSettings(const std::string& path, SavedSettings& saved);

struct FileContent
{
    std::string Text;
    /// Else it may be that whatever writes into it failed: a pipe ends then as any other does.
    bool IsPlainFile = false;
};

/// Reads a whole file, "-" for standard input.
/// @param most  the file is refused when it is larger.
/// @return empty, or why it could not be read.
std::string ReadWholeFile(const std::string& path, std::size_t most, FileContent& content);

/// The settings of a file by bare name. Off each name goes a prefix in force, else that of the file's header, else
/// "BIOS" or "UEFI": a file may be written by hand, or come from a system of another kind.
/// @return empty, or which setting stands in the file under two names.
std::string TakeBareSettings(const SavedSettings& saved, const Prefixes& prefixes, SettingStringMap& bare);

} // namespace Tavrine::Tool
