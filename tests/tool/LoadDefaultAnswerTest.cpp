// What becomes of defaults whose requests are refused or fail.
#include "LoadDefaultCommand.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "LoadDefaultFixture.h"

using namespace Tavrine::Tool;
using namespace tooltest;

TEST(LoadDefaultAnswer, OfALostRequestTheBmcTellsWhetherItArrived)
{
    struct Case
    {
        std::string Effective;
        SettingCompareMap Pending;
        int Read;
        std::string Word;
        std::string Doubt;
    };
    const std::string open = "whether the change was done is not known";
    const std::string notShown = open + "; the BMC does not show it among its pending values";
    const Case cases[] = {
        {"1", {{"BIOS.A", {"1", "5"}}}, 0, "sent, takes effect after a reboot", ""},
        {"5", {}, 0, "in place", ""},
        {"1", {}, 0, "unknown: ", notShown},
        {"1", {{"BIOS.A", {"1", "4"}}}, 0, "unknown: ", notShown},
        {"5", {{"BIOS.A", {"5", "4"}}}, 0, "unknown: ", notShown},
        {"1", {}, 24, "unknown: ", open + "; its pending value could not be read"},
    };
    for (const Case& one : cases)
    {
        LoadScript script;
        script.Answers.emplace("A", RedfishConfigResult(24, "h: gone; whether the change was done is not known.", ""));
        script.Defaults = {{"A", "5"}};
        script.Read = RedfishConfigResult(one.Read, "", "");
        script.Effective = one.Read == 0 ? SettingStringMap{{"BIOS.A", one.Effective}} : SettingStringMap();
        script.Pending = one.Pending;
        const Answer answer = Load(script, {"A", "B"});
        EXPECT_EQ(script.Asked, (LoadCalls{{"A", ""}})) << "a change was sent behind one that got lost";
        EXPECT_EQ(answer.Text, "BIOS.A: " + one.Word + one.Doubt + "\nBIOS.B: not sent: a request before it failed\n");
        EXPECT_EQ(answer.Code, 24);
        ASSERT_EQ(answer.Errors.size(), one.Doubt.empty() ? 1U : 2U);
        EXPECT_TRUE(one.Doubt.empty() || answer.Errors[0].Message == "BIOS.A: " + one.Doubt);
        EXPECT_EQ(answer.Errors.back().Message, "BIOS.B: not sent, since a request before it failed");
        ASSERT_EQ(answer.Notes.size(), one.Read == 0 ? 1U : 2U);
        EXPECT_EQ(answer.Notes.front(), "warning: BIOS.A: h: gone; whether the change was done is not known.");
        EXPECT_EQ(answer.Notes.back().starts_with("warning: the pending values could not be read back: "),
                  one.Read != 0);
    }
}

TEST(LoadDefaultAnswer, OneRefusedSettingDoesNotKeepTheOthersBack)
{
    LoadScript script;
    script.Answers.emplace("B", RedfishConfigResult(21, "BIOS.B: it has no default", "BIOS.B"));
    script.Effective = {{"BIOS.A", "1"}, {"BIOS.B", "1"}, {"BIOS.C", "1"}};
    script.Pending = {{"BIOS.A", {"1", "5"}}, {"BIOS.C", {"1", "6"}}};
    script.Defaults = {{"A", "5"}, {"C", "6"}};
    WaitingChanges waiting;
    const Answer answer = Load(script, {"A", "B", "BIOS.C", "A"}, waiting);
    EXPECT_EQ(script.Asked, (LoadCalls{{"A", ""}, {"B", ""}, {"C", ""}}));
    EXPECT_EQ(answer.Code, 21);
    ASSERT_EQ(answer.Errors.size(), 1U);
    EXPECT_EQ(answer.Errors[0].Setting, "BIOS.B");
    EXPECT_EQ(answer.Errors[0].Message, "BIOS.B: it has no default");
    EXPECT_EQ(answer.Text, "BIOS.A: sent, takes effect after a reboot\nBIOS.B: refused: it has no default\n"
                           "BIOS.C: sent, takes effect after a reboot\n");
    EXPECT_FALSE(waiting.Unknown);
    EXPECT_FALSE(waiting.RequestFailed) << "there was none for it";
    EXPECT_TRUE(waiting.Refused);
    ASSERT_EQ(waiting.Expected.size(), 2U);
    EXPECT_EQ(waiting.Expected[0].Name + "=" + waiting.Expected[0].Text, "A=5");
    EXPECT_EQ(waiting.Expected[1].Name + "=" + waiting.Expected[1].Text, "C=6");
}

