#include <optional>

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
using staging::FlushEnter;
using staging::FlushExit;
using staging::NoManager;
using staging::NoProc;
using staging::NoValues;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Pair;
using namespace Tavrine;

namespace
{

LogLine NoDefault(const std::string& setting, const std::string& message)
{
    return {1, "Failed to get the default value for " + setting + " due to " + message};
}
LogLine IsDefault(const std::string& setting)
{
    return {4, "Setting " + setting + " value is default value, no need to load to default."};
}
LogLine NoContext(const std::string& setting)
{
    return {1, "Failed to prepare the patch context during post setting " + setting + " to default."};
}
LogLine SendFailed(const std::string& message) { return {1, "Failed to post default value to BMC though: " + message}; }

class SingleDefault : public staging::StagingTest
{
  protected:
    void TellDefault(const std::string& name, const std::string& value, const std::string& context)
    {
        TellText("QuerySettingDefaultValue " + name, value);
        TellText("PreparePatchContext " + name, context);
    }
    /// An object whose caller says OldBoot for BootMode.
    void StartLegacy(Config_Options options = {})
    {
        options.LegacyNameMode = true;
        StartBios(options);
        world.NewNames = {{"OldBoot", "BootMode"}};
    }
};

TEST_F(SingleDefault, DefaultIsSentAtOnce)
{
    StartReal();
    TellDefault("BootMode", "Legacy", R"("Legacy")");
    world.Tell("PATCH", SettingsUrl, "");
    EXPECT_THAT(m_Front->PostSingleSettingToDefault("BootMode"), IsBare(0));
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsUrl), Get(BiosUrl), Get(SettingsUrl), Get(SystemsUrl),
                                         ReadSchema(BiosUrl), staging::Patch(R"("BootMode":"Legacy")")));
    EXPECT_THAT(world.Logs,
                ElementsAreArray(Join({BiosReadLogs, staging::PatchUrlLogs, DiscoveryLogs,
                                       staging::CacheLogs("BootMode"), staging::FlushLogs(R"("BootMode":********)")})));
    EXPECT_THAT(world.ManagerCalls,
                ElementsAre("UpdateSettingValue", "QuerySettingDefaultValue BootMode",
                            "PreparePatchContext BootMode=Legacy 17", "GetSettingProperties BootMode"));
    EXPECT_THAT(world.UpdatedValues,
                ElementsAre(SettingValueMap{{"BootMode", "Uefi"}, {"Cores", std::int64_t{10}}, {"Wake", true}}));
    EXPECT_THAT(m_Front->m_SettingAssistant->m_SetContexts, ElementsAre(Pair("BootMode", R"("Legacy")")));
    SettingValueMap current;
    EXPECT_THAT(m_Front->GetCurrentValuesMap(current, false), IsBare(0));
    EXPECT_EQ(current["BootMode"], OptionalVar("Legacy"));
}

TEST_F(SingleDefault, TwoCallsAreTwoRequests)
{
    StartReal();
    TellDefault("BootMode", "Legacy", R"("Legacy")");
    TellDefault("Cores", "12", "12");
    Know("Cores").DependencyNames = {"BootMode"};
    Know("BootMode").DependencyNames = {"Cores"};
    world.Tell("PATCH", SettingsUrl, "");
    EXPECT_THAT(m_Front->PostSingleSettingToDefault("BootMode"), IsBare(0));
    world.Calls.clear();
    EXPECT_THAT(m_Front->PostSingleSettingToDefault("Cores"), IsBare(0));
    EXPECT_THAT(world.Calls, ElementsAre(staging::Patch(R"("Cores":12)")));
    EXPECT_THAT(m_Front->m_PendingNames, IsEmpty());
    EXPECT_THAT(m_Front->m_PendingDependencies, IsEmpty());
    EXPECT_THAT(m_Front->m_SettingAssistant->m_SetContexts,
                ElementsAre(Pair("BootMode", R"("Legacy")"), Pair("Cores", "12")));
}

