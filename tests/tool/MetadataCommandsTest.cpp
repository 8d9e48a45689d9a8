#include "MetadataCommands.h"

#include <gtest/gtest.h>

#include <boost/json/serialize.hpp>

#include "ConfigFile.h"
#include "KnowingFront.h"
#include "Options.h"
#include "TextManager.h"

using namespace Tavrine::Tool;
using tooltest::KnowingFront;

namespace
{

using Words = std::vector<std::string>;

const RedfishConfigResult Good{0, "", ""};
const RedfishConfigResult Partly{7, "1 of 3 settings are missing.", ""};

Options Named(const Words& names, bool json = false)
{
    Options options;
    options.Names = names;
    options.Json = json;
    return options;
}

/// Three settings, the third without a default.
KnowingFront ThreeSettings()
{
    KnowingFront front("One", "Two");
    front.Registry = {Good, R"({"RegistryEntries":{"Attributes":[
        {"AttributeName":"ProcA","Type":"Integer","DefaultValue":1},
        {"AttributeName":"MemB","Type":"String","DefaultValue":"x\n"},
        {"AttributeName":"ProcC","Type":"String"}]}})"};
    front.Defaults.insert({"", {Partly, {{"Two.ProcA", "1"}, {"Two.MemB", "x\n"}}}});
    front.Defaults.insert({"ProcA", {Good, {{"One.ProcA", "1"}}}});
    front.Defaults.insert({"ProcC", {{21, "The setting One.ProcC has no default value.", ""}, {}}});
    front.Descriptions.insert({"", {Good, {{"Two.ProcA", "A"}, {"Two.MemB", "B"}, {"Two.ProcC", "C"}}}});
    return front;
}

Answer Defaults(KnowingFront& front, const Options& options)
{
    return ListDefaults(front, options, tooltest::ReadTextManager);
}

Answer Values(KnowingFront& front, const Options& options)
{
    return ListValues(front, options, tooltest::ReadTextManager);
}

} // namespace

TEST(MetadataCommands, AllAreUnderTheSecondPrefixAndWhatIsMissingIsANote)
{
    KnowingFront front = ThreeSettings();
    const Answer answer = Defaults(front, {});
    EXPECT_EQ(answer.Code, 0);
    EXPECT_TRUE(answer.Errors.empty());
    EXPECT_EQ(answer.Text, "Two.MemB=x\\n\nTwo.ProcA=1\n");
    EXPECT_EQ(answer.Notes, Words{"note: 1 of 3 settings have no default value"});
}

TEST(MetadataCommands, JsonHoldsTheTexts)
{
    KnowingFront front = ThreeSettings();
    EXPECT_EQ(boost::json::serialize(Defaults(front, Named({}, true)).Data), R"({"Two.MemB":"x\n","Two.ProcA":"1"})");
}

TEST(MetadataCommands, ValuesAreListedInTheSameWay)
{
    KnowingFront front;
    front.ValidValues.insert({"", {Good, {{"BIOS.A", "On; Off"}}}});
    front.ValidValues.insert({"B", {Good, {{"BIOS.B", "0 to 5"}}}});
    EXPECT_EQ(Values(front, {}).Text, "BIOS.A=On; Off\n");
    EXPECT_TRUE(Values(front, {}).Notes.empty());
    EXPECT_EQ(Values(front, Named({"B"})).Text, "BIOS.B=0 to 5\n");
    EXPECT_EQ(front.Asked, (Words{"values *", "values *", "values B"}));
}

TEST(MetadataCommands, ANamedSettingFailsForItself)
{
    KnowingFront front = ThreeSettings();
    const Answer answer = Defaults(front, Named({"ProcC", "one.ProcA", "Two.ProcA", "Nowhere"}));
    EXPECT_EQ(answer.Code, 21);
    EXPECT_EQ(answer.Text, "One.ProcA=1\n");
    ASSERT_EQ(answer.Errors.size(), 2U);
    EXPECT_EQ(answer.Errors[0].Setting, "One.ProcC");
    EXPECT_EQ(answer.Errors[1].Code, 20);
    EXPECT_EQ(StderrLines(answer), "tavrine: 21 The setting One.ProcC has no default value.\n"
                                   "tavrine: 20 Unable to find the setting One.Nowhere\n");
    EXPECT_TRUE(answer.Notes.empty());
    // Each question about a single one would cost a model of the registry.
    EXPECT_EQ(front.Asked, (Words{"defaults *", "registry"}));
}

TEST(MetadataCommands, OneNamedSettingIsAskedForByItself)
{
    for (const Words& names : {Words{"ProcA"}, Words{"ProcA", "two.ProcA"}})
    {
        KnowingFront front = ThreeSettings();
        EXPECT_EQ(Defaults(front, Named(names)).Text, "One.ProcA=1\n");
        EXPECT_EQ(front.Asked, Words{"defaults ProcA"});
    }
}

TEST(MetadataCommands, SeveralSettingsAndAPatternShareOneAnswer)
{
    KnowingFront front = ThreeSettings();
    EXPECT_EQ(Defaults(front, Named({"M*", "ProcA", "MemB"})).Text, "One.MemB=x\\n\nOne.ProcA=1\n");
    EXPECT_EQ(std::count(front.Asked.begin(), front.Asked.end(), "defaults *"), 1);
}

