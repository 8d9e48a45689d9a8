#include <utility>
#include <vector>

#include "AssistantWorld.h"
#include "BiosSettingAssistant.h"

using assistants::BiosURL;
using assistants::Collection;
using assistants::Get;
using assistants::Remarked;
using assistants::SystemsURL;
using doubles::LogLine;
using doubles::RestCall;
using testing::ElementsAre;
using testing::IsEmpty;
using namespace Tavrine;

namespace
{

const std::string ResetURL = "/redfish/v1/Systems/blade-7/Bios/Actions/Bios.ResetBios";

const LogLine QueryEnter{3, "Enter QueryLoadToDefaultActionURL()"};
const LogLine DiscoveryEnter{3, "Enter ComplementQueryValuesURL()"};
const LogLine SystemFound{4, "Systems member url: /redfish/v1/Systems/blade-7"};
const LogLine NoSystem{1, "Failed to complement the URL: Not found resource at specify system."};
const LogLine NoValueURL{3, "Query value url error."};
const LogLine NoValueResponse{3, "Query value response error."};
const LogLine EmptyURL{1, "Get the load to default action URL from BMC is empty."};
const LogLine NoActionURL{1, "Failed to get the post default URL."};

LogLine ActionFound(const std::string& url) { return {3, "Parse reset bios action URL is: " + url}; }
LogLine PostFailed(const std::string& response) { return {4, "Failed to post reset bios duo to: " + response}; }

RestCall PostReset(const std::string& url, const std::string& body)
{
    return {.Verb = "POST", .Url = url, .Body = body, .Flag = false, .Timeout = 60, .Headers = {}};
}

std::string ResourceWithTarget(const std::string& target)
{
    return R"({"Actions":{"#Bios.ChangePassword":{"target":"/wrong"},"#Bios.ResetBios":{"target":)" + target + "}}}";
}

class ResetAction : public assistants::AssistantTest
{
  protected:
    static BiosSettingAssistant Made(const TavrineConnection::ConnectionInfo& connection, int systemType)
    {
        return {connection, static_cast<ConfigurateSupportedSystemType>(systemType)};
    }
    void TellTarget(const std::string& target)
    {
        TellSystems();
        world.Tell("GET", BiosURL, ResourceWithTarget('"' + target + '"'));
    }

    BiosSettingAssistant m_Assistant = Made(m_Connection, 0);
};

using ResetActionURL = ResetAction;

TEST_F(ResetActionURL, IsReadFromTheValueResource)
{
    TellTarget(ResetURL);
    std::string url = "old";
    EXPECT_THAT(m_Assistant.QueryLoadToDefaultActionURL(url), IsBare(0));
    EXPECT_EQ(url, ResetURL);
    EXPECT_EQ(m_Assistant.m_ValueURL, BiosURL);
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsURL), Get(BiosURL)));
    EXPECT_THAT(world.Logs, ElementsAre(QueryEnter, DiscoveryEnter, SystemFound, ActionFound(ResetURL)));
}

TEST_F(ResetActionURL, IsTakenVerbatim)
{
    const std::vector<std::string> targets = {"/a/", "/a//b/../c", "https://elsewhere/x?y=1#z", " ", "/with ~1 blank"};
    for (const std::string& target : targets)
    {
        SCOPED_TRACE(target);
        doubles::ResetWorld();
        m_Assistant.m_ValueURL = "/values";
        world.Tell("GET", "/values", ResourceWithTarget('"' + target + '"'));
        std::string url;
        EXPECT_THAT(m_Assistant.QueryLoadToDefaultActionURL(url), IsBare(0));
        EXPECT_EQ(url, target);
        EXPECT_THAT(world.Logs, ElementsAre(QueryEnter, ActionFound(target)));
    }
}

TEST_F(ResetActionURL, KnownValueResourceIsNotSearchedAgainButReadAgain)
{
    TellTarget("/first");
    world.Tell("GET", BiosURL, ResourceWithTarget(R"("/second")"));
    std::string url;
    EXPECT_THAT(m_Assistant.QueryLoadToDefaultActionURL(url), IsBare(0));
    EXPECT_EQ(url, "/first");
    EXPECT_THAT(m_Assistant.QueryLoadToDefaultActionURL(url), IsBare(0));
    EXPECT_EQ(url, "/second");
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsURL), Get(BiosURL), Get(BiosURL)));
}

TEST_F(ResetActionURL, AnswersABareZeroWhateverTheReadRemarked)
{
    m_Assistant.m_ValueURL = BiosURL;
    world.Tell("GET", BiosURL, Remarked(ResourceWithTarget(R"("/reset")")));
    std::string url;
    EXPECT_THAT(m_Assistant.QueryLoadToDefaultActionURL(url), IsBare(0));
    EXPECT_EQ(url, "/reset");
}

