#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>

/// Reads valid values back, by the form that the setting manager's header tells.
namespace validvalues
{

struct Item
{
    std::string Name;
    std::string Display;

    bool operator==(const Item&) const = default;
};

/// Takes one word off the front of `text`: a JSON string, or all up to "; ", " [" or
/// "]".
inline std::optional<std::string> TakeWord(std::string_view& text)
{
    if (!text.starts_with('"'))
    {
        const std::size_t end = std::min({text.find("; "), text.find(" ["), text.find(']'), text.size()});
        const std::string word(text.substr(0, end));
        text.remove_prefix(end);
        return word.empty() ? std::nullopt : std::optional(word);
    }
    std::size_t end = 1;
    while (end < text.size() && text[end] != '"')
    {
        end += text[end] == '\\' ? 2U : 1U;
    }
    if (end >= text.size())
    {
        return std::nullopt;
    }
    boost::json::error_code error;
    const boost::json::value parsed = boost::json::parse({text.data(), end + 1}, error);
    text.remove_prefix(end + 1);
    return error || !parsed.is_string() ? std::nullopt : std::optional(std::string(parsed.get_string()));
}

/// The items of an enumeration or boolean; nothing for a text that is not in the
/// form.
inline std::optional<std::vector<Item>> SplitItems(std::string_view text)
{
    std::vector<Item> items;
    while (true)
    {
        const std::optional<std::string> name = TakeWord(text);
        std::optional<std::string> display = name;
        if (name && text.starts_with(" ["))
        {
            text.remove_prefix(2);
            display = TakeWord(text);
            if (!text.starts_with(']'))
            {
                return std::nullopt;
            }
            text.remove_prefix(1);
        }
        if (!name || !display)
        {
            return std::nullopt;
        }
        items.push_back({*name, *display});
        if (text.empty())
        {
            return items;
        }
        if (!text.starts_with("; "))
        {
            return std::nullopt;
        }
        text.remove_prefix(2);
    }
}

/// "LOWER to UPPER, step N (...)" or "MIN to MAX characters, pattern REGEX".
struct Range
{
    std::string Lower;
    std::string Upper;
    std::string Step;
    std::optional<std::string> Pattern;
};

inline std::string TakeUpTo(std::string& text, const std::string& mark)
{
    const std::size_t place = std::min(text.find(mark), text.size());
    const std::string taken = text.substr(0, place);
    text.erase(0, std::min(place + mark.size(), text.size()));
    return taken;
}

inline Range SplitRange(std::string text)
{
    text = TakeUpTo(text, " (");
    Range range;
    range.Lower = TakeUpTo(text, " to ");
    range.Upper = TakeUpTo(text, ", step ");
    range.Step = text;
    return range;
}

inline Range SplitLengths(std::string text)
{
    Range range;
    range.Lower = TakeUpTo(text, " to ");
    range.Upper = TakeUpTo(text, " characters");
    if (text.starts_with(", pattern "))
    {
        range.Pattern = text.substr(10);
    }
    return range;
}

} // namespace validvalues
