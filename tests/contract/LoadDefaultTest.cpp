#include "StagingFixture.h"

using doubles::LogLine;
using reading::BiosUrl;
using reading::DiscoveryLogs;
using reading::Get;
using reading::Join;
using reading::ReadSchema;
using reading::SettingsUrl;
using reading::SystemsUrl;
using staging::NoManager;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using namespace Tavrine;

namespace
{

const std::string PostSetting = "SystemRecovery_PostLoadSetupDefault";
const std::string ResetUrl = "/redfish/v1/Systems/1/Bios/Actions/Bios.ResetBios";
const std::string ResetResource = R"({"Actions":{"#Bios.ResetBios":{"target":")" + ResetUrl + R"("}}})";

const LogLine PostUnsupported{1, "Current system is not support option '--post' for BIOS default."};
const LogLine UncheckedEnter{3, "Enter BiosRedfishConfigProc::PatchSettingNewValueWithOutCheck()"};
const std::vector<LogLine> ResetLogs = Join({{{3, "Enter QueryLoadToDefaultActionURL()"}},
                                             DiscoveryLogs,
                                             {{3, "Parse reset bios action URL is: " + ResetUrl}}});

LogLine Entered(const std::string& setting, const std::string& request)
{
    return {3, "Enter Bios PostDefaultvalue() for setting: " + setting + " with customer request: " + request};
}
LogLine UncheckedExit(int code)
{
    return {3, "Exit BiosRedfishConfigProc::PatchSettingNewValueWithOutCheck() with code " + std::to_string(code)};
}

const doubles::RestCall PostReset{
    .Verb = "POST", .Url = ResetUrl, .Body = "{}", .Flag = false, .Timeout = 60, .Headers = {}};

class LoadDefault : public staging::StagingTest
{
  protected:
    void TellReset()
    {
        TellSystem();
        world.Tell("GET", BiosUrl, ResetResource);
        world.Tell("POST", ResetUrl, "");
    }
    /// A system whose firmware can load its defaults at the next start.
    void StartWithPostSetting(const Config_Options& options = {})
    {
        StartBios(options);
        m_Standard->Values[PostSetting] = "Disabled";
        Know(PostSetting);
    }
};

TEST_F(LoadDefault, ResetRequestResetsAllAndNeedsNoManager)
{
    for (const char* setting : {"", "BootMode"})
    {
        SCOPED_TRACE(setting);
        doubles::ResetWorld();
        StartBare();
        TellReset();
        EXPECT_THAT(m_Front->PostDefaultvalue(setting, "reset-bios"), IsBare(1));
        EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsUrl), Get(BiosUrl), PostReset));
        EXPECT_THAT(world.Logs, ElementsAreArray(Join({{Entered(setting, "reset-bios")}, ResetLogs})));
        EXPECT_THAT(world.ManagerCalls, IsEmpty());
        EXPECT_EQ(m_Front->m_SettingManager, nullptr);
    }
}

TEST_F(LoadDefault, ResetRequestWorksWithoutARegistry)
{
    StartBare();
    TellReset();
    world.Fail("SCHEMA", BiosUrl, 26, "no registry");
    EXPECT_THAT(m_Front->PostDefaultvalue("BootMode", "reset-bios"), IsBare(1));
}

TEST_F(LoadDefault, FailedResetIsReturnedAsItCame)
{
    StartBare();
    TellSystem();
    world.Tell("GET", BiosUrl, ResetResource);
    world.Tell("POST", ResetUrl, doubles::Answer{.Result = {28, "refused", "Bios"}, .Body = "why", .Errors = {}});
    EXPECT_THAT(m_Front->PostDefaultvalue("", "reset-bios"), IsResult(28, "refused", "Bios"));
    EXPECT_THAT(world.Logs,
                ElementsAreArray(
                    Join({{Entered("", "reset-bios")}, ResetLogs, {{4, "Failed to post reset bios duo to: why"}}})));
}

TEST_F(LoadDefault, OtherRequestWithoutASettingResetsAllOnceTheManagerStands)
{
    for (const char* request : {"", "reset", "Reset-bios", "RESET-BIOS", "reset-bios ", " reset-bios", "reset-bio",
                                "Post", "POST", "post ", "pos", "--post", "--reset-bios", "anything"})
    {
        SCOPED_TRACE(request);
        doubles::ResetWorld();
        StartBare();
        TellReset();
        TellSchema();
        EXPECT_THAT(m_Front->PostDefaultvalue("", request), IsBare(1));
        EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsUrl), ReadSchema(BiosUrl), Get(BiosUrl), PostReset));
        EXPECT_THAT(world.Logs, ElementsAreArray(Join({{Entered("", request)},
                                                       DiscoveryLogs,
                                                       {{3, "Enter QueryLoadToDefaultActionURL()"},
                                                        {3, "Parse reset bios action URL is: " + ResetUrl}}})));
        EXPECT_NE(m_Front->m_SettingManager, nullptr);
        EXPECT_THAT(world.ManagerCalls, IsEmpty());
    }
}

