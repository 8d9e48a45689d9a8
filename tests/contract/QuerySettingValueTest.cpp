// What one setting holds now.
#include "ReadingFixture.h"

using namespace reading;
using namespace Tavrine;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Pair;

namespace
{

const Config_Options Legacy{.LegacyNameMode = true};

LogLine EnterLine(const std::string& name)
{
    return {3, "Enter BiosRedfishConfigProc::QuerySettingValue(), try to get the current value of " + name};
}
LogLine ExitLine(const std::string& name)
{
    return {3, "Exit BiosRedfishConfigProc::QuerySettingValue() of setting BIOS." + name};
}
LogLine EnterProcLine(const std::string& name)
{
    return {3, "Enter BiosBasicSettingProc::QuerySettingValue(), try to get the current value of " + name};
}
LogLine ExitProcLine(const std::string& name)
{
    return {3, "Exit BiosBasicSettingProc::QuerySettingValue() of setting BIOS." + name};
}

class QuerySettingValue : public FrontClassTest
{
  protected:
    SettingStringMap m_Values;
};

// --- success ------------------------------------------------------------------------------

TEST_F(QuerySettingValue, FirstQuerySendsExactlyWhatItNeeds)
{
    TellStandard(R"({"Boot":"UEFI","Cores":26})");
    TellSchema();
    Know("Cores");
    const auto front = MakeBios();
    EXPECT_THAT(front->QuerySettingValue("Cores", m_Values), IsBare(0));
    EXPECT_THAT(m_Values, ElementsAre(Pair("BIOS.Cores", "26")));
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsUrl), ReadSchema(BiosUrl), Get(SystemsUrl), Get(BiosUrl)));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("GetSettingProperties Cores"));
    EXPECT_THAT(world.Logs, ElementsAreArray(Join({{EnterLine("Cores")},
                                                   DiscoveryLogs,
                                                   {EnterProcLine("Cores")},
                                                   BiosReadLogs,
                                                   {ExitProcLine("Cores"), ExitLine("Cores")}})));
    EXPECT_THAT(front->m_SettingManager->m_Values, IsEmpty());
    EXPECT_THAT(front->m_ErrorList, IsEmpty());
}

TEST_F(QuerySettingValue, SecondQuerySendsNothing)
{
    TellStandard(R"({"Boot":"UEFI","Cores":26})");
    TellSchema();
    Know("Cores");
    Know("Boot");
    const auto front = MakeBios();
    ASSERT_THAT(front->QuerySettingValue("Cores", m_Values), IsBare(0));
    world.Calls.clear();
    world.Logs.clear();
    EXPECT_THAT(front->QuerySettingValue("Boot", m_Values), IsBare(0));
    EXPECT_THAT(m_Values, ElementsAre(Pair("BIOS.Boot", "UEFI"), Pair("BIOS.Cores", "26")));
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.Logs,
                ElementsAre(EnterLine("Boot"), EnterProcLine("Boot"), ExitProcLine("Boot"), ExitLine("Boot")));
}

TEST_F(QuerySettingValue, MapIsAddedToAndAnEntryThatStandsThereStays)
{
    TellStandard(R"({"Boot":"UEFI"})");
    TellSchema();
    Know("Boot");
    m_Values = {{"BIOS.Boot", "before"}, {"other", "x"}};
    EXPECT_THAT(MakeBios()->QuerySettingValue("Boot", m_Values), IsBare(0));
    EXPECT_THAT(m_Values, ElementsAre(Pair("BIOS.Boot", "before"), Pair("other", "x")));
}

TEST_F(QuerySettingValue, JsonOutputStandsUnderTheSecondPrefix)
{
    TellStandard(R"({"Boot":"UEFI","Cores":26})");
    TellSchema();
    Know("Cores");
    const auto front = MakeBios({.HexValueMode = true, .LegacyNameMode = true, .OutputFormat = 1});
    front->SetPrefix("HOST", "ALL");
    EXPECT_THAT(front->QuerySettingValue("Cores", m_Values), IsBare(0));
    EXPECT_THAT(m_Values, ElementsAre(Pair("ALL", R"({"Cores":26})")));
}

TEST_F(QuerySettingValue, NumbersAreConvertedInHexValueMode)
{
    TellStandard(R"({"Cores":26})");
    TellSchema();
    Know("Cores");
    EXPECT_THAT(MakeBios({.HexValueMode = true})->QuerySettingValue("Cores", m_Values), IsBare(0));
    EXPECT_THAT(m_Values, ElementsAre(Pair("BIOS.Cores", "0x1A")));
}

