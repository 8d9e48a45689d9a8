// A change on a BMC that fails it at each request in turn: what the tool says of each
// setting against what the BMC was really handed.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <set>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <httplib.h>

#include "ChangeMachine.h"
#include "FaultyProxy.h"
#include "InsideRun.h"

using namespace tooltest;

namespace json = boost::json;

namespace
{

using Words = std::vector<std::string>;

constexpr const char* SettingsPath = "/redfish/v1/Systems/1/Bios/Settings";
constexpr const char* GetProtectedPath = "/redfish/v1/Systems/1/Bios/Actions/Oem/ZorvanBios.GetProtectedAttributes";

struct Change
{
    const char* Name;
    Words Arguments;
    const char* Prefix;
    /// What the settings are to become; null for what cannot be read.
    json::object Wanted;
    std::size_t Requests;
};

void PrintTo(const Change& change, std::ostream* out) { *out << change.Name; }

const Change Changes[] = {
    {"One", {"set", "Timeout=20"}, "BIOS.", {{"Timeout", 20}}, 1},
    {"OneUnchecked", {"set", "--no-check", "Owner=you"}, "BIOS.", {{"Owner", "you"}}, 1},
    {"Batch",
     {"set", "Timeout=20", "Owner=you", "AdminPassword=hunter2"},
     "BIOS.",
     {{"Timeout", 20}, {"Owner", "you"}, {"AdminPassword", nullptr}},
     1},
    {"Related",
     {"set", "Timeout=20", "WatchdogMinutes=20", "Watchdog=On"},
     "BIOS.",
     {{"Timeout", 20}, {"Watchdog", "On"}, {"WatchdogMinutes", 20}},
     2},
    {"Protected",
     {"--system-type", "uefi", "--protected", "set", "Seal=broken", "Mode=Legacy"},
     "UEFI.",
     {{"Seal", "broken"}, {"Mode", "Legacy"}},
     2},
};

struct NamedFault
{
    const char* Name;
    Fault Kind;
    /// The BMC is handed the whole request.
    bool Delivers;
    /// It can be asked afterwards.
    bool Lives;
};

void PrintTo(const NamedFault& fault, std::ostream* out) { *out << fault.Name; }

const NamedFault Faults[] = {
    {"Busy", Fault::Busy, false, true},
    {"CutBefore", Fault::CutBefore, false, true},
    {"CutHalfway", Fault::CutHalfway, false, true},
    {"CutAfter", Fault::CutAfter, true, true},
    {"CutWithin", Fault::CutWithin, true, true},
    {"DeadBefore", Fault::DeadBefore, false, false},
    {"DeadAfter", Fault::DeadAfter, true, false},
    {"GoneAfter", Fault::GoneAfter, true, false},
};

bool IsChange(const std::string& request)
{
    return request.starts_with("PATCH ") || request.ends_with(".SetProtectedAttributes");
}

/// The changes that the simulator holds, read past the tool.
json::object PendingOf(const InsideBmc& bmc)
{
    httplib::Client client(bmc.Url());
    client.set_basic_auth("admin", "password");
    const auto ordinary = client.Get(SettingsPath);
    const auto seal = client.Post(GetProtectedPath, R"({"Pending":true})", "application/json");
    if (!ordinary || !seal || ordinary->status != 200 || seal->status != 200)
    {
        ADD_FAILURE() << "the simulated BMC does not tell what is pending";
        return {};
    }
    json::object pending = json::parse(ordinary->body).at("Attributes").as_object();
    const json::value hidden = json::parse(seal->body);
    pending.insert(hidden.at("Attributes").as_object().begin(), hidden.at("Attributes").as_object().end());
    return pending;
}

/// One run with a fault at one request, and everything that is known of it.
struct FailedRun
{
    Finished Tool;
    json::object Document;
    json::object Pending;
    /// The request with the fault; empty when the run had fewer.
    std::string Hit;
    /// "METHOD PATH BODY" of what the tool sent to change something, in order.
    Words Sent;
    std::set<std::string> Named;
    std::set<std::string> Delivered;
    bool First = false;

    std::string OutcomeOf(const std::string& shown) const
    {
        const json::value* settings = Document.if_contains("settings");
        const json::value* entry =
            settings != nullptr && settings->is_object() ? settings->get_object().if_contains(shown) : nullptr;
        return entry == nullptr ? std::string() : std::string(entry->at("outcome").as_string());
    }
};

class FailingBmc : public ::testing::TestWithParam<std::tuple<Change, NamedFault>>
{
  public:
    const Change Asked = std::get<0>(GetParam());
    const NamedFault Failing = std::get<1>(GetParam());

