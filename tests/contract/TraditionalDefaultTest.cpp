#include <optional>
#include <vector>

#include "StagingFixture.h"

using doubles::LogLine;
using reading::BiosReadLogs;
using reading::BiosUrl;
using reading::Get;
using reading::Join;
using reading::SettingsUrl;
using reading::SystemsUrl;
using staging::Busy;
using staging::FilterFailed;
using staging::FlushEnter;
using staging::FlushExit;
using staging::NoNeed;
using staging::NoProc;
using staging::NotFound;
using staging::NoValues;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Pair;
using namespace Tavrine;

namespace
{

const std::string LoadFailed =
    "Command loaddefault fails. Suggest you run command 'loaddefault UEFI --post' to reset UEFI to defaults.";

LogLine NoDefaults(const std::string& prefix, const std::string& message)
{
    return {1, "Failed to get the default value for " + prefix + " due to " + message};
}
LogLine NoInfo(const std::string& name)
{
    return {1, "Failed in get setting info: Unable to find the setting " + name};
}

class TraditionalDefault : public staging::StagingTest
{
  protected:
    /// A BIOS system with a manager, which this operation does not make.
    void StartManaged(const Config_Options& options = {})
    {
        StartBios(options);
        MakeManager();
    }
    void TellDefaults(SettingStringMap defaults, RedfishConfigResult result = {0, "", ""})
    {
        world.ManagerAnswers["QueryGroupSettingDefaultValues"] = {
            .Result = std::move(result), .Text = "", .Map = std::move(defaults), .Errors = {}};
    }
    /// BootMode, Cores and Wake are not at their defaults.
    void TellThree()
    {
        TellDefaults({{"BootMode", "Legacy"}, {"Cores", "12"}, {"Wake", "false"}});
        TellContexts({{"BootMode", R"("Legacy")"}, {"Cores", "12"}, {"Wake", "false"}});
    }
    RedfishConfigResult Call(const std::string& settingName = "")
    {
        return m_Front->PostBIOSDefaultTraditional(settingName);
    }
    /// The error list as it stands whenever a change is staged.
    void WatchErrors()
    {
        m_Standard->OnCache = [this] { m_SeenErrors.push_back(m_Front->m_ErrorList); };
    }

    std::vector<std::vector<RedfishConfigResult>> m_SeenErrors;
};

TEST_F(TraditionalDefault, WhatIsNotAtItsDefaultIsSentInOneRequest)
{
    StartReal();
    MakeManager();
    TellDefaults({{"BootMode", "Legacy"}, {"Cores", "12"}, {"Wake", "true"}});
    TellContexts({{"BootMode", R"("Legacy")"}, {"Cores", "12"}});
    world.Tell("PATCH", SettingsUrl, doubles::Answer{.Result = {1, "reboot", "S"}, .Body = "", .Errors = {}});
    EXPECT_THAT(Call(), IsResult(1, "reboot", "S"));
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsUrl), Get(BiosUrl), Get(SettingsUrl),
                                         staging::Patch(R"("BootMode":"Legacy","Cores":12)")));
    EXPECT_THAT(world.Logs, ElementsAreArray(Join({BiosReadLogs,
                                                   staging::PatchUrlLogs,
                                                   {NoNeed("BIOS.Wake")},
                                                   staging::CacheLogs("BootMode"),
                                                   staging::CacheLogs("Cores"),
                                                   staging::FlushLogs(R"("BootMode":********,"Cores":********)")})));
    EXPECT_THAT(world.ManagerCalls,
                ElementsAre("UpdateSettingValue", "QueryGroupSettingDefaultValues",
                            "PreparePatchContext {BootMode=Legacy,Cores=12} 18", "GetSettingProperties BootMode",
                            "GetSettingProperties Cores", "TakeErrors"));
    EXPECT_THAT(world.UpdatedValues,
                ElementsAre(SettingValueMap{{"BootMode", "Uefi"}, {"Cores", std::int64_t{10}}, {"Wake", true}}));
    SettingValueMap current;
    EXPECT_THAT(m_Front->GetCurrentValuesMap(current, false), IsBare(0));
    EXPECT_EQ(current, (SettingValueMap{{"BootMode", "Legacy"}, {"Cores", std::int64_t{12}}, {"Wake", true}}));
}