TEST_F(SingleDefault, RelatedChangesThatWaitGoWithTheSameFlush)
{
    StartBios();
    TellDefault("BootMode", "Legacy", R"("Legacy")");
    m_Standard->m_ChangedValues = {{"Cores", "12"}};
    m_Front->m_PendingNames = {"Cores"};
    m_Front->m_PendingDependencies = {"BootMode"};
    EXPECT_THAT(m_Front->PostSingleSettingToDefault("BootMode"), IsBare(0));
    EXPECT_THAT(world.ManagerCalls,
                ElementsAre("read standard", "UpdateSettingValue", "QuerySettingDefaultValue BootMode",
                            "PreparePatchContext BootMode=Legacy 17", "GetSettingProperties BootMode",
                            R"(cache standard BootMode="Legacy", staged "Legacy")",
                            R"(flush standard {BootMode="Legacy",Cores=12})"));
    EXPECT_THAT(m_Front->m_PendingNames, ElementsAre("Cores"));
    EXPECT_THAT(m_Front->m_PendingDependencies, ElementsAre("BootMode"));
}

TEST_F(SingleDefault, SettingAtItsDefaultIsLeftAlone)
{
    const std::vector<std::pair<std::string, std::string>> table = {
        {"BootMode", "Uefi"}, {"bootMODE", "Uefi"}, {"Cores", "10"}, {"Wake", "true"}, {"Pin", "16"}};
    for (const bool hexMode : {false, true})
    {
        for (const auto& [name, value] : table)
        {
            SCOPED_TRACE(testing::Message() << name << " hex " << hexMode);
            doubles::ResetWorld();
            StartBios({.HexValueMode = hexMode});
            TellText("QuerySettingDefaultValue " + name, value, {0, "a remark", "Remarked"});
            m_Front->m_ErrorList = {{18, "kept", "BIOS.Old"}};
            EXPECT_THAT(m_Front->PostSingleSettingToDefault(name), IsBare(0));
            EXPECT_THAT(world.Logs, ElementsAre(IsDefault(name)));
            EXPECT_THAT(world.ManagerCalls,
                        ElementsAre("read standard", "UpdateSettingValue", "QuerySettingDefaultValue " + name));
            EXPECT_THAT(m_Standard->m_ChangedValues, IsEmpty());
            EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(IsResult(18, "kept", "BIOS.Old")));
            EXPECT_THAT(m_Front->m_SettingAssistant->m_SetContexts, IsEmpty());
        }
    }
}

TEST_F(SingleDefault, AnythingElseIsSent)
{
    struct Case
    {
        const char* Name;
        const char* Default;
        bool Hex;
    };
    const std::vector<Case> table = {{"BootMode", "UEFI", false}, {"BootMode", "Uefi ", false}, {"BootMode", "", false},
                                     {"Cores", "010", false},     {"Cores", "0xA", true},       {"Cores", "A", true},
                                     {"Wake", "True", false},     {"Wake", "1", false},         {"Nothing", "", false},
                                     {"Nothing", "1", false},     {"Unreported", "", false}};
    for (const Case& row : table)
    {
        SCOPED_TRACE(testing::Message() << row.Name << "=" << row.Default);
        doubles::ResetWorld();
        StartBios({.HexValueMode = row.Hex});
        Know(row.Name);
        TellDefault(row.Name, row.Default, "context");
        EXPECT_THAT(m_Front->PostSingleSettingToDefault(row.Name), IsBare(0));
        const std::string name = row.Name;
        EXPECT_THAT(world.ManagerCalls,
                    ElementsAre("read standard", "UpdateSettingValue", "QuerySettingDefaultValue " + name,
                                "PreparePatchContext " + name + "=" + row.Default + " 17",
                                "GetSettingProperties " + name, "cache standard " + name + "=context, staged context",
                                "flush standard {" + name + "=context}"));
        EXPECT_THAT(world.Logs, ElementsAre(FlushEnter, FlushExit));
    }
}

