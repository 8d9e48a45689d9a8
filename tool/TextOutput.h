#pragma once

#include <algorithm>
#include <cstddef>
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

/// Gives a text to `take(piece, isUtf8)` piece by piece: runs of bytes that stand for themselves (PlainLength), other
/// characters one by one, and each byte that is no UTF-8 by itself.
template <typename Take> void ForEachCharacter(std::string_view text, const Take& take)
{
    for (;;)
    {
        if (const std::size_t plain = PlainLength(text); plain != 0)
        {
            take(text.substr(0, plain), true);
            text.remove_prefix(plain);
        }
        if (text.empty())
        {
            return;
        }
        const std::size_t length = Utf8Length(text);
        const std::string_view character = text.substr(0, std::max<std::size_t>(length, 1));
        take(character, length != 0);
        text.remove_prefix(character.size());
    }
}

} // namespace Tavrine::Tool
