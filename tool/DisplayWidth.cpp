#include "DisplayWidth.h"

#include <algorithm>
#include <cwchar>
#include <locale.h> // NOLINT(modernize-deprecated-headers): newlocale is POSIX
#include <numeric>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>

#include "TextOutput.h"

namespace Tavrine::Tool
{
namespace
{

constexpr std::string_view Ellipsis = "…";
constexpr std::size_t ColumnGap = 2;
/// A narrower terminal is not worth the wrapping.
constexpr std::size_t LeastWidth = 20;
constexpr std::size_t WidthWithoutSize = 80;

/// Widths of characters are told by the locale of the thread, whatever the language.
class Utf8Locale
{
  public:
    Utf8Locale() : m_Former(uselocale(Shared())) {}
    Utf8Locale(const Utf8Locale&) = delete;
    Utf8Locale& operator=(const Utf8Locale&) = delete;
    ~Utf8Locale() { uselocale(m_Former); }

  private:
    static locale_t Shared()
    {
        static const locale_t Utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
        return Utf8;
    }
    locale_t m_Former;
};

wchar_t CodePoint(std::string_view character)
{
    static constexpr unsigned int FirstByteMasks[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
    unsigned int code = static_cast<unsigned char>(character[0]) & FirstByteMasks[character.size()];
    for (const char byte : character.substr(1))
    {
        code = code << 6U | (static_cast<unsigned char>(byte) & 0x3FU);
    }
    return static_cast<wchar_t>(code);
}

/// One character of a text, or one byte that is none.
struct Glyph
{
    std::string_view Bytes;
    std::size_t Width = 1;
};

std::vector<Glyph> Glyphs(std::string_view text)
{
    const Utf8Locale utf8;
    std::vector<Glyph> glyphs;
    while (!text.empty())
    {
        const std::size_t length = Utf8Length(text);
        Glyph glyph{text.substr(0, std::max<std::size_t>(length, 1))};
        if (length != 0)
        {
            const int width = wcwidth(CodePoint(glyph.Bytes));
            glyph.Width = width < 0 ? 1 : static_cast<std::size_t>(width);
        }
        text.remove_prefix(glyph.Bytes.size());
        glyphs.push_back(glyph);
    }
    return glyphs;
}

bool IsBlank(const Glyph& glyph) { return glyph.Bytes == " "; }

/// Closing marks stay with the character in front of them.
bool IsClosing(const Glyph& glyph)
{
    static constexpr std::string_view Closing = "、。，．）」』】！？：；ーっゃゅょッャュョ";
    return glyph.Bytes.size() > 1 && Closing.find(glyph.Bytes) != std::string_view::npos;
}

/// Parts that are not broken: a word, or one wide character with what combines with it
/// and the closing marks behind it.
struct Piece
{
    std::vector<Glyph> Content;
    std::size_t Width = 0;
    std::size_t BlanksBefore = 0;
};

std::vector<Piece> Pieces(const std::vector<Glyph>& glyphs)
{
    std::vector<Piece> pieces;
    std::size_t blanks = 0;
    bool open = false;
    for (const Glyph& glyph : glyphs)
    {
        if (IsBlank(glyph))
        {
            ++blanks;
            open = false;
            continue;
        }
        const bool afterWide = open && pieces.back().Content.front().Width > 1;
        const bool joins = open && (glyph.Width == 0 || IsClosing(glyph) || (glyph.Width == 1 && !afterWide));
        if (!joins)
        {
            pieces.push_back({{}, 0, blanks});
            blanks = 0;
        }
        pieces.back().Content.push_back(glyph);
        pieces.back().Width += glyph.Width;
        open = true;
    }
    return pieces;
}

/// Puts pieces into lines.
class Wrapper
{
  public:
    explicit Wrapper(std::size_t columns) : m_Columns(columns) {}

    void Add(const Piece& piece)
    {
        if (m_Used != 0 && m_Used + piece.BlanksBefore + piece.Width > m_Columns)
        {
            Break();
        }
        if (m_Used != 0)
        {
            m_Lines.back().append(piece.BlanksBefore, ' ');
            m_Used += piece.BlanksBefore;
        }
        for (const Glyph& glyph : piece.Content)
        {
            if (m_Used != 0 && m_Used + glyph.Width > m_Columns)
            {
                Break();
            }
            m_Lines.back() += glyph.Bytes;
            m_Used += glyph.Width;
        }
    }

    std::vector<std::string> Lines() && { return std::move(m_Lines); }

  private:
    void Break()
    {
        m_Lines.emplace_back();
        m_Used = 0;
    }

    std::size_t m_Columns;
    std::size_t m_Used = 0;
    std::vector<std::string> m_Lines{1};
};

/// Takes from the widest columns until the row fits.
std::vector<std::size_t> FittedWidths(std::vector<std::size_t> widths, std::size_t columns)
{
    const std::size_t gaps = ColumnGap * (widths.size() - 1);
    const std::size_t room = columns > gaps + widths.size() ? columns - gaps : widths.size();
    std::size_t total = std::accumulate(widths.begin(), widths.end(), std::size_t{0});
    std::vector<std::size_t> sorted = widths;
    std::sort(sorted.begin(), sorted.end());
    // The cap under which the columns together fill the room.
    std::size_t left = room;
    std::size_t cap = room;
    for (std::size_t index = 0; index < sorted.size() && total > room; ++index)
    {
        cap = left / (sorted.size() - index);
        if (sorted[index] > cap)
        {
            break;
        }
        left -= sorted[index];
    }
    for (std::size_t& width : widths)
    {
        width = std::min(width, std::max<std::size_t>(cap, 1));
    }
    return widths;
}

std::string TabbedRows(const std::vector<std::vector<std::string>>& rows)
{
    std::string text;
    for (const auto& row : rows)
    {
        for (std::size_t cell = 0; cell < row.size(); ++cell)
        {
            text += (cell == 0 ? "" : "\t") + row[cell];
        }
        text += "\n";
    }
    return text;
}

void AppendRow(std::string& text, const std::vector<std::string>& row, const std::vector<std::size_t>& widths)
{
    std::string line;
    for (std::size_t cell = 0; cell < row.size(); ++cell)
    {
        const std::string cut = CutToWidth(row[cell], widths[cell]);
        line += cut + std::string(widths[cell] - DisplayWidth(cut) + ColumnGap, ' ');
    }
    line.erase(line.find_last_not_of(' ') + 1);
    text += line + "\n";
}

} // namespace

std::size_t DisplayWidth(std::string_view text)
{
    const std::vector<Glyph> glyphs = Glyphs(text);
    return std::accumulate(glyphs.begin(), glyphs.end(), std::size_t{0},
                           [](std::size_t sum, const Glyph& glyph) { return sum + glyph.Width; });
}

std::string CutToWidth(std::string_view text, std::size_t columns)
{
    if (DisplayWidth(text) <= columns)
    {
        return std::string(text);
    }
    if (columns == 0)
    {
        return {};
    }
    std::string cut;
    std::size_t used = 1; // the ellipsis
    for (const Glyph& glyph : Glyphs(text))
    {
        used += glyph.Width;
        if (used > columns)
        {
            break;
        }
        cut += glyph.Bytes;
    }
    return cut.append(Ellipsis);
}

std::vector<std::string> WrapText(std::string_view text, std::optional<std::size_t> columns)
{
    if (!columns)
    {
        return {std::string(text)};
    }
    Wrapper wrapper(std::max<std::size_t>(*columns, 1));
    for (const Piece& piece : Pieces(Glyphs(text)))
    {
        wrapper.Add(piece);
    }
    return std::move(wrapper).Lines();
}

std::optional<std::size_t> TerminalWidth()
{
    if (isatty(STDOUT_FILENO) != 1)
    {
        return std::nullopt;
    }
    winsize size{};
    const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0;
    return std::max<std::size_t>(known ? size.ws_col : WidthWithoutSize, LeastWidth);
}

std::string TableText(const std::vector<std::string>& header, const std::vector<std::vector<std::string>>& rows,
                      std::optional<std::size_t> columns)
{
    if (!columns)
    {
        return TabbedRows(rows);
    }
    if (rows.empty())
    {
        return {};
    }
    std::vector<std::size_t> widths;
    std::transform(header.begin(), header.end(), std::back_inserter(widths),
                   [](const std::string& cell) { return DisplayWidth(cell); });
    for (const auto& row : rows)
    {
        for (std::size_t cell = 0; cell < row.size(); ++cell)
        {
            widths[cell] = std::max(widths[cell], DisplayWidth(row[cell]));
        }
    }
    widths = FittedWidths(std::move(widths), *columns);
    std::string text;
    AppendRow(text, header, widths);
    for (const auto& row : rows)
    {
        AppendRow(text, row, widths);
    }
    return text;
}

} // namespace Tavrine::Tool
