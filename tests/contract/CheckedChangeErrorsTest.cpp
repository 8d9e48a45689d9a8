// One setting changed with every check: each way to fail, what is logged, what the caller
// gets and which failures gather in the list of the front class.
#include "ChangeFixture.h"

using namespace changing;
using namespace Tavrine;
using reading::DiscoveryLogs;
using reading::Join;
using staging::FlushEnter;
using staging::FlushExit;
using staging::NoProc;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;

namespace
{

const LogLine Unknown{1, "Failed to get setting properties: Unable to find the setting BootMode"};

class CheckedChangeErrors : public ChangeTest
{
  protected:
    /// A batch with the setting Wake, and BootMode that must not share its request.
    void StartRelatedBatch(const Config_Options& options = {})
    {
        StartBios(options);
        TellPrefixesApart();
        Know("BootMode").DependencyNames = {"Wake"};
        Accept("Wake", "false");
        Accept("BootMode", "\"Legacy\"");
        ASSERT_THAT(m_Front->PatchSettingNewValue("Wake", "false", true), IsBare(0));
        TakeSteps();
        TakeLogs();
    }
    /// The manager has a failure left from before.
    void LeaveInManager(const std::string& name)
    {
        ASSERT_THAT(m_Front->QuerySettingManagerWithoutValue(), IsBare(0));
        m_Front->m_SettingManager->m_ErrorList = {{10, "left of " + name, name}};
    }
};

// --- before anything is queued ------------------------------------------------------------

TEST_F(CheckedChangeErrors, EmptyNameIsRefusedWithoutAnyRequest)
{
    for (const bool batchMode : {false, true})
    {
        for (const char* value : {"", "Legacy"})
        {
            doubles::ResetWorld();
            StartBare();
            m_Front->m_ErrorList = {{18, "earlier", "BIOS.Pin"}};
            EXPECT_THAT(m_Front->PatchSettingNewValue("", value, batchMode), IsBare(16));
            EXPECT_THAT(
                world.Logs,
                ElementsAre(PatchEnter, LogLine{1, "update setting is empty, no need to update so quite directly."}));
            EXPECT_THAT(world.Calls, IsEmpty());
            EXPECT_THAT(world.ManagerCalls, IsEmpty());
            EXPECT_EQ(m_Front->m_SettingManager, nullptr);
            EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(IsResult(18, "earlier", "BIOS.Pin")));
        }
    }
}

TEST_F(CheckedChangeErrors, BlankNameIsNoEmptyOne)
{
    StartBios();
    Refuse(" ", {20, "no such setting", ""}, {});
    EXPECT_THAT(m_Front->PatchSettingNewValue(" ", "Legacy", true), IsResult(20, "no such setting", ""));
}

TEST_F(CheckedChangeErrors, WithoutASettingManagerItEnds)
{
    StartBare();
    TellSystem();
    world.Tell("SCHEMA", reading::BiosUrl, {.Result = {24, "no route to BootMode", "host"}, .Body = "", .Errors = {}});
    EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", false),
                IsResult(24, "no route to BootMode", "host"));
    EXPECT_THAT(world.Logs,
                ElementsAreArray(Join({{PatchEnter},
                                       DiscoveryLogs,
                                       {{1, "Query Schema error: no route to BootMode"},
                                        {1, "Failed to get schema though: no route to BootMode"},
                                        {1, "Failed to get setting manager with error: no route to BootMode"}}})));
    EXPECT_THAT(world.Requests(), ElementsAre("GET " + reading::SystemsUrl, "SCHEMA " + reading::BiosUrl));
    EXPECT_THAT(world.ManagerCalls, IsEmpty());
}

TEST_F(CheckedChangeErrors, UnreadableValuesEndIt)
{
    StartBios();
    m_Standard->ReadResult = {33, "busy with BootMode", "host"};
    EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", false), IsResult(33, "busy with BootMode", "host"));
    EXPECT_THAT(world.Logs, ElementsAre(PatchEnter, LogLine{1, "Query current value error: busy with BootMode"},
                                        LogLine{1, "Failed in get current value map though: busy with BootMode"},
                                        LogLine{1, "Failed in get current value map though: busy with BootMode"},
                                        LogLine{1, "Failed to get current value map though: busy with BootMode"}));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("read standard"));
    EXPECT_THAT(world.UpdatedValues, IsEmpty());
}

