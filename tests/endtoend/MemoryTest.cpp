// What becomes of objects and log records when memory runs out.
#include <gtest/gtest.h>

#include <new>
#include <optional>
#include <string>

#include "BiosRedfishConfigProc.h"
#include "FailingMemory.h"
#include "Log.h"
#include "Logging.h"

using failingmemory::Failure;
using failingmemory::Held;
using namespace Tavrine;

namespace
{

TavrineConnection::ConnectionInfo Connection()
{
    return {.Host = "a host whose name needs memory of its own", .User = "", .Password = ""};
}

/// Fails at the first allocation, at the second and so on until there is none left to fail.
/// @return how often it failed.
template <class Work> std::size_t FailEverywhere(const Work& work)
{
    constexpr std::size_t Most = 10'000;
    for (std::size_t good = 0; good < Most; ++good)
    {
        const std::ptrdiff_t before = Held();
        bool done = false;
        bool happened = false;
        try
        {
            const Failure failure(good);
            work();
            done = true;
            happened = failure.Happened();
        }
        catch (const std::bad_alloc&)
        {
        }
        EXPECT_EQ(Held(), before) << "after " << good << " allocations";
        if (done)
        {
            EXPECT_FALSE(happened) << "allocation " << good << " failed and nobody heard of it";
            return good;
        }
    }
    ADD_FAILURE() << "no end of allocations";
    return 0;
}

TEST(Memory, AFrontObjectIsMadeWholeOrNotAtAll)
{
    const TavrineConnection::ConnectionInfo connection = Connection();
    const auto make = [&] { const BiosRedfishConfigProc front(connection, SystemTypeUefi, {}); };
    // What all objects of a connection share is there from now on.
    const BiosRedfishConfigProc other(connection, SystemTypeBios, {});
    EXPECT_GT(FailEverywhere(make), 5U);
}

TEST(Memory, ACopyIsMadeWholeOrNotAtAll)
{
    BiosRedfishConfigProc front(Connection(), SystemTypeUefi, {});
    front.SetPrefix("A prefix that needs memory of its own", "Another prefix that needs memory");
    EXPECT_GT(FailEverywhere([&] { const BiosRedfishConfigProc copy = front; }), 1U);
    EXPECT_EQ(front.m_Prefix, "A prefix that needs memory of its own");
}

TEST(Memory, ARecordThatCannotBeMadeIsLostAndTold)
{
    std::string taken;
    taken.reserve(200);
    const auto write = [&](std::size_t good)
    {
        std::optional<Log> log(std::in_place, 1, __FILE__, __LINE__);
        log->Stream() << "a record that needs memory of its own";
        const Failure failure(good);
        log.reset();
        return failure.Happened();
    };
    const Logging::SinkId sink = Logging::AddSink(4, [&](const LogRecord& record) { taken = record.Text; });
    std::size_t lost = 0;
    while (lost < 100 && write(lost))
    {
        EXPECT_EQ(taken, "");
        ++lost;
        EXPECT_EQ(Logging::Trouble(sink), "lost " + std::to_string(lost) + " log record(s): std::bad_alloc");
    }
    EXPECT_GT(lost, 0U);
    EXPECT_EQ(taken, "a record that needs memory of its own");
    Logging::RemoveSink(sink);
}

} // namespace
