// The setting manager that a program takes from a front object.
#include "BiosSettingManager.h"
#include "ReadingFixture.h"

using namespace reading;
using namespace Tavrine;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace
{

class TakenManager : public FrontClassTest
{
  protected:
    std::unique_ptr<RedfishConfigSettingManager> m_Taken;
};

TEST_F(TakenManager, ReadsRegistryAndValuesAndSharesTheRegistry)
{
    TellStandard(R"({"Boot":"UEFI","Cores":4,"Gone":null})", R"({"Cores":8})");
    TellSchema();
    const auto front = MakeBios({.HexValueMode = true});
    EXPECT_THAT(TakeSettingManager(*front, m_Taken), IsBare(0));
    EXPECT_THAT(world.Calls,
                ElementsAre(Get(SystemsUrl), Get(BiosUrl), Get(SettingsUrl), Get(SystemsUrl), ReadSchema(BiosUrl)));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("TakeRegistryOf"));
    ASSERT_NE(m_Taken, nullptr);
    EXPECT_NE(m_Taken.get(), front->m_SettingManager.get());
    EXPECT_EQ(m_Taken->m_Schema, Schema);
    EXPECT_THAT(m_Taken->m_Values, ElementsAre(Pair("Boot", OptionalVar("UEFI")), Pair("Cores", OptionalVar(8))));
    EXPECT_TRUE(m_Taken->m_Options.HexValueMode);
    EXPECT_THAT(front->m_SettingManager->m_Values, IsEmpty());
}

TEST_F(TakenManager, HasProtectedValuesWhereTheFrontReachesThem)
{
    TellStandard(R"({"Boot":"UEFI"})");
    TellProtected(R"({"Secret":"s"})");
    TellSchema();
    const auto front = MakeUefi();
    ASSERT_THAT(TakeSettingManager(*front, m_Taken), IsBare(0));
    EXPECT_THAT(m_Taken->m_Values, ElementsAre(Pair("Boot", OptionalVar("UEFI")), Pair("Secret", OptionalVar("s"))));
    std::vector<std::string> requests = world.Requests();
    std::erase(requests, "GET " + std::string(SystemsUrl));
    EXPECT_THAT(requests, ElementsAre("GET " + std::string(BiosUrl), "GET " + std::string(SettingsUrl),
                                      "SCHEMA " + std::string(BiosUrl), "POST " + std::string(ProtectedUrl),
                                      "POST " + std::string(ProtectedUrl)));
}

TEST_F(TakenManager, ReadsTheRegistryAloneWhereNoValuesAreAskedFor)
{
    TellStandard(R"({"Boot":"UEFI"})");
    TellSchema();
    const auto front = MakeBios();
    ASSERT_THAT(TakeSettingManager(*front, m_Taken, ManagerValues::None), IsBare(0));
    EXPECT_EQ(m_Taken->m_Schema, Schema);
    EXPECT_THAT(m_Taken->m_Values, IsEmpty());
    EXPECT_THAT(world.Calls, testing::Not(testing::Contains(Get(SettingsUrl))));
}

TEST_F(TakenManager, LeavesProtectedValuesOutWhereTheyAreNotAskedFor)
{
    TellStandard(R"({"Boot":"UEFI"})");
    TellProtected(R"({"Secret":"s"})");
    TellSchema();
    const auto front = MakeUefi();
    ASSERT_THAT(TakeSettingManager(*front, m_Taken, ManagerValues::Ordinary), IsBare(0));
    EXPECT_THAT(m_Taken->m_Values, ElementsAre(Pair("Boot", OptionalVar("UEFI"))));
    EXPECT_THAT(world.Requests(), testing::Not(testing::Contains("POST " + std::string(ProtectedUrl))));
}

TEST_F(TakenManager, IsNotThereWithoutARegistry)
{
    TellStandard(R"({"Boot":"UEFI"})");
    world.Fail("SCHEMA", BiosUrl, 26, "no registry");
    const auto front = MakeBios();
    EXPECT_THAT(TakeSettingManager(*front, m_Taken), IsResult(26, "no registry", ""));
    EXPECT_EQ(m_Taken, nullptr);
    EXPECT_THAT(world.LogsAt(1), testing::Contains("Failed to get schema though: no registry"));
}

