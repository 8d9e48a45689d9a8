#include "BMCBaseAssistant.h"

#include <chrono>
#include <condition_variable>

#include <gtest/gtest.h>

#include "BmcConnection.h"
#include "GivenOptions.h"
#include "RawServer.h"
#include "TestServer.h"

using namespace Tavrine;
using namespace resttest;

namespace
{

constexpr ConfigurateSupportedSystemType Kind = SystemTypeValueResource;

RedfishConfigResult Get(const TavrineConnection::ConnectionInfo& info)
{
    std::string response = "old";
    RedfishConfigResult result = BMCBaseAssistant(info, Kind).GetData("/x", response);
    EXPECT_EQ(response, "old");
    return result;
}

/// Answers each request of each connection with the same bytes, then hangs up.
RawServer::Behaviour Says(const std::string& text)
{
    return [=](int socket, unsigned int)
    {
        ReadRequest(socket);
        SendAll(socket, text);
    };
}

} // namespace

TEST(HostileServer, NobodyListens)
{
    TavrineConnection::ConnectionInfo info;
    info.Host = "127.0.0.1";
    info.Port = ClosedPort();
    EXPECT_THAT(Get(info), Fails(24, "127.0.0.1:" + std::to_string(info.Port) + ": the connection was refused"));
}

TEST(HostileServer, NameIsUnknown)
{
    TavrineConnection::ConnectionInfo info;
    info.Host = std::string(64, 'a'); // no label is that long (RFC 1035), so nobody needs to be asked
    EXPECT_THAT(Get(info), Fails(24, info.Host + ":443: the name of the host was not found."));
}

TEST(HostileServer, HostsThatAreNoNames)
{
    for (const char* host : {"", "a b", "user@host", "host/path"})
    {
        TavrineConnection::ConnectionInfo info;
        info.Host = host;
        EXPECT_THAT(Get(info), HasCode(24)) << host;
    }
}

TEST(HostileServer, StallsBeforeTheAnswer)
{
    const RawServer server([](int socket, unsigned int) { WaitForPeerToLeave(socket); });
    EXPECT_THAT(Get(server.Info()), Fails(24, "time-out, no whole answer came within 1 s"));
}