TEST_F(QuerySettingValue, HiddenKeywordsDoNotTouchASingleQuery)
{
    TellStandard(R"({"Boot":"UEFI"})");
    TellSchema();
    Know("Boot");
    world.Config["HIDDEN_CONFIG_KEYWORDS_LIST"] = "Boot";
    EXPECT_THAT(MakeBios()->QuerySettingValue("Boot", m_Values), IsBare(0));
    EXPECT_THAT(m_Values, ElementsAre(Pair("BIOS.Boot", "UEFI")));
    EXPECT_THAT(world.ConfigAsked, IsEmpty());
}

TEST_F(QuerySettingValue, ProtectedSettingComesFromTheProtectedResource)
{
    TellSystem();
    TellSchema();
    TellProtected(R"({"Secret":"s"})");
    Know("Secret").IsProtected = true;
    const auto front = MakeUefi({.allowProtectedSettings = true});
    EXPECT_THAT(front->QuerySettingValue("Secret", m_Values), IsBare(0));
    EXPECT_THAT(m_Values, ElementsAre(Pair("UEFI.Secret", "s")));
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsUrl), ReadSchema(BiosUrl), ReadProtected("{}")));
    // The words stay whatever the prefix is.
    EXPECT_EQ(world.Logs.back(), ExitLine("Secret"));
}

// --- no manager, no setting ---------------------------------------------------------------

TEST_F(QuerySettingValue, FailedManagerIsHandedOnUnchanged)
{
    world.Tell("GET", SystemsUrl, {.Result = {24, "no connection for Boot", "Boot"}, .Body = "", .Errors = {}});
    const auto front = MakeBios(Legacy);
    EXPECT_THAT(front->QuerySettingValue("Boot", m_Values), IsResult(24, "no connection for Boot", "Boot"));
    EXPECT_THAT(m_Values, IsEmpty());
    EXPECT_THAT(world.NamesAsked, IsEmpty());
    EXPECT_THAT(world.ManagerCalls, IsEmpty());
    EXPECT_THAT(world.Logs,
                ElementsAre(EnterLine("Boot"), LogLine{3, "Enter ComplementQueryValuesURL()"},
                            LogLine{3, "Query url /redfish/v1/Systemserror."}, LogLine{3, "Query value url error."},
                            LogLine{1, "Failed to get schema though: no connection for Boot"},
                            LogLine{1, "Failed to get setting manager with error: no connection for Boot"}));
}

TEST_F(QuerySettingValue, UnknownNameIsShownWithThePrefix)
{
    TellSystem();
    TellSchema();
    const auto front = MakeBios();
    EXPECT_THAT(front->QuerySettingValue("Boot", m_Values),
                IsResult(20, "Unable to find the setting BIOS.Boot", "Boot"));
    EXPECT_THAT(m_Values, IsEmpty());
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsUrl), ReadSchema(BiosUrl)));
    EXPECT_THAT(world.Logs,
                ElementsAreArray(Join({{EnterLine("Boot")},
                                       DiscoveryLogs,
                                       {{1, "Failed to get setting info: Unable to find the setting BIOS.Boot"}}})));
    EXPECT_THAT(front->m_ProcCreator->m_ProcMap, IsEmpty());
}

TEST_F(QuerySettingValue, UnknownNameIsReplacedWhereverItStands)
{
    const auto front = MakeBios();
    front->m_Schema = Schema;
    front->SetPrefix("HOST", "ALL");
    EXPECT_THAT(front->QuerySettingValue("set", m_Values),
                IsResult(20, "Unable to find the HOST.setting HOST.set", "set"));
    EXPECT_THAT(front->QuerySettingValue("Set", m_Values), IsResult(20, "Unable to find the setting HOST.Set", "Set"));
}

TEST_F(QuerySettingValue, EmptyNameLeavesTheMessage)
{
    const auto front = MakeBios();
    front->m_Schema = Schema;
    EXPECT_THAT(front->QuerySettingValue("", m_Values), IsResult(20, "Unable to find the setting ", ""));
    EXPECT_EQ(world.Logs.front(), EnterLine(""));
}

TEST_F(QuerySettingValue, UnknownNameStaysAsGivenInLegacyMode)
{
    const auto front = MakeBios(Legacy);
    front->m_Schema = Schema;
    EXPECT_THAT(front->QuerySettingValue("Boot", m_Values), IsResult(20, "Unable to find the setting Boot", "Boot"));
    EXPECT_THAT(world.NamesAsked, ElementsAre("Boot"));
    EXPECT_THAT(world.Logs, ElementsAre(EnterLine("Boot"),
                                        LogLine{1, "Failed to get setting info: Unable to find the setting Boot"}));
}

