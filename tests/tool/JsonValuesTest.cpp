#include "JsonValues.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include <gtest/gtest.h>

using namespace Tavrine;
using namespace Tavrine::Tool;

namespace
{

struct Row
{
    const char* Json;
    OptionalVar Variant;
    const char* Plain;
    /// As the value reads where it is written anew.
    const char* Text;
};

const Row rows[] = {
    {"\"\"", SettingVariant(std::string()), "", ""},
    {"\"Uefi\"", SettingVariant(std::string("Uefi")), "Uefi", "Uefi"},
    {R"("a\"b\\c\td")", SettingVariant(std::string("a\"b\\c\td")), "a\"b\\c\td", "a\"b\\c\td"},
    {"10", SettingVariant(std::int64_t{10}), "10", "10"},
    {"-9223372036854775808", SettingVariant(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808",
     "-9223372036854775808"},
    {"9223372036854775808", std::nullopt, "9223372036854775808", "9223372036854775808"},
    {"1.50", std::nullopt, "1.50", "1.5E0"},
    {"true", SettingVariant(true), "true", "true"},
    {"null", std::nullopt, "null", "null"},
    {"[1, 2]", std::nullopt, "[1, 2]", "[1,2]"},
    {"no json", std::nullopt, "no json", "no json"},
    {"", std::nullopt, "", ""},
};

} // namespace

TEST(JsonValues, AJsonTextIsReadAsAValueAndAsAText)
{
    for (const Row& row : rows)
    {
        EXPECT_EQ(VariantOfJson(row.Json), row.Variant) << row.Json;
        EXPECT_EQ(PlainText(row.Json), row.Plain) << row.Json;
        EXPECT_EQ(ValueText(ValueOfJson(row.Json)), row.Text) << row.Json;
    }
}
