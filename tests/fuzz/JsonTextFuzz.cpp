// The reader of every answer of a BMC takes exactly what RFC 8259 allows within its limits,
// and reads it as another reader does.
#include "JsonText.h"

#include <boost/json/serialize.hpp>

#include "Oracle.h"
#include "PlainJson.h"

using namespace fuzztest;

namespace
{

namespace json = boost::json;

bool Same(const json::value& read, const PlainJson& plain);

bool SameObject(const json::object& read, const PlainJson& plain)
{
    for (const auto& member : read)
    {
        const PlainJson* const other = plain.Find({member.key().data(), member.key().size()});
        if (other == nullptr || !Same(member.value(), *other))
        {
            return false;
        }
    }
    for (const auto& [name, value] : plain.Members)
    {
        if (!read.contains(name))
        {
            return false;
        }
    }
    return true;
}

bool SameArray(const json::array& read, const PlainJson& plain)
{
    bool same = read.size() == plain.Elements.size();
    for (std::size_t i = 0; same && i < read.size(); ++i)
    {
        same = Same(read[i], plain.Elements[i]);
    }
    return same;
}

bool Same(const json::value& read, const PlainJson& plain)
{
    using Kind = PlainJson::Kind;
    switch (read.kind())
    {
    case json::kind::null:
        return plain.Is == Kind::Null;
    case json::kind::bool_:
        return plain.Is == Kind::Boolean && plain.Flag == read.get_bool();
    case json::kind::int64:
        return plain.Is == Kind::Integer && plain.Whole == read.get_int64();
    case json::kind::uint64:
        return plain.Is == Kind::Number && plain.Text == std::to_string(read.get_uint64());
    case json::kind::double_:
        return plain.Is == Kind::Number || plain.Text == "-0";
    case json::kind::string:
        return plain.Is == Kind::String && plain.Text == json::string_view(read.get_string());
    case json::kind::array:
        return plain.Is == Kind::Array && SameArray(read.get_array(), plain);
    case json::kind::object:
        return plain.Is == Kind::Object && SameObject(read.get_object(), plain);
    }
    return false;
}

bool HasErrorObject(const PlainJson& document)
{
    bool has = false;
    for (const auto& [name, value] : document.Members)
    {
        has = has || (name == "error" && value.Is == PlainJson::Kind::Object);
    }
    return has;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text = Text(data, size);
    bool doubtful = false;
    const std::optional<PlainJson> plain = ReadPlainJson(text, doubtful);
    const Tavrine::JsonShape shape = Tavrine::LookAtJson(text);
    const std::optional<json::value> read = Tavrine::ParseJson(text);
    FUZZ_REQUIRE(shape.Fault.empty() == read.has_value(), text);
    FUZZ_REQUIRE(OnOneLine(shape.Fault), shape.Fault);
    if (read)
    {
        FUZZ_REQUIRE(Tavrine::ParseJson(json::serialize(*read)), text);
    }
    if (doubtful)
    {
        return 0;
    }
    FUZZ_REQUIRE(read.has_value() == plain.has_value(), text);
    if (!read)
    {
        return 0;
    }
    FUZZ_REQUIRE(Same(*read, *plain), text);
    FUZZ_REQUIRE(shape.HasError == HasErrorObject(*plain), text);
    const std::optional<json::value> again = Tavrine::ParseJson(json::serialize(*read));
    FUZZ_REQUIRE(again && Same(*again, *plain), text);
    const std::optional<json::value> plainAgain = Tavrine::ParseJson(WritePlainJson(*plain));
    FUZZ_REQUIRE(plainAgain && Same(*plainAgain, *plain), text);
    return 0;
}
