#include "ScriptedAssistant.h"

using namespace assistants;
using namespace Tavrine;
using doubles::LogLine;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

class BasicCompare : public BasicAssistantTest
{
};

struct CompareCase
{
    std::string Name, Setting;
    SettingValueMap Effective, Pending;
    SettingCompareMap Found;
    int Code;
    std::string Message;
    /// Between the first record and the end.
    std::vector<std::string> Details;
};

class BasicComparison : public ContractTest, public testing::WithParamInterface<CompareCase>
{
};

TEST_P(BasicComparison, GivesDifferencesFromFilledMapsWithoutARead)
{
    const CompareCase& param = GetParam();
    ScriptedAssistant assistant;
    assistant.m_EffectiveValues = param.Effective;
    assistant.m_PendingValues = param.Pending;
    SettingCompareMap found;
    EXPECT_THAT(assistant.GetComparePendingValueMap(found, param.Setting), IsResult(param.Code, param.Message, ""));
    EXPECT_EQ(found, param.Found);
    std::vector<LogLine> logs{{4, "Enter GetComparePendingValueMap(), settingname=" + param.Setting}};
    for (const std::string& detail : param.Details)
    {
        logs.push_back({4, detail});
    }
    EXPECT_EQ(world.Logs, logs);
    EXPECT_THAT(assistant.Reads, IsEmpty());
    EXPECT_THAT(assistant.m_CurrentValues, IsEmpty());
}

std::string Start(const std::string& name, const std::string& pending)
{
    return "Start to find the effective value for setting " + name + " with pendingvalue=" + pending;
}

std::string Exit(int size) { return "Exit GetComparePendingValueMap(), result.size()=" + std::to_string(size); }

const std::string NoPendingValue = "Setting has no pending value.";

const std::vector<CompareCase> AllSettings{
    {"Difference", "", {{"A", Number(1)}}, {{"A", Number(2)}}, {{"A", {"1", "2"}}}, 0, "", {Start("A", "2"), Exit(1)}},
    {"EveryKindInMapOrder",
     "",
     {{"C", Switch(true)}, {"b", Text("x")}, {"A", Number(1)}, {"D", Text("same")}},
     {{"b", Text("X")}, {"C", Switch(false)}, {"A", Number(2)}, {"D", Text("same")}},
     {{"A", {"1", "2"}}, {"C", {"true", "false"}}, {"b", {"x", "X"}}},
     0,
     "",
     {Start("A", "2"), Start("b", "X"), Start("C", "false"), Start("D", "same"), Exit(3)}},
    {"Equal", "", {{"A", Number(1)}}, {{"A", Number(1)}}, {}, 2, "", {Start("A", "1")}},
    {"SameTextOfAnotherKindDiffers",
     "",
     {{"A", Number(1)}},
     {{"A", Text("1")}},
     {{"A", {"1", "1"}}},
     0,
     "",
     {Start("A", "1"), Exit(1)}},
    {"EmptyPendingIsSkippedAndTheNextOneTaken",
     "",
     {{"A", Number(1)}, {"B", Number(1)}},
     {{"A", NoValue()}, {"B", Number(2)}},
     {{"B", {"1", "2"}}},
     0,
     "",
     {"A pending value is invalid, so skipped.", Start("B", "2"), Exit(1)}},
    {"EmptyEffectiveIsNoDifference", "", {{"A", NoValue()}}, {{"A", Number(2)}}, {}, 2, "", {Start("A", "2")}},
    {"PendingWithoutEffectiveIsNoDifference", "", {{"B", Number(1)}}, {{"A", Number(2)}}, {}, 2, "", {Start("A", "2")}},
    {"PendingWithoutEffectiveIsPassedOver",
     "",
     {{"B", Number(1)}, {"D", Number(4)}},
     {{"A", Number(2)}, {"B", Number(3)}, {"C", Number(2)}, {"D", Number(5)}},
     {{"B", {"1", "3"}}, {"D", {"4", "5"}}},
     0,
     "",
     {Start("A", "2"), Start("B", "3"), Start("C", "2"), Start("D", "5"), Exit(2)}},
    {"NameOfPendingIsShownAndMatchesInAnyCase",
     "",
     {{"BootMode", Text("Uefi")}},
     {{"BOOTMODE", Text("Legacy")}},
     {{"BOOTMODE", {"Uefi", "Legacy"}}},
     0,
     "",
     {Start("BOOTMODE", "Legacy"), Exit(1)}},
};

const std::vector<CompareCase> OneSetting{
    {"Difference",
     "A",
     {{"A", Number(1)}},
     {{"A", Number(2)}, {"B", Number(3)}},
     {{"A", {"1", "2"}}},
     0,
     "",
     {Exit(1)}},
    {"NameAsTheCallerGaveIt",
     "bootmode",
     {{"BootMode", Text("x")}},
     {{"BOOTMODE", Text("y")}},
     {{"bootmode", {"x", "y"}}},
     0,
     "",
     {Exit(1)}},
    {"SameTextOfAnotherKindDiffers",
     "A",
     {{"A", Switch(true)}},
     {{"A", Text("true")}},
     {{"A", {"true", "true"}}},
     0,
     "",
     {Exit(1)}},
    {"Equal",
     "A",
     {{"A", Number(1)}, {"B", Number(1)}},
     {{"A", Number(1)}, {"B", Number(2)}},
     {},
     2,
     NoPendingValue,
     {"Setting A has no pending value."}},
    {"NotPending",
     "A",
     {{"A", Number(1)}},
     {{"B", Number(2)}},
     {},
     2,
     NoPendingValue,
     {"Setting A has no pending value."}},
    {"EmptyPending",
     "A",
     {{"A", Number(1)}},
     {{"A", NoValue()}},
     {},
     2,
     NoPendingValue,
     {"Setting A has no pending value."}},
    {"EmptyEffective",
     "A",
     {{"A", NoValue()}},
     {{"A", Number(1)}},
     {},
     2,
     NoPendingValue,
     {"Setting A has no pending value."}},
    {"Unknown", "C", {{"A", Number(1)}}, {{"A", Number(2)}}, {}, 20, "", {"Unable to find the setting C"}},
    {"PendingButNotEffective",
     "B",
     {{"A", Number(1)}},
     {{"B", Number(2)}},
     {},
     20,
     "",
     {"Unable to find the setting B"}},
};