TEST_F(CheckedChangeErrors, UnreadableProtectedValuesEndItToo)
{
    StartUefi();
    m_Protected->ReadResult = {28, "no action", ""};
    EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", false), IsResult(28, "no action", ""));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("read protected"));
}

TEST_F(CheckedChangeErrors, NoValuesAtAllEndIt)
{
    StartBios();
    m_Standard->Values.clear();
    EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", false), IsBare(26));
    EXPECT_THAT(world.Logs, ElementsAre(PatchEnter, LogLine{1, "Failed to get current value map though: "}));
}

TEST_F(CheckedChangeErrors, NoProcsEndIt)
{
    StartBios();
    m_Front->m_ProcCreator->m_ProcMap.clear();
    m_Front->m_ProcCreator->m_CreatorMap.clear();
    EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", false), IsBare(13));
    EXPECT_THAT(world.Logs, ElementsAre(PatchEnter, NoProc, LogLine{1, "Failed to get current value map though: "}));
}

// --- refused by the manager ---------------------------------------------------------------

TEST_F(CheckedChangeErrors, RefusedValueIsNeitherQueuedNorFlushed)
{
    for (const bool batchMode : {false, true})
    {
        doubles::ResetWorld();
        StartBios();
        TellPrefixesApart();
        TellAssistantErrors({{18, "stale", "Wake"}});
        Refuse("BootMode", {10, "BootMode takes Uefi", "BootMode"}, {{10, "BootMode takes Uefi", "BootMode"}});
        EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", batchMode),
                    IsResult(10, "BootMode takes Uefi", "BootMode"));
        EXPECT_THAT(world.ManagerCalls, ElementsAre("read standard", "UpdateSettingValue",
                                                    "PreparePatchContext BootMode=Legacy 8", "TakeErrors"));
        EXPECT_THAT(world.Logs, ElementsAre(PatchEnter));
        EXPECT_THAT(m_Standard->m_ChangedValues, IsEmpty());
        EXPECT_THAT(m_Front->m_PendingNames, IsEmpty());
        EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(IsResult(10, "Front.BootMode takes Uefi", "Front.BootMode")));
        EXPECT_THAT(m_Front->m_SettingManager->GetError(), IsEmpty());
    }
}

// Any code but 0 is a refusal there, also one that is a success or a wait elsewhere.
TEST_F(CheckedChangeErrors, EveryOtherCodeOfTheManagerIsARefusal)
{
    for (const int code : {1, 4, 7, 33})
    {
        doubles::ResetWorld();
        StartBios();
        Refuse("BootMode", {code, "no", ""}, {{code, "no", "BootMode"}});
        EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", false), IsResult(code, "no", ""));
        EXPECT_THAT(world.Logs, ElementsAre(PatchEnter)) << code;
        EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(IsResult(code, "no", "BIOS.BootMode")));
        EXPECT_THAT(m_Standard->m_ChangedValues, IsEmpty());
    }
}

TEST_F(CheckedChangeErrors, RefusalSpeaksOfTheOldNameAndItsEntryOfTheNewOne)
{
    StartBios({.LegacyNameMode = true});
    TellPrefixesApart();
    world.NewNames = {{"OldBoot", "BootMode"}};
    Refuse("BootMode", {10, "BootMode, BootMode!", "BootMode"}, {{10, "BootMode, BootMode!", "BootMode"}});
    EXPECT_THAT(m_Front->PatchSettingNewValue("OldBoot", "Legacy", false),
                IsResult(10, "OldBoot, OldBoot!", "BootMode"));
    EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(IsResult(10, "Front.BootMode, Front.BootMode!", "Front.BootMode")));
}

struct EntryCase
{
    const char* Name;
    RedfishConfigResult Entry;
    const char* Message;
    const char* FullName;
};

class CheckedChangeEntry : public ChangeTest, public testing::WithParamInterface<EntryCase>
{
};