TEST_F(LoadDefault, OtherRequestWithASettingBringsThatOneToItsDefault)
{
    for (const char* request :
         {"", "reset", "Reset-bios", "RESET-BIOS", "reset-bios ", "Post", "POST", "post ", "--post"})
    {
        SCOPED_TRACE(request);
        doubles::ResetWorld();
        StartWithPostSetting();
        TellText("QuerySettingDefaultValue BootMode", "Legacy");
        TellText("PreparePatchContext BootMode", R"("Legacy")");
        EXPECT_THAT(m_Front->PostDefaultvalue("BootMode", request), IsBare(0));
        EXPECT_THAT(world.ManagerCalls,
                    ElementsAre("read standard", "UpdateSettingValue", "QuerySettingDefaultValue BootMode",
                                "PreparePatchContext BootMode=Legacy 17", "GetSettingProperties BootMode",
                                R"(cache standard BootMode="Legacy", staged "Legacy")",
                                R"(flush standard {BootMode="Legacy"})"));
        EXPECT_THAT(world.Logs, ElementsAre(Entered("BootMode", request), staging::FlushEnter, staging::FlushExit));
        EXPECT_THAT(world.Calls, IsEmpty());
    }
}

TEST_F(LoadDefault, FailureOfTheSingleDefaultIsReturned)
{
    StartBios();
    TellText("QuerySettingDefaultValue BootMode", "", {21, "The setting BootMode has no default value.", "BootMode"});
    EXPECT_THAT(m_Front->PostDefaultvalue("BootMode", ""),
                IsResult(21, "The setting BootMode has no default value.", "BootMode"));
    EXPECT_THAT(world.Logs, ElementsAre(Entered("BootMode", ""),
                                        LogLine{1, "Failed to get the default value for BootMode due to The setting "
                                                   "BootMode has no default value."}));
}

TEST_F(LoadDefault, WithoutAManagerOnlyTheResetRequestGoesOn)
{
    const std::vector<std::pair<std::string, std::string>> table = {
        {"", ""}, {"", "post"}, {"BootMode", "post"}, {"BootMode", ""}, {"", "Reset-Bios"}};
    for (const auto& [setting, request] : table)
    {
        SCOPED_TRACE(testing::Message() << setting << ", " << request);
        doubles::ResetWorld();
        StartBare();
        TellReset();
        world.Fail("SCHEMA", BiosUrl, 26, "no registry");
        EXPECT_THAT(m_Front->PostDefaultvalue(setting, request), IsResult(26, "no registry", ""));
        EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsUrl), ReadSchema(BiosUrl)));
        EXPECT_THAT(world.Logs, ElementsAreArray(Join({{Entered(setting, request)},
                                                       DiscoveryLogs,
                                                       {{1, "Query Schema error: no registry"},
                                                        {1, "Failed to get schema though: no registry"},
                                                        NoManager("no registry")}})));
    }
}

TEST_F(LoadDefault, ExistingManagerServes)
{
    StartWithPostSetting();
    MakeManager();
    const auto manager = m_Front->m_SettingManager;
    m_Front->m_Schema.clear();
    EXPECT_THAT(m_Front->PostDefaultvalue("", "post"), IsBare(0));
    EXPECT_EQ(m_Front->m_SettingManager, manager);
    EXPECT_THAT(world.Calls, IsEmpty());
}

TEST_F(LoadDefault, PostRequestSendsTheOneSettingWhateverIsNamed)
{
    for (const char* setting : {"", "BootMode", "reset-bios"})
    {
        SCOPED_TRACE(setting);
        doubles::ResetWorld();
        StartWithPostSetting();
        m_Standard->m_ChangedValues = {{"Wake", "false"}};
        EXPECT_THAT(m_Front->PostDefaultvalue(setting, "post"), IsBare(0));
        EXPECT_THAT(world.ManagerCalls, ElementsAre("GetSettingProperties " + PostSetting, "read standard",
                                                    "cache standard " + PostSetting + R"(=Enabled, staged "Enabled")",
                                                    "flush standard {" + PostSetting + R"(="Enabled",Wake=false})"));
        EXPECT_THAT(world.Logs,
                    ElementsAre(Entered(setting, "post"), UncheckedEnter,
                                LogLine{4, "Exiting  Tavrine::BiosBasicSettingProc::PatchSettingNewValueWithOutCheck"},
                                UncheckedExit(0)));
    }
}

