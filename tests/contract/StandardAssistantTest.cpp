#include "BiosStandardSettingAssistant.h"

#include <type_traits>

#include "AssistantWorld.h"
#include "RedfishConfigAssistant.h"
#include "RedfishRegistryAssistant.h"

using namespace assistants;
using namespace Tavrine;
using doubles::BiosResource;
using doubles::LogLine;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace
{

const LogLine EnterComplement{3, "Enter ComplementQueryValuesURL()"};
const LogLine NoSystem{1, "Failed to complement the URL: Not found resource at specify system."};
const LogLine EnterResponse{4, "Enter RedfishRegistryAssistant::QueryValueURLResponse()"};
const LogLine ExitResponse{4, "Exit BiosStandardSettingAssistant::QueryValueURLResponse()"};
const LogLine EnterPatchURL{3, "Enter BiosBasicSettingAssistant::QueryPatchURL()"};
const LogLine ExitPatchURL{3, "Exit BiosBasicSettingAssistant::QueryPatchURL()"};
const LogLine NoResource{1, "Fail to get the resource."};
const LogLine NoId{1, "Failed to get the odata id"};
const LogLine FoundSystem{4, "Systems member url: /redfish/v1/Systems/blade-7"};

class StandardAssistant : public AssistantTest
{
  protected:
    BiosStandardSettingAssistant m_Assistant{m_Connection};
};

static_assert(!std::is_base_of_v<RedfishConfigAssistant, BiosStandardSettingAssistant>);
static_assert(!std::is_base_of_v<RedfishRegistryAssistant, BiosStandardSettingAssistant>);

TEST_F(StandardAssistant, IsAClientOfItsOwnAndStartsEmpty)
{
    EXPECT_THAT(world.Clients, ElementsAre(Pair("bmc1", 6)));
    EXPECT_THAT(m_Assistant.m_PatchURL, IsEmpty());
    EXPECT_THAT(m_Assistant.m_ValueURL, IsEmpty());
    EXPECT_THAT(m_Assistant.m_ValueResponse, IsEmpty());
    EXPECT_THAT(m_Assistant.m_UnusedFirst, IsEmpty());
    EXPECT_THAT(m_Assistant.m_UnusedSecond, IsEmpty());
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_F(StandardAssistant, ValueStoreStandsBeforeTheClient)
{
    const auto* start = static_cast<const void*>(&m_Assistant);
    EXPECT_EQ(static_cast<const void*>(static_cast<BiosBasicSettingAssistant*>(&m_Assistant)), start);
    EXPECT_NE(static_cast<const void*>(static_cast<BMCBaseAssistant*>(&m_Assistant)), start);
}

// ---- the URL of the Bios resource

struct SystemCase
{
    std::string Name, Collection;
    /// Without one the collection is of no use.
    std::optional<std::string> System;
};

class StandardSystems : public AssistantTest, public testing::WithParamInterface<SystemCase>
{
};

TEST_P(StandardSystems, FirstMemberWithAnIdGivesTheBiosResource)
{
    const auto& [name, collection, system] = GetParam();
    world.Tell("GET", SystemsURL, Remarked(collection));
    BiosStandardSettingAssistant assistant(m_Connection);
    EXPECT_THAT(assistant.ComplementQueryValuesURL(), IsBare(system ? 0 : 26));
    EXPECT_EQ(assistant.m_ValueURL, system ? *system + "/Bios" : "");
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsURL)));
    EXPECT_THAT(world.Logs,
                ElementsAre(EnterComplement, system ? LogLine{4, "Systems member url: " + *system} : NoSystem));
}

