// Numbers as texts in both bases, there and back; and the count of a text's characters.
#include <array>
#include <charconv>
#include <cstring>
#include <limits>

#include "CodePoints.h"
#include "ExactInteger.h"
#include "Oracle.h"
#include "ValueConversions.h"

using namespace fuzztest;
using namespace Tavrine;

namespace
{

int DigitOf(char c)
{
    return c >= '0' && c <= '9'   ? c - '0'
           : c >= 'a' && c <= 'z' ? c - 'a' + 10
           : c >= 'A' && c <= 'Z' ? c - 'A' + 10
                                  : 99;
}

/// The number that a text stands for, digit by digit; nothing for one outside -2^63 to
/// 2^64-1.
std::optional<Wide> Number(std::string_view text, int base)
{
    const bool negative = text.starts_with('-');
    text.remove_prefix(negative ? 1 : 0);
    constexpr Wide highest = std::numeric_limits<std::uint64_t>::max();
    Wide number = 0;
    for (const char c : text)
    {
        if (DigitOf(c) >= base || number > highest)
        {
            return std::nullopt;
        }
        number = number * base + DigitOf(c);
    }
    number = negative ? -number : number;
    const bool fits = number >= std::numeric_limits<std::int64_t>::min() && number <= highest;
    return fits && !text.empty() ? std::optional(number) : std::nullopt;
}

void CheckExact(std::string_view text, int base)
{
    const std::optional<Wide> number = Number(text, base);
    const std::optional<ExactInteger> read = ParseExact(text, base);
    FUZZ_REQUIRE(read.has_value() == number.has_value(), text);
    if (read)
    {
        const auto magnitude = static_cast<Wide>(read->Magnitude);
        FUZZ_REQUIRE((read->Negative ? -magnitude : magnitude) == *number, text);
        FUZZ_REQUIRE(ParseExact(ExactText(*read, base), base) == read, text);
        const Wide nearest = std::min<Wide>(*number, std::numeric_limits<std::int64_t>::max());
        FUZZ_REQUIRE(Narrowed(*read) == static_cast<std::int64_t>(nearest), text);
        FUZZ_REQUIRE(FitsSigned(*read) == (*number == nearest), text);
    }
}

void CheckHexadecimal(const std::string& text)
{
    const std::string_view sign = text.starts_with('-') ? "-" : "";
    std::string_view digits = std::string_view(text).substr(sign.size());
    digits.remove_prefix(digits.starts_with("0x") || digits.starts_with("0X") ? 2 : 0);
    const std::optional<Wide> number =
        digits.starts_with('-') ? std::nullopt : Number(std::string(sign) + std::string(digits), 16);
    FUZZ_REQUIRE(isHexString(text) == number.has_value(), text);
    const std::string decimal = HexToDec(text);
    FUZZ_REQUIRE(number ? Number(decimal, 10) == number : decimal == text, text);
    FUZZ_REQUIRE(!number || HexToDec(DecToHex(decimal)) == decimal, text);
}

void CheckThereAndBack(std::int64_t number)
{
    const std::string decimal = std::to_string(number);
    const std::string hexadecimal = DecToHex(decimal);
    FUZZ_REQUIRE(HexToDec(hexadecimal) == decimal && isHexString(hexadecimal), decimal);
    FUZZ_REQUIRE(ExactText(ExactFrom(number), 10) == decimal && Narrowed(ExactFrom(number)) == number, decimal);
    OptionalVar value = std::int64_t{0};
    std::string text;
    FUZZ_REQUIRE(TransferStringToOptionalVar(value, decimal) && value == OptionalVar(number), decimal);
    FUZZ_REQUIRE(GetOptionalVarAsString(value, text) && text == decimal, decimal);
}

void CheckKinds(const std::string& text)
{
    OptionalVar number = std::int64_t{7};
    OptionalVar flag = true;
    OptionalVar none;
    const std::optional<Wide> wide = Number(text, 10);
    const bool fits = wide && *wide <= std::numeric_limits<std::int64_t>::max();
    FUZZ_REQUIRE(TransferStringToOptionalVar(number, text) == fits, text);
    FUZZ_REQUIRE(number == OptionalVar(fits ? static_cast<std::int64_t>(*wide) : 7), text);
    const bool isFlag = Lowered(text) == "true" || Lowered(text) == "false";
    FUZZ_REQUIRE(TransferStringToOptionalVar(flag, text) == isFlag, text);
    FUZZ_REQUIRE(flag == OptionalVar(!isFlag || Lowered(text) == "true"), text);
    FUZZ_REQUIRE(TransferStringToOptionalVar(none, text) && none == OptionalVar(text), text);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(Text(data, size));
    CheckExact(text, 10);
    CheckExact(text, 16);
    CheckHexadecimal(text);
    CheckKinds(text);
    std::int64_t number = 0;
    std::memcpy(&number, text.data(), std::min(text.size(), sizeof number));
    CheckThereAndBack(number);
    const std::optional<std::size_t> count = CodePoints(text);
    FUZZ_REQUIRE(count.has_value() == IsUtf8(text), text);
    std::size_t starts = 0;
    for (const char c : text)
    {
        starts += (static_cast<unsigned char>(c) & 0xC0U) != 0x80U ? 1U : 0U;
    }
    FUZZ_REQUIRE(!count || *count == starts, text);
    return 0;
}
