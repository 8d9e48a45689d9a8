// Every command meets every fault at every request that it makes, and has to keep one table
// of promises.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <iterator>
#include <mutex>
#include <thread>

#include "FaultPromises.h"

using namespace tooltest;

namespace
{

/// The runs of one test wait for one another less than for their BMCs.
constexpr unsigned int Workers = 4;
constexpr std::size_t MostTold = 5;

const CommandRow Commands[] = {
    {.Name = "show", .Arguments = {"show"}},
    {.Name = "showOne", .Arguments = {"show", "Setting000000"}, .Patient = true},
    {.Name = "groups", .Arguments = {"groups"}},
    {.Name = "values", .Arguments = {"values", "Setting000000"}},
    {.Name = "defaults", .Arguments = {"defaults"}},
    {.Name = "describe", .Arguments = {"describe", "Setting000000"}},
    {.Name = "schema", .Arguments = {"schema", "@/out"}},
    {.Name = "compareDefaults", .Arguments = {"compare", "defaults"}},
    {.Name = "compareFile", .Arguments = {"compare", "@/saved.conf"}},
    {.Name = "find", .Arguments = {"find", "Setting000001"}},
    {.Name = "set",
     .Arguments = {"set", "Setting000000=Disabled", "Setting000006=50"},
     .Patient = true,
     .ReadsBack = true},
    {.Name = "setUnchecked", .Arguments = {"set", "Setting000000=Disabled", "--no-check"}, .First = From::Change},
    {.Name = "setAsTask", .Arguments = {"set", "Setting000000=Disabled"}, .Tasks = true, .First = From::Change},
    {.Name = "pending", .Arguments = {"pending"}},
    {.Name = "save", .Arguments = {"save", "@/out"}},
    {.Name = "restore", .Arguments = {"restore", "@/saved.conf"}, .ReadsBack = true},
    {.Name = "restoreAndReboot", .Arguments = {"restore", "@/saved.conf", "--reboot"}, .First = From::Change},
    {.Name = "restoreAndWait",
     .Arguments = {"restore", "@/saved.conf", "--reboot", "--wait", "2"},
     .First = From::Restart},
    {.Name = "loaddefault", .Arguments = {"loaddefault", "BIOS", "--yes"}},
    {.Name = "loaddefaultOne", .Arguments = {"loaddefault", "Setting000006"}, .ReadsBack = true},
    {.Name = "loaddefaultAndWait",
     .Arguments = {"loaddefault", "BIOS", "--yes", "--reboot", "--wait", "2"},
     .First = From::Restart},
    {.Name = "loaddefaultOneAndWait",
     .Arguments = {"loaddefault", "Setting000006", "--reboot", "--wait", "2"},
     .First = From::Restart},
    {.Name = "exportCustom", .Arguments = {"custom-default", "export", "@/out"}},
    {.Name = "importCustom", .Arguments = {"custom-default", "import", "@/custom"}},
    {.Name = "reboot", .Arguments = {"reboot"}},
    {.Name = "rebootAsTask", .Arguments = {"reboot"}, .FixedCode = 24, .Tasks = true, .First = From::Change},
    {.Name = "rebootAndWait", .Arguments = {"reboot", "--wait", "2"}, .First = From::Restart},
    {.Name = "results", .Arguments = {"results"}},
};

const FaultRow Faults[] = {
    {"undone close-before", At::All, {24}, "clos|ended|broke"},
    {"close-before", At::Changes, {24}, "clos|ended|broke"},
    {"undone close-before", At::All, {24}, "clos|ended|broke", "+"},
    {"close-before", At::Changes, {24}, "clos|ended|broke", "+"},
    {"close-within", At::All, {24}, "ended|broke"},
    {"close-within 20", At::All, {24}, "ended|broke|clos"},
    {"close-after", At::All, {24}, "ended|broke"},
    {"busy 0", At::All, {33}, "not ready .503"},
    {"done busy 0", At::Changes, {33}, "not ready .503"},
    {"status 500", At::All, {32}, "500 Internal Server Error"},
    {"done status 500", At::Changes, {32}, "500 Internal Server Error"},
    {"status 404", At::All, {18, 24, 26, 28}, "404 Not Found"},
    {"status 401", At::All, {24}, "401 Unauthorized"},
    {"status 403", At::All, {24}, "403 Forbidden"},
    {"status 204", At::Reads, {26, 27, 32}, "."},
    {"status 204", At::ReadBackChanges, {18}, "does not show"},
    {"truncated", At::All, {27}, "no JSON|no usable"},
    {"truncated 0", At::All, {26, 27, 32}, "."},
    {"wrong-length", At::All, {27}, "no JSON|no usable"},
    {"garbage", At::All, {24}, "no HTTP answer"},
    {"undone garbage", At::Changes, {24}, "no HTTP answer"},
    {"garbage-json", At::All, {27}, "no JSON|no usable"},
    {"content-type", At::All, {27}, "."},
    {"huge", At::All, {27}, "larger than the limit"},
    {"huge-head", At::All, {27}, "head of the answer"},
    {"redirect-loop", At::All, {18, 24, 26, 28}, "redirects to|307", "+", true},
    {"tls-cut", At::All, {24, 27}, "ended|broke|no JSON|no usable", "", false, true},
    {"stall", At::All, {24}, "time-out", "", false, false, true},
    {"undone stall", At::Changes, {24}, "time-out", "", false, false, true},
    {"slow 40", At::All, {24}, "time-out", "", false, false, true},
};

// Every fault meets every request, those of a wait for a restart in one of the commands that have it. A program under a
// sanitizer takes many times longer to start; there each fault meets every eighth request (every sixteenth where
// threads are watched, of which the program has few), and not the same ones under the one sanitizer as under the other.
#if defined(__SANITIZE_ADDRESS__)
constexpr std::size_t Stride = 8;
constexpr std::size_t Share = 0;
#elif defined(__SANITIZE_THREAD__)
constexpr std::size_t Stride = 16;
constexpr std::size_t Share = 2;
#else
constexpr std::size_t Stride = 1;
constexpr std::size_t Share = 0;
#endif
/// One pair of so many is run again for JSON.
constexpr std::size_t JsonStride = 16 * Stride;

using Requests = std::vector<bmcsim::AccessRecord>;

/// Where the faults of a command begin.
std::size_t FirstRequest(const CommandRow& command, const Requests& requests)
{
    const auto first = std::find_if(requests.begin(), requests.end(),
                                    [&](const bmcsim::AccessRecord& request)
                                    {
                                        const bool restart = request.Path.ends_with("/ComputerSystem.Reset");
                                        return command.First == From::Start ||
                                               (command.First == From::Change && IsChange(request)) || restart;
                                    });
    return static_cast<std::size_t>(first - requests.begin());
}

/// Whether a fault that costs seconds is tried at a request: at a change where there is one, and at
/// the first look at a system that restarts.
bool HasTime(const CommandRow& command, const Requests& requests, std::size_t index)
{
    const std::size_t first = FirstRequest(command, requests);
    const auto change = std::find_if(requests.begin() + static_cast<std::ptrdiff_t>(first), requests.end(), IsChange);
    const auto silent =
        change != requests.end() ? static_cast<std::size_t>(change - requests.begin()) : requests.size() / 2;
    return command.Patient || index == silent || (command.First == From::Restart && index == silent + 1);
}

bool Fits(const FaultRow& fault, const CommandRow& command, const Requests& requests, std::size_t index)
{
    if (fault.Stalls && !HasTime(command, requests, index))
    {
        return false;
    }
    const bool patch = requests[index].Method == "PATCH";
    const bool change = requests[index].Method != "GET";
    const std::array fits = {true, change, command.ReadsBack && patch, !change};
    return fits[static_cast<std::size_t>(fault.Where)];
}

/// The rule that makes the request with this index go wrong.
std::string RuleFor(const FaultRow& fault, const Requests& requests, std::size_t index)
{
    const auto same = [&](const bmcsim::AccessRecord& request)
    { return !fault.SamePath || (request.Path == requests[index].Path && request.Method == requests[index].Method); };
    const auto count = std::count_if(requests.begin(), requests.begin() + static_cast<std::ptrdiff_t>(index) + 1, same);
    const std::string which = fault.SamePath ? requests[index].Method + " " + requests[index].Path : "* *";
    return which + " #" + std::to_string(count) + fault.Count + " " + fault.Effect;
}

/// Requests that do something, beside logins: those of a verb.
std::ptrdiff_t Changes(const FaultOutcome& outcome, const std::string& method)
{
    return std::count_if(outcome.Requests.begin(), outcome.Requests.end(),
                         [&](const bmcsim::AccessRecord& request)
                         { return IsChange(request) && !OnlyReads(request) && request.Method == method; });
}

struct Job
{
    const FaultRow* Fault;
    std::string Rule;
    std::string Request;
    bool Json = false;
};

/// The commands that wait for a restart.
std::size_t Sharers()
{
    return static_cast<std::size_t>(std::count_if(std::begin(Commands), std::end(Commands),
                                                  [](const CommandRow& row) { return row.First == From::Restart; }));
}

/// The place of one of them among them.
std::size_t OrdinalOf(const CommandRow& command)
{
    const auto* const end =
        std::find_if(std::begin(Commands), std::end(Commands),
                     [&](const CommandRow& row) { return std::string_view(row.Name) == command.Name; });
    return static_cast<std::size_t>(
        std::count_if(std::begin(Commands), end, [](const CommandRow& row) { return row.First == From::Restart; }));
}

/// What is tried of a command that makes these requests, which with --json may be others.
std::vector<Job> JobsOf(const CommandRow& command, const Requests& requests, bool json)
{
    std::vector<Job> jobs;
    // What a restart is waited out with, the commands that do so share.
    const bool shares = command.First == From::Restart;
    const std::size_t stride = shares ? Sharers() * Stride : Stride;
    const std::size_t first = FirstRequest(command, requests);
    const std::size_t start = shares ? first - OrdinalOf(command) : 0;
    for (std::size_t index = first; index < requests.size(); ++index)
    {
        for (std::size_t row = 0; row < std::size(Faults); ++row)
        {
            const FaultRow& fault = Faults[row];
            const bool chosen = json ? (3 * index + row) % JsonStride == 0 : (index - start + row) % stride == Share;
            if (chosen && Fits(fault, command, requests, index))
            {
                jobs.push_back({&fault, RuleFor(fault, requests, index),
                                requests[index].Method + " " + requests[index].Path, json});
            }
        }
    }
    return jobs;
}

class ProgramFaults : public testing::TestWithParam<CommandRow>
{
  protected:
    FaultRun RunOf(const std::vector<std::string>& options) const
    {
        FaultRun run;
        run.Arguments = GetParam().Arguments;
        run.Arguments.insert(run.Arguments.end(), options.begin(), options.end());
        run.Tasks = GetParam().Tasks;
        return run;
    }

