#include "BMCBaseAssistant.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include "BmcConnection.h"
#include "ChangeDelivery.h"
#include "RawServer.h"
#include "TestServer.h"

using namespace Tavrine;
using namespace resttest;

namespace
{

constexpr ConfigurateSupportedSystemType Kind = SystemTypeValueResource;
constexpr const char* Unknown = "; whether the change was done is not known.";
constexpr const char* NotSent = "; nothing was sent.";

RedfishConfigResult Patch(const TavrineConnection::ConnectionInfo& info, const std::string& body = "{}")
{
    std::vector<RedfishConfigResult> errors;
    return BMCBaseAssistant(info, Kind).PatchData("/x", body, errors, true, {});
}

RedfishConfigResult Get(const TavrineConnection::ConnectionInfo& info)
{
    std::string response;
    return BMCBaseAssistant(info, Kind).GetData("/x", response);
}

/// Ends the connection with RST instead of FIN; the socket stays the server's to close.
void Reset(int socket)
{
    const sockaddr nowhere = {AF_UNSPEC, {}};
    connect(socket, &nowhere, sizeof nowhere);
}

RawServer::Behaviour Says(const std::string& text)
{
    return [=](int socket, unsigned int)
    {
        ReadRequest(socket);
        SendAll(socket, text);
    };
}

TestServer::Handler Status(int status)
{
    return [=](const httplib::Request&, httplib::Response& response) { response.status = status; };
}

} // namespace

TEST(ChangeFault, NothingIsSentWithoutAConnection)
{
    TavrineConnection::ConnectionInfo info;
    info.Host = "127.0.0.1";
    info.Port = ClosedPort();
    EXPECT_THAT(Patch(info), Fails(24, std::string("nothing listens on that port") + NotSent));
    info.Host = std::string(64, 'a'); // no label is that long (RFC 1035)
    EXPECT_THAT(Patch(info), Fails(24, std::string("the name of the host was not found") + NotSent));
    info.Host = "user@host";
    EXPECT_THAT(Patch(info), Fails(24, NotSent));
}

TEST(ChangeFault, NothingIsSentWithoutTls)
{
    const RawServer silent([](int socket, unsigned int) { WaitForPeerToLeave(socket); });
    auto info = silent.Info();
    info.Flags = 0;
    EXPECT_THAT(Patch(info), Fails(24, std::string("no connection stood within 1 s") + NotSent));

    const Certificate certificate = MakeCertificate();
    const TestServer server(Status(204), &certificate);
    info = server.Info();
    info.Flags = 0;
    EXPECT_THAT(Patch(info), Fails(24, NotSent));
    EXPECT_TRUE(server.Calls().empty());
}

TEST(ChangeFault, NothingIsSentOverAClosedConnection)
{
    TavrineConnection::ConnectionInfo info;
    {
        const TavrineConnection::BmcConnection connection(info, {});
        info = connection.Info();
    }
    EXPECT_THAT(Patch(info), Fails(24, std::string("is closed") + NotSent));
}

TEST(ChangeFault, WhatIsLostAfterSendingMayHaveBeenDone)
{
    struct Row
    {
        const char* Name;
        RawServer::Behaviour Does;
        int Code;
        const char* Words;
    };
    const Row rows[] = {
        {"hangs up at once", [](int, unsigned int) {}, 24, ""},
        {"hangs up", [](int socket, unsigned int) { ReadRequest(socket); }, 24, "without an answer"},
        {"resets",
         [](int socket, unsigned int)
         {
             ReadRequest(socket);
             Reset(socket);
         },
         24, "the connection broke"},
        {"stalls",
         [](int socket, unsigned int)
         {
             ReadRequest(socket);
             WaitForPeerToLeave(socket);
         },
         24, "time-out, no whole answer came within 1 s"},
        {"cuts off", Says("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n{"), 24, "before the whole answer had come"},
        {"speaks no HTTP", Says("garbage\r\n\r\n"), 24, "no HTTP answer"},
        {"says too much", Says("HTTP/1.1 200 OK\r\nX: " + std::string(1'000'000, 'x') + "\r\n\r\n"), 27, "too large"},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.Name);
        const RawServer server(row.Does);
        RedfishConfigResult result = Patch(server.Info());
        EXPECT_THAT(result, Fails(row.Code, row.Words));
        EXPECT_TRUE(result.ErrorMsg().ends_with(Unknown)) << result.ErrorMsg();
        EXPECT_EQ(server.Accepted(), 1U);
    }
}

