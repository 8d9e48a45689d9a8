// Many front objects in many threads, on one log, one configuration, one client pool and one BMC.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
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

/// One thread's work: it reads, changes its own setting back and forth, and looks.
void Work(const TavrineConnection::ConnectionInfo& info, unsigned int thread, Faults& faults)
{
    const LogContext context(TagOf(thread));
    const std::string own = OwnSetting(thread);
    for (int round = 0; round < Rounds; ++round)
    {
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

} // namespace

TEST(Threads, ManyObjectsShareLogConfigurationAndClients)
{
    const testdata::TemporaryFolder folder;
    const testdata::ScopedEnvironment variable(
        "TAVRINE_CONFIG", folder.Write("config.toml", "HIDDEN_CONFIG_KEYWORDS_LIST = \"AssetTag\"\n").c_str());
    GlobalConfig::Reload();
    RunningMachine machine("");
    ASSERT_EQ(machine.Error(), "");
    std::vector<Faults> faults(Threads);
    const CapturingLogSink sink;
    {
        std::string error;
        const Logging::SinkId file = Logging::AddFileSink((folder.Path() / "log").string(), 4, error);
        ASSERT_NE(file, 0U) << error;
        std::latch start(Threads + 1);
        std::atomic<bool> done = false;
        std::vector<std::thread> threads;
        for (unsigned int thread = 0; thread < Threads; ++thread)
        {
            threads.emplace_back(
                [&, thread]
                {
                    start.arrive_and_wait();
                    Work(machine.Info(), thread, faults[thread]);
                });
        }
        // What these share is taken away and brought back under them.
        std::thread disturber(
            [&]
            {
                start.arrive_and_wait();
                while (!done)
                {
                    GlobalConfig::Reload();
                    const CapturingLogSink passing(1);
                    const TavrineConnection::BmcConnection other(machine.Info(), {});
                    std::this_thread::yield();
                }
            });
        std::for_each(threads.begin(), threads.end(), [](std::thread& thread) { thread.join(); });
        done = true;
        disturber.join();
        EXPECT_EQ(Logging::Trouble(file), "");
        Logging::RemoveSink(file);
    }
    for (const Faults& fault : faults)
    {
        EXPECT_EQ(fault.Text(), "");
    }
    ExpectOwnRecords(sink.Records());
    BiosRedfishConfigProc proc(machine.Info(), SystemTypeUefi, {});
    SettingCompareMap pending;
    EXPECT_EQ(proc.CompareSettingPendingValues(pending, ""), 0);
    EXPECT_EQ(pending.size(), Threads);
    GlobalConfig::Reload();
}