// The requested name is what is looked for in the message, not the translated one.
TEST_F(QuerySettingValue, UnknownTranslatedNameStandsInTheMessage)
{
    world.NewNames["OldBoot"] = "Boot";
    const auto front = MakeBios(Legacy);
    front->m_Schema = Schema;
    EXPECT_THAT(front->QuerySettingValue("OldBoot", m_Values), IsResult(20, "Unable to find the setting Boot", "Boot"));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("GetSettingProperties Boot"));
}

// --- old names ----------------------------------------------------------------------------

TEST_F(QuerySettingValue, NamesAreNotTranslatedOutsideLegacyMode)
{
    TellStandard(R"({"OldBoot":"UEFI"})");
    TellSchema();
    Know("OldBoot");
    world.NewNames["OldBoot"] = "Boot";
    EXPECT_THAT(MakeBios()->QuerySettingValue("OldBoot", m_Values), IsBare(0));
    EXPECT_THAT(m_Values, ElementsAre(Pair("BIOS.OldBoot", "UEFI")));
    EXPECT_THAT(world.NamesAsked, IsEmpty());
}

TEST_F(QuerySettingValue, OldNameIsTranslatedBeforeTheManagerAndTheProcAreAsked)
{
    Know("Boot");
    world.NewNames["OldBoot"] = "Boot";
    const auto front = MakeBios(Legacy);
    front->m_Schema = Schema;
    const auto proc = Enter(*front, "StandardSettings", {0, "", ""}, {{"BIOS.Boot", "UEFI"}});
    EXPECT_THAT(front->QuerySettingValue("OldBoot", m_Values), IsBare(0));
    EXPECT_THAT(world.NamesAsked, ElementsAre("OldBoot"));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("GetSettingProperties Boot"));
    EXPECT_THAT(proc->m_NamesAsked, ElementsAre("Boot"));
    EXPECT_THAT(world.Logs, ElementsAre(EnterLine("OldBoot"), ExitLine("OldBoot")));
    // The default prefix keeps the new name.
    EXPECT_THAT(m_Values, ElementsAre(Pair("BIOS.Boot", "UEFI")));
}

TEST_F(QuerySettingValue, OldNameComesBackUnderAnotherPrefix)
{
    TellStandard(R"({"Boot":"UEFI"})");
    TellSchema();
    Know("Boot");
    world.NewNames["OldBoot"] = "Boot";
    const auto front = MakeBios(Legacy);
    front->SetPrefix("HOST", "BIOS");
    EXPECT_THAT(front->QuerySettingValue("OldBoot", m_Values), IsBare(0));
    EXPECT_THAT(m_Values, ElementsAre(Pair("OldBoot", "UEFI")));
}

TEST_F(QuerySettingValue, NameWithoutATranslationServesAsItIs)
{
    TellStandard(R"({"Boot":"UEFI"})");
    TellSchema();
    Know("Boot");
    const auto front = MakeBios(Legacy);
    front->SetPrefix("HOST", "ALL");
    EXPECT_THAT(front->QuerySettingValue("Boot", m_Values), IsBare(0));
    EXPECT_THAT(m_Values, ElementsAre(Pair("Boot", "UEFI")));
    EXPECT_THAT(world.NamesAsked, ElementsAre("Boot"));
}

// An exact match loses its entry when both names are one, and keeps the query's own.
TEST_F(QuerySettingValue, EntryUnderTheBareNameIsLostInLegacyMode)
{
    TellStandard(R"({"Boot":"UEFI"})");
    TellSchema();
    Know("Boot");
    const auto front = MakeBios(Legacy);
    front->SetPrefix("HOST", "ALL");
    m_Values = {{"Boot", "stale"}};
    EXPECT_THAT(front->QuerySettingValue("Boot", m_Values), IsBare(0));
    EXPECT_THAT(m_Values, ElementsAre(Pair("HOST.Boot", "UEFI")));
}

// --- the proc's failures ------------------------------------------------------------------

TEST_F(QuerySettingValue, ProcsMessageShowsTheRequestedName)
{
    TellStandard(R"({"Other":"x","Null":null})");
    TellSchema();
    Know("Boot");
    Know("Null");
    world.NewNames = {{"OldBoot", "Boot"}, {"OldNull", "Null"}};
    const auto front = MakeBios(Legacy);
    EXPECT_THAT(front->QuerySettingValue("OldBoot", m_Values),
                IsResult(20, "Unable to find the setting BIOS.OldBoot", ""));
    EXPECT_EQ(world.Logs.back(), ExitLine("OldBoot"));
    EXPECT_THAT(front->QuerySettingValue("OldNull", m_Values),
                IsResult(8, "The setting BIOS.OldNull cannot be shown since it has no current value info.", ""));
    EXPECT_EQ(world.Logs.back(), ExitLine("OldNull"));
    EXPECT_THAT(m_Values, IsEmpty());
    EXPECT_THAT(world.LogsAt(1), IsEmpty());
}