    /// A run that nothing goes wrong in.
    FaultOutcome GoodRun(const std::vector<std::string>& options) const
    {
        FaultOutcome good = RunWithFaults(RunOf(options));
        EXPECT_EQ(good.Tool.Status, 0) << good.Tool.Errors;
        EXPECT_FALSE(HoldsASecret(good.Tool.Output + good.Tool.Errors + good.Log));
        return good;
    }

    void Try(const Job& job, const FaultOutcome& good)
    {
        // What is tried again succeeds, which is tested elsewhere.
        FaultRun run = RunOf({"--retries", "0"});
        run.Arguments.insert(run.Arguments.end(), job.Json ? 1 : 0, "--json");
        run.Rules = {job.Rule};
        run.Https = job.Fault->Https;
        run.Timeout = job.Fault->Stalls ? 1 : 0;
        const FaultOutcome ran = RunWithFaults(run);
        const std::string words = Broken({GetParam(), *job.Fault, good, ran, job.Json});
        if (!words.empty())
        {
            const std::lock_guard lock(m_Mutex);
            m_Failures.push_back(words + "\n  rule: " + job.Rule + "\n  at: " + job.Request + "\n  status: " +
                                 std::to_string(ran.Tool.Status) + "\n" + ran.Tool.Output + ran.Tool.Errors);
        }
    }

