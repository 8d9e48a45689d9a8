// What the procs report as pending, beside the value in force.
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
const LogLine ExitPending{4, "Exit BiosRedfishConfigProc::CompareSettingPendingValues()"};
const LogLine NoProcs{1, "Can not create BIOS redfish procs."};

LogLine EnterPending(const std::string& name)
{
    return {4, "Enter Bios CompareSettingPendingValues() for setting " + name};
}
LogLine ExitWithCode(int code)
{
    return {3, "Exit BiosRedfishConfigProc::CompareSettingPendingValues() with code " + std::to_string(code)};
}
LogLine ProcFailed(const std::string& code, const std::string& message)
{
    return {4, "Bios Proc return code: " + code + " with message: " + message};
}
std::pair<std::string, std::string> Both(const char* effective, const char* pending) { return {effective, pending}; }

/// A proc that compares as it is told. What it gives is entered also when it fails.
class ComparingProc final : public BiosBasicSettingProc
{
  public:
    ComparingProc(RedfishConfigResult result, SettingCompareMap gives)
        : m_Result(std::move(result)), m_Gives(std::move(gives))
    {
    }

    RedfishConfigResult CompareSettingPendingValues(SettingCompareMap& compare, const std::string& setting) override
    {
        m_NamesAsked.push_back(setting);
        m_MapsSeen.push_back(compare);
        for (const auto& [key, pair] : m_Gives)
        {
            compare[key] = pair;
        }
        return m_Result;
    }

    RedfishConfigResult m_Result;
    SettingCompareMap m_Gives;
    std::vector<std::string> m_NamesAsked;
    std::vector<SettingCompareMap> m_MapsSeen;
};

class ComparePending : public FrontClassTest
{
  protected:
    ComparePending() { world.Config[KeywordsItem] = "Unseen"; }

    /// A front object that builds its manager without a request.
    std::unique_ptr<Front> MakeKnowing(const Config_Options& options = {},
                                       ConfigurateSupportedSystemType systemType = SystemTypeBios)
    {
        auto front = Make(systemType, options);
        front->SetPrefix("One", "Two");
        front->m_Schema = Schema;
        return front;
    }
    std::shared_ptr<ComparingProc> EnterProc(Front& front, const std::string& resource, RedfishConfigResult result,
                                             SettingCompareMap gives)
    {
        auto proc = std::make_shared<ComparingProc>(std::move(result), std::move(gives));
        front.m_ProcCreator->m_ProcMap[resource] = proc;
        return proc;
    }

    SettingCompareMap m_Compare = {{"before", Both("x", "y")}};
};

// --- one setting --------------------------------------------------------------------------

TEST_F(ComparePending, OneSettingIsComparedByItsProc)
{
    const auto front = MakeKnowing();
    const auto proc = EnterProc(*front, "StandardSettings", {0, "Cores: remark", "s"}, {{"One.Cores", Both("4", "8")}});
    Know("Cores");
    const SettingCompareMap before = m_Compare;
    EXPECT_THAT(front->CompareSettingPendingValues(m_Compare, "Cores"), IsResult(0, "Cores: remark", "s"));
    EXPECT_THAT(m_Compare, ElementsAre(Pair("One.Cores", Both("4", "8")), Pair("before", Both("x", "y"))));
    EXPECT_THAT(proc->m_NamesAsked, ElementsAre("Cores"));
    EXPECT_THAT(proc->m_MapsSeen, ElementsAre(before));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("GetSettingProperties Cores"));
    EXPECT_THAT(world.Logs, ElementsAre(EnterPending("Cores"), ExitWithCode(0), ExitPending));
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.NamesAsked, IsEmpty());
    EXPECT_THAT(front->m_ErrorList, IsEmpty());
}

TEST_F(ComparePending, FirstComparisonReadsSchemaResourceAndSettingsObject)
{
    TellStandard(R"({"Boot":"Uefi","Cores":4})", R"({"Cores":8})");
    TellSchema();
    Know("Cores");
    const auto front = MakeBios();
    m_Compare.clear();
    EXPECT_THAT(front->CompareSettingPendingValues(m_Compare, "Cores"), IsBare(0));
    EXPECT_THAT(m_Compare, ElementsAre(Pair("BIOS.Cores", Both("4", "8"))));
    EXPECT_THAT(world.Calls,
                ElementsAre(Get(SystemsUrl), ReadSchema(BiosUrl), Get(SystemsUrl), Get(BiosUrl), Get(SettingsUrl)));
}

