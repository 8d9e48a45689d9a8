#include "StagingFixture.h"

using doubles::LogLine;
using reading::BiosReadLogs;
using reading::BiosUrl;
using reading::DiscoveryLogs;
using reading::Get;
using reading::Join;
using reading::ReadSchema;
using reading::SettingsUrl;
using reading::SystemsUrl;
using staging::Busy;
using staging::FilterFailed;
using staging::FlushEnter;
using staging::FlushExit;
using staging::NoManager;
using staging::NoNeed;
using staging::NoProc;
using staging::NotFound;
using staging::NoValues;
using staging::RestoreEnter;
using staging::RestoreExit;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Pair;
using namespace Tavrine;

namespace
{

class Restore : public staging::RestoreFixture
{
};

TEST_F(Restore, WhatDiffersIsSentInOneRequest)
{
    StartReal();
    TellContexts({{"BootMode", R"("Legacy")"}, {"Cores", "12"}});
    world.Tell("PATCH", SettingsUrl, "");
    m_Values = {{"BootMode", "Legacy"}, {"Cores", "12"}, {"Wake", "true"}};
    EXPECT_THAT(Call(), IsBare(0));
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsUrl), Get(BiosUrl), Get(SettingsUrl), Get(SystemsUrl),
                                         ReadSchema(BiosUrl), staging::Patch(R"("BootMode":"Legacy","Cores":12)")));
    EXPECT_THAT(world.Logs, ElementsAreArray(Join({{RestoreEnter},
                                                   BiosReadLogs,
                                                   staging::PatchUrlLogs,
                                                   {NoNeed("BIOS.Wake")},
                                                   DiscoveryLogs,
                                                   staging::CacheLogs("BootMode"),
                                                   staging::CacheLogs("Cores"),
                                                   staging::FlushLogs(R"("BootMode":********,"Cores":********)"),
                                                   {RestoreExit(0)}})));
    EXPECT_THAT(world.ManagerCalls,
                ElementsAre("UpdateSettingValue", "PreparePatchContext {BootMode=Legacy,Cores=12} 15",
                            "GetSettingProperties BootMode", "GetSettingProperties Cores"));
    EXPECT_THAT(world.UpdatedValues,
                ElementsAre(SettingValueMap{{"BootMode", "Uefi"}, {"Cores", std::int64_t{10}}, {"Wake", true}}));
    EXPECT_THAT(m_Done,
                ElementsAre(Pair("BIOS.BootMode", "Legacy"), Pair("BIOS.Cores", "12"), Pair("BIOS.Wake", "true")));
    EXPECT_THAT(m_Failed, IsEmpty());
    EXPECT_THAT(m_Values, ElementsAre(Pair("BootMode", "Legacy"), Pair("Cores", "12")));
}

TEST_F(Restore, SentValuesShowInLaterReadsWithoutARequest)
{
    StartReal();
    TellContexts({{"BootMode", R"("Legacy")"}, {"Cores", "12"}});
    world.Tell("PATCH", SettingsUrl, "");
    m_Values = {{"BootMode", "Legacy"}, {"Cores", "12"}};
    EXPECT_THAT(Call(), IsBare(0));
    world.Calls.clear();
    SettingValueMap current;
    EXPECT_THAT(m_Front->GetCurrentValuesMap(current, false), IsBare(0));
    EXPECT_EQ(current, (SettingValueMap{{"BootMode", "Legacy"}, {"Cores", std::int64_t{12}}, {"Wake", true}}));
    EXPECT_THAT(world.Calls, IsEmpty());
}

TEST_F(Restore, OnlyTheFirstFlagChoosesTheAction)
{
    for (const bool restoreMode : {true, false})
    {
        for (const bool reservedFlag : {true, false})
        {
            SCOPED_TRACE(testing::Message() << restoreMode << reservedFlag);
            doubles::ResetWorld();
            StartBios();
            TellContexts({{"BootMode", R"("Legacy")"}});
            m_Values = {{"BootMode", "Legacy"}};
            m_Done.clear();
            EXPECT_THAT(Call(restoreMode, reservedFlag), IsBare(0));
            EXPECT_THAT(world.ManagerCalls,
                        ElementsAre("read standard", "UpdateSettingValue",
                                    std::string("PreparePatchContext {BootMode=Legacy} ") + (restoreMode ? "15" : "16"),
                                    "GetSettingProperties BootMode",
                                    R"(cache standard BootMode="Legacy", staged "Legacy")",
                                    R"(flush standard {BootMode="Legacy"})"));
            EXPECT_THAT(world.Logs, ElementsAre(RestoreEnter, FlushEnter, FlushExit, RestoreExit(0)));
            EXPECT_THAT(m_Done, ElementsAre(Pair("BIOS.BootMode", "Legacy")));
            EXPECT_THAT(m_Failed, IsEmpty());
        }
    }
}