INSTANTIATE_TEST_SUITE_P(
    Entries, CheckedChangeEntry,
    testing::Values(EntryCase{"WithoutItsName", {18, "refused", "Pin"}, "refused", "Front.Pin"},
                    EntryCase{
                        "WithItsNameThrice", {18, "Pin Pin.Pin", "Pin"}, "Front.Pin Front.Pin.Front.Pin", "Front.Pin"},
                    EntryCase{"WithItsNameInAnotherCase", {9, "pin PIN", "Pin"}, "pin PIN", "Front.Pin"},
                    EntryCase{"WithItsNameInAWord", {9, "Pinned", "Pin"}, "Front.Pinned", "Front.Pin"},
                    EntryCase{"WithoutASetting", {32, "BMC failed", ""}, "BMC failed", "Front."},
                    EntryCase{"WithoutAMessage", {10, "", "Pin"}, "", "Front.Pin"},
                    EntryCase{"OfTheNameOfThePrefix", {10, "Front", "Front"}, "Front.Front", "Front.Front"},
                    EntryCase{"WithItsFullNameAlready", {10, "Front.Pin", "Pin"}, "Front.Front.Pin", "Front.Pin"}),
    [](const auto& test) { return test.param.Name; });

TEST_P(CheckedChangeEntry, IsShownUnderItsFullName)
{
    StartBios();
    TellPrefixesApart();
    Refuse("BootMode", {10, "", ""}, {GetParam().Entry});
    EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", true), IsBare(10));
    RedfishConfigResult entry = GetParam().Entry;
    EXPECT_THAT(m_Front->m_ErrorList,
                ElementsAre(IsResult(entry.ErrorCode(), GetParam().Message, GetParam().FullName)));
}

TEST_F(CheckedChangeErrors, RefusalsPileUpUntilTheFlush)
{
    StartBios();
    Refuse("BootMode", {10, "", ""}, {{10, "a", "BootMode"}, {9, "b", "Wake"}});
    Refuse("Pin", {10, "", ""}, {{18, "c", "Pin"}});
    ASSERT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", true), IsBare(10));
    ASSERT_THAT(m_Front->PatchSettingNewValue("Pin", "77", true), IsBare(10));
    ASSERT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", true), IsBare(10));
    EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(IsResult(10, "a", "BIOS.BootMode"), IsResult(9, "b", "BIOS.Wake"),
                                                  IsResult(18, "c", "BIOS.Pin"), IsResult(10, "a", "BIOS.BootMode"),
                                                  IsResult(9, "b", "BIOS.Wake")));
    EXPECT_THAT(m_Front->FlushChanges(), IsBare(0));
    EXPECT_THAT(m_Front->m_ErrorList, IsEmpty());
}

// --- failed queueing ----------------------------------------------------------------------

TEST_F(CheckedChangeErrors, FailedQueueingInABatchShowsInTheResultAlone)
{
    StartBios({.LegacyNameMode = true});
    world.NewNames = {{"OldBoot", "BootMode"}};
    LeaveInManager("Pin");
    TellAssistantErrors({{18, "of the assistant", "Wake"}});
    world.Settings.clear();
    Accept("BootMode", "\"Legacy\"");
    EXPECT_THAT(m_Front->PatchSettingNewValue("OldBoot", "Legacy", true),
                IsResult(20, "Unable to find the setting BootMode", "BootMode"));
    EXPECT_THAT(world.Logs, ElementsAre(PatchEnter, Unknown, StaysInBatch));
    EXPECT_THAT(m_Front->m_ErrorList, IsEmpty());
    EXPECT_THAT(m_Front->m_SettingManager->GetError(), ElementsAre(IsResult(10, "left of Pin", "Pin")));
    EXPECT_THAT(m_Standard->m_ChangedValues, IsEmpty());
}

TEST_F(CheckedChangeErrors, FailedQueueingOutsideABatchIsHiddenByTheFlush)
{
    for (const int code : {0, 1})
    {
        doubles::ResetWorld();
        StartBios();
        TellPrefixesApart();
        LeaveInManager("Pin");
        TellAssistantErrors({{18, "of Wake", "Wake"}});
        world.Settings.clear();
        Accept("BootMode", "\"Legacy\"");
        m_Standard->Flushes.push_back(Answer({code, "flushed", ""}));
        EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", false),
                    IsResult(code, code == 0 ? "" : "flushed", ""));
        EXPECT_THAT(world.ManagerCalls,
                    ElementsAre("read standard", "UpdateSettingValue", "PreparePatchContext BootMode=Legacy 8",
                                "GetSettingProperties BootMode", "flush standard {}", "TakeErrors"));
        EXPECT_THAT(world.Logs, ElementsAre(PatchEnter, Unknown, FlushEnter, FlushExit));
        EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(IsResult(18, "of Front.Wake", "Front.Wake"),
                                                      IsResult(10, "left of Front.Pin", "Front.Pin")));
    }
}

