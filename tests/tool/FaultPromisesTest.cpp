// That the promises of the matrix of faults can be broken.
#include "FaultPromises.h"

#include <gtest/gtest.h>

#include <string>

using namespace tooltest;

namespace
{

constexpr const char* Unread = "tavrine: warning: the pending values could not be read back: gone\n";

FaultOutcome Outcome(const std::string& output, const std::string& errors, const std::string& state)
{
    FaultOutcome outcome;
    outcome.Tool.Status = 0;
    outcome.Tool.Output = output;
    outcome.Tool.Errors = errors;
    outcome.State = state;
    return outcome;
}

const CommandRow Command = {.Name = "any", .Arguments = {"any"}};
const FaultRow Fault = {"any", At::All, {24}, "gone"};

} // namespace

TEST(FaultPromises, NoMoreIsClaimedWhereNothingCouldBeReadBack)
{
    struct Row
    {
        const char* Output;
        bool IsKept;
    };
    const Row rows[] = {
        {"A: sent, takes effect after a reboot\n", true},
        {"A: unknown: gone\n", true},
        {"A=1\n", true},
        {"A: in place\n", false},
        {"B: sent, takes effect after a reboot\n", false},
        {"B: already 1, in force\n", false},
        {"B: changed, takes effect after a reboot\n", false},
    };
    const FaultOutcome good = Outcome("A: sent, takes effect after a reboot\n", "", "after");
    for (const Row& row : rows)
    {
        const std::string words = Broken({Command, Fault, good, Outcome(row.Output, Unread, "after")});
        EXPECT_EQ(words.empty(), row.IsKept) << row.Output;
        EXPECT_TRUE(row.IsKept || words.starts_with("shown without being known: ")) << words;
    }
}

TEST(FaultPromises, AFileIsWholeAlsoWhereNothingCouldBeReadBack)
{
    FaultOutcome good = Outcome("", "", "after");
    good.Files["out"] = "A=Disabled\nB=Disabled\nC=1\n";
    const auto broken = [&](const std::string& content, const char* errors)
    {
        FaultOutcome ran = Outcome("", errors, "after");
        ran.Files["out"] = content;
        return Broken({Command, Fault, good, ran});
    };
    const std::string bad = "the file out is half-written, old or left over";
    EXPECT_EQ(broken(good.Files["out"], ""), "");
    EXPECT_EQ(broken("A=Disabled\nB=Enabled\nC=1\n", Unread), "");
    EXPECT_EQ(broken("A=Disabled\nB=Enabled\nC=1\n", ""), bad);
    EXPECT_EQ(broken("A=Disabled\nB=Enabled\nC=2\n", Unread), bad);
    EXPECT_EQ(broken("A=Disabled\nB=Enabled\n", Unread), bad);
    EXPECT_EQ(broken(OldOutput, Unread), bad);
}

TEST(FaultPromises, WhatWasDoneIsNotCalledRefused)
{
    const FaultOutcome good = Outcome("A: sent, takes effect after a reboot\n", "", "after");
    FaultOutcome ran = Outcome("A: refused: gone\n", "tavrine: 24 [bmc]: gone\n", "after");
    ran.Tool.Status = 24;
    EXPECT_EQ(Broken({Command, Fault, good, ran}), "something was done, and it calls that refused");
    ran.State = StateBefore();
    EXPECT_EQ(Broken({Command, Fault, good, ran}), "");
}
