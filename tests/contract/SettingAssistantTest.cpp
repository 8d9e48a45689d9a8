// Discovery of the Bios resource and delivery of the registry's text.
#include <type_traits>

#include "ReadingFixture.h"

using namespace reading;
using namespace Tavrine;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace
{

const LogLine EnterDiscovery{3, "Enter ComplementQueryValuesURL()"};
const LogLine NoSystem{1, "Failed to complement the URL: Not found resource at specify system."};

class SettingAssistant : public ContractTest
{
  protected:
    BiosSettingAssistant m_Assistant{{.Host = "bmc1", .User = "", .Password = ""}, SystemTypeResetTypeSecond};
};

TEST_F(SettingAssistant, ConstructionSendsNothingAndKnowsNoUrl)
{
    static_assert(std::is_convertible_v<BiosSettingAssistant*, RedfishRegistryAssistant*>);
    EXPECT_EQ(m_Assistant.m_SystemsCollectionURL, "/redfish/v1/Systems");
    EXPECT_EQ(m_Assistant.m_SupportedSystemType, SystemTypeResetTypeSecond);
    EXPECT_EQ(m_Assistant.m_ValueURL, "");
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.Logs, IsEmpty());
    ASSERT_EQ(world.Clients.size(), 1U);
    EXPECT_EQ(world.Clients.front().first, "bmc1");
}

// --- discovery ----------------------------------------------------------------------------

TEST_F(SettingAssistant, DiscoveryAppendsBiosToTheMember)
{
    world.Tell("GET", SystemsUrl, SystemsBody);
    EXPECT_THAT(m_Assistant.ComplementQueryValuesURL(), IsBare(0));
    EXPECT_EQ(m_Assistant.m_ValueURL, "/redfish/v1/Systems/1/Bios");
    EXPECT_THAT(world.Calls, ElementsAre(Get("/redfish/v1/Systems")));
    EXPECT_THAT(world.Logs, ElementsAre(EnterDiscovery, LogLine{4, "Systems member url: /redfish/v1/Systems/1"}));
}

TEST_F(SettingAssistant, DiscoveryDropsTheTextsOfASuccessfulRead)
{
    world.Tell("GET", SystemsUrl, {.Result = {0, "ok", "setting"}, .Body = SystemsBody, .Errors = {}});
    EXPECT_THAT(m_Assistant.ComplementQueryValuesURL(), IsBare(0));
}

struct Collection
{
    const char* Name;
    const char* Body;
    /// The member's URL.
    const char* Member;
};

class FoundMember : public SettingAssistant, public testing::WithParamInterface<Collection>
{
};

TEST_P(FoundMember, GivesTheValueUrl)
{
    const std::string member = GetParam().Member;
    world.Tell("GET", SystemsUrl, GetParam().Body);
    EXPECT_THAT(m_Assistant.ComplementQueryValuesURL(), IsBare(0));
    EXPECT_EQ(m_Assistant.m_ValueURL, member + "/Bios");
    EXPECT_THAT(world.Logs, ElementsAre(EnterDiscovery, LogLine{4, "Systems member url: " + member}));
}

INSTANTIATE_TEST_SUITE_P(
    Discovery, FoundMember,
    testing::Values(Collection{"FirstOfTwo", R"({"Members":[{"@odata.id":"/a"},{"@odata.id":"/b"}]})", "/a"},
                    Collection{"FirstWithoutUrlIsSkipped", R"({"Members":[{"Name":"x"},{"@odata.id":"/b"}]})", "/b"},
                    Collection{"UrlThatIsNoStringIsSkipped",
                               R"({"Members":[{"@odata.id":7},{"@odata.id":null},{"@odata.id":"/c"}]})", "/c"},
                    Collection{"ElementThatIsNoObjectIsSkipped",
                               R"({"Members":["/x",5,null,["@odata.id"],{"@odata.id":"/d"}]})", "/d"},
                    Collection{"TrailingSlashIsKept", R"({"Members":[{"@odata.id":"/redfish/v1/Systems/1/"}]})",
                               "/redfish/v1/Systems/1/"},
                    Collection{"EmptyUrlEndsTheWalk", R"({"Members":[{"@odata.id":""},{"@odata.id":"/b"}]})", ""},
                    Collection{"EscapedCharacters", R"({"Members":[{"@odata.id":"\/redfish\/v1\/S~1"}]})",
                               "/redfish/v1/S~1"}),
    [](const auto& test) { return test.param.Name; });

struct Useless
{
    const char* Name;
    const char* Body;
};