TEST_F(TakenManager, IsNotThereWithoutValues)
{
    TellSchema();
    TellSystem();
    world.Fail("GET", BiosUrl, 24, "no connection");
    const auto front = MakeBios();
    EXPECT_THAT(TakeSettingManager(*front, m_Taken), IsResult(24, "no connection", ""));
    EXPECT_EQ(m_Taken, nullptr);
    EXPECT_THAT(world.LogsAt(1), testing::Contains("Failed to get current value map though: no connection"));
    EXPECT_EQ(front->m_SettingManager, nullptr);
}

TEST_F(TakenManager, IsNotThereWithoutProtectedValues)
{
    TellSchema();
    TellStandard(R"({"Boot":"UEFI"})");
    world.Fail("POST", ProtectedUrl, 26, "no such action");
    const auto front = MakeUefi();
    EXPECT_THAT(TakeSettingManager(*front, m_Taken), IsResult(26, "no such action", ""));
    EXPECT_EQ(m_Taken, nullptr);
    EXPECT_THAT(world.LogsAt(1), testing::Contains("Failed to get current values map though: no such action"));
    EXPECT_NE(front->m_SettingManager, nullptr);
}

TEST_F(TakenManager, SparesAnotherFrontTheRegistry)
{
    TellStandard(R"({"Boot":"UEFI"})");
    TellSchema();
    const auto first = MakeBios();
    ASSERT_THAT(TakeSettingManager(*first, m_Taken), IsBare(0));
    world.Calls.clear();
    const auto second = MakeBios({.HexValueMode = true});
    GiveRegistry(*second, *m_Taken);
    EXPECT_THAT(second->QuerySettingManagerWithoutValue(), IsBare(0));
    EXPECT_THAT(world.Calls, IsEmpty());
    ASSERT_NE(second->m_SettingManager, nullptr);
    EXPECT_EQ(second->m_SettingManager->m_Schema, Schema);
    EXPECT_THAT(second->m_SettingManager->m_Values, IsEmpty());
    EXPECT_TRUE(second->m_SettingManager->m_Options.HexValueMode);
    EXPECT_EQ(second->m_Schema, "");
}

TEST_F(TakenManager, DefaultsAreAwaitedWhereTheResourceSaysSo)
{
    const std::string member = R"("ResetBiosToDefaultsPending")";
    const std::vector<std::pair<std::string, bool>> table = {
        {member + ":true", true},      {member + ":false", false},
        {member + ":\"true\"", false}, {"\"Oem\":{" + member + ":true}", false},
        {"\"Oem\":1", false},          {member + " : true", true},
    };
    for (const auto& [text, awaits] : table)
    {
        world.Answers.clear();
        TellStandard(R"({"Boot":"UEFI"})");
        const auto front = MakeBios();
        EXPECT_FALSE(AwaitsDefaults(*front)) << "nothing was read yet";
        world.Answers.erase({"GET", BiosUrl});
        world.Tell("GET", BiosUrl, "{" + text + R"(,"Attributes":{"Boot":"UEFI"}})");
        SettingStringMap values;
        ASSERT_THAT(front->QueryGroupSettingValues(values), IsBare(0));
        world.Calls.clear();
        EXPECT_EQ(AwaitsDefaults(*front), awaits) << text;
        EXPECT_THAT(world.Calls, IsEmpty());
    }
}

TEST_F(TakenManager, DefaultsAreAwaitedWhereTheSettingThatLoadsThemWaits)
{
    const std::string setting(PostLoadSetting);
    struct Row
    {
        std::string InForce;
        std::string Waiting;
        bool Awaits;
    };
    const std::vector<Row> table = {
        {"Disabled", "Enabled", true},  {"Disabled", "Disabled", false}, {"Disabled", "enabled", false},
        {"Enabled", "Disabled", false}, {"Enabled", "", true},           {"Disabled", "", false},
    };
    const auto object = [&](const std::string& value)
    { return value.empty() ? std::string("{}") : "{\"" + setting + "\":\"" + value + "\"}"; };
    for (const Row& row : table)
    {
        world.Answers.clear();
        TellStandard(object(row.InForce), object(row.Waiting));
        const auto front = MakeBios();
        SettingStringMap values;
        ASSERT_THAT(front->QueryGroupSettingValues(values), IsBare(0));
        EXPECT_EQ(AwaitsDefaults(*front), row.InForce == "Enabled") << "what waits was not read yet";
        SettingCompareMap compared;
        front->CompareSettingPendingValues(compared, "");
        EXPECT_EQ(AwaitsDefaults(*front), row.Awaits) << row.InForce << " " << row.Waiting;
    }
}

} // namespace
