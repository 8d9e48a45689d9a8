#include "ValueConversions.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <locale>
#include <optional>
#include <string_view>

#include <boost/json/value.hpp>

#include "ExactInteger.h"
#include "TextBytes.h"

namespace Tavrine
{

namespace
{

std::optional<ExactInteger> ParseHex(std::string_view text)
{
    std::string digits;
    if (text.starts_with('-'))
    {
        digits = "-";
        text.remove_prefix(1);
    }
    if (text.starts_with("0x") || text.starts_with("0X"))
    {
        text.remove_prefix(2);
    }
    // A second sign behind the prefix must not be taken for the first.
    if (text.starts_with('-'))
    {
        return std::nullopt;
    }
    digits += text;
    return ParseExact(digits, 16);
}

/// The number of bytes that are equal at the front. By blocks, since names of one machine
/// begin alike and there are thousands of them in each map.
std::size_t CommonBytes(std::string_view left, std::string_view right)
{
    using Block = std::uint64_t;
    const std::size_t most = std::min(left.size(), right.size());
    const auto difference = [&](std::size_t at)
    {
        Block one = 0;
        Block other = 0;
        std::memcpy(&one, left.data() + at, sizeof(Block));
        std::memcpy(&other, right.data() + at, sizeof(Block));
        return one ^ other;
    };
    std::size_t common = 0;
    while (common < most && most >= sizeof(Block))
    {
        // The last block may overlap the one before it.
        const std::size_t at = std::min(common, most - sizeof(Block));
        if (const Block bits = difference(at); bits != 0)
        {
            const int equal =
                std::endian::native == std::endian::little ? std::countr_zero(bits) : std::countl_zero(bits);
            return at + static_cast<std::size_t>(equal) / 8;
        }
        common = at + sizeof(Block);
    }
    while (common < most && left[common] == right[common])
    {
        ++common;
    }
    return common;
}

bool PrecedesLowered(std::string_view left, std::string_view right)
{
    const std::locale locale;
    const auto& letters = std::use_facet<std::ctype<char>>(locale);
    return std::lexicographical_compare(left.begin(), left.end(), right.begin(), right.end(),
                                        [&letters](char one, char two) {
                                            return static_cast<unsigned char>(letters.tolower(one)) <
                                                   static_cast<unsigned char>(letters.tolower(two));
                                        });
}

bool IsWord(std::string_view text, std::string_view lowered)
{
    return std::equal(text.begin(), text.end(), lowered.begin(), lowered.end(),
                      [](char left, char right) { return LowerAscii(left) == right; });
}

std::optional<SettingVariant> ParseAs(const SettingVariant& kind, const std::string& text)
{
    if (std::holds_alternative<std::int64_t>(kind))
    {
        const std::optional<ExactInteger> number = ParseExact(text, 10);
        return number && FitsSigned(*number) ? std::optional<SettingVariant>(Narrowed(*number)) : std::nullopt;
    }
    if (std::holds_alternative<bool>(kind))
    {
        const bool on = IsWord(text, "true");
        return on || IsWord(text, "false") ? std::optional<SettingVariant>(on) : std::nullopt;
    }
    return text;
}

} // namespace

bool CaseInsensitiveComparator::operator()(const std::string& left, const std::string& right) const
{
    // What is equal is equal lowered, so the locale is asked only from the first difference on.
    const std::size_t common = CommonBytes(left, right);
    if (common == left.size() || common == right.size())
    {
        return left.size() < right.size();
    }
    const char one = LowerAscii(left[common]);
    const char other = LowerAscii(right[common]);
    if (one != other && std::locale() == std::locale::classic())
    {
        return static_cast<unsigned char>(one) < static_cast<unsigned char>(other);
    }
    return PrecedesLowered(std::string_view(left).substr(common), std::string_view(right).substr(common));
}

boost::json::value VariantToJson(const SettingVariant& value)
{
    return std::visit([](const auto& held) { return boost::json::value(held); }, value);
}

bool TransferStringToOptionalVar(OptionalVar& value, const std::string text)
{
    const std::optional<SettingVariant> parsed = ParseAs(value.value_or(SettingVariant(std::string())), text);
    if (!parsed)
    {
        return false;
    }
    value = parsed;
    return true;
}

bool GetOptionalVarAsString(const OptionalVar& value, std::string& text)
{
    if (!value)
    {
        return false;
    }
    if (const auto* words = std::get_if<std::string>(&*value))
    {
        text = *words;
    }
    else if (const auto* number = std::get_if<std::int64_t>(&*value))
    {
        text = std::to_string(*number);
    }
    else
    {
        text = std::get<bool>(*value) ? "true" : "false";
    }
    return true;
}

bool IsNumSetting(const OptionalVar& value) { return value && std::holds_alternative<std::int64_t>(*value); }

bool IsBoolenSetting(const OptionalVar& value) { return value && std::holds_alternative<bool>(*value); }

bool isHexString(const std::string text) { return ParseHex(text).has_value(); }

std::string HexToDec(const std::string text)
{
    const std::optional<ExactInteger> number = ParseHex(text);
    return number ? ExactText(*number, 10) : text;
}

std::string DecToHex(const std::string text)
{
    const std::optional<ExactInteger> number = ParseExact(text, 10);
    if (!number)
    {
        return text;
    }
    const std::string digits = ExactText({false, number->Magnitude}, 16);
    return (number->Negative ? "-0x" : "0x") + digits;
}

} // namespace Tavrine
