#include "Log.h"

#include <chrono>
#include <locale>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Logging.h"

namespace
{

using Tavrine::CapturingLogSink;
using Tavrine::Log;
using Tavrine::LogContext;
using Tavrine::LogRecord;
using testing::ElementsAre;
namespace Logging = Tavrine::Logging;

std::vector<std::string> Texts(const std::vector<LogRecord>& records)
{
    std::vector<std::string> texts;
    for (const LogRecord& record : records)
    {
        texts.push_back(record.Text);
    }
    return texts;
}

std::vector<std::string> Contexts(const std::vector<LogRecord>& records)
{
    std::vector<std::string> contexts;
    for (const LogRecord& record : records)
    {
        contexts.push_back(record.Context);
    }
    return contexts;
}

// Tells whether it was ever formatted.
struct Formatted
{
    int* Count;
};

std::ostream& operator<<(std::ostream& stream, const Formatted& formatted)
{
    if (stream.good())
    {
        ++*formatted.Count;
    }
    return stream << "formatted";
}

// As in many languages.
struct GroupedNumbers : std::numpunct<char>
{
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
    std::string do_truename() const override { return "wahr"; }
};

TEST(Log, DestructorWritesTheWholeRecord)
{
    const CapturingLogSink sink;
    const auto before = std::chrono::system_clock::now();
    {
        Log log(3, "RedfishConfig/x/Y.cpp", 42);
        log.Stream() << "Enter " << 7;
        log.Stream() << '!';
        EXPECT_TRUE(sink.Records().empty());
    }
    const auto records = sink.Records();
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].Level, 3U);
    EXPECT_EQ(records[0].SourcePath, "RedfishConfig/x/Y.cpp");
    EXPECT_EQ(records[0].SourceLine, 42);
    EXPECT_EQ(records[0].Context, "");
    EXPECT_EQ(records[0].Text, "Enter 7!");
    EXPECT_GE(records[0].Time, before);
    EXPECT_LE(records[0].Time, std::chrono::system_clock::now());
}

TEST(Log, TheLocaleOfTheProgramDoesNotShow)
{
    const CapturingLogSink sink;
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new GroupedNumbers));
    Log(1, "a.cpp", 1).Stream() << "a limit of " << 67108864 << " bytes, " << std::boolalpha << true;
    std::locale::global(before);
    EXPECT_THAT(Texts(sink.Records()), ElementsAre("a limit of 67108864 bytes, true"));
}

TEST(Log, EmptyRecordIsWrittenToo)
{
    const CapturingLogSink sink;
    {
        const Log log(1, "a.cpp", 1);
    }
    EXPECT_THAT(Texts(sink.Records()), ElementsAre(""));
}

TEST(Log, MissingSourcePathIsEmpty)
{
    const CapturingLogSink sink;
    Log(1, nullptr, 1).Stream() << "x";
    ASSERT_EQ(sink.Records().size(), 1U);
    EXPECT_EQ(sink.Records()[0].SourcePath, "");
}

TEST(Log, StreamWithoutSinkTakesInsertionsAndFormatsNothing)
{
    int count = 0;
    {
        Log log(1, "a.cpp", 1);
        log.Stream() << "text " << 1 << Formatted{&count};
    }
    EXPECT_EQ(count, 0);
    const CapturingLogSink sink;
    Log(1, "a.cpp", 1).Stream() << Formatted{&count};
    EXPECT_EQ(count, 1);
}

TEST(Log, LevelAboveEverySinkFormatsNothing)
{
    int count = 0;
    const CapturingLogSink sink(3);
    Log(4, "a.cpp", 1).Stream() << Formatted{&count};
    EXPECT_EQ(count, 0);
    EXPECT_TRUE(sink.Records().empty());
}

TEST(Log, RecordMadeBeforeTheFirstSinkIsNotWritten)
{
    auto* log = new Log(1, "a.cpp", 1);
    const CapturingLogSink sink;
    log->Stream() << "late";
    delete log;
    EXPECT_TRUE(sink.Records().empty());
}

TEST(Log, RecordThatOutlivesTheLastSinkGoesNowhere)
{
    auto sink = std::make_unique<CapturingLogSink>();
    auto log = std::make_unique<Log>(1, "a.cpp", 1);
    log->Stream() << "text";
    sink.reset();
    log.reset();
    const CapturingLogSink other;
    EXPECT_TRUE(other.Records().empty());
}

TEST(Logging, EachSinkTakesItsLevelsOnly)
{
    const CapturingLogSink failures(1);
    const CapturingLogSink calls(3);
    const CapturingLogSink all(4);
    for (const unsigned int level : {1U, 2U, 3U, 4U, 5U})
    {
        Log(level, "a.cpp", 1).Stream() << level;
    }
    EXPECT_THAT(Texts(failures.Records()), ElementsAre("1"));
    EXPECT_THAT(Texts(calls.Records()), ElementsAre("1", "2", "3"));
    EXPECT_THAT(Texts(all.Records()), ElementsAre("1", "2", "3", "4"));
}

TEST(Logging, HighestPossibleLevelIsTaken)
{
    constexpr unsigned int highest = ~0U;
    const CapturingLogSink sink(highest);
    Log(highest, "a.cpp", 1).Stream() << "x";
    EXPECT_EQ(sink.Records().size(), 1U);
}