TEST_F(ComparePending, OneSettingIsShownThoughAKeywordHidesIt)
{
    world.Config[KeywordsItem] = "Cores,before";
    const auto front = MakeKnowing();
    EnterProc(*front, "StandardSettings", {0, "", ""}, {{"One.Cores", Both("4", "8")}});
    Know("Cores");
    EXPECT_THAT(front->CompareSettingPendingValues(m_Compare, "Cores"), IsBare(0));
    EXPECT_THAT(m_Compare, ElementsAre(Pair("One.Cores", Both("4", "8")), Pair("before", Both("x", "y"))));
    EXPECT_THAT(world.ConfigAsked, IsEmpty());
}

TEST_F(ComparePending, ProtectedSettingIsComparedByTheProtectedProc)
{
    const auto front = MakeKnowing({.allowProtectedSettings = true}, SystemTypeUefi);
    const auto standard = EnterProc(*front, "StandardSettings", {0, "", ""}, {});
    const auto secret = EnterProc(*front, "ProtectedSettings", {0, "", ""}, {{"One.Secret", Both("a", "b")}});
    Know("Secret").IsProtected = true;
    EXPECT_THAT(front->CompareSettingPendingValues(m_Compare, "Secret"), IsBare(0));
    EXPECT_THAT(m_Compare, ElementsAre(Pair("One.Secret", Both("a", "b")), Pair("before", Both("x", "y"))));
    EXPECT_THAT(secret->m_NamesAsked, ElementsAre("Secret"));
    EXPECT_THAT(standard->m_NamesAsked, IsEmpty());
}

TEST_F(ComparePending, OldNameIsPutBackAsTheKey)
{
    world.NewNames["Old"] = "New";
    Know("New");
    const auto front = MakeKnowing({.LegacyNameMode = true});
    const auto proc = EnterProc(*front, "StandardSettings", {0, "New is New, not Old", "New"},
                                {{"One.New", Both("4", "8")}, {"One.Newer", Both("a", "b")}});
    EXPECT_THAT(front->CompareSettingPendingValues(m_Compare, "Old"), IsResult(0, "Old is Old, not Old", "New"));
    EXPECT_THAT(m_Compare, ElementsAre(Pair("Old", Both("4", "8")), Pair("One.Newer", Both("a", "b")),
                                       Pair("before", Both("x", "y"))));
    EXPECT_THAT(proc->m_NamesAsked, ElementsAre("New"));
    EXPECT_THAT(world.NamesAsked, ElementsAre("Old"));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("GetSettingProperties New"));
    EXPECT_THAT(world.Logs, ElementsAre(EnterPending("Old"), ExitWithCode(0), ExitPending));
}

TEST_F(ComparePending, KeyStaysUnderADefaultPrefixThoughTheMessageChanges)
{
    world.NewNames["Old"] = "New";
    Know("New");
    const auto front = MakeKnowing({.LegacyNameMode = true});
    front->SetPrefix("bios", "Two");
    EnterProc(*front, "StandardSettings", {0, "of New", ""}, {{"bios.New", Both("4", "8")}});
    EXPECT_THAT(front->CompareSettingPendingValues(m_Compare, "Old"), IsResult(0, "of Old", ""));
    EXPECT_THAT(m_Compare, ElementsAre(Pair("before", Both("x", "y")), Pair("bios.New", Both("4", "8"))));
}

TEST_F(ComparePending, FailureOfTheProcPutsTheOldNameBackToo)
{
    world.NewNames["Old"] = "New";
    Know("New");
    for (const int code : {2, 20, 33, 1})
    {
        world.Logs.clear();
        m_Compare.clear();
        const auto front = MakeKnowing({.LegacyNameMode = true});
        EnterProc(*front, "StandardSettings", {code, "New, New", "New"}, {{"One.New", Both("4", "8")}});
        EXPECT_THAT(front->CompareSettingPendingValues(m_Compare, "Old"), IsResult(code, "Old, Old", "New"));
        EXPECT_THAT(m_Compare, ElementsAre(Pair("Old", Both("4", "8"))));
        EXPECT_THAT(world.Logs, ElementsAre(EnterPending("Old"), ExitWithCode(code), ExitPending));
    }
}