// The second read of the assistant's errors replaces the first.
TEST_F(CheckedChangeErrors, FailedQueueingAndFlushShowTheErrorsOfTheAssistantOnce)
{
    StartBios();
    TellPrefixesApart();
    LeaveInManager("Pin");
    TellAssistantErrors({{18, "of Wake", "Wake"}});
    world.Settings.clear();
    Accept("BootMode", "\"Legacy\"");
    m_Standard->Flushes.push_back(Answer({32, "broken", ""}, {{9, "no Cores", "Cores"}}));
    EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", false), IsResult(32, "broken", ""));
    EXPECT_THAT(m_Front->m_ErrorList,
                ElementsAre(IsResult(9, "no Proc.Cores", "Proc.Cores"), IsResult(18, "of Front.Wake", "Front.Wake"),
                            IsResult(10, "left of Front.Pin", "Front.Pin")));
}

TEST_F(CheckedChangeErrors, FailedQueueingAndBusyFlushMergeNothing)
{
    StartBios();
    LeaveInManager("Pin");
    TellAssistantErrors({{18, "of Wake", "Wake"}});
    world.Settings.clear();
    Accept("BootMode", "\"Legacy\"");
    m_Standard->Flushes.push_back(Answer(Busy));
    EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", false),
                IsResult(33, "BMC is not ready.", "Ethernet"));
    EXPECT_THAT(world.Logs, ElementsAre(PatchEnter, Unknown, FlushEnter, FlushExit, BusyLog));
    EXPECT_THAT(m_Front->m_ErrorList, IsEmpty());
    EXPECT_THAT(m_Front->m_SettingManager->GetError(), ElementsAre(IsResult(10, "left of Pin", "Pin")));
}

TEST_F(CheckedChangeErrors, HiddenSettingIsCheckedButNotQueued)
{
    StartUefi();
    Accept("Lock", "\"On\"");
    EXPECT_THAT(m_Front->PatchSettingNewValue("Lock", "On", true),
                IsResult(34, "The operation on setting Lock fails since it is hidden.", ""));
    EXPECT_THAT(world.Logs, ElementsAre(PatchEnter, staging::Protected, NoProc, StaysInBatch));
    EXPECT_THAT(m_Protected->m_ChangedValues, IsEmpty());
    EXPECT_THAT(m_Front->m_ErrorList, IsEmpty());
}

// --- busy in the middle -------------------------------------------------------------------

TEST_F(CheckedChangeErrors, BusyForcedFlushEndsItBeforeQueueing)
{
    for (const bool batchMode : {false, true})
    {
        doubles::ResetWorld();
        StartRelatedBatch({.LegacyNameMode = true});
        world.NewNames = {{"OldBoot", "BootMode"}};
        LeaveInManager("Pin");
        TellAssistantErrors({{18, "of the assistant", "Wake"}});
        m_Standard->Flushes.push_back(Answer({33, "BootMode must wait", "BootMode"}));
        const LogLine unavailable = staging::Busy("BootMode must wait");
        EXPECT_THAT(m_Front->PatchSettingNewValue("OldBoot", "Legacy", batchMode),
                    IsResult(33, "BootMode must wait", "BootMode"));
        EXPECT_THAT(world.ManagerCalls, ElementsAre("UpdateSettingValue", "PreparePatchContext BootMode=Legacy 8",
                                                    "GetSettingProperties BootMode", "flush standard {Wake=false}"));
        EXPECT_THAT(world.Logs, ElementsAre(PatchEnter, FlushEnter, FlushExit, unavailable, unavailable, unavailable));
        EXPECT_THAT(m_Standard->m_ChangedValues, IsEmpty());
        EXPECT_THAT(m_Front->m_ErrorList, IsEmpty());
        EXPECT_THAT(m_Front->m_SettingManager->GetError(), ElementsAre(IsResult(10, "left of Pin", "Pin")));
    }
}

