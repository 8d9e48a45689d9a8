#include "ExactInteger.h"

#include <array>
#include <charconv>
#include <limits>
#include <system_error>

namespace Tavrine
{

namespace
{

constexpr std::uint64_t LowestMagnitude = std::uint64_t{1} << 63;
constexpr std::uint64_t HighestSigned = LowestMagnitude - 1;

} // namespace

std::strong_ordering operator<=>(const ExactInteger& left, const ExactInteger& right)
{
    if (left.Negative != right.Negative)
    {
        return left.Negative ? std::strong_ordering::less : std::strong_ordering::greater;
    }
    return left.Negative ? right.Magnitude <=> left.Magnitude : left.Magnitude <=> right.Magnitude;
}

ExactInteger ExactFrom(std::int64_t value)
{
    const auto bits = static_cast<std::uint64_t>(value);
    return value < 0 ? ExactInteger{true, std::uint64_t{0} - bits} : ExactInteger{false, bits};
}

ExactInteger ExactFromUnsigned(std::uint64_t value) { return {false, value}; }

std::optional<ExactInteger> ParseExact(std::string_view text, int base)
{
    ExactInteger value;
    if (text.starts_with('-'))
    {
        value.Negative = true;
        text.remove_prefix(1);
    }
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value.Magnitude, base);
    if (text.empty() || error != std::errc() || stop != end)
    {
        return std::nullopt;
    }
    if (value.Negative && value.Magnitude > LowestMagnitude)
    {
        return std::nullopt;
    }
    value.Negative = value.Negative && value.Magnitude != 0;
    return value;
}

std::string ExactText(const ExactInteger& value, int base)
{
    std::array<char, 65> digits{};
    const auto [stop, error] = std::to_chars(digits.data(), digits.data() + digits.size(), value.Magnitude, base);
    std::string text = value.Negative ? "-" : "";
    for (const char* digit = digits.data(); digit != stop; ++digit)
    {
        text += (*digit >= 'a' && *digit <= 'z') ? static_cast<char>(*digit - 'a' + 'A') : *digit;
    }
    return text;
}

std::int64_t Narrowed(const ExactInteger& value)
{
    if (value.Negative)
    {
        return value.Magnitude >= LowestMagnitude ? std::numeric_limits<std::int64_t>::min()
                                                  : -static_cast<std::int64_t>(value.Magnitude);
    }
    return value.Magnitude > HighestSigned ? std::numeric_limits<std::int64_t>::max()
                                           : static_cast<std::int64_t>(value.Magnitude);
}

bool FitsSigned(const ExactInteger& value) { return value.Negative || value.Magnitude <= HighestSigned; }

} // namespace Tavrine
