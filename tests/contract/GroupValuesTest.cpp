// What all settings hold now: for the caller as text, and as typed values inside.
#include "ReadingFixture.h"

using namespace reading;
using namespace Tavrine;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Pair;

namespace
{

const RedfishConfigResult Success{0, "", ""};
const LogLine EnterGroup{3, "Enter BiosRedfishConfigProc::QueryGroupSettingValues()"};
const LogLine ExitGroup{3, "Exit BiosRedfishConfigProc::QueryGroupSettingValues()"};
const LogLine EnterProcGroup{4, "Entering  Tavrine::BiosBasicSettingProc::QueryGroupSettingValues"};
const LogLine NoKeywords{1, "Failed to get the all keywords that be used to hide the settings. Eg. Raid Card"};
const std::vector<LogLine> PatchUrlLogs = {{3, "Enter BiosBasicSettingAssistant::QueryPatchURL()"},
                                           {3, "Exit BiosBasicSettingAssistant::QueryPatchURL()"}};

// --- values as text -----------------------------------------------------------------------

class QueryGroupSettingValues : public FrontClassTest
{
  protected:
    SettingStringMap m_Values;
};

TEST_F(QueryGroupSettingValues, FirstQueryReadsTheValuesAloneWithoutASchema)
{
    TellStandard(R"({"Boot":"UEFI","Cores":4,"Null":null})");
    const auto front = MakeBios({.LegacyNameMode = true});
    front->SetPrefix("HOST", "ALL");
    EXPECT_THAT(front->QueryGroupSettingValues(m_Values), IsBare(0));
    EXPECT_THAT(m_Values, ElementsAre(Pair("ALL.Boot", "UEFI"), Pair("ALL.Cores", "4")));
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsUrl), Get(BiosUrl)));
    EXPECT_THAT(world.Logs,
                ElementsAreArray(Join({{EnterGroup, EnterProcGroup},
                                       BiosReadLogs,
                                       {{4, "Null current value is invalid, so skipped."}, NoKeywords, ExitGroup}})));
    EXPECT_EQ(front->m_SettingManager, nullptr);
    EXPECT_EQ(front->m_Schema, "");
    EXPECT_THAT(world.NamesAsked, IsEmpty());
    EXPECT_THAT(world.ConfigAsked, ElementsAre("HIDDEN_CONFIG_KEYWORDS_LIST"));
}

TEST_F(QueryGroupSettingValues, SecondQuerySendsNothing)
{
    TellStandard(R"({"Boot":"UEFI"})");
    const auto front = MakeBios();
    ASSERT_THAT(front->QueryGroupSettingValues(m_Values), IsBare(0));
    world.Calls.clear();
    EXPECT_THAT(front->QueryGroupSettingValues(m_Values), IsBare(0));
    EXPECT_THAT(world.Calls, IsEmpty());
}

TEST_F(QueryGroupSettingValues, ProtectedResourceIsPassedOverWhateverTheOptionsSay)
{
    for (const bool allowed : {false, true})
    {
        doubles::ResetWorld();
        m_Values.clear();
        TellStandard(R"({"Boot":"UEFI"})");
        TellProtected(R"({"Secret":"s"})");
        const auto front = MakeUefi({.allowProtectedSettings = allowed});
        EXPECT_THAT(front->QueryGroupSettingValues(m_Values), IsBare(0));
        EXPECT_THAT(m_Values, ElementsAre(Pair("UEFI.Boot", "UEFI")));
        EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsUrl), Get(BiosUrl)));
    }
}

TEST_F(QueryGroupSettingValues, OnlyTheExactNameIsPassedOver)
{
    const auto front = MakeBios();
    const auto passed = Enter(*front, "ProtectedSettings", Success, {{"p", "1"}});
    const auto small = Enter(*front, "protectedsettings", Success, {{"s", "2"}});
    const auto longer = Enter(*front, "ProtectedSettings2", Success, {{"l", "3"}});
    EXPECT_THAT(front->QueryGroupSettingValues(m_Values), IsBare(0));
    EXPECT_EQ(passed->m_GroupQueries, 0);
    EXPECT_EQ(small->m_GroupQueries, 1);
    EXPECT_EQ(longer->m_GroupQueries, 1);
    EXPECT_THAT(m_Values, ElementsAre(Pair("l", "3"), Pair("s", "2")));
}

TEST_F(QueryGroupSettingValues, KeysThatStandThereKeepTheirValues)
{
    const auto front = MakeBios();
    Enter(*front, "StandardSettings", Success, {{"BIOS.Boot", "new"}, {"BIOS.Cores", "4"}});
    m_Values = {{"BIOS.Boot", "before"}};
    EXPECT_THAT(front->QueryGroupSettingValues(m_Values), IsBare(0));
    EXPECT_THAT(m_Values, ElementsAre(Pair("BIOS.Boot", "before"), Pair("BIOS.Cores", "4")));
}

