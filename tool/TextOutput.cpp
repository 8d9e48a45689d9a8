#include "TextOutput.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <map>
#include <vector>

#include <fmt/format.h>

namespace Tavrine::Tool
{
namespace
{

unsigned char ByteAt(std::string_view text, std::size_t index) { return static_cast<unsigned char>(text[index]); }

/// First byte, and the range that the second byte must lie in: this alone keeps
/// overlong forms, surrogates and what is beyond U+10FFFF out (RFC 3629, "UTF-8").
struct Utf8Form
{
    unsigned char First;
    unsigned char Last;
    std::size_t Length;
    unsigned char SecondFirst;
    unsigned char SecondLast;
};
constexpr std::array<Utf8Form, 9> Utf8Forms = {{
    {0x00, 0x7F, 1, 0x00, 0x00},
    {0xC2, 0xDF, 2, 0x80, 0xBF},
    {0xE0, 0xE0, 3, 0xA0, 0xBF},
    {0xE1, 0xEC, 3, 0x80, 0xBF},
    {0xED, 0xED, 3, 0x80, 0x9F},
    {0xEE, 0xEF, 3, 0x80, 0xBF},
    {0xF0, 0xF0, 4, 0x90, 0xBF},
    {0xF1, 0xF3, 4, 0x80, 0xBF},
    {0xF4, 0xF4, 4, 0x80, 0x8F},
}};

bool IsControl(std::string_view character)
{
    const unsigned char first = ByteAt(character, 0);
    if (character.size() == 1)
    {
        return first < 0x20 || first == 0x7F;
    }
    return character.size() == 2 && first == 0xC2 && ByteAt(character, 1) < 0xA0;
}

void AppendEscaped(std::string& out, std::string_view bytes)
{
    static const std::map<std::string_view, std::string_view> Words = {{"\n", "\\n"}, {"\t", "\\t"}, {"\r", "\\r"}};
    if (const auto word = Words.find(bytes); word != Words.end())
    {
        out += word->second;
        return;
    }
    for (const char byte : bytes)
    {
        out += fmt::format("\\x{:02X}", static_cast<unsigned char>(byte));
    }
}

std::string Escaped(std::string_view text, bool backslashToo)
{
    std::string out;
    out.reserve(text.size());
    ForEachCharacter(text,
                     [&](std::string_view piece, bool isUtf8)
                     {
                         if (!isUtf8 || IsControl(piece))
                         {
                             AppendEscaped(out, piece);
                         }
                         else if (backslashToo && piece == "\\")
                         {
                             out += "\\\\";
                         }
                         else
                         {
                             out += piece;
                         }
                     });
    return out;
}

struct MenuNode
{
    std::map<std::string, MenuNode> Menus;
    std::vector<std::string> Settings;
};

/// Menus of hostile depth stay flat beyond this.
constexpr int DeepestMenu = 32;

MenuNode BuildTree(const SettingGroupMap& groups)
{
    MenuNode root;
    for (const auto& [group, names] : groups)
    {
        MenuNode* node = &root;
        std::string_view rest = group;
        std::size_t slash = rest.find('/');
        for (int depth = 1; slash != std::string_view::npos && depth < DeepestMenu; ++depth)
        {
            node = &node->Menus[std::string(rest.substr(0, slash))];
            rest.remove_prefix(slash + 1);
            slash = rest.find('/');
        }
        MenuNode& leaf = node->Menus[std::string(rest)];
        leaf.Settings.insert(leaf.Settings.end(), names.begin(), names.end());
    }
    return root;
}

void AppendTree(std::string& out, const MenuNode& node, std::size_t depth)
{
    const std::string indent(depth * 2, ' ');
    for (const auto& [name, first] : node.Menus)
    {
        std::string label = name;
        const MenuNode* menu = &first;
        while (menu->Settings.empty() && menu->Menus.size() == 1)
        {
            label += "/" + menu->Menus.begin()->first;
            menu = &menu->Menus.begin()->second;
        }
        out += indent + EscapeText(label) + "\n";
        std::vector<std::string> settings = menu->Settings;
        std::sort(settings.begin(), settings.end());
        for (const std::string& setting : settings)
        {
            out += indent + "  " + EscapeText(setting) + "\n";
        }
        AppendTree(out, *menu, depth + 1);
    }
}

} // namespace

std::size_t PlainLength(std::string_view text)
{
    std::size_t length = 0;
    while (length < text.size() && text[length] >= ' ' && text[length] <= '~' && text[length] != '\\')
    {
        ++length;
    }
    return length;
}

std::size_t Utf8Length(std::string_view text)
{
    if (text.empty())
    {
        return 0;
    }
    const unsigned char first = ByteAt(text, 0);
    const auto form = std::find_if(Utf8Forms.begin(), Utf8Forms.end(),
                                   [&](const Utf8Form& f) { return first >= f.First && first <= f.Last; });
    if (form == Utf8Forms.end() || text.size() < form->Length)
    {
        return 0;
    }
    for (std::size_t index = 1; index < form->Length; ++index)
    {
        const unsigned char low = index == 1 ? form->SecondFirst : 0x80;
        const unsigned char high = index == 1 ? form->SecondLast : 0xBF;
        if (ByteAt(text, index) < low || ByteAt(text, index) > high)
        {
            return 0;
        }
    }
    return form->Length;
}

std::string EscapeText(std::string_view text) { return Escaped(text, true); }

std::string EscapeControls(std::string_view text) { return Escaped(text, false); }

std::optional<std::string> UnescapeText(std::string_view line)
{
    static const std::map<char, char> Letters = {{'\\', '\\'}, {'n', '\n'}, {'t', '\t'}, {'r', '\r'}};
    std::string text;
    for (std::size_t at = line.find('\\'); at != std::string_view::npos; at = line.find('\\'))
    {
        text += line.substr(0, at);
        line.remove_prefix(at + 1);
        const auto letter = line.empty() ? Letters.end() : Letters.find(line.front());
        unsigned char byte = 0;
        if (letter != Letters.end())
        {
            text += letter->second;
            line.remove_prefix(1);
        }
        else if (line.size() >= 3 && line.front() == 'x' &&
                 std::from_chars(line.data() + 1, line.data() + 3, byte, 16).ptr == line.data() + 3)
        {
            text += static_cast<char>(byte);
            line.remove_prefix(3);
        }
        else
        {
            return std::nullopt;
        }
    }
    return text.append(line);
}

std::string SettingLines(const SettingStringMap& settings)
{
    std::string out;
    for (const auto& [name, value] : settings)
    {
        out += EscapeText(name) + "=" + EscapeText(value) + "\n";
    }
    return out;
}

std::string GroupLines(const SettingGroupMap& groups)
{
    std::string out;
    for (const auto& [group, names] : groups)
    {
        std::vector<std::string> sorted = names;
        std::sort(sorted.begin(), sorted.end());
        for (const std::string& name : sorted)
        {
            out += EscapeText(group) + "\t" + EscapeText(name) + "\n";
        }
    }
    return out;
}

std::string GroupTree(const SettingGroupMap& groups)
{
    std::string out;
    AppendTree(out, BuildTree(groups), 0);
    return out;
}

} // namespace Tavrine::Tool
