#include <atomic>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "Log.h"
#include "Logging.h"
#include "SharedData.h"
#include "TemporaryFolder.h"

namespace
{

using Tavrine::CapturingLogSink;
using Tavrine::Log;
using Tavrine::LogContext;
using Tavrine::LogRecord;
namespace Logging = Tavrine::Logging;

constexpr int Threads = 8;
constexpr int RecordsEach = 200;

void WriteFromManyThreads()
{
    std::vector<std::thread> threads;
    for (int i = 0; i < Threads; ++i)
    {
        threads.emplace_back(
            [i]
            {
                const LogContext context("bmc-" + std::to_string(i));
                for (int j = 0; j < RecordsEach; ++j)
                {
                    Log(1, "a.cpp", i).Stream() << i << ':' << j;
                }
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
}

TEST(LogThreads, EveryRecordArrivesInItsThreadsOrderWithItsTag)
{
    const CapturingLogSink sink;
    WriteFromManyThreads();
    std::map<int, int> next;
    for (const LogRecord& record : sink.Records())
    {
        const int thread = record.SourceLine;
        EXPECT_EQ(record.Text, std::to_string(thread) + ':' + std::to_string(next[thread]++));
        EXPECT_EQ(record.Context, "bmc-" + std::to_string(thread));
    }
    ASSERT_EQ(next.size(), static_cast<std::size_t>(Threads));
    for (const auto& [thread, count] : next)
    {
        EXPECT_EQ(count, RecordsEach) << thread;
    }
}

TEST(LogThreads, SinksAreCalledOneAtATime)
{
    // Plain variables on purpose: the thread sanitizer sees a second caller.
    int inside = 0;
    int overlaps = 0;
    int count = 0;
    const auto take = [&](const LogRecord&)
    {
        overlaps += ++inside == 1 ? 0 : 1;
        ++count;
        --inside;
    };
    const auto first = Logging::AddSink(4, take);
    const auto second = Logging::AddSink(4, take);
    WriteFromManyThreads();
    Logging::RemoveSink(first);
    Logging::RemoveSink(second);
    EXPECT_EQ(overlaps, 0);
    EXPECT_EQ(count, 2 * Threads * RecordsEach);
}

TEST(LogThreads, LinesOfAFileStayWhole)
{
    const testdata::TemporaryFolder folder;
    const std::string path = (folder.Path() / "x.log").string();
    std::string error;
    const auto id = Logging::AddFileSink(path, 4, error);
    ASSERT_NE(id, 0U) << error;
    WriteFromManyThreads();
    Logging::RemoveSink(id);
    const std::string content = testdata::ReadFile(path);
    std::size_t lines = 0;
    for (std::size_t at = 0; at < content.size(); ++lines)
    {
        ASSERT_EQ(content[at + 4], '-') << "a line begins with its year";
        at = content.find('\n', at) + 1;
        ASSERT_NE(at, 0U) << "the last line is whole";
    }
    EXPECT_EQ(lines, static_cast<std::size_t>(Threads * RecordsEach));
}

TEST(LogThreads, SinkIsNotRunningOnceItIsRemoved)
{
    std::atomic<bool> stop = false;
    std::thread writer(
        [&stop]
        {
            while (!stop)
            {
                Log(1, "a.cpp", 1).Stream() << "x";
            }
        });
    std::size_t taken = 0;
    for (int i = 0; i < 200; ++i)
    {
        // What the sink writes to is gone right after the removal.
        auto target = std::make_unique<std::vector<std::string>>();
        const auto id =
            Logging::AddSink(4, [raw = target.get()](const LogRecord& record) { raw->push_back(record.Text); });
        Log(1, "a.cpp", 1).Stream() << "own";
        Logging::RemoveSink(id);
        taken += target->size();
        target.reset();
    }
    stop = true;
    writer.join();
    EXPECT_GE(taken, 200U);
}

} // namespace
