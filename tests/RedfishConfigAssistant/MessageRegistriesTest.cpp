#include "MessageRegistries.h"

#include <atomic>

#include <gtest/gtest.h>

#include "BMCBaseAssistant.h"
#include "BmcConnection.h"
#include "GivenOptions.h"
#include "LeapingClock.h"
#include "MessageTable.h"
#include "RawServer.h"
#include "TestServer.h"

using namespace Tavrine;
using namespace resttest;
using TavrineConnection::BmcConnection;

namespace
{

constexpr ConfigurateSupportedSystemType Kind = SystemTypeValueResource;
const std::string Base = "/redfish/v1/Registries";

std::string Collection(const std::vector<std::string>& members)
{
    std::string text = R"({"Members":[)";
    for (std::size_t i = 0; i < members.size(); ++i)
    {
        text += (i == 0 ? "" : ",") + std::string(R"({"@odata.id":")") + Base + "/" + members[i] + "\"}";
    }
    return text + "]}";
}

std::string File(const std::string& id, const std::string& registry, const std::string& uri)
{
    return R"({"Id":")" + id + R"(","Registry":")" + registry + R"(","Location":[{"Language":"en","Uri":")" + uri +
           R"("}]})";
}

const std::string Registry =
    R"({"Messages":{"Odd":{"Message":"The value %1 of %2 is odd."},"Plain":{"Message":"Plain words."},)"
    R"("Long":{"Message":")" +
    std::string(1001, 'x') + R"("},"Wrong":{"Message":7},"Worse":7}})";

std::string ListOf(const std::string& messages)
{
    return R"({"error":{"code":"Acme.0.10.ExtendedInfo","message":"See @Message.ExtendedInfo.",)"
           R"("@Message.ExtendedInfo":[)" +
           messages + "]}}";
}

/// A BMC with registries that answers every change alike.
class Bmc
{
  public:
    Bmc(std::string answer, std::map<std::string, std::string> resources, int status = 400)
        : m_Resources(Resources(std::move(resources))),
          m_Server(
              [this, answer = std::move(answer), status](const httplib::Request& request, httplib::Response& response)
              {
                  return request.method == "GET" && request.target != "/x" ? m_Resources(request, response)
                                                                           : AnswerJson(response, answer, status);
              })
    {
    }

    RedfishConfigResult Patch(const BmcConnection& connection)
    {
        Errors.clear();
        return BMCBaseAssistant(connection.Info(), Kind).PatchData("/x", "{}", Errors, true, {});
    }
    RedfishConfigResult Patch() { return Patch(BmcConnection(m_Server.Info(), {})); }

    const TestServer& Server() const { return m_Server; }

    std::vector<RedfishConfigResult> Errors;

  private:
    TestServer::Handler m_Resources;
    TestServer m_Server;
};

std::map<std::string, std::string> Served()
{
    return {{Base, Collection({"Base", "Acme"})},
            {Base + "/Base", File("Base", "Base.1.18", "/store/base")},
            {Base + "/Acme", File("Acme", "Acme.2.15", "/store/acme")},
            {"/store/acme", Registry}};
}

const std::vector<std::string> Reading = {"PATCH /x", "GET " + Base, "GET " + Base + "/Acme", "GET /store/acme"};

/// A refusal by forty messages, each of another registry.
std::string OfManyRegistries()
{
    std::string messages;
    for (int i = 0; i < 40; ++i)
    {
        messages += (i == 0 ? "" : ",") + std::string(R"({"MessageId":"R)") + std::to_string(i) + R"(.1.0.K"})";
    }
    return ListOf(messages);
}

} // namespace