    FailedRun RunWithFaultAt(int number) const
    {
        const InsideBmc bmc(m_Machine.Path());
        FailedRun run;
        Words lines;
        Words bodies;
        {
            const FaultyProxy proxy(bmc.Port(),
                                    [&](int request, const std::string& line)
                                    {
                                        run.Hit = request == number ? line : run.Hit;
                                        return request == number ? Failing.Kind : Fault::None;
                                    });
            Words words = Asked.Arguments;
            words.emplace_back("--json");
            run.Tool = InsideRun(proxy.Url())(words);
            lines = proxy.Requests();
            bodies = proxy.Bodies();
        }
        for (std::size_t index = 0; index < lines.size(); ++index)
        {
            if (IsChange(lines[index]))
            {
                const bool hit = static_cast<int>(index) + 1 == number;
                run.First = run.First || (hit && run.Sent.empty());
                const bool after = static_cast<int>(index) + 1 > number;
                const bool delivered = hit ? Failing.Delivers : !after || Failing.Lives;
                Take(run, lines[index] + " " + bodies[index], bodies[index], delivered);
            }
        }
        run.Document = json::parse(run.Tool.Output).as_object();
        run.Pending = PendingOf(bmc);
        return run;
    }

    void Judge(const FailedRun& run) const
    {
        bool all = true;
        for (const auto& [name, value] : Asked.Wanted)
        {
            SCOPED_TRACE(std::string(name));
            const std::string outcome = run.OutcomeOf(Asked.Prefix + std::string(name));
            const bool delivered = run.Delivered.contains(name);
            const bool claimed = outcome == "changed";
            const bool open = outcome == "unknown";
            all = all && claimed;
            EXPECT_TRUE(value.is_null() || delivered == (run.Pending.contains(name) && run.Pending.at(name) == value));
            EXPECT_TRUE(delivered || !claimed) << "claims what was not done";
            EXPECT_TRUE(!delivered || claimed || open) << "denies what was done: " << outcome;
            EXPECT_TRUE(outcome != "not sent" || !run.Named.contains(name)) << "denies what was sent";
            EXPECT_TRUE(!open || run.Named.contains(name)) << "doubts what was never sent";
        }
        EXPECT_EQ(run.Tool.Status == 0, all);
        EXPECT_EQ(run.Document.at("code").as_int64() == 0, all);
        Words distinct = run.Sent;
        std::sort(distinct.begin(), distinct.end());
        EXPECT_EQ(std::unique(distinct.begin(), distinct.end()), distinct.end()) << "a change was sent twice";
    }

    /// Of the settings in the request that failed.
    void JudgeFailedChange(const FailedRun& run) const
    {
        const bool recovered = Failing.Delivers && Failing.Lives;
        const bool answered = Failing.Kind == Fault::GoneAfter;
        const char* const expected = Failing.Kind == Fault::Busy ? "refused"
                                     : recovered || answered     ? "changed"
                                                                 : "unknown";
        for (const auto& [name, value] : Asked.Wanted)
        {
            const bool inIt = run.Sent.back().find("\"" + std::string(name) + "\"") != std::string::npos;
            const std::string outcome = run.OutcomeOf(Asked.Prefix + std::string(name));
            // Whatever came over unread stays open where the BMC does not show it.
            EXPECT_TRUE(!inIt || outcome == (value.is_null() && recovered ? "unknown" : expected)) << name << outcome;
            EXPECT_TRUE(inIt || outcome == (run.Delivered.contains(name) ? "changed" : "not sent")) << name << outcome;
        }
        const bool last = run.Sent.size() == Asked.Requests;
        const bool readable = Asked.Wanted.if_contains("AdminPassword") == nullptr;
        const bool good = last && ((recovered && readable) || answered);
        EXPECT_EQ(run.Tool.Status, good ? 0 : Failing.Kind == Fault::Busy ? 33 : 24);
    }

  private:
    static void Take(FailedRun& run, const std::string& sent, const std::string& body, bool delivered)
    {
        run.Sent.push_back(sent);
        const json::value change = json::parse(body);
        for (const auto& entry : change.at("Attributes").as_object())
        {
            run.Named.insert(entry.key());
            if (delivered)
            {
                run.Delivered.insert(entry.key());
            }
        }
    }

    ChangeMachine m_Machine;
};

std::string NameOfCase(const testing::TestParamInfo<std::tuple<Change, NamedFault>>& info)
{
    return std::string(std::get<0>(info.param).Name) + std::get<1>(info.param).Name;
}

} // namespace

TEST(ProgramChange, RelatedSettingsOfOneCommandGoInTwoRequests)
{
    const ChangeMachine machine;
    const InsideBmc bmc(machine.Path());
    const FaultyProxy proxy(bmc.Port(), [](int, const std::string&) { return Fault::None; });
    const Finished set = InsideRun(proxy.Url())({"set", "Timeout=20", "WatchdogMinutes=20", "Watchdog=On"});
    EXPECT_EQ(set.Status, 0) << set.Errors;
    Words changes;
    const Words requests = proxy.Requests();
    for (std::size_t index = 0; index < requests.size(); ++index)
    {
        if (IsChange(requests[index]))
        {
            changes.push_back(json::serialize(json::parse(proxy.Bodies()[index])));
        }
    }
    EXPECT_EQ(changes,
              (Words{R"({"Attributes":{"Timeout":20,"Watchdog":"On"}})", R"({"Attributes":{"WatchdogMinutes":20}})"}));
    EXPECT_EQ(PendingOf(bmc), (json::object{{"Timeout", 20}, {"Watchdog", "On"}, {"WatchdogMinutes", 20}}));
    const std::vector<bmcsim::AccessRecord> log = bmc.Simulator().AccessLog();
    EXPECT_EQ(std::count_if(log.begin(), log.end(),
                            [](const auto& one) { return one.Method == "PATCH" && one.Status == 200; }),
              2);
}

