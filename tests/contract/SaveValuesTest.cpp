// What a save keeps.
#include "ReadingFixture.h"

using namespace reading;
using namespace Tavrine;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace
{

const std::string KeywordsItem = "HIDDEN_CONFIG_KEYWORDS_LIST";

class SaveValues : public FrontClassTest
{
  protected:
    SaveValues()
    {
        world.Config[KeywordsItem] = "Unseen";
        m_Values = {{"before", "x"}};
    }

    std::shared_ptr<Front> MakeKnowing(const Config_Options& options = {})
    {
        std::shared_ptr<Front> front = m_Made.emplace_back(MakeBios(options));
        front->SetPrefix("One", "Two");
        front->m_Schema = Schema;
        m_Standard = EnterAssistant(*front, "StandardSettings", {0, "", ""}, {{"Boot", "Uefi"}});
        return front;
    }
    void TellSaved(RedfishConfigResult result, const SettingStringMap& map)
    {
        world.ManagerAnswers["FetchSaveSettingValues"] = {
            .Result = std::move(result), .Text = "", .Map = map, .Errors = {}};
    }

    std::shared_ptr<ScriptedAssistant> m_Standard;
    /// They live as long as the test: their end would write log records.
    std::vector<std::shared_ptr<Front>> m_Made;
    SettingStringMap m_Values;
};

TEST_F(SaveValues, StandUnderTheSecondPrefix)
{
    const auto front = MakeKnowing();
    TellSaved({0, "remark", "s"}, {{"Boot", "b"}, {"Cores", "4"}});
    m_Values["Two.Boot"] = "old";
    EXPECT_THAT(front->QuerySaveSettingValues(m_Values), IsResult(0, "remark", "s"));
    EXPECT_THAT(m_Values, ElementsAre(Pair("Two.Boot", "b"), Pair("Two.Cores", "4"), Pair("before", "x")));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("FetchSaveSettingValues 14"));
    EXPECT_THAT(world.ConfigAsked, ElementsAre(KeywordsItem));
    EXPECT_THAT(world.Logs, IsEmpty());
    EXPECT_THAT(world.Calls, IsEmpty());
}

TEST_F(SaveValues, KeepThePrefixAndTheMapWhateverTheOptions)
{
    TellSaved({0, "", ""}, {{"Cores", "26"}});
    world.NewNames["Cores"] = "New";
    for (const int format : {0, 1, 2})
    {
        const auto front = MakeKnowing({.HexValueMode = true, .LegacyNameMode = true, .OutputFormat = format});
        EXPECT_THAT(front->QuerySaveSettingValues(m_Values), IsBare(0));
        EXPECT_THAT(m_Values, ElementsAre(Pair("Two.Cores", "26"), Pair("before", "x")));
    }
    EXPECT_THAT(world.NamesAsked, IsEmpty());
}

TEST_F(SaveValues, LeaveOutHiddenSettingsByTheirBareNames)
{
    TellSaved({0, "", ""}, {{"Boot", "b"}, {"Cores", "4"}});
    world.Config[KeywordsItem] = "Two,before,oot";
    EXPECT_THAT(MakeKnowing()->QuerySaveSettingValues(m_Values), IsBare(0));
    EXPECT_THAT(m_Values, ElementsAre(Pair("Two.Cores", "4"), Pair("before", "x")));
}

TEST_F(SaveValues, MayBeNone)
{
    TellSaved({0, "", ""}, {});
    EXPECT_THAT(MakeKnowing()->QuerySaveSettingValues(m_Values), IsBare(0));
    EXPECT_THAT(m_Values, ElementsAre(Pair("before", "x")));
}

TEST_F(SaveValues, FailedFetchIsHandedOnThoughItIsPartial)
{
    world.Config.clear();
    for (const int code : {7, 1, 27})
    {
        world.Logs.clear();
        TellSaved({code, "no list", "s"}, {{"Boot", "b"}});
        EXPECT_THAT(MakeKnowing()->QuerySaveSettingValues(m_Values), IsResult(code, "no list", "s"));
        EXPECT_THAT(world.Logs, ElementsAre(LogLine{1, "Fetch save setting values error."}));
    }
    EXPECT_THAT(m_Values, ElementsAre(Pair("before", "x")));
    EXPECT_THAT(world.ConfigAsked, IsEmpty());
}

TEST_F(SaveValues, FailedManagerIsHandedOn)
{
    const auto front = MakeKnowing();
    m_Standard->m_Result = {24, "no connection", "s"};
    EXPECT_THAT(front->QuerySaveSettingValues(m_Values), IsResult(24, "no connection", "s"));
    EXPECT_THAT(m_Values, ElementsAre(Pair("before", "x")));
    EXPECT_THAT(world.ManagerCalls, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(LogLine{1, "Failed in get current value map though: no connection"},
                                        LogLine{1, "Failed in get current value map though: no connection"},
                                        LogLine{1, "Failed to get current value map though: no connection"},
                                        LogLine{1, "Failed to get setting manager with error: no connection"}));
}

TEST_F(SaveValues, ManagerIsMadeAnewFromTheStandardValues)
{
    const auto front = MakeKnowing();
    const auto secret = EnterAssistant(*front, "ProtectedSettings", {0, "", ""}, {{"Secret", "s"}});
    const auto before = std::make_shared<RedfishConfigSettingManager>("old", false, Config_Options{});
    front->m_SettingManager = before;
    TellSaved({0, "", ""}, {});
    EXPECT_THAT(front->QuerySaveSettingValues(m_Values), IsBare(0));
    EXPECT_NE(front->m_SettingManager, before);
    EXPECT_THAT(front->m_SettingManager->m_Values, ElementsAre(Pair("Boot", OptionalVar("Uefi"))));
    EXPECT_THAT(secret->m_Reads, IsEmpty());
}

} // namespace