TEST_F(TraditionalDefault, NameOnlyChoosesTheAction)
{
    for (const std::string name : {"", "BootMode", "Unknown", " "})
    {
        SCOPED_TRACE(name);
        doubles::ResetWorld();
        StartManaged();
        TellThree();
        EXPECT_THAT(Call(name), IsBare(0));
        EXPECT_THAT(world.ManagerCalls,
                    ElementsAre("read standard", "UpdateSettingValue", "QueryGroupSettingDefaultValues",
                                "PreparePatchContext {BootMode=Legacy,Cores=12,Wake=false} " +
                                    std::string(name.empty() ? "18" : "17"),
                                "GetSettingProperties BootMode", R"(cache standard BootMode="Legacy", staged "Legacy")",
                                "GetSettingProperties Cores", "cache standard Cores=12, staged 12",
                                "GetSettingProperties Wake", "cache standard Wake=false, staged false",
                                R"(flush standard {BootMode="Legacy",Cores=12,Wake=false})", "TakeErrors"));
        EXPECT_THAT(world.Logs, ElementsAre(FlushEnter, FlushExit));
        EXPECT_THAT(m_Front->m_ErrorList, IsEmpty());
    }
}

TEST_F(TraditionalDefault, ManagerThatStandsIsUsed)
{
    StartManaged();
    m_Front->m_Schema.clear();
    const auto manager = m_Front->m_SettingManager;
    TellThree();
    EXPECT_THAT(Call(), IsBare(0));
    EXPECT_EQ(m_Front->m_SettingManager, manager);
    EXPECT_THAT(world.Calls, IsEmpty());
}

TEST_F(TraditionalDefault, AllAtTheirDefaultsStillFlushesOnce)
{
    for (const int code : {0, 1})
    {
        SCOPED_TRACE(code);
        doubles::ResetWorld();
        StartManaged();
        TellDefaults({{"BootMode", "Uefi"}, {"Cores", "10"}});
        TellContexts({});
        m_Standard->Flushes = {{{code, "", ""}, {}}};
        EXPECT_THAT(Call(), IsBare(code));
        EXPECT_THAT(world.ManagerCalls,
                    ElementsAre("read standard", "UpdateSettingValue", "QueryGroupSettingDefaultValues",
                                "PreparePatchContext {} 18", "flush standard {}", "TakeErrors"));
        EXPECT_THAT(world.Logs, ElementsAre(NoNeed("BIOS.BootMode"), NoNeed("BIOS.Cores"), FlushEnter, FlushExit));
    }
}

TEST_F(TraditionalDefault, DefaultOfASettingThatTheBmcDoesNotReportGoesOn)
{
    StartManaged();
    TellDefaults({{"Absent", "1"}, {"Nothing", "2"}});
    TellContexts({});
    EXPECT_THAT(Call(), IsBare(0));
    EXPECT_EQ(world.ManagerCalls[3], "PreparePatchContext {Absent=1,Nothing=2} 18");
    EXPECT_THAT(world.Logs, ElementsAre(NotFound("BIOS.Absent"), FlushEnter, FlushExit));
    EXPECT_THAT(m_Front->m_ErrorList, IsEmpty());
}

TEST_F(TraditionalDefault, ProtectedValuesAreNotRead)
{
    StartUefi({.allowProtectedSettings = true});
    MakeManager();
    TellDefaults({{"Lock", "On"}});
    TellContexts({{"Lock", R"("On")"}});
    EXPECT_THAT(Call(), IsBare(0));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("read standard", "UpdateSettingValue", "QueryGroupSettingDefaultValues",
                                                "PreparePatchContext {Lock=On} 18", "GetSettingProperties Lock",
                                                R"(cache protected Lock="On", staged "On")",
                                                R"(flush protected {Lock="On"})", "flush standard {}", "TakeErrors"));
    EXPECT_THAT(world.UpdatedValues, ElementsAre(m_Standard->Values));
}

