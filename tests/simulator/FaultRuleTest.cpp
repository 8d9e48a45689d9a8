// How the rules of --fault are read.

#include "FaultRule.h"
#include "BmcSimulator.h"
#include "FaultPlan.h"
#include "Fixture.h"

#include <limits>
#include <optional>

namespace
{

using namespace bmctest;
using namespace bmcsim;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

FaultRule Read(const std::string& text)
{
    std::string error;
    const auto rule = ParseFaultRule(text, error);
    EXPECT_TRUE(rule) << error;
    EXPECT_EQ(error, "");
    return rule.value_or(FaultRule());
}

constexpr std::uint64_t Ever = std::numeric_limits<std::uint64_t>::max();

TEST(FaultRuleTest, ARuleNamesMethodPathCountAndEffect)
{
    const FaultRule rule = Read("GET /redfish/v1/*/Bios #2 status 503 Retry-After=5 X-Note=\"two words\"");
    EXPECT_THAT(rule.Methods, ElementsAre("GET"));
    EXPECT_EQ(rule.Path, "/redfish/v1/*/Bios");
    EXPECT_EQ(rule.First, 2U);
    EXPECT_EQ(rule.Last, 2U);
    EXPECT_EQ(rule.What.Kind, FaultKind::Status);
    EXPECT_EQ(rule.What.Amount, 503);
    EXPECT_FALSE(rule.What.Done);
    EXPECT_THAT(rule.What.Headers, ElementsAre(std::pair<const std::string, std::string>("Retry-After", "5"),
                                               std::pair<const std::string, std::string>("X-Note", "two words")));
}

TEST(FaultRuleTest, CountsAreOneSeveralOrAllFromOneOn)
{
    struct Row
    {
        const char* Count;
        std::uint64_t First;
        std::uint64_t Last;
    };
    for (const Row& row : {Row{"", 1, Ever}, Row{"#1", 1, 1}, Row{"#3", 3, 3}, Row{"#3+", 3, Ever}, Row{"#2-4", 2, 4}})
    {
        const FaultRule rule = Read(std::string("* * ") + row.Count + " busy");
        EXPECT_THAT(rule.Methods, IsEmpty());
        EXPECT_EQ(rule.First, row.First) << row.Count;
        EXPECT_EQ(rule.Last, row.Last) << row.Count;
    }
}

TEST(FaultRuleTest, WhatIsLeftOutHasItsUsualValue)
{
    struct Row
    {
        const char* Text;
        FaultKind Kind;
        std::optional<std::int64_t> Amount;
        bool Done;
    };
    const Row rows[] = {
        {"busy", FaultKind::Busy, 1, false},
        {"busy 0", FaultKind::Busy, 0, false},
        {"done busy 7", FaultKind::Busy, 7, true},
        {"undone close-before", FaultKind::CloseBefore, std::nullopt, false},
        {"close-before", FaultKind::CloseBefore, std::nullopt, true},
        {"stall", FaultKind::Stall, std::nullopt, true},
        {"stall 0", FaultKind::Stall, 0, true},
        {"close-within", FaultKind::CloseWithin, std::nullopt, true},
        {"truncated 0", FaultKind::Truncated, 0, true},
        {"wrong-length", FaultKind::WrongLength, -10, true},
        {"wrong-length +5", FaultKind::WrongLength, 5, true},
        {"done slow 2", FaultKind::Slow, 2, true},
        {"huge", FaultKind::Huge, 100, true},
    };
    for (const Row& row : rows)
    {
        const Fault fault = Read(std::string("GET * ") + row.Text).What;
        EXPECT_EQ(fault.Kind, row.Kind) << row.Text;
        EXPECT_EQ(fault.Amount, row.Amount) << row.Text;
        EXPECT_EQ(fault.Done, row.Done) << row.Text;
    }
    EXPECT_EQ(Read("GET * content-type text/plain").What.Text, "text/plain");
}

TEST(FaultRuleTest, ABadRuleIsQuotedAndExplained)
{
    struct Row
    {
        const char* Rule;
        const char* Word;
    };
    const Row rows[] = {
        {"", "METHOD PATH"},
        {"GET *", "METHOD PATH"},
        {"GET * #1", "what happens is missing"},
        {"GET * done", "what happens is missing"},
        {"get * busy", "'get' is no method"},
        {"GET, * busy", "'' is no method"},
        {"GET Bios busy", "'Bios' begins"},
        {"GET * #0 busy", "'#0' is no count"},
        {"GET * #4-2 busy", "'#4-2' is no count"},
        {"GET * #2+x busy", "'#2+x' is no count"},
        {"GET * #-1 busy", "'#-1' is no count"},
        {"GET * burst", "'burst' is none of status, busy"},
        {"GET * status", "needs a status code"},
        {"GET * status 99", "from 200 to 599"},
        {"GET * status 500 Retry-After", "'Retry-After' is no header"},
        {"GET * status 500 \"A B=c\"", "is no header"},
        {"GET * status 500 A=\x01", "is no header"},
        {"GET * busy soon", "'soon' behind busy"},
        {"GET * busy -1", "'-1' behind busy"},
        {"GET * busy 1 2", "'2' is too much behind busy"},
        {"GET * close-before 1", "'1' is too much behind close-before"},
        {"GET * undone truncated", "cannot stay undone"},
        {"GET * \"status 500", "quotation mark"},
        {"GET * huge 99999999999999999999", "behind huge"},
    };
    for (const Row& row : rows)
    {
        EXPECT_THAT(FaultRuleError(row.Rule), HasSubstr("fault rule '" + std::string(row.Rule) + "': "));
        EXPECT_THAT(FaultRuleError(row.Rule), HasSubstr(row.Word));
    }
    EXPECT_EQ(FaultRuleError("GET * busy"), "");
}

TEST(FaultRuleTest, TheHelpNamesEveryEffect)
{
    for (const std::string_view name : FaultNames())
    {
        EXPECT_THAT(FaultHelp(), HasSubstr(" " + std::string(name)));
    }
}

TEST(FaultRuleTest, PatternsAreThoseOfAShellAndStarsCrossSlashes)
{
    const FaultRule rule = Read("GET,PATCH /redfish/*/Bi?s busy");
    EXPECT_TRUE(rule.Names("GET", "/redfish/v1/Systems/1/Bios"));
    EXPECT_TRUE(rule.Names("PATCH", "/redfish/v1/Bias"));
    EXPECT_FALSE(rule.Names("POST", "/redfish/v1/Bios"));
    EXPECT_FALSE(rule.Names("GET", "/redfish/v1/Bios/Settings"));
}

TEST(FaultPlanTest, EveryRuleCountsAndTheFirstWhoseTurnItIsActs)
{
    FaultPlan plan;
    EXPECT_FALSE(plan.Next("GET", "/a"));
    plan.Set({Read("GET /a #2 status 501"), Read("GET * #2-3 status 502")});
    const auto status = [&](const char* method, const char* path)
    {
        const auto fault = plan.Next(method, path);
        return fault ? fault->Amount.value_or(0) : 0;
    };
    EXPECT_EQ(status("GET", "/a"), 0);
    EXPECT_EQ(status("POST", "/a"), 0);
    EXPECT_EQ(status("GET", "/a"), 501);
    EXPECT_EQ(status("GET", "/b"), 502);
    EXPECT_EQ(status("GET", "/b"), 0);
    plan.Set({Read("GET /a #1 status 504")});
    EXPECT_EQ(status("GET", "/a"), 504);
    EXPECT_EQ(status("GET", "/a"), 0);
}

} // namespace
