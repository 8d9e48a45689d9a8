#pragma once

#include <optional>
#include <string>

#include "ValueConversions.h"

namespace Tavrine::Tool
{

/// The value that a text of a saved file means, which may be written by hand ("03", "True"), beside a value
/// of its setting: of that one's kind. Nothing where it does not suit the kind, or there is none.
inline OptionalVar SavedValue(const std::string& text, const OptionalVar& beside)
{
    OptionalVar value = beside;
    return beside && TransferStringToOptionalVar(value, text) ? value : std::nullopt;
}

/// Whether a text of a saved file means the value.
inline bool IsValue(const std::string& text, const OptionalVar& value)
{
    const OptionalVar saved = SavedValue(text, value);
    return saved && saved == value;
}

} // namespace Tavrine::Tool
