#include "RestoreCommand.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>

#include "FakeFront.h"
#include "Options.h"
#include "RestoreFixture.h"
#include "RestoreSend.h"
#include "Signals.h"

using namespace Tavrine::Tool;
using namespace tooltest;

namespace
{

/// What the library and the BMC say during one restore; the object that is made for
/// each question answers from here.
struct Script
{
    std::vector<SettingStringMap> Asked;
    std::vector<bool> SameSystem;
    RedfishConfigResult Answer{0, "", ""};
    /// Goes before Answer, once.
    std::optional<RedfishConfigResult> First;
    SettingStringMap Failed;
    std::vector<RedfishConfigResult> Errors;
    RedfishConfigResult Read{0, "", ""};
    SettingStringMap Effective;
    SettingCompareMap Pending;
};

class ScriptedFront : public FakeFront
{
  public:
    explicit ScriptedFront(Script& script) : m_Script(script) {}

    RedfishConfigResult Restore(SettingStringMap& values, SettingStringMap& done, SettingStringMap& failed,
                                bool sameSystem, bool) override
    {
        m_Script.Asked.push_back(values);
        m_Script.SameSystem.push_back(sameSystem);
        for (const auto& [name, value] : values)
        {
            done["BIOS." + name] = value; // says nothing
        }
        failed = m_Script.Failed;
        m_ErrorList = m_Script.Errors;
        return m_Script.First ? *std::exchange(m_Script.First, std::nullopt) : m_Script.Answer;
    }
    RedfishConfigResult CompareSettingPendingValues(SettingCompareMap& values, const std::string&) override
    {
        values = m_Script.Pending;
        return m_Script.Pending.empty() && m_Script.Read == 0 ? RedfishConfigResult(2, "", "") : m_Script.Read;
    }
    RedfishConfigResult QueryGroupSettingValues(SettingStringMap& values) override
    {
        values = m_Script.Effective;
        return m_Script.Read;
    }

  private:
    Script& m_Script;
};

RestorePlan Sent(Script& script, const SettingStringMap& settings, const Options& options = OptionsFor())
{
    RestorePlan plan = PlanOf(settings);
    std::vector<std::string> notes;
    SendRestore(
        plan, options, [&] { return std::make_unique<ScriptedFront>(script); }, notes);
    return plan;
}

} // namespace

TEST(RestoreCommand, OneRefusedSettingDoesNotKeepTheOthersBack)
{
    Script script;
    script.Effective = {{"BIOS.Tag", "t"}, {"BIOS.Size", "7"}};
    script.Pending = {{"BIOS.Tag", {"t", "new"}}};
    const RestorePlan plan = Sent(script, {{"Tag", "new"}, {"Size", "100"}});
    EXPECT_EQ(script.Asked, (std::vector<SettingStringMap>{{{"Tag", "new"}}}));
    EXPECT_EQ(Find(plan, "Tag").Outcome, RestoreOutcome::Sent);
    EXPECT_EQ(Find(plan, "Size").Outcome, RestoreOutcome::Refused);
}

TEST(RestoreCommand, SameSystemIsHandedOn)
{
    Script script;
    Options options = OptionsFor();
    Sent(script, {{"Tag", "new"}}, options);
    options.SameSystem = true;
    Sent(script, {{"Tag", "new"}}, options);
    EXPECT_EQ(script.SameSystem, (std::vector<bool>{false, true}));
}

TEST(RestoreCommand, NothingToSendAsksForNothing)
{
    Script script;
    script.Effective = {{"BIOS.Tag", "t"}};
    const RestorePlan plan = Sent(script, {{"Tag", "t"}});
    EXPECT_TRUE(script.Asked.empty());
    EXPECT_EQ(Find(plan, "Tag").Outcome, RestoreOutcome::InPlace);
}

TEST(RestoreCommand, WhatWaitsAlreadyIsNotInPlace)
{
    Script script;
    script.Effective = {{"BIOS.Tag", "old"}};
    script.Pending = {{"BIOS.Tag", {"old", "t"}}};
    EXPECT_EQ(Find(Sent(script, {{"Tag", "t"}}), "Tag").Outcome, RestoreOutcome::Waiting);
    EXPECT_TRUE(script.Asked.empty());
}