INSTANTIATE_TEST_SUITE_P(
    Collections, StandardSystems,
    testing::Values(
        SystemCase{"One", Collection({Member("/redfish/v1/Systems/blade-7")}), "/redfish/v1/Systems/blade-7"},
        SystemCase{"LaterMembersAreIgnored", Collection({Member("/a"), Member("/b")}), "/a"},
        SystemCase{"MemberWithoutIdIsSkipped", Collection({"{\"Name\":\"x\"}", Member("/b"), Member("/c")}), "/b"},
        SystemCase{"IdThatIsNoStringIsSkipped", Collection({"{\"@odata.id\":7}", Member("/b")}), "/b"},
        SystemCase{"MembersThatAreNoObjectsAreSkipped", Collection({"null", "\"/x\"", "[]", "3", Member("/b")}), "/b"},
        SystemCase{"EmptyIdEndsTheWalk", Collection({Member(""), Member("/b")}), ""},
        SystemCase{"TrailingSlashStays", Collection({Member("/redfish/v1/Systems/1/")}), "/redfish/v1/Systems/1/"},
        SystemCase{"NoMembers", Collection({}), {}},
        SystemCase{"NoMemberWithId", Collection({"{\"Name\":\"x\"}", "{\"@odata.id\":null}"}), {}},
        SystemCase{"MembersAreMissing", "{\"@odata.id\":\"/redfish/v1/Systems\"}", {}},
        SystemCase{"MembersAreNoArray", "{\"Members\":{\"@odata.id\":\"/a\"}}", {}},
        SystemCase{"AnswerIsAnArray", "[{\"Members\":[{\"@odata.id\":\"/a\"}]}]", {}},
        SystemCase{"AnswerIsNoJson", "{\"Members\":[{\"@odata.id\":\"/a\"}]", {}}, SystemCase{"AnswerIsEmpty", "", {}}),
    [](const auto& instance) { return instance.param.Name; });

TEST_F(StandardAssistant, SystemsCollectionThatCannotBeReadEndsTheDiscovery)
{
    world.Tell("GET", SystemsURL, {.Result = {33, "busy", "X"}, .Body = Collection({Member("/a")}), .Errors = {}});
    EXPECT_THAT(m_Assistant.ComplementQueryValuesURL(), IsResult(33, "busy", "X"));
    EXPECT_THAT(m_Assistant.m_ValueURL, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(EnterComplement, LogLine{3, "Query url /redfish/v1/Systemserror."}));
}

TEST_F(StandardAssistant, UselessCollectionKeepsAFormerValueURL)
{
    world.Tell("GET", SystemsURL, Collection({}));
    m_Assistant.m_ValueURL = BiosURL;
    EXPECT_THAT(m_Assistant.ComplementQueryValuesURL(), IsBare(0));
    EXPECT_EQ(m_Assistant.m_ValueURL, BiosURL);
    EXPECT_THAT(world.Logs, ElementsAre(EnterComplement));
}

// ---- the text of the Bios resource

TEST_F(StandardAssistant, ResponseIsFoundThroughTheSystemsAndKeptWhole)
{
    TellSystems();
    world.Tell("GET", BiosURL, Remarked(" {\"any\" : \"text\"} "));
    EXPECT_THAT(m_Assistant.QueryValueURLResponse(), IsResult(0, "remark", "Remarked"));
    EXPECT_EQ(m_Assistant.m_ValueResponse, " {\"any\" : \"text\"} ");
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsURL), Get(BiosURL)));
    EXPECT_THAT(world.Logs, ElementsAre(EnterResponse, EnterComplement, FoundSystem, ExitResponse));
}

TEST_F(StandardAssistant, KnownValueURLNeedsNoSystems)
{
    m_Assistant.m_ValueURL = "/elsewhere";
    world.Tell("GET", "/elsewhere", "text");
    EXPECT_THAT(m_Assistant.QueryValueURLResponse(), IsBare(0));
    EXPECT_EQ(m_Assistant.m_ValueResponse, "text");
    EXPECT_THAT(world.Calls, ElementsAre(Get("/elsewhere")));
    EXPECT_THAT(world.Logs, ElementsAre(EnterResponse, ExitResponse));
}

TEST_F(StandardAssistant, ResponseWithoutAURLFails)
{
    world.Tell("GET", SystemsURL, Collection({}));
    EXPECT_THAT(m_Assistant.QueryValueURLResponse(), IsBare(26));
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsURL)));
    EXPECT_THAT(world.Logs,
                ElementsAre(EnterResponse, EnterComplement, NoSystem, LogLine{4, "The resource URL is empty."}));
}

TEST_F(StandardAssistant, ResourceThatCannotBeReadIsHandedOn)
{
    TellSystems();
    world.Tell("GET", BiosURL, {.Result = {26, "refused", "X"}, .Body = "page", .Errors = {}});
    EXPECT_THAT(m_Assistant.QueryValueURLResponse(), IsResult(26, "refused", "X"));
    EXPECT_THAT(m_Assistant.m_ValueResponse, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(EnterResponse, EnterComplement, FoundSystem, NoResource));
}

