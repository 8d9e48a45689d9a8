#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Tavrine::Tool
{

/// Columns that a text takes on a terminal: 2 for wide characters (CJK, for example),
/// 0 for those that combine, 1 for the others and for each byte that is no UTF-8.
std::size_t DisplayWidth(std::string_view text);

/// The text, or the start of it and "…", so that it takes `columns` at most. No
/// character is cut in two.
std::string CutToWidth(std::string_view text, std::size_t columns);

/// The lines of a paragraph, broken at blanks, beside wide characters, and inside words
/// that are longer than a line. Without a width it is one line. Never empty.
std::vector<std::string> WrapText(std::string_view text, std::optional<std::size_t> columns);

/// Width of the terminal that standard output is; nothing where it is none.
std::optional<std::size_t> TerminalWidth();

/// Rows of equal length. On a terminal the columns stand below each other and are cut
/// to its width; otherwise the cells of a row have a tab between them. Cells are shown
/// as they stand and have to be free of control characters.
/// @param header  shown on a terminal alone.
std::string TableText(const std::vector<std::string>& header, const std::vector<std::vector<std::string>>& rows,
                      std::optional<std::size_t> columns);

} // namespace Tavrine::Tool
