#include "Oracle.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include <sys/mman.h>
#include <unistd.h>

namespace fuzztest
{

namespace
{

using Byte = unsigned char;

struct Range
{
    Byte Low;
    Byte High;
};

/// One row of the syntax: the first byte, the second, and how many follow as 80..BF.
struct Sequence
{
    Range First;
    Range Second;
    std::size_t Tail;
};

constexpr Sequence sequences[] = {
    {{0xC2, 0xDF}, {0x80, 0xBF}, 0}, {{0xE0, 0xE0}, {0xA0, 0xBF}, 1}, {{0xE1, 0xEC}, {0x80, 0xBF}, 1},
    {{0xED, 0xED}, {0x80, 0x9F}, 1}, {{0xEE, 0xEF}, {0x80, 0xBF}, 1}, {{0xF0, 0xF0}, {0x90, 0xBF}, 2},
    {{0xF1, 0xF3}, {0x80, 0xBF}, 2}, {{0xF4, 0xF4}, {0x80, 0x8F}, 2},
};

bool Within(char c, Range range) { return static_cast<Byte>(c) >= range.Low && static_cast<Byte>(c) <= range.High; }

/// Length of the sequence at the start, 0 for none.
std::size_t FirstLength(std::string_view text)
{
    if (Within(text.front(), {0x00, 0x7F}))
    {
        return 1;
    }
    for (const Sequence& sequence : sequences)
    {
        const std::size_t length = 2 + sequence.Tail;
        if (Within(text.front(), sequence.First) && text.size() >= length && Within(text[1], sequence.Second) &&
            std::all_of(text.begin() + 2, text.begin() + static_cast<std::ptrdiff_t>(length),
                        [](char c) {
                            return Within(c, {0x80, 0xBF});
                        }))
        {
            return length;
        }
    }
    return 0;
}

} // namespace

void Fail(const char* file, int line, const char* condition, std::string_view detail)
{
    std::fprintf(stderr, "%s:%d: oracle broken: %s\n  with: %.*s\n", file, line, condition,
                 static_cast<int>(std::min<std::size_t>(detail.size(), 4000)), detail.data());
    std::abort();
}

std::vector<std::string_view> Parts(std::string_view input, std::size_t least)
{
    constexpr std::string_view mark = "\n%%\n";
    std::vector<std::string_view> parts;
    for (std::size_t at = input.find(mark); at != std::string_view::npos; at = input.find(mark))
    {
        parts.push_back(input.substr(0, at));
        input.remove_prefix(at + mark.size());
    }
    parts.push_back(input);
    parts.resize(std::max(parts.size(), least));
    return parts;
}

bool OnOneLine(std::string_view text)
{
    return std::none_of(text.begin(), text.end(), [](char c) { return Within(c, {0x00, 0x1F}) || c == '\x7F'; });
}

bool IsUtf8(std::string_view text)
{
    while (!text.empty())
    {
        const std::size_t length = FirstLength(text);
        if (length == 0)
        {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

std::string Lowered(std::string_view text)
{
    std::string lowered(text);
    for (char& c : lowered)
    {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return lowered;
}

std::string FileWith(std::string_view content)
{
    static const int file = memfd_create("fuzz", MFD_CLOEXEC);
    const bool written = file >= 0 && ftruncate(file, 0) == 0 &&
                         pwrite(file, content.data(), content.size(), 0) == static_cast<ssize_t>(content.size());
    FUZZ_REQUIRE(written, "a file in memory");
    return "/proc/self/fd/" + std::to_string(file);
}

} // namespace fuzztest
