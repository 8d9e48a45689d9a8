// One setting changed with every check: what is asked of whom in which order, and what the
// caller gets when nothing fails.
#include "ChangeFixture.h"

using namespace changing;
using namespace Tavrine;
using staging::FlushEnter;
using staging::FlushExit;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

namespace
{

const LogLine NoChange{4, "Setting value no change, need do nothing."};

class CheckedChange : public ChangeTest
{
};

TEST_F(CheckedChange, IsReadJudgedCheckedQueuedAndSentInThisOrder)
{
    StartBios();
    Accept("BootMode", "\"Legacy\"");
    EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", false), IsBare(0));
    EXPECT_THAT(world.ManagerCalls,
                ElementsAre("read standard", "UpdateSettingValue", "PreparePatchContext BootMode=Legacy 8",
                            "GetSettingProperties BootMode", "cache standard BootMode=\"Legacy\", staged \"Legacy\"",
                            "flush standard {BootMode=\"Legacy\"}", "TakeErrors"));
    EXPECT_THAT(world.Logs, ElementsAre(PatchEnter, FlushEnter, FlushExit));
    EXPECT_THAT(m_Front->m_ErrorList, IsEmpty());
    EXPECT_THAT(world.NamesAsked, IsEmpty());
}

TEST_F(CheckedChange, InBatchModeItIsQueuedAndNotSent)
{
    StartBios();
    Accept("BootMode", "\"Legacy\"");
    EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", true), IsBare(0));
    EXPECT_THAT(world.ManagerCalls,
                ElementsAre("read standard", "UpdateSettingValue", "PreparePatchContext BootMode=Legacy 8",
                            "GetSettingProperties BootMode", "cache standard BootMode=\"Legacy\", staged \"Legacy\""));
    EXPECT_THAT(world.Logs, ElementsAre(PatchEnter, StaysInBatch));
    EXPECT_THAT(m_Standard->m_ChangedValues, ElementsAre(Pair("BootMode", "\"Legacy\"")));
    EXPECT_THAT(m_Front->m_PendingNames, ElementsAre("BootMode"));
}

TEST_F(CheckedChange, BatchIsSentByOneFlush)
{
    StartBios();
    Accept("BootMode", "\"Legacy\"");
    Accept("Wake", "false");
    ASSERT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", true), IsBare(0));
    ASSERT_THAT(m_Front->PatchSettingNewValue("Wake", "false", true), IsBare(0));
    TakeSteps();
    EXPECT_THAT(m_Front->FlushChanges(), IsBare(0));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("flush standard {BootMode=\"Legacy\",Wake=false}"));
}

// The library keeps no batch flag: each call decides for itself, and sends all that waits.
TEST_F(CheckedChange, CallOutsideTheBatchSendsWhatWaitsAsWell)
{
    StartBios();
    Accept("BootMode", "\"Legacy\"");
    Accept("Wake", "false");
    ASSERT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", true), IsBare(0));
    TakeSteps();
    EXPECT_THAT(m_Front->PatchSettingNewValue("Wake", "false", false), IsBare(0));
    EXPECT_THAT(TakeSteps(), testing::Contains("flush standard {BootMode=\"Legacy\",Wake=false}"));
    ASSERT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", true), IsBare(0));
    EXPECT_THAT(world.ManagerCalls, testing::Not(testing::Contains(testing::HasSubstr("flush"))));
}

TEST_F(CheckedChange, EveryResourceIsReadAndFlushed)
{
    StartUefi({.allowProtectedSettings = true});
    Accept("Lock", "\"On\"");
    EXPECT_THAT(m_Front->PatchSettingNewValue("Lock", "On", false), IsBare(0));
    EXPECT_THAT(world.ManagerCalls,
                ElementsAre("read protected", "read standard", "UpdateSettingValue", "PreparePatchContext Lock=On 8",
                            "GetSettingProperties Lock", "cache protected Lock=\"On\", staged \"On\"",
                            "flush protected {Lock=\"On\"}", "flush standard {}", "TakeErrors"));
    ASSERT_THAT(world.UpdatedValues, SizeIs(1));
    EXPECT_THAT(world.UpdatedValues[0],
                ElementsAre(Pair("BootMode", OptionalVar("Uefi")), Pair("Cores", OptionalVar(std::int64_t{10})),
                            Pair("Lock", OptionalVar("Off")), Pair("Nothing", OptionalVar()),
                            Pair("Pin", OptionalVar("16")), Pair("Seal", OptionalVar("Off")),
                            Pair("Wake", OptionalVar(true))));
}

