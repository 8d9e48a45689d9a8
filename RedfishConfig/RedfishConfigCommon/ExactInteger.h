#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Tavrine
{

/// An integer from -2^63 to 2^64-1, the range in which registries write bounds.
/// Zero is never negative.
struct ExactInteger
{
    bool Negative = false;
    std::uint64_t Magnitude = 0;

    friend bool operator==(const ExactInteger&, const ExactInteger&) = default;
    friend std::strong_ordering operator<=>(const ExactInteger& left, const ExactInteger& right);
};

ExactInteger ExactFrom(std::int64_t value);
ExactInteger ExactFromUnsigned(std::uint64_t value);

/// Reads an optional "-" and digits of the base, the whole text, no blanks and no
/// "+". Nothing for any other text and outside the range.
std::optional<ExactInteger> ParseExact(std::string_view text, int base);

/// Digits without a prefix, capital ones above 9.
std::string ExactText(const ExactInteger& value, int base);

/// The nearest 64-bit signed integer.
std::int64_t Narrowed(const ExactInteger& value);

bool FitsSigned(const ExactInteger& value);

} // namespace Tavrine
