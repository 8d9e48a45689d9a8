// The configuration file: usable or refused in one line with its place; what was read,
// written as TOML again, reads the same.
#include "ConfigFile.h"

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

Content Read(std::string_view text) { return Load({{FileWith(text), true}}); }

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text = Text(data, size);
    const Content content = Read(text);
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
