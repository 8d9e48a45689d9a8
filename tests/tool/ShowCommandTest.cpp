#include "ShowCommand.h"

#include <gtest/gtest.h>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include "ConfigFile.h"
#include "FakeFront.h"
#include "Log.h"
#include "Options.h"

using namespace Tavrine;
using namespace Tavrine::Tool;
using tooltest::Configured;
using tooltest::FakeFront;

namespace json = boost::json;

namespace
{

const RedfishConfigResult Good{0, "", ""};

std::unique_ptr<RedfishConfigProc> NoFreshFront()
{
    ADD_FAILURE() << "a second front object was asked for";
    return nullptr;
}

Answer Show(FakeFront& front, Options options, const std::vector<std::string>& names = {})
{
    options.Names = names;
    return names.empty() ? ShowAll(front, options) : ShowNames(front, options, NoFreshFront);
}

Options JsonOptions()
{
    Options options;
    options.Json = true;
    return options;
}

class ShowCommand : public ::testing::Test
{
    Configured m_NothingConfigured{""};
};

} // namespace

TEST_F(ShowCommand, AllSettingsAreALineEach)
{
    FakeFront front;
    front.Group = {Good, {{"BIOS.B", "x\n"}, {"BIOS.A", "1"}}};
    const Answer answer = Show(front, {});
    EXPECT_EQ(answer.Code, 0);
    EXPECT_EQ(answer.Text, "BIOS.A=1\nBIOS.B=x\\n\n");
    EXPECT_TRUE(answer.Data.empty());
}

TEST_F(ShowCommand, JsonKeepsKindsAndNulls)
{
    FakeFront front("BIOS", "All");
    front.Group = {Good, {{"All", R"({"B":"1","A":1,"C":null,"D":false})"}}};
    const Answer answer = Show(front, JsonOptions());
    EXPECT_EQ(json::serialize(answer.Data), R"({"All.A":1,"All.B":"1","All.C":null,"All.D":false})");
    EXPECT_EQ(answer.Text, "");
}

TEST_F(ShowCommand, AnEmptyGroupIsAnEmptyObject)
{
    FakeFront front;
    for (const tooltest::SettingStringMap& given :
         {tooltest::SettingStringMap{{"BIOS", ""}}, tooltest::SettingStringMap{}})
    {
        front.Group = {Good, given};
        const Answer answer = Show(front, JsonOptions());
        EXPECT_EQ(answer.Code, 0);
        EXPECT_TRUE(answer.Data.empty());
    }
}

TEST_F(ShowCommand, AFailedGroupTellsTheCause)
{
    class LoggingFront : public FakeFront
    {
      public:
        RedfishConfigResult QueryGroupSettingValues(tooltest::SettingStringMap&) override
        {
            Log(1, "x.cpp", 1).Stream() << "Failed in get current value map though: HTTP 404";
            return {26, "", ""};
        }
    } front;
    const Answer answer = Show(front, JsonOptions());
    EXPECT_EQ(answer.Code, 26);
    EXPECT_EQ(answer.Message, "Fail to query the setting.");
    ASSERT_EQ(answer.Errors.size(), 1U);
    EXPECT_EQ(answer.Errors[0].Cause, "HTTP 404");
    EXPECT_TRUE(answer.Data.empty());
}

TEST_F(ShowCommand, TextThatIsNoJsonIsAnInternalError)
{
    FakeFront front;
    front.Group = {Good, {{"BIOS", "{"}}};
    EXPECT_EQ(Show(front, JsonOptions()).Code, 13);
}

TEST_F(ShowCommand, NamesAreAskedForBareAndOnce)
{
    FakeFront front("One", "Two");
    front.Single.insert({"B", {Good, {{"One.B", "2"}}}});
    front.Single.insert({"A", {Good, {{"One.A", "1"}}}});
    const Answer answer = Show(front, {}, {"B", "one.A", "TWO.B", "A"});
    EXPECT_EQ(answer.Text, "One.A=1\nOne.B=2\n");
    EXPECT_EQ(front.Asked, (std::vector<std::string>{"B", "A"}));
}