/// The library's list of what is done holds every setting in each of these.
TEST(RestoreCommand, NothingIsClaimedThatIsNotKnown)
{
    struct Case
    {
        const char* What;
        RedfishConfigResult Answer;
        std::vector<RedfishConfigResult> Errors;
        SettingStringMap Failed;
        int Read;
        std::string Effective;
        SettingCompareMap Pending;
        RestoreOutcome Outcome;
        std::string Why;
    };
    const SettingCompareMap waiting = {{"BIOS.Tag", {"t", "new"}}};
    const std::string notShown = "the BMC does not show it among its pending values";
    const std::string lost = "h: gone; whether the change was done is not known";
    const std::string inside =
        "PATCH /x failed inside h (500 Internal Server Error); whether the change was done is not known";
    const std::string forbidden = "h: the account has not the privilege for PATCH /x (403 Forbidden).";
    const std::string refused = "PATCH /x was refused by h (400 Bad Request).";
    const std::string noWay = "h: the connection was refused; nothing was sent.";
    const Case cases[] = {
        {"accepted and shown", {1, "", ""}, {}, {}, 0, "t", waiting, RestoreOutcome::Sent, ""},
        {"accepted and in force", {0, "", ""}, {}, {}, 0, "new", {}, RestoreOutcome::InPlace, ""},
        {"accepted, not shown", {0, "", ""}, {}, {}, 0, "t", {}, RestoreOutcome::Unknown, notShown},
        {"accepted, unreadable", {0, "", ""}, {}, {}, 24, "", {}, RestoreOutcome::Sent, ""},
        {"refused by name",
         {18, "no", ""},
         {{10, "bad value", "BIOS.Tag"}},
         {},
         0,
         "t",
         {},
         RestoreOutcome::Refused,
         "bad value"},
        {"refused by name, but shown",
         {18, "no", ""},
         {{10, "bad value", "BIOS.Tag"}},
         {},
         0,
         "t",
         waiting,
         RestoreOutcome::Sent,
         ""},
        {"refused, bare name",
         {18, "no", ""},
         {{10, "bad value", "Tag"}},
         {},
         24,
         "",
         {},
         RestoreOutcome::Refused,
         "bad value"},
        {"in the failed map", {7, "", ""}, {}, {{"BIOS.Tag", "bad"}}, 0, "t", {}, RestoreOutcome::Refused, "bad"},
        {"cut off, unreadable", {24, lost, ""}, {}, {}, 24, "", {}, RestoreOutcome::Unknown, lost},
        {"cut off, not shown", {24, lost, ""}, {}, {}, 0, "t", {}, RestoreOutcome::Unknown, lost + "; " + notShown},
        {"cut off, but shown", {24, lost, ""}, {}, {}, 0, "t", waiting, RestoreOutcome::Sent, ""},
        {"cut off, whole sentence",
         {24, lost + ".", ""},
         {},
         {},
         0,
         "t",
         {},
         RestoreOutcome::Unknown,
         lost + "; " + notShown},
        {"failed inside, not shown",
         {32, inside, ""},
         {},
         {},
         0,
         "t",
         {},
         RestoreOutcome::Unknown,
         inside + "; " + notShown},
        {"busy", {33, "busy", ""}, {}, {}, 33, "", {}, RestoreOutcome::Refused, "busy"},
        {"busy, but shown", {33, "busy", ""}, {}, {}, 0, "t", waiting, RestoreOutcome::Sent, ""},
        {"no privilege", {24, forbidden, ""}, {}, {}, 24, "", {}, RestoreOutcome::Refused, forbidden},
        {"refused as a whole", {18, refused, ""}, {}, {}, 0, "t", {}, RestoreOutcome::Refused, refused},
        {"refused, but shown", {18, refused, ""}, {}, {}, 0, "t", waiting, RestoreOutcome::Sent, ""},
        {"refused with another",
         {18, refused, ""},
         {{10, "bad", "BIOS.Size"}},
         {},
         24,
         "",
         {},
         RestoreOutcome::Refused,
         refused},
        {"refused by the check, with others",
         {7, "some", ""},
         {},
         {{"BIOS.Size", "bad"}},
         0,
         "t",
         {},
         RestoreOutcome::NotSent,
         "some"},
        {"no connection", {24, noWay, ""}, {}, {}, 24, "", {}, RestoreOutcome::NotSent, noWay},
        {"no values before", {26, "none", ""}, {}, {}, 26, "", {}, RestoreOutcome::NotSent, "none"},
        {"no connection, but shown", {24, noWay, ""}, {}, {}, 0, "t", waiting, RestoreOutcome::Waiting, ""},
        {"no connection, but in force", {24, noWay, ""}, {}, {}, 0, "new", {}, RestoreOutcome::InPlace, ""},
    };
    for (const Case& one : cases)
    {
        Script script;
        script.Answer = one.Answer;
        script.Errors = one.Errors;
        script.Failed = one.Failed;
        script.Read = RedfishConfigResult(one.Read, "", "");
        script.Effective = {{"BIOS.Tag", one.Effective}};
        script.Pending = one.Pending;
        const RestorePlan plan = Sent(script, {{"Tag", "new"}});
        EXPECT_EQ(Find(plan, "Tag").Outcome, one.Outcome) << one.What;
        EXPECT_EQ(Find(plan, "Tag").Why, one.Why) << one.What;
    }
}

