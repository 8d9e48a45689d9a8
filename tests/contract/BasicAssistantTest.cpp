#include <cstddef>
#include <cstring>
#include <type_traits>

#include "ScriptedAssistant.h"

using namespace assistants;
using namespace Tavrine;
using doubles::LogLine;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

class BasicAssistant : public BasicAssistantTest
{
  protected:
    SettingValueMap m_Values{{"Before", Text("caller")}};
};

const SettingValueMap CallersOwn{{"Before", Text("caller")}};

static_assert(std::is_abstract_v<BiosBasicSettingAssistant>);
static_assert(!std::has_virtual_destructor_v<BiosBasicSettingAssistant>);

TEST_F(BasicAssistant, EverythingStartsEmpty)
{
    EXPECT_THAT(m_Assistant.m_EffectiveValues, IsEmpty());
    EXPECT_THAT(m_Assistant.m_PendingValues, IsEmpty());
    EXPECT_THAT(m_Assistant.m_CurrentValues, IsEmpty());
    EXPECT_THAT(m_Assistant.m_ChangedValues, IsEmpty());
    EXPECT_THAT(m_Assistant.m_Errors, IsEmpty());
}

/// Position in the table of virtual operations (Itanium C++ ABI).
template <typename Operation> std::size_t TableIndex(Operation operation)
{
    std::size_t offset = 0;
    static_assert(sizeof(operation) >= sizeof(offset));
    std::memcpy(&offset, &operation, sizeof(offset));
    return offset / sizeof(void*);
}

TEST_F(BasicAssistant, VirtualOperationsStandInTheirOrder)
{
    const std::vector<std::size_t> order{TableIndex(&BiosBasicSettingAssistant::FlushChanges),
                                         TableIndex(&BiosBasicSettingAssistant::ReloadAllSettingValues),
                                         TableIndex(&BiosBasicSettingAssistant::GetCurrentValuesMap),
                                         TableIndex(&BiosBasicSettingAssistant::GetComparePendingValueMap),
                                         TableIndex(&BiosBasicSettingAssistant::UpdateSettingValueCache),
                                         TableIndex(&BiosBasicSettingAssistant::SetValueResponse),
                                         TableIndex(&BiosBasicSettingAssistant::QueryEffectiveValue),
                                         TableIndex(&BiosBasicSettingAssistant::QueryPendingValue),
                                         TableIndex(&BiosBasicSettingAssistant::QueryValueURLResponse)};
    EXPECT_THAT(order, ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8));
}

TEST_F(BasicAssistant, ValueResponseIsOfNoUseHere)
{
    m_Assistant.m_EffectiveValues = {{"A", Number(1)}};
    m_Assistant.SetValueResponse("{\"Attributes\":{\"A\":2}}");
    EXPECT_EQ(m_Assistant.m_EffectiveValues, (SettingValueMap{{"A", Number(1)}}));
    EXPECT_THAT(m_Assistant.m_Unused, IsEmpty());
    EXPECT_THAT(m_Assistant.Reads, IsEmpty());
    EXPECT_THAT(world.Logs, IsEmpty());
}

// ---- the merged view

struct MergeCase
{
    std::string Name;
    SettingValueMap Effective, Pending, CurrentBefore, Merged;
};

class BasicAssistantMerge : public ContractTest, public testing::WithParamInterface<MergeCase>
{
};

