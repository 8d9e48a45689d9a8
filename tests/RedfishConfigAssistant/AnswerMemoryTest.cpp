// What is said of an answer when memory runs out, and that a connection still ends.

#include "AnswerResults.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>

#include "../endtoend/FailingMemory.h"
#include "BmcConnection.h"
#include "MessageRegistries.h"
#include "TestServer.h"

using namespace Tavrine;

TEST(AnswerMemory, ARefusalIsThrownOrToldAndNeverASuccess)
{
    const AnsweredRequest request{HttpVerb::Patch, true, "/settings", "bmc:443", true};
    const HttpAnswer answer{
        200, {}, R"({"error":{"@Message.ExtendedInfo":[{"MessageId":"B.PropertyUnknown","MessageArgs":["Mode"]}]}})"};
    std::size_t failures = 0;
    bool happened = true;
    for (std::size_t good = 0; happened; ++good)
    {
        std::vector<RedfishConfigResult> errors;
        try
        {
            const failingmemory::Failure failure(good);
            const int code = JudgeAnswer(request, answer, errors);
            happened = failure.Happened();
            EXPECT_EQ(code, 18) << "after " << good << " allocations";
        }
        catch (const std::bad_alloc&)
        {
            ++failures;
        }
    }
    EXPECT_GT(failures, 5U);
}

TEST(AnswerMemory, ARegistryForWhichItRanOutIsReadAgain)
{
    const ResourceReader read = [](const std::string& path, std::string& text)
    {
        text = path == "/base.json" ? R"({"Messages":{"Odd":{"Message":"Words of its own."}}})"
               : path == "/redfish/v1/Registries"
                   ? R"({"Members":[{"@odata.id":"/redfish/v1/Registries/Base"}]})"
                   : R"({"Id":"Base.1.8","Location":[{"Language":"en","Uri":"/base.json"}]})";
        return RedfishConfigResult(0, "", "");
    };
    BmcMessage message;
    message.Id = "Base.1.8.Odd";
    message.Key = "Odd";
    const std::string language = "en";
    std::size_t good = 0;
    for (bool happened = true; happened; ++good)
    {
        MessageRegistries registries;
        try
        {
            const failingmemory::Failure failure(good);
            registries.WordsOf(message, read, language);
            happened = failure.Happened();
        }
        catch (const std::bad_alloc&)
        {
        }
        EXPECT_EQ(registries.WordsOf(message, read, language), "Words of its own.") << good;
    }
    EXPECT_GT(good, 5U);
}

TEST(ConnectionMemory, AConnectionEndsWithoutALogoutWhereThereIsNoneForIt)
{
    const resttest::TestServer server(
        [](const httplib::Request& request, httplib::Response& response)
        {
            if (request.method == "POST")
            {
                response.set_header("X-Auth-Token", "a-token-that-needs-memory-of-its-own");
                response.set_header("Location", "/session");
                return resttest::AnswerJson(response, "{}", 201);
            }
            resttest::AnswerJson(response, R"({"error":{"code":"1","message":"Not now."}})", 400);
        });
    std::size_t good = 0;
    for (bool happened = true; happened; ++good)
    {
        auto connection =
            std::make_unique<TavrineConnection::BmcConnection>(server.Info(), TavrineConnection::ConnectionProfile());
        ASSERT_THAT(connection->OpenSession(), resttest::HasCode(0));
        const failingmemory::Failure failure(good);
        connection.reset();
        happened = failure.Happened();
    }
    EXPECT_GT(good, 5U);
}