TEST(RestoreCommand, AFailureHasTheCodeOfItsCallAndARefusalInAnAcceptedOneThatOfRefusals)
{
    struct Case
    {
        RedfishConfigResult Answer;
        std::vector<RedfishConfigResult> Errors;
        int Code;
    };
    const Case cases[] = {
        {{1, "", ""}, {{10, "bad", "BIOS.Tag"}}, 18},
        {{18, "no", ""}, {{10, "bad", "BIOS.Tag"}}, 18},
        {{24, "gone; whether the change was done is not known.", ""}, {{10, "bad", "BIOS.Tag"}}, 24},
        {{33, "h is not ready", ""}, {{10, "bad", "BIOS.Tag"}}, 33},
        {{33, "h is not ready", ""}, {}, 33},
    };
    for (const Case& one : cases)
    {
        Script script;
        script.Answer = one.Answer;
        script.Errors = one.Errors;
        script.Read = {24, "", ""};
        const RestorePlan plan = Sent(script, {{"Tag", "new"}});
        EXPECT_EQ(Find(plan, "Tag").Outcome, RestoreOutcome::Refused) << one.Code;
        EXPECT_EQ(Find(plan, "Tag").Code, one.Code);
    }
}

TEST(RestoreCommand, WhatTheCheckRefusedIsInPlaceWhereTheBmcShowsIt)
{
    Script script;
    script.Effective = {{"BIOS.Size", "100"}, {"BIOS.Tag", "new"}};
    const RestorePlan plan = Sent(script, {{"Size", "100"}, {"Tag", "new"}});
    EXPECT_EQ(script.Asked, (std::vector<SettingStringMap>{{{"Tag", "new"}}}));
    EXPECT_EQ(Find(plan, "Size").Outcome, RestoreOutcome::InPlace);
    EXPECT_EQ(Find(plan, "Size").Code, 0);
}

TEST(RestoreCommand, WhatTheCheckRefusedWasNotSentWhereItWaits)
{
    Script script;
    script.Effective = {{"BIOS.Size", "7"}, {"BIOS.Tag", "new"}};
    script.Pending = {{"BIOS.Size", {"7", "100"}}};
    EXPECT_EQ(Find(Sent(script, {{"Size", "100"}, {"Tag", "new"}}), "Size").Outcome, RestoreOutcome::Waiting);
}

/// A BMC may show each password as an empty text.
TEST(RestoreCommand, WhatABmcShowsForAPasswordTellsNothing)
{
    Script script;
    script.Answer = {4, "", ""};
    script.Effective = {{"BIOS.Word", ""}};
    RestorePlan plan = PlanOf({{"Word", "hidden1"}}, false, false, {"Word"});
    std::vector<std::string> notes;
    SendRestore(
        plan, OptionsFor(), [&] { return std::make_unique<ScriptedFront>(script); }, notes);
    EXPECT_EQ(script.Asked.size(), 1U);
    EXPECT_EQ(Find(plan, "Word").Outcome, RestoreOutcome::Sent) << Find(plan, "Word").Why;
}

