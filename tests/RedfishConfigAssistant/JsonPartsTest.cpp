#include "JsonParts.h"

#include <string>

#include <boost/json/serialize.hpp>
#include <gtest/gtest.h>

#include "JsonText.h"

using namespace Tavrine;

namespace
{

Keep Rule(std::string_view parent, std::string_view name)
{
    if (name == "all")
    {
        return Keep::All;
    }
    return parent.empty() && name == "some" ? Keep::Members : Keep::Nothing;
}

std::string Kept(std::string_view text)
{
    const JsonParts parts = ParseParts(text, Rule);
    EXPECT_TRUE(parts.Fault.empty() || !parts.Document) << text;
    return parts.Document ? boost::json::serialize(*parts.Document) : "(none)";
}

} // namespace

TEST(JsonParts, WhatTheRuleNamesIsKept)
{
    struct Row
    {
        const char* Text;
        const char* Kept;
    };
    const Row rows[] = {
        {"{}", "{}"},
        {R"({"a":1,"b":[{"all":1}],"c":{"all":1}})", "{}"},
        {R"({"a":1,"all":2,"c":3})", R"({"all":2})"},
        {R"({"all":{"a":[1,-2,1.5E0,18446744073709551615,true,null,{"b":{}},[]],"":"x"},"b":"y"})",
         R"({"all":{"a":[1,-2,1.5E0,18446744073709551615,true,null,{"b":{}},[]],"":"x"}})"},
        {R"({"some":{"a":[1,{"all":2}],"all":[3],"b":{"all":4}},"a":{"some":{"all":5}}})", R"({"some":{"all":[3]}})"},
        {R"({"some":{"some":{"all":1}}})", R"({"some":{}})"},
        {R"({"some":[{"all":1}],"all":1})", R"({"some":null,"all":1})"},
        {R"({"some":"x"})", R"({"some":null})"},
        {R"({"a\u006cl":"\u0041b\n","x\n":"a\nb","all2":"c"})", R"({"all":"Ab\n"})"},
        {R"({"all":1,"all":2})", R"({"all":2})"},
        {R"({"some":{"all":1},"some":7})", R"({"some":null})"},
        {R"({"some":7,"some":{"all":1}})", R"({"some":{"all":1}})"},
        {R"([{"all":1}])", "(none)"},
        {R"("all")", "(none)"},
        {"7", "(none)"},
        {"", "(none)"},
        {R"({"all":1)", "(none)"},
        {R"({"all":1} x)", "(none)"},
        {R"({"a":1e400,"all":1})", "(none)"},
    };
    for (const Row& row : rows)
    {
        EXPECT_EQ(Kept(row.Text), row.Kept) << row.Text;
    }
}

TEST(JsonParts, DepthIsThatOfOtherReaders)
{
    for (const std::size_t inner : {MaxJsonDepth - 1, MaxJsonDepth})
    {
        const std::string text = R"({"all":)" + std::string(inner, '[') + std::string(inner, ']') + "}";
        EXPECT_EQ(Kept(text), inner == MaxJsonDepth ? "(none)" : text);
    }
}

TEST(JsonParts, WhatIsPassedOverHasNoLimit)
{
    EXPECT_EQ(Kept(R"({"a":")" + std::string(MaxPartsBytes + 1, 'x') + R"(","all":7})"), R"({"all":7})");
}

TEST(JsonParts, WhatIsKeptHasALimit)
{
    constexpr std::size_t most = MaxPartsBytes - 3 * sizeof(boost::json::value) - 3;
    for (const std::size_t size : {most, most + 1})
    {
        const JsonParts parts = ParseParts(R"({"all":")" + std::string(size, 'x') + R"(","b":1})", Rule);
        EXPECT_EQ(parts.Fault, size > most ? "too large to be read whole" : "");
        ASSERT_TRUE(parts.Document);
        EXPECT_EQ(parts.Document->get_object().size(), size > most ? 0U : 1U);
    }
}

TEST(JsonParts, WhatIsTooLargeIsCutInsideAList)
{
    std::string text = R"({"all":[[1],)";
    for (std::size_t i = 0; i < MaxPartsBytes / sizeof(boost::json::value); ++i)
    {
        text += "[],";
    }
    const JsonParts parts = ParseParts(text + R"([2]],"some":{"all":3}})", Rule);
    EXPECT_EQ(parts.Fault, "too large to be read whole");
    ASSERT_TRUE(parts.Document);
    const boost::json::object& object = parts.Document->get_object();
    EXPECT_EQ(object.size(), 1U);
    EXPECT_GT(object.at("all").get_array().size(), 1'000U);
    EXPECT_EQ(boost::json::serialize(object.at("all").get_array().front()), "[1]");
}
