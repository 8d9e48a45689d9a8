#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// One run of a target: it returns 0, or ends the program when an oracle is wrong.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Ends the program with a word when what must hold for every input does not.
#define FUZZ_REQUIRE(condition, detail)                                                                                \
    ((condition) ? void() : ::fuzztest::Fail(__FILE__, __LINE__, #condition, (detail)))

namespace fuzztest
{

/// Wide enough to see what does not fit 64 bits.
__extension__ typedef __int128 Wide;

[[noreturn]] void Fail(const char* file, int line, const char* condition, std::string_view detail);

inline std::string_view Text(const std::uint8_t* data, std::size_t size)
{
    return size == 0 ? std::string_view() : std::string_view(reinterpret_cast<const char*>(data), size);
}

/// An input of several texts has lines "%%" between them, so that a person can read and
/// write it. At least `least` texts are given, the missing ones empty.
std::vector<std::string_view> Parts(std::string_view input, std::size_t least);

/// Holds no control character: fit for one line of a message.
bool OnOneLine(std::string_view text);

/// UTF-8 by the table of RFC 3629, "Syntax of UTF-8 Byte Sequences".
bool IsUtf8(std::string_view text);

/// ASCII letters in lower case.
std::string Lowered(std::string_view text);

/// A file in memory with this content; the path is good until the next call.
std::string FileWith(std::string_view content);

} // namespace fuzztest