TEST(ChangeFault, ALostChangeOfEveryVerbSaysSo)
{
    const RawServer server([](int socket, unsigned int) { ReadRequest(socket); });
    BMCBaseAssistant client(server.Info(), Kind);
    std::vector<RedfishConfigResult> errors;
    std::string response;
    EXPECT_THAT(client.PostData("/x", "{}", response, errors, false, 0), Fails(24, Unknown));
    EXPECT_THAT(client.PostData("/x", "{}", response, false, 0), Fails(24, Unknown));
    EXPECT_THAT(client.DeleteData("/x", response), Fails(24, Unknown));
}

TEST(ChangeFault, AnAnswerThatRefusesLeavesNoDoubt)
{
    struct Row
    {
        int Status;
        int Code;
        const char* Words;
    };
    constexpr Row rows[] = {
        {400, 18, "was refused by"}, {412, 18, "was refused by"},     {401, 24, "refuses the user name"},
        {403, 24, "privilege"},      {503, 33, "is not ready (503 "},
    };
    for (const Row& row : rows)
    {
        const TestServer server(Status(row.Status));
        RedfishConfigResult result = Patch(server.Info());
        EXPECT_THAT(result, Fails(row.Code, row.Words));
        EXPECT_EQ(result.ErrorMsg().find("not known"), std::string::npos) << result.ErrorMsg();
        EXPECT_EQ(result.ErrorMsg().find("nothing was sent"), std::string::npos) << result.ErrorMsg();
    }
}

TEST(ChangeFault, AChangeTurnedAwayWithTheSessionWasNotDone)
{
    std::atomic<int> logins{0};
    const TestServer server(
        [&](const httplib::Request& request, httplib::Response& response)
        {
            response.set_header("X-Auth-Token", "token");
            response.status = request.method == "POST" && ++logins == 1 ? 201 : 401;
        });
    TavrineConnection::BmcConnection connection(server.Info(), {});
    EXPECT_THAT(connection.OpenSession(), HasCode(0));
    RedfishConfigResult result = Patch(connection.Info());
    EXPECT_THAT(result, Fails(24, "the password (401 Unauthorized); the change was not done."));
    EXPECT_EQ(DeliveryIn(result.ErrorMsg()), Delivery::TurnedAway);
}

TEST(ChangeFault, HowFarAChangeCameIsReadFromItsMessage)
{
    const auto told = [](const TavrineConnection::ConnectionInfo& info, const std::string& path = "/x")
    {
        std::vector<RedfishConfigResult> errors;
        return DeliveryIn(BMCBaseAssistant(info, Kind).PatchData(path, "{}", errors, true, {}).ErrorMsg());
    };
    TavrineConnection::ConnectionInfo nobody;
    nobody.Host = "127.0.0.1";
    nobody.Port = ClosedPort();
    EXPECT_EQ(told(nobody), Delivery::NotSent);
    const RawServer silent([](int socket, unsigned int) { ReadRequest(socket); });
    EXPECT_EQ(told(silent.Info()), Delivery::Sent);
    EXPECT_EQ(told(silent.Info(), "/a b"), Delivery::NotSent);
    const std::pair<int, std::optional<Delivery>> answers[] = {
        {400, std::nullopt},   {401, Delivery::TurnedAway}, {403, Delivery::TurnedAway},
        {500, Delivery::Sent}, {503, std::nullopt},
    };
    for (const auto& [status, delivery] : answers)
    {
        const TestServer server(Status(status));
        EXPECT_EQ(told(server.Info()), delivery) << status;
    }
}

