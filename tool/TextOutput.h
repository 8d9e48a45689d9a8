#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "ValueTypes.h"

namespace Tavrine::Tool
{

/// A text on one line, from which the text itself can be had back: `\\` for a
/// backslash, `\n`, `\t`, `\r`, and `\xNN` (capital digits) for each byte of any
/// other control character (C0, DEL, C1) and for a byte that is no UTF-8.
std::string EscapeText(std::string_view text);

/// The same for messages: backslashes stay as they are.
std::string EscapeControls(std::string_view text);

/// The text that EscapeText has made one line of.
/// @return nothing for one that EscapeText does not write.
std::optional<std::string> UnescapeText(std::string_view line);

/// One line a setting, "NAME=VALUE", in byte order.
std::string SettingLines(const SettingStringMap& settings);

/// One line a membership, "GROUP<TAB>NAME", in byte order.
std::string GroupLines(const SettingGroupMap& groups);

/// The groups as an indented tree. Menus are told apart at "/"; one that holds
/// nothing but a single other menu shares its line.
std::string GroupTree(const SettingGroupMap& groups);

/// Bytes at the front that stand for themselves wherever they are written: printable ASCII
/// without the backslash. Most of most texts.
std::size_t PlainLength(std::string_view text);

/// The length of the UTF-8 character at the start of `text`, 0 where that is none.
std::size_t Utf8Length(std::string_view text);

} // namespace Tavrine::Tool