TEST_F(ResetActionURL, UndiscoverableValueResourceEndsIt)
{
    world.Fail("GET", SystemsURL, 24, "no route");
    std::string url = "kept";
    EXPECT_THAT(m_Assistant.QueryLoadToDefaultActionURL(url), IsResult(24, "no route", ""));
    EXPECT_EQ(url, "kept");
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsURL)));
    EXPECT_THAT(world.Logs,
                ElementsAre(QueryEnter, DiscoveryEnter, LogLine{3, "Query url /redfish/v1/Systemserror."}, NoValueURL));
}

TEST_F(ResetActionURL, SystemThatIsMissingEndsIt)
{
    world.Tell("GET", SystemsURL, Collection({}));
    std::string url = "kept";
    EXPECT_THAT(m_Assistant.QueryLoadToDefaultActionURL(url), IsBare(26));
    EXPECT_EQ(url, "kept");
    EXPECT_THAT(world.Logs, ElementsAre(QueryEnter, DiscoveryEnter, NoSystem, NoValueURL));
}

TEST_F(ResetActionURL, UnreadableValueResourceEndsItWithItsResult)
{
    for (const int code : {1, 24, 26, 33})
    {
        SCOPED_TRACE(code);
        doubles::ResetWorld();
        m_Assistant.m_ValueURL = BiosURL;
        world.Tell("GET", BiosURL,
                   doubles::Answer{
                       .Result = {code, "not now", "Bios"}, .Body = ResourceWithTarget(R"("/reset")"), .Errors = {}});
        std::string url = "kept";
        EXPECT_THAT(m_Assistant.QueryLoadToDefaultActionURL(url), IsResult(code, "not now", "Bios"));
        EXPECT_EQ(url, "kept");
        EXPECT_THAT(world.Logs, ElementsAre(QueryEnter, NoValueResponse));
    }
}

TEST_F(ResetActionURL, ResourceWithoutTheActionIsNoRightAnswer)
{
    const std::vector<std::string> bodies = {
        "",
        "no JSON",
        R"({"Actions":{"#Bios.ResetBios":{"target":"/reset"}})",
        R"({"Actions":{"#Bios.ResetBios":{"target":"/reset"}}} trailing)",
        "null",
        "[]",
        R"("/reset")",
        "{}",
        R"({"Actions":null})",
        R"({"Actions":"/reset"})",
        R"({"Actions":[{"#Bios.ResetBios":{"target":"/reset"}}]})",
        R"({"Actions":{}})",
        R"({"Actions":{"Bios.ResetBios":{"target":"/reset"}}})",
        R"({"Actions":{"#Bios.resetBios":{"target":"/reset"}}})",
        R"({"actions":{"#Bios.ResetBios":{"target":"/reset"}}})",
        R"({"Actions/#Bios.ResetBios/target":"/reset"})",
        R"({"#Bios.ResetBios":{"target":"/reset"}})",
        R"({"Actions":{"#Bios.ResetBios":"/reset"}})",
        R"({"Actions":{"#Bios.ResetBios":{}}})",
        R"({"Actions":{"#Bios.ResetBios":{"Target":"/reset"}}})",
        ResourceWithTarget("null"),
        ResourceWithTarget("7"),
        ResourceWithTarget("true"),
        ResourceWithTarget(R"(["/reset"])"),
        ResourceWithTarget(R"({"target":"/reset"})"),
    };
    for (const std::string& body : bodies)
    {
        SCOPED_TRACE(body);
        doubles::ResetWorld();
        m_Assistant.m_ValueURL = BiosURL;
        world.Tell("GET", BiosURL, body);
        std::string url;
        EXPECT_THAT(m_Assistant.QueryLoadToDefaultActionURL(url),
                    IsResult(27, "Failed to get load to default action URL", ""));
        EXPECT_EQ(url, "");
        EXPECT_THAT(world.Logs, ElementsAre(QueryEnter));
    }
}

TEST_F(ResetActionURL, EmptyTargetIsAFaultOfTheBmc)
{
    m_Assistant.m_ValueURL = BiosURL;
    world.Tell("GET", BiosURL, ResourceWithTarget(R"("")"));
    std::string url = "old";
    EXPECT_THAT(m_Assistant.QueryLoadToDefaultActionURL(url), IsBare(32));
    EXPECT_EQ(url, "");
    EXPECT_THAT(world.Logs, ElementsAre(QueryEnter, ActionFound(""), EmptyURL));
}

