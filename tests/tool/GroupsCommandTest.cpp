#include "GroupsCommand.h"

#include <gtest/gtest.h>

#include <boost/json/serialize.hpp>

#include "ConfigFile.h"
#include "FakeFront.h"
#include "Options.h"

using namespace Tavrine::Tool;
using tooltest::Configured;
using tooltest::FakeFront;

namespace
{

FakeFront TwoMenus()
{
    FakeFront front("One", "Two");
    front.Groups = {{0, "", ""}, {{"Boot", {"B", "A"}}, {"Memory", {"M"}}}};
    return front;
}

} // namespace

TEST(GroupsCommand, NamesCarryThePrefixOfGroups)
{
    const Configured nothing("");
    FakeFront front = TwoMenus();
    EXPECT_EQ(ListGroups(front, {}, false).Text, "Boot\tTwo.A\nBoot\tTwo.B\nMemory\tTwo.M\n");
    EXPECT_EQ(ListGroups(front, {}, true).Text, "Boot\n  Two.A\n  Two.B\nMemory\n  Two.M\n");
}

TEST(GroupsCommand, JsonListsThem)
{
    const Configured nothing("");
    FakeFront front = TwoMenus();
    Options options;
    options.Json = true;
    EXPECT_EQ(boost::json::serialize(ListGroups(front, options, true).Data),
              R"({"Boot":["Two.A","Two.B"],"Memory":["Two.M"]})");
}

TEST(GroupsCommand, HiddenSettingsAreNotListed)
{
    const Configured configured("HIDDEN_CONFIG_KEYWORDS_LIST = '.M, .A'\n");
    FakeFront front = TwoMenus();
    EXPECT_EQ(ListGroups(front, {}, false).Text, "Boot\tTwo.B\n");
}

TEST(GroupsCommand, AFailureIsTold)
{
    FakeFront front;
    front.Groups = {{27, "", ""}, {}};
    const Answer answer = ListGroups(front, {}, false);
    EXPECT_EQ(answer.Code, 27);
    EXPECT_EQ(StderrLines(answer), "tavrine: 27 Fail to parse the HTTP response.\n");
    EXPECT_EQ(answer.Text, "");
}

TEST(GroupsCommand, NamesSelectGroupsExactlyOrAsPatterns)
{
    const Configured nothing("");
    FakeFront front;
    front.Groups = {{0, "", ""}, {{"Boot", {"A"}}, {"Boot/Legacy", {"B"}}, {"Slot [1]", {"C"}}, {"Slot 1", {"D"}}}};
    const auto listed = [&](const std::vector<std::string>& names)
    {
        Options options;
        options.Names = names;
        return ListGroups(front, options, false);
    };
    EXPECT_EQ(listed({"Boot"}).Text, "Boot\tBIOS.A\n");
    EXPECT_EQ(listed({"Boot*"}).Text, "Boot\tBIOS.A\nBoot/Legacy\tBIOS.B\n");
    EXPECT_EQ(listed({"Slot [1]"}).Text, "Slot [1]\tBIOS.C\n");
    EXPECT_EQ(listed({"Slot [12]"}).Text, "Slot 1\tBIOS.D\n");
    const Answer unknown = listed({"boot", "Slot 1", "Z*"});
    EXPECT_EQ(unknown.Code, 20);
    EXPECT_EQ(unknown.Text, "Slot 1\tBIOS.D\n");
    EXPECT_EQ(StderrLines(unknown), "tavrine: 20 Unable to find the group boot\n"
                                    "tavrine: 20 Unable to find the group Z*\n");
}

TEST(GroupsCommand, AGroupOfHiddenSettingsIsUnknown)
{
    const Configured configured("HIDDEN_CONFIG_KEYWORDS_LIST = '.M'\n");
    FakeFront front = TwoMenus();
    Options options;
    options.Names = {"Memory"};
    EXPECT_EQ(ListGroups(front, options, false).Code, 20);
}