/// For a restart, and for who reads the warnings.
TEST(RestoreCommand, AFailedCallIsKeptInMindUnlessAllOfItIsShown)
{
    struct Case
    {
        const char* What;
        RedfishConfigResult Answer;
        std::vector<RedfishConfigResult> Errors;
        std::string Effective;
        bool Failed;
        std::vector<std::string> Notes;
    };
    const std::string refused = "PATCH /x was refused by h (400 Bad Request).";
    const std::string readOnly = "The setting Tag is read-only.";
    const Case cases[] = {
        {"accepted", {1, "", ""}, {}, "new", false, {}},
        {"refused", {18, refused, ""}, {}, "t", true, {}},
        {"refused by name", {18, refused, ""}, {{10, "bad", "BIOS.Tag"}}, "t", true, {}},
        {"refused, but in force",
         {18, refused, ""},
         {},
         "new",
         false,
         {"warning: the request failed, but the BMC shows the changes: " + refused}},
        {"refused by the library's own check", {18, readOnly, ""}, {}, "t", false, {}},
        {"refused by the check, but in force", {18, readOnly, ""}, {}, "new", false, {}},
        {"not sent, since a read failed", {32, "GET /x failed inside h (500).", ""}, {}, "t", true, {}},
    };
    for (const Case& one : cases)
    {
        Script script;
        script.Answer = one.Answer;
        script.Errors = one.Errors;
        script.Effective = {{"BIOS.Tag", one.Effective}};
        // What is refused before anything is sent is no failed call.
        RestorePlan plan = PlanOf({{"Tag", "new"}, {"Size", "100"}});
        std::vector<std::string> notes;
        SendRestore(
            plan, OptionsFor(), [&] { return std::make_unique<ScriptedFront>(script); }, notes);
        EXPECT_EQ(plan.CallFailed, one.Failed) << one.What;
        EXPECT_EQ(notes, one.Notes) << one.What;
    }
}

TEST(RestoreCommand, WhatTheCheckRefusedOnTheWayIsNoFailedRequestBesideOthers)
{
    for (const bool isDone : {true, false})
    {
        Script script;
        script.First = {18, "The setting Size is read-only.", ""};
        script.Answer = {18, "PATCH /x was refused by h (400 Bad Request).", ""};
        script.Effective = {{"BIOS.Size", "7"}, {"BIOS.Mode", isDone ? "Fixed" : "Free"}};
        const RestorePlan plan = Sent(script, {{"Mode", "Fixed"}, {"Size", "3"}});
        ASSERT_EQ(script.Asked.size(), 2U);
        EXPECT_EQ(Find(plan, "Size").Outcome, RestoreOutcome::NotSent);
        EXPECT_EQ(Find(plan, "Size").Why, "The setting Size is read-only.");
        EXPECT_EQ(plan.CallFailed, !isDone);
        EXPECT_TRUE(plan.CallUnfit);
    }
}

TEST(RestoreCommand, BehindALostConnectionNothingElseIsSent)
{
    Script script;
    script.Answer = {24, "gone; whether the change was done is not known.", ""};
    script.Read = {24, "gone", ""};
    const RestorePlan plan = Sent(script, {{"Mode", "Fixed"}, {"Size", "3"}});
    EXPECT_EQ(script.Asked, (std::vector<SettingStringMap>{{{"Size", "3"}}}));
    EXPECT_EQ(Find(plan, "Size").Outcome, RestoreOutcome::Unknown);
    EXPECT_EQ(Find(plan, "Mode").Outcome, RestoreOutcome::NotSent);
}

TEST(RestoreCommand, AfterASignalNothingElseIsSent)
{
    class Stopped : public ScriptedFront
    {
      public:
        using ScriptedFront::ScriptedFront;
        RedfishConfigResult Restore(SettingStringMap& values, SettingStringMap& done, SettingStringMap& failed,
                                    bool sameSystem, bool force) override
        {
            std::raise(SIGTERM);
            return ScriptedFront::Restore(values, done, failed, sameSystem, force);
        }
    };
    const auto run = []
    {
        InstallStopSignals();
        Script script;
        RestorePlan plan = PlanOf({{"Mode", "Fixed"}, {"Size", "3"}});
        std::vector<std::string> notes;
        SendRestore(
            plan, OptionsFor(), [&] { return std::make_unique<Stopped>(script); }, notes);
        const RestoreSetting& mode = Find(plan, "Mode");
        std::fprintf(stderr, "%zu sent, %d: %s\n", script.Asked.size(), mode.Code, mode.Why.c_str());
        std::_Exit(mode.Outcome == RestoreOutcome::NotSent ? 0 : 1);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "^1 sent, 24: the run was stopped\n$");
}

TEST(RestoreCommand, WhatWasNotSentHasTheCodeOfWhatStoppedTheRun)
{
    Script script;
    script.Answer = {33, "not ready", ""};
    script.Read = {33, "not ready", ""};
    const RestorePlan plan = Sent(script, {{"Mode", "Fixed"}, {"Size", "3"}});
    EXPECT_EQ(Find(plan, "Mode").Outcome, RestoreOutcome::NotSent);
    EXPECT_EQ(Find(plan, "Mode").Code, 33);
}

