// Connections and sessions that end while a task is watched.
#include <atomic>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "BMCBaseAssistant.h"
#include "BmcConnection.h"
#include "RawServer.h"
#include "TestServer.h"

using namespace Tavrine;
using namespace resttest;

namespace
{

constexpr ConfigurateSupportedSystemType Kind = SystemTypeValueResource;
constexpr const char* Monitor = "/redfish/v1/TaskService/TaskMonitors/7";

/// A PATCH in a session that the BMC has forgotten by the first look at the task.
/// @param status  of the answer to the new login.
/// @param takesPassword  a look with the password is answered with the end of the task.
RedfishConfigResult PatchBesideALogin(int status, bool takesPassword)
{
    std::atomic<int> logins{0};
    const TestServer server(
        [&](const httplib::Request& request, httplib::Response& response)
        {
            response.set_header("X-Auth-Token", "token");
            response.set_header("Location", Monitor);
            const bool known = takesPassword && request.has_header("Authorization");
            response.status = request.method == "PATCH" ? 202
                              : request.method == "GET" ? (known ? 204 : 401)
                              : ++logins == 1           ? 201
                                                        : status;
        });
    TavrineConnection::BmcConnection connection(server.Info(), {});
    EXPECT_THAT(connection.OpenSession(), HasCode(0));
    std::vector<RedfishConfigResult> errors;
    RedfishConfigResult result =
        BMCBaseAssistant(connection.Info(), Kind).PatchData("/settings", "{}", errors, true, {});
    EXPECT_EQ(logins, 2) << status;
    return result;
}

} // namespace

TEST(Task, LostConnectionsAreMadeAnewThriceAtTheMost)
{
    // Each connection takes one request; the looks up to `lost` get no answer.
    for (const unsigned int lost : {2U, 3U})
    {
        std::atomic<unsigned int> requests{0};
        const RawServer server(
            [&](int socket, unsigned int)
            {
                const std::string request = ReadRequest(socket);
                if (request.empty())
                {
                    return;
                }
                if (++requests == 1)
                {
                    SendAll(socket, "HTTP/1.1 202 Accepted\r\nLocation: /t\r\nContent-Length: 0\r\n"
                                    "Connection: close\r\n\r\n");
                }
                else if (requests > 1 + lost)
                {
                    SendAll(socket, "HTTP/1.1 204 No Content\r\nConnection: close\r\n\r\n");
                }
            });
        auto info = server.Info();
        info.RequestTimeout = 20;
        std::vector<RedfishConfigResult> errors;
        const RedfishConfigResult result = BMCBaseAssistant(info, Kind).PatchData("/settings", "{}", errors, true, {});
        if (lost == 2)
        {
            EXPECT_THAT(result, HasCode(0));
        }
        else
        {
            EXPECT_THAT(result, Fails(24, "as task /t, but it cannot be watched any more: "));
            EXPECT_THAT(result, Fails(24, "whether the change was done is not known."));
        }
        EXPECT_EQ(requests, 4U);
    }
}

TEST(Task, ASessionThatRunsOutUnderATaskIsOpenedAnew)
{
    std::atomic<int> logins{0};
    std::atomic<bool> expired{false};
    const TestServer server(
        [&](const httplib::Request& request, httplib::Response& response)
        {
            if (request.method == "POST")
            {
                response.set_header("X-Auth-Token", "token-" + std::to_string(++logins));
                response.set_header("Location", "/session");
                return AnswerJson(response, "{}", 201);
            }
            if (request.method == "PATCH")
            {
                response.set_header("Location", Monitor);
                response.status = 202;
                return;
            }
            const bool old = request.get_header_value("X-Auth-Token") == "token-1";
            response.status = request.method == "GET" && old ? 401 : 204;
        });
    TavrineConnection::BmcConnection connection(server.Info(), {});
    EXPECT_THAT(connection.OpenSession(), HasCode(0));
    std::vector<RedfishConfigResult> errors;
    EXPECT_THAT(BMCBaseAssistant(connection.Info(), Kind).PatchData("/settings", "{}", errors, true, {}), HasCode(0));
    EXPECT_EQ(logins, 2);
    EXPECT_EQ(server.Requests().back().Header("X-Auth-Token"), "token-2");
}

TEST(Task, ANewLoginThatFailsUnderATaskIsNoFailureOfTheChange)
{
    for (const int status : {400, 500, 503})
    {
        EXPECT_THAT(PatchBesideALogin(status, false), Fails(24, "; whether the change was done is not known."))
            << status;
    }
}

TEST(Task, ALookAfterABusyLoginIsMadeWithThePassword) { EXPECT_THAT(PatchBesideALogin(503, true), HasCode(0)); }
