// Every command meets every fault at every request that it makes, and has to keep one table
// of promises.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <functional>
#include <iterator>
#include <mutex>
#include <ostream>
#include <regex>
#include <set>
#include <sstream>
#include <thread>

#include "FaultRun.h"

using namespace tooltest;

namespace
{

/// The runs of one test wait for one another less than for their BMCs.
constexpr unsigned int Workers = 4;
constexpr std::size_t MostTold = 5;
constexpr const char* PendingUnread = "values that wait for a reboot could not be read";

struct CommandRow
{
    const char* Name;
    std::vector<std::string> Arguments;
    /// The code that the library gives every failed read of this command; 0 where the
    /// cause has its own.
    int FixedCode = 0;
    bool Tasks = false;
    /// Meets faults that cost seconds, too.
    bool Patient = false;
    /// Looks afterwards at what became of a PATCH.
    bool ReadsBack = false;
    /// What comes before its first change, another command goes through as well.
    bool FromChangeOn = false;
};

const CommandRow Commands[] = {
    {.Name = "show", .Arguments = {"show"}, .FixedCode = 26},
    {.Name = "showOne", .Arguments = {"show", "Setting000000"}, .Patient = true},
    {.Name = "groups", .Arguments = {"groups"}},
    {.Name = "values", .Arguments = {"values", "Setting000000"}},
    {.Name = "defaults", .Arguments = {"defaults"}},
    {.Name = "describe", .Arguments = {"describe", "Setting000000"}},
    {.Name = "schema", .Arguments = {"schema", "@/out"}},
    {.Name = "compareDefaults", .Arguments = {"compare", "defaults"}},
    {.Name = "compareFile", .Arguments = {"compare", "@/saved.conf"}, .FixedCode = 26},
    {.Name = "find", .Arguments = {"find", "Setting000001"}},
    {.Name = "set",
     .Arguments = {"set", "Setting000000=Disabled", "Setting000006=50"},
     .Patient = true,
     .ReadsBack = true},
    {.Name = "setUnchecked", .Arguments = {"set", "Setting000000=Disabled", "--no-check"}, .FromChangeOn = true},
    {.Name = "setAsTask", .Arguments = {"set", "Setting000000=Disabled"}, .Tasks = true, .FromChangeOn = true},
    {.Name = "pending", .Arguments = {"pending"}},
    {.Name = "save", .Arguments = {"save", "@/out"}},
    {.Name = "restore", .Arguments = {"restore", "@/saved.conf"}, .ReadsBack = true},
    {.Name = "restoreAndReboot", .Arguments = {"restore", "@/saved.conf", "--reboot"}, .FromChangeOn = true},
    {.Name = "loaddefault", .Arguments = {"loaddefault", "BIOS", "--yes"}},
    {.Name = "loaddefaultOne", .Arguments = {"loaddefault", "Setting000006"}, .ReadsBack = true},
    {.Name = "exportCustom", .Arguments = {"custom-default", "export", "@/out"}},
    {.Name = "importCustom", .Arguments = {"custom-default", "import", "@/custom"}},
    {.Name = "reboot", .Arguments = {"reboot"}},
    {.Name = "rebootAsTask", .Arguments = {"reboot"}, .Tasks = true, .FromChangeOn = true},
    {.Name = "results", .Arguments = {"results"}},
};

/// Which requests a fault is worth trying at.
enum class At
{
    All,
    /// What makes a difference only where something is asked to be done.
    Changes,
    /// Changes whose outcome the command looks at.
    ReadBackChanges,
    Reads,
};

void PrintTo(const CommandRow& row, std::ostream* stream) { *stream << row.Name; }

struct FaultRow
{
    const char* Effect;
    At Where;
    /// The codes that a failed run may end with.
    std::set<int> Codes;
    /// Some word of the cause stands on standard error.
    const char* Cause;
    /// The rule's count goes on from the request on, for all requests or those of its path.
    const char* Count = "";
    bool SamePath = false;
    bool Https = false;
    bool Stalls = false;
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

bool IsChange(const bmcsim::AccessRecord& request)
{
    return request.Method != "GET" && request.Path.find("/Sessions") == std::string::npos;
}

bool Matches(const std::string& text, const char* pattern) { return std::regex_search(text, std::regex(pattern)); }

std::multiset<std::string> Lines(const std::string& text)
{
    std::istringstream stream(text);
    std::multiset<std::string> lines;
    for (std::string line; std::getline(stream, line);)
    {
        lines.insert(line);
    }
    return lines;
}

/// A run with a fault, beside the one without.
struct Case
{
    const CommandRow& Command;
    const FaultRow& Fault;
    const FaultOutcome& Good;
    const FaultOutcome& Ran;

