#include "RegistryScalar.h"

#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>
#include <gtest/gtest.h>

using namespace Tavrine;

namespace
{

std::optional<RegistryScalar> Read(const char* text) { return ScalarFromJson(boost::json::parse(text)); }

} // namespace

TEST(RegistryScalar, ReadsEveryKindThatAValueCanHave)
{
    const std::pair<const char*, const char*> rows[] = {
        {"null", "null"},
        {"true", "true"},
        {"false", "false"},
        {"\"Uefi\"", "Uefi"},
        {"-5", "-5"},
        {"18446744073709551615", "18446744073709551615"},
        {"-9223372036854775808", "-9223372036854775808"},
        {"2.0", "2"},
        {"-2.0", "-2"},
        {"9223372036854775808.0", "9223372036854775808"},
    };
    for (const auto& [json, text] : rows)
    {
        ASSERT_TRUE(Read(json)) << json;
        EXPECT_EQ(ScalarText(*Read(json)), text) << json;
    }
}

TEST(RegistryScalar, RefusesWhatNoValueCanBe)
{
    for (const char* json : {"{}", "[]", "0.5", "1e300", "-1e300", "18446744073709551616", "-9223372036854775809.0e1"})
    {
        EXPECT_FALSE(Read(json)) << json;
    }
}

TEST(RegistryScalar, ComparesAcrossKinds)
{
    struct Row
    {
        const char* Left;
        const char* Right;
        bool Same;
    };
    const Row rows[] = {
        {"0", "\"0\"", true},         {"0", "\"00\"", true},
        {"0", "\"zero\"", false},     {"-1", "\"-1\"", true},
        {"true", "\"true\"", true},   {"true", "\"True\"", true},
        {"true", "\"false\"", false}, {"false", "\"False\"", true},
        {"true", "1", false},         {"false", "0", false},
        {"false", "\"0\"", false},    {"\"a\"", "\"a\"", true},
        {"\"a\"", "\"A\"", false},    {"\"1\"", "\"01\"", false},
        {"null", "null", true},       {"null", "\"null\"", false},
        {"null", "0", false},         {"null", "false", false},
        {"null", "\"\"", false},      {"18446744073709551615", "\"18446744073709551615\"", true},
    };
    for (const Row& row : rows)
    {
        EXPECT_EQ(SameScalar(*Read(row.Left), *Read(row.Right)), row.Same) << row.Left << " and " << row.Right;
        EXPECT_EQ(SameScalar(*Read(row.Right), *Read(row.Left)), row.Same) << row.Right << " and " << row.Left;
    }
}

TEST(RegistryScalar, OrdersNumbersAndTextsOfNumbersAlone)
{
    EXPECT_EQ(OrderScalars(*Read("9"), *Read("\"10\"")), std::strong_ordering::less);
    EXPECT_EQ(OrderScalars(*Read("\"10\""), *Read("\"9\"")), std::strong_ordering::greater);
    EXPECT_FALSE(OrderScalars(*Read("\"a\""), *Read("\"b\"")));
    EXPECT_FALSE(OrderScalars(*Read("true"), *Read("0")));
    EXPECT_FALSE(OrderScalars(*Read("null"), *Read("0")));
}

TEST(RegistryScalar, ValueTooLargeForThePublicTypeIsNothing)
{
    EXPECT_EQ(ValueFromScalar(*Read("9223372036854775808")), std::nullopt);
    EXPECT_EQ(ValueFromScalar(*Read("9223372036854775807")), OptionalVar(std::int64_t{9223372036854775807}));
    EXPECT_EQ(ValueFromScalar(*Read("null")), std::nullopt);
}