TEST(MetadataCommands, WhatTheSharedAnswerLacksIsAskedForWhereNothingElseTellsWhy)
{
    const Words apart = {"defaults *", "registry", "defaults ProcC", "defaults ProcA"};
    {
        KnowingFront front = ThreeSettings(); // without a registry
        front.Registry = {{26, "", ""}, ""};
        front.Defaults.at("").second.erase("Two.ProcA");
        EXPECT_EQ(Defaults(front, Named({"ProcC", "ProcA"})).Code, 21);
        EXPECT_EQ(front.Asked, apart);
    }
    KnowingFront front = ThreeSettings(); // with a hidden setting, which has a default
    front.Defaults.at("").second.erase("Two.ProcA");
    const Answer answer = Defaults(front, Named({"ProcC", "ProcA"}));
    EXPECT_EQ(answer.Text, "One.ProcA=1\n");
    EXPECT_EQ(front.Asked, (Words{"defaults *", "registry", "defaults ProcA"}));
}

TEST(MetadataCommands, AHiddenSettingIsAskedForByItself)
{
    const tooltest::Configured hidden("HIDDEN_CONFIG_KEYWORDS_LIST = \"ProcC\"\n");
    KnowingFront front = ThreeSettings();
    front.Defaults.insert_or_assign("ProcC", std::pair(Good, tooltest::SettingStringMap{{"One.ProcC", "y"}}));
    EXPECT_EQ(Defaults(front, Named({"ProcC", "ProcA"})).Text, "One.ProcA=1\nOne.ProcC=y\n");
}

TEST(MetadataCommands, OldNamesAreAskedForOneByOne)
{
    KnowingFront front = ThreeSettings();
    front.m_Options.LegacyNameMode = true;
    front.Defaults.insert({"Old", {Good, {{"One.Old", "z"}}}});
    EXPECT_EQ(Defaults(front, Named({"Old", "ProcA"})).Text, "One.Old=z\nOne.ProcA=1\n");
    EXPECT_EQ(front.Asked, (Words{"defaults Old", "defaults ProcA"}));
}

TEST(MetadataCommands, ALostConnectionEndsTheNames)
{
    KnowingFront front = ThreeSettings();
    front.Defaults.insert_or_assign("", std::pair(RedfishConfigResult{24, "gone", ""}, tooltest::SettingStringMap{}));
    const Answer answer = Defaults(front, Named({"ProcA", "ProcC"}));
    EXPECT_EQ(answer.Errors.size(), 2U);
    EXPECT_EQ(StderrLines(answer), "tavrine: 24 gone\n");
    EXPECT_EQ(front.Asked, Words{"defaults *"});
}

TEST(MetadataCommands, PatternsSelectFromOneGroupAnswer)
{
    KnowingFront front = ThreeSettings();
    const Answer answer = Defaults(front, Named({"Proc*", "Mem*", "ProcA"}));
    EXPECT_EQ(answer.Code, 0);
    EXPECT_EQ(answer.Text, "One.MemB=x\\n\nOne.ProcA=1\n");
    EXPECT_EQ(answer.Notes, Words{"note: 1 of 3 settings have no default value"});
    EXPECT_EQ(std::count(front.Asked.begin(), front.Asked.end(), "defaults *"), 1);
}

TEST(MetadataCommands, APatternOverSettingsWithoutADefaultIsNoFailure)
{
    KnowingFront front = ThreeSettings();
    const Answer answer = Defaults(front, Named({"*C"}));
    EXPECT_EQ(answer.Code, 0);
    EXPECT_EQ(answer.Text, "");
    EXPECT_EQ(answer.Notes, Words{"note: 1 of 1 settings have no default value"});
}

TEST(MetadataCommands, APatternThatMatchesNothingIsNamed)
{
    KnowingFront front = ThreeSettings();
    const Answer answer = Defaults(front, Named({"Zz*", "Mem*"}));
    EXPECT_EQ(answer.Code, 20);
    EXPECT_EQ(answer.Message, "Unable to find a setting that matches Zz*");
    EXPECT_EQ(answer.Text, "One.MemB=x\\n\n");
}

TEST(MetadataCommands, BareKeysOfOldNamesStayBare)
{
    KnowingFront front("Srv", "Srv");
    front.Defaults.insert({"", {Good, {{"ProcA", "1"}, {"MemB", "2"}}}});
    EXPECT_EQ(Defaults(front, {}).Text, "MemB=2\nProcA=1\n");
    EXPECT_EQ(Defaults(front, Named({"Proc*"})).Text, "ProcA=1\n");
}

TEST(MetadataCommands, AFailedGroupIsToldOnceAndTheNamesBehindItAreNotAskedFor)
{
    for (const int code : {24, 33})
    {
        KnowingFront front;
        front.Defaults.insert({"", {{code, "gone", ""}, {}}});
        const Answer answer = Defaults(front, Named({"A*", "B*", "C"}));
        EXPECT_EQ(answer.Code, code);
        EXPECT_EQ(StderrLines(answer), "tavrine: " + std::to_string(code) + " gone\n");
        EXPECT_EQ(front.Asked, Words{"defaults *"});
        EXPECT_EQ(Defaults(front, {}).Code, code);
    }
}