TEST(MessageRegistries, AMessageWithoutWordsGetsThoseOfItsRegistry)
{
    Bmc bmc(
        ListOf(R"({"MessageId":"Acme.2.15.Odd","MessageArgs":["7","Mode"],"RelatedProperties":["#/Attributes/Mode"]})"),
        Served());
    EXPECT_THAT(bmc.Patch(), Fails(18, "(400 Bad Request): The value 7 of Mode is odd."));
    ASSERT_EQ(bmc.Errors.size(), 1U);
    EXPECT_THAT(bmc.Errors[0], Fails(18, "The value 7 of Mode is odd."));
    EXPECT_EQ(bmc.Server().Calls(), Reading);
    EXPECT_EQ(bmc.Server().Connections(), 1U);
}

TEST(MessageRegistries, TwoOfAKindStayTwo)
{
    Bmc bmc(ListOf(R"({"MessageId":"Acme.2.15.Odd","MessageArgs":["7","A"]},{"MessageId":"Acme.2.15.Odd",)"
                   R"("MessageArgs":["8","B"]},{"MessageId":"Acme.2.15.Odd","MessageArgs":["8","B"]})"),
            Served());
    RedfishConfigResult result = bmc.Patch();
    EXPECT_TRUE(result.ErrorMsg().ends_with(": The value 7 of A is odd. The value 8 of B is odd."))
        << result.ErrorMsg();
}

TEST(MessageRegistries, EachIsReadOnceForAConnection)
{
    Bmc bmc(ListOf(R"({"MessageId":"Acme.2.15.Plain"},{"MessageId":"Acme.2.15.Missing"})"), Served());
    const BmcConnection connection(bmc.Server().Info(), {});
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_THAT(bmc.Patch(connection), Fails(18, "Plain words. Acme.2.15.Missing"));
    }
    std::vector<std::string> calls = Reading;
    calls.insert(calls.end(), 2, "PATCH /x");
    EXPECT_EQ(bmc.Server().Calls(), calls);
}

TEST(MessageRegistries, OneThatCannotBeHadIsAskedForOnceAndTheIdShown)
{
    struct Row
    {
        const char* Name;
        std::map<std::string, std::string> Resources;
        std::size_t Reads;
    };
    const std::string file = Base + "/Acme";
    const Row rows[] = {
        {"no collection", {}, 1},
        {"broken collection", {{Base, "no JSON"}}, 1},
        {"not listed", {{Base, Collection({})}}, 1},
        {"no file", {{Base, Collection({"Acme"})}}, 2},
        {"broken file", {{Base, Collection({"Acme"})}, {file, "no JSON"}}, 2},
        {"another", {{Base, Collection({"Acme"})}, {file, File("Acme", "Acme.3.0", "/store/acme")}}, 2},
        {"no text", {{Base, Collection({"Acme"})}, {file, File("Acme", "Acme.2.15", "/store/acme")}}, 3},
        {"elsewhere", {{Base, Collection({"Acme"})}, {file, File("Acme", "Acme.2.15", "http://evil.example/acme")}}, 2},
        {"broken text",
         {{Base, Collection({"Acme"})}, {file, File("Acme", "Acme.2.15", "/store/acme")}, {"/store/acme", "{"}},
         3},
        {"odd text",
         {{Base, Collection({"Acme"})},
          {file, File("Acme", "Acme.2.15", "/store/acme")},
          {"/store/acme", R"({"Messages":7})"}},
         3},
        {"too large",
         {{Base, Collection({"Acme"})},
          {file, File("Acme", "Acme.2.15", "/store/acme")},
          {"/store/acme", Registry + std::string(8'500'000, ' ')}},
         3},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.Name);
        Bmc bmc(ListOf(R"({"MessageId":"Acme.2.15.Plain"})"), row.Resources);
        const BmcConnection connection(bmc.Server().Info(), {});
        for (int i = 0; i < 2; ++i)
        {
            RedfishConfigResult result = bmc.Patch(connection);
            EXPECT_THAT(result, HasCode(18));
            EXPECT_TRUE(result.ErrorMsg().ends_with(": Acme.2.15.Plain")) << result.ErrorMsg();
        }
        EXPECT_EQ(bmc.Server().Calls().size(), 2 + row.Reads);
    }
}

TEST(MessageRegistries, TextsOfWrongShapeAreNoTexts)
{
    for (const char* key : {"Long", "Wrong", "Worse", "Missing", ""})
    {
        Bmc bmc(ListOf(R"({"MessageId":"Acme.2.15.)" + std::string(key) + R"("})"), Served());
        EXPECT_THAT(bmc.Patch(), Fails(18, std::string("Acme.2.15.") + key)) << key;
    }
}

