#include "Sessions.h"

#include "Fixture.h"

#include <set>

namespace
{

using namespace bmctest;

constexpr const char* Collection = "/redfish/v1/SessionService/Sessions";
constexpr const char* Json = "application/json";
constexpr const char* Login = R"({"UserName":"admin","Password":"password"})";

class SessionsTest : public SimulatorTest
{
  protected:
    void SetUp() override
    {
        SimulatorTest::SetUp();
        m_Stranger = ConnectWithoutCredentials(*m_Simulator);
    }
    std::unique_ptr<httplib::Client> m_Stranger;
};

TEST_F(SessionsTest, TokenOpensTheServiceUntilTheSessionIsDeleted)
{
    const auto opened = m_Stranger->Post(Collection, Login, Json);
    ASSERT_TRUE(opened);
    ASSERT_EQ(opened->status, 201);
    const std::string location = opened->get_header_value("Location");
    const httplib::Headers token{{"X-Auth-Token", opened->get_header_value("X-Auth-Token")}};
    EXPECT_EQ(At(Parse(opened->body), "/@odata.id"), json::string(location));
    EXPECT_EQ(At(Parse(opened->body), "/UserName"), "admin");
    EXPECT_TRUE(At(Parse(opened->body), "/Password").is_null());
    EXPECT_EQ(opened->body.find("\"password\""), std::string::npos);

    EXPECT_EQ(m_Stranger->Get("/redfish/v1/Systems", token)->status, 200);
    const auto session = m_Stranger->Get(location, token);
    EXPECT_EQ(session->status, 200);
    EXPECT_EQ(Parse(session->body), Parse(opened->body));
    const auto listed = m_Stranger->Get(Collection, token);
    EXPECT_EQ(At(Parse(listed->body), "/Members/0/@odata.id"), json::string(location));

    const auto closed = m_Stranger->Delete(location, token);
    EXPECT_EQ(closed->status, 204);
    EXPECT_EQ(closed->body, "");
    EXPECT_EQ(m_Stranger->Get("/redfish/v1/Systems", token)->status, 401);
    EXPECT_EQ(m_Client->Get(location)->status, 404);
    EXPECT_EQ(m_Client->Delete(location)->status, 404);
    EXPECT_EQ(At(GetJson(Collection), "/Members@odata.count"), 0);
}

TEST_F(SessionsTest, CollectionIsFoundInEveryWayOfWriting)
{
    const auto opened = m_Stranger->Post("/redfish/v1/sessionservice//SESSIONS/", Login, Json);
    ASSERT_TRUE(opened);
    EXPECT_EQ(opened->status, 201);
    EXPECT_EQ(m_Client->Delete(opened->get_header_value("Location") + "/")->status, 204);
}

TEST_F(SessionsTest, WrongLoginsOpenNothing)
{
    struct Case
    {
        const char* Body;
        int Status;
        const char* Key;
    };
    for (const auto& [body, status, key] :
         {Case{R"({"UserName":"admin","Password":"wrong"})", 401, "ResourceAtUriUnauthorized"},
          {R"({"UserName":"root","Password":"password"})", 401, "ResourceAtUriUnauthorized"},
          {R"({"UserName":"admin","Password":""})", 401, "ResourceAtUriUnauthorized"},
          {R"({"UserName":"admin"})", 400, "PropertyMissing"},
          {R"({"Password":"password"})", 400, "PropertyMissing"},
          {R"({})", 400, "PropertyMissing"},
          {R"({"UserName":"admin","Password":1})", 400, "PropertyValueTypeError"},
          {R"({"UserName":["admin"],"Password":"password"})", 400, "PropertyValueTypeError"},
          {R"(["admin","password"])", 400, "UnrecognizedRequestBody"},
          {R"({"UserName":"admin",)", 400, "MalformedJSON"},
          {"", 400, "MalformedJSON"}})
    {
        const auto answer = m_Stranger->Post(Collection, body, Json);
        ASSERT_TRUE(answer) << body;
        EXPECT_EQ(answer->status, status) << body;
        EXPECT_EQ(MessageKey(answer), key) << body;
        EXPECT_FALSE(answer->has_header("X-Auth-Token")) << body;
    }
    EXPECT_EQ(At(GetJson(Collection), "/Members@odata.count"), 0);
}

TEST_F(SessionsTest, UnknownTokenIsRefusedEvenBesideGoodCredentials)
{
    EXPECT_EQ(m_Client->Get("/redfish/v1/Systems", {{"X-Auth-Token", "00000000000000000000000000000000"}})->status,
              401);
}

TEST_F(SessionsTest, UnusedSessionExpires)
{
    auto options = PlainOptions();
    options.SessionTimeout = std::chrono::milliseconds(50);
    StartWith(options);
    const auto stranger = ConnectWithoutCredentials(*m_Simulator);
    const auto opened = stranger->Post(Collection, Login, Json);
    ASSERT_TRUE(opened);
    ASSERT_EQ(opened->status, 201);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    int status = 0;
    // Asked for by other credentials, which leaves the session unused.
    do
    {
        status = m_Client->Get(opened->get_header_value("Location"))->status;
    } while (status == 200 && std::chrono::steady_clock::now() < deadline);
    EXPECT_EQ(status, 404);
    EXPECT_EQ(
        stranger->Get("/redfish/v1/Systems", {{"X-Auth-Token", opened->get_header_value("X-Auth-Token")}})->status,
        401);
}

TEST_F(SessionsTest, TimeoutIsTold)
{
    EXPECT_EQ(At(GetJson("/redfish/v1/SessionService"), "/SessionTimeout"), 1800);
    auto options = PlainOptions();
    options.SessionTimeout = std::chrono::milliseconds(1500);
    StartWith(options);
    EXPECT_EQ(At(GetJson("/redfish/v1/SessionService"), "/SessionTimeout"), 2);
}

TEST(OpenSessions, OneTooManyEndsTheOldest)
{
    bmcsim::Sessions sessions(std::chrono::hours(1));
    std::vector<bmcsim::Sessions::Opened> opened;
    std::set<std::string> tokens;
    for (std::size_t i = 0; i < bmcsim::Sessions::MaxOpen; ++i)
    {
        opened.push_back(sessions.Open().value());
        tokens.insert(opened.back().Token);
    }
    EXPECT_EQ(tokens.size(), bmcsim::Sessions::MaxOpen);
    EXPECT_TRUE(sessions.IsOpen(opened.front().Id));

    const auto last = sessions.Open().value();
    EXPECT_EQ(sessions.Ids().size(), bmcsim::Sessions::MaxOpen);
    EXPECT_FALSE(sessions.IsOpen(opened.front().Id));
    EXPECT_FALSE(sessions.Use(opened.front().Token));
    EXPECT_TRUE(sessions.Use(opened[1].Token));
    EXPECT_TRUE(sessions.Use(last.Token));
}

TEST(OpenSessions, UseKeepsASessionAlive)
{
    constexpr auto timeout = std::chrono::milliseconds(200);
    bmcsim::Sessions sessions(timeout);
    const auto used = sessions.Open().value();
    const auto unused = sessions.Open().value();
    bool alive = true;
    while (alive && sessions.IsOpen(unused.Id))
    {
        alive = sessions.Use(used.Token);
    }
    EXPECT_TRUE(alive);
    EXPECT_FALSE(sessions.Use(unused.Token));
}

} // namespace
