#include "SoakRun.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <malloc.h>
#include <numeric>
#include <unistd.h>
#include <utility>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <gtest/gtest.h>

#include "SharedData.h"
#include "SoakKinds.h"

namespace json = boost::json;

using tooltest::Fault;
using namespace Tavrine;

namespace soak
{
namespace
{

constexpr std::size_t TraceLength = 30;
/// One operation of so many is to be harmed on its way, half of them at the first request.
constexpr std::size_t HarmedOf = 3;
constexpr Harm Harms[] = {
    {.Name = "busy on the way", .OnTheWay = Fault::Busy},
    {.Name = "cut before", .OnTheWay = Fault::CutBefore},
    {.Name = "cut after", .OnTheWay = Fault::CutAfter, .Done = true},
    {.Name = "cut within", .OnTheWay = Fault::CutWithin, .Done = true},
    {.Name = "busy", .Effect = "busy 0"},
    {.Name = "busy, but done", .Effect = "done busy 0", .Done = true},
    {.Name = "failed", .Effect = "status 500"},
    {.Name = "failed, but done", .Effect = "done status 500", .Done = true},
    {.Name = "not found", .Effect = "status 404"},
    {.Name = "not allowed", .Effect = "status 403"},
    {.Name = "closed", .Effect = "undone close-before"},
    {.Name = "closed, but done", .Effect = "close-before", .Done = true},
    {.Name = "truncated", .Effect = "truncated", .Done = true},
    {.Name = "no HTTP", .Effect = "garbage", .Done = true},
    {.Name = "no JSON", .Effect = "garbage-json", .Done = true},
    {.Name = "another type", .Effect = "content-type", .Done = true},
    {.Name = "too large a head", .Effect = "huge-head", .Done = true},
};

} // namespace

json::object Resource(TavrineConnection::BmcConnection& clean, const std::string& url)
{
    std::string response;
    const RedfishConfigResult result = clean.Get(url, response);
    EXPECT_TRUE(result == 0) << url;
    return json::parse(response).as_object();
}

json::object Protected(TavrineConnection::BmcConnection& clean, const char* body)
{
    std::string response;
    const RedfishConfigResult result = clean.Post(GetProtectedUrl, body, response, 60);
    EXPECT_TRUE(result == 0) << GetProtectedUrl;
    return json::parse(response).at("Attributes").as_object();
}

Holding HoldingNow()
{
    Holding holding;
    malloc_trim(0);
    holding.HeapBytes = mallinfo2().uordblks;
    std::ifstream statm("/proc/self/statm");
    std::size_t pages = 0;
    statm >> pages >> pages;
    holding.ResidentBytes = pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    holding.Descriptors = static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
    return holding;
}

bool Outcome::Harmed() const
{
    return std::any_of(Exchanges.begin(), Exchanges.end(),
                       [](const Exchange& exchange) { return exchange.What != nullptr; });
}

int Outcome::Sent(const std::string& start) const
{
    return static_cast<int>(std::count_if(Exchanges.begin(), Exchanges.end(),
                                          [&](const Exchange& exchange) { return exchange.Line.starts_with(start); }));
}

int Outcome::Arrived(const std::string& start) const
{
    return static_cast<int>(std::count_if(Exchanges.begin(), Exchanges.end(),
                                          [&](const Exchange& exchange)
                                          { return exchange.Line.starts_with(start) && exchange.Arrived(); }));
}

Run::Run(std::uint64_t seed) : m_Random(seed)
{
    TavrineConnection::ConnectionInfo info;
    info.Host = "127.0.0.1";
    info.Port = static_cast<std::uint16_t>(std::stoi(m_Bmc.Port()));
    info.User = "admin";
    info.Password = "password";
    info.Flags = TavrineConnection::FlagPlainHttp;
    m_Clean = std::make_unique<TavrineConnection::BmcConnection>(info, TavrineConnection::ConnectionProfile());
    m_Model.InForce = Resource(*m_Clean, BiosUrl).at("Attributes").as_object();
    m_Model.ProtectedInForce = Protected(*m_Clean, "{}");
    const json::value registry = json::parse(testdata::ReadFile(MACHINE_FOLDER "/registry.en.json"));
    m_Settings = FreeSettings(registry, m_Model.InForce);
    m_Guarded = FreeSettings(registry, m_Model.ProtectedInForce);
    Renew();
}

void Run::Renew()
{
    m_Copies.clear();
    m_Queue.clear();
    m_Connection.reset();
    m_Wire = std::make_unique<Wire>(m_Bmc.Port());
    m_Connection =
        std::make_unique<TavrineConnection::BmcConnection>(m_Wire->Info(), TavrineConnection::ConnectionProfile());
    NewObject();
}

Holding Run::Rest()
{
    m_Copies.clear();
    m_Queue.clear();
    m_Connection.reset();
    m_Wire.reset();
    Compare();
    const Holding holding = HoldingNow();
    Renew();
    return holding;
}

void Run::Do(int operations)
{
    const std::vector<Kind>& kinds = Kinds();
    const std::size_t all = std::accumulate(kinds.begin(), kinds.end(), std::size_t{0},
                                            [](std::size_t sum, const Kind& kind) { return sum + kind.Weight; });
    for (int index = 0; index < operations && m_Faults == 0; ++index)
    {
        std::size_t chosen = Pick(all);
        const auto kind = std::find_if(kinds.begin(), kinds.end(),
                                       [&](const Kind& one)
                                       {
                                           const bool hit = chosen < one.Weight;
                                           chosen -= hit ? 0 : one.Weight;
                                           return hit;
                                       });
        ++m_Done;
        ++m_Counts[kind->Name];
        (this->*kind->Do)();
    }
}

void Run::Compare()
{
    const json::object bios = Resource(*m_Clean, BiosUrl);
    const json::object settings = Resource(*m_Clean, SettingsUrl);
    const std::string inForce = Differences(m_Model.InForce, bios.at("Attributes").as_object());
    Expect(inForce.empty(), "values in force:" + inForce);
    const std::string pending = Differences(m_Model.Pending, settings.at("Attributes").as_object());
    Expect(pending.empty(), "pending values:" + pending);
    const std::string guarded = Differences(m_Model.ProtectedInForce, Protected(*m_Clean, "{}"));
    Expect(guarded.empty(), "protected values in force:" + guarded);
    const std::string waiting = Differences(m_Model.ProtectedPending, Protected(*m_Clean, R"({"Pending":true})"));
    Expect(waiting.empty(), "pending protected values:" + waiting);
    const json::value* due = bios.if_contains("ResetBiosToDefaultsPending");
    Expect((due != nullptr && *due == true) == m_Model.DefaultsDue, "defaults due");
    std::string response;
    const bool read = m_Clean->Post(ReadFileUrl, ReadFileBody, response, 60) == 0;
    Expect(read == m_Model.File.has_value(), "there is a file of custom defaults");
    Expect(!read || json::parse(response).at("Content") == json::value(*m_Model.File), "file of custom defaults");
}

std::unique_ptr<Run::Proc> Run::FreshObject(std::int32_t outputFormat, bool allowProtected)
{
    Config_Options options;
    options.OutputFormat = outputFormat;
    options.allowProtectedSettings = allowProtected;
    return std::make_unique<Proc>(m_Connection->Info(), SystemTypeUefi, options);
}

Outcome Run::Perform(const std::string& what, const std::function<RedfishConfigResult()>& operation)
{
    const Harm* harm = Chance(HarmedOf) ? &Harms[Pick(std::size(Harms))] : nullptr;
    const int at = harm != nullptr ? static_cast<int>(1 + Pick(2) * Pick(4)) : 0;
    const bool byBmc = harm != nullptr && harm->Effect != nullptr;
    if (byBmc)
    {
        m_Bmc.SetFaultRule("* * #" + std::to_string(at) + " " + harm->Effect);
    }
    m_Wire->Begin(harm, at);
    Outcome outcome;
    outcome.Result = operation();
    outcome.Exchanges = m_Wire->End();
    if (byBmc)
    {
        m_Bmc.SetFaultRule("");
    }
    m_Harmed += outcome.Harmed() ? 1 : 0;
    std::string line = std::to_string(m_Done) + " " + what + " -> " + std::to_string(outcome.Result.ErrorCode());
    for (const Exchange& exchange : outcome.Exchanges)
    {
        line += "\n      " + exchange.Line + (exchange.What == nullptr ? "" : std::string(": ") + exchange.What->Name);
    }
    Note(std::move(line));
    CheckRepetition(outcome);
    return outcome;
}

/// A change that may have arrived is not sent again.
void Run::CheckRepetition(const Outcome& outcome)
{
    for (std::size_t index = 0; index + 1 < outcome.Exchanges.size(); ++index)
    {
        const Exchange& exchange = outcome.Exchanges[index];
        const bool reads = exchange.Line.starts_with("GET ") || exchange.Line.ends_with(GetProtectedUrl);
        Expect(exchange.What == nullptr || reads || outcome.Exchanges[index + 1].Line != exchange.Line,
               "sent twice: " + exchange.Line);
    }
}

void Run::Note(std::string line)
{
    m_Trace.push_back(std::move(line));
    if (m_Trace.size() > TraceLength)
    {
        m_Trace.pop_front();
    }
}

void Run::Expect(bool good, const std::string& what)
{
    if (good)
    {
        return;
    }
    ++m_Faults;
    std::string trace;
    for (const std::string& line : m_Trace)
    {
        trace += "\n  " + line;
    }
    ADD_FAILURE() << "after operation " << m_Done << ": " << what << "\nthe last operations:" << trace;
}

void Run::ExpectCode(const Outcome& outcome, std::initializer_list<int> codes, const std::string& what)
{
    const int code = outcome.Result.ErrorCode();
    const bool known = std::find(codes.begin(), codes.end(), code) != codes.end();
    Expect(known || outcome.Harmed(), what + " answered " + std::to_string(code) + " " + outcome.Told());
}

/// Whatever came of it, nothing waits any more once a change was sent.
void Run::Flushed(const Outcome& outcome, Queue& queue, const Place& place)
{
    const int sent = outcome.Sent(place.Request);
    const int arrived = outcome.Arrived(place.Request);
    Expect(!outcome.Succeeded() || arrived > 0 || queue.empty(), "success is claimed of what was not sent");
    Expect(outcome.Succeeded() || outcome.Harmed(), "a change that nobody harmed failed: " + outcome.Told());
    for (const auto& [name, value] : arrived > 0 ? queue : Queue())
    {
        (m_Model.*place.Pending)[name] = value;
    }
    if (sent > 0)
    {
        queue.clear();
    }
}

void Run::Staged(const Outcome& outcome, Queue& queue, const std::string& name, const json::value& value, bool batch,
                 const Place& place)
{
    const bool sent = outcome.Sent(place.Request) > 0;
    if (batch)
    {
        Expect(!sent, "a change that was to wait was sent");
        ExpectCode(outcome, {0, 1}, "a queued change");
        if (outcome.Result == 0)
        {
            queue[name] = value;
        }
    }
    else if (sent)
    {
        queue[name] = value;
        Flushed(outcome, queue, place);
    }
    else
    {
        // 1: the value was in place already.
        ExpectCode(outcome, {1}, "a change that was not sent");
        Expect(outcome.Result != 0, "a change was not sent, and the answer is that it was made");
    }
}

} // namespace soak