TEST_F(CheckedChange, EachCallGivesTheManagerTheValuesOfThatMoment)
{
    StartBios();
    m_Standard->Values = {{"BootMode", "Uefi"}};
    Accept("BootMode", "\"Legacy\"");
    ASSERT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", true), IsBare(0));
    m_Standard->m_CurrentValues = {{"BootMode", "Other"}};
    ASSERT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", true), IsBare(0));
    ASSERT_THAT(world.UpdatedValues, SizeIs(2));
    EXPECT_THAT(world.UpdatedValues[0], ElementsAre(Pair("BootMode", OptionalVar("Uefi"))));
    EXPECT_THAT(world.UpdatedValues[1], ElementsAre(Pair("BootMode", OptionalVar("Other"))));
}

TEST_F(CheckedChange, StandingManagerIsUsedAndItsAbsenceMended)
{
    StartBios();
    Accept("BootMode", "\"Legacy\"");
    ASSERT_EQ(m_Front->m_SettingManager, nullptr);
    ASSERT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", true), IsBare(0));
    const auto manager = m_Front->m_SettingManager;
    ASSERT_NE(manager, nullptr);
    ASSERT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", true), IsBare(0));
    EXPECT_EQ(m_Front->m_SettingManager, manager);
}

// --- values in place ----------------------------------------------------------------------

TEST_F(CheckedChange, ValueInPlaceAnswersOneAndQueuesNothing)
{
    for (const bool batchMode : {false, true})
    {
        doubles::ResetWorld();
        StartBios();
        m_Front->m_ErrorList = {{18, "earlier", "BIOS.Pin"}};
        EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Uefi", batchMode), IsBare(1));
        EXPECT_THAT(world.ManagerCalls, ElementsAre("read standard", "UpdateSettingValue"));
        EXPECT_THAT(world.Logs,
                    ElementsAre(PatchEnter, LogLine{4, "no need to change setting BIOS.BootMode"}, NoChange));
        EXPECT_THAT(m_Standard->m_ChangedValues, IsEmpty());
        EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(IsResult(18, "earlier", "BIOS.Pin")));
        EXPECT_THAT(m_Front->m_PendingNames, IsEmpty());
    }
}

TEST_F(CheckedChange, ValueInPlaceSendsNothingThatWaits)
{
    StartBios();
    Accept("Wake", "false");
    ASSERT_THAT(m_Front->PatchSettingNewValue("Wake", "false", true), IsBare(0));
    TakeSteps();
    EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Uefi", false), IsBare(1));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("UpdateSettingValue"));
    EXPECT_THAT(m_Standard->m_ChangedValues, ElementsAre(Pair("Wake", "false")));
}

TEST_F(CheckedChange, EmptyValueIsComparedAndCheckedLikeAnyOther)
{
    StartBios();
    Accept("BootMode", "\"\"");
    EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "", true), IsBare(0));
    EXPECT_THAT(world.ManagerCalls, testing::Contains("PreparePatchContext BootMode= 8"));
    m_Standard->m_CurrentValues["Pin"] = "";
    EXPECT_THAT(m_Front->PatchSettingNewValue("Pin", "", true), IsBare(1));
}

TEST_F(CheckedChange, SettingWithoutAReportedValueIsLeftToTheManager)
{
    StartBios();
    Know("New");
    Accept("New", "7");
    EXPECT_THAT(m_Front->PatchSettingNewValue("New", "7", true), IsBare(0));
    EXPECT_THAT(world.ManagerCalls, testing::Contains("PreparePatchContext New=7 8"));
    EXPECT_THAT(m_Standard->m_ChangedValues, ElementsAre(Pair("New", "7")));
    EXPECT_THAT(world.Logs,
                ElementsAre(PatchEnter, LogLine{1, "Not find setting BIOS.Newin value list."}, StaysInBatch));
}

TEST_F(CheckedChange, HexadecimalNumberIsCheckedAsADecimalOne)
{
    StartBios({.HexValueMode = true});
    Accept("Cores", "11");
    EXPECT_THAT(m_Front->PatchSettingNewValue("Cores", "0xB", true), IsBare(0));
    EXPECT_THAT(world.ManagerCalls, testing::Contains("PreparePatchContext Cores=11 8"));
    EXPECT_THAT(m_Front->PatchSettingNewValue("Cores", "0xA", true), IsBare(1));
}