TEST_F(ComparePending, FailedManagerIsHandedOnUnchanged)
{
    const auto front = MakeKnowing({.LegacyNameMode = true});
    front->m_Schema.clear();
    TellSystem();
    world.Tell("SCHEMA", BiosUrl, {.Result = {27, "no New", "s"}, .Body = "", .Errors = {}});
    world.NewNames["Old"] = "New";
    EXPECT_THAT(front->CompareSettingPendingValues(m_Compare, "Old"), IsResult(27, "no New", "s"));
    EXPECT_THAT(m_Compare, ElementsAre(Pair("before", Both("x", "y"))));
    EXPECT_THAT(world.NamesAsked, IsEmpty());
    EXPECT_THAT(world.ManagerCalls, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAreArray(Join({{EnterPending("Old")},
                                                   DiscoveryLogs,
                                                   {{1, "Query Schema error: no New"},
                                                    {1, "Failed to get schema though: no New"},
                                                    {1, "Failed to query setting manager: no New"}}})));
}

TEST_F(ComparePending, ManagerThatExistsIsKept)
{
    Know("Cores");
    const auto front = MakeKnowing();
    EnterProc(*front, "StandardSettings", {0, "", ""}, {});
    const auto manager = std::make_shared<RedfishConfigSettingManager>("its own", false, Config_Options{});
    front->m_SettingManager = manager;
    EXPECT_THAT(front->CompareSettingPendingValues(m_Compare, "Cores"), IsBare(0));
    EXPECT_EQ(front->m_SettingManager, manager);
}

TEST_F(ComparePending, UnknownSettingIsHandedOnWithTheNewName)
{
    world.NewNames["Old"] = "New";
    const auto front = MakeKnowing({.LegacyNameMode = true});
    const auto proc = EnterProc(*front, "StandardSettings", {0, "", ""}, {});
    EXPECT_THAT(front->CompareSettingPendingValues(m_Compare, "Old"),
                IsResult(20, "Unable to find the setting New", "New"));
    EXPECT_THAT(m_Compare, ElementsAre(Pair("before", Both("x", "y"))));
    EXPECT_THAT(proc->m_NamesAsked, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(EnterPending("Old"),
                                        LogLine{1, "Failed in get setting info: Unable to find the setting New"}));
}

TEST_F(ComparePending, HiddenSettingIsRefusedWithTheNewName)
{
    world.NewNames["Old"] = "New";
    Know("New").IsProtected = true;
    const auto front = MakeKnowing({.LegacyNameMode = true}, SystemTypeUefi);
    const auto secret = EnterProc(*front, "ProtectedSettings", {0, "", ""}, {});
    m_Compare = {{"One.New", Both("x", "y")}};
    EXPECT_THAT(front->CompareSettingPendingValues(m_Compare, "Old"),
                IsResult(34, "The operation on setting New fails since it is hidden.", ""));
    EXPECT_THAT(m_Compare, ElementsAre(Pair("One.New", Both("x", "y"))));
    EXPECT_THAT(secret->m_NamesAsked, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(EnterPending("Old"), LogLine{1, "setting is protected."}, NoProcs));
}

TEST_F(ComparePending, SettingWithoutAProcAnswersThirteen)
{
    Know("Cores");
    const auto front = MakeKnowing();
    front->m_ProcCreator->m_CreatorMap.clear();
    EXPECT_THAT(front->CompareSettingPendingValues(m_Compare, "Cores"), IsBare(13));
    EXPECT_THAT(world.Logs, ElementsAre(EnterPending("Cores"), NoProcs));
}

// --- all settings -------------------------------------------------------------------------

TEST_F(ComparePending, AllSettingsAreComparedByEveryProcButTheProtectedOne)
{
    const auto front = MakeKnowing({.allowProtectedSettings = true, .LegacyNameMode = true}, SystemTypeUefi);
    const auto secret = EnterProc(*front, "ProtectedSettings", {32, "", ""}, {{"Two.Secret", Both("a", "b")}});
    const auto other = EnterProc(*front, "protectedsettings", {0, "", ""}, {{"Two.A", Both("a", "b")}});
    const auto standard = EnterProc(*front, "StandardSettings", {0, "remark", "s"}, {{"Two.Cores", Both("4", "8")}});
    const SettingCompareMap before = m_Compare;
    EXPECT_THAT(front->CompareSettingPendingValues(m_Compare, ""), IsBare(0));
    EXPECT_THAT(m_Compare, ElementsAre(Pair("Two.A", Both("a", "b")), Pair("Two.Cores", Both("4", "8")),
                                       Pair("before", Both("x", "y"))));
    EXPECT_THAT(secret->m_NamesAsked, IsEmpty());
    EXPECT_THAT(standard->m_NamesAsked, ElementsAre(""));
    EXPECT_THAT(standard->m_MapsSeen, ElementsAre(before));
    EXPECT_THAT(other->m_NamesAsked, ElementsAre(""));
    EXPECT_THAT(world.Logs, ElementsAre(EnterPending(""), ExitPending));
    EXPECT_THAT(world.ConfigAsked, ElementsAre(KeywordsItem));
    EXPECT_THAT(world.ManagerCalls, IsEmpty());
    EXPECT_THAT(world.NamesAsked, IsEmpty());
    EXPECT_EQ(front->m_SettingManager, nullptr);
    EXPECT_THAT(world.Calls, IsEmpty());
}

