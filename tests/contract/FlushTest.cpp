// Sending what waits in every resource, and the errors that this gathers.
#include "ChangeFixture.h"

using namespace changing;
using namespace Tavrine;
using staging::FlushEnter;
using staging::FlushExit;
using staging::NoProc;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace
{

const LogLine StandardEnter{4, "Entering  Tavrine::BiosStandardSettingAssistant::FlushChanges"};
const LogLine ProtectedEnter{4, "Entering  Tavrine::BiosProtectedSettingAssistant::FlushChanges"};
const LogLine NothingToDo{4, "Nothing need to do for flush changes."};

class FrontFlush : public ChangeTest
{
  protected:
    RedfishConfigResult Flush() { return m_Front->FlushChanges(); }
};

TEST_F(FrontFlush, EveryResourceIsFlushedProtectedFirst)
{
    StartUefi();
    m_Standard->m_ChangedValues = {{"BootMode", "1"}};
    m_Protected->m_ChangedValues = {{"Lock", "2"}};
    EXPECT_THAT(Flush(), IsBare(0));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("flush protected {Lock=2}", "flush standard {BootMode=1}"));
    EXPECT_THAT(world.Logs, ElementsAre(FlushEnter, FlushExit));
}

TEST_F(FrontFlush, FreshUefiSystemAsksBothResourcesAndSendsNothing)
{
    m_Front = MakeUefi();
    EXPECT_THAT(Flush(), IsBare(0));
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.Logs,
                ElementsAre(FlushEnter, ProtectedEnter, NothingToDo, StandardEnter, NothingToDo, FlushExit));
}

TEST_F(FrontFlush, FreshBiosSystemAsksTheStandardResourceAlone)
{
    StartBare();
    EXPECT_THAT(Flush(), IsBare(0));
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(FlushEnter, StandardEnter, NothingToDo, FlushExit));
}

TEST_F(FrontFlush, WithoutProcsItIsAnInternalErrorAndTheListIsEmpty)
{
    StartBare();
    m_Front->m_ProcCreator->m_CreatorMap.clear();
    m_Front->m_ErrorList = {{18, "earlier", "BIOS.Pin"}};
    EXPECT_THAT(Flush(), IsBare(13));
    EXPECT_THAT(world.Logs, ElementsAre(FlushEnter, NoProc));
    EXPECT_THAT(m_Front->m_ErrorList, IsEmpty());
}

TEST_F(FrontFlush, EmptiesTheListOfErrorsFirst)
{
    StartBios();
    m_Front->m_ErrorList = {{18, "earlier", "BIOS.Pin"}};
    EXPECT_THAT(Flush(), IsBare(0));
    EXPECT_THAT(m_Front->m_ErrorList, IsEmpty());
}

TEST_F(FrontFlush, LeavesTheBatchOfRelatedSettings)
{
    StartBios();
    m_Front->m_PendingNames = {"Wake"};
    m_Front->m_PendingDependencies = {"BootMode"};
    EXPECT_THAT(Flush(), IsBare(0));
    EXPECT_THAT(m_Front->m_PendingNames, ElementsAre("Wake"));
    EXPECT_THAT(m_Front->m_PendingDependencies, ElementsAre("BootMode"));
}

TEST_F(FrontFlush, TakesNoErrorsFromManagerAndAssistant)
{
    StartBios();
    MakeManager();
    m_Front->m_SettingManager->m_ErrorList = {{10, "left", "Wake"}};
    TellAssistantErrors({{18, "of the assistant", "Wake"}});
    m_Standard->Flushes.push_back(Answer({18, "refused", ""}));
    EXPECT_THAT(Flush(), IsResult(18, "refused", ""));
    EXPECT_THAT(m_Front->m_ErrorList, IsEmpty());
    EXPECT_THAT(m_Front->m_SettingManager->GetError(), ElementsAre(IsResult(10, "left", "Wake")));
}

// --- the answer ---------------------------------------------------------------------------

struct TwoFlushes
{
    const char* Name;
    int Protected;
    int Standard;
    const char* Final;
};

class FrontFlushAnswer : public ChangeTest, public testing::WithParamInterface<TwoFlushes>
{
};

INSTANTIATE_TEST_SUITE_P(Codes, FrontFlushAnswer,
                         testing::Values(TwoFlushes{"BothSucceed", 0, 0, ""},
                                         TwoFlushes{"FirstFails", 18, 0, "of protected"},
                                         TwoFlushes{"SecondFails", 0, 18, "of standard"},
                                         TwoFlushes{"BothFail", 33, 18, "of standard"},
                                         TwoFlushes{"ResetHidesTheFailure", 18, 1, "of standard"},
                                         TwoFlushes{"FailureHidesTheReset", 1, 24, "of standard"},
                                         TwoFlushes{"ResetOfTheFirst", 1, 0, "of protected"},
                                         TwoFlushes{"BusyDoesNotStopTheSecond", 33, 0, "of protected"}),
                         [](const auto& test) { return test.param.Name; });

