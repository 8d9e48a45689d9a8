#include "BmcConnection.h"

#include <gtest/gtest.h>

#include "BMCBaseAssistant.h"
#include "TestServer.h"

using namespace Tavrine;
using namespace resttest;
using TavrineConnection::BmcConnection;

namespace
{

TestServer::Handler Body(const std::string& body, int status = 200)
{
    return [=](const httplib::Request&, httplib::Response& response) { AnswerJson(response, body, status); };
}

const std::string Refusal = R"({"error":{"message":"Go away."}})";

} // namespace

TEST(ConnectionVerbs, RunOverTheConnectionOfTheLibrary)
{
    const TestServer server(
        [](const httplib::Request& request, httplib::Response& response)
        {
            response.set_header("X-Auth-Token", "token");
            response.set_header("Location", "/session");
            AnswerJson(response, request.method == "DELETE" ? "[3]" : "[1]", request.method == "POST" ? 201 : 200);
        });
    BmcConnection connection(server.Info(), {});
    EXPECT_THAT(connection.OpenSession(), HasCode(0));
    std::string response;
    EXPECT_THAT(connection.Get("/redfish/v1/Systems/1", response), HasCode(0));
    EXPECT_EQ(response, "[1]");
    EXPECT_THAT(connection.Delete("/thing", response), HasCode(0));
    EXPECT_EQ(response, "[3]");
    EXPECT_THAT(connection.Post("/reset", R"({"ResetType":"GracefulRestart"})", response, 30), HasCode(0));
    EXPECT_EQ(response, "[1]");
    EXPECT_THAT(BMCBaseAssistant(connection.Info(), SystemTypeBios).GetData("/x", response), HasCode(0));
    EXPECT_EQ(server.Calls(),
              (std::vector<std::string>{"POST /redfish/v1/SessionService/Sessions", "GET /redfish/v1/Systems/1",
                                        "DELETE /thing", "POST /reset", "GET /x"}));
    EXPECT_EQ(server.Requests().at(3).Body, R"({"ResetType":"GracefulRestart"})");
    EXPECT_EQ(server.Requests().at(3).Header("X-Auth-Token"), "token");
    EXPECT_EQ(server.Connections(), 1U);
}

TEST(ConnectionVerbs, TheLastFailureIsThatOfAnyObjectOverTheConnection)
{
    const TestServer server(
        [](const httplib::Request& request, httplib::Response& response)
        {
            response.set_header("X-Auth-Token", "token");
            AnswerJson(response, request.path == "/busy" ? "" : "{}", request.path == "/busy" ? 503 : 201);
        });
    BmcConnection connection(server.Info(), {});
    EXPECT_EQ(connection.LastFailure().Number, 0U);
    EXPECT_THAT(connection.OpenSession(), HasCode(0));
    std::string response;
    BMCBaseAssistant client(connection.Info(), SystemTypeBios);
    EXPECT_THAT(client.GetData("/good", response), HasCode(0));
    EXPECT_EQ(connection.LastFailure().Number, 0U);
    EXPECT_THAT(client.GetData("/busy", response), HasCode(33));
    std::vector<RedfishConfigResult> errors;
    EXPECT_THAT(client.PatchData("/x", "{}", errors, true, {}), HasCode(0));
    EXPECT_EQ(connection.LastFailure().Number, 1U);
    EXPECT_THAT(connection.LastFailure().Result, Fails(33, "503"));
    EXPECT_THAT(client.PatchData("/busy", "{}", errors, true, {}), HasCode(33));
    EXPECT_EQ(connection.LastFailure().Number, 2U);

    const TestServer closed(Body(Refusal, 401));
    BmcConnection refused(closed.Info(), {});
    EXPECT_THAT(refused.OpenSession(), HasCode(24));
    EXPECT_EQ(refused.LastFailure().Number, 0U) << "a login is no request of the caller's";
}

TEST(ConnectionVerbs, RefusalsHaveTheCodesOfTheLibrary)
{
    const TestServer server(Body(Refusal, 400));
    BmcConnection connection(server.Info(), {});
    std::string response = "old";
    EXPECT_THAT(connection.Get("/x", response), Fails(26, "Go away."));
    EXPECT_EQ(response, "old");
    EXPECT_THAT(connection.Delete("/x", response), Fails(28, "Go away."));
    EXPECT_EQ(response, "old");
    EXPECT_THAT(connection.Post("/x", "{}", response, 0), Fails(28, "Go away."));
    EXPECT_EQ(response, Refusal);
    EXPECT_THAT(connection.Get("http://127.0.0.1/x", response), Fails(26, "was not sent"));
    EXPECT_EQ(server.Calls().size(), 3U);
}