TEST_F(TraditionalDefault, UnreadableValuesEndIt)
{
    StartManaged();
    m_Standard->ReadResult = {24, "no route", "Host"};
    m_Front->m_ErrorList = {{18, "kept", "BIOS.Old"}};
    EXPECT_THAT(Call("BootMode"), IsResult(24, "no route", "Host"));
    EXPECT_THAT(world.Logs, ElementsAre(LogLine{1, "Query current value error: no route"}, NoValues("no route"),
                                        NoValues("no route"), NoValues("no route")));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("read standard"));
    EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(IsResult(18, "kept", "BIOS.Old")));
}

TEST_F(TraditionalDefault, UnreadableDefaultsEndItUnderTheFullName)
{
    for (const int code : {1, 18, 20, 27, 33})
    {
        SCOPED_TRACE(code);
        doubles::ResetWorld();
        StartManaged();
        m_Front->SetPrefix("Node", "Group");
        TellDefaults({{"Cores", "12"}}, {code, "Boot, Boot and BootMode, not boot", "Boot"});
        m_Front->m_ErrorList = {{18, "kept", "BIOS.Old"}};
        const std::string message = "Node.Boot, Node.Boot and Node.BootMode, not boot";
        EXPECT_THAT(Call("Boot"), IsResult(code, message, "Boot"));
        EXPECT_THAT(world.Logs, ElementsAre(NoDefaults("Node", message)));
        EXPECT_THAT(world.ManagerCalls,
                    ElementsAre("read standard", "UpdateSettingValue", "QueryGroupSettingDefaultValues"));
        EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(IsResult(18, "kept", "BIOS.Old")));
    }
}

TEST_F(TraditionalDefault, WithoutANameTheMessageStays)
{
    StartManaged();
    m_Front->SetPrefix("Node", "Group");
    TellDefaults({}, {27, "no registry", ""});
    EXPECT_THAT(Call(), IsResult(27, "no registry", ""));
    EXPECT_THAT(world.Logs, ElementsAre(NoDefaults("Node", "no registry")));
}

TEST_F(TraditionalDefault, SomeMissingDefaultsAndContextsDoNotEndIt)
{
    StartManaged();
    TellDefaults({{"BootMode", "Legacy"}, {"Cores", "12"}}, {7, "some failed", ""});
    TellContexts({{"Cores", "12"}}, {7, "some failed too", ""}, {{10, "BootMode is odd", "BootMode"}});
    EXPECT_THAT(Call(), IsBare(0));
    EXPECT_THAT(world.ManagerCalls,
                ElementsAre("read standard", "UpdateSettingValue", "QueryGroupSettingDefaultValues",
                            "PreparePatchContext {BootMode=Legacy,Cores=12} 18", "GetSettingProperties Cores",
                            "cache standard Cores=12, staged 12", "flush standard {Cores=12}", "TakeErrors"));
    EXPECT_THAT(world.Logs, ElementsAre(FlushEnter, FlushExit));
    EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(IsResult(10, "BIOS.BootMode is odd", "BIOS.BootMode")));
}

TEST_F(TraditionalDefault, BadNumberEndsIt)
{
    StartManaged({.HexValueMode = true});
    TellDefaults({{"BootMode", "Uefi"}, {"Cores", "xyz"}});
    m_Front->m_ErrorList = {{18, "kept", "BIOS.Old"}};
    EXPECT_THAT(Call(), IsResult(10, "Setting new value is invalid.", ""));
    EXPECT_THAT(world.Logs, ElementsAre(NoNeed("BIOS.BootMode"), FilterFailed));
    EXPECT_THAT(world.ManagerCalls,
                ElementsAre("read standard", "UpdateSettingValue", "QueryGroupSettingDefaultValues"));
    EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(IsResult(18, "kept", "BIOS.Old")));
}

TEST_F(TraditionalDefault, RefusedContextsAreTheOneNewEntryOfTheErrorList)
{
    for (const int code : {1, 18, 27, 33})
    {
        SCOPED_TRACE(code);
        doubles::ResetWorld();
        StartManaged();
        TellDefaults({{"BootMode", "Legacy"}});
        TellContexts({{"BootMode", "x"}}, {code, "BootMode is locked", "BootMode"}, {{18, "left", "BootMode"}});
        m_Front->m_ErrorList = {{18, "kept", "BIOS.Old"}};
        EXPECT_THAT(Call("BootMode"), IsResult(code, "BootMode is locked", "BootMode"));
        EXPECT_THAT(world.Logs, IsEmpty());
        EXPECT_EQ(world.ManagerCalls.back(), "PreparePatchContext {BootMode=Legacy} 17");
        EXPECT_THAT(m_Front->m_ErrorList,
                    ElementsAre(IsResult(18, "kept", "BIOS.Old"), IsResult(code, "BootMode is locked", "BootMode")));
        EXPECT_THAT(m_Front->m_SettingManager->m_ErrorList, ElementsAre(IsResult(18, "left", "BootMode")));
    }
}