TEST_F(StandardAssistant, EmptyAnswerIsAnErrorOfTheBmc)
{
    TellSystems();
    world.Tell("GET", BiosURL, Remarked(""));
    EXPECT_THAT(m_Assistant.QueryValueURLResponse(), IsBare(32));
    EXPECT_THAT(world.Logs, ElementsAre(EnterResponse, EnterComplement, FoundSystem,
                                        LogLine{1, "Fail to get the value response."}));
}

TEST_F(StandardAssistant, ResponseIsFetchedAnewWhenAskedForDirectly)
{
    m_Assistant.m_ValueURL = BiosURL;
    m_Assistant.m_ValueResponse = "old";
    world.Tell("GET", BiosURL, "new");
    EXPECT_THAT(m_Assistant.QueryValueURLResponse(), IsBare(0));
    EXPECT_EQ(m_Assistant.m_ValueResponse, "new");
}

// ---- the URL of the settings object

TEST_F(StandardAssistant, PatchURLComesFromTheResponse)
{
    TellSystems();
    world.Tell("GET", BiosURL, BiosResource("{}", SettingsURL, "tag-1"));
    EXPECT_THAT(m_Assistant.QueryPatchURL(), IsBare(0));
    EXPECT_EQ(m_Assistant.m_PatchURL, SettingsURL);
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsURL), Get(BiosURL)));
    EXPECT_THAT(world.Logs,
                ElementsAre(EnterPatchURL, EnterResponse, EnterComplement, FoundSystem, ExitResponse, ExitPatchURL));
}

TEST_F(StandardAssistant, PatchURLComesFromAStoredResponseWithoutARequest)
{
    m_Assistant.SetValueResponse(BiosResource("{}", "/stored", ""));
    EXPECT_THAT(m_Assistant.QueryPatchURL(), IsBare(0));
    EXPECT_EQ(m_Assistant.m_PatchURL, "/stored");
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(EnterPatchURL, ExitPatchURL));
}

TEST_F(StandardAssistant, KnownPatchURLStaysAndHasNoExitTrace)
{
    m_Assistant.m_PatchURL = "/known";
    m_Assistant.SetValueResponse(BiosResource("{}", "/stored", ""));
    EXPECT_THAT(m_Assistant.QueryPatchURL(), IsBare(0));
    EXPECT_EQ(m_Assistant.m_PatchURL, "/known");
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(EnterPatchURL));
}

TEST_F(StandardAssistant, PatchURLNeedsTheResponse)
{
    m_Assistant.m_ValueURL = BiosURL;
    world.Fail("GET", BiosURL, 24, "no connection");
    EXPECT_THAT(m_Assistant.QueryPatchURL(), IsResult(24, "no connection", ""));
    EXPECT_THAT(world.Logs, ElementsAre(EnterPatchURL, EnterResponse, NoResource,
                                        LogLine{1, "Failed to get the response info for current values."}));
}

class StandardWithoutPatchURL : public AssistantTest, public testing::WithParamInterface<std::string>
{
};

TEST_P(StandardWithoutPatchURL, IsAFailedQuery)
{
    BiosStandardSettingAssistant assistant(m_Connection);
    assistant.SetValueResponse(GetParam());
    EXPECT_THAT(assistant.QueryPatchURL(), IsBare(26));
    EXPECT_THAT(assistant.m_PatchURL, IsEmpty());
    EXPECT_EQ(assistant.m_ValueResponse, GetParam());
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(EnterPatchURL, NoId));
}

INSTANTIATE_TEST_SUITE_P(Responses, StandardWithoutPatchURL,
                         testing::Values("null", "[]", "{}", "no json", "{\"@Redfish.Settings\":{}}",
                                         "{\"@Redfish.Settings\":null}", "{\"@odata.id\":\"/x\"}",
                                         "{\"@Redfish\":{\"Settings\":{\"SettingsObject\":{\"@odata.id\":\"/x\"}}}}",
                                         "{\"@Redfish.Settings\":{\"@odata.id\":\"/x\"}}",
                                         "{\"@Redfish.Settings\":{\"SettingsObject\":{}}}",
                                         "{\"@Redfish.Settings\":{\"SettingsObject\":{\"@odata.id\":null}}}",
                                         "{\"@Redfish.Settings\":{\"SettingsObject\":{\"@odata.id\":5}}}",
                                         "{\"@Redfish.Settings\":{\"SettingsObject\":\"/x\"}}",
                                         "{\"@Redfish.Settings\":{\"SettingsObject\":{\"@odata.id\":\"/x\"}}"));