    bool Succeeded() const { return Ran.Tool.Status == 0; }
    std::string Texts() const { return Ran.Tool.Output + Ran.Tool.Errors; }
};

std::string Crash(const Case& of)
{
    return of.Ran.Tool.Killed || of.Ran.Tool.Status >= 64 ? "it crashed, hung or refused its command line" : "";
}

std::string Secret(const Case& of)
{
    return HoldsASecret(of.Texts()) || HoldsASecret(of.Ran.Log) ? "a secret is told" : "";
}

std::string Code(const Case& of)
{
    const int status = of.Ran.Tool.Status;
    if (of.Succeeded())
    {
        return "";
    }
    if (status != of.Command.FixedCode && !of.Fault.Codes.contains(status))
    {
        return "the code is wrong";
    }
    return of.Ran.Tool.Errors.find("tavrine: " + std::to_string(status) + " ") == std::string::npos
               ? "standard error has no line with the code"
               : "";
}

std::string NameAndCause(const Case& of)
{
    if (of.Succeeded())
    {
        return "";
    }
    if (of.Ran.Tool.Errors.find("[bmc]") == std::string::npos)
    {
        return "the BMC is not named";
    }
    return Matches(of.Ran.Tool.Errors, of.Fault.Cause) ? "" : "the cause is not told";
}

/// What is shown is what a run without faults shows, or said to be unknown.
std::string ShownValues(const Case& of)
{
    const auto good = Lines(of.Good.Tool.Output);
    if (Matches(of.Ran.Tool.Errors, PendingUnread))
    {
        return "";
    }
    for (const std::string& line : Lines(of.Ran.Tool.Output))
    {
        if (!good.contains(line) && !Matches(line, "unknown|not known|not sent|not changed|not restarted"))
        {
            return "shown without being known: " + line;
        }
    }
    const bool whole = Lines(of.Ran.Tool.Output).size() == good.size();
    return of.Succeeded() && !whole ? "a successful run shows less" : "";
}

std::string Claims(const Case& of)
{
    static const std::string before = StateBefore();
    const bool untouched = of.Ran.State == before;
    const bool done = of.Ran.State == of.Good.State;
    const std::string texts = of.Texts();
    if (of.Succeeded())
    {
        return done ? "" : "it claims success, but the BMC is in another state";
    }
    if (!untouched && Matches(texts, "nothing was sent|was not done") && !Matches(texts, "not known"))
    {
        return "something was done, and it denies that";
    }
    if (!untouched && of.Ran.Tool.Output.empty() && !Matches(texts, "not known|unknown|BMC shows"))
    {
        return "something was done, and it does not tell";
    }
    return "";
}

std::string Repetition(const Case& of)
{
    // These two say that nothing was done.
    if (Matches(of.Fault.Effect, "busy|401"))
    {
        return "";
    }
    const auto changes = [](const FaultOutcome& outcome)
    { return std::count_if(outcome.Requests.begin(), outcome.Requests.end(), IsChange); };
    return changes(of.Ran) > changes(of.Good) ? "a change was sent twice" : "";
}

std::string FilesOnDisk(const Case& of)
{
    for (const auto& [name, content] : of.Ran.Files)
    {
        const auto good = of.Good.Files.find(name);
        const bool whole = good != of.Good.Files.end() && good->second == content;
        const bool old = name == "out" && content == OldOutput;
        if (of.Succeeded() && !whole && !old && Matches(of.Ran.Tool.Errors, PendingUnread))
        {
            continue;
        }
        if (!whole && (!old || of.Succeeded()))
        {
            return "the file " + name + " is half-written, old or left over";
        }
    }
    return of.Ran.Files.size() == of.Good.Files.size() ? "" : "a file is missing";
}

constexpr std::array Promises = {Crash, Secret, Code, NameAndCause, ShownValues, Claims, Repetition, FilesOnDisk};

std::string Broken(const Case& of)
{
    for (const auto promise : Promises)
    {
        if (std::string words = promise(of); !words.empty())
        {
            return words;
        }
    }
    return {};
}

// Every fault meets every request. A program under a sanitizer takes many times longer to
// start; there each fault meets every fourth request, and each request every fourth fault, which are others under the
// one sanitizer than under the other.
#if defined(__SANITIZE_ADDRESS__)
constexpr std::size_t Stride = 4;
constexpr std::size_t Share = 0;
#elif defined(__SANITIZE_THREAD__)
constexpr std::size_t Stride = 4;
constexpr std::size_t Share = 2;
#else
constexpr std::size_t Stride = 1;
constexpr std::size_t Share = 0;
#endif

bool Fits(const FaultRow& fault, const CommandRow& command, const bmcsim::AccessRecord& request)
{
    if (fault.Stalls && !command.Patient)
    {
        return false;
    }
    const bool change = request.Method != "GET";
    const std::array fits = {true, change, command.ReadsBack && request.Method == "PATCH", !change};
    return fits[static_cast<std::size_t>(fault.Where)];
}

/// The rule that makes the request with this index go wrong.
std::string RuleFor(const FaultRow& fault, const std::vector<bmcsim::AccessRecord>& requests, std::size_t index)
{
    const auto same = [&](const bmcsim::AccessRecord& request)
    { return !fault.SamePath || (request.Path == requests[index].Path && request.Method == requests[index].Method); };
    const auto count = std::count_if(requests.begin(), requests.begin() + static_cast<std::ptrdiff_t>(index) + 1, same);
    const std::string which = fault.SamePath ? requests[index].Method + " " + requests[index].Path : "* *";
    return which + " #" + std::to_string(count) + fault.Count + " " + fault.Effect;
}

struct Job
{
    const FaultRow* Fault;
    std::string Rule;
    std::string Request;
};

class ProgramFaults : public testing::TestWithParam<CommandRow>
{
  protected:
    void Try(const Job& job, const FaultOutcome& good)
    {
        FaultRun run;
        run.Arguments = GetParam().Arguments;
        // What is tried again succeeds, which is tested elsewhere.
        run.Arguments.insert(run.Arguments.end(), {"--retries", "0"});
        run.Tasks = GetParam().Tasks;
        run.Rules = {job.Rule};
        run.Https = job.Fault->Https;
        run.Timeout = job.Fault->Stalls ? 1 : 0;
        const FaultOutcome ran = RunWithFaults(run);
        const std::string words = Broken({GetParam(), *job.Fault, good, ran});
        if (!words.empty())
        {
            const std::lock_guard lock(m_Mutex);
            m_Failures.push_back(words + "\n  rule: " + job.Rule + "\n  at: " + job.Request + "\n  status: " +
                                 std::to_string(ran.Tool.Status) + "\n" + ran.Tool.Output + ran.Tool.Errors);
        }
    }

