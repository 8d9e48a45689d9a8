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
