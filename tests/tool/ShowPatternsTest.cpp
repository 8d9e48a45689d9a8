#include "ShowCommand.h"

#include <gtest/gtest.h>

#include <boost/json/serialize.hpp>

#include "ConfigFile.h"
#include "FakeFront.h"
#include "Options.h"

using namespace Tavrine;
using namespace Tavrine::Tool;
using tooltest::Configured;
using tooltest::FakeFront;

namespace
{

using Words = std::vector<std::string>;

const RedfishConfigResult Good{0, "", ""};

Answer Show(FakeFront& front, const Words& names, bool json = false)
{
    Options options;
    options.Names = names;
    options.Json = json;
    return ShowNames(front, options, [] { return nullptr; });
}

FakeFront ThreeValues()
{
    FakeFront front("One", "Two");
    front.Group = {Good, {{"Two.ProcA", "1"}, {"Two.ProcB", "2"}, {"Two.Mem", "3"}}};
    front.Single.insert({"Mem", {Good, {{"One.Mem", "3"}}}});
    return front;
}

} // namespace

TEST(ShowPatterns, SelectFromTheGroupUnderTheNamesOfSingleSettings)
{
    const Configured nothing("");
    FakeFront front = ThreeValues();
    const Answer answer = Show(front, {"Proc*", "Mem", "*B", "one.P*A"});
    EXPECT_EQ(answer.Code, 0);
    EXPECT_EQ(answer.Text, "One.Mem=3\nOne.ProcA=1\nOne.ProcB=2\n");
    EXPECT_EQ(front.Asked, (Words{"*", "Mem"}));
}

TEST(ShowPatterns, KeepKindsAndNullsInJson)
{
    const Configured nothing("");
    FakeFront front("One", "Two");
    front.Group = {Good, {{"Two", R"({"ProcA":1,"ProcN":null,"Mem":true})"}}};
    EXPECT_EQ(boost::json::serialize(Show(front, {"Proc?"}, true).Data), R"({"One.ProcA":1,"One.ProcN":null})");
}

TEST(ShowPatterns, OneThatMatchesNothingIsNamedAndTheOthersAreShown)
{
    const Configured nothing("");
    FakeFront front = ThreeValues();
    const Answer answer = Show(front, {"Zz*", "M*"});
    EXPECT_EQ(answer.Code, 20);
    EXPECT_EQ(answer.Text, "One.Mem=3\n");
    EXPECT_EQ(StderrLines(answer), "tavrine: 20 Unable to find a setting that matches Zz*\n");
}

TEST(ShowPatterns, DoNotReachHiddenSettings)
{
    const Configured configured("HIDDEN_CONFIG_KEYWORDS_LIST = 'ProcA'\n");
    FakeFront front;
    front.Group = {Good, {{"BIOS", R"({"ProcA":1,"ProcB":2})"}}};
    EXPECT_EQ(boost::json::serialize(Show(front, {"Proc*"}, true).Data), R"({"BIOS.ProcB":2})");
    EXPECT_EQ(Show(front, {"*A"}, true).Code, 20);
}

TEST(ShowPatterns, ALostConnectionIsNotAskedAgain)
{
    const Configured nothing("");
    FakeFront front;
    front.Group = {{24, "gone", ""}, {}};
    const Answer answer = Show(front, {"A*", "B*", "C"});
    EXPECT_EQ(answer.Code, 24);
    EXPECT_EQ(StderrLines(answer), "tavrine: 24 gone\n");
    EXPECT_EQ(front.Asked, Words{"*"});
}
