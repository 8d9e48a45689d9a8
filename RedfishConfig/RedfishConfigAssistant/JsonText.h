#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include <boost/json/parse_options.hpp>
#include <boost/json/value.hpp>

namespace Tavrine
{

/// Arrays and objects within each other; the default of Boost.JSON, so that what is
/// taken here is taken by every later reader.
inline constexpr std::size_t MaxJsonDepth = 32;
/// Values of one document, members and elements counted alike.
inline constexpr std::size_t MaxJsonValues = 4'000'000;

/// What a document is, told without building it in memory.
struct JsonShape
{
    /// Why it is refused; empty for a document within the limits.
    std::string Fault;
    /// The top level has an object "error".
    bool HasError = false;
};

JsonShape LookAtJson(std::string_view text);

/// For parsers that are to take what LookAtJson takes.
boost::json::parse_options JsonOptions();

/// The document, or nothing when LookAtJson refuses it. Throws where memory runs out: an answer that could not be
/// read must not count as one that says nothing.
std::optional<boost::json::value> ParseJson(std::string_view text);

/// The member of an object; null when `parent` is null, is no object or lacks it.
const boost::json::value* Member(const boost::json::value* parent, std::string_view name);
/// The text of a string member; empty when there is none.
std::string_view TextMember(const boost::json::value* parent, std::string_view name);

/// The same from a text, of which no document is made; empty, too, when LookAtJson refuses it.
std::string TextMemberOf(std::string_view text, std::string_view name);

} // namespace Tavrine
