// One setting changed without the checks of the front class: it goes to the proc that owns it.
#include "ChangeFixture.h"

using namespace changing;
using namespace Tavrine;
using reading::DiscoveryLogs;
using reading::Join;
using staging::NoProc;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Pair;

namespace
{

const LogLine UncheckedEnter{3, "Enter BiosRedfishConfigProc::PatchSettingNewValueWithOutCheck()"};
const LogLine ProcSent{4, "Exiting  Tavrine::BiosBasicSettingProc::PatchSettingNewValueWithOutCheck"};
const LogLine ProcFailed{1, "Failed in patching data."};

LogLine UncheckedExit(int code)
{
    return {3, "Exit BiosRedfishConfigProc::PatchSettingNewValueWithOutCheck() with code " + std::to_string(code)};
}

class UncheckedChange : public ChangeTest
{
  protected:
    RedfishConfigResult Change(const std::string& setting, const std::string& value, bool batchMode)
    {
        return m_Front->PatchSettingNewValueWithOutCheck(setting, value, batchMode);
    }
};

TEST_F(UncheckedChange, ProcOfTheSettingStagesAndSendsIt)
{
    StartBios();
    EXPECT_THAT(Change("BootMode", "Legacy", false), IsBare(0));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("GetSettingProperties BootMode", "read standard",
                                                "cache standard BootMode=Legacy, staged \"Legacy\"",
                                                "flush standard {BootMode=\"Legacy\"}"));
    EXPECT_THAT(world.Logs, ElementsAre(UncheckedEnter, ProcSent, UncheckedExit(0)));
    EXPECT_THAT(world.NamesAsked, IsEmpty());
}

TEST_F(UncheckedChange, InBatchModeTheProcStagesIt)
{
    StartBios();
    EXPECT_THAT(Change("Wake", "false", true), IsBare(0));
    EXPECT_THAT(world.ManagerCalls,
                ElementsAre("GetSettingProperties Wake", "read standard", "cache standard Wake=false, staged false"));
    EXPECT_THAT(world.Logs, ElementsAre(UncheckedEnter, StaysInBatch, UncheckedExit(0)));
    EXPECT_THAT(m_Standard->m_ChangedValues, ElementsAre(Pair("Wake", "false")));
    TakeSteps();
    EXPECT_THAT(m_Front->FlushChanges(), IsBare(0));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("flush standard {Wake=false}"));
}

TEST_F(UncheckedChange, OnlyTheResourceOfTheSettingIsFlushed)
{
    StartUefi({.allowProtectedSettings = true});
    m_Standard->m_ChangedValues = {{"BootMode", "\"Legacy\""}};
    EXPECT_THAT(Change("Lock", "On", false), IsBare(0));
    EXPECT_THAT(world.ManagerCalls,
                ElementsAre("GetSettingProperties Lock", "read protected", "cache protected Lock=On, staged \"On\"",
                            "flush protected {Lock=\"On\"}"));
    EXPECT_THAT(m_Standard->m_ChangedValues, ElementsAre(Pair("BootMode", "\"Legacy\"")));
}

TEST_F(UncheckedChange, ValueInPlaceIsSentAllTheSame)
{
    StartBios();
    EXPECT_THAT(Change("BootMode", "Uefi", false), IsBare(0));
    EXPECT_THAT(world.ManagerCalls, testing::Contains("flush standard {BootMode=\"Uefi\"}"));
}

TEST_F(UncheckedChange, HexadecimalNumbersAreTheBusinessOfTheProc)
{
    StartBios({.HexValueMode = true});
    ProcOf("StandardSettings").m_Options.HexValueMode = true;
    EXPECT_THAT(Change("Cores", "0x1F", true), IsBare(0));
    EXPECT_THAT(m_Standard->m_ChangedValues, ElementsAre(Pair("Cores", "31")));
    EXPECT_THAT(Change("Cores", "many", true), IsResult(10, "Setting new value is invalid.", ""));
}

TEST_F(UncheckedChange, TakesNoPartInTheBatchOfRelatedSettings)
{
    StartBios();
    Know("BootMode").DependencyNames = {"Wake"};
    m_Front->m_PendingNames = {"Wake"};
    m_Front->m_PendingDependencies = {"BootMode"};
    EXPECT_THAT(Change("BootMode", "Legacy", true), IsBare(0));
    EXPECT_THAT(m_Front->m_PendingNames, ElementsAre("Wake"));
    EXPECT_THAT(m_Front->m_PendingDependencies, ElementsAre("BootMode"));
    EXPECT_THAT(m_Standard->m_ChangedValues, ElementsAre(Pair("BootMode", "\"Legacy\"")));
}