class NoMember : public SettingAssistant, public testing::WithParamInterface<Useless>
{
};

TEST_P(NoMember, IsAFailedQuery)
{
    world.Tell("GET", SystemsUrl, GetParam().Body);
    EXPECT_THAT(m_Assistant.ComplementQueryValuesURL(), IsBare(26));
    EXPECT_EQ(m_Assistant.m_ValueURL, "");
    EXPECT_THAT(world.Logs, ElementsAre(EnterDiscovery, NoSystem));
}

TEST_P(NoMember, KeepsAUrlFoundEarlier)
{
    m_Assistant.m_ValueURL = "/earlier/Bios";
    world.Tell("GET", SystemsUrl, GetParam().Body);
    EXPECT_THAT(m_Assistant.ComplementQueryValuesURL(), IsBare(0));
    EXPECT_EQ(m_Assistant.m_ValueURL, "/earlier/Bios");
    EXPECT_THAT(world.Logs, ElementsAre(EnterDiscovery));
}

INSTANTIATE_TEST_SUITE_P(
    Discovery, NoMember,
    testing::Values(Useless{"EmptyBody", ""}, Useless{"NoJson", "<html>"}, Useless{"CutShort", R"({"Members":[{"@oda)"},
                    Useless{"TrailingGarbage", R"({"Members":[{"@odata.id":"/a"}]} x)"}, Useless{"RootIsAnArray", "[]"},
                    Useless{"MembersMissing", R"({"members":[{"@odata.id":"/a"}]})"},
                    Useless{"MembersDeeper", R"({"x":{"Members":[{"@odata.id":"/a"}]}})"},
                    Useless{"MembersIsAnObject", R"({"Members":{"@odata.id":"/a"}})"},
                    Useless{"MembersIsNull", R"({"Members":null})"}, Useless{"MembersEmpty", R"({"Members":[]})"},
                    Useless{"NoUsableMember", R"({"Members":[{"id":"/a"},{"@odata.id":1},"/b"]})"}),
    [](const auto& test) { return test.param.Name; });

TEST_F(SettingAssistant, FailedReadOfTheCollectionIsHandedOn)
{
    world.Tell("GET", SystemsUrl, {.Result = {33, "BMC is not ready.", "s"}, .Body = SystemsBody, .Errors = {}});
    EXPECT_THAT(m_Assistant.ComplementQueryValuesURL(), IsResult(33, "BMC is not ready.", "s"));
    EXPECT_EQ(m_Assistant.m_ValueURL, "");
    EXPECT_THAT(world.Logs, ElementsAre(EnterDiscovery, LogLine{3, "Query url /redfish/v1/Systemserror."}));
}

TEST_F(SettingAssistant, FailedReadTellsTheUrlThatWasAsked)
{
    m_Assistant.m_SystemsCollectionURL = "/other/Systems";
    world.Fail("GET", "/other/Systems", 1, "");
    EXPECT_THAT(m_Assistant.ComplementQueryValuesURL(), IsBare(1));
    EXPECT_THAT(world.Calls, ElementsAre(Get("/other/Systems")));
    EXPECT_THAT(world.Logs, ElementsAre(EnterDiscovery, LogLine{3, "Query url /other/Systemserror."}));
}

// --- the registry's text ------------------------------------------------------------------

TEST_F(SettingAssistant, SchemaIsReadThroughTheDiscoveredUrl)
{
    world.Tell("GET", SystemsUrl, SystemsBody);
    world.Tell("SCHEMA", BiosUrl, {.Result = {0, "ok", "s"}, .Body = Schema, .Errors = {}});
    std::string schema = "before";
    EXPECT_THAT(m_Assistant.GetSchema(schema), IsBare(0));
    EXPECT_EQ(schema, Schema);
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsUrl), ReadSchema(BiosUrl)));
    EXPECT_THAT(world.Logs, ElementsAreArray(DiscoveryLogs));
}

TEST_F(SettingAssistant, SchemaIsReadThroughTheVirtualOperations)
{
    m_Assistant.m_ValueURL = BiosUrl;
    world.Tell("SCHEMA", BiosUrl, Schema);
    RedfishRegistryAssistant& base = m_Assistant;
    std::string schema;
    EXPECT_THAT(base.GetSchema(schema), IsBare(0));
    EXPECT_EQ(schema, Schema);

    class OwnRegistry : public BiosSettingAssistant
    {
      public:
        using BiosSettingAssistant::BiosSettingAssistant;
        RedfishConfigResult QuerySchema() override
        {
            m_Schema = "own";
            return {0, "", ""};
        }
    };
    OwnRegistry own({.Host = "bmc1", .User = "", .Password = ""}, SystemTypeBios);
    own.m_ValueURL = BiosUrl;
    EXPECT_THAT(own.GetSchema(schema), IsBare(0));
    EXPECT_EQ(schema, "own");
}

