#include "DescribeCommand.h"

#include <gtest/gtest.h>

#include <algorithm>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include "ConfigFile.h"
#include "ConfigOptions.h"
#include "KnowingFront.h"
#include "Options.h"
#include "SmallRegistry.h"
#include "TextManager.h"

using namespace Tavrine;
using namespace Tavrine::Tool;
using tooltest::Configured;
using tooltest::KnowingFront;

namespace json = boost::json;

namespace
{

using Words = std::vector<std::string>;

const RedfishConfigResult Good{0, "", ""};

KnowingFront Machine()
{
    KnowingFront front;
    front.Registry = {Good, tooltest::SmallRegistry};
    front.Single.insert({"Mode", {Good, {{"BIOS.Mode", "Uefi"}}}});
    front.Single.insert({"Timeout", {Good, {{"BIOS.Timeout", "0x10"}}}});
    front.Single.insert({"Fixed", {{8, "no value", ""}, {}}});
    front.Single.insert({"Seal", {Good, {{"BIOS.Seal", "unbroken"}}}});
    front.PendingPairs.insert({"Mode", {Good, {{"BIOS.Mode", {"Uefi", "Legacy"}}}}});
    front.PendingPairs.insert({"Timeout", {{2, "Setting has no pending value.", ""}, {}}});
    front.PendingPairs.insert({"", {Good, {{"BIOS.Loose", {"1", "2"}}}}});
    front.Group = {Good, {{"BIOS.Mode", "Uefi"}, {"BIOS.Timeout", "0x10"}, {"BIOS.Loose", "1"}}};
    return front;
}

Answer Describe(KnowingFront& front, Options options, const Words& names,
                std::optional<std::size_t> columns = std::nullopt)
{
    options.Names = names;
    return DescribeSettings({front, tooltest::ReadTextManager, [&] { return std::make_unique<KnowingFront>(front); }},
                            options, columns);
}

Options JsonOptions()
{
    Options options;
    options.Json = true;
    return options;
}

class DescribeCommand : public ::testing::Test
{
    Configured m_NothingConfigured{""};
};

} // namespace

TEST_F(DescribeCommand, OneScreenTellsEverything)
{
    KnowingFront front = Machine();
    const Answer answer = Describe(front, {}, {"Mode"});
    EXPECT_EQ(answer.Code, 0) << StderrLines(answer);
    EXPECT_EQ(answer.Text, "BIOS.Mode\n"
                           "  Display name    Boot Mode\n"
                           "  Menu            Boot Options\n"
                           "  Type            Enumeration\n"
                           "  Value           Uefi\n"
                           "  Pending value   Legacy\n"
                           "  Default         Uefi\n"
                           "  Valid values    Uefi [UEFI Mode]; Legacy\n"
                           "  State           can be changed\n"
                           "  Help            How the system starts.\n"
                           "                  Second line.\n"
                           "  Warning         Think twice.\n"
                           "  Depends on      (none)\n"
                           "  Needed by       BIOS.Secure\n");
}

TEST_F(DescribeCommand, TheReasonOfALockIsTold)
{
    KnowingFront front = Machine();
    const Answer answer = Describe(front, {}, {"Secure", "Fixed"});
    EXPECT_NE(answer.Text.find("  State           read-only, because Mode is Legacy\n"), std::string::npos)
        << answer.Text;
    EXPECT_NE(answer.Text.find("  State           read-only, as the registry says\n"
                               "                  grayed out, as the registry says\n"),
              std::string::npos)
        << answer.Text;
    EXPECT_NE(answer.Text.find("  Depends on      BIOS.Mode\n"), std::string::npos) << answer.Text;
}

TEST_F(DescribeCommand, ValuesThatAreNotThereReadAsNone)
{
    KnowingFront front = Machine();
    const Answer answer = Describe(front, {}, {"Fixed"});
    EXPECT_EQ(answer.Code, 0);
    EXPECT_NE(answer.Text.find("  Value           (none)\n  Pending value   (none)\n  Default         (none)\n"),
              std::string::npos)
        << answer.Text;
}