TEST(RestoreCommand, WhatIsInPlaceMayWaitWhereItCannotBeReadBack)
{
    Script script;
    script.Read = {26, "no values", ""};
    const RestorePlan plan = Sent(script, {{"Mode", "Free"}, {"Tag", "new"}});
    EXPECT_EQ(Find(plan, "Mode").Outcome, RestoreOutcome::InPlace);
    Answer answer;
    TellRestore(plan, OptionsFor(), "BIOS", answer);
    EXPECT_EQ(answer.Text, "BIOS.Mode\tFree\tin place: whether it waits for a reboot is not known\n"
                           "BIOS.Tag\tnew\tsent, takes effect after a reboot\n");
    EXPECT_EQ(answer.Code, 0);
}

TEST(RestoreCommand, NothingIsInPlaceWhereAnotherValueMayWait)
{
    Script script;
    script.Read = {26, "no values", ""};
    RestorePlan plan = PlanOf({{"Mode", "Free"}});
    plan.PendingUnread = true;
    std::vector<std::string> notes;
    SendRestore(
        plan, OptionsFor(), [&] { return std::make_unique<ScriptedFront>(script); }, notes);
    EXPECT_EQ(plan.Settings.front().Outcome, RestoreOutcome::Unknown);
    EXPECT_EQ(plan.Settings.front().Code, 26);
    Options options = OptionsFor();
    options.Json = true;
    Answer answer;
    TellRestore(plan, options, "BIOS", answer);
    EXPECT_EQ(answer.Data,
              (boost::json::object{
                  {"BIOS.Mode",
                   {{"value", "Free"}, {"outcome", "unknown"}, {"reason", "another value may wait for a reboot"}}}}));
    EXPECT_EQ(answer.Code, 26);
}