TEST_F(CheckedChange, BadNumberIsLeftToTheManagerAsItStands)
{
    StartBios({.HexValueMode = true});
    Accept("Cores", "11");
    EXPECT_THAT(m_Front->PatchSettingNewValue("Cores", "eleven", true), IsBare(0));
    EXPECT_THAT(world.ManagerCalls, testing::Contains("PreparePatchContext Cores=eleven 8"));
    EXPECT_THAT(world.Logs,
                ElementsAre(PatchEnter, LogLine{4, "The setting new value eleven is invalid."}, StaysInBatch));
}

// Values are found whatever the case of the name; the manager gets the caller's.
TEST_F(CheckedChange, NameKeepsTheCaseOfTheCaller)
{
    StartBios();
    Know("BOOTMODE").AttributeKey = "BootMode";
    Accept("BOOTMODE", "\"Legacy\"");
    EXPECT_THAT(m_Front->PatchSettingNewValue("BOOTMODE", "Uefi", true), IsBare(1));
    TakeSteps();
    EXPECT_THAT(m_Front->PatchSettingNewValue("BOOTMODE", "Legacy", true), IsBare(0));
    EXPECT_THAT(world.ManagerCalls,
                ElementsAre("UpdateSettingValue", "PreparePatchContext BOOTMODE=Legacy 8",
                            "GetSettingProperties BOOTMODE", "cache standard BootMode=\"Legacy\", staged \"Legacy\""));
}

// --- old names ----------------------------------------------------------------------------

TEST_F(CheckedChange, OldNameIsTranslatedForAllThatFollows)
{
    StartBios({.LegacyNameMode = true});
    world.NewNames = {{"OldBoot", "BootMode"}};
    Accept("BootMode", "\"Legacy\"");
    EXPECT_THAT(m_Front->PatchSettingNewValue("OldBoot", "Uefi", false), IsBare(1));
    TakeSteps();
    EXPECT_THAT(m_Front->PatchSettingNewValue("OldBoot", "Legacy", true), IsBare(0));
    EXPECT_THAT(world.ManagerCalls,
                ElementsAre("UpdateSettingValue", "PreparePatchContext BootMode=Legacy 8",
                            "GetSettingProperties BootMode", "cache standard BootMode=\"Legacy\", staged \"Legacy\""));
    EXPECT_THAT(world.NamesAsked, ElementsAre("OldBoot", "OldBoot"));
}

TEST_F(CheckedChange, NameThatIsNoOldOneStaysAsItIs)
{
    StartBios({.LegacyNameMode = true});
    Accept("BootMode", "\"Legacy\"");
    EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", false), IsBare(0));
    EXPECT_THAT(world.NamesAsked, ElementsAre("BootMode"));
}

TEST_F(CheckedChange, NamesAreNotTranslatedOutsideTheLegacyMode)
{
    StartBios();
    world.NewNames = {{"BootMode", "Other"}};
    EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Uefi", false), IsBare(1));
    EXPECT_THAT(world.NamesAsked, IsEmpty());
}

// --- passwords ----------------------------------------------------------------------------

TEST_F(CheckedChange, PasswordInABatchAnswersFourBeforeItIsSent)
{
    StartBios();
    Know("Pin").SettingType = "Password";
    Accept("Pin", "\"77\"");
    EXPECT_THAT(m_Front->PatchSettingNewValue("Pin", "77", true), IsBare(4));
    EXPECT_THAT(world.Logs, ElementsAre(PatchEnter, StaysInBatch));
    EXPECT_THAT(m_Standard->m_ChangedValues, ElementsAre(Pair("Pin", "\"77\"")));
}

struct PasswordCase
{
    const char* Name;
    int FlushCode;
};

class CheckedPasswordChange : public ChangeTest, public testing::WithParamInterface<PasswordCase>
{
};

INSTANTIATE_TEST_SUITE_P(Flushes, CheckedPasswordChange,
                         testing::Values(PasswordCase{"Succeeds", 0}, PasswordCase{"WantsAReset", 1},
                                         PasswordCase{"IsRefused", 18}, PasswordCase{"AnswersFourItself", 4},
                                         PasswordCase{"LosesTheConnection", 24}),
                         [](const auto& test) { return test.param.Name; });