TEST_F(ComparePending, AllSettingsNeedNoSchema)
{
    TellStandard(R"({"Boot":"Uefi","Cores":4})", R"({"Cores":8})");
    const auto front = MakeUefi();
    m_Compare.clear();
    EXPECT_THAT(front->CompareSettingPendingValues(m_Compare, ""), IsBare(0));
    EXPECT_THAT(m_Compare, ElementsAre(Pair("UEFI.Cores", Both("4", "8"))));
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsUrl), Get(BiosUrl), Get(SettingsUrl)));
}

TEST_F(ComparePending, LastFailureWinsAndStopsNothing)
{
    world.Config.clear();
    const auto front = MakeKnowing();
    EnterProc(*front, "A", {26, "first", "a"}, {{"Two.A", Both("1", "2")}});
    EnterProc(*front, "B", {1, "", "b"}, {{"Two.B", Both("3", "4")}});
    EnterProc(*front, "C", {0, "fine", "c"}, {{"Two.C", Both("5", "6")}});
    EnterProc(*front, "ProtectedSettings", {34, "never", "p"}, {{"Two.P", Both("7", "8")}});
    EXPECT_THAT(front->CompareSettingPendingValues(m_Compare, ""), IsResult(1, "", "b"));
    EXPECT_THAT(m_Compare, ElementsAre(Pair("Two.A", Both("1", "2")), Pair("Two.B", Both("3", "4")),
                                       Pair("Two.C", Both("5", "6")), Pair("before", Both("x", "y"))));
    EXPECT_THAT(world.Logs,
                ElementsAre(EnterPending(""), ProcFailed("26", "first"), ProcFailed("1", ""), NoKeywords, ExitPending));
}

TEST_F(ComparePending, NoPendingValueIsACodeOfTheProcToo)
{
    const auto front = MakeKnowing();
    EnterProc(*front, "StandardSettings", {2, "", ""}, {});
    EXPECT_THAT(front->CompareSettingPendingValues(m_Compare, ""), IsBare(2));
    EXPECT_THAT(world.Logs, ElementsAre(EnterPending(""), ProcFailed("2", ""), ExitPending));
}

TEST_F(ComparePending, HiddenSettingsAreTakenFromTheWholeMapAfterAFailureToo)
{
    world.Config[KeywordsItem] = "Cores,before";
    const auto front = MakeKnowing();
    EnterProc(*front, "StandardSettings", {33, "busy", ""},
              {{"Two.Boot", Both("Cores", "b")}, {"Two.Cores", Both("4", "8")}});
    EXPECT_THAT(front->CompareSettingPendingValues(m_Compare, ""), IsResult(33, "busy", ""));
    EXPECT_THAT(m_Compare, ElementsAre(Pair("Two.Boot", Both("Cores", "b"))));
}

TEST_F(ComparePending, ProtectedProcAloneComparesNothing)
{
    const auto front = MakeKnowing();
    const auto secret = EnterProc(*front, "ProtectedSettings", {34, "", ""}, {});
    EXPECT_THAT(front->CompareSettingPendingValues(m_Compare, ""), IsBare(0));
    EXPECT_THAT(secret->m_NamesAsked, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(EnterPending(""), ExitPending));
}

TEST_F(ComparePending, NoProcsAnswerThirteenAndLeaveTheMap)
{
    world.Config[KeywordsItem] = "before";
    const auto front = MakeKnowing();
    front->m_ProcCreator->m_CreatorMap.clear();
    EXPECT_THAT(front->CompareSettingPendingValues(m_Compare, ""), IsBare(13));
    EXPECT_THAT(m_Compare, ElementsAre(Pair("before", Both("x", "y"))));
    EXPECT_THAT(world.Logs, ElementsAre(EnterPending(""), NoProcs));
    EXPECT_THAT(world.ConfigAsked, IsEmpty());
}

// --- the name put back --------------------------------------------------------------------

struct MovedPair
{
    const char* Name;
    SettingCompareMap Before;
    const char* KeyName;
    const char* RequestedName;
    SettingCompareMap After;
};
void PrintTo(const MovedPair& movedPair, std::ostream* out) { *out << movedPair.Name; }

class ComparedName : public ComparePending, public testing::WithParamInterface<MovedPair>
{
};

