#include "AbortFlag.h"

#include <atomic>
#include <chrono>
#include <future>

#include <gtest/gtest.h>

#include "BMCBaseAssistant.h"
#include "BmcConnection.h"
#include "RawServer.h"
#include "TestServer.h"

using namespace Tavrine;
using namespace resttest;
using TavrineConnection::BmcConnection;

namespace
{

class Abort : public testing::Test
{
  protected:
    void TearDown() override { AbortFlag::Lower(); }
};

void Answers(const httplib::Request& request, httplib::Response& response)
{
    response.set_header("X-Auth-Token", "token");
    response.set_header("Location", "/session");
    AnswerJson(response, "{}", request.method == "POST" ? 201 : 200);
}

RedfishConfigResult Get(const TavrineConnection::ConnectionInfo& info)
{
    std::string response;
    return BMCBaseAssistant(info, SystemTypeBios).GetData("/x", response);
}

} // namespace

TEST_F(Abort, ARequestUnderWayEndsSoon)
{
    std::promise<void> arrived;
    const RawServer server(
        [&](int socket, unsigned int)
        {
            ReadRequest(socket);
            arrived.set_value();
            WaitForPeerToLeave(socket);
        });
    auto info = server.Info();
    info.RequestTimeout = 600;
    auto result = std::async(std::launch::async, [&] { return Get(info); });
    arrived.get_future().wait();
    const auto aborted = std::chrono::steady_clock::now();
    BmcConnection::AbortRequests();
    EXPECT_THAT(result.get(), Fails(24, "aborted"));
    EXPECT_LT(std::chrono::steady_clock::now() - aborted, std::chrono::seconds(10));
}

TEST_F(Abort, ARetryPauseEndsSoon)
{
    TavrineConnection::ConnectionInfo info;
    info.Host = "127.0.0.1";
    info.Port = ClosedPort();
    info.Retries = 1000;
    info.RetryPause = 600'000;
    const BmcConnection connection(info, {});
    auto result = std::async(std::launch::async, [&] { return Get(connection.Info()); });
    while (connection.Counters().Requests == 0)
    {
        std::this_thread::yield();
    }
    BmcConnection::AbortRequests();
    EXPECT_THAT(result.get(), HasCode(24));
    EXPECT_EQ(connection.Counters().Requests, 1U);
}

TEST_F(Abort, TheWaitForABusyBmcEndsSoon)
{
    const TestServer server(
        [](const httplib::Request&, httplib::Response& response)
        {
            AnswerJson(response, "{}", 503);
            response.set_header("Retry-After", "3600");
        });
    std::promise<void> waits;
    TavrineConnection::ConnectionProfile profile;
    profile.BusyPatience = 86'400;
    profile.OnBusy = [&](std::chrono::milliseconds) { waits.set_value(); };
    const BmcConnection connection(server.Info(), profile);
    auto result = std::async(std::launch::async, [&] { return Get(connection.Info()); });
    waits.get_future().wait();
    BmcConnection::AbortRequests();
    EXPECT_THAT(result.get(), HasCode(33));
    EXPECT_EQ(server.Calls().size(), 1U);
}

TEST_F(Abort, LaterRequestsFailButTheLogoutIsSent)
{
    const TestServer server(Answers);
    BmcConnection connection(server.Info(), {});
    EXPECT_THAT(connection.OpenSession(), HasCode(0));
    EXPECT_THAT(Get(connection.Info()), HasCode(0));
    BmcConnection::AbortRequests();
    EXPECT_THAT(Get(connection.Info()), Fails(24, "aborted"));
    BmcConnection second(server.Info(), {});
    EXPECT_THAT(second.OpenSession(), Fails(24, "aborted"));
    EXPECT_THAT(connection.CloseSession(), HasCode(0));
    EXPECT_EQ(server.Calls(),
              (std::vector<std::string>{"POST /redfish/v1/SessionService/Sessions", "GET /x", "DELETE /session"}));
}

TEST_F(Abort, TheDestructorLogsOut)
{
    const TestServer server(Answers);
    {
        BmcConnection connection(server.Info(), {});
        EXPECT_THAT(connection.OpenSession(), HasCode(0));
        BmcConnection::AbortRequests();
    }
    EXPECT_EQ(server.Calls().back(), "DELETE /session");
}

TEST_F(Abort, TheWaitForATaskEndsSoon)
{
    std::promise<void> looked;
    std::atomic<int> looks{0};
    const TestServer server(
        [&](const httplib::Request&, httplib::Response& response)
        {
            response.status = 202;
            response.set_header("Location", "/task");
            response.set_header("Retry-After", looks == 0 ? "0" : "30");
            if (looks++ == 1)
            {
                looked.set_value();
            }
        });
    auto info = server.Info();
    info.RequestTimeout = 600;
    auto result = std::async(std::launch::async,
                             [&]
                             {
                                 std::vector<RedfishConfigResult> errors;
                                 return BMCBaseAssistant(info, SystemTypeBios).PatchData("/x", "{}", errors, true, {});
                             });
    looked.get_future().wait();
    const auto aborted = std::chrono::steady_clock::now();
    BmcConnection::AbortRequests();
    const RedfishConfigResult ended = result.get();
    EXPECT_THAT(ended, Fails(24, "the BMC accepted PATCH /x as task /task, but "));
    EXPECT_THAT(ended, Fails(24, "aborted; whether the change was done is not known."));
    EXPECT_LT(std::chrono::steady_clock::now() - aborted, std::chrono::seconds(10));
}

TEST_F(Abort, AChangeUnderWayMayHaveBeenDone)
{
    std::promise<void> arrived;
    const RawServer server(
        [&](int socket, unsigned int)
        {
            ReadRequest(socket);
            arrived.set_value();
            WaitForPeerToLeave(socket);
        });
    auto info = server.Info();
    info.RequestTimeout = 600;
    std::vector<RedfishConfigResult> errors;
    const auto patch = [&] { return BMCBaseAssistant(info, SystemTypeBios).PatchData("/x", "{}", errors, true, {}); };
    auto result = std::async(std::launch::async, patch);
    arrived.get_future().wait();
    BmcConnection::AbortRequests();
    EXPECT_THAT(result.get(), Fails(24, "the request was aborted; whether the change was done is not known."));
    EXPECT_THAT(patch(), Fails(24, "the request was aborted; nothing was sent."));
}
