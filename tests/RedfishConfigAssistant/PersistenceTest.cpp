// What is sent again, how often, and what never is.

#include "BMCBaseAssistant.h"

#include <atomic>
#include <chrono>

#include <gtest/gtest.h>

#include "BmcConnection.h"
#include "RawServer.h"
#include "TestServer.h"

using namespace Tavrine;
using namespace resttest;
using TavrineConnection::BmcConnection;
using TavrineConnection::ConnectionInfo;
using TavrineConnection::ConnectionProfile;

namespace
{

constexpr ConfigurateSupportedSystemType Kind = SystemTypeValueResource;
constexpr const char* Good = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}";

/// Says one text to each of its first connections, and another to all others.
class TurningServer
{
  public:
    TurningServer(unsigned int turns, std::string first, std::string then = Good)
        : m_Server(
              [this, turns, first, then](int socket, unsigned int)
              {
                  // Counted by answers: a connection without a request is none of them.
                  if (!ReadRequest(socket).empty())
                  {
                      SendAll(socket, m_Asked++ < turns ? first : then);
                  }
              })
    {
    }
    ConnectionInfo Info(std::uint32_t retries) const
    {
        ConnectionInfo info = m_Server.Info();
        info.Retries = retries;
        info.RetryPause = 1;
        return info;
    }
    unsigned int Asked() const { return m_Asked; }

  private:
    mutable std::atomic<unsigned int> m_Asked{0};
    RawServer m_Server;
};

/// A service that is busy for the first requests.
class BusyServer
{
  public:
    explicit BusyServer(int turns, std::string retryAfter = "0")
        : m_Left(turns),
          m_Server(
              [this, retryAfter = std::move(retryAfter)](const httplib::Request& request, httplib::Response& response)
              {
                  if (m_Left-- > 0)
                  {
                      AnswerJson(response, "{}", 503);
                      response.set_header("Retry-After", retryAfter);
                      return;
                  }
                  if (request.path.ends_with("/Sessions"))
                  {
                      response.set_header("X-Auth-Token", "0123456789abcdef");
                  }
                  AnswerJson(response, "{}");
              })
    {
    }
    ConnectionInfo Info() const { return m_Server.Info(); }
    std::size_t Asked() const { return m_Server.Requests().size(); }
    std::vector<std::string> Bodies() const
    {
        std::vector<std::string> bodies;
        for (const auto& request : m_Server.Requests())
        {
            bodies.push_back(request.Body);
        }
        return bodies;
    }

  private:
    std::atomic<int> m_Left;
    TestServer m_Server;
};

RedfishConfigResult Get(const BmcConnection& connection)
{
    std::string response;
    return BMCBaseAssistant(connection.Info(), Kind).GetData("/x", response);
}

RedfishConfigResult Patch(const BmcConnection& connection)
{
    std::vector<RedfishConfigResult> errors;
    return BMCBaseAssistant(connection.Info(), Kind).PatchData("/x", "{}", errors, true, {});
}

ConnectionProfile Patient(std::uint32_t seconds, std::vector<std::chrono::milliseconds>& waits)
{
    ConnectionProfile profile;
    profile.BusyPatience = seconds;
    profile.OnBusy = [&](std::chrono::milliseconds wait) { waits.push_back(wait); };
    return profile;
}

using Waits = std::vector<std::chrono::milliseconds>;

} // namespace

TEST(Persistence, AHeadThatIsCutOffIsNoAnswer)
{
    const TurningServer server(1000, "HTTP/1.1 200 OK\r\nContent-Ty");
    const BmcConnection connection(server.Info(0), {});
    EXPECT_THAT(Get(connection), Fails(24, "the connection ended before the whole answer had come"));
    EXPECT_THAT(Patch(connection), Fails(24, "whether the change was done is not known"));
}

TEST(Persistence, AReadIsTriedAgainWhoseConnectionBroke)
{
    for (const char* words : {"", "HTTP/1.1 200 OK\r\nContent-Ty", "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n{}"})
    {
        const TurningServer server(2, words);
        const BmcConnection connection(server.Info(2), {});
        EXPECT_THAT(Get(connection), HasCode(0)) << words;
        EXPECT_EQ(server.Asked(), 3U) << words;
    }
}