TEST_F(ResetAction, BodyDependsOnTheSystemType)
{
    const std::string withType = R"({"ResetType":"Reset"})";
    const std::vector<std::pair<int, std::string>> table = {
        {0, "{}"}, {1, withType}, {2, "{}"}, {3, "{}"}, {4, withType}, {5, "{}"}, {6, "{}"}, {7, "{}"}, {-1, "{}"}};
    for (const auto& [systemType, body] : table)
    {
        SCOPED_TRACE(systemType);
        doubles::ResetWorld();
        TellTarget(ResetURL);
        world.Tell("POST", ResetURL, "");
        BiosSettingAssistant assistant = Made(m_Connection, systemType);
        EXPECT_THAT(assistant.PostResetBiosAction(), IsBare(1));
        EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsURL), Get(BiosURL), PostReset(ResetURL, body)));
        EXPECT_THAT(world.Logs, ElementsAre(QueryEnter, DiscoveryEnter, SystemFound, ActionFound(ResetURL)));
    }
}

TEST_F(ResetAction, SuccessIsABareOneWhateverTheBmcRemarked)
{
    m_Assistant.m_ValueURL = BiosURL;
    world.Tell("GET", BiosURL, ResourceWithTarget(R"("/reset/")"));
    world.Tell("POST", "/reset/", Remarked("thanks"));
    EXPECT_THAT(m_Assistant.PostResetBiosAction(), IsBare(1));
    EXPECT_THAT(world.Calls, ElementsAre(Get(BiosURL), PostReset("/reset/", "{}")));
    EXPECT_THAT(world.Logs, ElementsAre(QueryEnter, ActionFound("/reset/")));
}

TEST_F(ResetAction, FailedPostIsReturnedAsItCameAndItsAnswerIsLogged)
{
    // A 1 of the post itself is no 0.
    for (const int code : {1, 18, 24, 28, 33})
    {
        SCOPED_TRACE(code);
        doubles::ResetWorld();
        m_Assistant.m_ValueURL = BiosURL;
        world.Tell("GET", BiosURL, ResourceWithTarget(R"("/reset")"));
        world.Tell("POST", "/reset",
                   doubles::Answer{.Result = {code, "refused", "Bios"}, .Body = R"({"error":"x"})", .Errors = {}});
        EXPECT_THAT(m_Assistant.PostResetBiosAction(), IsResult(code, "refused", "Bios"));
        EXPECT_THAT(world.Logs, ElementsAre(QueryEnter, ActionFound("/reset"), PostFailed(R"({"error":"x"})")));
    }
}

TEST_F(ResetAction, WithoutAValueResourceNothingIsPosted)
{
    world.Fail("GET", SystemsURL, 33, "starting up");
    EXPECT_THAT(m_Assistant.PostResetBiosAction(), IsResult(33, "starting up", ""));
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsURL)));
    EXPECT_THAT(world.Logs, ElementsAre(QueryEnter, DiscoveryEnter, LogLine{3, "Query url /redfish/v1/Systemserror."},
                                        NoValueURL, NoActionURL));
}

TEST_F(ResetAction, UnreadableValueResourcePostsNothing)
{
    TellSystems();
    world.Fail("GET", BiosURL, 26, "gone");
    EXPECT_THAT(m_Assistant.PostResetBiosAction(), IsResult(26, "gone", ""));
    EXPECT_THAT(world.Calls, ElementsAre(Get(SystemsURL), Get(BiosURL)));
    EXPECT_THAT(world.Logs, ElementsAre(QueryEnter, DiscoveryEnter, SystemFound, NoValueResponse, NoActionURL));
}

TEST_F(ResetAction, MissingActionPostsNothing)
{
    m_Assistant.m_ValueURL = BiosURL;
    world.Tell("GET", BiosURL, R"({"Actions":{}})");
    EXPECT_THAT(m_Assistant.PostResetBiosAction(), IsResult(27, "Failed to get load to default action URL", ""));
    EXPECT_THAT(world.Calls, ElementsAre(Get(BiosURL)));
    EXPECT_THAT(world.Logs, ElementsAre(QueryEnter, NoActionURL));
}

TEST_F(ResetAction, EmptyTargetPostsNothing)
{
    m_Assistant.m_ValueURL = BiosURL;
    world.Tell("GET", BiosURL, ResourceWithTarget(R"("")"));
    EXPECT_THAT(m_Assistant.PostResetBiosAction(), IsBare(32));
    EXPECT_THAT(world.Calls, ElementsAre(Get(BiosURL)));
    EXPECT_THAT(world.Logs, ElementsAre(QueryEnter, ActionFound(""), EmptyURL, NoActionURL));
}

} // namespace