TEST(MessageRegistries, AreReadUpToTheLimits)
{
    const auto told = [](const std::string& registry)
    {
        std::map<std::string, std::string> resources = Served();
        resources["/store/acme"] = registry;
        Bmc bmc(ListOf(R"({"MessageId":"Acme.2.15.Last"})"), resources);
        return bmc.Patch().ErrorMsg();
    };
    const std::string last = R"("Last":{"Message":"Last words."}}})";
    const auto ofBytes = [&](std::size_t bytes)
    {
        const std::string start = R"({"Messages":{)";
        return start + std::string(bytes - start.size() - last.size(), ' ') + last;
    };
    constexpr std::size_t mostBytes = std::size_t{8} * 1024 * 1024;
    EXPECT_TRUE(told(ofBytes(mostBytes)).ends_with("Last words."));
    EXPECT_TRUE(told(ofBytes(mostBytes + 1)).ends_with("Acme.2.15.Last"));

    std::string texts = R"({"Messages":{)";
    for (int i = 1; i < 5000; ++i)
    {
        texts += "\"T" + std::to_string(i) + R"(":{"Message":"x"},)";
    }
    EXPECT_TRUE(told(texts + last).ends_with("Last words."));
    EXPECT_TRUE(told(texts + R"("More":{"Message":"x"},)" + last).ends_with("Acme.2.15.Last"));
}

TEST(MessageRegistries, NothingIsReadWhereNothingIsMissing)
{
    struct Row
    {
        int Status;
        std::string Answer;
    };
    const Row rows[] = {
        // All is well.
        {204, ""},
        {200, ListOf(R"({"MessageId":"Acme.2.15.Plain"})")},
        {200, R"({"@Message.ExtendedInfo":[{"MessageId":"Acme.2.15.Plain","Severity":"Warning"}]})"},
        {200, ListOf(R"({"MessageId":"Acme.2.15.SystemResetRequired"})")},
        // The words are there, or the table has them, or there is no registry to ask.
        {400, ListOf(R"({"MessageId":"Acme.2.15.Plain","Message":"Own words."})")},
        {400, ListOf(R"({"MessageId":"Base.1.18.PropertyUnknown","MessageArgs":["A"]})")},
        {400, ListOf(R"({"MessageId":"Plain"})")},
        {400, ListOf(R"({"MessageId":"Acme.2.15.Plain","Severity":"OK"})")},
        {400, ""},
        // The BMC has no time, or does not know the caller.
        {503, ListOf(R"({"MessageId":"Acme.2.15.Plain"})")},
        {400, ListOf(R"({"MessageId":"Acme.2.15.Plain"},{"MessageId":"Base.1.18.ServiceShuttingDown"})")},
        {401, ListOf(R"({"MessageId":"Acme.2.15.Plain"})")},
    };
    for (const Row& row : rows)
    {
        Bmc bmc(row.Answer, Served(), row.Status);
        bmc.Patch();
        EXPECT_EQ(bmc.Server().Calls(), std::vector<std::string>{"PATCH /x"}) << row.Status << " " << row.Answer;
    }
}

TEST(MessageRegistries, ServeEveryVerbAndTheTasks)
{
    const std::string answer = ListOf(R"({"MessageId":"Acme.2.15.Plain"})");
    Bmc bmc(answer, Served());
    BmcConnection connection(bmc.Server().Info(), {});
    std::string response;
    EXPECT_THAT(connection.Get("/x", response), Fails(26, ": Plain words."));
    EXPECT_THAT(connection.Post("/x", "{}", response, 30), Fails(28, ": Plain words."));
    EXPECT_EQ(bmc.Server().Calls().size(), 5U);

    auto resources = Served();
    Bmc second(R"({"@odata.id":"/t","TaskState":"Exception","Messages":[{"MessageId":"Acme.2.15.Plain"}]})", resources,
               202);
    EXPECT_THAT(second.Patch(), Fails(18, "ended as Exception: Plain words."));
}