TEST_F(SettingAssistant, KnownUrlIsNotAskedForAgainButTheRegistryIs)
{
    world.Tell("GET", SystemsUrl, SystemsBody);
    world.Tell("SCHEMA", BiosUrl, "first");
    world.Tell("SCHEMA", BiosUrl, "second");
    std::string schema;
    EXPECT_THAT(m_Assistant.GetSchema(schema), IsBare(0));
    EXPECT_EQ(schema, "first");
    world.Calls.clear();
    world.Logs.clear();
    EXPECT_THAT(m_Assistant.GetSchema(schema), IsBare(0));
    EXPECT_EQ(schema, "second");
    EXPECT_THAT(world.Calls, ElementsAre(ReadSchema(BiosUrl)));
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_F(SettingAssistant, FailedDiscoveryLeavesTheCallersString)
{
    world.Fail("GET", SystemsUrl, 24, "no connection");
    std::string schema = "before";
    EXPECT_THAT(m_Assistant.GetSchema(schema), IsResult(24, "no connection", ""));
    EXPECT_EQ(schema, "before");
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsUrl)));
    EXPECT_THAT(world.Logs, ElementsAre(EnterDiscovery, LogLine{3, "Query url /redfish/v1/Systemserror."},
                                        LogLine{3, "Query value url error."}));
}

TEST_F(SettingAssistant, DiscoveryThatFoundNoSystemIsTriedAgain)
{
    world.Tell("GET", SystemsUrl, R"({"Members":[]})");
    world.Tell("GET", SystemsUrl, SystemsBody);
    world.Tell("SCHEMA", BiosUrl, Schema);
    std::string schema = "before";
    EXPECT_THAT(m_Assistant.GetSchema(schema), IsBare(26));
    EXPECT_EQ(schema, "before");
    EXPECT_THAT(world.Logs, ElementsAre(EnterDiscovery, NoSystem, LogLine{3, "Query value url error."}));
    EXPECT_THAT(m_Assistant.GetSchema(schema), IsBare(0));
    EXPECT_EQ(schema, Schema);
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsUrl), Get(SystemsUrl), ReadSchema(BiosUrl)));
}

TEST_F(SettingAssistant, FailedRegistryReadEmptiesTheCallersString)
{
    m_Assistant.m_ValueURL = BiosUrl;
    world.Tell("SCHEMA", BiosUrl, {.Result = {32, "BMC Internal error.", "s"}, .Body = "", .Errors = {}});
    std::string schema = "before";
    EXPECT_THAT(m_Assistant.GetSchema(schema), IsResult(32, "BMC Internal error.", "s"));
    EXPECT_EQ(schema, "");
    EXPECT_THAT(world.Logs, ElementsAre(LogLine{1, "Query Schema error: BMC Internal error."}));
}

TEST_F(SettingAssistant, TheAssistantsOwnTextMayBeTheCallersString)
{
    m_Assistant.m_ValueURL = BiosUrl;
    world.Tell("SCHEMA", BiosUrl, Schema);
    world.Fail("SCHEMA", BiosUrl, 32, "");
    EXPECT_THAT(m_Assistant.GetSchema(m_Assistant.m_Schema), IsBare(0));
    EXPECT_EQ(m_Assistant.m_Schema, Schema);
    EXPECT_THAT(m_Assistant.GetSchema(m_Assistant.m_Schema), IsBare(32));
    EXPECT_EQ(m_Assistant.m_Schema, "");
}

TEST_F(SettingAssistant, InheritedOperationsStayThoseOfTheBase)
{
    RedfishRegistryAssistant& base = m_Assistant;
    SettingValueMap values;
    EXPECT_THAT(base.GetEffectiveValueMap(values), IsBare(11));
    EXPECT_THAT(base.UpdateSettingValueCache("a", "b"), IsBare(11));
    EXPECT_THAT(base.FlushChanges(""), IsBare(11));
    EXPECT_THAT(base.QueryEffectiveValue(), IsBare(11));
    EXPECT_THAT(base.QueryValueURLResponse(), IsBare(11));
    std::string url;
    EXPECT_THAT(base.ComplementQuerySchemaURL(url), IsBare(11));
}

} // namespace