TEST_F(Restore, AllInPlaceStillAsksTheManagerAndFlushesOnce)
{
    StartBios();
    TellContexts({});
    m_Values = {{"BootMode", "Uefi"}, {"Cores", "10"}, {"Wake", "true"}};
    EXPECT_THAT(Call(), IsBare(0));
    EXPECT_THAT(world.ManagerCalls,
                ElementsAre("read standard", "UpdateSettingValue", "PreparePatchContext {} 15", "flush standard {}"));
    EXPECT_THAT(world.Logs, ElementsAre(RestoreEnter, NoNeed("BIOS.BootMode"), NoNeed("BIOS.Cores"),
                                        NoNeed("BIOS.Wake"), FlushEnter, FlushExit, RestoreExit(0)));
    EXPECT_THAT(m_Values, IsEmpty());
    EXPECT_THAT(m_Done,
                ElementsAre(Pair("BIOS.BootMode", "Uefi"), Pair("BIOS.Cores", "10"), Pair("BIOS.Wake", "true")));
    EXPECT_THAT(m_Failed, IsEmpty());
}

TEST_F(Restore, NothingWantedIsNoFailure)
{
    StartBios();
    TellContexts({});
    EXPECT_THAT(Call(false), IsBare(0));
    EXPECT_THAT(world.ManagerCalls,
                ElementsAre("read standard", "UpdateSettingValue", "PreparePatchContext {} 16", "flush standard {}"));
    EXPECT_THAT(m_Done, IsEmpty());
    EXPECT_THAT(m_Failed, IsEmpty());
}

TEST_F(Restore, ProtectedValuesAreNotReadYetTheirProcTakesAContext)
{
    StartUefi({.allowProtectedSettings = true});
    TellContexts({{"BootMode", R"("Legacy")"}, {"Lock", R"("On")"}});
    m_Values = {{"BootMode", "Legacy"}, {"Lock", "On"}};
    EXPECT_THAT(Call(), IsBare(0));
    EXPECT_THAT(world.ManagerCalls,
                ElementsAre("read standard", "UpdateSettingValue", "PreparePatchContext {BootMode=Legacy,Lock=On} 15",
                            "GetSettingProperties BootMode", R"(cache standard BootMode="Legacy", staged "Legacy")",
                            "GetSettingProperties Lock", R"(cache protected Lock="On", staged "On")",
                            R"(flush protected {Lock="On"})", R"(flush standard {BootMode="Legacy"})"));
    EXPECT_THAT(world.UpdatedValues, ElementsAre(m_Standard->Values));
    EXPECT_THAT(world.Logs, ElementsAre(RestoreEnter, NotFound("UEFI.Lock"), FlushEnter, FlushExit, RestoreExit(0)));
    EXPECT_THAT(m_Failed, ElementsAre(Pair("UEFI.Lock", "Unable to find the setting UEFI.Lock")));
    EXPECT_THAT(m_Done, ElementsAre(Pair("UEFI.BootMode", "Legacy"), Pair("UEFI.Lock", "On")));
}

TEST_F(Restore, UnreadableValuesEndItBeforeAnythingElse)
{
    StartBios();
    m_Front->m_Schema.clear();
    m_Standard->ReadResult = {24, "no route", "Host"};
    m_Values = {{"BootMode", "Legacy"}};
    m_Done = {{"BIOS.Old", "1"}};
    m_Failed = {{"BIOS.Older", "2"}};
    EXPECT_THAT(Call(), IsResult(24, "no route", "Host"));
    EXPECT_THAT(world.Logs, ElementsAre(RestoreEnter, LogLine{1, "Query current value error: no route"},
                                        NoValues("no route"), NoValues("no route"), NoValues("no route")));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("read standard"));
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_EQ(m_Front->m_SettingManager, nullptr);
    EXPECT_THAT(m_Values, ElementsAre(Pair("BootMode", "Legacy")));
    EXPECT_THAT(m_Done, ElementsAre(Pair("BIOS.Old", "1")));
    EXPECT_THAT(m_Failed, ElementsAre(Pair("BIOS.Older", "2")));
}