TEST_F(TraditionalDefault, SettingThatCannotBeDescribedDoesNotStopTheOthers)
{
    StartManaged();
    m_Front->SetPrefix("Node", "Group");
    TellThree();
    world.Settings.erase("BootMode");
    WatchErrors();
    m_Front->m_ErrorList = {{18, "early", "BIOS.Old"}};
    EXPECT_THAT(Call(), IsBare(0));
    EXPECT_THAT(world.Logs, ElementsAre(NoInfo("BootMode"), FlushEnter, FlushExit));
    EXPECT_EQ(world.ManagerCalls[world.ManagerCalls.size() - 2], "flush standard {Cores=12,Wake=false}");
    ASSERT_EQ(m_SeenErrors.size(), 2U);
    EXPECT_THAT(m_SeenErrors[0], ElementsAre(IsResult(18, "early", "BIOS.Old"),
                                             IsResult(20, "Unable to find the setting BootMode", "Node.BootMode")));
    // The flush starts with an empty list.
    EXPECT_THAT(m_Front->m_ErrorList, IsEmpty());
    // It took no part in the batch.
    EXPECT_THAT(m_Front->m_PendingNames, ElementsAre("Cores", "Wake"));
}

TEST_F(TraditionalDefault, SettingWithoutAProcDoesNotStopTheOthers)
{
    StartUefi();
    MakeManager();
    m_Front->SetPrefix("Node", "Group");
    TellDefaults({{"Cores", "12"}, {"Lock", "On"}, {"Wake", "false"}});
    TellContexts({{"Cores", "12"}, {"Lock", R"("On")"}, {"Wake", "false"}});
    WatchErrors();
    EXPECT_THAT(Call(), IsBare(0));
    EXPECT_THAT(world.Logs, ElementsAre(NotFound("Node.Lock"), staging::Protected, NoProc, FlushEnter, FlushExit));
    EXPECT_THAT(world.ManagerCalls,
                ElementsAre("read standard", "UpdateSettingValue", "QueryGroupSettingDefaultValues",
                            R"(PreparePatchContext {Cores=12,Lock=On,Wake=false} 18)", "GetSettingProperties Cores",
                            "cache standard Cores=12, staged 12", "GetSettingProperties Lock",
                            "GetSettingProperties Wake", "cache standard Wake=false, staged false",
                            "flush protected {}", "flush standard {Cores=12,Wake=false}", "TakeErrors"));
    ASSERT_EQ(m_SeenErrors.size(), 2U);
    EXPECT_THAT(m_SeenErrors[0], IsEmpty());
    EXPECT_THAT(m_SeenErrors[1],
                ElementsAre(IsResult(34, "The operation on setting Lock fails since it is hidden.", "Node.Lock")));
    // It had joined the batch before.
    EXPECT_THAT(m_Front->m_PendingNames, ElementsAre("Cores", "Lock", "Wake"));
}

TEST_F(TraditionalDefault, EmptyProcIsPassedOver)
{
    StartUefi({.allowProtectedSettings = true});
    MakeManager();
    TellDefaults({{"Lock", "On"}, {"Wake", "false"}});
    TellContexts({{"Lock", R"("On")"}, {"Wake", "false"}});
    auto& procs = m_Front->m_ProcCreator->m_ProcMap;
    procs["ProtectedSettings"] = nullptr;
    // The flush cannot do with an empty proc.
    m_Standard->OnCache = [&procs] { procs.erase("ProtectedSettings"); };
    EXPECT_THAT(Call(), IsBare(0));
    EXPECT_THAT(world.Logs, ElementsAre(NotFound("UEFI.Lock"), FlushEnter, FlushExit));
    EXPECT_EQ(world.ManagerCalls[world.ManagerCalls.size() - 2], "flush standard {Wake=false}");
    EXPECT_THAT(m_Front->m_ErrorList, IsEmpty());
}