/// A BMC may repeat what it was sent in its refusal of that, of something else or of all.
TEST(RestoreCommand, PasswordsThatABmcRepeatsAreBlottedOut)
{
    struct Case
    {
        const char* What;
        std::string Secret;
        RedfishConfigResult Answer;
        std::vector<RedfishConfigResult> Errors;
        std::string OfWord;
        std::string OfTag;
        std::string Data;
    };
    const std::string leftOut = "what the BMC answered is not shown, since a new password may stand in it";
    const std::string lost = "gone; whether the change was done is not known";
    const std::string spaced = R"(plain "77")";
    const Case cases[] = {
        {"refused by name",
         "plain77",
         {18, "PATCH /x: no", ""},
         {{18, "The value plain77 is bad", "BIOS.Word"}},
         "refused: The value ******** is bad",
         "refused: PATCH /x: no",
         R"({"BIOS.Tag":{"value":"new","outcome":"refused","reason":"PATCH /x: no"},)"
         R"("BIOS.Word":{"value":"********","outcome":"refused","reason":"The value ******** is bad"}})"},
        {"refused with another",
         "plain77",
         {18, "PATCH /x: no", ""},
         {{18, "Not with plain77", "BIOS.Tag"}},
         "refused: PATCH /x: no",
         "refused: Not with ********",
         R"({"BIOS.Tag":{"value":"new","outcome":"refused","reason":"Not with ********"},)"
         R"("BIOS.Word":{"value":"********","outcome":"refused","reason":"PATCH /x: no"}})"},
        {"the whole call",
         "plain77",
         {18, "PATCH /x: No plain77", ""},
         {},
         "refused: PATCH /x: No ********",
         "refused: PATCH /x: No ********",
         R"({"BIOS.Tag":{"value":"new","outcome":"refused","reason":"PATCH /x: No ********"},)"
         R"("BIOS.Word":{"value":"********","outcome":"refused","reason":"PATCH /x: No ********"}})"},
        {"as JSON",
         spaced,
         {18, R"(PATCH /x: No {"Word":"plain \"77\""})", ""},
         {},
         R"(refused: PATCH /x: No {"Word":"********"})",
         R"(refused: PATCH /x: No {"Word":"********"})",
         R"({"BIOS.Tag":{"value":"new","outcome":"refused","reason":"PATCH /x: No {\"Word\":\"********\"}"},)"
         R"("BIOS.Word":{"value":"********","outcome":"refused","reason":"PATCH /x: No {\"Word\":\"********\"}"}})"},
        {"short",
         "77",
         {18, "PATCH /x: no", ""},
         {{18, "The value 77 is bad", "BIOS.Word"}},
         "refused: " + leftOut,
         "refused: PATCH /x: no",
         R"({"BIOS.Tag":{"value":"new","outcome":"refused","reason":"PATCH /x: no"},)"
         R"("BIOS.Word":{"value":"********","outcome":"refused","reason":")" +
             leftOut + R"("}})"},
        {"short, the whole call",
         "77",
         {18, "PATCH /x: No 77", ""},
         {},
         "refused: " + leftOut,
         "refused: " + leftOut,
         R"({"BIOS.Tag":{"value":"new","outcome":"refused","reason":")" + leftOut +
             R"("},"BIOS.Word":{"value":"********","outcome":"refused","reason":")" + leftOut + R"("}})"},
        {"short, refused by name before the answer was lost",
         "77",
         {24, lost, ""},
         {{18, "The value 77 is bad", "BIOS.Word"}},
         "refused: " + leftOut,
         "unknown: " + lost,
         R"({"BIOS.Tag":{"value":"new","outcome":"unknown","reason":")" + lost +
             R"("},"BIOS.Word":{"value":"********","outcome":"refused","reason":")" + leftOut + R"("}})"},
        {"short, and another refused by name",
         "no",
         {18, "PATCH /x", ""},
         {{18, "no such value", "BIOS.Tag"}},
         "refused: PATCH /x",
         "refused: no such value",
         R"({"BIOS.Tag":{"value":"new","outcome":"refused","reason":"no such value"},)"
         R"("BIOS.Word":{"value":"********","outcome":"refused","reason":"PATCH /x"}})"},
        {"short, and no answer",
         "77",
         {24, "h:77: " + lost, ""},
         {},
         "unknown: h:77: " + lost,
         "unknown: h:77: " + lost,
         R"({"BIOS.Tag":{"value":"new","outcome":"unknown","reason":"h:77: )" + lost +
             R"("},"BIOS.Word":{"value":"********","outcome":"unknown","reason":"h:77: )" + lost + R"("}})"},
    };
    for (const Case& one : cases)
    {
        Script script;
        script.Answer = one.Answer;
        script.Errors = one.Errors;
        script.Read = {24, "", ""};
        RestorePlan plan = PlanOf({{"Word", one.Secret}, {"Tag", "new"}}, false, false, {"Word"});
        std::vector<std::string> notes;
        SendRestore(
            plan, OptionsFor(), [&] { return std::make_unique<ScriptedFront>(script); }, notes);
        Answer text;
        TellRestore(plan, OptionsFor(), "BIOS", text);
        EXPECT_EQ(text.Text, "BIOS.Tag\tnew\t" + one.OfTag + "\nBIOS.Word\t********\t" + one.OfWord + "\n") << one.What;
        Options options = OptionsFor();
        options.Json = true;
        Answer data;
        TellRestore(plan, options, "BIOS", data);
        EXPECT_EQ(boost::json::serialize(data.Data), one.Data) << one.What;
        const std::string begin = "tavrine: " + std::to_string(one.Answer.ErrorCode()) + " BIOS.";
        EXPECT_EQ(StderrLines(data), begin + "Tag: " + one.OfTag + "\n" + begin + "Word: " + one.OfWord + "\n")
            << one.What;
    }
}

TEST(RestoreCommand, AWarningShowsNoPasswordEither)
{
    struct Case
    {
        std::string Secret;
        RedfishConfigResult Read;
        std::string Told;
    };
    const std::string leftOut = "what the BMC answered is not shown, since a new password may stand in it";
    const Case cases[] = {
        {"plain77", {33, "Not ready for plain77.", ""}, "Not ready for ********."},
        {"rea", {33, "Not ready.", ""}, leftOut},
        {"rea", {24, "Not ready.", ""}, "Not ready."},
        {"other", {33, "Not ready.", ""}, "Not ready."},
    };
    for (const Case& one : cases)
    {
        Script script;
        script.Read = one.Read;
        RestorePlan plan = PlanOf({{"Word", one.Secret}, {"Mode", "Free"}}, false, false, {"Word"});
        std::vector<std::string> notes;
        ScriptedFront front(script);
        FindWaiting(plan, front, notes);
        SendRestore(
            plan, OptionsFor(), [&] { return std::make_unique<ScriptedFront>(script); }, notes);
        EXPECT_EQ(notes, (std::vector<std::string>{"warning: what waits for a reboot could not be read: " + one.Told,
                                                   "warning: the values could not be read back: " + one.Told}));
    }
}
