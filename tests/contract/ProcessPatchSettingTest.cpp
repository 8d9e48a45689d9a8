// Queueing one checked change in the store of the resource that owns the setting.
#include "ChangeFixture.h"

#include <optional>

#include "SettingTypeCode.h"

using namespace changing;
using namespace Tavrine;
using staging::FlushEnter;
using staging::FlushExit;
using staging::NoProc;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace
{

class ProcessThePatchSetting : public ChangeTest
{
  protected:
    void Start(const Config_Options& options = {})
    {
        StartBios(options);
        MakeManager();
    }
    RedfishConfigResult Process(const std::string& setting, const std::string& value)
    {
        return m_Front->ProcessThePatchSetting(setting, value);
    }
    /// Wake waits; BootMode is related to it.
    void StartRelated()
    {
        Start();
        TellPrefixesApart();
        Know("BootMode").DependencyNames = {"Wake", "Pin"};
        ASSERT_THAT(Process("Wake", "false"), IsBare(0));
        TakeSteps();
    }
};

TEST_F(ProcessThePatchSetting, QueuesTheTextAndThenUpdatesTheCache)
{
    Start();
    EXPECT_THAT(Process("BootMode", "\"a \\\"b\\\" c\""), IsBare(0));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("GetSettingProperties BootMode",
                                                "cache standard BootMode=\"a \\\"b\\\" c\", staged \"a \\\"b\\\" c\""));
    EXPECT_THAT(world.Logs, IsEmpty());
    EXPECT_THAT(m_Standard->m_ChangedValues, ElementsAre(Pair("BootMode", "\"a \\\"b\\\" c\"")));
}

// The text has been made by the manager: no quotes are put around it and no number is converted.
TEST_F(ProcessThePatchSetting, TextIsTakenAsItComes)
{
    Start({.HexValueMode = true});
    for (const char* text : {"", "Legacy", "0xA", "10", "{\"x\":1}"})
    {
        EXPECT_THAT(Process("BootMode", text), IsBare(0));
        EXPECT_THAT(Process("Cores", text), IsBare(0));
        EXPECT_THAT(m_Standard->m_ChangedValues, ElementsAre(Pair("BootMode", text), Pair("Cores", text)));
    }
}

TEST_F(ProcessThePatchSetting, ChangeIsAddressedToTheAttributeKey)
{
    Start();
    Know("BootMode").AttributeKey = "Bios.BootMode";
    EXPECT_THAT(Process("BootMode", "\"Legacy\""), IsBare(0));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("GetSettingProperties BootMode",
                                                "cache standard Bios.BootMode=\"Legacy\", staged \"Legacy\""));
    EXPECT_THAT(m_Front->m_PendingNames, ElementsAre("Bios.BootMode"));
}

TEST_F(ProcessThePatchSetting, LaterTextReplacesTheEarlierOne)
{
    Start();
    EXPECT_THAT(Process("BootMode", "\"Legacy\""), IsBare(0));
    EXPECT_THAT(Process("BootMode", "\"Dual\""), IsBare(0));
    EXPECT_THAT(m_Standard->m_ChangedValues, ElementsAre(Pair("BootMode", "\"Dual\"")));
}

TEST_F(ProcessThePatchSetting, NamesInTwoCasesAreTwoEntries)
{
    Start();
    Know("BOOTMODE");
    EXPECT_THAT(Process("BootMode", "1"), IsBare(0));
    EXPECT_THAT(Process("BOOTMODE", "2"), IsBare(0));
    EXPECT_THAT(m_Standard->m_ChangedValues, ElementsAre(Pair("BOOTMODE", "2"), Pair("BootMode", "1")));
}

TEST_F(ProcessThePatchSetting, ProtectedSettingIsQueuedInItsOwnResource)
{
    StartUefi({.allowProtectedSettings = true});
    MakeManager();
    EXPECT_THAT(Process("Lock", "\"On\""), IsBare(0));
    EXPECT_THAT(m_Protected->m_ChangedValues, ElementsAre(Pair("Lock", "\"On\"")));
    EXPECT_THAT(m_Standard->m_ChangedValues, IsEmpty());
}

