#pragma once

#include <boost/json/value.hpp>
#include <optional>
#include <string>

namespace bmcsim
{

/// A value of a registry or of an attribute in its plain text; empty for null and
/// for what is no scalar. Registries write the same value in several kinds, so they
/// are compared as texts: 0 and "0", true and "true".
std::optional<std::string> ScalarText(const boost::json::value& value);

/// Numbers, and texts that hold one. A long double holds every integer of 64 bits
/// exactly.
std::optional<long double> ScalarNumber(const boost::json::value& value);

/// True, or a text that says so.
bool ScalarFlag(const boost::json::value& value);

/// Code points of UTF-8; for patterns and lengths, which count those.
std::wstring CodePoints(const std::string& text);

/// A value as an answer repeats it: a string without quotes, anything else as JSON,
/// and cut where it is long.
std::string ShortText(const boost::json::value& value);

} // namespace bmcsim