TEST(LoadDefaultAnswer, AFailedRequestKeepsARestartBackUnlessAllIsAsItShouldBe)
{
    struct Case
    {
        int Code;
        std::string Message;
        bool Failed;
        std::string Word;
    };
    const Case cases[] = {
        {1, "", false, "sent, takes effect after a reboot"},
        {18, "The setting B is read-only.", false, "refused: The setting BIOS.B is read-only."},
        {18, "PATCH /x was refused by h (400).", false, "sent, takes effect after a reboot"},
        {32, "GET /x failed inside h (500).", true, "not sent: GET /x failed inside h (500)."},
        {33, "h is not ready (503).", true, "refused: h is not ready (503)."},
        {24, "h: gone; whether the change was done is not known.", false, "sent, takes effect after a reboot"},
    };
    for (const Case& one : cases)
    {
        LoadScript script;
        script.Answers.emplace("B", RedfishConfigResult(one.Code, one.Message, "B"));
        script.Effective = {{"BIOS.A", "1"}, {"BIOS.B", "1"}};
        script.Pending = {{"BIOS.A", {"1", "5"}}, {"BIOS.B", {"1", "5"}}};
        script.Defaults = {{"A", "5"}, {"B", "5"}};
        WaitingChanges waiting;
        const Answer answer = Load(script, {"A", "B"}, waiting);
        EXPECT_EQ(waiting.RequestFailed, one.Failed) << one.Message;
        EXPECT_EQ(answer.Text, "BIOS.A: sent, takes effect after a reboot\nBIOS.B: " + one.Word + "\n");
    }
}

/// A lenient BMC refuses a change by its words, and does it.
TEST(LoadDefaultAnswer, OfARefusalTheBmcTellsWhetherItIsOne)
{
    struct Case
    {
        const char* What;
        std::string Effective;
        SettingCompareMap Pending;
        int Read;
        const char* Default;
        std::string Word;
        const char* Expected;
    };
    const std::string refusal = "PATCH /x was refused by h (200): no.";
    const std::string refused = "refused: " + refusal;
    const std::string sent = "sent, takes effect after a reboot";
    const Case cases[] = {
        {"done all the same", "1", {{"BIOS.A", {"1", "5"}}}, 0, "5", sent, "5"},
        {"in force all the same", "5", {}, 0, "5", "in place", nullptr},
        {"not done", "1", {}, 0, "5", refused, nullptr},
        {"another value waits", "1", {{"BIOS.A", {"1", "4"}}}, 0, "5", refused, nullptr},
        {"another value than the one in force waits", "5", {{"BIOS.A", {"5", "4"}}}, 0, "5", refused, nullptr},
        {"a value waits, no default", "1", {{"BIOS.A", {"1", "5"}}}, 0, nullptr, refused, nullptr},
        {"unreadable", "1", {}, 32, "5", refused, nullptr},
    };
    for (const int code : {18, 28})
    {
        for (const Case& one : cases)
        {
            SCOPED_TRACE(one.What);
            LoadScript script;
            script.Answers.emplace("A", RedfishConfigResult(code, refusal, ""));
            script.Read = RedfishConfigResult(one.Read, "", "");
            script.Effective = one.Read == 0 ? SettingStringMap{{"BIOS.A", one.Effective}} : SettingStringMap();
            script.Pending = one.Pending;
            script.Defaults = one.Default != nullptr ? SettingStringMap{{"A", one.Default}} : SettingStringMap();
            WaitingChanges waiting;
            const Answer answer = Load(script, {"A"}, waiting);
            const bool isRefused = one.Word == refused;
            EXPECT_EQ(answer.Text, "BIOS.A: " + one.Word + "\n");
            EXPECT_EQ(answer.Code, isRefused ? code : 0);
            EXPECT_EQ(answer.Errors.size(), isRefused ? 1U : 0U);
            EXPECT_EQ(waiting.RequestFailed, isRefused);
            EXPECT_FALSE(waiting.Unknown);
            ASSERT_EQ(waiting.Expected.size(), one.Expected != nullptr ? 1U : 0U);
            EXPECT_TRUE(one.Expected == nullptr || waiting.Expected[0].Text == one.Expected);
            ASSERT_EQ(answer.Notes.size(), isRefused && one.Read == 0 ? 0U : 1U);
            EXPECT_TRUE(isRefused || answer.Notes[0] == "warning: the request failed, but the BMC shows the changes: "
                                                        "BIOS.A: " +
                                                            refusal);
        }
    }
}