TEST_F(ProcessThePatchSetting, SettingAndItsDependenciesAreRecorded)
{
    Start();
    Know("BootMode").DependencyNames = {"Wake", "Pin"};
    EXPECT_THAT(Process("BootMode", "1"), IsBare(0));
    EXPECT_THAT(m_Front->m_PendingNames, ElementsAre("BootMode"));
    EXPECT_THAT(m_Front->m_PendingDependencies, ElementsAre("Wake", "Pin"));
}

// --- failures -----------------------------------------------------------------------------

TEST_F(ProcessThePatchSetting, UnknownSettingIsNotQueued)
{
    Start();
    EXPECT_THAT(Process("Other", "1"), IsResult(20, "Unable to find the setting Other", "Other"));
    EXPECT_THAT(world.Logs,
                ElementsAre(LogLine{1, "Failed to get setting properties: Unable to find the setting Other"}));
    EXPECT_THAT(m_Standard->m_ChangedValues, IsEmpty());
    EXPECT_THAT(m_Front->m_PendingNames, IsEmpty());
}

TEST_F(ProcessThePatchSetting, SettingWithoutAnAttributeKeyEndsWithAnException)
{
    Start();
    Know("BootMode").AttributeKey.reset();
    EXPECT_THROW(Process("BootMode", "1"), std::bad_optional_access);
    EXPECT_THAT(world.ManagerCalls, ElementsAre("GetSettingProperties BootMode"));
    EXPECT_THAT(m_Standard->m_ChangedValues, IsEmpty());
    EXPECT_THAT(m_Front->m_PendingNames, IsEmpty());
}

TEST_F(ProcessThePatchSetting, HiddenSettingIsNotQueuedButRecorded)
{
    StartUefi();
    MakeManager();
    EXPECT_THAT(Process("Lock", "1"), IsResult(34, "The operation on setting Lock fails since it is hidden.", ""));
    EXPECT_THAT(world.Logs, ElementsAre(staging::Protected, NoProc));
    EXPECT_THAT(m_Protected->m_ChangedValues, IsEmpty());
    EXPECT_THAT(m_Front->m_PendingNames, ElementsAre("Lock"));
}

TEST_F(ProcessThePatchSetting, ResourceWithoutAProcEndsIt)
{
    Start();
    m_Front->m_ProcCreator->m_ProcMap.clear();
    m_Front->m_ProcCreator->m_CreatorMap.clear();
    EXPECT_THAT(Process("BootMode", "1"), IsBare(13));
    EXPECT_THAT(world.Logs, ElementsAre(NoProc));
}

TEST_F(ProcessThePatchSetting, EmptyProcAnswersZeroAlthoughNothingIsQueued)
{
    Start();
    Know("BootMode").SettingType = "Password";
    m_Front->m_ProcCreator->m_ProcMap["StandardSettings"] = nullptr;
    EXPECT_THAT(Process("BootMode", "1"), IsBare(0));
    EXPECT_THAT(world.Logs, ElementsAre(NoProc));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("GetSettingProperties BootMode"));
}

// --- the forced flush ---------------------------------------------------------------------

TEST_F(ProcessThePatchSetting, RelatedSettingIsQueuedBehindAFlush)
{
    for (const int code : {0, 1})
    {
        doubles::ResetWorld();
        StartRelated();
        m_Standard->Flushes.push_back(Answer({code, "flushed", "Wake"}));
        EXPECT_THAT(Process("BootMode", "1"), IsBare(0));
        EXPECT_THAT(world.ManagerCalls, ElementsAre("GetSettingProperties BootMode", "flush standard {Wake=false}",
                                                    "cache standard BootMode=1, staged 1"));
        EXPECT_THAT(world.Logs, ElementsAre(FlushEnter, FlushExit));
        EXPECT_THAT(m_Standard->m_ChangedValues, ElementsAre(Pair("BootMode", "1")));
        EXPECT_THAT(m_Front->m_PendingNames, ElementsAre("BootMode"));
        EXPECT_THAT(m_Front->m_PendingDependencies, ElementsAre("Wake", "Pin"));
    }
}