TEST_F(UncheckedChange, PasswordAnswersAsTheProcDoes)
{
    StartBios();
    Know("Pin").SettingType = "Password";
    EXPECT_THAT(Change("Pin", "77", true), IsBare(0));
    EXPECT_THAT(Change("Pin", "77", false), IsBare(0));
}

TEST_F(UncheckedChange, EmptyNameReachesTheManager)
{
    StartBios();
    EXPECT_THAT(Change("", "Legacy", false), IsResult(20, "Unable to find the setting ", ""));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("GetSettingProperties "));
    Know("");
    EXPECT_THAT(Change("", "Legacy", false), IsResult(20, "Unable to find the setting BIOS.", ""));
}

// --- the manager --------------------------------------------------------------------------

TEST_F(UncheckedChange, StandingManagerIsUsedAsItIs)
{
    StartBios();
    MakeManager();
    const auto manager = m_Front->m_SettingManager;
    m_Front->m_Schema.clear();
    EXPECT_THAT(Change("BootMode", "Legacy", true), IsBare(0));
    EXPECT_EQ(m_Front->m_SettingManager, manager);
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.UpdatedValues, IsEmpty());
}

TEST_F(UncheckedChange, MissingManagerIsMadeWithoutValues)
{
    StartBios();
    ASSERT_EQ(m_Front->m_SettingManager, nullptr);
    EXPECT_THAT(Change("BootMode", "Legacy", true), IsBare(0));
    EXPECT_NE(m_Front->m_SettingManager, nullptr);
    EXPECT_THAT(world.UpdatedValues, IsEmpty());
}

TEST_F(UncheckedChange, WithoutASettingManagerItEnds)
{
    StartBare();
    TellSystem();
    world.Tell("SCHEMA", reading::BiosUrl, {.Result = {24, "no route to BootMode", "host"}, .Body = "", .Errors = {}});
    EXPECT_THAT(Change("BootMode", "Legacy", false), IsResult(24, "no route to BootMode", "host"));
    EXPECT_THAT(world.Logs,
                ElementsAreArray(Join({{UncheckedEnter},
                                       DiscoveryLogs,
                                       {{1, "Query Schema error: no route to BootMode"},
                                        {1, "Failed to get schema though: no route to BootMode"},
                                        {1, "Failed to get setting manager with error: no route to BootMode"}}})));
    EXPECT_THAT(world.ManagerCalls, IsEmpty());
}

// --- failures on the way to the proc ------------------------------------------------------

TEST_F(UncheckedChange, UnknownSettingEndsItUnderItsNewName)
{
    StartBios({.LegacyNameMode = true});
    world.NewNames = {{"OldBoot", "Boot"}};
    EXPECT_THAT(Change("OldBoot", "Legacy", false), IsResult(20, "Unable to find the setting Boot", "Boot"));
    EXPECT_THAT(world.Logs,
                ElementsAre(UncheckedEnter, LogLine{1, "Failed to get setting info: Unable to find the setting Boot"}));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("GetSettingProperties Boot"));
}

TEST_F(UncheckedChange, HiddenSettingEndsItUnderItsAttributeKey)
{
    StartUefi({.LegacyNameMode = true});
    world.NewNames = {{"OldLock", "Lock"}};
    EXPECT_THAT(Change("OldLock", "On", false),
                IsResult(34, "The operation on setting Lock fails since it is hidden.", ""));
    EXPECT_THAT(world.Logs, ElementsAre(UncheckedEnter, staging::Protected, NoProc));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("GetSettingProperties Lock"));
}

TEST_F(UncheckedChange, ResourceWithoutAProcEndsIt)
{
    StartBios();
    m_Front->m_ProcCreator->m_ProcMap.clear();
    m_Front->m_ProcCreator->m_CreatorMap.clear();
    EXPECT_THAT(Change("BootMode", "Legacy", false), IsBare(13));
    EXPECT_THAT(world.Logs, ElementsAre(UncheckedEnter, NoProc));
}

TEST_F(UncheckedChange, EmptyProcIsAFailedCommand)
{
    StartBios();
    m_Front->m_ProcCreator->m_ProcMap["StandardSettings"] = nullptr;
    EXPECT_THAT(Change("BootMode", "Legacy", false), IsBare(6));
    EXPECT_THAT(world.Logs, ElementsAre(UncheckedEnter, LogLine{1, "Cannot get config proc the pointer is nullptr"},
                                        UncheckedExit(6)));
}

// --- answers of the proc ------------------------------------------------------------------