    void TryAll(const std::vector<Job>& jobs, const FaultOutcome& good, const FaultOutcome& goodJson)
    {
        std::atomic<std::size_t> next = 0;
        std::vector<std::thread> workers;
        for (unsigned int i = 0; i < Workers; ++i)
        {
            workers.emplace_back(
                [&]
                {
                    for (std::size_t at = next++; at < jobs.size(); at = next++)
                    {
                        Try(jobs[at], jobs[at].Json ? goodJson : good);
                    }
                });
        }
        for (std::thread& worker : workers)
        {
            worker.join();
        }
    }

    /// The BMC has done what it says it was too busy for: settings that are sent again are the same
    /// settings, but an action would be done twice.
    void TryPatience(const bmcsim::AccessRecord& request, const std::string& rule, const FaultOutcome& good) const
    {
        static const FaultRow busy = {"done busy 0", At::Changes, {33}, "not ready .503"};
        FaultRun run = RunOf({"--wait-ready", "30"});
        run.Rules = {rule + busy.Effect};
        const FaultOutcome ran = RunWithFaults(run);
        const bool settings = request.Method == "PATCH";
        const std::string at = run.Rules.front() + " at " + request.Path + "\n" + ran.Tool.Output + ran.Tool.Errors;
        EXPECT_EQ(ran.Tool.Status, settings ? 0 : 33) << at;
        EXPECT_EQ(Changes(ran, "PATCH"), Changes(good, "PATCH") + (settings ? 1 : 0)) << at;
        EXPECT_LE(Changes(ran, "POST"), Changes(good, "POST")) << at;
        EXPECT_EQ(Broken({GetParam(), busy, good, ran}), settings ? "a change was sent twice" : "") << at;
    }

