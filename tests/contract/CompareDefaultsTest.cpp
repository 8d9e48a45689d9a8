// The current value of a setting beside its default.
#include "ReadingFixture.h"

using namespace reading;
using namespace Tavrine;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Pair;

namespace
{

const std::string KeywordsItem = "HIDDEN_CONFIG_KEYWORDS_LIST";
const LogLine NoKeywords{1, "Failed to get the all keywords that be used to hide the settings. Eg. Raid Card"};
const LogLine ExitCompare{3, "Exit BiosRedfishConfigProc::CompareSettingDefaultValues()"};
const LogLine ListFailed{1, "Query setting default values error."};

LogLine EnterCompare(const std::string& name)
{
    return {4, "Enter BiosRedfishConfigProc::CompareSettingDefaultValues() with settingName=" + name};
}
LogLine NoSchemaInfo(const std::string& name) { return {1, "The Schema do not has info of the setting: " + name}; }
LogLine Skipped(const std::string& name) { return {4, name + " current value is invalid, so skipped."}; }
std::pair<std::string, std::string> Both(const char* current, const char* fallback) { return {current, fallback}; }

class CompareDefaults : public FrontClassTest
{
  protected:
    CompareDefaults() { world.Config[KeywordsItem] = "Unseen"; }

    /// A front object with values and a schema, so that nothing is sent.
    std::shared_ptr<Front> MakeKnowing(const Config_Options& options = {})
    {
        std::shared_ptr<Front> front = m_Made.emplace_back(MakeBios(options));
        front->SetPrefix("One", "Two");
        front->m_Schema = Schema;
        m_Standard = EnterAssistant(*front, "StandardSettings", {0, "", ""}, m_Current);
        return front;
    }
    void TellDefault(const std::string& name, RedfishConfigResult result, const std::string& text)
    {
        world.ManagerAnswers["QuerySettingDefaultValue " + name] = {
            .Result = std::move(result), .Text = text, .Map = {}, .Errors = {}};
    }
    void TellDefaults(RedfishConfigResult result, const SettingStringMap& map)
    {
        world.ManagerAnswers["QueryGroupSettingDefaultValues"] = {
            .Result = std::move(result), .Text = "", .Map = map, .Errors = {}};
    }

    SettingValueMap m_Current = {
        {"BootMode", "Uefi"}, {"Cores", std::int64_t{26}}, {"Nothing", std::nullopt}, {"Wake", true}, {"Word", ""}};
    std::shared_ptr<ScriptedAssistant> m_Standard;
    /// They live as long as the test: their end would write log records.
    std::vector<std::shared_ptr<Front>> m_Made;
    SettingCompareMap m_Compare;
};

// --- one setting --------------------------------------------------------------------------

TEST_F(CompareDefaults, OneSettingStandsUnderTheFirstPrefix)
{
    const auto front = MakeKnowing();
    TellDefault("BootMode", {0, "remark", "s"}, "Legacy");
    m_Compare = {{"other", Both("x", "y")}};
    EXPECT_THAT(front->CompareSettingDefaultValues(m_Compare, "BootMode"), IsResult(0, "remark", "s"));
    EXPECT_THAT(m_Compare, ElementsAre(Pair("One.BootMode", Both("Uefi", "Legacy")), Pair("other", Both("x", "y"))));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("UpdateSettingValue", "QuerySettingDefaultValue BootMode"));
    EXPECT_THAT(world.UpdatedValues, ElementsAre(m_Current));
    EXPECT_THAT(world.Logs, ElementsAre(EnterCompare("BootMode"), ExitCompare));
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.NamesAsked, IsEmpty());
}

TEST_F(CompareDefaults, ValuesAreShownAsTextEqualOrNot)
{
    struct Shown
    {
        const char* Name;
        const char* Text;
    };
    for (const auto& [name, text] :
         {Shown{"BootMode", "Uefi"}, Shown{"Cores", "26"}, Shown{"Wake", "true"}, Shown{"Word", ""}})
    {
        TellDefault(name, {0, "", ""}, text);
        for (const int format : {0, 1, 2})
        {
            m_Compare.clear();
            const auto front = MakeKnowing({.HexValueMode = true, .OutputFormat = format});
            EXPECT_THAT(front->CompareSettingDefaultValues(m_Compare, name), IsBare(0));
            EXPECT_THAT(m_Compare, ElementsAre(Pair(std::string("One.") + name, Both(text, text))));
        }
    }
}

TEST_F(CompareDefaults, EntryThatStandsThereStays)
{
    TellDefault("BootMode", {0, "", ""}, "Legacy");
    m_Compare = {{"One.BootMode", Both("before", "it")}};
    EXPECT_THAT(MakeKnowing()->CompareSettingDefaultValues(m_Compare, "BootMode"), IsBare(0));
    EXPECT_THAT(m_Compare, ElementsAre(Pair("One.BootMode", Both("before", "it"))));
}