TEST_P(FrontFlushAnswer, IsThatOfTheLastResourceThatDidNotAnswerZero)
{
    StartUefi();
    const TwoFlushes& test = GetParam();
    m_Protected->Flushes.push_back(Answer({test.Protected, "of protected", "Lock"}, {{10, "p", "Lock"}}));
    m_Standard->Flushes.push_back(Answer({test.Standard, "of standard", "Lock"}, {{9, "s", "Pin"}}));
    const int code = test.Standard != 0 ? test.Standard : test.Protected;
    EXPECT_THAT(m_Front->FlushChanges(), IsResult(code, test.Final, code == 0 ? "" : "Lock"));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("flush protected {}", "flush standard {}"));
    EXPECT_THAT(world.Logs, ElementsAre(FlushEnter, FlushExit));
}

// Errors come from each resource that did not answer 0, and from no other.
TEST_P(FrontFlushAnswer, GathersTheErrorsOfWhatDidNotAnswerZero)
{
    StartUefi();
    TellPrefixesApart();
    const TwoFlushes& test = GetParam();
    m_Protected->Flushes.push_back(Answer({test.Protected, "", ""}, {{10, "Lock is shut", "Lock"}}));
    m_Standard->Flushes.push_back(Answer({test.Standard, "", ""}, {{9, "no Pin", "Pin"}, {32, "broken", ""}}));
    m_Front->FlushChanges();
    std::vector<std::string> expected;
    if (test.Protected != 0)
    {
        expected.emplace_back("10 Proc.Lock is shut @Proc.Lock");
    }
    if (test.Standard != 0)
    {
        expected.emplace_back("9 no Proc.Pin @Proc.Pin");
        expected.emplace_back("32 broken @Proc.");
    }
    std::vector<std::string> gathered;
    for (RedfishConfigResult error : m_Front->m_ErrorList)
    {
        gathered.push_back(std::to_string(error.ErrorCode()) + " " + error.ErrorMsg() + " @" + error.ErrorSetting());
    }
    EXPECT_EQ(gathered, expected);
    EXPECT_EQ(ProcOf("ProtectedSettings").m_ErrorList.size(), test.Protected != 0 ? 1U : 0U);
    EXPECT_EQ(ProcOf("StandardSettings").m_ErrorList.size(), test.Standard != 0 ? 2U : 0U);
}

TEST_F(FrontFlush, ResourceWithoutAnAssistantDoesNotStopTheOthers)
{
    StartUefi();
    ProcOf("ProtectedSettings").m_Assistant = nullptr;
    ProcOf("ProtectedSettings").m_ErrorList = {{18, "of old", "UEFI.Lock"}};
    m_Standard->m_ChangedValues = {{"BootMode", "1"}};
    EXPECT_THAT(Flush(), IsBare(13));
    EXPECT_THAT(world.Logs, ElementsAre(FlushEnter, LogLine{1, "Construct assistant error."}, FlushExit));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("flush standard {BootMode=1}"));
    EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(IsResult(18, "of old", "UEFI.Lock")));
}

TEST_F(FrontFlush, FlushOfOneProcAnswersAsItsAssistant)
{
    StartBios();
    m_Standard->Flushes.push_back(Answer({1, "reset", "Wake"}, {{9, "no Pin", "Pin"}}));
    EXPECT_THAT(ProcOf("StandardSettings").FlushChanges(), IsResult(1, "reset", "Wake"));
    EXPECT_THAT(ProcOf("StandardSettings").m_ErrorList, IsEmpty());
    EXPECT_THAT(world.Logs, IsEmpty());
}

// --- errors that come again ---------------------------------------------------------------

TEST_F(FrontFlush, FailuresOfEarlierFlushesComeAgainEachTime)
{
    StartBios();
    TellPrefixesApart();
    m_Standard->Flushes = {Answer({18, "", ""}, {{10, "Pin is bad", "Pin"}}),
                           Answer({18, "", ""}, {{9, "no Wake", "Wake"}}), Answer({24, "gone", ""})};
    const auto pin = IsResult(10, "Proc.Pin is bad", "Proc.Pin");
    const auto wake = IsResult(9, "no Proc.Wake", "Proc.Wake");
    ASSERT_THAT(Flush(), IsBare(18));
    EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(pin));
    ASSERT_THAT(Flush(), IsBare(18));
    EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(pin, pin, wake));
    ASSERT_THAT(Flush(), IsResult(24, "gone", ""));
    EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(pin, pin, wake, pin, wake));
    EXPECT_THAT(m_Standard->m_Errors, ElementsAre(IsResult(10, "Pin is bad", "Pin"), IsResult(9, "no Wake", "Wake")));
}

TEST_F(FrontFlush, SuccessInBetweenShowsNoErrorsAndForgetsNone)
{
    StartBios();
    m_Standard->Flushes = {Answer({18, "", ""}, {{10, "bad", "Pin"}}), Answer({0, "", ""}), Answer({1, "", ""})};
    const auto pin = IsResult(10, "bad", "BIOS.Pin");
    ASSERT_THAT(Flush(), IsBare(18));
    ASSERT_THAT(Flush(), IsBare(0));
    EXPECT_THAT(m_Front->m_ErrorList, IsEmpty());
    ASSERT_THAT(Flush(), IsBare(1));
    EXPECT_THAT(m_Front->m_ErrorList, ElementsAre(pin, pin));
}

} // namespace