TEST_F(QueryGroupSettingValues, FailedProcIsPassedOverAndTheNextOnesAreAsked)
{
    const auto front = MakeBios();
    const auto first = Enter(*front, "A", {26, "failed", ""}, {});
    const auto second = Enter(*front, "B", Success, {{"b", "2"}});
    EXPECT_THAT(front->QueryGroupSettingValues(m_Values), IsBare(0));
    EXPECT_EQ(first->m_GroupQueries, 1);
    EXPECT_EQ(second->m_GroupQueries, 1);
    EXPECT_THAT(m_Values, ElementsAre(Pair("b", "2")));
    EXPECT_THAT(world.Logs, ElementsAre(EnterGroup, NoKeywords, ExitGroup));
}

// All procs fill one map, so what a failed one left comes with the next success.
TEST_F(QueryGroupSettingValues, ProcsShareOneMap)
{
    const auto front = MakeBios();
    Enter(*front, "A", {1, "", ""}, {{"a", "1"}});
    Enter(*front, "B", Success, {{"a", "other"}, {"b", "2"}});
    Enter(*front, "C", {26, "", ""}, {{"c", "3"}});
    EXPECT_THAT(front->QueryGroupSettingValues(m_Values), IsBare(0));
    EXPECT_THAT(m_Values, ElementsAre(Pair("a", "1"), Pair("b", "2")));
}

TEST_F(QueryGroupSettingValues, NothingToShowEndsWithoutAnExitLine)
{
    const auto front = MakeBios();
    Enter(*front, "StandardSettings", {33, "BMC is not ready.", ""}, {{"left", "over"}});
    EXPECT_THAT(front->QueryGroupSettingValues(m_Values), IsBare(26));
    EXPECT_THAT(m_Values, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(EnterGroup));
    EXPECT_THAT(world.ConfigAsked, IsEmpty());
}

TEST_F(QueryGroupSettingValues, ProtectedProcAloneShowsNothing)
{
    const auto front = MakeUefi({.allowProtectedSettings = true});
    Enter(*front, "ProtectedSettings", Success, {{"UEFI.Secret", "s"}});
    EXPECT_THAT(front->QueryGroupSettingValues(m_Values), IsBare(26));
    EXPECT_THAT(m_Values, IsEmpty());
}

TEST_F(QueryGroupSettingValues, OldEntriesOutliveAFailedProcAndAreFiltered)
{
    world.Config["HIDDEN_CONFIG_KEYWORDS_LIST"] = "Raid";
    const auto front = MakeBios();
    Enter(*front, "StandardSettings", {26, "", ""}, {});
    m_Values = {{"BIOS.Boot", "old"}, {"BIOS.RaidMode", "old"}};
    EXPECT_THAT(front->QueryGroupSettingValues(m_Values), IsBare(0));
    EXPECT_THAT(m_Values, ElementsAre(Pair("BIOS.Boot", "old")));
    EXPECT_THAT(world.Logs, ElementsAre(EnterGroup, ExitGroup));
}

// The test for an empty map stands before the filter.
TEST_F(QueryGroupSettingValues, FilterThatHidesEverythingIsNoFailure)
{
    world.Config["HIDDEN_CONFIG_KEYWORDS_LIST"] = "BIOS";
    const auto front = MakeBios();
    Enter(*front, "StandardSettings", Success, {{"BIOS.Boot", "UEFI"}});
    EXPECT_THAT(front->QueryGroupSettingValues(m_Values), IsBare(0));
    EXPECT_THAT(m_Values, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(EnterGroup, ExitGroup));
}

TEST_F(QueryGroupSettingValues, NoProcsAreAnInternalError)
{
    const auto front = MakeBios();
    front->m_ProcCreator->m_CreatorMap.clear();
    m_Values = {{"old", "entry"}};
    EXPECT_THAT(front->QueryGroupSettingValues(m_Values), IsBare(13));
    EXPECT_THAT(m_Values, ElementsAre(Pair("old", "entry")));
    EXPECT_THAT(world.Logs, ElementsAre(EnterGroup, LogLine{1, "Failed to create BIOS redfish procs."}));
}

TEST_F(QueryGroupSettingValues, JsonOutputIsOneEntry)
{
    TellStandard(R"({"Cores":4,"Null":null,"On":true})");
    EXPECT_THAT(MakeBios({.OutputFormat = 1})->QueryGroupSettingValues(m_Values), IsBare(0));
    EXPECT_THAT(m_Values, ElementsAre(Pair("BIOS", R"({"Cores":4,"Null":null,"On":true})")));
}

// --- typed values -------------------------------------------------------------------------