TEST_F(TraditionalDefault, ChangeIsStagedAndBatchedUnderTheNameOfItsContext)
{
    for (const std::optional<std::string>& key : {std::optional<std::string>("BOOTMODE"), std::optional<std::string>()})
    {
        SCOPED_TRACE(key.value_or("none"));
        doubles::ResetWorld();
        StartManaged();
        TellDefaults({{"BootMode", "Legacy"}});
        TellContexts({{"BootMode", R"("Legacy")"}});
        RedfishConfigSettingInfoStru& info = Know("BootMode");
        info.AttributeKey = key;
        info.DependencyNames = {"Elsewhere"};
        EXPECT_THAT(Call(), IsBare(0));
        EXPECT_EQ(world.ManagerCalls[world.ManagerCalls.size() - 2], R"(flush standard {BootMode="Legacy"})");
        EXPECT_THAT(m_Front->m_PendingNames, ElementsAre("BootMode"));
        EXPECT_THAT(m_Front->m_PendingDependencies, ElementsAre("Elsewhere"));
        EXPECT_THAT(m_Front->m_SettingAssistant->m_SetContexts, IsEmpty());
    }
}

TEST_F(TraditionalDefault, NamesAreTakenAsTheyAreInLegacyMode)
{
    StartManaged({.LegacyNameMode = true});
    world.NewNames = {{"Cores", "BootMode"}};
    TellThree();
    EXPECT_THAT(Call("Cores"), IsBare(0));
    EXPECT_THAT(world.NamesAsked, IsEmpty());
}

TEST_F(TraditionalDefault, RelatedSettingWaitsForAFlushOfItsOwnWhateverThatGave)
{
    for (const int code : {0, 1, 13, 18, 32})
    {
        SCOPED_TRACE(code);
        doubles::ResetWorld();
        StartManaged();
        TellThree();
        Know("Cores").DependencyNames = {"BootMode"};
        m_Standard->Flushes = {{{code, "first", ""}, {{code, "no", "BootMode"}}}, {{0, "", ""}, {}}};
        EXPECT_THAT(Call(), IsBare(0));
        EXPECT_THAT(world.ManagerCalls,
                    ElementsAre("read standard", "UpdateSettingValue", "QueryGroupSettingDefaultValues",
                                "PreparePatchContext {BootMode=Legacy,Cores=12,Wake=false} 18",
                                "GetSettingProperties BootMode", R"(cache standard BootMode="Legacy", staged "Legacy")",
                                "GetSettingProperties Cores", R"(flush standard {BootMode="Legacy"})",
                                "cache standard Cores=12, staged 12", "GetSettingProperties Wake",
                                "cache standard Wake=false, staged false", "flush standard {Cores=12,Wake=false}",
                                "TakeErrors"));
        EXPECT_THAT(world.Logs, ElementsAre(FlushEnter, FlushExit, FlushEnter, FlushExit));
        EXPECT_THAT(m_Front->m_PendingNames, ElementsAre("Cores", "Wake"));
        EXPECT_THAT(m_Front->m_PendingDependencies, ElementsAre("BootMode"));
    }
}

TEST_F(TraditionalDefault, BusyBmcInBetweenEndsItAtOnce)
{
    StartManaged();
    TellDefaults({{"BootMode", "Legacy"}, {"Cores", "12"}, {"Wake", "false"}});
    TellContexts({{"BootMode", R"("Legacy")"}, {"Cores", "12"}, {"Wake", "false"}}, {7, "", ""},
                 {{10, "held back", "Pin"}});
    Know("BootMode").DependencyNames = {"Cores"};
    m_Front->m_SettingAssistant->m_Errors = {{9, "kept", "Pin"}};
    m_Standard->Flushes = {{{33, "starting up", "Bmc"}, {{33, "BootMode waits", "BootMode"}}}};
    EXPECT_THAT(Call(), IsResult(33, "starting up", "Bmc"));
    EXPECT_THAT(world.ManagerCalls,
                ElementsAre("read standard", "UpdateSettingValue", "QueryGroupSettingDefaultValues",
                            "PreparePatchContext {BootMode=Legacy,Cores=12,Wake=false} 18",
                            "GetSettingProperties BootMode", R"(cache standard BootMode="Legacy", staged "Legacy")",
                            "GetSettingProperties Cores", R"(flush standard {BootMode="Legacy"})"));
    EXPECT_THAT(world.Logs, ElementsAre(FlushEnter, FlushExit, Busy("starting up")));
    EXPECT_THAT(m_Standard->m_ChangedValues, IsEmpty());
    EXPECT_THAT(m_Front->m_SettingManager->m_ErrorList, ElementsAre(IsResult(10, "held back", "Pin")));
    EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(IsResult(33, "BIOS.BootMode waits", "BIOS.BootMode")));
}