TEST_F(SingleDefault, ValuesAreReadBeforeTheManagerIsMade)
{
    StartBios();
    m_Front->m_Schema.clear();
    m_Standard->ReadResult = {24, "no route to BootMode", "BootMode"};
    EXPECT_THAT(m_Front->PostSingleSettingToDefault("BootMode"), IsResult(24, "no route to BootMode", "BootMode"));
    EXPECT_THAT(world.Logs, ElementsAre(LogLine{1, "Query current value error: no route to BootMode"},
                                        NoValues("no route to BootMode"), NoValues("no route to BootMode"),
                                        NoValues("no route to BootMode")));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("read standard"));
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_EQ(m_Front->m_SettingManager, nullptr);
}

TEST_F(SingleDefault, WithoutAManagerItEnds)
{
    StartBios();
    m_Front->m_Schema.clear();
    TellSystem();
    world.Fail("SCHEMA", BiosUrl, 26, "no registry");
    EXPECT_THAT(m_Front->PostSingleSettingToDefault("BootMode"), IsResult(26, "no registry", ""));
    EXPECT_THAT(world.Logs, ElementsAreArray(Join({DiscoveryLogs,
                                                   {{1, "Query Schema error: no registry"},
                                                    {1, "Failed to get schema though: no registry"},
                                                    NoManager("no registry")}})));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("read standard"));
}

TEST_F(SingleDefault, ProtectedValuesAreNotReadYetTheirProcTakesTheDefault)
{
    StartUefi({.allowProtectedSettings = true});
    TellDefault("Lock", "Off", R"("Off")");
    EXPECT_THAT(m_Front->PostSingleSettingToDefault("Lock"), IsBare(0));
    // Off is in place, but nobody knows.
    EXPECT_THAT(world.ManagerCalls, ElementsAre("read standard", "UpdateSettingValue", "QuerySettingDefaultValue Lock",
                                                "PreparePatchContext Lock=Off 17", "GetSettingProperties Lock",
                                                R"(cache protected Lock="Off", staged "Off")",
                                                R"(flush protected {Lock="Off"})", "flush standard {}"));
    EXPECT_THAT(world.UpdatedValues, ElementsAre(m_Standard->Values));
}

TEST_F(SingleDefault, SettingWithoutADefaultIsRefusedInTheCallersName)
{
    StartLegacy();
    TellText("QuerySettingDefaultValue BootMode", "Uefi", {21, "BootMode has no default, BootMode!", "BootMode"});
    EXPECT_THAT(m_Front->PostSingleSettingToDefault("OldBoot"),
                IsResult(21, "OldBoot has no default, OldBoot!", "BootMode"));
    EXPECT_THAT(world.Logs, ElementsAre(NoDefault("OldBoot", "BootMode has no default, BootMode!")));
    EXPECT_THAT(world.ManagerCalls,
                ElementsAre("read standard", "UpdateSettingValue", "QuerySettingDefaultValue BootMode"));
}

TEST_F(SingleDefault, EveryCodeOfTheDefaultQueryButZeroEndsIt)
{
    for (const int code : {1, 7, 20, 27, 33})
    {
        SCOPED_TRACE(code);
        doubles::ResetWorld();
        StartBios();
        TellText("QuerySettingDefaultValue BootMode", "Uefi", {code, "no", "S"});
        EXPECT_THAT(m_Front->PostSingleSettingToDefault("BootMode"), IsResult(code, "no", "S"));
        EXPECT_THAT(world.Logs, ElementsAre(NoDefault("BootMode", "no")));
    }
}

TEST_F(SingleDefault, RefusedContextEndsItInTheCallersName)
{
    for (const int code : {1, 7, 10, 18, 33})
    {
        SCOPED_TRACE(code);
        doubles::ResetWorld();
        StartLegacy();
        TellText("QuerySettingDefaultValue BootMode", "Legacy");
        world.ManagerAnswers["PreparePatchContext BootMode"] = {.Result = {code, "BootMode is locked", "BootMode"},
                                                                .Text = "x",
                                                                .Map = {},
                                                                .Errors = {{code, "BootMode is locked", "BootMode"}}};
        EXPECT_THAT(m_Front->PostSingleSettingToDefault("OldBoot"), IsResult(code, "OldBoot is locked", "BootMode"));
        EXPECT_THAT(world.Logs, ElementsAre(NoContext("OldBoot")));
        EXPECT_EQ(world.ManagerCalls.back(), "PreparePatchContext BootMode=Legacy 17");
        EXPECT_THAT(m_Standard->m_ChangedValues, IsEmpty());
        // The manager keeps its error; nobody merges it.
        EXPECT_THAT(m_Front->m_SettingManager->m_ErrorList,
                    ElementsAre(IsResult(code, "BootMode is locked", "BootMode")));
        EXPECT_THAT(m_Front->m_ErrorList, IsEmpty());
    }
}