struct TypedRead
{
    const char* Name;
    const char* Read;
    RedfishConfigResult (BiosRedfishConfigProc::*Operation)(SettingValueMap&, bool);
};

class TypedValues : public FrontClassTest, public testing::WithParamInterface<TypedRead>
{
  protected:
    RedfishConfigResult Read(Front& front, bool includeProtected)
    {
        return (front.*GetParam().Operation)(m_Values, includeProtected);
    }

    SettingValueMap m_Values;
};

INSTANTIATE_TEST_SUITE_P(Reads, TypedValues,
                         testing::Values(TypedRead{"Cached", "current", &BiosRedfishConfigProc::GetCurrentValuesMap},
                                         TypedRead{"Anew", "reload", &BiosRedfishConfigProc::ReloadAllSettingValues}),
                         [](const auto& test) { return test.param.Name; });

TEST_P(TypedValues, EveryProcGivesItsValuesInKeyOrder)
{
    const auto front = MakeUefi();
    const auto standard = EnterAssistant(*front, "StandardSettings", Success,
                                         {{"boot", std::string("standard")}, {"Cores", std::int64_t{4}}});
    const auto protectedOnes =
        EnterAssistant(*front, "ProtectedSettings", Success, {{"Boot", std::string("protected")}, {"Null", {}}});
    EXPECT_THAT(Read(*front, true), IsBare(0));
    // Keys that differ in case alone are one: the first proc's stays.
    EXPECT_THAT(m_Values, ElementsAre(Pair("Boot", OptionalVar("protected")), Pair("Cores", OptionalVar(4)),
                                      Pair("Null", OptionalVar())));
    EXPECT_THAT(standard->m_Reads, ElementsAre(GetParam().Read));
    EXPECT_THAT(protectedOnes->m_Reads, ElementsAre(GetParam().Read));
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_P(TypedValues, ProtectedResourceIsLeftOutWhenItIsNotIncluded)
{
    const auto front = MakeUefi({.allowProtectedSettings = true});
    const auto passed = EnterAssistant(*front, "ProtectedSettings", {26, "", ""}, {{"p", true}});
    EnterAssistant(*front, "ProtectedSettings2", Success, {{"l", true}});
    EnterAssistant(*front, "protectedsettings", Success, {{"s", true}});
    EXPECT_THAT(Read(*front, false), IsBare(0));
    EXPECT_THAT(m_Values, ElementsAre(Pair("l", OptionalVar(true)), Pair("s", OptionalVar(true))));
    EXPECT_THAT(passed->m_Reads, IsEmpty());
}

TEST_P(TypedValues, KeysThatStandThereKeepTheirValues)
{
    const auto front = MakeBios();
    EnterAssistant(*front, "StandardSettings", Success, {{"BOOT", std::string("new")}, {"Cores", std::int64_t{4}}});
    m_Values = {{"Boot", std::string("before")}};
    EXPECT_THAT(Read(*front, true), IsBare(0));
    EXPECT_THAT(m_Values, ElementsAre(Pair("Boot", OptionalVar("before")), Pair("Cores", OptionalVar(4))));
}

TEST_P(TypedValues, FailedProcEndsTheReadAndKeepsWhatCameBefore)
{
    const auto front = MakeBios();
    EnterAssistant(*front, "A", Success, {{"a", true}});
    EnterAssistant(*front, "B", {33, "BMC is not ready.", "s"}, {{"b", true}});
    const auto last = EnterAssistant(*front, "C", Success, {{"c", true}});
    EXPECT_THAT(Read(*front, true), IsResult(33, "BMC is not ready.", "s"));
    EXPECT_THAT(m_Values, ElementsAre(Pair("a", OptionalVar(true))));
    EXPECT_THAT(last->m_Reads, IsEmpty());
    // Once by the proc, once by the front class.
    const LogLine failed{1, "Failed in get current value map though: BMC is not ready."};
    EXPECT_THAT(world.Logs, ElementsAre(failed, failed));
}

TEST_P(TypedValues, ProcWithoutAnAssistantEndsTheRead)
{
    const auto front = MakeBios();
    front->m_ProcCreator->m_ProcMap["StandardSettings"] = std::make_shared<BiosBasicSettingProc>();
    EXPECT_THAT(Read(*front, true), IsBare(13));
    EXPECT_THAT(world.Logs, ElementsAre(LogLine{1, "Construct assistant error."},
                                        LogLine{1, "Failed in get current value map though: "}));
}

TEST_P(TypedValues, NoProcsAreAnInternalError)
{
    const auto front = MakeBios();
    front->m_ProcCreator->m_CreatorMap.clear();
    EXPECT_THAT(Read(*front, true), IsBare(13));
    EXPECT_THAT(world.Logs, ElementsAre(LogLine{1, "Can not create BIOS redfish procs."}));
}

TEST_P(TypedValues, NothingToShowIsAFailedQuery)
{
    const auto front = MakeBios();
    EnterAssistant(*front, "StandardSettings", Success, {});
    EXPECT_THAT(Read(*front, true), IsBare(26));
    EXPECT_THAT(world.Logs, IsEmpty());
    m_Values = {{"old", true}};
    EXPECT_THAT(Read(*front, true), IsBare(0));
}

TEST_P(TypedValues, LeavingTheOnlyProcOutIsAFailedQuery)
{
    const auto front = MakeUefi();
    EnterAssistant(*front, "ProtectedSettings", Success, {{"p", true}});
    EXPECT_THAT(Read(*front, false), IsBare(26));
    EXPECT_THAT(m_Values, IsEmpty());
}

TEST_P(TypedValues, StandardProcMadeAloneIsReadAlone)
{
    TellStandard(R"({"Boot":"UEFI"})");
    const auto front = MakeUefi({.allowProtectedSettings = true});
    std::shared_ptr<BiosBasicSettingProc> proc;
    ASSERT_THAT(front->m_ProcCreator->CreateProcForSetting(Know("Boot"), proc), IsBare(0));
    EXPECT_THAT(Read(*front, true), IsBare(0));
    EXPECT_THAT(m_Values, ElementsAre(Pair("Boot", OptionalVar("UEFI"))));
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsUrl), Get(BiosUrl), Get(SettingsUrl)));
}

