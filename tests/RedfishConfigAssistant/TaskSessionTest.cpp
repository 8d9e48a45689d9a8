// Connections and sessions that end while a task is watched.
#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "BMCBaseAssistant.h"
#include "BmcConnection.h"
#include "GivenOptions.h"
#include "RawServer.h"
#include "TaskFollower.h"
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

/// One look at a task that comes to nothing.
Exchange Lost(int code) { return {{}, TransportFault{code, "lost"}}; }

Exchange Answered(int status, const std::string& retryAfter = "0")
{
    return {{status, {{"retry-after", retryAfter}}, ""}, std::nullopt};
}

/// Watches a task whose looks end so, one after the other; with the last one its time is up.
std::optional<TaskEnd> FollowUntilTimeIsUp(const std::vector<Exchange>& looks)
{
    const auto begun = std::chrono::steady_clock::now();
    const Origin place{true, "127.0.0.1", 80};
    std::size_t made = 0;
    TaskWatch watch{place, "/settings", begun, begun + std::chrono::minutes(1), {}};
    watch.Read = [&](const std::string&, std::chrono::seconds)
    {
        const Exchange& look = looks.at(made++);
        if (made == looks.size())
        {
            watch.Deadline = std::chrono::steady_clock::now();
        }
        return look;
    };
    auto end = FollowTask({202, {{"location", Monitor}}, ""}, watch);
    EXPECT_EQ(made, looks.size());
    return end;
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

TEST(Task, LossesThatAnAnswerComesBetweenAreNotAddedUp)
{
    const auto end = FollowUntilTimeIsUp({Lost(24), Lost(32), Answered(202, "1"), Lost(24)});
    ASSERT_TRUE(end);
    EXPECT_THAT(end->Doubt, testing::HasSubstr("and still works on it (lost) after "));
}

TEST(Task, ABmcThatLetsNobodyInForNowIsNotCountedAsLost)
{
    const auto end = FollowUntilTimeIsUp({Lost(33), Lost(33), Lost(33)});
    ASSERT_TRUE(end);
    EXPECT_THAT(end->Doubt, testing::HasSubstr("and still works on it (lost) after "));
}

TEST(Task, WhatTheBmcAskedToWaitHoldsForOneLook)
{
    std::vector<std::chrono::steady_clock::time_point> looks;
    const auto begun = std::chrono::steady_clock::now();
    const Origin place{true, "127.0.0.1", 80};
    const TaskWatch watch{place, "/settings", begun, begun + std::chrono::minutes(1),
                          [&](const std::string&, std::chrono::seconds)
                          {
                              looks.push_back(std::chrono::steady_clock::now());
                              return looks.size() == 1 ? Lost(24) : Answered(204);
                          }};
    const auto end = FollowTask({202, {{"location", Monitor}, {"retry-after", "1"}}, ""}, watch);
    ASSERT_TRUE(end);
    EXPECT_EQ(end->Doubt, "");
    ASSERT_EQ(looks.size(), 2U);
    EXPECT_GE(looks[0] - begun, std::chrono::seconds(1));
    EXPECT_LT(looks[1] - looks[0], std::chrono::seconds(1)) << "the look that was lost asked for nothing";
}

TEST(Task, APlaceThatIsNamedTwiceIsAskedOnce)
{
    std::size_t looks = 0;
    const auto begun = std::chrono::steady_clock::now();
    const Origin place{true, "127.0.0.1", 80};
    const TaskWatch watch{place, "/settings", begun, begun + std::chrono::minutes(1),
                          [&](const std::string&, std::chrono::seconds)
                          {
                              ++looks;
                              return Answered(404);
                          }};
    const std::string body =
        R"({"TaskState":"New","TaskMonitor":")" + std::string(Monitor) + R"(","@odata.id":")" + Monitor + "\"}";
    const auto end = FollowTask({202, {{"location", Monitor}}, body}, watch);
    ASSERT_TRUE(end);
    EXPECT_THAT(end->Doubt, testing::HasSubstr("gone without a word of its end"));
    EXPECT_EQ(looks, 1U);
}

TEST(Task, ItsTimeBeginsWithTheSendingOfTheChange)
{
    const TestServer server(
        [](const httplib::Request& request, httplib::Response& response)
        {
            if (request.method == "PATCH")
            {
                // With the pause before the first look a second of the sixty has gone, however fast the machine is.
                std::this_thread::sleep_for(std::chrono::milliseconds(800));
                response.set_header("Location", Monitor);
            }
            response.status = request.method == "PATCH" ? 202 : 204;
        });
    auto info = server.Info();
    info.RequestTimeout = 60;
    const GivenOptions times(CURLOPT_TIMEOUT_MS);
    std::vector<RedfishConfigResult> errors;
    EXPECT_THAT(BMCBaseAssistant(info, Kind).PatchData("/settings", "{}", errors, true, {}), HasCode(0));
    ASSERT_EQ(times.Values().size(), 2U);
    EXPECT_EQ(times.Values()[0], 60'000);
    EXPECT_LE(times.Values()[1], 59'000);
}