TEST(LoadDefaultAnswer, WhatIsShownForAPasswordTellsNothing)
{
    struct Case
    {
        RedfishConfigResult Result;
        std::string Word;
        int Code;
    };
    const std::string unknown = "unknown: whether it has its default, or gets it with a reboot, is not known; it "
                                "is a password";
    const Case cases[] = {
        {{18, "PATCH /x was refused by h (400 Bad Request).", ""},
         "refused: PATCH /x was refused by h (400 Bad Request).",
         18},
        {{0, "", ""}, unknown, 18},
        {{1, "", ""}, "sent, takes effect after a reboot", 0},
    };
    for (const Case& one : cases)
    {
        LoadScript script;
        script.Answers.emplace("Word", one.Result);
        script.Effective = {{"BIOS.Word", ""}};
        script.Defaults = {{"Word", ""}};
        const Answer answer = Load(script, {"Word"});
        EXPECT_EQ(answer.Text, "BIOS.Word: " + one.Word + "\n");
        EXPECT_EQ(answer.Code, one.Code);
    }
}

TEST(LoadDefaultAnswer, ARefusalThatIsNoneShowsNoPasswordEither)
{
    LoadScript script;
    script.Answers.emplace("A", RedfishConfigResult(18, "PATCH /x was refused by h (200): plain77 is bad.", ""));
    script.Effective = {{"BIOS.A", "1"}};
    script.Pending = {{"BIOS.A", {"1", "5"}}};
    script.Defaults = {{"A", "5"}, {"Word", "plain77"}};
    EXPECT_EQ(Load(script, {"Word", "A"}).Notes,
              std::vector<std::string>{"warning: the request failed, but the BMC shows the changes: BIOS.A: PATCH /x "
                                       "was refused by h (200): ******** is bad."});
}

/// Each name has its outcome, also where the failures are not told.
TEST(LoadDefaultAnswer, BehindABmcThatCannotBeReachedNothingElseIsSent)
{
    for (const int code : {24, 33})
    {
        LoadScript script;
        script.Answers.emplace("B", RedfishConfigResult(code, "gone", ""));
        script.Read = RedfishConfigResult(24, "gone", "");
        const Answer answer = Load(script, {"A", "B", "C", "D"});
        EXPECT_EQ(script.Asked, (LoadCalls{{"A", ""}, {"B", ""}}));
        EXPECT_EQ(answer.Text, "BIOS.A: sent, takes effect after a reboot\nBIOS.B: " +
                                   std::string(code == 24 ? "not sent" : "refused") +
                                   ": gone\n"
                                   "BIOS.C: not sent: a request before it failed\n"
                                   "BIOS.D: not sent: a request before it failed\n");
        EXPECT_EQ(answer.Code, code);
        ASSERT_EQ(answer.Errors.size(), 3U);
        EXPECT_EQ(answer.Errors[1].Message, "BIOS.C: not sent, since a request before it failed");
        EXPECT_EQ(answer.Errors[2].Setting, "BIOS.D");
        EXPECT_EQ(answer.Errors[2].Code, code);
    }
}
