#include "BiosBasicSettingProc.h"

#include "Contract.h"
#include "ProcFixture.h"

using doubles::LogLine;
using procs::NoAssistant;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using namespace Tavrine;

namespace
{

const LogLine PatchExit{4, "Exiting  Tavrine::BiosBasicSettingProc::PatchSettingNewValueWithOutCheck"};
const LogLine PatchFailed{1, "Failed in patching data."};
const LogLine PatchWaits{4, "Will not be flush changed until FlushChanges called by batch mode."};

LogLine CompareEntry(const std::string& name)
{
    return {4, "Enter BiosBasicSettingProc::CompareSettingPendingValues() with settingName=" + name};
}

class BasicProcPatch : public procs::ProcTest
{
};

using BasicProcCompare = BasicProcPatch;
using BasicProcForward = BasicProcPatch;
using BasicProcErrors = BasicProcPatch;

TEST_F(BasicProcPatch, ChangeIsStagedThenShownThenSent)
{
    EXPECT_THAT(m_Proc.PatchSettingNewValueWithOutCheck("BootMode", "Legacy", false), IsBare(0));
    EXPECT_THAT(m_Store->Steps, ElementsAre("effective", R"(cache BootMode=Legacy, staged "Legacy")", "flush"));
    EXPECT_THAT(m_Store->Flushed, ElementsAre(Pair("BootMode", R"("Legacy")")));
    EXPECT_THAT(world.Logs, ElementsAre(PatchExit));
}

TEST_F(BasicProcPatch, BatchModeStagesAndWaits)
{
    EXPECT_THAT(m_Proc.PatchSettingNewValueWithOutCheck("BootMode", "Legacy", true), IsBare(0));
    EXPECT_THAT(m_Store->Steps, ElementsAre("effective", R"(cache BootMode=Legacy, staged "Legacy")"));
    EXPECT_THAT(m_Store->m_ChangedValues, ElementsAre(Pair("BootMode", R"("Legacy")")));
    EXPECT_THAT(world.Logs, ElementsAre(PatchWaits));
}

TEST_F(BasicProcPatch, BatchModeReturnsTheResultOfTheRead)
{
    m_Store->EffectiveResult = {0, "remark", "Remarked"};
    EXPECT_THAT(m_Proc.PatchSettingNewValueWithOutCheck("BootMode", "Legacy", true), IsResult(0, "remark", "Remarked"));
}

TEST_F(BasicProcPatch, TextIsStagedByTheKindOfTheValueInForce)
{
    struct Case
    {
        bool Hex;
        const char* Name;
        const char* Value;
        const char* Staged;
    };
    const std::vector<Case> table = {
        {false, "BootMode", "", R"("")"},
        {false, "BootMode", R"(a"b\c)", R"("a"b\c")"},
        {false, "Nothing", "5", R"("5")"},
        {false, "Pin", "17", R"("17")"},
        {false, "Cores", "12", "12"},
        {false, "Cores", "", ""},
        {false, "Cores", "no JSON", "no JSON"},
        {false, "Cores", "0x1F", "0x1F"},
        {false, "Wake", "false", "false"},
        {false, "Wake", "No", "No"},
        {true, "Cores", "0x1F", "31"},
        {true, "Cores", "1f", "31"},
        {true, "Cores", "10", "16"},
        {true, "Cores", "-0xA", "-10"},
        {true, "Pin", "1F", R"("1F")"},
        {true, "Pin", "xyz", R"("xyz")"},
        {true, "BootMode", "0x1F", R"("0x1F")"},
        {true, "Wake", "false", "false"},
        {true, "Wake", "0x1", "0x1"},
        {true, "Nothing", "0x1F", R"("0x1F")"},
    };
    for (const Case& row : table)
    {
        SCOPED_TRACE(testing::Message() << row.Name << "=" << row.Value << " hex " << row.Hex);
        m_Proc.m_Options.HexValueMode = row.Hex;
        m_Store->Steps.clear();
        m_Store->m_ChangedValues.clear();
        m_Store->m_EffectiveValues.clear();
        EXPECT_THAT(m_Proc.PatchSettingNewValueWithOutCheck(row.Name, row.Value, false), IsBare(0));
        EXPECT_THAT(m_Store->Flushed, ElementsAre(Pair(row.Name, row.Staged)));
        // The caches take the text as the caller gave it.
        EXPECT_THAT(m_Store->Steps,
                    ElementsAre("effective",
                                std::string("cache ") + row.Name + "=" + row.Value + ", staged " + row.Staged,
                                "flush"));
    }
}

TEST_F(BasicProcPatch, NumberThatIsNotHexadecimalIsRefusedInHexMode)
{
    m_Proc.m_Options.HexValueMode = true;
    for (const char* value : {"xyz", "", "0x", "1 F", "12.5"})
    {
        SCOPED_TRACE(value);
        EXPECT_THAT(m_Proc.PatchSettingNewValueWithOutCheck("Cores", value, false),
                    IsResult(10, "Setting new value is invalid.", ""));
    }
    EXPECT_THAT(m_Store->m_ChangedValues, IsEmpty());
    EXPECT_THAT(m_Store->Steps, ElementsAre("effective"));
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_F(BasicProcPatch, NameIsStagedAsTheCallerGaveIt)
{
    EXPECT_THAT(m_Proc.PatchSettingNewValueWithOutCheck("cORES", "12", true), IsBare(0));
    EXPECT_THAT(m_Store->Steps, ElementsAre("effective", "cache cORES=12, staged 12"));
    EXPECT_THAT(m_Store->m_ChangedValues, ElementsAre(Pair("cORES", "12")));
}

TEST_F(BasicProcPatch, SecondChangeOfASettingReplacesTheFirst)
{
    EXPECT_THAT(m_Proc.PatchSettingNewValueWithOutCheck("Cores", "11", true), IsBare(0));
    EXPECT_THAT(m_Proc.PatchSettingNewValueWithOutCheck("BootMode", "Legacy", true), IsBare(0));
    EXPECT_THAT(m_Proc.PatchSettingNewValueWithOutCheck("Cores", "12", false), IsBare(0));
    EXPECT_THAT(m_Store->Flushed, ElementsAre(Pair("BootMode", R"("Legacy")"), Pair("Cores", "12")));
}

TEST_F(BasicProcPatch, FlushResultIsReturnedAndLogged)
{
    const std::vector<std::pair<RedfishConfigResult, LogLine>> table = {
        {{0, "done", "S"}, PatchExit},
        {{1, "reboot", ""}, PatchFailed},
        {{18, "refused", "Cores"}, PatchFailed},
        {{24, "", ""}, PatchFailed},
        {{32, "", ""}, PatchFailed},
        {{33, "busy now", ""}, LogLine{1, "Requested operation is temporarily unavailable: busy now"}},
        {{34, "busy now", ""}, PatchFailed},
    };
    for (auto [result, line] : table)
    {
        SCOPED_TRACE(result.ErrorCode());
        world.Logs.clear();
        m_Store->FlushResult = result;
        EXPECT_THAT(m_Proc.PatchSettingNewValueWithOutCheck("Cores", "12", false),
                    IsResult(result.ErrorCode(), result.ErrorMsg(), result.ErrorSetting()));
        EXPECT_THAT(world.Logs, ElementsAre(line));
        // What becomes of the change is for the assistant to decide.
        EXPECT_THAT(m_Store->m_ChangedValues, ElementsAre(Pair("Cores", "12")));
    }
}

TEST_F(BasicProcPatch, ResultOfTheCacheIsDropped)
{
    m_Store->CacheResult = {99, "cache failed", "S"};
    EXPECT_THAT(m_Proc.PatchSettingNewValueWithOutCheck("Cores", "12", true), IsBare(0));
    EXPECT_THAT(m_Proc.PatchSettingNewValueWithOutCheck("Cores", "12", false), IsBare(0));
    EXPECT_THAT(world.Logs, ElementsAre(PatchWaits, PatchExit));
}

TEST_F(BasicProcPatch, UnknownSettingAnswersTwenty)
{
    for (const bool batchMode : {false, true})
    {
        EXPECT_THAT(m_Proc.PatchSettingNewValueWithOutCheck("Fan", "12", batchMode),
                    IsResult(20, "Unable to find the setting One.Fan", ""));
    }
    EXPECT_THAT(m_Store->m_ChangedValues, IsEmpty());
    EXPECT_THAT(m_Store->Steps, ElementsAre("effective"));
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_F(BasicProcPatch, FailedReadStagesNothing)
{
    m_Store->EffectiveResult = {33, "busy", "S"};
    EXPECT_THAT(m_Proc.PatchSettingNewValueWithOutCheck("Cores", "12", false), IsResult(33, "busy", "S"));
    EXPECT_THAT(m_Store->m_ChangedValues, IsEmpty());
    EXPECT_THAT(m_Store->Steps, ElementsAre("effective"));
    EXPECT_THAT(world.Logs, ElementsAre(LogLine{4, "Failed to query effective value map with ret=33"},
                                        LogLine{1, "Failed in get current value map though: busy"}));
}

TEST_F(BasicProcPatch, WithoutAnAssistantAnswersThirteen)
{
    m_Proc.m_Assistant.reset();
    EXPECT_THAT(m_Proc.PatchSettingNewValueWithOutCheck("Cores", "12", false), IsBare(13));
    EXPECT_THAT(world.Logs, ElementsAre(NoAssistant));
}

TEST_F(BasicProcPatch, StagedTextIsRawOrQuoted)
{
    m_Proc.StageChangedValue("A", R"(x"y)", false);
    m_Proc.StageChangedValue("B", R"(x"y)", true);
    m_Proc.StageChangedValue("a", "", false);
    m_Proc.StageChangedValue("B", "5", true);
    EXPECT_THAT(m_Store->m_ChangedValues, ElementsAre(Pair("A", R"("x"y")"), Pair("B", "5"), Pair("a", R"("")")));
    EXPECT_THAT(m_Store->Steps, IsEmpty());
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_F(BasicProcPatch, StagingWithoutAnAssistantIsLogged)
{
    m_Proc.m_Assistant.reset();
    m_Proc.StageChangedValue("A", "x", true);
    EXPECT_THAT(world.Logs, ElementsAre(NoAssistant));
    EXPECT_THAT(m_Store->m_ChangedValues, IsEmpty());
}

TEST_F(BasicProcCompare, TextShowsEachPairUnderThePrefixOfTheForm)
{
    m_Store->Compared = {{"BootMode", {"Uefi", "Legacy"}}, {"Cores", {"10", "12"}}};
    SettingCompareMap compare = {{"Two.Cores", {"old", "older"}}, {"Other", {"kept", ""}}};
    EXPECT_THAT(m_Proc.CompareSettingPendingValues(compare, ""), IsBare(0));
    EXPECT_EQ(compare,
              (SettingCompareMap{
                  {"Other", {"kept", ""}}, {"Two.BootMode", {"Uefi", "Legacy"}}, {"Two.Cores", {"10", "12"}}}));
    EXPECT_THAT(world.Logs, ElementsAre(CompareEntry("")));

    m_Store->Compared = {{"Cores", {"10", "12"}}};
    world.Logs.clear();
    compare = {{"One.Cores", {"old", "older"}}};
    EXPECT_THAT(m_Proc.CompareSettingPendingValues(compare, "Cores"), IsBare(0));
    EXPECT_EQ(compare, (SettingCompareMap{{"One.Cores", {"10", "12"}}}));
    EXPECT_THAT(world.Logs, ElementsAre(CompareEntry("Cores")));
    EXPECT_THAT(m_Store->Steps, ElementsAre("compare ", "compare Cores"));
}

TEST_F(BasicProcCompare, JsonShowsOneArrayUnderThePrefixOfTheForm)
{
    m_Proc.m_Options.OutputFormat = 1;
    m_Store->Compared = {{"Cores", {"10", "12"}}};
    const std::string array = R"([{"Setting Name":"Cores","Current Value":"10","Pending Value":"12"}])";
    SettingCompareMap compare = {{"Two", {"old", "older"}}, {"Other", {"kept", ""}}};
    EXPECT_THAT(m_Proc.CompareSettingPendingValues(compare, ""), IsBare(0));
    EXPECT_EQ(compare, (SettingCompareMap{{"Other", {"kept", ""}}, {"Two", {array, ""}}}));

    compare = {{"One", {"old", "older"}}};
    EXPECT_THAT(m_Proc.CompareSettingPendingValues(compare, "Cores"), IsBare(0));
    EXPECT_EQ(compare, (SettingCompareMap{{"One", {array, ""}}}));
}

TEST_F(BasicProcCompare, NumbersStayDecimalInHexMode)
{
    m_Proc.m_Options.HexValueMode = true;
    m_Store->Compared = {{"Cores", {"10", "12"}}};
    SettingCompareMap compare;
    EXPECT_THAT(m_Proc.CompareSettingPendingValues(compare, ""), IsBare(0));
    EXPECT_EQ(compare, (SettingCompareMap{{"Two.Cores", {"10", "12"}}}));
}

TEST_F(BasicProcCompare, NoDifferenceLeavesTheMapAndHandsTheCodeOn)
{
    m_Store->CompareResult = {2, "Setting has no pending value.", "S"};
    for (const std::string name : {"Cores", ""})
    {
        for (const int format : {0, 1, 2})
        {
            m_Proc.m_Options.OutputFormat = format;
            world.Logs.clear();
            SettingCompareMap compare;
            EXPECT_THAT(m_Proc.CompareSettingPendingValues(compare, name),
                        IsResult(2, "Setting has no pending value.", "S"));
            EXPECT_THAT(compare, IsEmpty());
            EXPECT_THAT(world.Logs, ElementsAre(CompareEntry(name)));
        }
    }
}

TEST_F(BasicProcCompare, FailureDoesNotStopWhatFollows)
{
    m_Store->CompareResult = {7, "some failed", "S"};
    m_Store->Compared = {{"Cores", {"10", "12"}}};
    for (const auto& [format, key] : std::vector<std::pair<int, std::string>>{{0, "Two.Cores"}, {1, "Two"}})
    {
        m_Proc.m_Options.OutputFormat = format;
        SettingCompareMap compare;
        EXPECT_THAT(m_Proc.CompareSettingPendingValues(compare, ""), IsResult(7, "some failed", "S"));
        EXPECT_THAT(compare, ElementsAre(Pair(key, testing::_)));
    }
}

TEST_F(BasicProcCompare, AnyOtherFormatShowsNothing)
{
    m_Store->Compared = {{"Cores", {"10", "12"}}};
    for (const int format : {-1, 2})
    {
        m_Proc.m_Options.OutputFormat = format;
        SettingCompareMap compare;
        EXPECT_THAT(m_Proc.CompareSettingPendingValues(compare, ""), IsBare(0));
        EXPECT_THAT(compare, IsEmpty());
    }
}

TEST_F(BasicProcCompare, WithoutAnAssistantAnswersThirteen)
{
    m_Proc.m_Assistant.reset();
    SettingCompareMap compare;
    EXPECT_THAT(m_Proc.CompareSettingPendingValues(compare, "Cores"), IsBare(13));
    EXPECT_THAT(world.Logs, ElementsAre(CompareEntry("Cores"), NoAssistant));
}

TEST_F(BasicProcCompare, JsonTextHasNoBlanksAndEscapesNothing)
{
    EXPECT_EQ(m_Proc.BuildCompareJson({}), "");
    EXPECT_EQ(m_Proc.BuildCompareJson({{"A", {"x\"y", "\\"}}, {"B", {"", ""}}, {"C \"1\"", {"1", "2"}}}),
              R"([{"Setting Name":"A","Current Value":"x"y","Pending Value":"\"},)"
              R"({"Setting Name":"B","Current Value":"","Pending Value":""},)"
              R"({"Setting Name":"C "1"","Current Value":"1","Pending Value":"2"}])");
}

TEST_F(BasicProcForward, FlushIsHandedOnWithoutALog)
{
    m_Store->FlushResult = {18, "refused", "Cores"};
    EXPECT_THAT(m_Proc.FlushChanges(), IsResult(18, "refused", "Cores"));
    m_Store->FlushResult = {1, "reboot", ""};
    EXPECT_THAT(m_Proc.FlushChanges(), IsResult(1, "reboot", ""));
    EXPECT_THAT(m_Store->Steps, ElementsAre("flush", "flush"));
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_F(BasicProcForward, CurrentValuesAreMergedAndReadOnce)
{
    m_Store->Effective = {{"BootMode", "Uefi"}, {"Pin", "16"}};
    m_Store->Pending = {{"BootMode", "Legacy"}};
    for (int round = 0; round < 2; ++round)
    {
        SettingValueMap values;
        EXPECT_THAT(m_Proc.GetCurrentValuesMap(values), IsBare(0));
        EXPECT_EQ(values, (SettingValueMap{{"BootMode", "Legacy"}, {"Pin", "16"}}));
    }
    EXPECT_THAT(m_Store->Steps, ElementsAre("effective", "pending"));
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_F(BasicProcForward, ReloadReadsAnew)
{
    m_Store->Effective = {{"BootMode", "Uefi"}};
    SettingValueMap values;
    EXPECT_THAT(m_Proc.ReloadAllSettingValues(values), IsBare(0));
    m_Store->Effective = {{"BootMode", "Other"}};
    EXPECT_THAT(m_Proc.ReloadAllSettingValues(values), IsBare(0));
    EXPECT_EQ(values, (SettingValueMap{{"BootMode", "Other"}}));
    EXPECT_THAT(m_Store->Steps, ElementsAre("effective", "pending", "effective", "pending"));
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_F(BasicProcForward, FailedReadIsLoggedAndHandedOn)
{
    m_Store->EffectiveResult = {26, "no resource", "S"};
    m_Store->Effective.clear();
    using Read = RedfishConfigResult (BiosBasicSettingProc::*)(SettingValueMap&);
    for (const Read read : {&BiosBasicSettingProc::GetCurrentValuesMap, &BiosBasicSettingProc::ReloadAllSettingValues})
    {
        world.Logs.clear();
        SettingValueMap values = {{"Kept", "x"}};
        EXPECT_THAT((m_Proc.*read)(values), IsResult(26, "no resource", "S"));
        EXPECT_EQ(values, (SettingValueMap{{"Kept", "x"}}));
        EXPECT_THAT(world.Logs, ElementsAre(LogLine{1, "Query current value error: no resource"},
                                            LogLine{1, "Failed in get current value map though: no resource"}));
    }
}

TEST_F(BasicProcForward, WithoutAnAssistantEveryForwarderAnswersThirteen)
{
    m_Proc.m_Assistant.reset();
    SettingValueMap values;
    EXPECT_THAT(m_Proc.FlushChanges(), IsBare(13));
    EXPECT_THAT(m_Proc.GetCurrentValuesMap(values), IsBare(13));
    EXPECT_THAT(m_Proc.ReloadAllSettingValues(values), IsBare(13));
    EXPECT_THAT(world.Logs, ElementsAre(NoAssistant, NoAssistant, NoAssistant));
}

TEST_F(BasicProcErrors, ErrorsGetTheirFullNames)
{
    m_Proc.m_ErrorList = {{9, "earlier", "One.X"}};
    m_Store->m_Errors = {{18, "Cores: the setting Cores is read only", "Cores"}, {10, "bad value", "Pin"}};
    const auto expected = ElementsAre(IsResult(9, "earlier", "One.X"),
                                      IsResult(18, "One.Cores: the setting One.Cores is read only", "One.Cores"),
                                      IsResult(10, "bad value", "One.Pin"));
    EXPECT_THAT(m_Proc.GetError(), expected);
    EXPECT_THAT(m_Proc.m_ErrorList, expected);
    EXPECT_THAT(m_Store->m_Errors, ElementsAre(IsResult(18, "Cores: the setting Cores is read only", "Cores"),
                                               IsResult(10, "bad value", "Pin")));
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_F(BasicProcErrors, SecondCallAddsTheSameErrorsAgain)
{
    m_Store->m_Errors = {{18, "refused", "Cores"}};
    m_Proc.GetError();
    EXPECT_THAT(m_Proc.GetError(),
                ElementsAre(IsResult(18, "refused", "One.Cores"), IsResult(18, "refused", "One.Cores")));
}

TEST_F(BasicProcErrors, ReturnedListIsACopy)
{
    m_Store->m_Errors = {{18, "refused", "Cores"}};
    m_Proc.GetError().clear();
    EXPECT_THAT(m_Proc.m_ErrorList, ElementsAre(IsResult(18, "refused", "One.Cores")));
}

TEST_F(BasicProcErrors, ErrorWithoutASettingKeepsItsMessage)
{
    m_Store->m_Errors = {{32, "internal", ""}};
    EXPECT_THAT(m_Proc.GetError(), ElementsAre(IsResult(32, "internal", "One.")));
}

TEST_F(BasicProcErrors, WithoutAnAssistantTheOwnListIsGivenSilently)
{
    m_Proc.m_ErrorList = {{9, "earlier", "One.X"}};
    m_Proc.m_Assistant.reset();
    EXPECT_THAT(m_Proc.GetError(), ElementsAre(IsResult(9, "earlier", "One.X")));
    EXPECT_THAT(world.Logs, IsEmpty());
}

} // namespace