TEST_F(ProcessThePatchSetting, RelationIsTestedByTheAttributeKey)
{
    Start();
    Know("BootMode").DependencyNames = {"WakeKey"};
    Know("Wake").AttributeKey = "WakeKey";
    ASSERT_THAT(Process("Wake", "1"), IsBare(0));
    TakeSteps();
    EXPECT_THAT(Process("BootMode", "2"), IsBare(0));
    EXPECT_THAT(world.ManagerCalls, testing::Contains("flush standard {WakeKey=1}"));
}

TEST_F(ProcessThePatchSetting, FailedForcedFlushIsForgotten)
{
    StartRelated();
    m_Standard->Flushes.push_back(Answer({18, "refused", "Wake"}, {{10, "Wake is on", "Wake"}}));
    m_Standard->ReadResult = {26, "no values", "host"};
    EXPECT_THAT(Process("BootMode", "1"), IsBare(0));
    EXPECT_THAT(world.LogsAt(1), testing::Contains("Failed to reload all values with error: no values"));
    EXPECT_THAT(m_Standard->m_ChangedValues, ElementsAre(Pair("BootMode", "1")));
    EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(IsResult(10, "Proc.Wake is on", "Proc.Wake")));
}

// The batch has been opened anew by the setting that was not queued.
TEST_F(ProcessThePatchSetting, BusyForcedFlushEndsIt)
{
    StartRelated();
    m_Standard->Flushes.push_back(Answer(Busy));
    EXPECT_THAT(Process("BootMode", "1"), IsResult(33, "BMC is not ready.", "Ethernet"));
    EXPECT_THAT(world.Logs, ElementsAre(FlushEnter, FlushExit, BusyLog, BusyLog));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("GetSettingProperties BootMode", "flush standard {Wake=false}"));
    EXPECT_THAT(m_Standard->m_ChangedValues, IsEmpty());
    EXPECT_THAT(m_Front->m_PendingNames, ElementsAre("BootMode"));
}

// A busy BMC met by the reload counts like one met by the flush.
TEST_F(ProcessThePatchSetting, BusyReloadEndsItToo)
{
    StartRelated();
    m_Standard->Flushes.push_back(Answer({18, "refused", ""}));
    m_Standard->ReadResult = Busy;
    m_Standard->m_EffectiveValues.clear();
    EXPECT_THAT(Process("BootMode", "1"), IsResult(33, "BMC is not ready.", "Ethernet"));
    EXPECT_THAT(world.LogsAt(1), testing::Contains("Failed to reload all values with error: BMC is not ready."));
    EXPECT_THAT(world.LogsAt(4), testing::Contains(BusyLog.Text).Times(1));
    EXPECT_THAT(m_Standard->m_ChangedValues, IsEmpty());
}

// --- kinds of settings --------------------------------------------------------------------

struct TypeCase
{
    const char* Name;
    std::optional<std::string> Word;
    int Code;
};

class PatchedSettingType : public ChangeTest, public testing::WithParamInterface<TypeCase>
{
};

INSTANTIATE_TEST_SUITE_P(Words, PatchedSettingType,
                         testing::Values(TypeCase{"Integer", "Integer", 0}, TypeCase{"String", "String", 1},
                                         TypeCase{"Enumeration", "Enumeration", 2}, TypeCase{"Boolean", "Boolean", 3},
                                         TypeCase{"Password", "Password", 4}, TypeCase{"SmallWord", "password", 5},
                                         TypeCase{"WordInCapitals", "PASSWORD", 5},
                                         TypeCase{"WordWithABlank", "Password ", 5}, TypeCase{"OtherWord", "Date", 5},
                                         TypeCase{"EmptyWord", "", 5}, TypeCase{"NoWord", std::nullopt, 5}),
                         [](const auto& test) { return test.param.Name; });

TEST_P(PatchedSettingType, HasItsCode) { EXPECT_EQ(static_cast<int>(TypeCodeOf(GetParam().Word)), GetParam().Code); }

TEST_P(PatchedSettingType, OnlyAPasswordAnswersFour)
{
    StartBios();
    MakeManager();
    Know("Pin").SettingType = GetParam().Word;
    EXPECT_THAT(m_Front->ProcessThePatchSetting("Pin", "\"77\""), IsBare(GetParam().Code == 4 ? 4 : 0));
    EXPECT_THAT(m_Standard->m_ChangedValues, ElementsAre(Pair("Pin", "\"77\"")));
}

} // namespace
