#include "CodePoints.h"

#include <cstdint>

#include "TextBytes.h"

namespace Tavrine
{

namespace
{

struct LeadByte
{
    unsigned char Mask;
    unsigned char Bits;
    std::size_t Length;
    std::uint32_t Least;
};

constexpr LeadByte LeadBytes[] = {
    {0x80, 0x00, 1, 0x0},
    {0xE0, 0xC0, 2, 0x80},
    {0xF0, 0xE0, 3, 0x800},
    {0xF8, 0xF0, 4, 0x10000},
};

/// Length of the code point that `text` begins with; 0 for none.
std::size_t LengthOfFirst(std::string_view text)
{
    const auto byteAt = [text](std::size_t position) { return static_cast<unsigned char>(text[position]); };
    for (const LeadByte& lead : LeadBytes)
    {
        if ((byteAt(0) & lead.Mask) != lead.Bits || text.size() < lead.Length)
        {
            continue;
        }
        std::uint32_t point = byteAt(0) & static_cast<unsigned char>(~lead.Mask);
        for (std::size_t position = 1; position < lead.Length; ++position)
        {
            if ((byteAt(position) & 0xC0U) != 0x80U)
            {
                return 0;
            }
            point = (point << 6U) | (byteAt(position) & 0x3FU);
        }
        const bool surrogate = point >= 0xD800 && point <= 0xDFFF;
        return point >= lead.Least && point <= 0x10FFFF && !surrogate ? lead.Length : 0;
    }
    return 0;
}

} // namespace

std::optional<std::size_t> CodePoints(std::string_view text)
{
    std::size_t count = 0;
    while (!text.empty())
    {
        const std::size_t length = LengthOfFirst(text);
        if (length == 0)
        {
            return std::nullopt;
        }
        text.remove_prefix(length);
        ++count;
    }
    return count;
}

std::string CutText(std::string text, std::size_t most)
{
    return text.size() <= most ? text : text.substr(0, CutPosition(text, most)) + "...";
}

} // namespace Tavrine