TEST(ConnectionVerbs, ResetNeededIsToldForThePost)
{
    const TestServer server(Body(R"({"@Message.ExtendedInfo":[{"MessageId":"Base.1.18.ResetRequired"}]})"));
    BmcConnection connection(server.Info(), {});
    std::string response;
    EXPECT_THAT(connection.Post("/x", "{}", response, 30), HasCode(1));
    EXPECT_THAT(connection.Delete("/x", response), HasCode(1));
    EXPECT_FALSE(response.empty());
    EXPECT_THAT(connection.Get("/x", response), HasCode(0));
}

TEST(RetryAfter, IsThatOfTheLastBusyAnswer)
{
    const std::string unavailable =
        R"({"error":{"@Message.ExtendedInfo":[{"MessageId":"Base.1.8.ServiceTemporarilyUnavailable","MessageArgs":["60"]}]}})";
    struct Row
    {
        int Status;
        httplib::Headers Headers;
        std::string Body;
        int Code;
        std::uint32_t Seconds;
    };
    const Row rows[] = {
        {200, {{"Retry-After", "9"}}, "{}", 0, 0}, // not busy
        {503, {{"Retry-After", "30"}}, "", 33, 30},
        {404, {{"Retry-After", "9"}}, "", 26, 30}, // not busy: the last one stands
        {503, {}, "", 33, 0},
        {500, {}, unavailable, 33, 60},
        {503, {{"Retry-After", "5"}}, unavailable, 33, 5},
        {503, {{"Retry-After", "soon"}}, "", 33, 0},
        {503, {{"Retry-After", "-1"}}, "", 33, 0},
        {503, {{"Retry-After", "4294967295"}}, "", 33, 4294967295U},
        {503, {{"Retry-After", "4294967296"}}, "", 33, 0},
        {503,
         {{"Date", "Wed, 21 Oct 2015 07:28:00 GMT"}, {"Retry-After", "Wed, 21 Oct 2015 07:29:30 GMT"}},
         "",
         33,
         90},
        {503, {{"Date", "Wed, 21 Oct 2015 07:28:00 GMT"}, {"Retry-After", "Wed, 21 Oct 2015 07:27:00 GMT"}}, "", 33, 0},
        {503, {{"Retry-After", "Wed, 21 Oct 2015 07:29:30 GMT"}}, "", 33, 0},
    };
    std::atomic<const Row*> asked = rows;
    const TestServer server(
        [&asked](const httplib::Request&, httplib::Response& response)
        {
            const Row& row = *asked;
            AnswerJson(response, row.Body, row.Status);
            for (const auto& [name, value] : row.Headers)
            {
                response.set_header(name, value);
            }
        });
    BmcConnection connection(server.Info(), {});
    EXPECT_EQ(connection.RetryAfter(), 0U);
    for (const Row& row : rows)
    {
        asked = &row;
        std::string response;
        EXPECT_THAT(connection.Get("/x", response), HasCode(row.Code));
        EXPECT_EQ(connection.RetryAfter(), row.Seconds) << &row - rows;
    }
}

TEST(RetryAfter, IsKeptForChangesAndLoginsToo)
{
    std::atomic<int> seconds{1};
    const TestServer server(
        [&](const httplib::Request&, httplib::Response& response)
        {
            response.status = 503;
            response.set_header("Retry-After", std::to_string(seconds++));
        });
    BmcConnection connection(server.Info(), {});
    EXPECT_THAT(connection.OpenSession(), Fails(33, "try again after 1 s"));
    EXPECT_EQ(connection.RetryAfter(), 1U);
    std::vector<RedfishConfigResult> errors;
    EXPECT_THAT(BMCBaseAssistant(connection.Info(), SystemTypeBios).PatchData("/x", "{}", errors, true, {}),
                Fails(33, "try again after 2 s"));
    EXPECT_EQ(connection.RetryAfter(), 2U);
}
