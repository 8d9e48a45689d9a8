// Which settings belong to which menu group.
#include "ReadingFixture.h"

using namespace reading;
using namespace Tavrine;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace
{

const LogLine EnterList{4, "Entering  Tavrine::BiosRedfishConfigProc::QueryGroupList"};
const LogLine ExitList{4, "Exiting  Tavrine::BiosRedfishConfigProc::QueryGroupList"};
const LogLine EnterFromSchema{4, "Entering  Tavrine::BiosRedfishConfigProc::QueryGroupListFromSchema"};
const LogLine ExitFromSchema{4, "Exiting  Tavrine::BiosRedfishConfigProc::QueryGroupListFromSchema"};

class GroupList : public FrontClassTest
{
  protected:
    GroupList() { world.Groups = {{"Boot", {"BootMode", "BootOrder"}}, {"Memory", {"Q00066_L1_Stride_Prefetcher"}}}; }

    std::unique_ptr<Front> m_Front = MakeBios();
    SettingGroupMap m_Groups = {{"stale", {"entry"}}};
};

TEST_F(GroupList, FirstListReadsTheSchemaAndBuildsAModelWithoutValues)
{
    TellSystem();
    TellSchema();
    EXPECT_THAT(m_Front->QueryGroupList(m_Groups), IsBare(0));
    EXPECT_EQ(m_Groups, world.Groups);
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsUrl), ReadSchema(BiosUrl)));
    EXPECT_THAT(world.ManagerCalls, ElementsAre("GetGroupList"));
    EXPECT_THAT(world.Logs,
                ElementsAreArray(Join({{EnterList}, DiscoveryLogs, {EnterFromSchema, ExitFromSchema, ExitList}})));
    EXPECT_EQ(m_Front->m_Schema, Schema);
    EXPECT_THAT(m_Front->m_SettingManager->m_Values, IsEmpty());
}

TEST_F(GroupList, KnownSchemaNeedsNoAssistantAndNoRequest)
{
    m_Front->m_Schema = "kept";
    m_Front->m_SettingAssistant.reset();
    EXPECT_THAT(m_Front->QueryGroupList(m_Groups), IsBare(0));
    EXPECT_EQ(m_Groups, world.Groups);
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(EnterList, EnterFromSchema, ExitFromSchema, ExitList));
    EXPECT_EQ(m_Front->m_SettingManager->m_Schema, "kept");
}

TEST_F(GroupList, ManagerThatExistsIsAsked)
{
    m_Front->m_Schema = "kept";
    const auto manager = std::make_shared<RedfishConfigSettingManager>("its own", false, Config_Options{});
    m_Front->m_SettingManager = manager;
    EXPECT_THAT(m_Front->QueryGroupList(m_Groups), IsBare(0));
    EXPECT_EQ(m_Groups, world.Groups);
    EXPECT_EQ(m_Front->m_SettingManager, manager);
}

TEST_F(GroupList, HiddenSettingsStandInTheGroups)
{
    m_Front->m_Schema = "kept";
    m_Front->m_SystemKind = 4;
    world.Config["HIDDEN_CONFIG_KEYWORDS_LIST"] = "Boot,Memory";
    EXPECT_THAT(m_Front->QueryGroupList(m_Groups), IsBare(0));
    EXPECT_EQ(m_Groups, world.Groups);
    EXPECT_THAT(world.ConfigAsked, IsEmpty());
}

TEST_F(GroupList, NoGroupsIsNoFailure)
{
    m_Front->m_Schema = "kept";
    world.Groups.clear();
    EXPECT_THAT(m_Front->QueryGroupList(m_Groups), IsBare(0));
    EXPECT_THAT(m_Groups, IsEmpty());
}

TEST_F(GroupList, MissingAssistantEndsWithoutAnExitLine)
{
    m_Front->m_SettingAssistant.reset();
    EXPECT_THAT(m_Front->QueryGroupList(m_Groups), IsBare(13));
    EXPECT_THAT(m_Groups, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(EnterList, LogLine{1, "Construct assistant error."}));
}

TEST_F(GroupList, FailedSchemaEndsWithoutAnExitLine)
{
    TellSystem();
    world.Tell("SCHEMA", BiosUrl, {.Result = {27, "no registry", "s"}, .Body = "", .Errors = {}});
    EXPECT_THAT(m_Front->QueryGroupList(m_Groups), IsResult(27, "no registry", "s"));
    EXPECT_THAT(m_Groups, IsEmpty());
    EXPECT_EQ(m_Front->m_SettingManager, nullptr);
    EXPECT_THAT(world.Logs, ElementsAreArray(Join({{EnterList},
                                                   DiscoveryLogs,
                                                   {{1, "Query Schema error: no registry"},
                                                    {1, "Failed in get schema though: no registry"}}})));
}

// An empty text is fetched again by the model, and that read can fail.
TEST_F(GroupList, ModelThatCannotBeBuiltIsHandedOn)
{
    TellSystem();
    world.Tell("SCHEMA", BiosUrl, "");
    world.Tell("SCHEMA", BiosUrl, {.Result = {27, "no registry", "s"}, .Body = "", .Errors = {}});
    EXPECT_THAT(m_Front->QueryGroupList(m_Groups), IsResult(27, "no registry", "s"));
    EXPECT_THAT(m_Groups, IsEmpty());
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsUrl), ReadSchema(BiosUrl), ReadSchema(BiosUrl)));
    EXPECT_THAT(world.ManagerCalls, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAreArray(Join({{EnterList},
                                                   DiscoveryLogs,
                                                   {EnterFromSchema,
                                                    {1, "Query Schema error: no registry"},
                                                    {1, "Failed to get schema though: no registry"},
                                                    ExitFromSchema,
                                                    {1, "query menu list from sechma error. ret = 27"},
                                                    ExitList}})));
}

TEST_F(GroupList, ListFromSchemaEmptiesTheMapFirst)
{
    m_Front->m_SettingAssistant.reset();
    EXPECT_THAT(m_Front->QueryGroupListFromSchema(m_Groups), IsBare(13));
    EXPECT_THAT(m_Groups, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(EnterFromSchema, LogLine{1, "Construct assistant error."}, ExitFromSchema));
}

TEST_F(GroupList, ListFromSchemaAsksTheManager)
{
    m_Front->m_Schema = "kept";
    EXPECT_THAT(m_Front->QueryGroupListFromSchema(m_Groups), IsBare(0));
    EXPECT_EQ(m_Groups, world.Groups);
    EXPECT_THAT(world.ManagerCalls, ElementsAre("GetGroupList"));
    EXPECT_THAT(world.Logs, ElementsAre(EnterFromSchema, ExitFromSchema));
}

} // namespace
