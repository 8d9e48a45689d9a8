#include "BiosBasicSettingProc.h"

#include "BiosProtectedSettingAssistant.h"
#include "BiosProtectedSettingProc.h"
#include "BiosStandardSettingAssistant.h"
#include "BiosStandardSettingProc.h"
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

const LogLine GroupEntry{4, "Entering  Tavrine::BiosBasicSettingProc::QueryGroupSettingValues"};

LogLine QueryEntry(const std::string& name)
{
    return {3, "Enter BiosBasicSettingProc::QuerySettingValue(), try to get the current value of " + name};
}

LogLine QueryExit(const std::string& name)
{
    return {3, "Exit BiosBasicSettingProc::QuerySettingValue() of setting BIOS." + name};
}

class BasicProc : public procs::ProcTest
{
};

using BasicProcGroup = BasicProc;
using BasicProcQuery = BasicProc;

TEST_F(BasicProc, StartsEmpty)
{
    const BiosBasicSettingProc proc;
    EXPECT_EQ(proc.m_Prefix + proc.m_SecondPrefix + proc.m_DebugConfigFile, "");
    EXPECT_EQ(proc.m_Assistant, nullptr);
    EXPECT_THAT(proc.m_ErrorList, IsEmpty());
    EXPECT_FALSE(proc.m_Options.HexValueMode || proc.m_Options.allowProtectedSettings ||
                 proc.m_Options.ReservedOption || proc.m_Options.LegacyNameMode);
    EXPECT_EQ(proc.m_Options.OutputFormat, 0);
    EXPECT_EQ(proc.m_SystemType, 0);
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_F(BasicProc, MembersStandInTheirOrder)
{
    const std::vector<const void*> members = {
        &m_Proc.m_Prefix,          &m_Proc.m_SecondPrefix, &m_Proc.m_Options,    &m_Proc.m_Assistant,
        &m_Proc.m_DebugConfigFile, &m_Proc.m_ErrorList,    &m_Proc.m_SystemType,
    };
    EXPECT_TRUE(std::is_sorted(members.begin(), members.end(), std::less<>()));
}

template <typename Proc, typename Assistant> void ExpectConstruction(doubles::World& world)
{
    const Proc proc(TavrineConnection::ConnectionInfo{.Host = "bmc1", .User = "", .Password = ""},
                    {true, false, true, true, 1});
    EXPECT_NE(dynamic_cast<Assistant*>(proc.m_Assistant.get()), nullptr);
    EXPECT_EQ(proc.m_Assistant.use_count(), 1);
    EXPECT_TRUE(proc.m_Options.HexValueMode && proc.m_Options.ReservedOption && proc.m_Options.LegacyNameMode);
    EXPECT_FALSE(proc.m_Options.allowProtectedSettings);
    EXPECT_EQ(proc.m_Options.OutputFormat, 1);
    EXPECT_EQ(proc.m_Prefix + proc.m_SecondPrefix + proc.m_DebugConfigFile, "");
    EXPECT_THAT(proc.m_ErrorList, IsEmpty());
    EXPECT_EQ(proc.m_SystemType, 0);
    EXPECT_THAT(world.Clients, ElementsAre(Pair("bmc1", 6)));
    EXPECT_THAT(world.Logs, IsEmpty());
    EXPECT_THAT(world.Calls, IsEmpty());
}

TEST_F(BasicProc, StandardProcMakesItsAssistantAndTakesTheOptions)
{
    ExpectConstruction<BiosStandardSettingProc, BiosStandardSettingAssistant>(world);
}

TEST_F(BasicProc, ProtectedProcMakesItsAssistantAndTakesTheOptions)
{
    ExpectConstruction<BiosProtectedSettingProc, BiosProtectedSettingAssistant>(world);
}

TEST_F(BasicProc, MissingAssistantIsLoggedAtConstructionAndTheOptionsAreTaken)
{
    m_Proc.TakeAssistant(nullptr, {true, false, false, false, 1});
    EXPECT_THAT(world.Logs, ElementsAre(LogLine{1, "Failed to construct config proc assistant point."}));
    EXPECT_EQ(m_Proc.m_Assistant, nullptr);
    EXPECT_TRUE(m_Proc.m_Options.HexValueMode);
    EXPECT_EQ(m_Proc.m_Options.OutputFormat, 1);
}

TEST_F(BasicProc, SetDebugConfigFileStoresThePathAndNoMore)
{
    m_Proc.SetDebugConfigFile("/nowhere/debug.json");
    EXPECT_EQ(m_Proc.m_DebugConfigFile, "/nowhere/debug.json");
    m_Proc.SetDebugConfigFile("");
    EXPECT_EQ(m_Proc.m_DebugConfigFile, "");
    EXPECT_THAT(m_Store->Steps, IsEmpty());
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_F(BasicProc, ProtectedProcNeverReadsADebugFile)
{
    BiosProtectedSettingProc proc({.Host = "bmc1", .User = "", .Password = ""}, {});
    proc.SetDebugConfigFile("/nowhere/debug.json");
    EXPECT_EQ(proc.m_DebugConfigFile, "/nowhere/debug.json");
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_F(BasicProcGroup, TextShowsEveryValueUnderTheSecondPrefix)
{
    SettingStringMap values = {{"Two.Cores", "old"}, {"Other", "kept"}};
    EXPECT_THAT(m_Proc.QueryGroupSettingValues(values), IsBare(0));
    EXPECT_THAT(values, ElementsAre(Pair("Other", "kept"), Pair("Two.BootMode", "Uefi"), Pair("Two.Cores", "10"),
                                    Pair("Two.Pin", "16"), Pair("Two.Wake", "true")));
    EXPECT_THAT(world.Logs, ElementsAre(GroupEntry, LogLine{4, "Nothing current value is invalid, so skipped."}));
    EXPECT_THAT(m_Store->Steps, ElementsAre("effective"));
}

TEST_F(BasicProcGroup, TheResultOfTheReadIsReturned)
{
    m_Store->EffectiveResult = {0, "remark", "Remarked"};
    SettingStringMap values;
    EXPECT_THAT(m_Proc.QueryGroupSettingValues(values), IsResult(0, "remark", "Remarked"));
    EXPECT_EQ(values.size(), 4U);
    m_Store->m_EffectiveValues.clear();
    values.clear();
    EXPECT_THAT(m_Proc.QuerySettingValue("Cores", values), IsResult(0, "remark", "Remarked"));
    EXPECT_THAT(values, ElementsAre(Pair("One.Cores", "10")));
}

TEST_F(BasicProcGroup, TextTellsEmptyStringsFromMissingValues)
{
    m_Store->Effective = {{"A", std::nullopt}, {"B", ""}, {"C", std::nullopt}};
    SettingStringMap values;
    EXPECT_THAT(m_Proc.QueryGroupSettingValues(values), IsBare(0));
    EXPECT_THAT(values, ElementsAre(Pair("Two.B", "")));
    EXPECT_THAT(world.Logs, ElementsAre(GroupEntry, LogLine{4, "A current value is invalid, so skipped."},
                                        LogLine{4, "C current value is invalid, so skipped."}));
}

TEST_F(BasicProcGroup, HexModeTurnsNumbersAlone)
{
    m_Proc.m_Options.HexValueMode = true;
    m_Store->Effective["Low"] = std::int64_t{-255};
    SettingStringMap values;
    EXPECT_THAT(m_Proc.QueryGroupSettingValues(values), IsBare(0));
    EXPECT_THAT(values, ElementsAre(Pair("Two.BootMode", "Uefi"), Pair("Two.Cores", "0xA"), Pair("Two.Low", "-0xFF"),
                                    Pair("Two.Pin", "16"), Pair("Two.Wake", "true")));
}

TEST_F(BasicProcGroup, JsonShowsOneObjectWithTheKindsOfTheValues)
{
    m_Proc.m_Options.OutputFormat = 1;
    for (const bool hex : {false, true})
    {
        m_Proc.m_Options.HexValueMode = hex;
        SettingStringMap values = {{"Two", "old"}, {"Other", "kept"}};
        EXPECT_THAT(m_Proc.QueryGroupSettingValues(values), IsBare(0));
        EXPECT_THAT(values,
                    ElementsAre(Pair("Other", "kept"), Pair("Two", R"({"BootMode":"Uefi","Cores":10,"Nothing":null,)"
                                                                   R"("Pin":"16","Wake":true})")));
    }
    EXPECT_THAT(world.Logs, ElementsAre(GroupEntry, GroupEntry));
}

TEST_F(BasicProcGroup, NoValuesAtAllGiveNoTextAndAnEmptyJsonEntry)
{
    m_Store->Effective.clear();
    SettingStringMap values;
    EXPECT_THAT(m_Proc.QueryGroupSettingValues(values), IsBare(0));
    EXPECT_THAT(values, IsEmpty());
    m_Proc.m_Options.OutputFormat = 1;
    EXPECT_THAT(m_Proc.QueryGroupSettingValues(values), IsBare(0));
    EXPECT_THAT(values, ElementsAre(Pair("Two", "")));
}

TEST_F(BasicProcGroup, AnyOtherFormatReadsAndShowsNothing)
{
    for (const int format : {-1, 2, 3})
    {
        m_Proc.m_Options.OutputFormat = format;
        SettingStringMap values;
        EXPECT_THAT(m_Proc.QueryGroupSettingValues(values), IsBare(0));
        EXPECT_THAT(values, IsEmpty());
    }
    EXPECT_THAT(m_Store->Steps, ElementsAre("effective"));
    EXPECT_THAT(world.Logs, ElementsAre(GroupEntry, GroupEntry, GroupEntry));
}

TEST_F(BasicProcGroup, ShowsWhatIsInForceNotWhatWaits)
{
    m_Store->m_PendingValues = {{"BootMode", "Legacy"}};
    m_Store->m_CurrentValues = {{"BootMode", "Legacy"}};
    m_Store->Effective = {{"BootMode", "Uefi"}};
    SettingStringMap values;
    EXPECT_THAT(m_Proc.QueryGroupSettingValues(values), IsBare(0));
    EXPECT_THAT(values, ElementsAre(Pair("Two.BootMode", "Uefi")));
}

TEST_F(BasicProcGroup, FailedReadIsHandedOn)
{
    m_Store->EffectiveResult = {33, "BMC busy", "S"};
    SettingStringMap values = {{"Two", "kept"}};
    for (const int format : {0, 1})
    {
        m_Proc.m_Options.OutputFormat = format;
        m_Store->m_EffectiveValues.clear();
        world.Logs.clear();
        EXPECT_THAT(m_Proc.QueryGroupSettingValues(values), IsResult(33, "BMC busy", "S"));
        EXPECT_THAT(world.Logs, ElementsAre(GroupEntry, LogLine{4, "Failed to query effective value map with ret=33"},
                                            LogLine{1, "Failed in get current value map though: BMC busy"}));
    }
    EXPECT_THAT(values, ElementsAre(Pair("Two", "kept")));
}

TEST_F(BasicProcGroup, WithoutAnAssistantAnswersThirteen)
{
    m_Proc.m_Assistant.reset();
    SettingStringMap values;
    EXPECT_THAT(m_Proc.QueryGroupSettingValues(values), IsBare(13));
    EXPECT_THAT(values, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(GroupEntry, NoAssistant));
}

TEST_F(BasicProcQuery, TextShowsTheValueUnderTheFirstPrefix)
{
    const std::vector<std::pair<std::string, std::string>> table = {
        {"BootMode", "Uefi"}, {"Cores", "10"}, {"Wake", "true"}, {"Pin", "16"}};
    for (const auto& [name, text] : table)
    {
        SettingStringMap values;
        world.Logs.clear();
        EXPECT_THAT(m_Proc.QuerySettingValue(name, values), IsBare(0));
        EXPECT_THAT(values, ElementsAre(Pair("One." + name, text)));
        EXPECT_THAT(world.Logs, ElementsAre(QueryEntry(name), QueryExit(name)));
    }
    EXPECT_THAT(m_Store->Steps, ElementsAre("effective"));
}

TEST_F(BasicProcQuery, HexModeTurnsNumbersAloneAndInTextAlone)
{
    m_Proc.m_Options.HexValueMode = true;
    SettingStringMap values;
    for (const char* name : {"BootMode", "Cores", "Pin", "Wake"})
    {
        EXPECT_THAT(m_Proc.QuerySettingValue(name, values), IsBare(0));
    }
    EXPECT_THAT(values, ElementsAre(Pair("One.BootMode", "Uefi"), Pair("One.Cores", "0xA"), Pair("One.Pin", "16"),
                                    Pair("One.Wake", "true")));
    m_Proc.m_Options.OutputFormat = 1;
    values.clear();
    EXPECT_THAT(m_Proc.QuerySettingValue("Cores", values), IsBare(0));
    EXPECT_THAT(values, ElementsAre(Pair("Two", R"({"Cores":10})")));
}

TEST_F(BasicProcQuery, NameInAnotherCaseIsFound)
{
    SettingStringMap values;
    EXPECT_THAT(m_Proc.QuerySettingValue("bootMODE", values), IsBare(0));
    EXPECT_THAT(values, ElementsAre(Pair("One.bootMODE", "Uefi")));
    EXPECT_THAT(world.Logs, ElementsAre(QueryEntry("bootMODE"), QueryExit("bootMODE")));

    m_Proc.m_Options.OutputFormat = 1;
    values.clear();
    EXPECT_THAT(m_Proc.QuerySettingValue("bootMODE", values), IsBare(0));
    EXPECT_THAT(values, ElementsAre(Pair("Two", R"({"BootMode":"Uefi"})")));
}

TEST_F(BasicProcQuery, EntryThatIsThereAlreadyStays)
{
    SettingStringMap values = {{"One.Cores", "old"}, {"Two", "older"}};
    EXPECT_THAT(m_Proc.QuerySettingValue("Cores", values), IsBare(0));
    m_Proc.m_Options.OutputFormat = 1;
    EXPECT_THAT(m_Proc.QuerySettingValue("Cores", values), IsBare(0));
    EXPECT_THAT(values, ElementsAre(Pair("One.Cores", "old"), Pair("Two", "older")));
}

TEST_F(BasicProcQuery, AnyOtherFormatShowsNothing)
{
    for (const int format : {-1, 2})
    {
        m_Proc.m_Options.OutputFormat = format;
        world.Logs.clear();
        SettingStringMap values;
        EXPECT_THAT(m_Proc.QuerySettingValue("Cores", values), IsBare(0));
        EXPECT_THAT(values, IsEmpty());
        EXPECT_THAT(world.Logs, ElementsAre(QueryEntry("Cores"), QueryExit("Cores")));
    }
}

TEST_F(BasicProcQuery, UnknownSettingAnswersTwentyAndStillLogsTheExit)
{
    for (const int format : {0, 1, 2})
    {
        m_Proc.m_Options.OutputFormat = format;
        world.Logs.clear();
        SettingStringMap values;
        EXPECT_THAT(m_Proc.QuerySettingValue("Fan", values), IsResult(20, "Unable to find the setting One.Fan", ""));
        EXPECT_THAT(values, IsEmpty());
        EXPECT_THAT(world.Logs, ElementsAre(QueryEntry("Fan"), QueryExit("Fan")));
    }
    SettingStringMap values;
    EXPECT_THAT(m_Proc.QuerySettingValue("", values), IsResult(20, "Unable to find the setting One.", ""));
}

TEST_F(BasicProcQuery, SettingWithoutAValueAnswersEightWithoutTheExit)
{
    for (const int format : {0, 1, 2})
    {
        m_Proc.m_Options.OutputFormat = format;
        world.Logs.clear();
        SettingStringMap values;
        EXPECT_THAT(m_Proc.QuerySettingValue("nothing", values),
                    IsResult(8, "The setting One.nothing cannot be shown since it has no current value info.", ""));
        EXPECT_THAT(values, IsEmpty());
        EXPECT_THAT(world.Logs, ElementsAre(QueryEntry("nothing"), LogLine{4, "Get current value of nothing failed."}));
    }
}

TEST_F(BasicProcQuery, FailedReadIsHandedOnWithoutTheExit)
{
    m_Store->EffectiveResult = {26, "no resource", "S"};
    SettingStringMap values = {{"One.Cores", "kept"}};
    EXPECT_THAT(m_Proc.QuerySettingValue("Cores", values), IsResult(26, "no resource", "S"));
    EXPECT_THAT(values, ElementsAre(Pair("One.Cores", "kept")));
    EXPECT_THAT(world.Logs,
                ElementsAre(QueryEntry("Cores"), LogLine{4, "Failed to query effective value map with ret=26"},
                            LogLine{1, "Failed in get current value map though: no resource"}));
}

TEST_F(BasicProcQuery, WithoutAnAssistantAnswersThirteen)
{
    m_Proc.m_Assistant.reset();
    SettingStringMap values;
    EXPECT_THAT(m_Proc.QuerySettingValue("Cores", values), IsBare(13));
    EXPECT_THAT(values, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(QueryEntry("Cores"), NoAssistant));
}

TEST_F(BasicProc, ValuesJsonKeepsKindsOrderAndEscapes)
{
    EXPECT_EQ(m_Proc.BuildValuesJson({}), "");
    EXPECT_EQ(m_Proc.BuildValuesJson({{"b", "x\"y\\z\n"}, {"C", std::nullopt}, {"A", std::int64_t{-1}}, {"d", false}}),
              R"({"A":-1,"b":"x\"y\\z\n","C":null,"d":false})");
    m_Proc.m_Options.HexValueMode = true;
    EXPECT_EQ(m_Proc.BuildValuesJson({{"A", std::int64_t{255}}}), R"({"A":255})");
    EXPECT_EQ(m_Proc.BuildValuesJson({{"A", std::nullopt}}), R"({"A":null})");
}

} // namespace
