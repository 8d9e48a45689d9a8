#pragma once

#include <cstddef>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include <boost/json/value.hpp>

namespace Tavrine
{

/// The most that is read of a debug configuration file: what a BMC's answer may have.
inline constexpr std::size_t MaxDebugConfigBytes = 67'108'864;

/// Parses a text. Throws where memory runs out, as all that read here: what could not be read must not count as
/// missing. How much a document may hold is for those to say who fetch it: the REST client, and ReadDebugConfigNode.
/// @return nothing when it is no JSON.
std::optional<boost::json::value> ParseNodes(const std::string& text);

/// Finds the node at a path of object keys. @return null when it is missing.
const boost::json::value* FindNode(const boost::json::value& root, std::initializer_list<std::string_view> path);

/// Reads a string node. @return false, and `text` untouched, when the node is missing
/// or is no string.
bool ReadStringNode(const boost::json::value& root, std::initializer_list<std::string_view> path, std::string& text);
/// The same from a text; also false when that is no JSON.
bool ReadStringNode(const std::string& document, std::initializer_list<std::string_view> path, std::string& text);

/// Reads one top-level node of a debug configuration file and gives its JSON text. A
/// file that cannot be read, is too large or has no such node is logged and gives the text of a JSON
/// null.
std::string ReadDebugConfigNode(const std::string& path, std::string_view key);

} // namespace Tavrine
