#include "Scalars.h"

#include <boost/json/serialize.hpp>
#include <charconv>
#include <cstdint>

namespace bmcsim
{
namespace
{

namespace json = boost::json;

template <typename Number> std::optional<long double> Parsed(const std::string& text)
{
    Number number{};
    const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool whole = code == std::errc() && end == text.data() + text.size();
    return whole ? std::optional<long double>(static_cast<long double>(number)) : std::nullopt;
}

/// What an answer repeats of a refused value.
constexpr std::size_t MaxShownValue = 256;

} // namespace

std::optional<std::string> ScalarText(const json::value& value)
{
    if (const json::string* text = value.if_string())
    {
        return std::string(text->data(), text->size());
    }
    return value.is_number() || value.is_bool() ? std::optional(json::serialize(value)) : std::nullopt;
}

std::optional<long double> ScalarNumber(const json::value& value)
{
    switch (value.kind())
    {
    case json::kind::int64:
        return static_cast<long double>(value.get_int64());
    case json::kind::uint64:
        return static_cast<long double>(value.get_uint64());
    case json::kind::double_:
        return static_cast<long double>(value.get_double());
    case json::kind::string:
        break;
    default:
        return std::nullopt;
    }
    const std::string text(value.get_string().data(), value.get_string().size());
    const auto number = Parsed<std::int64_t>(text);
    return number ? number : Parsed<std::uint64_t>(text);
}

bool ScalarFlag(const json::value& value)
{
    const auto text = ScalarText(value);
    return text && (*text == "true" || *text == "True" || *text == "TRUE");
}

std::wstring CodePoints(const std::string& text)
{
    std::wstring points;
    points.reserve(text.size());
    for (const char c : text)
    {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte & 0xC0U) == 0x80U && !points.empty())
        {
            points.back() = static_cast<wchar_t>((static_cast<std::uint32_t>(points.back()) << 6U) | (byte & 0x3FU));
        }
        else
        {
            const unsigned int lead = byte < 0x80U   ? byte
                                      : byte < 0xE0U ? byte & 0x1FU
                                      : byte < 0xF0U ? byte & 0x0FU
                                                     : byte & 0x07U;
            points += static_cast<wchar_t>(lead);
        }
    }
    return points;
}

std::string ShortText(const json::value& value)
{
    std::string text = ScalarText(value).value_or("");
    text = value.is_string() ? text : json::serialize(value);
    if (text.size() > MaxShownValue)
    {
        std::size_t end = MaxShownValue;
        while ((static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U)
        {
            --end;
        }
        text = text.substr(0, end) + "...";
    }
    return text;
}

} // namespace bmcsim