TEST_F(StandardAssistant, EmptyPatchURLIsAnErrorOfTheBmc)
{
    m_Assistant.SetValueResponse("{\"@Redfish.Settings\":{\"SettingsObject\":{\"@odata.id\":\"\"}}}");
    EXPECT_THAT(m_Assistant.QueryPatchURL(), IsResult(32, "BMC internal error.", ""));
    EXPECT_THAT(world.Logs, ElementsAre(EnterPatchURL, LogLine{1, "Failed to get the patch URL."}));
}

// ---- values

TEST_F(StandardAssistant, EffectiveValuesAreParsedFromTheResponse)
{
    TellStandard("{\"A\":1,\"B\":\"b\",\"C\":true,\"D\":null}", "{}");
    SettingValueMap values{{"Before", Text("caller")}};
    EXPECT_THAT(m_Assistant.QueryEffectiveValue(values), IsBare(0));
    EXPECT_EQ(values, (SettingValueMap{{"A", Number(1)}, {"B", Text("b")}, {"C", Switch(true)}, {"D", NoValue()}}));
    EXPECT_THAT(m_Assistant.m_EffectiveValues, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(EnterResponse, EnterComplement, FoundSystem, ExitResponse));
    EXPECT_THAT(m_Assistant.QueryEffectiveValue(values), IsBare(0));
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsURL), Get(BiosURL)));
    EXPECT_EQ(world.Logs.size(), 4U);
}

TEST_F(StandardAssistant, EffectiveValuesNeedTheResponse)
{
    m_Assistant.m_ValueURL = BiosURL;
    world.Fail("GET", BiosURL, 33, "busy");
    SettingValueMap values;
    EXPECT_THAT(m_Assistant.QueryEffectiveValue(values), IsResult(33, "busy", ""));
    EXPECT_THAT(world.Logs, ElementsAre(EnterResponse, NoResource,
                                        LogLine{1, "Failed to get the response info for effective values."}));
}

TEST_F(StandardAssistant, ResponseWithoutValuesGivesTheParsersResult)
{
    m_Assistant.SetValueResponse("{\"Id\":\"Bios\"}");
    SettingValueMap values{{"Before", Text("caller")}};
    EXPECT_THAT(m_Assistant.QueryEffectiveValue(values), IsResult(27, "no attributes", ""));
    EXPECT_EQ(values, (SettingValueMap{{"Before", Text("caller")}}));
    EXPECT_THAT(world.Logs, ElementsAre(LogLine{1, "Failed to get the current values."}));
}

TEST_F(StandardAssistant, PendingValuesAlwaysGoToTheMember)
{
    TellStandard("{}", "{\"A\":2}");
    SettingValueMap values{{"Before", Text("caller")}};
    EXPECT_THAT(m_Assistant.QueryPendingValue(values), IsBare(0));
    EXPECT_EQ(values, (SettingValueMap{{"Before", Text("caller")}}));
    EXPECT_EQ(m_Assistant.m_PendingValues, (SettingValueMap{{"A", Number(2)}}));
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsURL), Get(BiosURL), Get(SettingsURL)));
    EXPECT_THAT(world.Logs,
                ElementsAre(EnterPatchURL, EnterResponse, EnterComplement, FoundSystem, ExitResponse, ExitPatchURL));
}

TEST_F(StandardAssistant, PendingValuesAreReadAnewEachTimeAndNotKeptAsResponse)
{
    m_Assistant.m_PatchURL = SettingsURL;
    world.Tell("GET", SettingsURL, "{\"Attributes\":{\"A\":2}}");
    world.Tell("GET", SettingsURL, "{\"Attributes\":{\"A\":3}}");
    EXPECT_THAT(m_Assistant.QueryPendingValue(m_Assistant.m_PendingValues), IsBare(0));
    EXPECT_EQ(m_Assistant.m_PendingValues, (SettingValueMap{{"A", Number(2)}}));
    EXPECT_THAT(m_Assistant.QueryPendingValue(m_Assistant.m_PendingValues), IsBare(0));
    EXPECT_EQ(m_Assistant.m_PendingValues, (SettingValueMap{{"A", Number(3)}}));
    EXPECT_THAT(m_Assistant.m_ValueResponse, IsEmpty());
    EXPECT_THAT(world.Calls, ElementsAre(Get(SettingsURL), Get(SettingsURL)));
    EXPECT_THAT(world.Logs, IsEmpty());
}