TEST(Persistence, AReadIsTriedAgainNoMoreThanAsked)
{
    const TurningServer server(1000, "");
    const BmcConnection connection(server.Info(2), {});
    EXPECT_THAT(Get(connection), HasCode(24));
    EXPECT_EQ(server.Asked(), 3U);
}

TEST(Persistence, AnAnswerIsNotAskedForAgainBecauseItIsBad)
{
    for (const char* words : {"HTTP/1.1 500 Oh\r\nContent-Length: 0\r\n\r\n", "nonsense\r\n\r\n",
                              "HTTP/1.1 200 OK\r\nContent-Length: 1\r\n\r\n{"})
    {
        const TurningServer server(1000, words);
        const BmcConnection connection(server.Info(5), {});
        EXPECT_THAT(Get(connection), testing::Not(HasCode(0))) << words;
        EXPECT_EQ(server.Asked(), 1U) << words;
    }
}

TEST(Persistence, AChangeIsSentOnce)
{
    for (const char* words : {"", "HTTP/1.1 200 OK\r\nContent-Ty", "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n{}"})
    {
        const TurningServer server(1000, words);
        const BmcConnection connection(server.Info(5), {});
        EXPECT_THAT(Patch(connection), Fails(24, "whether the change was done is not known")) << words;
        EXPECT_EQ(server.Asked(), 1U) << words;
    }
}

TEST(Persistence, ALoginIsTriedAgainOnlyWhereNothingWasSent)
{
    ConnectionInfo closed;
    closed.Host = "127.0.0.1";
    closed.Port = ClosedPort();
    closed.User = "u";
    closed.Retries = 3;
    closed.RetryPause = 1;
    BmcConnection unreachable(closed, {});
    EXPECT_THAT(unreachable.OpenSession(), HasCode(24));
    EXPECT_EQ(unreachable.Counters().Requests, 4U);

    const TurningServer server(1000, "");
    ConnectionInfo info = server.Info(3);
    info.User = "u";
    BmcConnection connection(info, {});
    EXPECT_THAT(connection.OpenSession(), HasCode(24));
    EXPECT_EQ(server.Asked(), 1U);
}

TEST(Persistence, AFailureInsideTheBmcLeavesAChangeOpen)
{
    struct Row
    {
        int Status;
        bool Open;
    };
    for (const Row& row : {Row{500, true}, Row{502, true}, Row{504, true}, Row{501, false}, Row{505, false}})
    {
        TestServer server([&](const auto&, auto& response) { AnswerJson(response, "{}", row.Status); });
        const BmcConnection connection(server.Info(), {});
        const std::string text = Patch(connection).ErrorMsg();
        EXPECT_EQ(text.find("whether the change was done is not known") != std::string::npos, row.Open) << text;
        EXPECT_EQ(Get(connection).ErrorMsg().find("whether"), std::string::npos);
    }
}

TEST(Persistence, ABusyBmcIsWaitedOut)
{
    const BusyServer server(3);
    Waits waits;
    const BmcConnection connection(server.Info(), Patient(60, waits));
    EXPECT_THAT(Get(connection), HasCode(0));
    EXPECT_EQ(server.Asked(), 4U);
    using std::chrono::milliseconds;
    EXPECT_EQ(waits, Waits({milliseconds(100), milliseconds(200), milliseconds(400)}));
}

TEST(Persistence, PatienceIsUsedUpWhereTheBmcTellsNoTime)
{
    const BusyServer server(1000);
    Waits waits;
    const BmcConnection connection(server.Info(), Patient(1, waits));
    EXPECT_THAT(Get(connection), HasCode(33));
    using std::chrono::milliseconds;
    EXPECT_EQ(waits, Waits({milliseconds(100), milliseconds(200), milliseconds(400), milliseconds(300)}));
    EXPECT_EQ(server.Asked(), 5U);
}

TEST(Persistence, ARefusedChangeAndALoginGoOutAgainWhenTheBmcIsReady)
{
    const BusyServer server(1);
    Waits waits;
    const BmcConnection connection(server.Info(), Patient(60, waits));
    EXPECT_THAT(Patch(connection), HasCode(0));
    EXPECT_EQ(server.Asked(), 2U);

    const BusyServer second(2);
    ConnectionInfo info = second.Info();
    info.User = "u";
    BmcConnection session(info, Patient(60, waits));
    EXPECT_THAT(session.OpenSession(), HasCode(0));
    EXPECT_EQ(waits.size(), 3U);
}