TEST_P(BasicAssistantMerge, GivesAndKeepsTheMergedView)
{
    ScriptedAssistant assistant;
    assistant.m_EffectiveValues = GetParam().Effective;
    assistant.m_PendingValues = GetParam().Pending;
    assistant.m_CurrentValues = GetParam().CurrentBefore;
    SettingValueMap merged = assistant.MergeCurrentValues();
    EXPECT_EQ(merged, GetParam().Merged);
    merged["Another"] = Number(9);
    EXPECT_EQ(assistant.m_CurrentValues, GetParam().Merged);
    EXPECT_EQ(assistant.m_EffectiveValues, GetParam().Effective);
    EXPECT_EQ(assistant.m_PendingValues, GetParam().Pending);
    EXPECT_THAT(assistant.Reads, IsEmpty());
    EXPECT_THAT(world.Logs, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Views, BasicAssistantMerge,
    testing::Values(
        MergeCase{"PendingWins",
                  {{"A", Number(1)}, {"B", Text("b")}},
                  {{"A", Number(2)}},
                  {},
                  {{"A", Number(2)}, {"B", Text("b")}}},
        MergeCase{"NothingPending", {{"A", Switch(true)}}, {}, {}, {{"A", Switch(true)}}},
        MergeCase{"PendingWithoutEffectiveNeverShows", {{"A", Number(1)}}, {{"B", Number(2)}}, {}, {{"A", Number(1)}}},
        MergeCase{"PendingBetweenEffectiveOnesNeverShows",
                  {{"A", Number(1)}, {"C", Number(3)}, {"e", Number(5)}},
                  {{"A", Number(10)}, {"B", Number(20)}, {"c", Number(30)}, {"D", Number(40)}, {"E", Number(50)}},
                  {},
                  {{"A", Number(10)}, {"c", Number(30)}, {"E", Number(50)}}},
        MergeCase{"SeveralPendingBeforeAnEffectiveOneNeverShow",
                  {{"C", Number(3)}, {"F", Number(6)}},
                  {{"A", Number(10)}, {"B", Number(20)}, {"D", Number(40)}, {"E", Number(50)}, {"F", Number(60)}},
                  {},
                  {{"C", Number(3)}, {"F", Number(60)}}},
        MergeCase{"EmptyPendingEmptiesTheEntry",
                  {{"A", Number(1)}},
                  {{"A", NoValue()}},
                  {{"A", Number(1)}},
                  {{"A", NoValue()}}},
        MergeCase{"EmptyEffectiveEmptiesTheEntry", {{"A", NoValue()}}, {}, {{"A", Number(1)}}, {{"A", NoValue()}}},
        MergeCase{
            "KindFollowsPending", {{"A", Number(1)}}, {{"A", Text("1")}}, {{"A", Switch(true)}}, {{"A", Text("1")}}},
        MergeCase{
            "KeyOfPendingIsUsed", {{"BootMode", Number(1)}}, {{"BOOTMODE", Number(2)}}, {}, {{"BOOTMODE", Number(2)}}},
        MergeCase{"KeyInsertedFirstStays",
                  {{"BootMode", Number(1)}},
                  {{"BOOTMODE", Number(2)}},
                  {{"bootmode", Number(0)}},
                  {{"bootmode", Number(2)}}},
        MergeCase{"FormerEntriesAreNotCleared",
                  {{"A", Number(1)}},
                  {},
                  {{"Old", Text("old")}},
                  {{"A", Number(1)}, {"Old", Text("old")}}},
        MergeCase{"PendingAloneGivesNothing", {}, {{"A", Number(1)}}, {}, {}}),
    [](const auto& instance) { return instance.param.Name; });

// ---- the effective values

TEST_F(BasicAssistant, EffectiveValuesAreReadOnceAndReplaceTheCallersMap)
{
    m_Assistant.Effective = {{RemarkedSuccess(), {{"A", Number(1)}, {"B", NoValue()}}}};
    EXPECT_THAT(m_Assistant.GetEffectiveValueMap(m_Values), IsResult(0, "remark", "Remarked"));
    EXPECT_EQ(m_Values, (SettingValueMap{{"A", Number(1)}, {"B", NoValue()}}));
    SettingValueMap again{{"Before", Text("caller")}};
    EXPECT_THAT(m_Assistant.GetEffectiveValueMap(again), IsBare(0));
    EXPECT_EQ(again, m_Values);
    EXPECT_THAT(m_Assistant.Reads, ElementsAre("effective"));
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_F(BasicAssistant, EffectiveValuesTakeNoPendingOrMergedOnes)
{
    m_Assistant.m_EffectiveValues = {{"A", Number(1)}};
    m_Assistant.m_PendingValues = {{"A", Number(2)}};
    m_Assistant.m_CurrentValues = {{"A", Number(3)}};
    EXPECT_THAT(m_Assistant.GetEffectiveValueMap(m_Values), IsBare(0));
    EXPECT_EQ(m_Values, (SettingValueMap{{"A", Number(1)}}));
    EXPECT_THAT(m_Assistant.Reads, IsEmpty());
}

TEST_F(BasicAssistant, FailedEffectiveReadIsHandedOnAndLeavesTheCallersMap)
{
    m_Assistant.Effective = {{{33, "busy", "X"}, {}}};
    m_Assistant.m_CurrentValues = {{"A", Number(3)}};
    EXPECT_THAT(m_Assistant.GetEffectiveValueMap(m_Values), IsResult(33, "busy", "X"));
    EXPECT_EQ(m_Values, CallersOwn);
    EXPECT_EQ(m_Assistant.m_CurrentValues, (SettingValueMap{{"A", Number(3)}}));
    EXPECT_THAT(world.Logs, ElementsAre(LogLine{4, "Failed to query effective value map with ret=33"}));
}

TEST_F(BasicAssistant, CodeOneIsNoSuccessOfAnEffectiveRead)
{
    m_Assistant.Effective = {{{1, "", ""}, {}}};
    EXPECT_THAT(m_Assistant.GetEffectiveValueMap(m_Values), IsBare(1));
    EXPECT_EQ(m_Values, CallersOwn);
    EXPECT_THAT(world.Logs, ElementsAre(LogLine{4, "Failed to query effective value map with ret=1"}));
}

TEST_F(BasicAssistant, ResourceWithoutSettingsIsReadByEveryQuery)
{
    m_Assistant.Effective = {{}, {}};
    EXPECT_THAT(m_Assistant.GetEffectiveValueMap(m_Values), IsBare(0));
    EXPECT_THAT(m_Values, IsEmpty());
    EXPECT_THAT(m_Assistant.GetEffectiveValueMap(m_Values), IsBare(0));
    EXPECT_THAT(m_Assistant.Reads, ElementsAre("effective", "effective"));

    ScriptedAssistant current;
    current.Effective = {{}, {}};
    current.Pending = {{}, {}};
    EXPECT_THAT(current.GetCurrentValuesMap(m_Values), IsBare(0));
    EXPECT_THAT(current.GetCurrentValuesMap(m_Values), IsBare(0));
    EXPECT_THAT(m_Values, IsEmpty());
    EXPECT_THAT(current.Reads, ElementsAre("effective", "pending", "effective", "pending"));

    ScriptedAssistant compared;
    compared.Effective = {{}, {}};
    compared.Pending = {{}, {}};
    SettingCompareMap differences;
    EXPECT_THAT(compared.GetComparePendingValueMap(differences, ""), IsBare(2));
    EXPECT_THAT(compared.GetComparePendingValueMap(differences, ""), IsBare(2));
    EXPECT_THAT(compared.Reads, ElementsAre("pending", "effective", "pending", "effective"));
}

// ---- the current values

TEST_F(BasicAssistant, CachedCurrentValuesAreGivenWithoutARead)
{
    m_Assistant.m_CurrentValues = {{"A", Number(3)}};
    EXPECT_THAT(m_Assistant.GetCurrentValuesMap(m_Values), IsBare(0));
    EXPECT_EQ(m_Values, (SettingValueMap{{"A", Number(3)}}));
    EXPECT_THAT(m_Assistant.Reads, IsEmpty());
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_F(BasicAssistant, CurrentValuesReadEffectiveThenPendingAndMerge)
{
    m_Assistant.Effective = {{RemarkedSuccess(), {{"A", Number(1)}, {"B", Text("b")}}}};
    m_Assistant.Pending = {{RemarkedSuccess(), {{"A", Number(2)}}}};
    EXPECT_THAT(m_Assistant.GetCurrentValuesMap(m_Values), IsBare(0));
    EXPECT_EQ(m_Values, (SettingValueMap{{"A", Number(2)}, {"B", Text("b")}}));
    EXPECT_EQ(m_Assistant.m_CurrentValues, m_Values);
    EXPECT_THAT(m_Assistant.Reads, ElementsAre("effective", "pending"));
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_F(BasicAssistant, CurrentValuesReadOnlyWhatIsMissing)
{
    m_Assistant.m_EffectiveValues = {{"A", Number(1)}};
    m_Assistant.Pending = {{{0, "", ""}, {{"A", Number(2)}}}};
    EXPECT_THAT(m_Assistant.GetCurrentValuesMap(m_Values), IsBare(0));
    EXPECT_EQ(m_Values, (SettingValueMap{{"A", Number(2)}}));
    EXPECT_THAT(m_Assistant.Reads, ElementsAre("pending"));

    ScriptedAssistant other;
    other.m_PendingValues = {{"A", Number(2)}};
    other.Effective = {{{0, "", ""}, {{"A", Number(1)}}}};
    EXPECT_THAT(other.GetCurrentValuesMap(m_Values), IsBare(0));
    EXPECT_EQ(m_Values, (SettingValueMap{{"A", Number(2)}}));
    EXPECT_THAT(other.Reads, ElementsAre("effective"));
}

TEST_F(BasicAssistant, NothingPendingIsAskedForAgainWhileThereIsNoMergedView)
{
    m_Assistant.Effective = {{{0, "", ""}, {{"A", Number(1)}}}};
    m_Assistant.Pending = {{}, {}};
    EXPECT_THAT(m_Assistant.GetCurrentValuesMap(m_Values), IsBare(0));
    EXPECT_EQ(m_Values, (SettingValueMap{{"A", Number(1)}}));
    EXPECT_THAT(m_Assistant.GetCurrentValuesMap(m_Values), IsBare(0));
    EXPECT_THAT(m_Assistant.Reads, ElementsAre("effective", "pending"));
    m_Assistant.m_CurrentValues.clear();
    EXPECT_THAT(m_Assistant.GetCurrentValuesMap(m_Values), IsBare(0));
    EXPECT_THAT(m_Assistant.Reads, ElementsAre("effective", "pending", "pending"));
}

TEST_F(BasicAssistant, FailedPendingReadGivesEffectiveValuesUntilItSucceeds)
{
    m_Assistant.Effective = {{{0, "", ""}, {{"A", Number(1)}}}};
    m_Assistant.Pending = {{{26, "gone", "X"}, {}}, {{0, "", ""}, {{"A", Number(2)}}}};
    EXPECT_THAT(m_Assistant.GetCurrentValuesMap(m_Values), IsBare(0));
    EXPECT_EQ(m_Values, (SettingValueMap{{"A", Number(1)}}));
    EXPECT_THAT(m_Assistant.m_CurrentValues, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(LogLine{1, "Query pending value error, use effective value directly."}));

    EXPECT_THAT(m_Assistant.GetCurrentValuesMap(m_Values), IsBare(0));
    EXPECT_EQ(m_Values, (SettingValueMap{{"A", Number(2)}}));
    EXPECT_THAT(m_Assistant.Reads, ElementsAre("effective", "pending", "pending"));
    EXPECT_EQ(world.Logs.size(), 1U);
}

TEST_F(BasicAssistant, FailedEffectiveReadEndsTheCurrentQuery)
{
    m_Assistant.Effective = {{{24, "no connection", "X"}, {}}};
    EXPECT_THAT(m_Assistant.GetCurrentValuesMap(m_Values), IsResult(24, "no connection", "X"));
    EXPECT_EQ(m_Values, CallersOwn);
    EXPECT_THAT(m_Assistant.Reads, ElementsAre("effective"));
    EXPECT_THAT(world.Logs, ElementsAre(LogLine{1, "Query current value error: no connection"}));
}

TEST_F(BasicAssistant, ReloadReadsBothAnewThroughFilledMaps)
{
    m_Assistant.m_EffectiveValues = {{"A", Number(1)}, {"B", Number(1)}};
    m_Assistant.m_PendingValues = {{"A", Number(2)}};
    m_Assistant.m_CurrentValues = {{"A", Number(3)}};
    m_Assistant.Effective = {{RemarkedSuccess(), {{"A", Number(4)}, {"B", Number(5)}}}};
    m_Assistant.Pending = {{RemarkedSuccess(), {{"B", Number(6)}}}};
    EXPECT_THAT(m_Assistant.ReloadAllSettingValues(m_Values), IsBare(0));
    EXPECT_EQ(m_Values, (SettingValueMap{{"A", Number(4)}, {"B", Number(6)}}));
    EXPECT_EQ(m_Assistant.m_CurrentValues, m_Values);
    EXPECT_THAT(m_Assistant.Reads, ElementsAre("effective", "pending"));
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_F(BasicAssistant, FailedEffectiveReadOfAReloadDropsTheMergedView)
{
    m_Assistant.m_EffectiveValues = {{"A", Number(1)}};
    m_Assistant.m_PendingValues = {{"A", Number(2)}};
    m_Assistant.m_CurrentValues = {{"A", Number(2)}};
    m_Assistant.Effective = {{{33, "busy", "X"}, {}}};
    EXPECT_THAT(m_Assistant.ReloadAllSettingValues(m_Values), IsResult(33, "busy", "X"));
    EXPECT_EQ(m_Values, CallersOwn);
    EXPECT_THAT(m_Assistant.m_CurrentValues, IsEmpty());
    EXPECT_EQ(m_Assistant.m_EffectiveValues, (SettingValueMap{{"A", Number(1)}}));
    EXPECT_EQ(m_Assistant.m_PendingValues, (SettingValueMap{{"A", Number(2)}}));
    EXPECT_THAT(m_Assistant.Reads, ElementsAre("effective"));
    EXPECT_THAT(world.Logs, ElementsAre(LogLine{1, "Query current value error: busy"}));
}

TEST_F(BasicAssistant, FailedPendingReadOfAReloadKeepsTheMergedView)
{
    m_Assistant.m_CurrentValues = {{"A", Number(2)}};
    m_Assistant.m_PendingValues = {{"A", Number(2)}};
    m_Assistant.Effective = {{{0, "", ""}, {{"A", Number(1)}}}};
    m_Assistant.Pending = {{{33, "busy", "X"}, {}}};
    EXPECT_THAT(m_Assistant.ReloadAllSettingValues(m_Values), IsBare(0));
    EXPECT_EQ(m_Values, (SettingValueMap{{"A", Number(1)}}));
    EXPECT_EQ(m_Assistant.m_CurrentValues, (SettingValueMap{{"A", Number(2)}}));
    EXPECT_THAT(world.Logs, ElementsAre(LogLine{1, "Query pending value error, use effective value directly."}));
}

// ---- the cache of a staged change

struct CacheCase
{
    std::string Name, Setting, Value;
    SettingValueMap Pending, Current, PendingAfter, CurrentAfter;
};

class BasicAssistantCache : public ContractTest, public testing::WithParamInterface<CacheCase>
{
};

TEST_P(BasicAssistantCache, ShowsTheChangeWhereTheNameIsHeld)
{
    ScriptedAssistant assistant;
    assistant.m_EffectiveValues = {{"A", Number(1)}};
    assistant.m_PendingValues = GetParam().Pending;
    assistant.m_CurrentValues = GetParam().Current;
    EXPECT_THAT(assistant.UpdateSettingValueCache(GetParam().Setting, GetParam().Value), IsBare(0));
    EXPECT_EQ(assistant.m_PendingValues, GetParam().PendingAfter);
    EXPECT_EQ(assistant.m_CurrentValues, GetParam().CurrentAfter);
    EXPECT_EQ(assistant.m_EffectiveValues, (SettingValueMap{{"A", Number(1)}}));
    EXPECT_THAT(assistant.m_ChangedValues, IsEmpty());
    EXPECT_THAT(assistant.Reads, IsEmpty());
    EXPECT_THAT(world.Logs,
                ElementsAre(LogLine{4, "Enter UpdateSettingValueCache to update setting: " + GetParam().Setting},
                            LogLine{4, "Exit BiosBasicSettingAssistant::UpdateSettingValueCache()"}));
}

INSTANTIATE_TEST_SUITE_P(
    Caches, BasicAssistantCache,
    testing::Values(
        CacheCase{"BothMaps", "A", "7", {{"A", Number(2)}}, {{"A", Number(3)}}, {{"A", Number(7)}}, {{"A", Number(7)}}},
        CacheCase{
            "PendingAlone", "A", "7", {{"A", Number(2)}}, {{"B", Number(3)}}, {{"A", Number(7)}}, {{"B", Number(3)}}},
        CacheCase{
            "CurrentAlone", "A", "7", {{"B", Number(2)}}, {{"A", Number(3)}}, {{"B", Number(2)}}, {{"A", Number(7)}}},
        CacheCase{"UnknownNameChangesNothing",
                  "C",
                  "7",
                  {{"B", Number(2)}},
                  {{"A", Number(3)}},
                  {{"B", Number(2)}},
                  {{"A", Number(3)}}},
        CacheCase{"EmptyMapsStayEmpty", "A", "7", {}, {}, {}, {}},
        CacheCase{"QuotesAreRemoved",
                  "S",
                  "\"new\"",
                  {{"S", Text("old")}},
                  {{"S", Text("old")}},
                  {{"S", Text("new")}},
                  {{"S", Text("new")}}},
        CacheCase{"EveryQuoteIsRemoved", "S", "\"a\"b\"\"", {{"S", Text("old")}}, {}, {{"S", Text("ab")}}, {}},
        CacheCase{"NameMatchesInAnyCase",
                  "bootMODE",
                  "on",
                  {{"BootMode", Text("x")}},
                  {{"BOOTMODE", Text("x")}},
                  {{"BootMode", Text("on")}},
                  {{"BOOTMODE", Text("on")}}},
        CacheCase{"UnsuitableTextIsPassedOver",
                  "A",
                  "many",
                  {{"A", Number(2)}},
                  {{"A", Text("x")}},
                  {{"A", Number(2)}},
                  {{"A", Text("many")}}}),
    [](const auto& instance) { return instance.param.Name; });

} // namespace