TEST_F(ShowCommand, JsonOfANameIsUnderTheFirstPrefix)
{
    FakeFront front("One", "Two");
    front.Single.insert({"A", {Good, {{"Two", R"({"A":16})"}}}});
    EXPECT_EQ(json::serialize(Show(front, JsonOptions(), {"A"}).Data), R"({"One.A":16})");
}

TEST_F(ShowCommand, EachFailureIsToldAndTheOthersAreShown)
{
    FakeFront front;
    front.Group = {Good, {}};
    front.Single.insert({"A", {Good, {{"BIOS.A", "1"}}}});
    front.Single.insert({"H", {{34, "The operation on setting H fails since it is hidden.", ""}, {}}});
    front.Single.insert({"N", {{13, "", ""}, {}}});
    const Answer answer = Show(front, {}, {"H", "X", "A", "N"});
    EXPECT_EQ(answer.Code, 34);
    EXPECT_EQ(answer.Text, "BIOS.A=1\n");
    ASSERT_EQ(answer.Errors.size(), 3U);
    EXPECT_EQ(answer.Errors[0].Setting, "BIOS.H");
    EXPECT_EQ(answer.Errors[1].Message, "Unable to find the setting BIOS.X");
    EXPECT_EQ(answer.Errors[2].Message, "BIOS.N: Redfish config internal error.");
}

TEST_F(ShowCommand, AValueOutsideTheRegistryIsTakenFromTheGroup)
{
    FakeFront front("One", "Two");
    front.Group = {Good, {{"Two.Loose", "0x10"}, {"Two.Other", "2"}}};
    const Answer answer = Show(front, {}, {"Loose", "Other"});
    EXPECT_EQ(answer.Code, 0);
    EXPECT_EQ(answer.Text, "One.Loose=0x10\nOne.Other=2\n");
    EXPECT_EQ(front.Asked, (std::vector<std::string>{"Loose", "*", "Other"}));
}

TEST_F(ShowCommand, ATypedValueOutsideTheRegistryIsTakenFromTheGroup)
{
    FakeFront front("One", "Two");
    front.Group = {Good, {{"Two", R"({"Loose":16,"Null":null})"}}};
    const Answer answer = Show(front, JsonOptions(), {"Loose", "Null", "Missing"});
    EXPECT_EQ(json::serialize(answer.Data), R"({"One.Loose":16})");
    EXPECT_EQ(answer.Code, 20);
    EXPECT_EQ(answer.Errors.size(), 2U);
}

TEST_F(ShowCommand, AFreshObjectGivesTheGroupWhereTheUsedOneCannot)
{
    FakeFront front;
    front.Group = {{26, "", ""}, {}};
    Options options;
    options.Names = {"Loose", "Loose2"};
    int made = 0;
    const Answer answer = ShowNames(front, options,
                                    [&]
                                    {
                                        ++made;
                                        auto fresh = std::make_unique<FakeFront>();
                                        fresh->Group = {Good, {{"BIOS.Loose", "1"}, {"BIOS.Loose2", "2"}}};
                                        return fresh;
                                    });
    EXPECT_EQ(answer.Text, "BIOS.Loose=1\nBIOS.Loose2=2\n");
    EXPECT_EQ(made, 1);
}

TEST_F(ShowCommand, OnlyAnUnknownNameIsLookedUpInTheGroup)
{
    FakeFront front;
    front.Group = {Good, {{"BIOS.A", "secret"}}};
    front.Single.insert({"A", {{34, "hidden", ""}, {}}});
    EXPECT_EQ(Show(front, {}, {"A"}).Code, 34);
    EXPECT_EQ(front.Asked, (std::vector<std::string>{"A"}));
}