TEST_F(CompareDefaults, OneSettingIsFoundWhateverItsCase)
{
    TellDefault("bOOTmODE", {0, "", ""}, "Legacy");
    EXPECT_THAT(MakeKnowing()->CompareSettingDefaultValues(m_Compare, "bOOTmODE"), IsBare(0));
    EXPECT_THAT(m_Compare, ElementsAre(Pair("One.bOOTmODE", Both("Uefi", "Legacy"))));
}

TEST_F(CompareDefaults, OneSettingIsShownThoughAKeywordHidesIt)
{
    world.Config[KeywordsItem] = "BootMode,other";
    TellDefault("BootMode", {0, "", ""}, "Legacy");
    m_Compare = {{"other", Both("x", "y")}};
    EXPECT_THAT(MakeKnowing()->CompareSettingDefaultValues(m_Compare, "BootMode"), IsBare(0));
    EXPECT_THAT(m_Compare, ElementsAre(Pair("One.BootMode", Both("Uefi", "Legacy")), Pair("other", Both("x", "y"))));
    EXPECT_THAT(world.ConfigAsked, IsEmpty());
}

TEST_F(CompareDefaults, OldNameStaysTheKeyUnderAnyPrefix)
{
    world.NewNames["Old"] = "Cores";
    TellDefault("Cores", {0, "", ""}, "8");
    const auto front = MakeKnowing({.LegacyNameMode = true});
    EXPECT_THAT(front->CompareSettingDefaultValues(m_Compare, "Old"), IsBare(0));
    EXPECT_THAT(m_Compare, ElementsAre(Pair("One.Old", Both("26", "8"))));
    EXPECT_THAT(world.NamesAsked, ElementsAre("Old"));
    EXPECT_THAT(world.Logs, ElementsAre(EnterCompare("Old"), ExitCompare));
}

TEST_F(CompareDefaults, UnknownSettingIsNamedAsTheCallerNamedIt)
{
    world.NewNames["Old"] = "New";
    m_Compare = {{"other", Both("x", "y")}};
    EXPECT_THAT(MakeKnowing()->CompareSettingDefaultValues(m_Compare, "Boot"),
                IsResult(20, "Unable to find the setting One.Boot", ""));
    EXPECT_THAT(world.Logs, ElementsAre(EnterCompare("Boot"), LogLine{1, "Can not find setting: Boot"}));
    world.Logs.clear();
    EXPECT_THAT(MakeKnowing({.LegacyNameMode = true})->CompareSettingDefaultValues(m_Compare, "Old"),
                IsResult(20, "Unable to find the setting One.Old", ""));
    EXPECT_THAT(world.Logs, ElementsAre(EnterCompare("Old"), LogLine{1, "Can not find setting: Old"}));
    EXPECT_THAT(m_Compare, ElementsAre(Pair("other", Both("x", "y"))));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("UpdateSettingValue", "UpdateSettingValue"));
}

TEST_F(CompareDefaults, SettingWithoutAValueCannotBeShown)
{
    world.NewNames["Old"] = "Nothing";
    EXPECT_THAT(MakeKnowing()->CompareSettingDefaultValues(m_Compare, "Nothing"),
                IsResult(8, "The setting One.Nothing cannot be shown since it has no current value info.", ""));
    EXPECT_THAT(world.Logs, ElementsAre(EnterCompare("Nothing"), LogLine{4, "Get current value of Nothing failed."}));
    world.Logs.clear();
    EXPECT_THAT(MakeKnowing({.LegacyNameMode = true})->CompareSettingDefaultValues(m_Compare, "Old"),
                IsResult(8, "The setting One.Old cannot be shown since it has no current value info.", ""));
    EXPECT_THAT(world.Logs, ElementsAre(EnterCompare("Old"), LogLine{4, "Get current value of Old failed."}));
    EXPECT_THAT(m_Compare, IsEmpty());
    EXPECT_THAT(world.ManagerCalls, ElementsAre("UpdateSettingValue", "UpdateSettingValue"));
}

TEST_F(CompareDefaults, FailedDefaultIsHandedOnUnchanged)
{
    world.NewNames["Old"] = "Cores";
    for (const int code : {21, 7, 1})
    {
        world.Logs.clear();
        TellDefault("Cores", {code, "Cores has none", "Cores"}, "half");
        EXPECT_THAT(MakeKnowing({.LegacyNameMode = true})->CompareSettingDefaultValues(m_Compare, "Old"),
                    IsResult(code, "Cores has none", "Cores"));
        EXPECT_THAT(world.Logs,
                    ElementsAre(EnterCompare("Old"), LogLine{1, "Failed in get default value though: Cores has none"}));
    }
    EXPECT_THAT(m_Compare, IsEmpty());
}

