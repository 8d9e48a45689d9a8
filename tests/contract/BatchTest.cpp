// Related settings never share a request: the test for it, and the flush that it forces.
#include "ChangeFixture.h"

using namespace changing;
using namespace Tavrine;
using staging::FlushEnter;
using staging::FlushExit;
using staging::NoProc;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

namespace
{

using Names = std::vector<std::string>;

// --- the test -----------------------------------------------------------------------------

struct RelationCase
{
    const char* Name;
    Names PendingNames;
    Names PendingDependencies;
    std::string Setting;
    Names Dependencies;
    bool Related;
    /// What the batch holds afterwards.
    Names NamesAfter;
    Names DependenciesAfter;
};

const RelationCase RelationCases[] = {
    {"FirstOfAnEmptyBatch", {}, {}, "A", {}, false, {"A"}, {}},
    {"FirstWithDependencies", {}, {}, "A", {"X", "Y", "X"}, false, {"A"}, {"X", "Y", "X"}},
    {"FirstThatNamesItself", {}, {}, "A", {"A"}, false, {"A"}, {"A"}},
    {"SecondThatNamesItself", {"A"}, {"A"}, "A", {"A"}, true, {"A"}, {"A"}},
    {"UnrelatedJoins", {"A"}, {"X"}, "B", {"Y"}, false, {"A", "B"}, {"X", "Y"}},
    {"SameSettingTwice", {"A"}, {"X"}, "A", {"X"}, false, {"A", "A"}, {"X", "X"}},
    {"CommonDependencyIsNoRelation", {"A"}, {"X", "Y"}, "B", {"Y", "X"}, false, {"A", "B"}, {"X", "Y", "Y", "X"}},
    {"NamedByTheFirstOfTheBatch", {"A", "B"}, {"C", "X"}, "C", {}, true, {"C"}, {}},
    {"NamedByTheLastOfTheBatch", {"A", "B"}, {"X", "C"}, "C", {"Z", "Y"}, true, {"C"}, {"Z", "Y"}},
    {"NamesTheFirstOfTheBatch", {"A", "B"}, {"X"}, "C", {"A", "Z"}, true, {"C"}, {"A", "Z"}},
    {"NamesTheLastOfTheBatch", {"A", "B"}, {"X"}, "C", {"Z", "B"}, true, {"C"}, {"Z", "B"}},
    {"BothWays", {"A"}, {"C"}, "C", {"A"}, true, {"C"}, {"A"}},
    {"NamedInAnotherCase", {"A"}, {"boot"}, "Boot", {}, false, {"A", "Boot"}, {"boot"}},
    {"NamesInAnotherCase", {"Boot"}, {}, "C", {"BOOT"}, false, {"Boot", "C"}, {"BOOT"}},
    {"PartOfANameIsNoRelation",
     {"BootMode"},
     {"BootOrder"},
     "Boot",
     {"Mode"},
     false,
     {"BootMode", "Boot"},
     {"BootOrder", "Mode"}},
};

class BatchRelation : public ChangeTest, public testing::WithParamInterface<RelationCase>
{
};

INSTANTIATE_TEST_SUITE_P(Settings, BatchRelation, testing::ValuesIn(RelationCases),
                         [](const auto& test) { return test.param.Name; });

TEST_P(BatchRelation, IsFoundAndOpensTheNextBatch)
{
    const RelationCase& test = GetParam();
    StartBios();
    m_Front->m_PendingNames = test.PendingNames;
    m_Front->m_PendingDependencies = test.PendingDependencies;
    EXPECT_EQ(m_Front->CheckNeedDoFlushChangeNow(test.Setting, test.Dependencies), test.Related);
    EXPECT_EQ(m_Front->m_PendingNames, test.NamesAfter);
    EXPECT_EQ(m_Front->m_PendingDependencies, test.DependenciesAfter);
    EXPECT_THAT(world.Logs, IsEmpty());
    EXPECT_THAT(world.ManagerCalls, IsEmpty());
}

// --- the forced flush ---------------------------------------------------------------------

class BatchFlush : public ChangeTest
{
  protected:
    void Start()
    {
        StartUefi();
        MakeManager();
        TellPrefixesApart();
    }
    RedfishConfigResult Flush() { return m_Front->BatchFlushChange(); }
};

TEST_F(BatchFlush, SettingWithoutDependenciesStandsInTheBatchAsOftenAsItIsPatched)
{
    StartBios();
    EXPECT_FALSE(m_Front->CheckNeedDoFlushChangeNow("A", {}));
    EXPECT_FALSE(m_Front->CheckNeedDoFlushChangeNow("A", {}));
    EXPECT_THAT(m_Front->m_PendingNames, ElementsAre("A", "A"));
}

TEST_F(BatchFlush, SuccessIsHandedOnWithoutAReload)
{
    for (const int code : {0, 1})
    {
        doubles::ResetWorld();
        Start();
        m_Standard->Flushes.push_back(Answer({code, "done", "Wake"}));
        EXPECT_THAT(Flush(), code == 0 ? IsBare(0) : IsResult(1, "done", "Wake"));
        EXPECT_THAT(world.ManagerCalls, ElementsAre("flush protected {}", "flush standard {}"));
        EXPECT_THAT(world.Logs, ElementsAre(FlushEnter, FlushExit));
    }
}

TEST_F(BatchFlush, BusyBmcIsHandedOnWithoutAReload)
{
    Start();
    m_Protected->Flushes.push_back(Answer(Busy, {{10, "Lock waits", "Lock"}}));
    EXPECT_THAT(Flush(), IsResult(33, "BMC is not ready.", "Ethernet"));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("flush protected {}", "flush standard {}"));
    EXPECT_THAT(world.Logs, ElementsAre(FlushEnter, FlushExit, BusyLog));
    EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(IsResult(10, "Proc.Lock waits", "Proc.Lock")));
}

