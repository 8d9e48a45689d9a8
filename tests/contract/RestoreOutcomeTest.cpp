#include <locale>

#include "StagingFixture.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using namespace Tavrine;

namespace
{

/// How a restore sorts its settings into done and failed; the errors come from a
/// validation that fails.
class RestoreOutcome : public staging::RestoreFixture
{
  protected:
    void Sort(std::vector<RedfishConfigResult> errors)
    {
        if (m_Front == nullptr)
        {
            StartBios();
        }
        TellContexts({}, {18, "none passed", ""}, std::move(errors));
        EXPECT_THAT(Call(), IsResult(18, "none passed", ""));
    }
};

TEST_F(RestoreOutcome, ErrorKeepsItsSettingOutWhateverTheCase)
{
    m_Values = {{"BootMode", "Legacy"}, {"Cores", "12"}};
    Sort({{10, "bOOTmODE takes no Legacy", "bOOTmODE"}});
    EXPECT_THAT(m_Done, ElementsAre(Pair("BIOS.Cores", "12")));
    EXPECT_THAT(m_Failed, ElementsAre(Pair("BIOS.bOOTmODE", "BIOS.bOOTmODE takes no Legacy")));
}

TEST_F(RestoreOutcome, NamesAreComparedWhole)
{
    m_Values = {{"Boot", "1"}, {"BootMode", "Legacy"}, {"BootModeX", "1"}};
    Sort({{10, "no", "BootMode"}});
    EXPECT_THAT(m_Done, ElementsAre(Pair("BIOS.Boot", "1"), Pair("BIOS.BootModeX", "1")));
}

TEST_F(RestoreOutcome, CaseIsThatOfTheGlobalLocale)
{
    /// Knows one capital: '#', whose small form is '+'.
    class OddCase : public std::ctype<char>
    {
        char do_tolower(char character) const override { return character == '#' ? '+' : character; }
        const char* do_tolower(char* first, const char* last) const override
        {
            for (; first != last; ++first)
            {
                *first = do_tolower(*first);
            }
            return last;
        }
    };
    const std::locale usual = std::locale::global(std::locale(std::locale::classic(), new OddCase));
    m_Values = {{"A#", "1"}, {"B", "2"}};
    Sort({{10, "no", "A+"}, {10, "no", "b"}});
    std::locale::global(usual);
    EXPECT_THAT(m_Done, ElementsAre(Pair("BIOS.B", "2")));
}

TEST_F(RestoreOutcome, EveryErrorOfTheListCounts)
{
    m_Values = {{"BootMode", "Legacy"}, {"Cores", "12"}, {"Wake", "false"}};
    Sort({{10, "Wake: bad", "Wake"}, {18, "BootMode: locked", "BootMode"}});
    EXPECT_THAT(m_Done, ElementsAre(Pair("BIOS.Cores", "12")));
    EXPECT_THAT(m_Failed,
                ElementsAre(Pair("BIOS.BootMode", "BIOS.BootMode: locked"), Pair("BIOS.Wake", "BIOS.Wake: bad")));
}

TEST_F(RestoreOutcome, EveryMentionOfTheNameGetsThePrefixInItsExactSpelling)
{
    m_Values = {{"Cores", "12"}};
    Sort({{10, "Cores: Cores=12, but cores and CoresMax", "Cores"}});
    EXPECT_THAT(m_Failed, ElementsAre(Pair("BIOS.Cores", "BIOS.Cores: BIOS.Cores=12, but cores and BIOS.CoresMax")));
}

TEST_F(RestoreOutcome, ErrorWithoutASettingStandsUnderThePrefixAndThePoint)
{
    m_Values = {{"", "1"}, {"Cores", "12"}};
    Sort({{27, "no registry", ""}});
    EXPECT_THAT(m_Done, ElementsAre(Pair("BIOS.Cores", "12")));
    EXPECT_EQ(m_Failed["BIOS."], "Unable to find the setting BIOS.");
    m_Failed.clear();
    m_Values = {{"Cores", "12"}};
    Sort({{27, "no registry", ""}});
    EXPECT_THAT(m_Failed, ElementsAre(Pair("BIOS.", "no registry")));
}

TEST_F(RestoreOutcome, FirstOfTwoErrorsOfASettingStands)
{
    m_Values = {{"Cores", "12"}};
    Sort({{10, "first", "Cores"}, {18, "second", "Cores"}, {18, "third", "CORES"}});
    EXPECT_THAT(m_Failed, ElementsAre(Pair("BIOS.CORES", "third"), Pair("BIOS.Cores", "first")));
    EXPECT_THAT(m_Done, IsEmpty());
}

TEST_F(RestoreOutcome, ErrorOfASettingThatNobodyWantedIsFailed)
{
    m_Values = {{"Cores", "12"}};
    Sort({{18, "Boss is locked", "Boss"}});
    EXPECT_THAT(m_Done, ElementsAre(Pair("BIOS.Cores", "12")));
    EXPECT_THAT(m_Failed, ElementsAre(Pair("BIOS.Boss", "BIOS.Boss is locked")));
}

TEST_F(RestoreOutcome, FailureWithoutErrorsCountsAllAsDone)
{
    m_Values = {{"BootMode", "Legacy"}, {"Cores", "12"}};
    Sort({});
    EXPECT_THAT(m_Done, ElementsAre(Pair("BIOS.BootMode", "Legacy"), Pair("BIOS.Cores", "12")));
    EXPECT_THAT(m_Failed, IsEmpty());
    EXPECT_THAT(m_Values, ElementsAre(Pair("BootMode", "Legacy"), Pair("Cores", "12")));
}

TEST_F(RestoreOutcome, EarlierEntriesStayExceptWhereTheFilterWrites)
{
    m_Values = {{"Absent", "1"}, {"BootMode", "Legacy"}, {"Cores", "10"}, {"Wake", "false"}};
    m_Done = {{"BIOS.BootMode", "early"}, {"BIOS.Cores", "early"}, {"Other", "early"}};
    m_Failed = {{"BIOS.Absent", "early"}, {"BIOS.Wake", "early"}, {"Other", "early"}};
    Sort({{10, "late", "Wake"}, {20, "late", "Absent"}});
    EXPECT_THAT(m_Done, ElementsAre(Pair("BIOS.BootMode", "early"), Pair("BIOS.Cores", "10"), Pair("Other", "early")));
    EXPECT_THAT(m_Failed, ElementsAre(Pair("BIOS.Absent", "Unable to find the setting BIOS.Absent"),
                                      Pair("BIOS.Wake", "early"), Pair("Other", "early")));
}

TEST_F(RestoreOutcome, UnknownNameReachesTheManagerAndStands)
{
    m_Values = {{"Absent", "1"}};
    Sort({});
    EXPECT_THAT(world.ManagerCalls,
                ElementsAre("read standard", "UpdateSettingValue", "PreparePatchContext {Absent=1} 15", "TakeErrors"));
    EXPECT_THAT(m_Values, ElementsAre(Pair("Absent", "1")));
    EXPECT_THAT(m_Failed, ElementsAre(Pair("BIOS.Absent", "Unable to find the setting BIOS.Absent")));
    // No error names it.
    EXPECT_THAT(m_Done, ElementsAre(Pair("BIOS.Absent", "1")));
}

TEST_F(RestoreOutcome, UnknownNameThatAnErrorNamesIsOnlyFailed)
{
    m_Values = {{"Absent", "1"}};
    Sort({{20, "Unable to find the setting Absent", "Absent"}});
    EXPECT_THAT(m_Failed, ElementsAre(Pair("BIOS.Absent", "Unable to find the setting BIOS.Absent")));
    EXPECT_THAT(m_Done, IsEmpty());
}

TEST_F(RestoreOutcome, FullNamesHaveTheFirstPrefix)
{
    StartBios();
    m_Front->SetPrefix("Node", "Group");
    m_Values = {{"Absent", "1"}, {"BootMode", "Legacy"}, {"Cores", "12"}, {"Wake", "true"}};
    Sort({{10, "Cores: bad", "Cores"}});
    EXPECT_THAT(m_Done,
                ElementsAre(Pair("Node.Absent", "1"), Pair("Node.BootMode", "Legacy"), Pair("Node.Wake", "true")));
    EXPECT_THAT(m_Failed, ElementsAre(Pair("Node.Absent", "Unable to find the setting Node.Absent"),
                                      Pair("Node.Cores", "Node.Cores: bad")));
}

TEST_F(RestoreOutcome, ErrorsThatTheAssistantStillHoldsCountAfterASuccess)
{
    StartBios();
    TellContexts({{"BootMode", R"("Legacy")"}, {"Cores", "12"}});
    m_Front->m_SettingAssistant->m_Errors = {{10, "Cores was bad", "Cores"}};
    m_Values = {{"BootMode", "Legacy"}, {"Cores", "12"}};
    EXPECT_THAT(Call(), IsBare(0));
    EXPECT_EQ(world.ManagerCalls.back(), R"(flush standard {BootMode="Legacy",Cores=12})");
    EXPECT_THAT(m_Done, ElementsAre(Pair("BIOS.BootMode", "Legacy")));
    EXPECT_THAT(m_Failed, ElementsAre(Pair("BIOS.Cores", "BIOS.Cores was bad")));
    EXPECT_THAT(m_Front->m_SettingAssistant->m_Errors, ElementsAre(IsResult(10, "Cores was bad", "Cores")));
}

} // namespace