TEST(ProgramChange, ARefusedBatchShowsEveryReasonAndChangesNothing)
{
    const ChangeMachine machine;
    const InsideBmc bmc(machine.Path());
    const Finished set = InsideRun(bmc.Url())(
        {"set", "--no-check", "Owner=you", "Timeout=999", "Mode=Sideways", "WatchdogMinutes=20", "--json"});
    EXPECT_EQ(set.Status, 10) << set.Errors;
    const json::value document = json::parse(set.Output);
    EXPECT_EQ(document.at("settings"), (json::object{{"BIOS.Owner", {{"outcome", "not changed"}}},
                                                     {"BIOS.Timeout", {{"outcome", "refused"}}},
                                                     {"BIOS.Mode", {{"outcome", "refused"}}},
                                                     {"BIOS.WatchdogMinutes", {{"outcome", "refused"}}}}));
    std::map<std::string, std::int64_t> codes;
    for (const json::value& error : document.at("errors").as_array())
    {
        EXPECT_FALSE(error.at("message").as_string().empty());
        codes[std::string(error.at("setting").as_string())] = error.at("code").as_int64();
    }
    EXPECT_EQ(codes, (std::map<std::string, std::int64_t>{
                         {"BIOS.Timeout", 10}, {"BIOS.Mode", 10}, {"BIOS.WatchdogMinutes", 18}, {"BIOS.Owner", 18}}));
    EXPECT_EQ(PendingOf(bmc), json::object());
}

TEST_P(FailingBmc, IsToldTrulyAtEachRequest)
{
    std::size_t changesHit = 0;
    for (int number = 1;; ++number)
    {
        ASSERT_LT(number, 60);
        const FailedRun run = RunWithFaultAt(number);
        SCOPED_TRACE(run.Hit + "\n" + run.Tool.Output + run.Tool.Errors);
        Judge(run);
        if (run.Hit.empty())
        {
            EXPECT_EQ(run.Tool.Status, 0);
            EXPECT_EQ(run.Sent.size(), Asked.Requests);
            break;
        }
        if (IsChange(run.Hit))
        {
            ++changesHit;
            JudgeFailedChange(run);
        }
    }
    EXPECT_EQ(changesHit, Asked.Requests);
}

namespace
{

/// The same of one change, by the words that people read.
class FailingBmcText : public ::testing::TestWithParam<NamedFault>
{
  public:
    const ChangeMachine Machine;
};

} // namespace

TEST_P(FailingBmcText, TellsTrulyAtEachRequest)
{
    const NamedFault fault = GetParam();
    std::string hit = "none yet";
    for (int number = 1; !hit.empty(); ++number)
    {
        ASSERT_LT(number, 60);
        const InsideBmc bmc(Machine.Path());
        hit.clear();
        Finished set;
        {
            // Its thread writes what was hit, and has ended afterwards.
            const FaultyProxy proxy(bmc.Port(),
                                    [&](int request, const std::string& line)
                                    {
                                        hit = request == number ? line : hit;
                                        return request == number ? fault.Kind : Fault::None;
                                    });
            set = InsideRun(proxy.Url())({"set", "Timeout=20"});
        }
        SCOPED_TRACE(hit + "\n" + set.Output + set.Errors);
        const bool changed = PendingOf(bmc).contains("Timeout");
        const bool claims = set.Output.starts_with("BIOS.Timeout: changed, takes effect after a reboot\n");
        const bool open =
            set.Errors.find("BIOS.Timeout: whether the change was done is not known") != std::string::npos;
        const bool denies = set.Errors.find("BIOS.Timeout: not ") != std::string::npos;
        EXPECT_EQ(set.Status == 0, claims);
        EXPECT_TRUE(claims || set.Status == 24 || set.Status == 26 || set.Status == 33);
        EXPECT_TRUE(changed ? claims != open && !denies : !claims && !(open && denies));
        EXPECT_TRUE(set.Output.empty() != claims);
    }
}

INSTANTIATE_TEST_SUITE_P(ProgramChange, FailingBmcText, testing::ValuesIn(Faults),
                         [](const auto& fault) { return std::string(fault.param.Name); });
INSTANTIATE_TEST_SUITE_P(ProgramChange, FailingBmc,
                         testing::Combine(testing::ValuesIn(Changes), testing::ValuesIn(Faults)), NameOfCase);