// --- values and manager, in both forms ----------------------------------------------------

TEST_F(CompareDefaults, FirstComparisonReadsValuesBeforeTheSchema)
{
    TellStandard(R"({"Boot":"Uefi","Cores":4})", R"({"Cores":8})");
    TellSchema();
    TellDefault("Cores", {0, "", ""}, "2");
    const auto front = MakeBios();
    EXPECT_THAT(front->CompareSettingDefaultValues(m_Compare, "Cores"), IsBare(0));
    EXPECT_THAT(m_Compare, ElementsAre(Pair("BIOS.Cores", Both("8", "2"))));
    EXPECT_THAT(world.Calls,
                ElementsAre(Get(SystemsUrl), Get(BiosUrl), Get(SettingsUrl), Get(SystemsUrl), ReadSchema(BiosUrl)));
    EXPECT_THAT(front->m_SettingManager->m_Values, IsEmpty());
}

TEST_F(CompareDefaults, ManagerThatExistsIsBroughtUpToDate)
{
    TellDefault("Cores", {0, "", ""}, "8");
    TellDefaults({0, "", ""}, {});
    for (const char* name : {"Cores", ""})
    {
        world.UpdatedValues.clear();
        const auto front = MakeKnowing();
        const auto manager = std::make_shared<RedfishConfigSettingManager>("its own", false, Config_Options{});
        front->m_SettingManager = manager;
        front->m_SettingAssistant.reset();
        EXPECT_THAT(front->CompareSettingDefaultValues(m_Compare, name), IsBare(0));
        EXPECT_EQ(front->m_SettingManager, manager);
        EXPECT_THAT(world.UpdatedValues, ElementsAre(m_Current));
    }
}

TEST_F(CompareDefaults, ProtectedValuesTakeNoPart)
{
    TellDefaults({0, "", ""}, {{"Secret", "s"}, {"Cores", "8"}});
    const auto front = MakeKnowing();
    const auto secret = EnterAssistant(*front, "ProtectedSettings", {0, "", ""}, {{"Secret", "s"}});
    EXPECT_THAT(front->CompareSettingDefaultValues(m_Compare, "Secret"),
                IsResult(20, "Unable to find the setting One.Secret", ""));
    EXPECT_THAT(front->CompareSettingDefaultValues(m_Compare, ""), IsBare(0));
    EXPECT_THAT(m_Compare, ElementsAre(Pair("Two.Cores", Both("26", "8"))));
    EXPECT_THAT(secret->m_Reads, IsEmpty());
    EXPECT_THAT(m_Standard->m_Reads, ElementsAre("current", "current"));
}

TEST_F(CompareDefaults, FailedValuesAreHandedOnUnchanged)
{
    for (const char* name : {"BootMode", ""})
    {
        world.Logs.clear();
        const auto front = MakeKnowing({.LegacyNameMode = true});
        front->m_Schema.clear();
        m_Standard->m_Result = {24, "no BootMode", "s"};
        EXPECT_THAT(front->CompareSettingDefaultValues(m_Compare, name), IsResult(24, "no BootMode", "s"));
        EXPECT_THAT(world.Logs,
                    ElementsAre(EnterCompare(name), LogLine{1, "Failed in get current value map though: no BootMode"},
                                LogLine{1, "Failed in get current value map though: no BootMode"},
                                LogLine{1, "Failed in get current value map though: no BootMode"}));
    }
    EXPECT_THAT(world.NamesAsked, IsEmpty());
    EXPECT_THAT(world.ManagerCalls, IsEmpty());
    EXPECT_THAT(world.Calls, IsEmpty());
}

TEST_F(CompareDefaults, FailedManagerIsHandedOnUnchanged)
{
    TellSystem();
    world.Tell("SCHEMA", BiosUrl, {.Result = {27, "no registry", "s"}, .Body = "", .Errors = {}});
    for (const char* name : {"BootMode", ""})
    {
        world.Logs.clear();
        const auto front = MakeKnowing({.LegacyNameMode = true});
        front->m_Schema.clear();
        EXPECT_THAT(front->CompareSettingDefaultValues(m_Compare, name), IsResult(27, "no registry", "s"));
        EXPECT_THAT(world.Logs, ElementsAreArray(Join({{EnterCompare(name)},
                                                       DiscoveryLogs,
                                                       {{1, "Query Schema error: no registry"},
                                                        {1, "Failed to get schema though: no registry"},
                                                        {1, "Failed to query setting manager: no registry"}}})));
    }
    EXPECT_THAT(world.NamesAsked, IsEmpty());
    EXPECT_THAT(world.ManagerCalls, IsEmpty());
}

// --- all settings -------------------------------------------------------------------------

