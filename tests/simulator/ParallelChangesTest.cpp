// Many clients at once.

#include "ChangeFixture.h"
#include "SharedData.h"

#include <atomic>
#include <thread>

namespace
{

using namespace bmctest;

class ParallelChangesTest : public ChangeTest
{
  protected:
    /// Runs `work` in several threads, each with a client of its own.
    void InParallel(const std::function<void(httplib::Client&, int)>& work)
    {
        std::vector<std::thread> threads;
        for (int number = 0; number < 6; ++number)
        {
            threads.emplace_back(
                [this, &work, number]
                {
                    const auto client = Connect(*m_Simulator);
                    work(*client, number);
                });
        }
        for (std::thread& thread : threads)
        {
            thread.join();
        }
    }
};

std::string TwoValues(int number)
{
    const std::string value = std::to_string(number);
    return R"({"Attributes":{"AssetTag":")" + value + R"(","AssetOwner":")" + value + R"("}})";
}

TEST_F(ParallelChangesTest, EachChangeIsWholeAndNoneIsLost)
{
    testdata::TemporaryFolder folder;
    auto options = PlainOptions();
    options.StateFile = (folder.Path() / "state.json").string();
    StartWith(options);
    const char* const own[] = {"ContactName",   "ContactTeam",    "ServerName",
                               "AssetLocation", "DeploymentNote", "NextBootComment"};
    std::atomic<int> torn = 0;
    std::atomic<int> failed = 0;
    InParallel(
        [&](httplib::Client& client, int number)
        {
            for (int round = 0; round < 15; ++round)
            {
                const auto changed = client.Patch(SettingsPath, TwoValues(number), JsonType);
                failed += !changed || changed->status != 200 ? 1 : 0;
                const auto pending = client.Get(SettingsPath);
                const json::value values = pending ? At(Parse(pending->body), "/Attributes") : json::value();
                torn += At(values, "/AssetTag") != At(values, "/AssetOwner") ? 1 : 0;
            }
            const auto last = client.Patch(
                SettingsPath, std::string(R"({"Attributes":{")") + own[number] + R"(":"mine"}})", JsonType);
            failed += !last || last->status != 200 ? 1 : 0;
        });
    EXPECT_EQ(failed, 0);
    EXPECT_EQ(torn, 0);
    for (const char* name : own)
    {
        EXPECT_EQ(At(Pending(), std::string("/") + name), "mine") << name;
    }
    EXPECT_EQ(At(ParseFile(options.StateFile), "/Pending"), Pending());
}

TEST_F(ParallelChangesTest, ResetsBetweenChangesLeaveNoHalfValues)
{
    auto options = PlainOptions();
    options.RebootTime = std::chrono::milliseconds(2);
    StartWith(options);
    ASSERT_EQ(m_Client->Patch(SettingsPath, TwoValues(0), JsonType)->status, 200);
    Restart();
    while (At(GetJson(SystemPath), "/PowerState") != "On")
    {
        ASSERT_FALSE(HasFailure());
    }
    std::atomic<int> torn = 0;
    std::atomic<int> strange = 0;
    InParallel(
        [&](httplib::Client& client, int number)
        {
            for (int round = 0; round < 15; ++round)
            {
                const auto answer = number % 3 == 0
                                        ? client.Post(ResetPath, R"({"ResetType":"ForceRestart"})", JsonType)
                                        : client.Patch(SettingsPath, TwoValues(number), JsonType);
                strange += !answer || (answer->status != 200 && answer->status != 409) ? 1 : 0;
                const auto bios = client.Get(BiosPath);
                const json::value values = bios ? At(Parse(bios->body), "/Attributes") : json::value();
                torn += At(values, "/AssetTag") != At(values, "/AssetOwner") ? 1 : 0;
                strange += client.Get(SystemPath) && client.Post(ReadProtected, "{}", JsonType) ? 0 : 1;
            }
        });
    EXPECT_EQ(torn, 0);
    EXPECT_EQ(strange, 0);
}

TEST_F(ParallelChangesTest, OfTwoChangesUnderTheSameConditionOneIsTaken)
{
    const auto settings = m_Client->Get(SettingsPath);
    ASSERT_TRUE(settings);
    const httplib::Headers condition{{"If-Match", settings->get_header_value("ETag")}};
    std::atomic<int> taken = 0;
    std::atomic<int> refused = 0;
    InParallel(
        [&](httplib::Client& client, int number)
        {
            const auto answer = client.Patch(SettingsPath, condition, TwoValues(number), JsonType);
            taken += answer && answer->status == 200 ? 1 : 0;
            refused += answer && answer->status == 412 ? 1 : 0;
        });
    EXPECT_EQ(taken, 1);
    EXPECT_EQ(refused, 5);
}

} // namespace