TEST_F(DescribeCommand, JsonIsTyped)
{
    KnowingFront front = Machine();
    Options options = JsonOptions();
    options.Hex = true;
    const Answer answer = Describe(front, options, {"Timeout", "Mode"});
    EXPECT_EQ(answer.Data.at("BIOS.Timeout"), json::parse(R"({"value":16,"pending":null,"registered":true,
        "displayName":"Timeout","menu":"Boot Options/Deep","type":"Integer","default":5,
        "validValues":"0 to 18446744073709551615","lowerBound":0,"upperBound":18446744073709551615,
        "scalarIncrement":1,"help":null,"warning":null,"readOnly":false,"grayedOut":false,"hidden":false,
        "immutable":false,"writeOnly":false,"systemUnique":false,"protected":false,"forcedBy":{},
        "dependsOn":["BIOS.Fixed"],"neededBy":[]})"))
        << json::serialize(answer.Data);
    EXPECT_EQ(answer.Data.at("BIOS.Mode").at("pending"), "Legacy");
    EXPECT_EQ(answer.Data.at("BIOS.Mode").at("values"),
              json::parse(R"([{"name":"Uefi","displayName":"UEFI Mode"},{"name":"Legacy","displayName":""}])"));
}

TEST_F(DescribeCommand, HexadecimalIsTheNumberThatWaitsToo)
{
    KnowingFront front = Machine();
    front.PendingPairs.at("Timeout") = {Good, {{"BIOS.Timeout", {"16", "255"}}}};
    front.PendingPairs.at("Mode") = {Good, {{"BIOS.Mode", {"Uefi", "12"}}}};
    Options options;
    options.Hex = true;
    const std::string text = Describe(front, options, {"Timeout", "Mode"}).Text;
    EXPECT_NE(text.find("  Value           0x10\n  Pending value   0xFF\n  Default         5\n"), std::string::npos)
        << text;
    EXPECT_NE(text.find("  Pending value   12\n"), std::string::npos) << text;
    options.Hex = false;
    EXPECT_NE(Describe(front, options, {"Timeout"}).Text.find("  Pending value   255\n"), std::string::npos);
    options.Hex = options.Json = true;
    const Answer typed = Describe(front, options, {"Timeout"});
    EXPECT_EQ(typed.Data.at("BIOS.Timeout").at("value"), 16);
    EXPECT_EQ(typed.Data.at("BIOS.Timeout").at("pending"), 255);
}

TEST_F(DescribeCommand, ManySettingsCostOneQuestionAboutAllValues)
{
    KnowingFront front = Machine();
    const Answer answer = Describe(front, JsonOptions(), {"Mode", "Timeout", "Fixed"});
    EXPECT_EQ(answer.Code, 0);
    EXPECT_EQ(answer.Data.at("BIOS.Mode").at("value"), "Uefi");
    EXPECT_TRUE(answer.Data.at("BIOS.Fixed").at("value").is_null());
    EXPECT_EQ(std::count(front.Asked.begin(), front.Asked.end(), "*"), 1);
    EXPECT_EQ(std::count(front.Asked.begin(), front.Asked.end(), "Mode"), 0);
    front.Asked.clear();
    Describe(front, JsonOptions(), {"Mode"});
    EXPECT_EQ(std::count(front.Asked.begin(), front.Asked.end(), "*"), 0);
    EXPECT_EQ(std::count(front.Asked.begin(), front.Asked.end(), "Mode"), 1);
}

TEST_F(DescribeCommand, WithoutAnAnswerAboutAllValuesEachIsAskedFor)
{
    KnowingFront front = Machine();
    front.Group = {{26, "", ""}, {}};
    const Answer answer = Describe(front, JsonOptions(), {"Mode", "Timeout"});
    EXPECT_EQ(answer.Data.at("BIOS.Mode").at("value"), "Uefi");
}