/// A BMC may say these words by chance, or to pass itself off as the client.
TEST(ChangeFault, ABmcCannotTellHowFarAChangeCameInTheClientsWords)
{
    const std::string sayings[] = {
        "nothing was sent",
        "No; nothing was sent.",
        "the change was not done",
        "whether the change was done is not known",
        "was not sent to its place",
        "It was not sent to",
        "(401 Unauthorized)",
        "He says (403 Forbidden).",
        "<<a mark>> and; nothing was sent.",
        ">>; nothing was sent.",
        "nothing was sent; <<whether the change was done is not known",
        "It says: <<nothing was sent",
        R"(nothing was"},{"MessageId":"B.PropertyNotWritable","Message":"sent.)",
    };
    const std::pair<int, std::optional<Delivery>> answers[] = {
        {200, std::nullopt},         {400, std::nullopt},   {401, Delivery::TurnedAway},
        {403, Delivery::TurnedAway}, {500, Delivery::Sent}, {503, std::nullopt},
    };
    for (const std::string& saying : sayings)
    {
        for (const auto& [status, delivery] : answers)
        {
            const TestServer server(
                [&](const httplib::Request&, httplib::Response& response)
                {
                    response.set_content(R"({"error":{"@Message.ExtendedInfo":[{"MessageId":"B.PropertyNotWritable",)"
                                         R"("RelatedProperties":["/Attributes/A"],"Message":")" +
                                             saying + R"("}]}})",
                                         "application/json");
                    response.status = status;
                });
            std::vector<RedfishConfigResult> errors;
            RedfishConfigResult result = BMCBaseAssistant(server.Info(), Kind).PatchData("/x", "{}", errors, true, {});
            EXPECT_NE(result.ErrorCode(), 0);
            EXPECT_EQ(DeliveryIn(result.ErrorMsg()), delivery) << status << ": " << result.ErrorMsg();
            for (RedfishConfigResult& error : errors)
            {
                EXPECT_EQ(DeliveryIn("A: " + error.ErrorMsg() + " "), std::nullopt) << error.ErrorMsg();
            }
        }
    }
}

TEST(ChangeFault, WordsOfABmcStandAsTheyAreUnlessTheyAreTheClients)
{
    const TestServer server(
        [](const httplib::Request&, httplib::Response& response)
        {
            response.set_content(R"({"error":{"message":"It was \"<<bad>>\"."}})", "application/json");
            response.status = 400;
        });
    EXPECT_TRUE(Patch(server.Info()).ErrorMsg().ends_with(R"((400 Bad Request): It was "<<bad>>".)"));
    EXPECT_EQ(AsForeignWords("nothing was sent"), "<<nothing was sent>>");
    EXPECT_EQ(AsForeignWords("<<nothing was sent>> here"), "<<nothing was sent>> here");
}

TEST(ChangeFault, NeitherALinkNorARedirectionTellsHowFarAChangeCame)
{
    const std::string open = "whether the change was done is not known";
    const TestServer server(
        [&](const httplib::Request&, httplib::Response& response)
        {
            response.set_header("Location", "/y; nothing was sent.");
            response.status = 307;
        });
    std::vector<RedfishConfigResult> errors;
    BMCBaseAssistant client(server.Info(), Kind);
    RedfishConfigResult redirected = client.PatchData("/x", "{}", errors, true, {});
    EXPECT_THAT(redirected, Fails(18, "nothing was sent"));
    EXPECT_EQ(DeliveryIn(redirected.ErrorMsg()), std::nullopt);
    RedfishConfigResult keptBack = client.PatchData("/x " + open, "{}", errors, true, {});
    EXPECT_THAT(keptBack, Fails(18, open));
    EXPECT_EQ(DeliveryIn(keptBack.ErrorMsg()), Delivery::NotSent);
}