TEST_F(ShowCommand, WhetherTheBmcHasANameIsNotKnownWhereItCannotBeAsked)
{
    for (const int code : {24, 33})
    {
        FakeFront front;
        front.Group = {{code, "gone", ""}, {}};
        const Answer answer = Show(front, {}, {"Unregistered", "B"});
        EXPECT_EQ(answer.Code, code);
        EXPECT_EQ(front.Asked, (std::vector<std::string>{"Unregistered", "*"}));
        EXPECT_EQ(StderrLines(answer), "tavrine: " + std::to_string(code) + " gone\n");
    }
    FakeFront front;
    front.Group = {{26, "no values", ""}, {}};
    Options options;
    options.Names = {"Unregistered"};
    EXPECT_EQ(ShowNames(front, options, [] { return nullptr; }).Code, 20);
    front.Group = {{32, "failed", ""}, {}};
    EXPECT_EQ(ShowNames(front, options, [] { return nullptr; }).Code, 32);
}

TEST_F(ShowCommand, AfterALostConnectionNobodyIsAskedAgain)
{
    for (const int code : {24, 33})
    {
        FakeFront front;
        front.Single.insert({"A", {{code, "gone", ""}, {}}});
        const Answer answer = Show(front, {}, {"A", "B", "C"});
        EXPECT_EQ(answer.Code, code);
        EXPECT_EQ(front.Asked, (std::vector<std::string>{"A"}));
        ASSERT_EQ(answer.Errors.size(), 3U);
        EXPECT_EQ(answer.Errors[2].Setting, "BIOS.C");
        EXPECT_EQ(StderrLines(answer), "tavrine: " + std::to_string(code) + " gone\n");
    }
}

TEST_F(ShowCommand, MissingOemActionsNameTheOption)
{
    struct Row
    {
        int Code;
        const char* Message;
        bool Hinted;
    };
    const Row rows[] = {
        {28, "POST /x/ZorvanBios.GetProtectedAttributes was refused by h (404 Not Found).", true},
        {28, "POST /x/ZorvanBios.GetProtectedAttributes was refused by h (405 Method Not Allowed).", true},
        {32, "POST /x/ZorvanBios.GetProtectedAttributes failed inside h (501 Not Implemented).", true},
        {28, "POST /x/ZorvanBios.GetProtectedAttributes was refused by h (400 Bad Request).", false},
        {26, "GET /redfish/v1/Systems/1/Bios was refused by h (404 Not Found).", false},
    };
    for (const Row& row : rows)
    {
        FakeFront front;
        front.Single.insert({"P", {{row.Code, row.Message, ""}, {}}});
        const Answer answer = Show(front, {}, {"P"});
        EXPECT_EQ(StderrLines(answer).find("--system-type bios") != std::string::npos, row.Hinted) << row.Message;
    }
}

TEST_F(ShowCommand, OldNamesKeepTheirNamesUnderForeignPrefixesInJsonToo)
{
    FakeFront foreign("Srv", "Srv");
    foreign.Single.insert({"Old", {Good, {{"Srv", R"({"New":1})"}}}});
    Options options = JsonOptions();
    options.LegacyNames = true;
    EXPECT_EQ(json::serialize(Show(foreign, options, {"Old"}).Data), R"({"Old":1})");

    FakeFront standard("Bios", "Bios");
    standard.Single.insert({"Old", {Good, {{"Bios", R"({"New":1})"}}}});
    EXPECT_EQ(json::serialize(Show(standard, options, {"Old"}).Data), R"({"Bios.New":1})");
}

TEST(HiddenSettings, KeywordsHideNamesInJsonToo)
{
    const Configured configured("HIDDEN_CONFIG_KEYWORDS_LIST = '\"Raid Card\", Slot'\n");
    FakeFront front;
    front.Group = {Good, {{"BIOS", R"({"RaidCard1":1,"SlotA":2,"slotB":3})"}}};
    EXPECT_EQ(json::serialize(Show(front, JsonOptions()).Data), R"({"BIOS.slotB":3})");
    EXPECT_EQ(Show(front, JsonOptions(), {"SlotA"}).Code, 20);
}

TEST(HiddenSettings, AnEmptyKeywordHidesEverything)
{
    const Configured configured("HIDDEN_CONFIG_KEYWORDS_LIST = 'X,'\n");
    FakeFront front;
    front.Group = {Good, {{"BIOS", R"({"A":1})"}}};
    const Answer answer = Show(front, JsonOptions());
    EXPECT_EQ(answer.Code, 0);
    EXPECT_TRUE(answer.Data.empty());
}
