// Many front objects in many threads, on one log, one configuration, one client pool and one BMC.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <latch>
#include <map>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "GlobalConfig.h"
#include "Logging.h"
#include "RunningMachine.h"
#include "TemporaryFolder.h"

using endtoend::RunningMachine;
using namespace Tavrine;

namespace
{

constexpr unsigned int Threads = 6;
constexpr int Rounds = 3;

std::string TagOf(unsigned int thread) { return "thread-" + std::to_string(thread); }

/// A setting that no other thread changes. The registry has more of them than there are threads.
std::string OwnSetting(unsigned int thread) { return "Cpu1Tile0" + std::to_string(thread); }

/// What went wrong in a thread: gtest's own list is for one thread at a time.
class Faults
{
  public:
    void Expect(bool good, const std::string& what)
    {
        if (!good)
        {
            m_Text += what + "\n";
        }
    }
    void Expect(RedfishConfigResult result, int code, const std::string& what)
    {
        Expect(result == code, what + " answered " + std::to_string(result.ErrorCode()) + " " + result.ErrorMsg());
    }
    const std::string& Text() const { return m_Text; }

  private:
    std::string m_Text;
};

/// Every kind of reading through one object.
void ReadAll(BiosRedfishConfigProc& proc, const std::string& own, Faults& faults)
{
    SettingStringMap group;
    SettingStringMap values;
    SettingStringMap texts;
    SettingGroupMap groups;
    SettingCompareMap compared;
    faults.Expect(proc.QueryGroupSettingValues(group), 0, "QueryGroupSettingValues");
    faults.Expect(group.contains("UEFI.BootMode") && !group.contains("UEFI.AssetTag"),
                  "the configuration hides AssetTag and nothing else is missing");
    faults.Expect(proc.QuerySettingValue(own, values), 0, "QuerySettingValue");
    faults.Expect(values == SettingStringMap{{"UEFI." + own, "true"}}, "value of " + own);
    faults.Expect(proc.QueryGroupList(groups), 0, "QueryGroupList");
    faults.Expect(groups.size() > 10, "groups");
    faults.Expect(proc.QuerySettingValidValues(texts, own), 0, "QuerySettingValidValues");
    faults.Expect(proc.QuerySettingDefaultValues(texts, own), 0, "QuerySettingDefaultValues");
    faults.Expect(proc.QuerySettingDescriptions(texts, own), 0, "QuerySettingDescriptions");
    faults.Expect(proc.QuerySaveSettingValues(texts), 0, "QuerySaveSettingValues");
    faults.Expect(proc.CompareSettingDefaultValues(compared, own), 0, "CompareSettingDefaultValues");
}

/// Clients that come and go in the pool, by handle and by content, and never connect.
void UsePool(const TavrineConnection::ConnectionInfo& info)
{
    const TavrineConnection::BmcConnection other(info, {});
    TavrineConnection::ConnectionInfo alone = info;
    alone.ProfileId = 0;
    const BiosRedfishConfigProc proc(alone, SystemTypeUefi, {});
}

/// One thread's work: it reads, changes its own setting back and forth, and looks.
void Work(const TavrineConnection::ConnectionInfo& info, unsigned int thread, Faults& faults)
{
    const LogContext context(TagOf(thread));
    const std::string own = OwnSetting(thread);
    for (int round = 0; round < Rounds; ++round)
    {
        UsePool(info);
        if (round == 0)
        {
            BiosRedfishConfigProc reading(info, SystemTypeUefi, {});
            ReadAll(reading, own, faults);
        }
        BiosRedfishConfigProc changing(info, SystemTypeUefi, {});
        const bool last = round + 1 == Rounds;
        const std::string value = round % 2 == 0 ? "false" : "true";
        faults.Expect(changing.PatchSettingNewValue(own, value, last), last ? 0 : 1, "PatchSettingNewValue");
        if (last)
        {
            faults.Expect(changing.FlushChanges(), 1, "FlushChanges");
        }
        BiosRedfishConfigProc looking(info, SystemTypeUefi, {});
        SettingCompareMap pending;
        const bool differs = value == "false";
        faults.Expect(looking.CompareSettingPendingValues(pending, own), differs ? 0 : 2,
                      "CompareSettingPendingValues");
        faults.Expect(pending.contains("UEFI." + own) == differs, "what is pending of " + own);
    }
}

/// Each record stands under the tag of its own thread: one thread's setting is in no other's records.
void ExpectOwnRecords(const std::vector<LogRecord>& records)
{
    std::map<std::string, int> counts;
    for (const LogRecord& record : records)
    {
        ++counts[record.Context];
        for (unsigned int thread = 0; thread < Threads; ++thread)
        {
            const std::string entered = "try to get the current value of " + OwnSetting(thread);
            ASSERT_TRUE(record.Text.find(entered) == std::string::npos || record.Context == TagOf(thread))
                << record.Context << ": " << record.Text;
        }
    }
    for (unsigned int thread = 0; thread < Threads; ++thread)
    {
        EXPECT_GT(counts[TagOf(thread)], 100) << thread;
    }
}

/// One BMC and the threads that work on it, while what they share is taken away and brought back under them.
class Fleet
{
  public:
    Fleet()
        : m_Variable("TAVRINE_CONFIG",
                     m_Folder.Write("config.toml", "HIDDEN_CONFIG_KEYWORDS_LIST = \"AssetTag\"\n").c_str()),
          m_Machine("")
    {
        GlobalConfig::Reload();
    }
    Fleet(const Fleet&) = delete;
    Fleet& operator=(const Fleet&) = delete;
    ~Fleet() { GlobalConfig::Reload(); }

