#include "JsonOutput.h"

#include <gtest/gtest.h>

#include <boost/json/parse.hpp>

using namespace Tavrine::Tool;
namespace json = boost::json;

TEST(JsonDocument, SuccessSaysSoInTheStandardText)
{
    Answer answer;
    answer.Data = SettingsObject({{"BIOS.B", true}, {"BIOS.A", -5}, {"BIOS.C", nullptr}, {"BIOS.D", "t\n"}});
    EXPECT_EQ(JsonDocument(answer, "settings"),
              R"({"code":0,"message":"Succeed.","settings":{"BIOS.A":-5,"BIOS.B":true,"BIOS.C":null,"BIOS.D":"t\n"},)"
              R"("errors":[]})"
              "\n");
}

TEST(JsonDocument, FailuresStandBesideWhatWasRead)
{
    Answer answer;
    AddFailure(answer, {20, "Unable to find the setting BIOS.X", "BIOS.X", ""});
    AddFailure(answer, {26, "Fail to query the setting.", "", "No such page"});
    answer.Data = SettingsObject({{"BIOS.A", "on"}});
    EXPECT_EQ(JsonDocument(answer, "settings"),
              R"({"code":20,"message":"Unable to find the setting BIOS.X","settings":{"BIOS.A":"on"},"errors":[)"
              R"({"setting":"BIOS.X","code":20,"message":"Unable to find the setting BIOS.X"},)"
              R"({"setting":"","code":26,"message":"Fail to query the setting.","cause":"No such page"}]})"
              "\n");
}

TEST(JsonDocument, BytesThatAreNoUtf8DoNotBreakIt)
{
    Answer answer;
    AddFailure(answer, {20, "Unable to find \xFF", "BIOS.\xC3", ""});
    json::error_code failure;
    const json::value document = json::parse(JsonDocument(answer, "settings"), failure);
    ASSERT_FALSE(failure) << failure.message();
    EXPECT_EQ(document.at("message").as_string(), "Unable to find \xEF\xBF\xBD");
}

TEST(GroupsObject, NamesAreSorted)
{
    EXPECT_EQ(GroupsObject({{"G", {"BIOS.b", "BIOS.a"}}}), json::parse(R"({"G":["BIOS.a","BIOS.b"]})").as_object());
}

TEST(ReadTypedSettings, NamesGetThePrefixAndValuesKeepTheirKind)
{
    TypedSettings settings;
    EXPECT_TRUE(ReadTypedSettings(R"({"A":1,"B":"1","C":true,"D":null,"E":-9223372036854775808})", "UEFI.", settings));
    const TypedSettings expected = {
        {"UEFI.A", 1}, {"UEFI.B", "1"}, {"UEFI.C", true}, {"UEFI.D", nullptr}, {"UEFI.E", INT64_MIN}};
    EXPECT_EQ(settings, expected);
}

TEST(ReadTypedSettings, AnEmptyTextIsNoSettingsAndOtherTextsAreRefused)
{
    TypedSettings settings;
    EXPECT_TRUE(ReadTypedSettings("", "BIOS", settings));
    for (const char* text : {"[]", "1", "{", "{\"A\":1} x", "null"})
    {
        EXPECT_FALSE(ReadTypedSettings(text, "BIOS", settings)) << text;
    }
    EXPECT_TRUE(settings.empty());
}