    std::mutex m_Mutex;
    std::vector<std::string> m_Failures;
};

} // namespace

TEST_P(ProgramFaults, KeepsItsPromises)
{
    const FaultOutcome good = GoodRun({});
    const FaultOutcome goodJson = GoodRun({"--json"});
    ASSERT_FALSE(HasFailure());
    std::vector<Job> jobs = JobsOf(GetParam(), good.Requests, false);
    const std::vector<Job> jsonJobs = JobsOf(GetParam(), goodJson.Requests, true);
    jobs.insert(jobs.end(), jsonJobs.begin(), jsonJobs.end());
    TryAll(jobs, good, goodJson);
    RecordProperty("Runs", static_cast<int>(jobs.size()));
    for (std::size_t i = 0; i < std::min(m_Failures.size(), MostTold); ++i)
    {
        ADD_FAILURE() << m_Failures[i];
    }
    EXPECT_TRUE(m_Failures.empty()) << m_Failures.size() << " of " << jobs.size() << " runs broke a promise";
    for (std::size_t index = 0; index < good.Requests.size(); ++index)
    {
        if (IsChange(good.Requests[index]) && !OnlyReads(good.Requests[index]))
        {
            TryPatience(good.Requests[index], "* * #" + std::to_string(index + 1) + " ", good);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Commands, ProgramFaults, testing::ValuesIn(Commands),
                         [](const auto& row) { return std::string(row.param.Name); });