TEST_P(TypedValues, BothResourcesOfAUefiSystemAreRead)
{
    TellStandard(R"({"Boot":"UEFI","Cores":4})", R"({"Cores":8})");
    TellProtected(R"({"Secret":"old"})", R"({"Secret":"new"})");
    const auto front = MakeUefi();
    EXPECT_THAT(Read(*front, true), IsBare(0));
    EXPECT_THAT(m_Values, ElementsAre(Pair("Boot", OptionalVar("UEFI")), Pair("Cores", OptionalVar(8)),
                                      Pair("Secret", OptionalVar("new"))));
    EXPECT_THAT(world.Calls, ElementsAre(ReadProtected("{}"), ReadProtected(R"({"Pending":true})"), Get(SystemsUrl),
                                         Get(BiosUrl), Get(SettingsUrl)));
    EXPECT_THAT(world.Logs,
                ElementsAreArray(Join({{{4, "Entering  Tavrine::BiosProtectedSettingAssistant::QueryPendingValue"},
                                        {4, "Exiting  Tavrine::BiosProtectedSettingAssistant::QueryPendingValue"}},
                                       BiosReadLogs,
                                       PatchUrlLogs})));
}

using ReadingTwice = FrontClassTest;

TEST_F(ReadingTwice, CachedValuesAreNotAskedForAgain)
{
    TellStandard(R"({"Boot":"UEFI"})");
    TellProtected(R"({"Secret":"s"})");
    const auto front = MakeUefi();
    SettingValueMap values;
    ASSERT_THAT(front->GetCurrentValuesMap(values, true), IsBare(0));
    world.Calls.clear();
    world.Logs.clear();
    values.clear();
    EXPECT_THAT(front->GetCurrentValuesMap(values, true), IsBare(0));
    EXPECT_THAT(values, ElementsAre(Pair("Boot", OptionalVar("UEFI")), Pair("Secret", OptionalVar("s"))));
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_F(ReadingTwice, ReloadAsksAgainAndShowsWhatChanged)
{
    TellStandard(R"({"Boot":"UEFI"})", R"({"Boot":"first"})");
    world.Tell("GET", SettingsUrl, R"({"Attributes":{"Boot":"second"}})");
    TellProtected(R"({"Secret":"s"})", R"({"Secret":"first"})");
    TellProtected(R"({"Secret":"s"})", R"({"Secret":"second"})");
    const auto front = MakeUefi();
    SettingValueMap values;
    ASSERT_THAT(front->ReloadAllSettingValues(values, true), IsBare(0));
    EXPECT_THAT(values, ElementsAre(Pair("Boot", OptionalVar("first")), Pair("Secret", OptionalVar("first"))));
    world.Calls.clear();
    values.clear();
    EXPECT_THAT(front->ReloadAllSettingValues(values, true), IsBare(0));
    EXPECT_THAT(values, ElementsAre(Pair("Boot", OptionalVar("second")), Pair("Secret", OptionalVar("second"))));
    // The text of the Bios resource is kept; the settings object and the actions are asked anew.
    EXPECT_THAT(world.Calls, ElementsAre(ReadProtected("{}"), ReadProtected(R"({"Pending":true})"), Get(SettingsUrl)));
}

} // namespace