TEST(HostileServer, StallsInTheTlsHandshake)
{
    const RawServer server([](int socket, unsigned int) { WaitForPeerToLeave(socket); });
    auto info = server.Info();
    info.Flags = 0;
    info.RequestTimeout = 20;
    {
        const GivenOptions times(CURLOPT_CONNECTTIMEOUT_MS);
        EXPECT_THAT(Get(info), Fails(24, "time-out, no connection stood within 1 s"));
        EXPECT_EQ(times.Values(), std::vector<std::intptr_t>{1'000});
    }

    // Whichever of the two limits is over first.
    info.RequestTimeout = 1;
    info.ConnectTimeout = 30;
    EXPECT_THAT(Get(info), Fails(24, "time-out, no connection stood within 1 s"));
}

TEST(HostileServer, AStallBeforeTheConnectionStandsIsAReasonToTryAgain)
{
    const RawServer server(
        [](int socket, unsigned int connection)
        {
            if (connection == 1)
            {
                WaitForPeerToLeave(socket);
            }
        });
    auto info = server.Info();
    info.Flags = 0;
    info.Retries = 1;
    info.RetryPause = 1;
    EXPECT_THAT(Get(info), Fails(24, "127.0.0.1:" + std::to_string(info.Port)));
    EXPECT_EQ(server.Accepted(), 2U);
}

TEST(HostileServer, StallsWithinTheBody)
{
    const RawServer server(
        [](int socket, unsigned int)
        {
            ReadRequest(socket);
            SendAll(socket, "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n{\"a\":");
            WaitForPeerToLeave(socket);
        });
    EXPECT_THAT(Get(server.Info()), Fails(24, "time-out"));
}

TEST(HostileServer, DripsWithoutEnd)
{
    std::mutex mutex;
    std::condition_variable changed;
    bool over = false;
    const auto begun = std::chrono::steady_clock::now();
    {
        const RawServer server(
            [&](int socket, unsigned int)
            {
                ReadRequest(socket);
                bool open = SendAll(socket, "HTTP/1.1 200 OK\r\nContent-Length: 100000\r\n\r\n");
                std::unique_lock lock(mutex);
                while (open && !changed.wait_for(lock, std::chrono::milliseconds(20), [&] { return over; }))
                {
                    open = SendAll(socket, " ");
                }
            });
        EXPECT_THAT(Get(server.Info()), Fails(24, "time-out"));
        const std::lock_guard lock(mutex);
        over = true;
        changed.notify_all();
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(20));
}

TEST(HostileServer, TruncatesTheBody)
{
    const RawServer server(Says("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n{\"a\":1}"));
    EXPECT_THAT(Get(server.Info()), Fails(24, "the connection ended before the whole answer had come"));
}

TEST(HostileServer, TruncatesAChunk)
{
    const RawServer server(Says("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n64\r\n{\"a\":1}"));
    EXPECT_THAT(Get(server.Info()), Fails(24, "connection"));
}

TEST(HostileServer, ClaimsAShorterLength)
{
    const RawServer server(Says("HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\n{\"a\":1}"));
    EXPECT_THAT(Get(server.Info()), Fails(27, "no JSON"));
}

TEST(HostileServer, ClaimsALengthThatIsNone)
{
    for (const char* length : {"-1", "99999999999999999999999", "abc"})
    {
        const RawServer server(
            Says("HTTP/1.1 200 OK\r\nContent-Length: " + std::string(length) + "\r\n\r\n" + std::string(200'000, '[')));
        auto info = server.Info();
        info.MaxResponseBytes = 100'000;
        RedfishConfigResult result = Get(info);
        EXPECT_TRUE(result == 24 || result == 27) << length << ": " << result.ErrorMsg();
    }
}

TEST(HostileServer, ClaimsAHugeLength)
{
    const RawServer server(
        [](int socket, unsigned int)
        {
            ReadRequest(socket);
            SendAll(socket, "HTTP/1.1 200 OK\r\nContent-Length: 104857600\r\n\r\n[");
            WaitForPeerToLeave(socket);
        });
    auto info = server.Info();
    info.RequestTimeout = 30;
    EXPECT_THAT(Get(info), Fails(27, "larger than the limit of 67108864 bytes")); // without waiting for the rest
}

TEST(HostileServer, SendsWithoutEnd)
{
    std::atomic<std::size_t> sent{0};
    {
        const RawServer server(
            [&](int socket, unsigned int)
            {
                ReadRequest(socket);
                const std::string block(64 * 1024, '[');
                bool open = SendAll(socket, "HTTP/1.1 200 OK\r\n\r\n");
                while (open && sent < 200'000'000)
                {
                    open = SendAll(socket, block);
                    sent += block.size();
                }
            });
        auto info = server.Info();
        info.MaxResponseBytes = 1'000'000;
        info.RequestTimeout = 30;
        EXPECT_THAT(Get(info), Fails(27, "larger than the limit of 1000000 bytes"));
    }
    EXPECT_LT(sent, 20'000'000U); // what stood in the sockets' buffers counts as well
}

TEST(HostileServer, FloodsWithHeaders)
{
    std::string lines;
    for (int i = 0; i < 10'000; ++i)
    {
        lines += "X-Header-" + std::to_string(i) + ": value\r\n";
    }
    const RawServer many(Says("HTTP/1.1 200 OK\r\n" + lines + "Content-Length: 2\r\n\r\n{}"));
    EXPECT_THAT(Get(many.Info()), Fails(27, "the head of the answer is too large"));
    const RawServer one(
        Says("HTTP/1.1 200 OK\r\nX: " + std::string(1'000'000, 'x') + "\r\nContent-Length: 2\r\n\r\n{}"));
    EXPECT_THAT(Get(one.Info()), Fails(27, "the head of the answer is too large"));
}

TEST(HostileServer, FloodsWithInterimAnswers)
{
    std::string interim;
    for (int i = 0; i < 10'000; ++i)
    {
        interim += "HTTP/1.1 100 Continue\r\n\r\n";
    }
    const RawServer server(Says(interim + "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}"));
    EXPECT_THAT(Get(server.Info()), Fails(27, "the head of the answer is too large"));
}

TEST(HostileServer, SpeaksNoHttp)
{
    for (const char* text : {"SSH-2.0-OpenSSH_9.2\r\n", "garbage garbage garbage\r\n\r\n", "\x16\x03\x01\x02"})
    {
        const RawServer server(Says(text));
        EXPECT_THAT(Get(server.Info()), HasCode(24)) << text;
    }
    const RawServer silent([](int socket, unsigned int) { ReadRequest(socket); });
    EXPECT_THAT(Get(silent.Info()), Fails(24, "closed the connection without an answer"));
}

TEST(HostileServer, SendsDamagedGzip)
{
    const RawServer server(Says("HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Length: 12\r\n\r\nnot gzip...."));
    EXPECT_THAT(Get(server.Info()), Fails(27, "compressed answer is damaged"));
}

TEST(HostileServer, AChangeIsNotSentASecondTime)
{
    // The connection is kept, then dies under the second request.
    std::atomic<unsigned int> patches{0};
    const RawServer server(
        [&](int socket, unsigned int)
        {
            ReadRequest(socket);
            SendAll(socket, "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}");
            patches += ReadRequest(socket).rfind("PATCH", 0) == 0 ? 1U : 0U;
        });
    BMCBaseAssistant client(server.Info(), Kind);
    std::string response;
    EXPECT_THAT(client.GetData("/x", response), HasCode(0));
    std::vector<RedfishConfigResult> errors;
    EXPECT_THAT(client.PatchData("/x", "{}", errors, true, {}), Fails(24, "whether the change was done is not known"));
    EXPECT_EQ(patches, 1U);
}

TEST(HostileServer, AReadIsSentAgainWhenItsKeptConnectionDies)
{
    std::atomic<unsigned int> reads{0};
    const RawServer server(
        [&](int socket, unsigned int)
        {
            ReadRequest(socket);
            ++reads;
            SendAll(socket, "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}");
            reads += ReadRequest(socket).empty() ? 0U : 1U;
        });
    BMCBaseAssistant client(server.Info(), Kind);
    std::string response;
    EXPECT_THAT(client.GetData("/x", response), HasCode(0));
    EXPECT_THAT(client.GetData("/x", response), HasCode(0));
    EXPECT_EQ(reads, 3U);
    EXPECT_EQ(server.Accepted(), 2U);
}

TEST(HostileServer, RetriesAreAsManyAsTheRecordSays)
{
    TavrineConnection::ConnectionInfo info;
    info.Host = "127.0.0.1";
    info.Port = ClosedPort();
    info.Retries = 3;
    info.RetryPause = 1;
    const TavrineConnection::BmcConnection connection(info, {});
    std::string response;
    BMCBaseAssistant client(connection.Info(), Kind);
    EXPECT_THAT(client.GetData("/x", response), HasCode(24));
    EXPECT_EQ(connection.Counters().Requests, 4U);
    std::vector<RedfishConfigResult> errors;
    EXPECT_THAT(client.PatchData("/x", "{}", errors, true, {}), HasCode(24));
    EXPECT_EQ(connection.Counters().Requests, 5U);
}