TEST_F(Restore, WithoutProcsThereAreNoValues)
{
    StartBios();
    m_Front->m_ProcCreator->m_ProcMap.clear();
    m_Front->m_ProcCreator->m_CreatorMap.clear();
    EXPECT_THAT(Call(), IsBare(13));
    EXPECT_THAT(world.Logs, ElementsAre(RestoreEnter, NoProc, NoValues("")));
}

TEST_F(Restore, ASystemWithoutValuesEndsIt)
{
    StartBios();
    m_Standard->Values.clear();
    m_Values = {{"BootMode", "Legacy"}};
    EXPECT_THAT(Call(), IsBare(26));
    EXPECT_THAT(world.Logs, ElementsAre(RestoreEnter, NoValues("")));
    EXPECT_THAT(m_Failed, IsEmpty());
}

TEST_F(Restore, BadNumberEndsItWithTheMapsAsTheFilterLeftThem)
{
    StartBios({.HexValueMode = true});
    m_Front->m_Schema.clear();
    m_Values = {{"Absent", "1"}, {"BootMode", "Uefi"}, {"Cores", "xyz"}, {"Wake", "true"}};
    EXPECT_THAT(Call(), IsResult(10, "Setting new value is invalid.", ""));
    EXPECT_THAT(world.Logs, ElementsAre(RestoreEnter, NotFound("BIOS.Absent"), NoNeed("BIOS.BootMode"), FilterFailed));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("read standard"));
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_EQ(m_Front->m_SettingManager, nullptr);
    EXPECT_THAT(m_Values, ElementsAre(Pair("Absent", "1"), Pair("Cores", "xyz"), Pair("Wake", "true")));
    EXPECT_THAT(m_Done, ElementsAre(Pair("BIOS.BootMode", "Uefi")));
    EXPECT_THAT(m_Failed, ElementsAre(Pair("BIOS.Absent", "Unable to find the setting BIOS.Absent")));
}

TEST_F(Restore, WithoutASettingManagerTheWorkOfTheFilterStands)
{
    StartBios();
    m_Front->m_Schema.clear();
    TellSystem();
    world.Fail("SCHEMA", BiosUrl, 26, "no registry");
    m_Values = {{"BootMode", "Legacy"}, {"Wake", "true"}};
    EXPECT_THAT(Call(), IsResult(26, "no registry", ""));
    EXPECT_THAT(world.Logs, ElementsAreArray(Join({{RestoreEnter, NoNeed("BIOS.Wake")},
                                                   DiscoveryLogs,
                                                   {{1, "Query Schema error: no registry"},
                                                    {1, "Failed to get schema though: no registry"},
                                                    NoManager("no registry")}})));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("read standard"));
    EXPECT_THAT(m_Values, ElementsAre(Pair("BootMode", "Legacy")));
    EXPECT_THAT(m_Done, ElementsAre(Pair("BIOS.Wake", "true")));
}

TEST_F(Restore, ExistingManagerIsKept)
{
    StartBios();
    MakeManager();
    const auto manager = m_Front->m_SettingManager;
    m_Front->m_Schema.clear();
    TellContexts({});
    EXPECT_THAT(Call(), IsBare(0));
    EXPECT_EQ(m_Front->m_SettingManager, manager);
    EXPECT_THAT(world.Calls, IsEmpty());
}