const auto CompareName = [](const auto& instance) { return instance.param.Name; };
INSTANTIATE_TEST_SUITE_P(All, BasicComparison, testing::ValuesIn(AllSettings), CompareName);
INSTANTIATE_TEST_SUITE_P(One, BasicComparison, testing::ValuesIn(OneSetting), CompareName);

TEST_F(BasicCompare, ReadsPendingBeforeEffective)
{
    m_Assistant.Pending = {{RemarkedSuccess(), {{"A", Number(2)}}}};
    m_Assistant.Effective = {{{0, "", ""}, {{"A", Number(1)}}}};
    SettingCompareMap found;
    EXPECT_THAT(m_Assistant.GetComparePendingValueMap(found, "A"), IsBare(0));
    EXPECT_EQ(found, (SettingCompareMap{{"A", {"1", "2"}}}));
    EXPECT_THAT(m_Assistant.Reads, ElementsAre("pending", "effective"));
}

TEST_F(BasicCompare, EndsAtAFailedPendingRead)
{
    m_Assistant.Pending = {{{33, "busy", "X"}, {}}};
    SettingCompareMap found{{"Before", {"1", "2"}}};
    EXPECT_THAT(m_Assistant.GetComparePendingValueMap(found, ""), IsResult(33, "busy", "X"));
    EXPECT_EQ(found, (SettingCompareMap{{"Before", {"1", "2"}}}));
    EXPECT_THAT(m_Assistant.Reads, ElementsAre("pending"));
    EXPECT_THAT(world.Logs, ElementsAre(LogLine{4, "Enter GetComparePendingValueMap(), settingname="},
                                        LogLine{1, "Failed in query pending value."}));
}

TEST_F(BasicCompare, EndsAtAFailedEffectiveRead)
{
    m_Assistant.m_PendingValues = {{"A", Number(2)}};
    m_Assistant.Effective = {{{24, "no connection", "X"}, {}}};
    SettingCompareMap found{{"Before", {"1", "2"}}};
    EXPECT_THAT(m_Assistant.GetComparePendingValueMap(found, "A"), IsResult(24, "no connection", "X"));
    EXPECT_EQ(found, (SettingCompareMap{{"Before", {"1", "2"}}}));
    EXPECT_THAT(m_Assistant.Reads, ElementsAre("effective"));
    EXPECT_THAT(world.Logs, ElementsAre(LogLine{4, "Enter GetComparePendingValueMap(), settingname=A"},
                                        LogLine{1, "Failed in query effective value."}));
}

TEST_F(BasicCompare, AddsToTheCallersMapWhichDecidesTheResult)
{
    m_Assistant.m_EffectiveValues = {{"A", Number(1)}};
    m_Assistant.m_PendingValues = {{"A", Number(1)}};
    SettingCompareMap found{{"Before", {"1", "2"}}};
    EXPECT_THAT(m_Assistant.GetComparePendingValueMap(found, "A"), IsBare(0));
    EXPECT_EQ(found, (SettingCompareMap{{"Before", {"1", "2"}}}));
    m_Assistant.m_PendingValues = {{"A", Number(2)}};
    EXPECT_THAT(m_Assistant.GetComparePendingValueMap(found, ""), IsBare(0));
    EXPECT_EQ(found, (SettingCompareMap{{"A", {"1", "2"}}, {"Before", {"1", "2"}}}));
    EXPECT_THAT(world.Logs,
                ElementsAre(LogLine{4, "Enter GetComparePendingValueMap(), settingname=A"}, LogLine{4, Exit(1)},
                            LogLine{4, "Enter GetComparePendingValueMap(), settingname="}, LogLine{4, Start("A", "2")},
                            LogLine{4, Exit(2)}));
}

TEST_F(BasicCompare, ReplacesAnEntryOfTheSameName)
{
    m_Assistant.m_EffectiveValues = {{"A", Number(1)}};
    m_Assistant.m_PendingValues = {{"A", Number(2)}};
    for (const std::string name : {"A", ""})
    {
        SettingCompareMap found{{"A", {"old", "old"}}};
        EXPECT_THAT(m_Assistant.GetComparePendingValueMap(found, name), IsBare(0));
        EXPECT_EQ(found, (SettingCompareMap{{"A", {"1", "2"}}}));
    }
}

TEST_F(BasicCompare, WithoutPendingValuesReadsThemEachTime)
{
    m_Assistant.m_EffectiveValues = {{"A", Number(1)}};
    m_Assistant.Pending = {{}, {}};
    SettingCompareMap found;
    EXPECT_THAT(m_Assistant.GetComparePendingValueMap(found, ""), IsBare(2));
    EXPECT_THAT(m_Assistant.GetComparePendingValueMap(found, "A"), IsResult(2, "Setting has no pending value.", ""));
    EXPECT_THAT(found, IsEmpty());
    EXPECT_THAT(m_Assistant.Reads, ElementsAre("pending", "pending"));
}

} // namespace
