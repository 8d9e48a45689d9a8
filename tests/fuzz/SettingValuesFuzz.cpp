// Bios resources and settings objects: the values are those that another reader sees, a
// refused text changes nothing, and every value can be sent back as it came.
#include "SettingValues.h"

#include <map>
#include <set>

#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>

#include "Oracle.h"
#include "PlainJson.h"
#include "RegistryLookup.h"
#include "ValueConversions.h"

using namespace fuzztest;
using namespace Tavrine;

namespace
{

using Kind = PlainJson::Kind;

bool IsValue(const PlainJson& value)
{
    return value.Is == Kind::Null || value.Is == Kind::Boolean || value.Is == Kind::Integer || value.Is == Kind::String;
}

bool Same(const OptionalVar& read, const PlainJson& plain)
{
    switch (plain.Is)
    {
    case Kind::Null:
        return !read;
    case Kind::Boolean:
        return read == OptionalVar(plain.Flag);
    case Kind::Integer:
        return read == OptionalVar(plain.Whole);
    case Kind::String:
        return read == OptionalVar(plain.Text);
    default:
        return false;
    }
}

/// Names that differ in case alone are one setting; which of their values counts is not
/// told, so each of them will do.
using Expected = std::map<std::string, std::map<std::string, const PlainJson*>>;

Expected ExpectedValues(const PlainJson& attributes)
{
    Expected expected;
    for (const auto& [name, ignored] : attributes.Members)
    {
        const PlainJson* const value = attributes.Find(name);
        if (IsValue(*value) && value->Text != "-0")
        {
            expected[Lowered(name)][name] = value;
        }
    }
    return expected;
}

void CheckValues(const SettingValueMap& values, const PlainJson& attributes, std::string_view text)
{
    const Expected expected = ExpectedValues(attributes);
    for (const auto& [folded, names] : expected)
    {
        const auto read = values.find(folded);
        FUZZ_REQUIRE(read != values.end(), text);
        bool same = false;
        for (const auto& [name, value] : names)
        {
            same = same || Same(read->second, *value);
        }
        FUZZ_REQUIRE(same && names.contains(read->first), text);
    }
    for (const auto& [name, value] : values)
    {
        const PlainJson* const member = attributes.Find(name);
        FUZZ_REQUIRE(expected.contains(Lowered(name)) || (member != nullptr && member->Text == "-0"), text);
    }
}

/// A change to the value in force is a change to nothing.
void CheckWayBack(const SettingValueMap& values)
{
    std::string document;
    for (const auto& [name, value] : values)
    {
        std::string written = "null";
        std::string asText;
        if (GetOptionalVarAsString(value, asText))
        {
            FUZZ_REQUIRE(MakeValueText(name, asText, value, written) == 0, name);
            FUZZ_REQUIRE(written == boost::json::serialize(VariantToJson(*value)), name);
        }
        document += (document.empty() ? "" : ",") + QuotedJson(name) + ":" + written;
    }
    SettingValueMap again;
    FUZZ_REQUIRE(ReadSettingValues("{\"Attributes\":{" + document + "}}", again) == 0, document);
    FUZZ_REQUIRE(again == values, document);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text = Text(data, size);
    bool doubtful = false;
    const std::optional<PlainJson> plain = ReadPlainJson(text, doubtful);
    if (doubtful)
    {
        return 0;
    }
    const SettingValueMap before = {{"Kept", OptionalVar("as it was")}, {"Empty", OptionalVar()}};
    SettingValueMap values = before;
    RedfishConfigResult result = ReadSettingValues(text, values);
    FUZZ_REQUIRE(OnOneLine(result.ErrorMsg()), result.ErrorMsg());
    const PlainJson* const attributes = plain ? plain->Find("Attributes") : nullptr;
    if (attributes == nullptr || attributes->Is != Kind::Object)
    {
        FUZZ_REQUIRE(result == 27 && !result.ErrorMsg().empty(), text);
        FUZZ_REQUIRE(values == before, text);
    }
    else
    {
        FUZZ_REQUIRE(result == 0, text);
        CheckValues(values, *attributes, text);
        CheckWayBack(values);
    }
    FUZZ_REQUIRE(RegistryIdentifier(text) == (plain ? plain->TextOf("AttributeRegistry") : std::string()), text);
    return 0;
}
