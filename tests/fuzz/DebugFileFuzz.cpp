// The debug configuration file: one node of it as JSON text, or the text of null.
#include "JsonNodes.h"
#include "Oracle.h"
#include "PlainJson.h"

using namespace fuzztest;

namespace
{

constexpr std::string_view Keys[] = {"Attributes", "RegistryEntries", "a/b~c", ""};

/// Equal but for what JSON has no order or only one way for.
bool Same(const PlainJson& left, const PlainJson& right)
{
    bool same = left.Is == right.Is && left.Flag == right.Flag && left.Elements.size() == right.Elements.size();
    // A number with a fraction may be written in another way.
    same = same && (left.Is == PlainJson::Kind::Number || (left.Text == right.Text && left.Whole == right.Whole));
    for (std::size_t i = 0; same && i < left.Elements.size(); ++i)
    {
        same = Same(left.Elements[i], right.Elements[i]);
    }
    for (const auto& [name, value] : left.Members)
    {
        const PlainJson* const other = right.Find(name);
        same = same && other != nullptr && Same(*left.Find(name), *other);
    }
    for (const auto& [name, value] : right.Members)
    {
        same = same && left.Find(name) != nullptr;
    }
    return same;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text = Text(data, size);
    bool doubtful = false;
    const std::optional<PlainJson> plain = ReadPlainJson(text, doubtful);
    const bool odd = doubtful || text.find("-0") != std::string_view::npos;
    const std::string path = FileWith(text);
    for (const std::string_view key : Keys)
    {
        const std::string node = Tavrine::ReadDebugConfigNode(path, key);
        bool ignored = false;
        const std::optional<PlainJson> read = ReadPlainJson(node, ignored);
        FUZZ_REQUIRE(read, node);
        const PlainJson* const wanted = plain ? plain->Find(key) : nullptr;
        FUZZ_REQUIRE(odd || (wanted == nullptr ? node == "null" : Same(*read, *wanted)), node);

        std::string found = "untouched";
        const bool there = Tavrine::ReadStringNode(std::string(text), {key}, found);
        const bool due = wanted != nullptr && wanted->Is == PlainJson::Kind::String;
        FUZZ_REQUIRE(odd || (there == due && found == (due ? wanted->Text : "untouched")), text);
    }
    return 0;
}
