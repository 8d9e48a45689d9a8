// What --retries and --wait-ready make of faults that pass.

#include <gtest/gtest.h>

#include <algorithm>

#include "FaultRun.h"

using namespace tooltest;

namespace
{

const std::vector<std::string> Show = {"show"};
const std::vector<std::string> Set = {"set", "Setting000000=Disabled", "Setting000006=50"};
constexpr const char* Waiting = "tavrine: [bmc] is busy, trying again in ";

FaultOutcome RunWith(std::vector<std::string> arguments, const std::vector<std::string>& options,
                     const std::vector<std::string>& rules)
{
    FaultRun run;
    run.Arguments = std::move(arguments);
    run.Arguments.insert(run.Arguments.end(), options.begin(), options.end());
    run.Rules = rules;
    return RunWithFaults(run);
}

std::size_t Count(const FaultOutcome& outcome, const std::string& method)
{
    return static_cast<std::size_t>(std::count_if(outcome.Requests.begin(), outcome.Requests.end(),
                                                  [&](const auto& request) { return request.Method == method; }));
}

std::size_t Count(const std::string& text, const std::string& part)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size()))
    {
        ++count;
    }
    return count;
}

} // namespace

TEST(ProgramFaultsRetry, AReadThatFailsForAWhileSucceeds)
{
    const FaultOutcome good = RunWith(Show, {}, {});
    for (const char* path : {"/redfish/v1/Systems", "*/Bios"})
    {
        const std::string reads = std::string("GET ") + path;
        const FaultOutcome again = RunWith(Show, {}, {reads + " #1-2 close-within"});
        EXPECT_EQ(again.Tool.Status, 0) << again.Tool.Errors;
        EXPECT_EQ(again.Tool.Output, good.Tool.Output);
        EXPECT_EQ(again.Requests.size(), good.Requests.size() + 2);
        const FaultOutcome never = RunWith(Show, {"--retries", "1"}, {reads + " close-within"});
        EXPECT_EQ(never.Tool.Status, 24) << never.Tool.Errors;
    }
}

TEST(ProgramFaultsRetry, AChangeIsSentOnceAndLookedAtAfterwards)
{
    const FaultOutcome done = RunWith(Set, {"--retries", "20"}, {"PATCH * close-before"});
    EXPECT_EQ(done.Tool.Status, 0) << done.Tool.Errors;
    EXPECT_EQ(Count(done, "PATCH"), 1U);
    const FaultOutcome lost = RunWith(Set, {"--retries", "20"}, {"PATCH * undone close-before"});
    EXPECT_EQ(lost.Tool.Status, 24) << lost.Tool.Errors;
    EXPECT_EQ(Count(lost, "PATCH"), 1U);
    EXPECT_EQ(lost.State, StateBefore());
}

TEST(ProgramFaultsRetry, ABusyBmcIsWaitedOutAtAnyRequest)
{
    const FaultOutcome good = RunWith(Set, {}, {});
    for (const char* requests : {"POST *", "GET */Bios", "PATCH *", "GET */Settings"})
    {
        const std::string rule = std::string(requests) + " #1-2 busy 0";
        const FaultOutcome waited = RunWith(Set, {"--wait-ready", "60"}, {rule});
        EXPECT_EQ(waited.Tool.Status, 0) << rule << "\n" << waited.Tool.Errors;
        EXPECT_EQ(waited.Tool.Output, good.Tool.Output) << rule;
        EXPECT_EQ(waited.State, good.State) << rule;
        EXPECT_EQ(Count(waited.Tool.Errors, Waiting), 2U) << rule << "\n" << waited.Tool.Errors;
    }
    const FaultOutcome impatient = RunWith(Set, {}, {"PATCH * #1 busy 0"});
    EXPECT_EQ(impatient.Tool.Status, 33) << impatient.Tool.Errors;
    EXPECT_EQ(impatient.State, StateBefore());
}

TEST(ProgramFaultsRetry, PatienceEnds)
{
    const FaultOutcome busy = RunWith(Show, {"--wait-ready", "2"}, {"* * busy 1"});
    EXPECT_EQ(busy.Tool.Status, 33) << busy.Tool.Errors;
    EXPECT_EQ(Count(busy, "POST"), 3U);
    EXPECT_EQ(Count(busy.Tool.Errors, Waiting), 2U) << busy.Tool.Errors;
    const FaultOutcome longer = RunWith(Show, {"--wait-ready", "59"}, {"* * busy 60"});
    EXPECT_EQ(longer.Tool.Status, 33) << longer.Tool.Errors;
    EXPECT_EQ(Count(longer, "POST"), 1U);
    EXPECT_NE(longer.Tool.Errors.find("after 60 s"), std::string::npos) << longer.Tool.Errors;
}