    /// @param disturb  done over and over by a thread of its own until the others have ended.
    void Run(const std::function<void(const TavrineConnection::ConnectionInfo&)>& disturb)
    {
        ASSERT_EQ(m_Machine.Error(), "");
        std::vector<Faults> faults(Threads);
        std::latch start(Threads + 1);
        std::atomic<bool> done = false;
        std::vector<std::thread> threads;
        for (unsigned int thread = 0; thread < Threads; ++thread)
        {
            threads.emplace_back(
                [&, thread]
                {
                    start.arrive_and_wait();
                    Work(m_Machine.Info(), thread, faults[thread]);
                });
        }
        std::thread disturber(
            [&]
            {
                start.arrive_and_wait();
                while (!done)
                {
                    disturb(m_Machine.Info());
                    std::this_thread::yield();
                }
            });
        std::for_each(threads.begin(), threads.end(), [](std::thread& thread) { thread.join(); });
        done = true;
        disturber.join();
        for (const Faults& fault : faults)
        {
            EXPECT_EQ(fault.Text(), "");
        }
        ExpectAllPending();
    }

    std::string LogPath() const { return (m_Folder.Path() / "log").string(); }

  private:
    void ExpectAllPending()
    {
        BiosRedfishConfigProc proc(m_Machine.Info(), SystemTypeUefi, {});
        SettingCompareMap pending;
        EXPECT_EQ(proc.CompareSettingPendingValues(pending, ""), 0);
        EXPECT_EQ(pending.size(), Threads);
    }

    testdata::TemporaryFolder m_Folder;
    testdata::ScopedEnvironment m_Variable;
    RunningMachine m_Machine;
};

} // namespace

/// Without a sink nothing is written: each record would bring the threads in step with each other, and
/// a sanitizer would see no race beside it.
TEST(Threads, ManyObjectsShareConfigurationAndClients)
{
    Fleet fleet;
    fleet.Run(
        [](const TavrineConnection::ConnectionInfo& info)
        {
            GlobalConfig::Reload();
            UsePool(info);
        });
}

TEST(Threads, ManyObjectsShareOneLog)
{
    Fleet fleet;
    const CapturingLogSink sink;
    std::string error;
    const Logging::SinkId file = Logging::AddFileSink(fleet.LogPath(), 4, error);
    ASSERT_NE(file, 0U) << error;
    fleet.Run(
        [](const TavrineConnection::ConnectionInfo&)
        {
            const CapturingLogSink passing(1);
            GlobalConfig::Reload();
        });
    EXPECT_EQ(Logging::Trouble(file), "");
    Logging::RemoveSink(file);
    ExpectOwnRecords(sink.Records());
}
