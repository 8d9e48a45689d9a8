#pragma once

#include <array>
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
/// header and "settings", or lines NAME=VALUE behind lines "# member: text" of the header
/// and before the line "# end".
/// Any reader of JSON, or of such lines, can do with it.
struct SavedSettings
{
    SavedHeader Header;
    /// Name as it stands in the file to the text of the value.
    SettingStringMap Settings;
};

/// One text of the header by its name in a file.
struct SavedHeaderMember
{
    const char* Name;
    std::string SavedHeader::*Text;
};

/// In the order in which they are written.
inline constexpr std::array SavedHeaderMembers = {
    SavedHeaderMember{"time", &SavedHeader::Time},
    SavedHeaderMember{"bmc", &SavedHeader::Bmc},
    SavedHeaderMember{"manufacturer", &SavedHeader::Manufacturer},
    SavedHeaderMember{"model", &SavedHeader::Model},
    SavedHeaderMember{"serial", &SavedHeader::SerialNumber},
    SavedHeaderMember{"biosVersion", &SavedHeader::BiosVersion},
    SavedHeaderMember{"registry", &SavedHeader::Registry},
    SavedHeaderMember{"prefix", &SavedHeader::Prefix},
};

inline constexpr std::string_view SavedFormat = "tavrine-settings";
inline constexpr int SavedVersion = 1;
/// The last of the lines, so that a file that was cut off shows; a document shows that by itself.
inline constexpr std::string_view SavedEnd = "# end";
/// The most that is read, in bytes.
inline constexpr std::size_t LargestSavedSettings = std::size_t{16} << 20;

/// Reads either form; what stands in front of a file's settings may be missing, so that
/// the output of `show`, with or without `--json`, is taken as well. Stricter than a file
/// to look at needs to be: every name occurs once, and every value is a text, a whole
/// number or a boolean. Entries that are null are left out.
/// @return empty, or what is wrong and where.
std::string ParseSavedSettings(std::string_view text, SavedSettings& saved);

/// The same of a file, "-" for standard input: 38 when it cannot be read, 16 when it holds
/// something else.
std::optional<Failure> ReadSavedSettings(const std::string& path, SavedSettings& saved);

/// Whether a setting stands for no state of a system but asks for all defaults at its next start (PostLoadSetting).
/// Such a one is neither saved nor restored: it would undo all else that is.
bool AsksForDefaults(std::string_view bareName, std::string_view value);

/// The settings of a file by bare name. Off each name goes a prefix in force, else that of the file's header, else
/// "BIOS" or "UEFI": a file may be written by hand, or come from a system of another kind.
/// @param legacyNames  old names are taken for the current ones: the file may be older than these.
/// @return empty, or which setting stands in the file under two names.
std::string TakeBareSettings(const SavedSettings& saved, const Prefixes& prefixes, SettingStringMap& bare,
                             bool legacyNames = false);

} // namespace Tavrine::Tool