TEST_F(CheckedChangeErrors, FailedForcedFlushLeavesItsErrorsAndTheChangeGoesOn)
{
    StartRelatedBatch();
    m_Standard->Flushes.push_back(Answer({18, "refused", ""}, {{10, "Wake is on", "Wake"}}));
    EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", true), IsBare(0));
    EXPECT_THAT(world.ManagerCalls,
                ElementsAre("UpdateSettingValue", "PreparePatchContext BootMode=Legacy 8",
                            "GetSettingProperties BootMode", "flush standard {Wake=false}", "read standard",
                            "UpdateSettingValue", "cache standard BootMode=\"Legacy\", staged \"Legacy\""));
    EXPECT_THAT(world.Logs, ElementsAre(PatchEnter, FlushEnter, FlushExit, StaysInBatch));
    EXPECT_THAT(m_Standard->m_ChangedValues, ElementsAre(Pair("BootMode", "\"Legacy\"")));
    EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(IsResult(10, "Proc.Wake is on", "Proc.Wake")));
}

// Outside a batch the flush at the end empties the list that the forced one has filled.
TEST_F(CheckedChangeErrors, ErrorsOfAForcedFlushAreGoneAfterTheNextOne)
{
    StartRelatedBatch();
    m_Standard->Flushes.push_back(Answer({18, "refused", ""}, {{10, "Wake is on", "Wake"}}));
    EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", false), IsBare(0));
    EXPECT_THAT(m_Front->m_ErrorList, IsEmpty());
}

TEST_F(CheckedChangeErrors, BusyFlushMergesNothing)
{
    StartBios({.LegacyNameMode = true});
    world.NewNames = {{"OldBoot", "BootMode"}};
    LeaveInManager("Pin");
    TellAssistantErrors({{18, "of the assistant", "Wake"}});
    Accept("BootMode", "\"Legacy\"");
    m_Standard->Flushes.push_back(Answer({33, "BootMode must wait", "BootMode"}));
    EXPECT_THAT(m_Front->PatchSettingNewValue("OldBoot", "Legacy", false),
                IsResult(33, "BootMode must wait", "BootMode"));
    EXPECT_THAT(world.ManagerCalls, Not(Contains("TakeErrors")));
    EXPECT_THAT(world.Logs, ElementsAre(PatchEnter, FlushEnter, FlushExit, staging::Busy("BootMode must wait")));
    EXPECT_THAT(m_Front->m_ErrorList, IsEmpty());
    EXPECT_THAT(m_Front->m_SettingManager->GetError(), ElementsAre(IsResult(10, "left of Pin", "Pin")));
}

// --- failed flush -------------------------------------------------------------------------

TEST_F(CheckedChangeErrors, FailedFlushGathersErrorsOfProcsAssistantAndManager)
{
    StartBios();
    TellPrefixesApart();
    LeaveInManager("Pin");
    m_Front->m_ErrorList = {{18, "of an earlier call", "Front.Nothing"}};
    TellAssistantErrors({{18, "of Wake", "Wake"}, {9, "of Cores", "Cores"}});
    Accept("BootMode", "\"Legacy\"");
    m_Standard->Flushes.push_back(Answer({18, "refused", ""}, {{10, "BootMode is bad", "BootMode"}}));
    EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", false), IsResult(18, "refused", ""));
    EXPECT_THAT(world.Logs, ElementsAre(PatchEnter, FlushEnter, FlushExit));
    EXPECT_THAT(m_Front->m_ErrorList,
                ElementsAre(IsResult(10, "Proc.BootMode is bad", "Proc.BootMode"),
                            IsResult(18, "of Front.Wake", "Front.Wake"), IsResult(9, "of Front.Cores", "Front.Cores"),
                            IsResult(10, "left of Front.Pin", "Front.Pin")));
    EXPECT_THAT(m_Front->m_SettingManager->GetError(), IsEmpty());
    EXPECT_THAT(m_Front->m_SettingAssistant->GetError(), testing::SizeIs(2));
}

TEST_F(CheckedChangeErrors, EveryCodeOfAFlushButThreeReadsTheErrorsOfTheAssistant)
{
    for (const int code : {2, 4, 13, 24, 26, 27, 32, 34})
    {
        doubles::ResetWorld();
        StartBios();
        TellAssistantErrors({{18, "of Wake", "Wake"}});
        Accept("BootMode", "\"Legacy\"");
        m_Standard->Flushes.push_back(Answer({code, "failed", "Wake"}));
        EXPECT_THAT(m_Front->PatchSettingNewValue("BootMode", "Legacy", false), IsResult(code, "failed", "Wake"));
        EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(IsResult(18, "of BIOS.Wake", "BIOS.Wake"))) << code;
        EXPECT_THAT(world.LogsAt(4), Not(Contains(HasSubstr("unavailable")))) << code;
    }
}

} // namespace
