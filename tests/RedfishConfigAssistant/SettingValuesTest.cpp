#include "SettingValues.h"

#include <boost/json/parse.hpp>
#include <gtest/gtest.h>

#include "Logging.h"
#include "SharedData.h"
#include "TestServer.h"

using namespace Tavrine;
using resttest::Fails;
using resttest::HasCode;

TEST(SettingValues, KindsOfValues)
{
    SettingValueMap values{{"Old", true}};
    EXPECT_THAT(ReadSettingValues(R"({"Attributes":{"Text":"x","Empty":"","Number":-7,"Yes":true,"Nothing":null,
                                      "Max":9223372036854775807,"Min":-9223372036854775808}})",
                                  values),
                HasCode(0));
    const SettingValueMap expected = {{"Text", "x"},
                                      {"Empty", ""},
                                      {"Number", std::int64_t{-7}},
                                      {"Yes", true},
                                      {"Nothing", std::nullopt},
                                      {"Max", std::int64_t{INT64_MAX}},
                                      {"Min", std::int64_t{INT64_MIN}}};
    EXPECT_EQ(values, expected);
}

TEST(SettingValues, OtherKindsArePassedOverWithALine)
{
    const CapturingLogSink sink;
    SettingValueMap values;
    EXPECT_THAT(ReadSettingValues(R"({"Attributes":{"List":[1],"Object":{},"Half":0.5,"Huge":9223372036854775808,
                                      "Huger":99999999999999999999,"Kept":1}})",
                                  values),
                HasCode(0));
    ASSERT_EQ(values.size(), 1U);
    EXPECT_EQ(values.begin()->first, "Kept");
    ASSERT_EQ(sink.Records().size(), 5U);
    EXPECT_EQ(sink.Records()[0].Level, 4U);
    EXPECT_NE(sink.Records()[0].Text.find("List"), std::string::npos);
}

TEST(SettingValues, OfOneNameTheLastCountsWhereTheFirstStands)
{
    struct Row
    {
        const char* Attributes;
        SettingValueMap Expected;
        const char* Key;
        std::size_t Lines;
    };
    const Row rows[] = {
        {R"({"A":1,"B":2,"A":3})", {{"A", std::int64_t{3}}, {"B", std::int64_t{2}}}, "A", 0},
        {R"({"A":1,"a":2})", {{"A", std::int64_t{2}}}, "A", 0},
        {R"({"A":1,"a":2,"A":3})", {{"A", std::int64_t{2}}}, "A", 0},
        {R"({"A":1,"A":[]})", {}, "", 1},
        {R"({"A":1,"a":2,"A":{"A":4}})", {{"a", std::int64_t{2}}}, "a", 1},
        {R"({"A":[1,{"A":2}],"A":3})", {{"A", std::int64_t{3}}}, "A", 0},
    };
    for (const Row& row : rows)
    {
        const CapturingLogSink sink;
        SettingValueMap values;
        EXPECT_THAT(ReadSettingValues(std::string(R"({"Attributes":)") + row.Attributes + "}", values), HasCode(0));
        EXPECT_EQ(values, row.Expected) << row.Attributes;
        EXPECT_EQ(values.empty() ? "" : values.begin()->first, row.Key) << row.Attributes;
        EXPECT_EQ(sink.Records().size(), row.Lines) << row.Attributes;
    }
}

TEST(SettingValues, AttributesOfTheTopLevelAlone)
{
    for (const char* text :
         {R"([{"Attributes":{"A":1}}])", R"([{"Attributes":1},{"A":1}])", R"([[{"Attributes":{"A":1}},{"A":1}]])",
          R"({"Oem":{"Attributes":{"A":1}}})", R"({"Oem":{"Attributes":1,"x":{"A":1}}})",
          R"({"Attributes":{"A":1},"Attributes":2})", R"({"Attributes":{"A":1},"Attributes":["A"]})"})
    {
        SettingValueMap values;
        EXPECT_THAT(ReadSettingValues(text, values), Fails(27, "no object \"Attributes\"")) << text;
    }
    for (const char* text :
         {R"({"Attributes":{"B":2},"Attributes":{"A":1}})", R"({"Attributes":[],"Attributes":{"A":1}})",
          R"({"x":[{"Attributes":3}],"Attributes":{"A":1},"y":{"B":2},"z":"B"})", R"({"Attributes":{"A":1}})",
          R"({"\u0041ttributes":{"\u0041":1}})"})
    {
        SettingValueMap values;
        EXPECT_THAT(ReadSettingValues(text, values), HasCode(0)) << text;
        EXPECT_EQ(values, (SettingValueMap{{"A", std::int64_t{1}}})) << text;
    }
}

TEST(SettingValues, NamesAndTextsWithEscapes)
{
    SettingValueMap values;
    EXPECT_THAT(ReadSettingValues(R"({"Attributes":{"a\tb\u00e9":"x\n\"y","c":"\\"}})", values), HasCode(0));
    EXPECT_EQ(values, (SettingValueMap{{"a\tb\u00e9", "x\n\"y"}, {"c", "\\"}}));
}

TEST(SettingValues, FailureKeepsTheMap)
{
    for (const char* text : {"", "nonsense", "{}", "[]", "null", R"({"Attributes":[]})", R"({"Attributes":null})",
                             R"({"attributes":{}})", R"({"Attributes":{})"})
    {
        SettingValueMap values{{"Old", true}};
        EXPECT_THAT(ReadSettingValues(text, values), Fails(27, "cannot be read")) << text;
        EXPECT_EQ(values, (SettingValueMap{{"Old", true}})) << text;
    }
}

TEST(SettingValues, NoAttributesAtAllIsASuccess)
{
    SettingValueMap values{{"Old", true}};
    EXPECT_THAT(ReadSettingValues(R"({"Attributes":{}})", values), HasCode(0));
    EXPECT_TRUE(values.empty());
}

TEST(SettingValues, RealMachines)
{
    if (testdata::Machines().empty())
    {
        GTEST_SKIP() << "no answers of real machines beside this checkout";
    }
    for (const auto& machine : testdata::Machines())
    {
        const std::string text = testdata::ReadFile(machine / "bios.json");
        SettingValueMap values;
        EXPECT_THAT(ReadSettingValues(text, values), HasCode(0)) << machine;
        EXPECT_EQ(values.size(), boost::json::parse(text).at("Attributes").as_object().size()) << machine;
    }
}

TEST(SettingValues, NewValueTakesTheKindOfTheValueInForce)
{
    struct Row
    {
        OptionalVar Current;
        const char* Value;
        int Code;
        const char* Text;
    };
    const Row rows[] = {{std::int64_t{1}, "25", 0, "25"}, {std::int64_t{1}, "x", 10, ""}, {true, "false", 0, "false"},
                        {true, "maybe", 10, ""},          {"a", "25", 0, "\"25\""},       {"a", "q\"", 0, "\"q\\\"\""},
                        {std::nullopt, "25", 0, "\"25\""}};
    for (const Row& row : rows)
    {
        std::string text;
        RedfishConfigResult result = MakeValueText("Name", row.Value, row.Current, text);
        EXPECT_THAT(result, HasCode(row.Code)) << row.Value;
        EXPECT_EQ(text, row.Text) << row.Value;
        EXPECT_EQ(result.ErrorSetting(), row.Code == 0 ? "" : "Name");
    }
}
