// New values: whatever a user writes for a setting of any type, what is sent for it is
// valid JSON that holds the value unchanged, or it is refused for its right reason.
#include <charconv>
#include <limits>

#include "Oracle.h"
#include "PlainJson.h"
#include "RedfishConfigSettingManager.h"

using namespace fuzztest;
using namespace Tavrine;

namespace
{

using Kind = PlainJson::Kind;

constexpr const char* Registry = R"({"RegistryEntries":{"Attributes":[
    {"AttributeName":"Text","Type":"String"},
    {"AttributeName":"Short","Type":"String","MinLength":2,"MaxLength":4},
    {"AttributeName":"Word","Type":"Password"},
    {"AttributeName":"Number","Type":"Integer"},
    {"AttributeName":"Tens","Type":"Integer","LowerBound":-100,"UpperBound":100,"ScalarIncrement":10},
    {"AttributeName":"Flag","Type":"Boolean"},
    {"AttributeName":"Choice","Type":"Enumeration","Value":[{"ValueName":"On"},{"ValueName":"Off"}]},
    {"AttributeName":"Free","Type":"Enumeration"}]}})";

struct Subject
{
    RedfishConfigSettingManager Manager{Registry, true, Config_Options()};
    std::string_view Value;

    /// The context, or nothing where the value was refused.
    std::optional<PlainJson> Change(const char* name)
    {
        std::string context = "untouched";
        RedfishConfigResult result = Manager.PreparePatchContext(name, std::string(Value), context, FilterChange);
        if (result != 0)
        {
            FUZZ_REQUIRE(result == 10 && context == "untouched" && OnOneLine(result.ErrorMsg()), result.ErrorMsg());
            return std::nullopt;
        }
        bool doubtful = false;
        std::optional<PlainJson> plain = ReadPlainJson(context, doubtful);
        FUZZ_REQUIRE(plain, context);
        return plain;
    }
};

void CheckText(Subject& subject, const char* name, bool taken)
{
    const std::optional<PlainJson> context = subject.Change(name);
    FUZZ_REQUIRE(context.has_value() == taken, subject.Value);
    FUZZ_REQUIRE(!context || (context->Is == Kind::String && context->Text == subject.Value), subject.Value);
}

std::size_t CodePointsOf(std::string_view text)
{
    std::size_t count = 0;
    for (const char c : text)
    {
        count += (static_cast<unsigned char>(c) & 0xC0U) != 0x80U ? 1U : 0U;
    }
    return count;
}

/// The number that decimal text with an optional sign stands for; wide enough to see what
/// does not fit 64 bits.
std::optional<Wide> WideNumber(std::string_view text)
{
    const bool negative = text.starts_with('-');
    text.remove_prefix(negative || text.starts_with('+') ? 1 : 0);
    if (text.empty() || text.find_first_not_of("0123456789") != std::string_view::npos)
    {
        return std::nullopt;
    }
    constexpr Wide enough = static_cast<Wide>(1) << 100;
    Wide number = 0;
    for (const char digit : text)
    {
        number = number < enough ? number * 10 + (digit - '0') : number;
    }
    return negative ? -number : number;
}

void CheckNumber(Subject& subject, const char* name, const std::optional<Wide>& number, bool taken)
{
    const std::optional<PlainJson> context = subject.Change(name);
    FUZZ_REQUIRE(context.has_value() == taken, subject.Value);
    if (context)
    {
        const std::string written = context->Is == Kind::Integer ? std::to_string(context->Whole) : context->Text;
        FUZZ_REQUIRE(WideNumber(written) == number && written.front() != '+', written);
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Subject subject;
    subject.Value = Text(data, size);
    const std::string_view value = subject.Value;
    const bool utf8 = IsUtf8(value);
    const std::size_t length = CodePointsOf(value);
    CheckText(subject, "Text", utf8);
    CheckText(subject, "Word", utf8);
    CheckText(subject, "Free", utf8);
    CheckText(subject, "Short", utf8 && length >= 2 && length <= 4);
    CheckText(subject, "Choice", value == "On" || value == "Off");

    const std::optional<PlainJson> flag = subject.Change("Flag");
    const std::string lowered = Lowered(value);
    FUZZ_REQUIRE(flag.has_value() == (lowered == "true" || lowered == "false"), value);
    FUZZ_REQUIRE(!flag || (flag->Is == Kind::Boolean && flag->Flag == (lowered == "true")), value);

    const std::optional<Wide> number = WideNumber(value);
    constexpr Wide lowest = std::numeric_limits<std::int64_t>::min();
    constexpr Wide highest = std::numeric_limits<std::uint64_t>::max();
    CheckNumber(subject, "Number", number, number && *number >= lowest && *number <= highest);
    CheckNumber(subject, "Tens", number, number && *number >= -100 && *number <= 100 && *number % 10 == 0);
    return 0;
}