TEST(MessageRegistries, ARefusedLoginIsNotFollowedByReads)
{
    for (const int status : {400, 401, 403})
    {
        Bmc bmc(ListOf(R"({"MessageId":"Acme.2.15.Plain"})"), Served(), status);
        BmcConnection connection(bmc.Server().Info(), {});
        EXPECT_NE(connection.OpenSession(), 0);
        EXPECT_EQ(bmc.Server().Calls().size(), 1U) << status;
    }
}

TEST(MessageRegistries, ReadsOpenNoNewSession)
{
    std::atomic<int> logins{0};
    const TestServer server(
        [&](const httplib::Request& request, httplib::Response& response)
        {
            response.set_header("X-Auth-Token", "token");
            if (request.method == "POST")
            {
                ++logins;
                return AnswerJson(response, "{}", 201);
            }
            // The session ends with the refusal.
            request.method == "PATCH" ? AnswerJson(response, ListOf(R"({"MessageId":"Acme.2.15.Plain"})"), 400)
                                      : AnswerJson(response, "{}", 401);
        });
    BmcConnection connection(server.Info(), {});
    EXPECT_THAT(connection.OpenSession(), HasCode(0));
    std::vector<RedfishConfigResult> errors;
    EXPECT_THAT(BMCBaseAssistant(connection.Info(), Kind).PatchData("/x", "{}", errors, true, {}),
                Fails(18, ": Acme.2.15.Plain"));
    EXPECT_EQ(logins, 1);
    EXPECT_EQ(server.Calls().size(), 3U);
}

TEST(MessageRegistries, ALostConnectionUnderAReadIsNoFailure)
{
    const std::string answer = ListOf(R"({"MessageId":"Acme.2.15.Plain"})");
    const RawServer server(
        [&](int socket, unsigned int)
        {
            if (ReadRequest(socket).rfind("PATCH", 0) == 0)
            {
                SendAll(socket, "HTTP/1.1 400 Bad Request\r\nContent-Length: " + std::to_string(answer.size()) +
                                    "\r\n\r\n" + answer);
                ReadRequest(socket);
            }
        });
    std::vector<RedfishConfigResult> errors;
    EXPECT_THAT(BMCBaseAssistant(server.Info(), Kind).PatchData("/x", "{}", errors, true, {}),
                Fails(18, ": Acme.2.15.Plain"));
}

TEST(MessageRegistries, NotMoreThanEightAreAskedFor)
{
    Bmc bmc(OfManyRegistries(), {{Base, Collection({})}});
    EXPECT_THAT(bmc.Patch(), Fails(18, "R39.1.0.K"));
    EXPECT_EQ(bmc.Server().Calls().size(), 1U + 8U);
}