TEST_F(SingleDefault, SettingThatCannotBeDescribedEndsItInTheCallersName)
{
    StartLegacy();
    world.Settings.erase("BootMode");
    TellDefault("BootMode", "Legacy", R"("Legacy")");
    EXPECT_THAT(m_Front->PostSingleSettingToDefault("OldBoot"),
                IsResult(20, "Unable to find the setting OldBoot", "BootMode"));
    EXPECT_THAT(world.Logs, ElementsAre(LogLine{1, "Failed to get setting info: Unable to find the setting BootMode"}));
    EXPECT_EQ(world.ManagerCalls.back(), "GetSettingProperties BootMode");
    EXPECT_THAT(m_Standard->m_ChangedValues, IsEmpty());
}

TEST_F(SingleDefault, HiddenSettingIsRefusedUnderItsCurrentName)
{
    StartUefi({.LegacyNameMode = true});
    world.NewNames = {{"OldLock", "Lock"}};
    TellDefault("Lock", "On", R"("On")");
    EXPECT_THAT(m_Front->PostSingleSettingToDefault("OldLock"),
                IsResult(34, "The operation on setting Lock fails since it is hidden.", ""));
    EXPECT_THAT(world.Logs, ElementsAre(staging::Protected, NoProc));
    EXPECT_EQ(world.ManagerCalls.back(), "GetSettingProperties Lock");
    EXPECT_THAT(m_Front->m_SettingAssistant->m_SetContexts, IsEmpty());
}

TEST_F(SingleDefault, MissingProcAnswersZeroThoughNothingIsDone)
{
    StartUefi({.allowProtectedSettings = true});
    m_Front->m_ProcCreator->m_ProcMap["ProtectedSettings"] = nullptr;
    TellDefault("Lock", "On", R"("On")");
    EXPECT_THAT(m_Front->PostSingleSettingToDefault("Lock"), IsBare(0));
    EXPECT_THAT(world.Logs, ElementsAre(NoProc));
    EXPECT_EQ(world.ManagerCalls.back(), "GetSettingProperties Lock");
    EXPECT_THAT(m_Front->m_SettingAssistant->m_SetContexts, IsEmpty());
}

TEST_F(SingleDefault, ChangeIsStagedUnderTheAttributeKey)
{
    StartLegacy();
    Know("BootMode").AttributeKey = "bootmode";
    TellDefault("BootMode", "Legacy", R"("Legacy")");
    EXPECT_THAT(m_Front->PostSingleSettingToDefault("OldBoot"), IsBare(0));
    EXPECT_THAT(world.NamesAsked, ElementsAre("OldBoot"));
    EXPECT_THAT(world.ManagerCalls,
                ElementsAre("read standard", "UpdateSettingValue", "QuerySettingDefaultValue BootMode",
                            "PreparePatchContext BootMode=Legacy 17", "GetSettingProperties BootMode",
                            R"(cache standard bootmode="Legacy", staged "Legacy")",
                            R"(flush standard {bootmode="Legacy"})"));
    EXPECT_THAT(m_Front->m_SettingAssistant->m_SetContexts, ElementsAre(Pair("bootmode", R"("Legacy")")));
}

TEST_F(SingleDefault, MissingAttributeKeyLeavesAsAnException)
{
    StartBios();
    Know("BootMode").AttributeKey.reset();
    TellDefault("BootMode", "Legacy", R"("Legacy")");
    EXPECT_THROW(m_Front->PostSingleSettingToDefault("BootMode"), std::bad_optional_access);
    EXPECT_EQ(world.ManagerCalls.back(), "GetSettingProperties BootMode");
    EXPECT_THAT(m_Standard->m_ChangedValues, IsEmpty());
}

