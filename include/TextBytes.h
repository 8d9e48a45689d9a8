#pragma once

#include <cstddef>
#include <string_view>

namespace Tavrine
{

/// The lower-case form of an ASCII letter, as the "C" locale has it; any other byte as it is.
constexpr char LowerAscii(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

/// Where a text in UTF-8 (RFC 3629) is cut so that no more than `most` bytes and no half of a character are left.
constexpr std::size_t CutPosition(std::string_view text, std::size_t most)
{
    if (text.size() <= most)
    {
        return text.size();
    }
    while (most > 0 && (static_cast<unsigned char>(text[most]) & 0xC0U) == 0x80U)
    {
        --most;
    }
    return most;
}

} // namespace Tavrine