TEST(Persistence, AChangeThatGoesOutAgainIsTheSame)
{
    const BusyServer server(2);
    Waits waits;
    const BmcConnection connection(server.Info(), Patient(60, waits));
    std::vector<RedfishConfigResult> errors;
    const std::string body = R"({"Attributes":{"A":1}})";
    EXPECT_THAT(BMCBaseAssistant(connection.Info(), Kind).PatchData("/x", body, errors, true, {}), HasCode(0));
    EXPECT_EQ(server.Bodies(), std::vector<std::string>(3, body));
}

TEST(Persistence, AnActionGoesOutOnceUnlessItOnlyReads)
{
    const struct
    {
        const char* Path;
        std::size_t Asked;
    } rows[] = {
        {"/redfish/v1/Systems/1/Actions/ComputerSystem.Reset", 1},
        {"/redfish/v1/Systems/1/Bios/Actions/Bios.ResetBios", 1},
        {"/redfish/v1/Systems/1/Bios/Actions/Bios.ChangePassword", 1},
        {"/redfish/v1/Systems/1/Bios/Actions/Oem/ZorvanBios.SetProtectedAttributes", 1},
        {"/redfish/v1/Systems/1/Actions/Oem/ZorvanComputerSystem.DSWriteFile", 1},
        {"/GetProtectedAttributes/x", 1},
        {"/redfish/v1/Systems/1/Bios/Actions/Oem/ZorvanBios.GetProtectedAttributes", 2},
        {"/redfish/v1/Systems/1/Actions/Oem/ZorvanComputerSystem.DSReadFile", 2},
    };
    for (const auto& row : rows)
    {
        const BusyServer server(1);
        Waits waits;
        BmcConnection connection(server.Info(), Patient(60, waits));
        std::string response;
        const RedfishConfigResult result = connection.Post(row.Path, "{}", response, 60);
        EXPECT_EQ(server.Asked(), row.Asked) << row.Path;
        EXPECT_EQ(waits.size(), row.Asked - 1) << row.Path;
        EXPECT_THAT(result, HasCode(row.Asked == 1 ? 33 : 0)) << row.Path;
    }
}

TEST(Persistence, PatienceIsForAllRequestsTogether)
{
    const BusyServer server(1000, "1");
    Waits waits;
    const BmcConnection connection(server.Info(), Patient(2, waits));
    EXPECT_THAT(Get(connection), HasCode(33));
    EXPECT_THAT(Get(connection), HasCode(33));
    EXPECT_EQ(server.Asked(), 4U);
    EXPECT_EQ(waits, Waits(2, std::chrono::seconds(1)));
}

TEST(Persistence, AWaitThatIsTooLongIsNotBegun)
{
    const BusyServer server(1000, "3600");
    Waits waits;
    const BmcConnection patient(server.Info(), Patient(3599, waits));
    EXPECT_THAT(Get(patient), Fails(33, "3600 s"));
    EXPECT_EQ(patient.RetryAfter(), 3600U);
    const BmcConnection impatient(server.Info(), {});
    EXPECT_THAT(Get(impatient), HasCode(33));
    EXPECT_EQ(server.Asked(), 2U);
    EXPECT_TRUE(waits.empty());
}

TEST(Persistence, AWaitThatWasNotBegunUsesUpNoPatience)
{
    std::atomic<int> asked{0};
    const TestServer server(
        [&](const httplib::Request&, httplib::Response& response)
        {
            const int number = ++asked;
            AnswerJson(response, "{}", number <= 2 ? 503 : 200);
            response.set_header("Retry-After", number == 1 ? "3600" : "0");
        });
    Waits waits;
    const BmcConnection connection(server.Info(), Patient(1, waits));
    EXPECT_THAT(Get(connection), Fails(33, "3600 s"));
    EXPECT_THAT(Get(connection), HasCode(0));
    EXPECT_EQ(waits, Waits({std::chrono::milliseconds(100)}));
}
