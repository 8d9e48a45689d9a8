#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace Tavrine
{

/// The number of code points of a text in UTF-8 (RFC 3629); nothing for bytes that
/// are no UTF-8: overlong forms, surrogates, or beyond U+10FFFF.
std::optional<std::size_t> CodePoints(std::string_view text);

/// A text of more bytes than `most` cut at a whole code point, with "..." behind it.
std::string CutText(std::string text, std::size_t most);

} // namespace Tavrine
