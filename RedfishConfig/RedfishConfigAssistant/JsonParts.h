#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include <boost/json/value.hpp>

namespace Tavrine
{

/// What is kept of a member.
enum class Keep
{
    Nothing,
    /// Of an object those of its members that the rule names; any other value stands there as null.
    Members,
    All,
};

/// Says it of a member of the object whose name is `parent`; that of the document is "".
using KeepRule = Keep (*)(std::string_view parent, std::string_view name);

/// What JsonParts keep at the most, in bytes of memory, about: of a document many times as large little more than the
/// parts is held.
inline constexpr std::size_t MaxPartsBytes = 16U * 1024U * 1024U;

/// Parts of a document.
struct JsonParts
{
    /// An object of what was kept; nothing for a document that is no object, or that LookAtJson refuses.
    std::optional<boost::json::value> Document;
    /// What keeps it from being read whole, such as "no JSON: incomplete JSON", going on from "it is": of what begins
    /// as an object what LookAtJson says, else that more was to be kept than MaxPartsBytes. Empty for nothing.
    std::string Fault;
};

/// Reads a document, however large, and keeps what the rule names. Throws where memory runs out, as ParseJson does.
JsonParts ParseParts(std::string_view text, KeepRule rule);

} // namespace Tavrine