TEST_P(CheckedPasswordChange, AnswersFourWhateverTheFlushGave)
{
    StartBios();
    Know("Pin").SettingType = "Password";
    Accept("Pin", "\"77\"");
    m_Standard->Flushes.push_back(Answer({GetParam().FlushCode, "flush of Pin", "Pin"}));
    EXPECT_THAT(m_Front->PatchSettingNewValue("Pin", "77", false), IsBare(4));
    EXPECT_THAT(world.ManagerCalls, testing::IsSupersetOf({"flush standard {Pin=\"77\"}", "TakeErrors"}));
    EXPECT_THAT(world.Logs, ElementsAre(PatchEnter, FlushEnter, FlushExit));
}

TEST_F(CheckedChange, FailedFlushOfAPasswordShowsInTheErrorListAlone)
{
    StartBios();
    TellPrefixesApart();
    Know("Pin").SettingType = "Password";
    Accept("Pin", "\"77\"");
    m_Standard->Flushes.push_back(Answer({18, "refused", ""}, {{10, "Pin is too short", "Pin"}}));
    TellAssistantErrors({{32, "no room for Pin", "Pin"}});
    EXPECT_THAT(m_Front->PatchSettingNewValue("Pin", "77", false), IsBare(4));
    EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(IsResult(10, "Proc.Pin is too short", "Proc.Pin"),
                                                  IsResult(32, "no room for Front.Pin", "Front.Pin")));
}

TEST_F(CheckedChange, BusyBmcComesThroughAlsoForAPassword)
{
    StartBios();
    Know("Pin").SettingType = "Password";
    Accept("Pin", "\"77\"");
    m_Standard->Flushes.push_back(Answer(Busy));
    EXPECT_THAT(m_Front->PatchSettingNewValue("Pin", "77", false), IsResult(33, "BMC is not ready.", "Ethernet"));
    EXPECT_THAT(world.Logs, ElementsAre(PatchEnter, FlushEnter, FlushExit, BusyLog));
}

// --- answers of the flush -----------------------------------------------------------------

TEST_F(CheckedChange, NeededResetIsASuccessAndStaysTheAnswer)
{
    StartBios();
    Accept("BootMode", "\"Legacy\"");
    TellAssistantErrors({{18, "stale", "Wake"}});
    m_Standard->Flushes.push_back(Answer({1, "reset for BootMode", "BootMode"}));
    EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", false),
                IsResult(1, "reset for BootMode", "BootMode"));
    EXPECT_THAT(m_Front->m_ErrorList, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(PatchEnter, FlushEnter, FlushExit));
}

TEST_F(CheckedChange, SuccessLeavesTheErrorsOfTheAssistantUnread)
{
    StartBios();
    Accept("BootMode", "\"Legacy\"");
    TellAssistantErrors({{18, "stale", "Wake"}});
    EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", false), IsBare(0));
    EXPECT_THAT(m_Front->m_ErrorList, IsEmpty());
}

// Whatever stands in the manager's list is taken, also after a success.
TEST_F(CheckedChange, LeftoversOfTheManagerJoinTheListAfterASuccess)
{
    StartBios();
    TellPrefixesApart();
    ASSERT_THAT(m_Front->QuerySettingManagerWithoutValue(), IsBare(0));
    m_Front->m_SettingManager->m_ErrorList = {{10, "Pin: Pin", "Pin"}};
    Accept("BootMode", "\"Legacy\"");
    EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", false), IsBare(0));
    EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(IsResult(10, "Front.Pin: Front.Pin", "Front.Pin")));
    EXPECT_THAT(m_Front->m_SettingManager->GetError(), IsEmpty());
}

TEST_F(CheckedChange, MessageSpeaksOfTheNameThatTheCallerKnows)
{
    StartBios({.LegacyNameMode = true});
    world.NewNames = {{"OldBoot", "BootMode"}};
    Accept("BootMode", "\"Legacy\"");
    m_Standard->Flushes.push_back(Answer({18, "BootMode: bootmode and BootMode", "BootMode"}));
    EXPECT_THAT(m_Front->PatchSettingNewValue("OldBoot", "Legacy", false),
                IsResult(18, "OldBoot: bootmode and OldBoot", "BootMode"));
}

} // namespace