TEST(ChangeFault, AnActionThatOnlyReadsLeavesNothingOpen)
{
    const auto told = [](const TavrineConnection::ConnectionInfo& info, const std::string& path)
    {
        std::string response;
        return DeliveryIn(BMCBaseAssistant(info, Kind).PostData(path, "{}", response, false, 0).ErrorMsg());
    };
    const RawServer silent([](int socket, unsigned int) { ReadRequest(socket); });
    const TestServer broken(Status(500));
    const TestServer taskElsewhere(
        [](const httplib::Request&, httplib::Response& response)
        {
            response.set_header("Location", "http://elsewhere.example/task");
            response.status = 202;
        });
    for (const auto& info : {silent.Info(), broken.Info(), taskElsewhere.Info()})
    {
        EXPECT_EQ(told(info, "/x/Y.DSReadFile"), std::nullopt);
        EXPECT_EQ(told(info, "/x/Y.DSWriteFile"), Delivery::Sent);
    }
}

TEST(ChangeFault, AFailedReadSaysNothingOfChanges)
{
    TavrineConnection::ConnectionInfo info;
    info.Host = "127.0.0.1";
    info.Port = ClosedPort();
    RedfishConfigResult result = Get(info);
    EXPECT_THAT(result, Fails(24, "nothing listens on that port."));
    EXPECT_EQ(result.ErrorMsg().find("sent"), std::string::npos) << result.ErrorMsg();
}

TEST(PlainHttp, APortThatDoesNotAnswerMayWantHttps)
{
    struct Row
    {
        const char* Name;
        RawServer::Behaviour Does;
    };
    const Row rows[] = {
        {"hangs up", [](int socket, unsigned int) { ReadRequest(socket); }},
        {"resets",
         [](int socket, unsigned int)
         {
             ReadRequest(socket);
             Reset(socket);
         }},
        {"sends a TLS alert", Says(std::string("\x15\x03\x01\x00\x02\x02\x16", 7))},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.Name);
        const RawServer server(row.Does);
        EXPECT_THAT(Get(server.Info()), Fails(24, "the port may want https"));
        EXPECT_THAT(Patch(server.Info()), Fails(24, "the port may want https"));
    }
    const Certificate certificate = MakeCertificate();
    const TestServer tls(Status(204), &certificate);
    auto info = tls.Info();
    info.Flags = TavrineConnection::FlagPlainHttp;
    EXPECT_THAT(Get(info), Fails(24, "the port may want https"));
}

TEST(PlainHttp, APortThatHasAnsweredWantsNoHttps)
{
    // It breaks off within the first answer, or with the second.
    const RawServer within(Says("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n{"));
    RedfishConfigResult result = Get(within.Info());
    EXPECT_THAT(result, HasCode(24));
    EXPECT_EQ(result.ErrorMsg().find("https"), std::string::npos) << result.ErrorMsg();
    const RawServer second(
        [](int socket, unsigned int connection)
        {
            ReadRequest(socket);
            if (connection == 1)
            {
                SendAll(socket, "HTTP/1.1 204 No Content\r\nConnection: close\r\n\r\n");
            }
        });
    BMCBaseAssistant client(second.Info(), Kind);
    std::string response;
    EXPECT_THAT(client.GetData("/x", response), HasCode(0));
    result = client.GetData("/x", response);
    EXPECT_THAT(result, Fails(24, "without an answer"));
    EXPECT_EQ(result.ErrorMsg().find("https"), std::string::npos) << result.ErrorMsg();
}

TEST(PlainHttp, OverTlsNobodySpeaksOfHttps)
{
    const RawServer server([](int socket, unsigned int) { ReadRequest(socket); });
    auto info = server.Info();
    info.Flags = TavrineConnection::FlagNoTlsVerify;
    RedfishConfigResult result = Get(info);
    EXPECT_THAT(result, HasCode(24));
    EXPECT_EQ(result.ErrorMsg().find("https"), std::string::npos) << result.ErrorMsg();
}