TEST_F(SingleDefault, LegacyModeComparesTheCurrentNameAndShowsTheCallers)
{
    StartLegacy();
    TellText("QuerySettingDefaultValue BootMode", "Uefi");
    EXPECT_THAT(m_Front->PostSingleSettingToDefault("OldBoot"), IsBare(0));
    EXPECT_THAT(world.Logs, ElementsAre(IsDefault("OldBoot")));
}

TEST_F(SingleDefault, NameThatHasNoNewFormIsUsedAsItIs)
{
    StartLegacy();
    TellText("QuerySettingDefaultValue Cores", "10");
    EXPECT_THAT(m_Front->PostSingleSettingToDefault("Cores"), IsBare(0));
    EXPECT_THAT(world.NamesAsked, ElementsAre("Cores"));
}

TEST_F(SingleDefault, NamesAreNotTranslatedOutsideLegacyMode)
{
    StartBios();
    world.NewNames = {{"Cores", "BootMode"}};
    TellText("QuerySettingDefaultValue Cores", "10");
    EXPECT_THAT(m_Front->PostSingleSettingToDefault("Cores"), IsBare(0));
    EXPECT_THAT(world.NamesAsked, IsEmpty());
}

TEST_F(SingleDefault, SuccessAnswersABareZeroAndTheFlushEmptiesTheErrorList)
{
    StartLegacy();
    TellDefault("BootMode", "Legacy", R"("Legacy")");
    m_Front->m_ErrorList = {{18, "gone", "BIOS.Old"}};
    m_Standard->Flushes = {{{0, "BootMode: done, BootMode", "BootMode"}, {}}};
    EXPECT_THAT(m_Front->PostSingleSettingToDefault("OldBoot"), IsBare(0));
    EXPECT_THAT(world.Logs, ElementsAre(FlushEnter, FlushExit));
    EXPECT_THAT(m_Front->m_ErrorList, IsEmpty());
}

TEST_F(SingleDefault, EveryFlushCodeButZeroIsLoggedListedAndReturned)
{
    const std::vector<int> codes = {1, 4, 13, 18, 24, 33};
    for (const int code : codes)
    {
        SCOPED_TRACE(code);
        doubles::ResetWorld();
        StartLegacy();
        TellDefault("BootMode", "Legacy", R"("Legacy")");
        m_Front->m_ErrorList = {{18, "gone", "BIOS.Old"}};
        m_Standard->Flushes = {{{code, "BootMode waits, BootMode", "BootMode"},
                                {{18, "BootMode refused", "BootMode"}, {9, "unknown", ""}, {10, "", "Cores"}}}};
        EXPECT_THAT(m_Front->PostSingleSettingToDefault("OldBoot"),
                    IsResult(code, "OldBoot waits, OldBoot", "BootMode"));
        EXPECT_THAT(
            world.Logs,
            ElementsAre(
                FlushEnter, FlushExit, SendFailed("BootMode waits, BootMode"),
                LogLine{1, "index: [0]: error_setting: BIOS.BootMode, code: 18, message: BIOS.BootMode refused"},
                LogLine{1, "index: [1]: error_setting: BIOS., code: 9, message: unknown"},
                LogLine{1, "index: [2]: error_setting: BIOS.Cores, code: 10, message: "}));
        EXPECT_THAT(m_Front->m_ErrorList, IsEmpty());
        EXPECT_THAT(m_Front->m_SettingAssistant->m_Errors, IsEmpty());
        EXPECT_EQ(world.ManagerCalls.back(), R"(flush standard {BootMode="Legacy"})");
    }
}

TEST_F(SingleDefault, FailedFlushWithoutEntriesListsNothing)
{
    StartBios();
    TellDefault("BootMode", "Legacy", R"("Legacy")");
    m_Standard->Flushes = {{{1, "", ""}, {}}};
    EXPECT_THAT(m_Front->PostSingleSettingToDefault("BootMode"), IsBare(1));
    EXPECT_THAT(world.Logs, ElementsAre(FlushEnter, FlushExit, SendFailed("")));
}

} // namespace
