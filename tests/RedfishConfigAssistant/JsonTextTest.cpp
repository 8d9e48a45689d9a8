#include "JsonText.h"

#include <gtest/gtest.h>

using namespace Tavrine;

namespace
{

std::string Nested(std::size_t depth, const std::string& open, const std::string& close)
{
    std::string text;
    for (std::size_t i = 0; i < depth; ++i)
    {
        text += open;
    }
    text += "1";
    for (std::size_t i = 0; i < depth; ++i)
    {
        text += close;
    }
    return text;
}

std::string Zeros(std::size_t count)
{
    std::string text = "[0";
    for (std::size_t i = 1; i < count; ++i)
    {
        text += ",0";
    }
    return text + "]";
}

} // namespace

TEST(JsonText, DepthIsTakenUpToTheLimit)
{
    EXPECT_EQ(LookAtJson(Nested(MaxJsonDepth, "[", "]")).Fault, "");
    EXPECT_TRUE(ParseJson(Nested(MaxJsonDepth, "[", "]")));
    for (const std::size_t depth : {MaxJsonDepth + 1, std::size_t{10'000}, std::size_t{1'000'000}})
    {
        EXPECT_EQ(LookAtJson(Nested(depth, "[", "]")).Fault, "nested deeper than 32 levels");
        EXPECT_EQ(LookAtJson(Nested(depth, "{\"a\":", "}")).Fault, "nested deeper than 32 levels");
        EXPECT_FALSE(ParseJson(Nested(depth, "[", "]")));
    }
}

TEST(JsonText, ValuesAreTakenUpToTheLimit)
{
    // The array counts itself.
    EXPECT_EQ(LookAtJson(Zeros(MaxJsonValues - 1)).Fault, "");
    EXPECT_EQ(LookAtJson(Zeros(MaxJsonValues)).Fault, "larger than 4000000 values");
}

TEST(JsonText, WhatIsNoJsonIsRefused)
{
    for (const char* text : {"", " ", "<html>", "{", "{\"a\":1", "{\"a\" 1}", "[1,]", "{} {}", "nul", "\"open",
                             "{'a':1}", "\xff\xfe", "[1]x", "\"\x01\"", "\"\xff\""})
    {
        EXPECT_NE(LookAtJson(text).Fault, "") << text;
        EXPECT_FALSE(ParseJson(text)) << text;
    }
    EXPECT_NE(LookAtJson(std::string_view("[1]\0", 4)).Fault, "");
}

TEST(JsonText, WhatIsJsonIsTaken)
{
    for (const char* text :
         {"{}", "[]", "null", " {\"a\":[1,2.5,true,null,\"x\"]} \n", "18446744073709551615", "1e308", "1e-400"})
    {
        EXPECT_EQ(LookAtJson(text).Fault, "") << text;
        EXPECT_TRUE(ParseJson(text)) << text;
    }
}

/// Read as infinite they would be written as "Infinity".
TEST(JsonText, NumbersThatNoDoubleHoldsAreRefused)
{
    for (const char* text : {"1e400", "[-1e309]", "{\"a\":99999999999999999999e300}"})
    {
        EXPECT_TRUE(LookAtJson(text).Fault.starts_with("unusable: a number is too large near byte "))
            << LookAtJson(text).Fault;
        EXPECT_FALSE(ParseJson(text)) << text;
    }
}

TEST(JsonText, AnErrorObjectIsSeenAtTheTopLevelAlone)
{
    struct Row
    {
        const char* Text;
        bool HasError;
    };
    constexpr Row rows[] = {
        {R"({"error":{}})", true},
        {R"({"a":1,"error":{"code":"x"}})", true},
        {R"({"a":{"b":1},"error":{"code":"x"},"c":2})", true},
        {R"({"error":7})", false},
        {R"({"error":[{}]})", false},
        {R"({"a":{"error":{}}})", false},
        {R"({"errors":{}})", false},
        {R"({"error":1,"a":{}})", false},
        {R"([{"error":{}}])", false},
        {R"({"err\u006fr":{}})", true},
        {R"({"":{}})", false},
    };
    for (const Row& row : rows)
    {
        EXPECT_EQ(LookAtJson(row.Text).HasError, row.HasError) << row.Text;
    }
}

TEST(JsonText, OneTextMemberIsThatOfTheDocument)
{
    struct Row
    {
        std::string Text;
        const char* Member;
    };
    const std::string deep = std::string(40, '[') + std::string(40, ']');
    const Row rows[] = {
        {R"({"a":"text"})", "text"},
        {R"({"b":{"a":"inner"},"a":"outer","c":[{"a":"inner"}]})", "outer"},
        {R"({"b":{"a":"inner"},"c":["a"]})", ""},
        {R"({"a":"first","a":"last"})", "last"},
        {R"({"a":"first","a":7})", ""},
        {R"({"a":"first","a":{"a":"inner"}})", ""},
        {R"({"a":["text"]})", ""},
        {R"({"\u0061":"es\u0063aped \u00e4"})", "escaped \xc3\xa4"},
        {R"(["a","text"])", ""},
        {R"("a")", ""},
        {R"({"a":"text"} x)", ""},
        {R"({"a":"text","b":1e400})", ""},
        {R"({"a":"text","b":)" + deep + "}", ""},
        {R"({"a":"text")", ""},
        {"", ""},
    };
    for (const Row& row : rows)
    {
        EXPECT_EQ(TextMemberOf(row.Text, "a"), row.Member) << row.Text;
        const auto document = ParseJson(row.Text);
        EXPECT_EQ(TextMember(document ? &*document : nullptr, "a"), row.Member) << row.Text;
    }
}