TEST_F(QuerySettingValue, EveryOccurrenceInTheProcsMessageIsReplacedCaseCounting)
{
    Know("Boot");
    world.NewNames["Old"] = "Boot";
    const auto front = MakeBios(Legacy);
    front->m_Schema = Schema;
    Enter(*front, "StandardSettings", {26, "Boot, BIOS.Boot, boot", "Boot"}, {});
    EXPECT_THAT(front->QuerySettingValue("Old", m_Values), IsResult(26, "Old, BIOS.Old, boot", "Boot"));
}

TEST_F(QuerySettingValue, MessageOfASuccessShowsTheRequestedNameToo)
{
    Know("Boot");
    world.NewNames["Old"] = "Boot";
    const auto front = MakeBios(Legacy);
    front->m_Schema = Schema;
    Enter(*front, "StandardSettings", {0, "read Boot", "Boot"}, {});
    EXPECT_THAT(front->QuerySettingValue("Old", m_Values), IsResult(0, "read Old", "Boot"));
}

TEST_F(QuerySettingValue, FailedProcLeavesTheKeysAsTheyAre)
{
    Know("Boot");
    world.NewNames["Old"] = "Boot";
    const auto front = MakeBios(Legacy);
    front->m_Schema = Schema;
    front->SetPrefix("HOST", "ALL");
    Enter(*front, "StandardSettings", {1, "", ""}, {{"HOST.Boot", "UEFI"}});
    EXPECT_THAT(front->QuerySettingValue("Old", m_Values), IsBare(1));
    EXPECT_THAT(m_Values, ElementsAre(Pair("HOST.Boot", "UEFI")));
    EXPECT_THAT(world.Logs, ElementsAre(EnterLine("Old"), ExitLine("Old")));
}

TEST_F(QuerySettingValue, FailedReadOfTheResourceIsHandedOn)
{
    TellSystem();
    TellSchema();
    world.Fail("GET", BiosUrl, 33, "BMC is not ready.");
    Know("Boot");
    const auto front = MakeBios();
    EXPECT_THAT(front->QuerySettingValue("Boot", m_Values), IsResult(33, "BMC is not ready.", ""));
    EXPECT_THAT(m_Values, IsEmpty());
    EXPECT_THAT(world.LogsAt(1),
                ElementsAre("Fail to get the resource.", "Failed to get the response info for effective values.",
                            "Failed in get current value map though: BMC is not ready."));
    EXPECT_EQ(world.Logs.back(), ExitLine("Boot"));
}

// --- no proc ------------------------------------------------------------------------------

TEST_F(QuerySettingValue, ProtectedSettingIsHiddenUnlessAllowed)
{
    Know("Secret").IsProtected = true;
    const auto front = MakeUefi();
    front->m_Schema = Schema;
    EXPECT_THAT(front->QuerySettingValue("Secret", m_Values),
                IsResult(34, "The operation on setting Secret fails since it is hidden.", ""));
    EXPECT_THAT(m_Values, IsEmpty());
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(EnterLine("Secret"), LogLine{1, "setting is protected."},
                                        LogLine{1, "Can not create BIOS redfish procs."}));
}

TEST_F(QuerySettingValue, HiddenSettingIsToldUnderItsOldName)
{
    Know("Secret").IsProtected = true;
    world.NewNames["Old"] = "Secret";
    const auto front = MakeUefi(Legacy);
    front->m_Schema = Schema;
    EXPECT_THAT(front->QuerySettingValue("Old", m_Values),
                IsResult(34, "The operation on setting Old fails since it is hidden.", ""));
}

TEST_F(QuerySettingValue, MissingFactoryIsAnInternalError)
{
    Know("Boot");
    const auto front = MakeBios();
    front->m_Schema = Schema;
    front->m_ProcCreator->m_CreatorMap.clear();
    EXPECT_THAT(front->QuerySettingValue("Boot", m_Values), IsBare(13));
    EXPECT_THAT(world.Logs, ElementsAre(EnterLine("Boot"), LogLine{1, "Can not create BIOS redfish procs."}));
}

TEST_F(QuerySettingValue, ProcThatIsNullKeepsTheCreatorsResult)
{
    Know("Boot");
    const auto front = MakeBios();
    front->m_Schema = Schema;
    front->m_ProcCreator->m_ProcMap["StandardSettings"] = nullptr;
    EXPECT_THAT(front->QuerySettingValue("Boot", m_Values), IsBare(0));
    EXPECT_THAT(m_Values, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(EnterLine("Boot"), LogLine{1, "Can not create BIOS redfish procs."}));
}

} // namespace
