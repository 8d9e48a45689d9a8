// The configuration file: usable or refused in one line with its place; what was read,
// written as TOML again, reads the same; and a file of plain lines reads as it looks.
#include "ConfigFile.h"

#include <algorithm>
#include <optional>
#include <set>

#include "Oracle.h"

using namespace fuzztest;
using namespace Tavrine::ConfigFile;

namespace
{

std::string Quoted(const std::string& text)
{
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string quoted = "\"";
    for (const char c : text)
    {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F)
        {
            quoted.append("\\u00").append(1, digits[byte >> 4U]).append(1, digits[byte & 15U]);
            continue;
        }
        quoted.append(c == '"' || c == '\\' ? "\\" : "").append(1, c);
    }
    return quoted + "\"";
}

std::string Written(const Content& content)
{
    std::string text;
    for (const auto& [name, value] : content.Items)
    {
        text += Quoted(name) + " = " + Quoted(value) + "\n";
    }
    for (const auto& [name, members] : content.Tables)
    {
        text += "[" + Quoted(name) + "]\n";
        for (const auto& [key, value] : members)
        {
            text += Quoted(key) + " = " + Quoted(value) + "\n";
        }
    }
    return text;
}

bool IsWord(std::string_view text)
{
    return !text.empty() &&
           std::all_of(text.begin(), text.end(),
                       [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == ','; });
}

/// What a file says that has nothing but remarks, [table], and KEY = VALUE of words in
/// quotes, short numbers and booleans, each name once; nothing for any other file.
std::optional<Content> Plain(std::string_view text)
{
    Content content;
    std::string table;
    std::set<std::string> names;
    for (; !text.empty(); text.remove_prefix(std::min(text.find('\n'), text.size() - 1) + 1))
    {
        const std::string_view line = text.substr(0, text.find('\n'));
        const bool remark = line.starts_with('#') && OnOneLine(line) && IsUtf8(line);
        if (line.empty() || remark)
        {
            continue;
        }
        if (line.starts_with('[') && line.ends_with(']') && IsWord(line.substr(1, line.size() - 2)))
        {
            table = line.substr(1, line.size() - 2);
            content.Tables[table];
        }
        const std::size_t sign = line.find(" = ");
        const std::string key(line.substr(0, sign));
        const bool isTable = sign == std::string_view::npos && !table.empty() && line == "[" + table + "]";
        const std::string name = isTable ? table : table.empty() ? key : table + "." + key;
        if (!names.insert(name).second || key.find(',') != std::string::npos)
        {
            return std::nullopt;
        }
        if (isTable)
        {
            continue;
        }
        std::string_view value = sign == std::string_view::npos ? std::string_view() : line.substr(sign + 3);
        const bool quoted = value.size() > 2 && value.front() == '"' && value.back() == '"';
        value = quoted ? value.substr(1, value.size() - 2) : value;
        const bool number = value.size() == 1 && value.front() >= '0' && value.front() <= '9';
        if (!IsWord(key) || !(quoted ? IsWord(value) : number || value == "true" || value == "false"))
        {
            return std::nullopt;
        }
        if (table.empty())
        {
            content.Items[key] = value;
        }
        else if (quoted)
        {
            content.Tables[table][key] = value;
        }
    }
    return content;
}

Content Read(std::string_view text) { return Load({{FileWith(text), true}}); }

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text = Text(data, size);
    const Content content = Read(text);
    const std::optional<Content> plain = Plain(text);
    FUZZ_REQUIRE(!plain || content.Error.empty(), content.Error);
    FUZZ_REQUIRE(!plain || (plain->Items == content.Items && plain->Tables == content.Tables), text);
    if (!content.Error.empty())
    {
        FUZZ_REQUIRE(content.Items.empty() && content.Tables.empty(), content.Error);
        FUZZ_REQUIRE(OnOneLine(content.Error), content.Error);
        FUZZ_REQUIRE(content.Error.starts_with("/proc/self/fd/") && content.Error.find(": line ") != std::string::npos,
                     content.Error);
        return 0;
    }
    const Content again = Read(Written(content));
    FUZZ_REQUIRE(again.Error.empty(), again.Error + "\n" + Written(content));
    FUZZ_REQUIRE(again.Items == content.Items && again.Tables == content.Tables, Written(content));
    return 0;
}
