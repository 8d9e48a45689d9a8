#include "MetadataCommands.h"

#include <gtest/gtest.h>

#include <boost/json/serialize.hpp>

#include "ConfigFile.h"
#include "KnowingFront.h"
#include "Options.h"

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
    front.Defaults.insert({"", {Partly, {{"Two.ProcA", "1"}, {"Two.MemB", "x\n"}}}});
    front.Defaults.insert({"ProcA", {Good, {{"One.ProcA", "1"}}}});
    front.Defaults.insert({"ProcC", {{21, "The setting One.ProcC has no default value.", ""}, {}}});
    front.Descriptions.insert({"", {Good, {{"Two.ProcA", "A"}, {"Two.MemB", "B"}, {"Two.ProcC", "C"}}}});
    return front;
}

} // namespace

TEST(MetadataCommands, AllAreUnderTheSecondPrefixAndWhatIsMissingIsANote)
{
    KnowingFront front = ThreeSettings();
    const Answer answer = ListDefaults(front, {});
    EXPECT_EQ(answer.Code, 0);
    EXPECT_TRUE(answer.Errors.empty());
    EXPECT_EQ(answer.Text, "Two.MemB=x\\n\nTwo.ProcA=1\n");
    EXPECT_EQ(answer.Notes, Words{"note: 1 of 3 settings have no default value"});
}

TEST(MetadataCommands, JsonHoldsTheTexts)
{
    KnowingFront front = ThreeSettings();
    EXPECT_EQ(boost::json::serialize(ListDefaults(front, Named({}, true)).Data),
              R"({"Two.MemB":"x\n","Two.ProcA":"1"})");
}

TEST(MetadataCommands, ValuesAreListedInTheSameWay)
{
    KnowingFront front;
    front.ValidValues.insert({"", {Good, {{"BIOS.A", "On; Off"}}}});
    front.ValidValues.insert({"B", {Good, {{"BIOS.B", "0 to 5"}}}});
    EXPECT_EQ(ListValues(front, {}).Text, "BIOS.A=On; Off\n");
    EXPECT_TRUE(ListValues(front, {}).Notes.empty());
    EXPECT_EQ(ListValues(front, Named({"B"})).Text, "BIOS.B=0 to 5\n");
    EXPECT_EQ(front.Asked, (Words{"values *", "values *", "values B"}));
}

TEST(MetadataCommands, ANamedSettingFailsForItself)
{
    KnowingFront front = ThreeSettings();
    const Answer answer = ListDefaults(front, Named({"ProcC", "one.ProcA", "Two.ProcA", "Nowhere"}));
    EXPECT_EQ(answer.Code, 21);
    EXPECT_EQ(answer.Text, "One.ProcA=1\n");
    ASSERT_EQ(answer.Errors.size(), 2U);
    EXPECT_EQ(answer.Errors[0].Setting, "One.ProcC");
    EXPECT_EQ(answer.Errors[1].Code, 20);
    EXPECT_TRUE(answer.Notes.empty());
    EXPECT_EQ(front.Asked, (Words{"defaults ProcC", "defaults ProcA", "defaults Nowhere"}));
}

TEST(MetadataCommands, PatternsSelectFromOneGroupAnswer)
{
    KnowingFront front = ThreeSettings();
    const Answer answer = ListDefaults(front, Named({"Proc*", "Mem*", "ProcA"}));
    EXPECT_EQ(answer.Code, 0);
    EXPECT_EQ(answer.Text, "One.MemB=x\\n\nOne.ProcA=1\n");
    EXPECT_EQ(answer.Notes, Words{"note: 1 of 3 settings have no default value"});
    EXPECT_EQ(std::count(front.Asked.begin(), front.Asked.end(), "defaults *"), 1);
}

TEST(MetadataCommands, APatternOverSettingsWithoutADefaultIsNoFailure)
{
    KnowingFront front = ThreeSettings();
    const Answer answer = ListDefaults(front, Named({"*C"}));
    EXPECT_EQ(answer.Code, 0);
    EXPECT_EQ(answer.Text, "");
    EXPECT_EQ(answer.Notes, Words{"note: 1 of 1 settings have no default value"});
}

TEST(MetadataCommands, APatternThatMatchesNothingIsNamed)
{
    KnowingFront front = ThreeSettings();
    const Answer answer = ListDefaults(front, Named({"Zz*", "Mem*"}));
    EXPECT_EQ(answer.Code, 20);
    EXPECT_EQ(answer.Message, "Unable to find a setting that matches Zz*");
    EXPECT_EQ(answer.Text, "One.MemB=x\\n\n");
}

TEST(MetadataCommands, BareKeysOfOldNamesStayBare)
{
    KnowingFront front("Srv", "Srv");
    front.Defaults.insert({"", {Good, {{"ProcA", "1"}, {"MemB", "2"}}}});
    EXPECT_EQ(ListDefaults(front, {}).Text, "MemB=2\nProcA=1\n");
    EXPECT_EQ(ListDefaults(front, Named({"Proc*"})).Text, "ProcA=1\n");
}

TEST(MetadataCommands, AFailedGroupIsToldOnceAndTheNamesBehindItAreNotAskedFor)
{
    for (const int code : {24, 33})
    {
        KnowingFront front;
        front.Defaults.insert({"", {{code, "gone", ""}, {}}});
        const Answer answer = ListDefaults(front, Named({"A*", "B*", "C"}));
        EXPECT_EQ(answer.Code, code);
        EXPECT_EQ(StderrLines(answer), "tavrine: " + std::to_string(code) + " gone\n");
        EXPECT_EQ(front.Asked, Words{"defaults *"});
        EXPECT_EQ(ListDefaults(front, {}).Code, code);
    }
}