TEST_F(TraditionalDefault, BusyBmcAtTheEndMergesNoErrors)
{
    StartManaged();
    TellDefaults({{"BootMode", "Legacy"}});
    TellContexts({{"BootMode", R"("Legacy")"}}, {7, "", ""}, {{10, "held back", "Pin"}});
    m_Front->m_SettingAssistant->m_Errors = {{9, "kept", "Pin"}};
    m_Standard->Flushes = {{{33, "starting up", "Bmc"}, {}}};
    EXPECT_THAT(Call(), IsResult(33, "starting up", "Bmc"));
    EXPECT_EQ(world.ManagerCalls.back(), R"(flush standard {BootMode="Legacy"})");
    EXPECT_THAT(world.Logs, ElementsAre(FlushEnter, FlushExit, Busy("starting up")));
    EXPECT_THAT(m_Front->m_SettingManager->m_ErrorList, ElementsAre(IsResult(10, "held back", "Pin")));
    EXPECT_THAT(m_Front->m_ErrorList, IsEmpty());
}

TEST_F(TraditionalDefault, FailedFlushAnswersFourteenWithItsOwnMessage)
{
    for (const int code : {2, 4, 7, 13, 18, 24, 32, 34})
    {
        SCOPED_TRACE(code);
        doubles::ResetWorld();
        StartManaged();
        TellThree();
        m_Standard->Flushes = {{{code, "lost", "BootMode"}, {{code, "BootMode refused", "BootMode"}}}};
        EXPECT_THAT(Call("BootMode"), IsResult(14, LoadFailed, ""));
        EXPECT_THAT(world.Logs, ElementsAre(FlushEnter, FlushExit));
        EXPECT_EQ(world.ManagerCalls.back(), "TakeErrors");
        EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(IsResult(code, "BIOS.BootMode refused", "BIOS.BootMode")));
    }
}

TEST_F(TraditionalDefault, ErrorsOfTheManagerThenOfTheAssistantJoinTheList)
{
    for (const int code : {0, 1, 18})
    {
        SCOPED_TRACE(code);
        doubles::ResetWorld();
        StartManaged();
        TellDefaults({{"BootMode", "Legacy"}});
        TellContexts({{"BootMode", R"("Legacy")"}}, {7, "", ""},
                     {{10, "Pin: Pin is no pin", "Pin"}, {27, "no registry", ""}});
        m_Front->m_SettingAssistant->m_Errors = {{9, "Cores is unknown", "Cores"}};
        m_Standard->Flushes = {{{code, "", ""}, {{18, "Wake refused", "Wake"}}}};
        EXPECT_EQ(Call().ErrorCode(), code == 18 ? 14 : code);
        const auto flushed = IsResult(18, "BIOS.Wake refused", "BIOS.Wake");
        const auto first = IsResult(10, "BIOS.Pin: BIOS.Pin is no pin", "BIOS.Pin");
        const auto second = IsResult(27, "no registry", "BIOS.");
        const auto third = IsResult(9, "BIOS.Cores is unknown", "BIOS.Cores");
        if (code == 0)
        {
            EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(first, second, third));
        }
        else
        {
            EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(flushed, first, second, third));
        }
        EXPECT_THAT(m_Front->m_SettingManager->m_ErrorList, IsEmpty());
        EXPECT_THAT(m_Front->m_SettingAssistant->m_Errors, ElementsAre(IsResult(9, "Cores is unknown", "Cores")));
    }
}

} // namespace