TEST_F(DescribeCommand, JsonTellsTheReasonOfALock)
{
    KnowingFront front = Machine();
    const json::object data = Describe(front, JsonOptions(), {"Secure"}).Data;
    EXPECT_EQ(data.at("BIOS.Secure").at("forcedBy"), json::parse(R"({"ReadOnly":"Mode is Legacy"})"));
    EXPECT_EQ(data.at("BIOS.Secure").at("readOnly"), true);
    EXPECT_EQ(data.at("BIOS.Secure").at("dependsOn"), json::parse(R"(["BIOS.Mode"])"));
}

TEST_F(DescribeCommand, UnknownNamesFailAndTheOthersAreDescribed)
{
    KnowingFront front = Machine();
    const Answer answer = Describe(front, {}, {"mode", "Nowhere", "bios.Timeout", "Zz*"});
    EXPECT_EQ(answer.Code, 20);
    ASSERT_EQ(answer.Errors.size(), 3U);
    EXPECT_EQ(answer.Errors[0].Message, "Unable to find a setting that matches Zz*");
    EXPECT_EQ(answer.Errors[1].Message, "Unable to find the setting BIOS.mode. Did you mean Mode?");
    EXPECT_EQ(answer.Errors[2].Setting, "BIOS.Nowhere");
    EXPECT_EQ(answer.Text.find("BIOS.Timeout\n"), 0U) << answer.Text;
}

TEST_F(DescribeCommand, AValueThatIsInNoRegistryIsShown)
{
    KnowingFront front = Machine();
    EXPECT_EQ(Describe(front, {}, {"Loose"}).Text, "BIOS.Loose\n"
                                                   "  Value           1\n"
                                                   "  Pending value   2\n"
                                                   "                  The attribute registry does not describe this "
                                                   "setting.\n");
    EXPECT_EQ(json::serialize(Describe(front, JsonOptions(), {"Loose"}).Data),
              R"({"BIOS.Loose":{"value":"1","pending":"2","registered":false}})");
}

TEST_F(DescribeCommand, WhetherTheBmcHasANameIsNotKnownWhereItCannotBeAsked)
{
    for (const int code : {24, 32, 33, 26})
    {
        KnowingFront front = Machine();
        front.Group = {{code, "gone", ""}, {}};
        EXPECT_EQ(Describe(front, {}, {"Nowhere"}).Code, code == 26 ? 20 : code);
        front = Machine();
        front.PendingPairs.insert_or_assign("", std::pair(RedfishConfigResult(code, "gone", ""), SettingCompareMap()));
        EXPECT_EQ(Describe(front, {}, {"Nowhere"}).Code, code == 26 ? 20 : code);
    }
}

TEST_F(DescribeCommand, WhatWaitsOfAValueInNoRegistryMayBeUnknown)
{
    KnowingFront front = Machine();
    front.PendingPairs.insert_or_assign("", std::pair(RedfishConfigResult(26, "gone", ""), SettingCompareMap()));
    EXPECT_EQ(Describe(front, {}, {"Loose"}).Text.find("Pending value   (unknown: gone)"),
              std::string("BIOS.Loose\n  Value           1\n  ").size());
}

TEST_F(DescribeCommand, ProtectedValuesAreAskedForOnlyWhenThatIsAllowed)
{
    KnowingFront front = Machine();
    Options options;
    options.SystemType = SystemTypeUefi;
    const Answer forbidden = Describe(front, options, {"Seal"});
    EXPECT_EQ(forbidden.Code, 0);
    EXPECT_NE(forbidden.Text.find("(unknown: protected; give --protected)"), std::string::npos) << forbidden.Text;
    EXPECT_EQ(forbidden.Text.find("unbroken"), std::string::npos);
    EXPECT_EQ(front.Asked, Words{"registry"});
    options.Protected = true;
    EXPECT_NE(Describe(front, options, {"Seal"}).Text.find("Value           unbroken"), std::string::npos);
}