TEST_F(Restore, FailedValidationStagesAndSendsNothing)
{
    const std::vector<RedfishConfigResult> results = {{7, "some failed", ""},
                                                      {18, "none passed", "BootMode"},
                                                      {1, "", ""},
                                                      {33, "busy", ""},
                                                      {27, "no registry", ""}};
    for (RedfishConfigResult expected : results)
    {
        SCOPED_TRACE(expected.ErrorCode());
        doubles::ResetWorld();
        StartBios();
        TellContexts({{"Cores", "12"}}, expected, {{10, "BootMode takes no Legacy", "BootMode"}});
        m_Front->m_ErrorList = {{18, "kept", "BIOS.Old"}};
        m_Front->m_SettingAssistant->m_Errors = {{9, "replaced", "Cores"}};
        m_Values = {{"BootMode", "Legacy"}, {"Cores", "12"}};
        m_Done.clear();
        m_Failed.clear();
        EXPECT_THAT(Call(), IsResult(expected.ErrorCode(), expected.ErrorMsg(), expected.ErrorSetting()));
        EXPECT_THAT(world.ManagerCalls, ElementsAre("read standard", "UpdateSettingValue",
                                                    "PreparePatchContext {BootMode=Legacy,Cores=12} 15", "TakeErrors"));
        EXPECT_THAT(world.Logs, ElementsAre(RestoreEnter, RestoreExit(expected.ErrorCode())));
        EXPECT_THAT(m_Standard->m_ChangedValues, IsEmpty());
        EXPECT_THAT(m_Front->m_SettingManager->m_ErrorList, IsEmpty());
        EXPECT_THAT(m_Front->m_SettingAssistant->m_Errors,
                    ElementsAre(IsResult(10, "BootMode takes no Legacy", "BootMode")));
        EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(IsResult(18, "kept", "BIOS.Old")));
        // Nothing was sent, and yet what no error names counts as done.
        EXPECT_THAT(m_Done, ElementsAre(Pair("BIOS.Cores", "12")));
        EXPECT_THAT(m_Failed, ElementsAre(Pair("BIOS.BootMode", "BIOS.BootMode takes no Legacy")));
    }
}

TEST_F(Restore, SettingThatCannotBeDescribedLeavesTheEarlierOnesStaged)
{
    StartBios();
    TellContexts({{"BootMode", R"("Legacy")"}, {"Gone", "1"}, {"Wake", "false"}});
    m_Front->m_ErrorList = {{18, "kept", "BIOS.Old"}};
    m_Values = {{"BootMode", "Legacy"}, {"Cores", "10"}, {"Wake", "false"}};
    EXPECT_THAT(Call(), IsResult(20, "Unable to find the setting Gone", "Gone"));
    EXPECT_THAT(world.Logs,
                ElementsAre(RestoreEnter, NoNeed("BIOS.Cores"),
                            LogLine{1, "Failed to get setting properties: Unable to find the setting Gone"}));
    EXPECT_THAT(world.ManagerCalls,
                ElementsAre("read standard", "UpdateSettingValue",
                            "PreparePatchContext {BootMode=Legacy,Wake=false} 15", "GetSettingProperties BootMode",
                            R"(cache standard BootMode="Legacy", staged "Legacy")", "GetSettingProperties Gone"));
    EXPECT_THAT(m_Standard->m_ChangedValues, ElementsAre(Pair("BootMode", R"("Legacy")")));
    EXPECT_THAT(m_Done, ElementsAre(Pair("BIOS.Cores", "10")));
    EXPECT_THAT(m_Failed, IsEmpty());
    EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(IsResult(18, "kept", "BIOS.Old")));
}

TEST_F(Restore, HiddenSettingLeavesTheEarlierOnesStaged)
{
    StartUefi();
    TellContexts({{"BootMode", R"("Legacy")"}, {"Lock", R"("On")"}, {"Wake", "false"}});
    m_Values = {{"BootMode", "Legacy"}, {"Wake", "false"}};
    EXPECT_THAT(Call(), IsResult(34, "The operation on setting Lock fails since it is hidden.", ""));
    EXPECT_THAT(world.Logs, ElementsAre(RestoreEnter, staging::Protected, NoProc));
    EXPECT_THAT(world.ManagerCalls,
                ElementsAre("read standard", "UpdateSettingValue",
                            "PreparePatchContext {BootMode=Legacy,Wake=false} 15", "GetSettingProperties BootMode",
                            R"(cache standard BootMode="Legacy", staged "Legacy")", "GetSettingProperties Lock"));
    EXPECT_THAT(m_Standard->m_ChangedValues, ElementsAre(Pair("BootMode", R"("Legacy")")));
    EXPECT_THAT(m_Done, IsEmpty());
    EXPECT_THAT(m_Failed, IsEmpty());
}

TEST_F(Restore, ResourceWithoutAProcEndsIt)
{
    StartUefi({.allowProtectedSettings = true});
    m_Front->m_ProcCreator->m_ProcMap.erase("ProtectedSettings");
    m_Front->m_ProcCreator->m_CreatorMap.clear();
    TellContexts({{"Lock", R"("On")"}});
    EXPECT_THAT(Call(), IsBare(13));
    EXPECT_THAT(world.Logs, ElementsAre(RestoreEnter, NoProc));
}