TEST_F(CompareDefaults, AllSettingsStandUnderTheSecondPrefix)
{
    const auto front = MakeKnowing({.HexValueMode = true, .LegacyNameMode = true, .OutputFormat = 1});
    TellDefaults({0, "remark", "s"},
                 {{"BootMode", "Uefi"}, {"Cores", "8"}, {"Extra", "e"}, {"Wake", "false"}, {"Word", ""}});
    m_Compare = {{"Two.Cores", Both("before", "it")}, {"other", Both("x", "y")}};
    EXPECT_THAT(front->CompareSettingDefaultValues(m_Compare, ""), IsResult(0, "remark", "s"));
    EXPECT_THAT(m_Compare, ElementsAre(Pair("Two.BootMode", Both("Uefi", "Uefi")),
                                       Pair("Two.Cores", Both("before", "it")), Pair("Two.Wake", Both("true", "false")),
                                       Pair("Two.Word", Both("", "")), Pair("other", Both("x", "y"))));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("UpdateSettingValue", "QueryGroupSettingDefaultValues"));
    EXPECT_THAT(world.UpdatedValues, ElementsAre(m_Current));
    EXPECT_THAT(world.ConfigAsked, ElementsAre(KeywordsItem));
    EXPECT_THAT(world.NamesAsked, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(EnterCompare(""), NoSchemaInfo("Nothing"), ExitCompare));
    EXPECT_THAT(world.Calls, IsEmpty());
}

TEST_F(CompareDefaults, SettingsWithoutADefaultOrAValueArePassedOver)
{
    m_Current = {{"A", "a"}, {"bootmode", "b"}, {"C", std::nullopt}, {"D", "d"}, {"e", std::nullopt}};
    // The defaults count case; a setting that lacks both is logged for its default.
    TellDefaults({0, "", ""}, {{"A", "1"}, {"BootMode", "2"}, {"C", "3"}, {"D", "4"}});
    EXPECT_THAT(MakeKnowing()->CompareSettingDefaultValues(m_Compare, ""), IsBare(0));
    EXPECT_THAT(m_Compare, ElementsAre(Pair("Two.A", Both("a", "1")), Pair("Two.D", Both("d", "4"))));
    EXPECT_THAT(world.Logs,
                ElementsAre(EnterCompare(""), NoSchemaInfo("bootmode"), Skipped("C"), NoSchemaInfo("e"), ExitCompare));
}

TEST_F(CompareDefaults, PartlyFailedListIsShownAndItsResultHandedOn)
{
    world.Config.clear();
    m_Current = {{"A", "a"}, {"B", "b"}};
    TellDefaults({7, "B failed", "s"}, {{"A", "1"}});
    EXPECT_THAT(MakeKnowing()->CompareSettingDefaultValues(m_Compare, ""), IsResult(7, "B failed", "s"));
    EXPECT_THAT(m_Compare, ElementsAre(Pair("Two.A", Both("a", "1"))));
    EXPECT_THAT(world.Logs, ElementsAre(EnterCompare(""), NoSchemaInfo("B"), NoKeywords, ExitCompare));
}

TEST_F(CompareDefaults, FailedListIsHandedOnAndLeavesTheMapUnfiltered)
{
    world.Config[KeywordsItem] = "other";
    m_Compare = {{"other", Both("x", "y")}};
    for (const int code : {27, 1, 8, 6})
    {
        world.Logs.clear();
        TellDefaults({code, "no One. list", "s"}, {{"Cores", "8"}});
        EXPECT_THAT(MakeKnowing()->CompareSettingDefaultValues(m_Compare, ""), IsResult(code, "no One. list", "s"));
        EXPECT_THAT(world.Logs, ElementsAre(EnterCompare(""), ListFailed));
    }
    EXPECT_THAT(m_Compare, ElementsAre(Pair("other", Both("x", "y"))));
    EXPECT_THAT(world.ConfigAsked, IsEmpty());
}

TEST_F(CompareDefaults, HiddenSettingsAreTakenFromTheWholeMap)
{
    world.Config[KeywordsItem] = "Cores,other,o.Wak";
    TellDefaults({0, "", ""}, {{"BootMode", "Uefi"}, {"Cores", "8"}, {"Nothing", "n"}, {"Wake", "true"}});
    m_Compare = {{"other", Both("x", "y")}, {"kept", Both("Cores", "Cores")}};
    EXPECT_THAT(MakeKnowing()->CompareSettingDefaultValues(m_Compare, ""), IsBare(0));
    EXPECT_THAT(m_Compare,
                ElementsAre(Pair("Two.BootMode", Both("Uefi", "Uefi")), Pair("kept", Both("Cores", "Cores"))));
    EXPECT_THAT(world.Logs, ElementsAre(EnterCompare(""), Skipped("Nothing"), NoSchemaInfo("Word"), ExitCompare));
}

} // namespace