TEST_F(DescribeCommand, PendingValuesThatCannotBeReadAreUnknown)
{
    KnowingFront front = Machine();
    front.PendingPairs.insert_or_assign("Mode", std::pair(RedfishConfigResult(26, "", ""), SettingCompareMap()));
    const Answer answer = Describe(front, {}, {"Mode"});
    EXPECT_EQ(answer.Code, 0);
    EXPECT_NE(answer.Text.find("Pending value   (unknown: Fail to query the setting.)"), std::string::npos);
}

TEST_F(DescribeCommand, OfAPasswordNobodyKnowsWhatWaits)
{
    KnowingFront front = Machine();
    for (const RedfishConfigResult& all :
         {Good, RedfishConfigResult(2, "Setting has no pending value.", ""), RedfishConfigResult(20, "", "")})
    {
        front.PendingPairs.insert_or_assign("", std::pair(all, SettingCompareMap()));
        const Answer answer = Describe(front, {}, {"Lock"});
        EXPECT_EQ(answer.Code, 0) << StderrLines(answer);
        EXPECT_NE(answer.Text.find("  Value           (none)\n  Pending value   (unknown: it is a password)\n"),
                  std::string::npos)
            << answer.Text;
    }
    front.PendingPairs.insert_or_assign("", std::pair(RedfishConfigResult(24, "gone", ""), SettingCompareMap()));
    EXPECT_NE(Describe(front, {}, {"Lock"}).Text.find("Pending value   (unknown: gone)"), std::string::npos);
}

TEST_F(DescribeCommand, WhereNothingIsPendingItIsAskedOnce)
{
    for (const int code : {2, 26})
    {
        KnowingFront front = Machine();
        front.PendingPairs.insert_or_assign("", std::pair(RedfishConfigResult(code, "", ""), SettingCompareMap()));
        const Answer answer = Describe(front, {}, {"Mode", "Timeout", "Fixed"});
        EXPECT_EQ(answer.Code, 0);
        EXPECT_EQ(std::count_if(front.Asked.begin(), front.Asked.end(),
                                [](const std::string& asked) { return asked.starts_with("pending "); }),
                  1);
        EXPECT_EQ(answer.Text.find("Legacy\n  Default"), std::string::npos) << answer.Text;
    }
}

TEST_F(DescribeCommand, ALostConnectionIsAFailure)
{
    KnowingFront front = Machine();
    front.Single.insert_or_assign("Mode", std::pair(RedfishConfigResult(24, "gone", ""), SettingStringMap()));
    EXPECT_EQ(Describe(front, {}, {"Mode"}).Code, 24);
    front.Registry = {{33, "busy", ""}, ""};
    EXPECT_EQ(Describe(front, {}, {"Mode"}).Code, 33);
    front.Registry = {Good, "{}"};
    EXPECT_EQ(Describe(front, {}, {"Mode"}).Code, 27);
    front.Registry = {Good, ""};
    EXPECT_EQ(Describe(front, {}, {"Mode"}).Code, 26);
}

TEST_F(DescribeCommand, LongTextsAreWrappedToTheTerminal)
{
    KnowingFront front = Machine();
    const std::string text = Describe(front, {}, {"Mode"}, 32).Text;
    EXPECT_NE(text.find("  Valid values    Uefi [UEFI\n"
                        "                  Mode]; Legacy\n"),
              std::string::npos)
        << text;
}

TEST_F(DescribeCommand, OptionsOfTheObjectAreLeftAsTheyWere)
{
    KnowingFront front = Machine();
    Describe(front, {}, {"Mode"});
    EXPECT_EQ(front.m_Options.OutputFormat, 0);
}

TEST(DescribeHidden, KeywordsHideInPatternsAndRelationsAlone)
{
    const Configured configured("HIDDEN_CONFIG_KEYWORDS_LIST = 'Mode, Time'\n");
    KnowingFront front = Machine();
    const Answer answer = Describe(front, {}, {"Secure"});
    EXPECT_NE(answer.Text.find("  Depends on      (none)\n"), std::string::npos) << answer.Text;
    EXPECT_EQ(Describe(front, {}, {"Mo*"}).Code, 20);
    EXPECT_EQ(Describe(front, {}, {"Mode"}).Code, 0);
}