TEST(MessageRegistries, AreReadWithinTheLongestTimeOfARequest)
{
    for (const auto& [longest, given] : {std::pair<std::uint16_t, std::intptr_t>{2, 2'000}, {0, 5'000}, {9, 5'000}})
    {
        Bmc bmc(ListOf(R"({"MessageId":"Acme.2.15.Plain"})"), {});
        TavrineConnection::ConnectionProfile profile;
        profile.LongestRequest = longest;
        const BmcConnection connection(bmc.Server().Info(), profile);
        const GivenOptions times(CURLOPT_TIMEOUT_MS);
        EXPECT_THAT(bmc.Patch(connection), HasCode(18));
        ASSERT_EQ(times.Values().size(), 2U);
        EXPECT_EQ(times.Values()[1], given) << longest;
    }
}

TEST(MessageRegistries, NoneIsAskedForInTheLastOfFifteenSeconds)
{
    LeapingClock clock;
    std::atomic<std::size_t> reads{0};
    const TestServer server(
        [&, refusal = OfManyRegistries()](const httplib::Request& request, httplib::Response& response)
        {
            if (request.method == "PATCH")
            {
                AnswerJson(response, refusal, 400);
                return;
            }
            clock.Leap(std::chrono::milliseconds(++reads < 5 ? 2'500 : 4'200));
            AnswerJson(response, Collection({}));
        });
    const GivenOptions times(CURLOPT_TIMEOUT_MS);
    std::vector<RedfishConfigResult> errors;
    EXPECT_THAT(BMCBaseAssistant(server.Info(), Kind).PatchData("/x", "{}", errors, true, {}), Fails(18, "R39.1.0.K"));
    EXPECT_EQ(server.Calls().size(), 1U + 5U);
    EXPECT_EQ(times.Values().size(), 1U + 5U);
    EXPECT_THAT(times.Values(), testing::Each(testing::Ge(1'000)));
}

TEST(MessageRegistries, SecretsInWordsAreBlottedOut)
{
    Bmc bmc(ListOf(R"({"MessageId":"Acme.2.15.Odd","MessageArgs":["password","Mode"]})"), Served());
    EXPECT_THAT(bmc.Patch(), Fails(18, "The value ******** of Mode is odd."));
}

TEST(MessageRegistries, VersionsThatServe)
{
    struct Row
    {
        std::string Id;
        std::string Registry;
        bool Serves;
    };
    const Row rows[] = {
        {"Acme.2.15", "Acme.2.15", true},
        {"Acme.2.15", "Acme.2.15.0", true},
        {"Acme.2.15.3", "Acme.2.15", true},
        {"Acme.v2_15_0", "Acme.2.15.1", true},
        {"Acme.2.15", "Acme.2.17", true},
        {"Acme.2.15", "Acme.3.15", false},
        {"Acme.2.15", "AcmeEvents.2.15", false},
        {"Acme.2.15", "acme.2.15", false},
        {"Acme.2.15", "Acme", false},
        {"Own", "Own", true},
        {"Own", "Own.1.0", false},
        {"Own.Part.1.2", "Own.Part.1.2.7", true},
        {"Own.1", "Own.1", true},
        {"Own.1", "Own.1.0", false},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.Id + " " + row.Registry);
        // By the name of the member, and by what its file says.
        Bmc named(ListOf(R"({"MessageId":")" + row.Id + R"(.Plain"})"),
                  {{Base, Collection({row.Registry})},
                   {Base + "/" + row.Registry, File("x", row.Registry, "/store/r")},
                   {"/store/r", Registry}});
        EXPECT_THAT(named.Patch(), Fails(18, row.Serves ? ": Plain words." : ": " + row.Id + ".Plain"));
        Bmc filed(
            ListOf(R"({"MessageId":")" + row.Id + R"(.Plain"})"),
            {{Base, Collection({"x"})}, {Base + "/x", File("x", row.Registry, "/store/r")}, {"/store/r", Registry}});
        EXPECT_THAT(filed.Patch(), Fails(18, row.Serves ? ": Plain words." : ": " + row.Id + ".Plain"));
    }
}

TEST(MessageRegistries, TheSameVersionGoesBeforeItsLikes)
{
    Bmc bmc(ListOf(R"({"MessageId":"Acme.2.15.Plain"})"),
            {{Base, Collection({"Acme.2.14", "Acme.a", "Acme.b"})},
             {Base + "/Acme.2.14", File("Acme.2.14", "Acme.2.14", "/store/old")},
             {Base + "/Acme.a", File("a", "Acme.2.20", "/store/new")},
             {Base + "/Acme.b", File("b", "Acme.2.15.1", "/store/right")},
             {"/store/right", Registry}});
    EXPECT_THAT(bmc.Patch(), Fails(18, ": Plain words."));
    EXPECT_EQ(bmc.Server().Calls().back(), "GET /store/right");
}

TEST(MessageRegistries, NotMoreThanTwentyFilesAreRead)
{
    std::vector<std::string> members;
    std::map<std::string, std::string> resources;
    for (int i = 0; i < 30; ++i)
    {
        members.push_back("R" + std::to_string(i));
        resources[Base + "/" + members.back()] = File(members.back(), members.back() + ".1.0", "/none");
    }
    resources[Base] = Collection(members);
    Bmc bmc(ListOf(R"({"MessageId":"Acme.2.15.Plain"})"), resources);
    EXPECT_THAT(bmc.Patch(), Fails(18, "Acme.2.15.Plain"));
    EXPECT_EQ(bmc.Server().Calls().size(), 1U + 1U + 20U);
}