TEST_F(UncheckedChange, OldNameGoesToTheProcAsTheNewOneAndComesBackInTheMessage)
{
    StartBios({.LegacyNameMode = true});
    world.NewNames = {{"OldBoot", "BootMode"}};
    EXPECT_THAT(Change("OldBoot", "Legacy", true), IsBare(0));
    EXPECT_THAT(m_Standard->m_ChangedValues, ElementsAre(Pair("BootMode", "\"Legacy\"")));
    m_Standard->Flushes.push_back(Answer({18, "BootMode, bootmode, BootMode", "BootMode"}));
    EXPECT_THAT(Change("OldBoot", "Legacy", false), IsResult(18, "OldBoot, bootmode, OldBoot", "BootMode"));
    m_Standard->m_EffectiveValues = {{"Other", "1"}};
    EXPECT_THAT(Change("OldBoot", "Legacy", false), IsResult(20, "Unable to find the setting BIOS.OldBoot", ""));
    EXPECT_THAT(world.NamesAsked, ElementsAre("OldBoot", "OldBoot", "OldBoot"));
}

TEST_F(UncheckedChange, NamesAreNotTranslatedOutsideTheLegacyMode)
{
    StartBios();
    world.NewNames = {{"BootMode", "Wake"}};
    EXPECT_THAT(Change("BootMode", "Legacy", true), IsBare(0));
    EXPECT_THAT(m_Standard->m_ChangedValues, ElementsAre(Pair("BootMode", "\"Legacy\"")));
    EXPECT_THAT(world.NamesAsked, IsEmpty());
}

TEST_F(UncheckedChange, UnreadableValuesAreTheAnswerOfTheProc)
{
    StartBios();
    m_Standard->ReadResult = {26, "no values", "host"};
    EXPECT_THAT(Change("BootMode", "Legacy", false), IsResult(26, "no values", "host"));
    EXPECT_THAT(world.Logs,
                ElementsAre(UncheckedEnter, LogLine{4, "Failed to query effective value map with ret=26"},
                            LogLine{1, "Failed in get current value map though: no values"}, UncheckedExit(26)));
}

struct SentCase
{
    const char* Name;
    int Code;
    LogLine ProcLog;
};

class UncheckedChangeAnswer : public ChangeTest, public testing::WithParamInterface<SentCase>
{
};

INSTANTIATE_TEST_SUITE_P(
    Flushes, UncheckedChangeAnswer,
    testing::Values(SentCase{"WantsAReset", 1, ProcFailed}, SentCase{"IsRefused", 18, ProcFailed},
                    SentCase{"IsBusy", 33, {1, "Requested operation is temporarily unavailable: answered"}}),
    [](const auto& test) { return test.param.Name; });

// The errors of such a change stay with the assistant of the resource.
TEST_P(UncheckedChangeAnswer, IsHandedOnAndNoErrorsAreMerged)
{
    StartBios();
    MakeManager();
    m_Front->m_SettingManager->m_ErrorList = {{10, "left", "Wake"}};
    m_Front->m_ErrorList = {{18, "earlier", "BIOS.Pin"}};
    TellAssistantErrors({{18, "of the assistant", "Wake"}});
    m_Standard->Flushes.push_back(Answer({GetParam().Code, "answered", "BootMode"}, {{10, "bad", "BootMode"}}));
    EXPECT_THAT(m_Front->PatchSettingNewValueWithOutCheck("BootMode", "Legacy", false),
                IsResult(GetParam().Code, "answered", "BootMode"));
    EXPECT_THAT(world.Logs, ElementsAre(UncheckedEnter, GetParam().ProcLog, UncheckedExit(GetParam().Code)));
    EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(IsResult(18, "earlier", "BIOS.Pin")));
    EXPECT_THAT(m_Front->m_SettingManager->GetError(), ElementsAre(IsResult(10, "left", "Wake")));
    EXPECT_THAT(m_Standard->m_Errors, ElementsAre(IsResult(10, "bad", "BootMode")));
}

TEST_F(UncheckedChange, LaterFailingFlushCollectsTheErrorsThatStayed)
{
    StartBios();
    m_Standard->Flushes = {Answer({18, "", ""}, {{10, "BootMode is bad", "BootMode"}}), Answer({18, "again", ""})};
    ASSERT_THAT(Change("BootMode", "Legacy", false), IsBare(18));
    EXPECT_THAT(m_Front->m_ErrorList, IsEmpty());
    EXPECT_THAT(m_Front->FlushChanges(), IsResult(18, "again", ""));
    EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(IsResult(10, "BIOS.BootMode is bad", "BIOS.BootMode")));
}

} // namespace