TEST_F(Restore, BusyBmcEndsItWithoutSorting)
{
    StartBios();
    TellContexts({{"BootMode", R"("Legacy")"}}, {0, "", ""}, {{10, "held back", "Cores"}});
    m_Standard->Flushes = {{{33, "starting up", "Bmc"}, {{33, "busy", "BootMode"}}}};
    m_Front->m_SettingAssistant->m_Errors = {{9, "kept", "Cores"}};
    m_Values = {{"BootMode", "Legacy"}, {"Cores", "10"}};
    EXPECT_THAT(Call(), IsResult(33, "starting up", "Bmc"));
    EXPECT_THAT(world.Logs,
                ElementsAre(RestoreEnter, NoNeed("BIOS.Cores"), FlushEnter, FlushExit, Busy("starting up")));
    // One flush: no second try, and nobody took the manager's errors.
    EXPECT_THAT(world.ManagerCalls,
                ElementsAre("read standard", "UpdateSettingValue", "PreparePatchContext {BootMode=Legacy} 15",
                            "GetSettingProperties BootMode", R"(cache standard BootMode="Legacy", staged "Legacy")",
                            R"(flush standard {BootMode="Legacy"})"));
    EXPECT_THAT(m_Front->m_SettingManager->m_ErrorList, ElementsAre(IsResult(10, "held back", "Cores")));
    EXPECT_THAT(m_Front->m_SettingAssistant->m_Errors, ElementsAre(IsResult(9, "kept", "Cores")));
    EXPECT_THAT(m_Done, ElementsAre(Pair("BIOS.Cores", "10")));
    EXPECT_THAT(m_Failed, IsEmpty());
}

TEST_F(Restore, FailedFlushIsReturnedAndItsDetailsStandInTheErrorList)
{
    // A code 1 is no success here: the errors are handed over all the same.
    const std::vector<RedfishConfigResult> results = {
        {1, "reboot", ""}, {18, "refused", "BootMode"}, {24, "", ""}, {32, "", ""}, {34, "", ""}};
    for (RedfishConfigResult expected : results)
    {
        SCOPED_TRACE(expected.ErrorCode());
        doubles::ResetWorld();
        StartBios();
        TellContexts({{"BootMode", R"("Legacy")"}, {"Cores", "12"}}, {0, "", ""}, {{10, "Wake is odd", "wake"}});
        m_Standard->Flushes = {{expected, {{18, "BootMode refused", "BootMode"}}}};
        m_Front->m_ErrorList = {{18, "gone", "BIOS.Old"}};
        m_Front->m_SettingAssistant->m_Errors = {{9, "replaced", "Cores"}};
        m_Values = {{"BootMode", "Legacy"}, {"Cores", "12"}, {"Wake", "false"}};
        m_Done.clear();
        m_Failed.clear();
        EXPECT_THAT(Call(), IsResult(expected.ErrorCode(), expected.ErrorMsg(), expected.ErrorSetting()));
        EXPECT_THAT(world.Logs, ElementsAre(RestoreEnter, FlushEnter, FlushExit, RestoreExit(expected.ErrorCode())));
        EXPECT_EQ(world.ManagerCalls.back(), "TakeErrors");
        EXPECT_THAT(m_Front->m_SettingManager->m_ErrorList, IsEmpty());
        EXPECT_THAT(m_Front->m_SettingAssistant->m_Errors, ElementsAre(IsResult(10, "Wake is odd", "wake")));
        EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(IsResult(18, "BIOS.BootMode refused", "BIOS.BootMode")));
        // What the BMC refused does not feed the maps.
        EXPECT_THAT(m_Done, ElementsAre(Pair("BIOS.BootMode", "Legacy"), Pair("BIOS.Cores", "12")));
        EXPECT_THAT(m_Failed, ElementsAre(Pair("BIOS.wake", "Wake is odd")));
    }
}