TEST_F(BatchFlush, FailureReloadsAllValuesAndDoesNotShowInTheResult)
{
    for (const int code : {2, 4, 13, 18, 24, 32})
    {
        doubles::ResetWorld();
        Start();
        m_Standard->Values = {{"BootMode", "Uefi"}};
        m_Standard->m_CurrentValues = {{"BootMode", "Legacy"}};
        m_Standard->Flushes.push_back(Answer({code, "failed", "Wake"}, {{10, "Wake is on", "Wake"}}));
        EXPECT_THAT(Flush(), IsBare(0)) << code;
        EXPECT_THAT(world.ManagerCalls, ElementsAre("flush protected {}", "flush standard {}", "read protected",
                                                    "read standard", "UpdateSettingValue"));
        EXPECT_THAT(world.Logs, ElementsAre(FlushEnter, FlushExit));
        ASSERT_THAT(world.UpdatedValues, SizeIs(1));
        EXPECT_THAT(world.UpdatedValues[0],
                    ElementsAre(Pair("BootMode", OptionalVar("Uefi")), Pair("Lock", OptionalVar("Off")),
                                Pair("Seal", OptionalVar("Off"))));
        EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(IsResult(10, "Proc.Wake is on", "Proc.Wake")));
    }
}

TEST_F(BatchFlush, FailedReloadReplacesTheResultOfTheFlush)
{
    Start();
    m_Protected->Flushes.push_back(Answer({18, "refused", "Lock"}));
    m_Protected->ReadResult = {24, "connection lost", "host"};
    EXPECT_THAT(Flush(), IsResult(24, "connection lost", "host"));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("flush protected {}", "flush standard {}", "read protected"));
    EXPECT_THAT(world.Logs, ElementsAre(FlushEnter, FlushExit, LogLine{1, "Query current value error: connection lost"},
                                        LogLine{1, "Failed in get current value map though: connection lost"},
                                        LogLine{1, "Failed in get current value map though: connection lost"},
                                        LogLine{1, "Failed to reload all values with error: connection lost"}));
    EXPECT_THAT(world.UpdatedValues, IsEmpty());
}

TEST_F(BatchFlush, ReloadWithoutValuesIsAFailure)
{
    Start();
    m_Standard->Flushes.push_back(Answer({18, "refused", ""}));
    m_Standard->Values.clear();
    m_Protected->Values.clear();
    EXPECT_THAT(Flush(), IsBare(26));
    EXPECT_THAT(world.LogsAt(1), ElementsAre("Failed to reload all values with error: "));
    EXPECT_THAT(world.UpdatedValues, IsEmpty());
}

TEST_F(BatchFlush, WithoutProcsNeitherFlushNorReloadWorks)
{
    StartBare();
    m_Front->m_ProcCreator->m_CreatorMap.clear();
    EXPECT_THAT(Flush(), IsBare(13));
    EXPECT_THAT(world.Logs,
                ElementsAre(FlushEnter, NoProc, NoProc, LogLine{1, "Failed to reload all values with error: "}));
}

TEST_F(BatchFlush, LeavesTheBatchAsItIs)
{
    Start();
    m_Front->m_PendingNames = {"Wake"};
    m_Front->m_PendingDependencies = {"BootMode"};
    m_Standard->Flushes.push_back(Answer({18, "refused", ""}));
    EXPECT_THAT(Flush(), IsBare(0));
    EXPECT_THAT(m_Front->m_PendingNames, ElementsAre("Wake"));
    EXPECT_THAT(m_Front->m_PendingDependencies, ElementsAre("BootMode"));
}

} // namespace