TEST(Logging, LevelZeroNeedsASinkOfLevelZero)
{
    {
        const Log nowhere(0, "a.cpp", 1);
    }
    const CapturingLogSink sink(0);
    Log(0, "a.cpp", 1).Stream() << "x";
    Log(1, "a.cpp", 1).Stream() << "y";
    EXPECT_THAT(Texts(sink.Records()), ElementsAre("x"));
}

TEST(Logging, RemovedSinkTakesNoMore)
{
    int count = 0;
    const auto id = Logging::AddSink(4, [&count](const LogRecord&) { ++count; });
    EXPECT_NE(id, 0U);
    Log(1, "a.cpp", 1).Stream() << "x";
    Logging::RemoveSink(id);
    Log(1, "a.cpp", 1).Stream() << "y";
    EXPECT_EQ(count, 1);
}

TEST(Logging, RemovingAnUnknownSinkChangesNothing)
{
    const CapturingLogSink sink;
    Logging::RemoveSink(0);
    Logging::RemoveSink(~0U);
    Log(1, "a.cpp", 1).Stream() << "x";
    EXPECT_EQ(sink.Records().size(), 1U);
}

TEST(Logging, EmptySinkIsNotAdded) { EXPECT_EQ(Logging::AddSink(4, {}), 0U); }

TEST(Logging, ThrowingSinkLosesItsRecordAndTellsTheFirstCause)
{
    int count = 0;
    const auto id = Logging::AddSink(4,
                                     [&count](const LogRecord&)
                                     {
                                         if (++count < 3)
                                         {
                                             throw std::runtime_error("cause " + std::to_string(count));
                                         }
                                     });
    const CapturingLogSink other;
    EXPECT_EQ(Logging::Trouble(id), "");
    for (int i = 0; i < 3; ++i)
    {
        Log(1, "a.cpp", 1).Stream() << i;
    }
    EXPECT_EQ(Logging::Trouble(id), "lost 2 log record(s): cause 1");
    EXPECT_EQ(count, 3);
    EXPECT_THAT(Texts(other.Records()), ElementsAre("0", "1", "2"));
    Logging::RemoveSink(id);
    EXPECT_EQ(Logging::Trouble(id), "");
}

TEST(Logging, SinkThatThrowsAnotherTypeIsNoticedToo)
{
    const auto id = Logging::AddSink(4, [](const LogRecord&) { throw 1; });
    Log(1, "a.cpp", 1).Stream() << "x";
    EXPECT_EQ(Logging::Trouble(id), "lost 1 log record(s): unknown failure");
    Logging::RemoveSink(id);
}

TEST(Logging, ARecordThatIsCutOffIsLostAndTold)
{
    std::size_t taken = 0;
    const Logging::SinkId sink = Logging::AddSink(4, [&](const LogRecord&) { ++taken; });
    {
        Log log(1, "x.cpp", 1);
        // As an insertion does that gets no memory.
        log.Stream() << "half of ";
        log.Stream().setstate(std::ios_base::badbit);
        log.Stream() << "a sentence";
    }
    EXPECT_EQ(taken, 0U);
    EXPECT_EQ(Logging::Trouble(sink), "lost 1 log record(s): it could not be made");
    Logging::RemoveSink(sink);
}

TEST(Logging, WhatASinkLogsItselfIsDropped)
{
    int count = 0;
    const auto id = Logging::AddSink(4,
                                     [&count](const LogRecord&)
                                     {
                                         ++count;
                                         Log(1, "sink.cpp", 1).Stream() << "from the sink";
                                     });
    Log(1, "a.cpp", 1).Stream() << "x";
    Log(1, "a.cpp", 1).Stream() << "y";
    EXPECT_EQ(count, 2);
    Logging::RemoveSink(id);
}

TEST(LogContext, TagsNestAndComeBack)
{
    const CapturingLogSink sink;
    const auto write = [] { Log(1, "a.cpp", 1).Stream() << "x"; };
    write();
    {
        const LogContext outer("bmc-a");
        write();
        {
            const LogContext inner("bmc-b");
            write();
        }
        write();
    }
    write();
    EXPECT_THAT(Contexts(sink.Records()), ElementsAre("", "bmc-a", "bmc-b", "bmc-a", ""));
}

TEST(LogContext, CurrentContextIsTheTagOfRecords)
{
    const CapturingLogSink sink;
    const LogContext context("bmc-a");
    EXPECT_EQ(Logging::CurrentContext(), "bmc-a");
    Log(1, "a.cpp", 1).Stream() << "x";
    EXPECT_THAT(Contexts(sink.Records()), ElementsAre("bmc-a"));
}

TEST(CapturingLogSink, KeepsOnlyItsOwnLifetime)
{
    Log(1, "a.cpp", 1).Stream() << "before";
    {
        const CapturingLogSink sink;
        Log(1, "a.cpp", 1).Stream() << "during";
        EXPECT_THAT(Texts(sink.Records()), ElementsAre("during"));
    }
    const CapturingLogSink later;
    EXPECT_TRUE(later.Records().empty());
}

} // namespace