TEST_F(Restore, SuccessfulFlushLeavesTheErrorsOfTheManagerWhereTheyAre)
{
    StartBios();
    TellContexts({{"BootMode", R"("Legacy")"}}, {0, "", ""}, {{10, "left", "Cores"}});
    m_Front->m_ErrorList = {{18, "gone", "BIOS.Old"}};
    EXPECT_THAT(Call(), IsBare(0));
    EXPECT_EQ(world.ManagerCalls.back(), R"(flush standard {BootMode="Legacy"})");
    EXPECT_THAT(m_Front->m_SettingManager->m_ErrorList, ElementsAre(IsResult(10, "left", "Cores")));
    EXPECT_THAT(m_Front->m_ErrorList, IsEmpty());
    EXPECT_THAT(m_Failed, IsEmpty());
}

TEST_F(Restore, ChangeIsStagedUnderTheNameOfItsContext)
{
    StartBios();
    Know("bootmode").AttributeKey = "BootMode";
    TellContexts({{"bootmode", R"("Legacy")"}});
    m_Values = {{"bootmode", "Legacy"}};
    EXPECT_THAT(Call(), IsBare(0));
    EXPECT_EQ(world.ManagerCalls.back(), R"(flush standard {bootmode="Legacy"})");
    EXPECT_THAT(m_Done, ElementsAre(Pair("BIOS.bootmode", "Legacy")));
}

TEST_F(Restore, SettingWithoutAnAttributeKeyIsStaged)
{
    StartBios();
    Know("BootMode").AttributeKey.reset();
    TellContexts({{"BootMode", R"("Legacy")"}});
    EXPECT_THAT(Call(), IsBare(0));
    EXPECT_EQ(world.ManagerCalls.back(), R"(flush standard {BootMode="Legacy"})");
}

TEST_F(Restore, PasswordsAreSentLikeTheOthers)
{
    StartBios();
    Know("Pin").SettingType = "Password";
    TellContexts({{"Pin", R"("4711")"}});
    m_Values = {{"Pin", "4711"}};
    EXPECT_THAT(Call(), IsBare(0));
    EXPECT_EQ(world.ManagerCalls.back(), R"(flush standard {Pin="4711"})");
    EXPECT_THAT(m_Done, ElementsAre(Pair("BIOS.Pin", "4711")));
}

TEST_F(Restore, RelatedSettingsShareTheFlushAndTheBatchIsNotTouched)
{
    StartBios();
    Know("BootMode").DependencyNames = {"Cores"};
    Know("Cores").DependencyNames = {"BootMode"};
    m_Front->m_PendingNames = {"BootMode"};
    m_Front->m_PendingDependencies = {"Cores"};
    m_Standard->m_ChangedValues = {{"Wake", "false"}};
    TellContexts({{"BootMode", R"("Legacy")"}, {"Cores", "12"}});
    m_Values = {{"BootMode", "Legacy"}, {"Cores", "12"}};
    EXPECT_THAT(Call(), IsBare(0));
    EXPECT_EQ(world.ManagerCalls.back(), R"(flush standard {BootMode="Legacy",Cores=12,Wake=false})");
    EXPECT_THAT(m_Front->m_PendingNames, ElementsAre("BootMode"));
    EXPECT_THAT(m_Front->m_PendingDependencies, ElementsAre("Cores"));
}

TEST_F(Restore, NamesAreTakenAsTheyAreInLegacyMode)
{
    StartBios({.LegacyNameMode = true});
    world.NewNames = {{"BootMode", "Cores"}};
    TellContexts({{"BootMode", R"("Legacy")"}});
    m_Values = {{"BootMode", "Legacy"}};
    EXPECT_THAT(Call(), IsBare(0));
    EXPECT_THAT(world.NamesAsked, IsEmpty());
    EXPECT_THAT(m_Done, ElementsAre(Pair("BIOS.BootMode", "Legacy")));
}

TEST_F(Restore, HexadecimalNumbersGoOnAsDecimalOnes)
{
    StartBios({.HexValueMode = true});
    TellContexts({{"Cores", "31"}});
    m_Values = {{"Cores", "0x1F"}, {"Pin", "0x1F"}};
    EXPECT_THAT(Call(), IsBare(0));
    EXPECT_EQ(world.ManagerCalls[2], "PreparePatchContext {Cores=31,Pin=0x1F} 15");
    EXPECT_THAT(m_Values, ElementsAre(Pair("Cores", "31"), Pair("Pin", "0x1F")));
    EXPECT_THAT(m_Done, ElementsAre(Pair("BIOS.Cores", "31"), Pair("BIOS.Pin", "0x1F")));
}

} // namespace
