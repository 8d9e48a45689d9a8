#pragma once

#include <string>

#include <boost/json/value.hpp>

#include "ValueTypes.h"

namespace Tavrine::Tool
{

/// The value that a JSON text writes; the text itself where it is no JSON.
boost::json::value ValueOfJson(const std::string& text);

/// The same as the library holds values; nothing where it holds none such: null, a number that
/// is not whole or beyond 64 bits, what is no JSON.
OptionalVar VariantOfJson(const std::string& text);

/// What the value that a JSON text writes reads as: a text as it stands, all else as it is
/// written there.
std::string PlainText(const std::string& text);

/// What a value reads as: a text as it stands, all else as JSON writes it.
std::string ValueText(const boost::json::value& value);

} // namespace Tavrine::Tool