TEST_F(LoadDefault, PostRequestIsOnePatch)
{
    StartBare();
    TellStandard("{\"" + PostSetting + "\":\"Disabled\"}");
    TellSchema();
    Know(PostSetting);
    world.Tell("PATCH", SettingsUrl, doubles::Answer{.Result = {1, "reboot", ""}, .Body = "", .Errors = {}});
    EXPECT_THAT(m_Front->PostDefaultvalue("", "post"), IsResult(1, "reboot", ""));
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsUrl), ReadSchema(BiosUrl), Get(SystemsUrl), Get(BiosUrl),
                                         staging::Patch('"' + PostSetting + R"(":"Enabled")")));
}

TEST_F(LoadDefault, PostRequestOnASystemWithoutTheSettingIsUnsupported)
{
    StartBios();
    EXPECT_THAT(m_Front->PostDefaultvalue("BootMode", "post"), IsBare(11));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("GetSettingProperties " + PostSetting));
    EXPECT_THAT(world.Logs,
                ElementsAre(Entered("BootMode", "post"), UncheckedEnter,
                            LogLine{1, "Failed to get setting info: Unable to find the setting " + PostSetting},
                            PostUnsupported));
}

TEST_F(LoadDefault, PostRequestForASettingThatTheBmcDoesNotReportIsUnsupported)
{
    StartBios();
    Know(PostSetting);
    EXPECT_THAT(m_Front->PostDefaultvalue("", "post"), IsBare(11));
    EXPECT_THAT(world.Logs, ElementsAre(Entered("", "post"), UncheckedEnter, UncheckedExit(20), PostUnsupported));
}

TEST_F(LoadDefault, OtherResultsOfThePostRequestReachTheCaller)
{
    struct Case
    {
        RedfishConfigResult Result;
        LogLine Line;
    };
    const LogLine failed{1, "Failed in patching data."};
    const std::vector<Case> table = {
        {{1, "reboot", "S"}, failed},
        {{4, "", ""}, failed},
        {{10, PostSetting + " takes no Enabled", PostSetting}, failed},
        {{11, "", ""}, failed},
        {{18, "refused", "S"}, failed},
        {{19, "", ""}, failed},
        {{21, "", ""}, failed},
        {{33, "busy", "S"}, {1, "Requested operation is temporarily unavailable: busy"}},
    };
    for (auto [expected, line] : table)
    {
        SCOPED_TRACE(expected.ErrorCode());
        doubles::ResetWorld();
        StartWithPostSetting();
        m_Standard->Flushes = {{expected, {}}};
        EXPECT_THAT(m_Front->PostDefaultvalue("", "post"),
                    IsResult(expected.ErrorCode(), expected.ErrorMsg(), expected.ErrorSetting()));
        EXPECT_THAT(world.Logs,
                    ElementsAre(Entered("", "post"), UncheckedEnter, line, UncheckedExit(expected.ErrorCode())));
    }
}

TEST_F(LoadDefault, UnknownSettingAnsweredByTheBmcIsUnsupportedToo)
{
    StartWithPostSetting();
    m_Standard->Flushes = {{{20, "no such attribute", PostSetting}, {}}};
    EXPECT_THAT(m_Front->PostDefaultvalue("", "post"), IsBare(11));
    EXPECT_EQ(world.Logs.back(), PostUnsupported);
}

TEST_F(LoadDefault, HiddenPostSettingIsRefusedAsSuch)
{
    StartUefi();
    Know(PostSetting).IsProtected = true;
    EXPECT_THAT(m_Front->PostDefaultvalue("", "post"),
                IsResult(34, "The operation on setting " + PostSetting + " fails since it is hidden.", ""));
    EXPECT_THAT(world.Logs, ElementsAre(Entered("", "post"), UncheckedEnter, staging::Protected, staging::NoProc));
}

TEST_F(LoadDefault, DispatcherItselfReadsNoValuesAndKeepsTheErrorList)
{
    StartWithPostSetting();
    m_Front->m_ErrorList = {{18, "kept", "BIOS.Old"}};
    m_Front->m_PendingNames = {PostSetting};
    m_Front->m_PendingDependencies = {PostSetting};
    EXPECT_THAT(m_Front->PostDefaultvalue("", "post"), IsBare(0));
    EXPECT_THAT(world.UpdatedValues, IsEmpty());
    EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(IsResult(18, "kept", "BIOS.Old")));
    EXPECT_THAT(m_Front->m_PendingNames, ElementsAre(PostSetting));
}

TEST_F(LoadDefault, NoWayLoadsTheDefaultsSettingBySetting)
{
    StartWithPostSetting();
    TellReset();
    m_Front->PostDefaultvalue("", "");
    m_Front->PostDefaultvalue("", "post");
    m_Front->PostDefaultvalue("BootMode", "");
    m_Front->PostDefaultvalue("BootMode", "reset-bios");
    EXPECT_THAT(world.ManagerCalls, testing::Not(testing::Contains("QueryGroupSettingDefaultValues")));
}

} // namespace