    void TryAll(const std::vector<Job>& jobs, const FaultOutcome& good)
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
                        Try(jobs[at], good);
                    }
                });
        }
        for (std::thread& worker : workers)
        {
            worker.join();
        }
    }

    std::mutex m_Mutex;
    std::vector<std::string> m_Failures;
};

} // namespace

TEST_P(ProgramFaults, KeepsItsPromises)
{
    FaultRun run;
    run.Arguments = GetParam().Arguments;
    run.Tasks = GetParam().Tasks;
    const FaultOutcome good = RunWithFaults(run);
    ASSERT_EQ(good.Tool.Status, 0) << good.Tool.Errors;
    ASSERT_FALSE(HoldsASecret(good.Tool.Output + good.Tool.Errors + good.Log));
    std::vector<Job> jobs;
    const auto change = std::find_if(good.Requests.begin(), good.Requests.end(), IsChange);
    const auto first = GetParam().FromChangeOn ? change : good.Requests.begin();
    for (auto index = static_cast<std::size_t>(first - good.Requests.begin()); index < good.Requests.size(); ++index)
    {
        for (std::size_t row = 0; row < std::size(Faults); ++row)
        {
            const FaultRow& fault = Faults[row];
            if ((index + row) % Stride == Share && Fits(fault, GetParam(), good.Requests[index]))
            {
                jobs.push_back({&fault, RuleFor(fault, good.Requests, index),
                                good.Requests[index].Method + " " + good.Requests[index].Path});
            }
        }
    }
    TryAll(jobs, good);
    RecordProperty("Runs", static_cast<int>(jobs.size()));
    for (std::size_t i = 0; i < std::min(m_Failures.size(), MostTold); ++i)
    {
        ADD_FAILURE() << m_Failures[i];
    }
    EXPECT_TRUE(m_Failures.empty()) << m_Failures.size() << " of " << jobs.size() << " runs broke a promise";
}

INSTANTIATE_TEST_SUITE_P(Commands, ProgramFaults, testing::ValuesIn(Commands),
                         [](const auto& row) { return std::string(row.param.Name); });