TEST_F(StandardAssistant, PendingValuesNeedTheirURL)
{
    m_Assistant.SetValueResponse("{}");
    EXPECT_THAT(m_Assistant.QueryPendingValue(m_Assistant.m_PendingValues), IsBare(26));
    EXPECT_THAT(world.Calls, IsEmpty());
    EXPECT_THAT(world.Logs, ElementsAre(EnterPatchURL, NoId, LogLine{4, "Failed to get the pending URL."}));
}

TEST_F(StandardAssistant, FailedReadOfPendingValuesIsHandedOn)
{
    m_Assistant.m_PatchURL = SettingsURL;
    m_Assistant.m_PendingValues = {{"A", Number(1)}};
    world.Tell("GET", SettingsURL, {.Result = {33, "busy", "X"}, .Body = "{\"Attributes\":{}}", .Errors = {}});
    EXPECT_THAT(m_Assistant.QueryPendingValue(m_Assistant.m_PendingValues), IsResult(33, "busy", "X"));
    EXPECT_EQ(m_Assistant.m_PendingValues, (SettingValueMap{{"A", Number(1)}}));
    EXPECT_THAT(world.Logs, ElementsAre(LogLine{1, "Failed to get pending values map with ret=33"}));
}

TEST_F(StandardAssistant, SettingsObjectWithoutValuesGivesTheParsersResult)
{
    m_Assistant.m_PatchURL = SettingsURL;
    world.Tell("GET", SettingsURL, "{}");
    EXPECT_THAT(m_Assistant.QueryPendingValue(m_Assistant.m_PendingValues), IsResult(27, "no attributes", ""));
    EXPECT_THAT(world.Logs, ElementsAre(LogLine{1, "Failed to get pending values map with ret=27"}));
}

TEST_F(StandardAssistant, StoredResponseIsReplaced)
{
    m_Assistant.SetValueResponse("first");
    m_Assistant.SetValueResponse("second");
    EXPECT_EQ(m_Assistant.m_ValueResponse, "second");
    m_Assistant.SetValueResponse("");
    EXPECT_THAT(m_Assistant.m_ValueResponse, IsEmpty());
    EXPECT_THAT(world.Logs, IsEmpty());
}

// ---- the chain of requests

TEST_F(StandardAssistant, CurrentValuesOfANewObjectSendThreeGets)
{
    TellStandard("{\"A\":1,\"B\":1}", "{\"A\":2}");
    SettingValueMap values;
    EXPECT_THAT(m_Assistant.GetCurrentValuesMap(values), IsBare(0));
    EXPECT_EQ(values, (SettingValueMap{{"A", Number(2)}, {"B", Number(1)}}));
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsURL), Get(BiosURL), Get(SettingsURL)));
    EXPECT_THAT(world.Logs,
                ElementsAre(EnterResponse, EnterComplement, FoundSystem, ExitResponse, EnterPatchURL, ExitPatchURL));
}

TEST_F(StandardAssistant, ReloadReadsTheSettingsObjectAnewAndTheKeptResponse)
{
    TellSystems();
    world.Tell("GET", BiosURL, BiosResource("{\"A\":1,\"B\":1}", SettingsURL, ""));
    world.Tell("GET", BiosURL, BiosResource("{\"A\":7,\"B\":7}", SettingsURL, ""));
    world.Tell("GET", SettingsURL, "{\"Attributes\":{\"A\":2}}");
    world.Tell("GET", SettingsURL, "{\"Attributes\":{\"B\":3}}");
    SettingValueMap values;
    EXPECT_THAT(m_Assistant.GetCurrentValuesMap(values), IsBare(0));
    EXPECT_THAT(m_Assistant.ReloadAllSettingValues(values), IsBare(0));
    EXPECT_EQ(values, (SettingValueMap{{"A", Number(1)}, {"B", Number(3)}}));
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsURL), Get(BiosURL), Get(SettingsURL), Get(SettingsURL)));
}

TEST_F(StandardAssistant, MissingSettingsObjectStillGivesEffectiveValues)
{
    TellSystems();
    world.Tell("GET", BiosURL, BiosResource("{\"A\":1}", "", "tag-1"));
    SettingValueMap values;
    EXPECT_THAT(m_Assistant.GetCurrentValuesMap(values), IsBare(0));
    EXPECT_EQ(values, (SettingValueMap{{"A", Number(1)}}));
    EXPECT_THAT(world.LogsAt(1),
                ElementsAre("Failed to get the odata id", "Query pending value error, use effective value directly."));
}

} // namespace