TEST_P(ComparedName, StandsUnderTheRequestedName)
{
    const auto front = MakeBios({.LegacyNameMode = true});
    front->SetPrefix("HOST", "BIOS");
    SettingCompareMap values = GetParam().Before;
    front->RestoreRequestedName(values, GetParam().KeyName, GetParam().RequestedName);
    EXPECT_EQ(values, GetParam().After);
    EXPECT_THAT(world.Logs, IsEmpty());
}

const std::pair<std::string, std::string> V = {"v", "w"};
const std::pair<std::string, std::string> O = {"o", "p"};

INSTANTIATE_TEST_SUITE_P(
    Exact, ComparedName,
    testing::Values(
        MovedPair{"Moves", {{"New", V}, {"Other", O}}, "New", "Old", {{"Old", V}, {"Other", O}}},
        MovedPair{"ReplacesAnEntryOfTheRequestedName", {{"New", V}, {"Old", O}}, "New", "Old", {{"Old", V}}},
        MovedPair{"IsLostWhenBothNamesAreOne", {{"New", V}, {"Other", O}}, "New", "New", {{"Other", O}}},
        MovedPair{
            "StopsBeforePrefixedKeys", {{"HOST.New", O}, {"New", V}}, "New", "Old", {{"HOST.New", O}, {"Old", V}}},
        MovedPair{"CaseCounts", {{"new", V}}, "New", "Old", {{"new", V}}}),
    [](const auto& test) { return test.param.Name; });

INSTANTIATE_TEST_SUITE_P(
    Prefixed, ComparedName,
    testing::Values(
        MovedPair{"Moves", {{"HOST.New", V}, {"HOST.Other", O}}, "New", "Old", {{"HOST.Other", O}, {"Old", V}}},
        MovedPair{"MovesToTheSameBareName", {{"HOST.New", V}}, "New", "New", {{"New", V}}},
        MovedPair{"AnyPrefixServes", {{"X.New", V}}, "New", "Old", {{"Old", V}}},
        MovedPair{"EmptyPrefixServes", {{".New", V}}, "New", "Old", {{"Old", V}}},
        MovedPair{"ReplacesAnEntryOfTheRequestedName", {{"HOST.New", V}, {"Old", O}}, "New", "Old", {{"Old", V}}},
        MovedPair{"FirstOfThreeMovesAlone",
                  {{"A.New", V}, {"B.New", O}, {"C.New", O}},
                  "New",
                  "Old",
                  {{"B.New", O}, {"C.New", O}, {"Old", V}}},
        MovedPair{"CaseOfTheNameCounts", {{"HOST.new", V}}, "New", "Old", {{"HOST.new", V}}},
        MovedPair{"LongerNameIsPassedOver",
                  {{"HOST.NewMode", O}, {"HOST2.New", V}},
                  "New",
                  "Old",
                  {{"HOST.NewMode", O}, {"Old", V}}},
        MovedPair{"NameNeedsThePointBeforeIt", {{"HOST.ANew", V}}, "New", "Old", {{"HOST.ANew", V}}},
        MovedPair{"OnlyTheFirstPointWithTheNameCounts", {{"A.New.New", V}}, "New", "Old", {{"A.New.New", V}}},
        MovedPair{"NothingMatches", {{"HOST", V}}, "New", "Old", {{"HOST", V}}},
        MovedPair{"EmptyMap", {}, "New", "Old", {}}),
    [](const auto& test) { return test.param.Name; });

TEST_F(ComparePending, NameIsPutBackOnlyForOldNamesUnderAPrefixOfTheCaller)
{
    struct Condition
    {
        bool LegacyNameMode;
        const char* Prefix;
        bool Moves;
    };
    for (const Condition& condition :
         {Condition{true, "HOST", true}, Condition{true, "BIOS1", true}, Condition{true, "UEF", true},
          Condition{true, "", true}, Condition{true, "BIOS", false}, Condition{true, "bIoS", false},
          Condition{true, "UEFI", false}, Condition{true, "uefi", false}, Condition{false, "HOST", false}})
    {
        SCOPED_TRACE(std::string(condition.LegacyNameMode ? "legacy " : "") + condition.Prefix);
        const auto front = MakeBios({.LegacyNameMode = condition.LegacyNameMode});
        front->SetPrefix(condition.Prefix, "HOST");
        for (const char* key : {"New", "HOST.New"})
        {
            SettingCompareMap values = {{key, V}};
            front->RestoreRequestedName(values, "New", "Old");
            EXPECT_EQ(values, SettingCompareMap({{condition.Moves ? "Old" : key, V}}));
        }
    }
}

} // namespace
