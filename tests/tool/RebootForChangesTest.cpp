#include "Verify.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "FakeMachine.h"
#include "Options.h"

using namespace Tavrine::Tool;
using namespace tooltest;
using std::chrono::milliseconds;

namespace
{

/// With `--reboot`, and `--wait` where there is a time to wait.
Answer Rebooted(FakeMachine& machine, const WaitingChanges& waiting, std::optional<std::uint32_t> wait = std::nullopt)
{
    Options options;
    options.Reboot = true;
    options.Wait = wait;
    Answer answer;
    RebootForChanges(MeansOf(machine), options, waiting, answer);
    return answer;
}

} // namespace

TEST(RebootForChanges, OnlyForWhatIsKnownToWaitIsASystemRestarted)
{
    struct Case
    {
        const char* What;
        WaitingChanges Waiting;
        bool Wait;
        bool Restarts;
        std::string Note;
    };
    const std::string unread = "BIOS.P: its new value is not verified, since it cannot be read or may be a password";
    const std::string unwatched = "restart requested (GracefulRestart); what comes of the changes: tavrine results";
    const Case cases[] = {
        {"nothing", {}, true, false, "not restarted, since none of these changes waits for it"},
        {"a value", {{{"A", "new"}}, {}, false, false}, true, true, ""},
        {"what cannot be read", {{}, {"BIOS.P"}, false, false}, true, true, unread},
        {"much that cannot be read",
         {{}, {"A", "B", "C", "D", "E", "F", "G"}, false, false},
         true,
         true,
         "A, B, C, D, E and 2 more: the new values are not verified, since they cannot be read or may be passwords"},
        {"what cannot be read, unwatched", {{}, {"BIOS.P"}, false, false}, false, true, unwatched},
        {"what is not known",
         {{{"A", "new"}}, {"BIOS.P"}, true, true},
         true,
         false,
         "not restarted, since what the BMC has received is not known"},
        {"a failed request",
         {{{"A", "new"}}, {"BIOS.P"}, false, true},
         true,
         false,
         "not restarted, since a request failed"},
        {"a refused setting beside a value",
         {{{"A", "new"}}, {}, false, false, true},
         true,
         false,
         "not restarted, since a setting was refused; what was not comes into force with: tavrine reboot"},
        {"nothing but a refused setting",
         {{}, {}, false, false, true},
         true,
         false,
         "not restarted, since none of these changes waits for it"},
    };
    for (const Case& one : cases)
    {
        FakeMachine machine;
        machine.System = [](milliseconds since) { return AwayUntil(since, milliseconds(0), milliseconds(1)); };
        Answer unasked;
        RebootForChanges(MeansOf(machine), Options(), one.Waiting, unasked);
        EXPECT_TRUE(unasked.Notes.empty()) << one.What;
        EXPECT_TRUE(unasked.More.empty()) << one.What;
        const Answer answer = Rebooted(machine, one.Waiting, one.Wait ? std::optional(600U) : std::nullopt);
        EXPECT_EQ(machine.Reset(), one.Restarts) << one.What;
        EXPECT_EQ(answer.Notes, one.Note.empty() ? std::vector<std::string>() : std::vector<std::string>{one.Note})
            << one.What;
        EXPECT_EQ(answer.Code, 0) << one.What;
        const char* const outcome = !one.Restarts ? R"({"outcome":"not requested"})"
                                    : one.Wait    ? R"({"type":"GracefulRestart","outcome":"the system is back"})"
                                                  : R"({"type":"GracefulRestart","outcome":"restart requested"})";
        EXPECT_EQ(boost::json::serialize(answer.More.at("reboot")), outcome) << one.What;
    }
}

TEST(RebootForChanges, WhatElseComesIntoForceIsTold)
{
    const std::string others = "warning: other changes wait, too, and come into force with a restart: ";
    const tooltest::SettingCompareMap own = {{"BIOS.A", {"old", "new"}}, {"BIOS.p", {"", "x"}}};
    tooltest::SettingCompareMap more = own;
    more["BIOS.Theirs"] = {"1", "2"};
    more["BIOS.B"] = {"1", "2"};
    struct Case
    {
        tooltest::SettingCompareMap Pending;
        RedfishConfigResult Result;
        std::vector<std::string> Told;
    };
    const Case cases[] = {
        {{}, {2, "", ""}, {}},
        {own, {0, "", ""}, {}},
        {more, {0, "", ""}, {others + "BIOS.B, BIOS.Theirs"}},
        {{},
         {26, "Not with hunter2000.", ""},
         {"warning: whether other changes wait for the restart, too, is not known: Not with ********."}},
    };
    for (const Case& one : cases)
    {
        FakeMachine machine;
        machine.System = [](milliseconds since) { return AwayUntil(since, milliseconds(0), milliseconds(1)); };
        machine.Pending = one.Pending;
        machine.PendingResult = one.Result;
        WaitingChanges waiting;
        waiting.Expected = {{"A", "new"}};
        waiting.Unreadable = {"BIOS.P"};
        waiting.Secrets.emplace_back(std::string("hunter2000"));
        const Answer answer = Rebooted(machine, waiting);
        EXPECT_TRUE(machine.Reset());
        EXPECT_EQ(machine.Told, one.Told);
        EXPECT_EQ(answer.Notes, std::vector<std::string>{"restart requested (GracefulRestart); what comes of the "
                                                         "changes: tavrine results"});
    }
}

TEST(RebootForChanges, NoValueIsSaidToBeUnverifiedWhereTheSystemWasNotRestarted)
{
    FakeMachine machine;
    machine.Offered = R"(["On"])";
    WaitingChanges waiting;
    waiting.Unreadable = {"BIOS.P"};
    const Answer answer = Rebooted(machine, waiting, 600);
    EXPECT_EQ(answer.Code, 16);
    EXPECT_EQ(answer.Notes, std::vector<std::string>());
}

TEST(RebootForChanges, WhatTheBmcTellsOfTheChangesShowsNoPassword)
{
    struct Case
    {
        std::string Password;
        std::string Told;
    };
    const Case cases[] = {
        {"hunter2000", "Not with ********."},
        {"wit", "what the BMC answered is not shown, since a new password may stand in it"},
        {"old", "Not with hunter2000."},
    };
    for (const Case& one : cases)
    {
        FakeMachine machine;
        machine.System = [](milliseconds since) { return AwayUntil(since, milliseconds(0), milliseconds(1)); };
        machine.Values = [](milliseconds) { return R"({"A":"old"})"; };
        machine.Messages = R"([{"Message":"Not with hunter2000.","RelatedProperties":["#/Attributes/A"]}])";
        WaitingChanges waiting;
        waiting.Expected = {{"A", "new"}};
        waiting.Secrets.emplace_back(std::string(one.Password));
        const Answer answer = Rebooted(machine, waiting, 600);
        ASSERT_EQ(answer.Errors.size(), 1U);
        EXPECT_EQ(answer.Errors[0].Message, "BIOS.A: the new value is not in force after the reboot; it is old");
        EXPECT_EQ(answer.Errors[0].Cause, one.Told);
    }
}

TEST(RebootForChanges, AnAnswerToTheRequestForARestartShowsNoPassword)
{
    FakeMachine machine;
    machine.ResetResult = RedfishConfigResult(18, "Not with hunter2000.", "");
    WaitingChanges waiting;
    waiting.Expected = {{"A", "new"}};
    waiting.Secrets.emplace_back(std::string("hunter2000"));
    const Answer answer = Rebooted(machine, waiting);
    EXPECT_EQ(answer.Message, "The system was not restarted: Not with ********.");
}

TEST(RebootForChanges, WhatIsToldOfALostRestartOrOfLostValuesShowsNoPassword)
{
    const RedfishConfigResult good{0, "", ""};
    const RedfishConfigResult lost{24, "hunter2000: gone; whether the change was done is not known.", ""};
    const RedfishConfigResult refused{18, "Not with hunter2000.", ""};
    struct Case
    {
        RedfishConfigResult Reset;
        RedfishConfigResult Values;
        std::vector<std::string> Notes;
        std::string Message;
    };
    const Case cases[] = {
        {lost,
         good,
         {"warning: the request to restart has failed, but the system was restarted: ********: gone; whether the "
          "change was done is not known."},
         ""},
        {good, refused, {}, "Whether the new values are in force is not known: Not with ********."},
    };
    for (const Case& one : cases)
    {
        FakeMachine machine;
        machine.ResetResult = one.Reset;
        machine.ValuesResult = one.Values;
        machine.System = [](milliseconds)
        { return FakeMachine::Plain("On", R"(,"LastResetTime":"2026-01-01T00:00:00Z")"); };
        WaitingChanges waiting;
        waiting.Expected = {{"A", "new"}};
        waiting.Secrets.emplace_back(std::string("hunter2000"));
        const Answer answer = Rebooted(machine, waiting, 600);
        EXPECT_EQ(answer.Notes, one.Notes);
        EXPECT_EQ(answer.Message, one.Message);
    }
}

TEST(RebootForChanges, WhereTheBiosResourceCannotBeReadNothingIsRestarted)
{
    FakeMachine machine;
    machine.IsBiosUnread = true;
    WaitingChanges waiting;
    waiting.Expected = {{"A", "new"}};
    const Answer answer = Rebooted(machine, waiting);
    EXPECT_EQ(answer.Code, 26);
    EXPECT_EQ(answer.Message, "The system was not restarted, since it is not known whether all settings would go to "
                              "their defaults with it: not found");
    EXPECT_FALSE(machine.Reset());
}

TEST(RebootForChanges, WhatTheBmcOffersDoesNotTellThatSomethingWasSent)
{
    FakeMachine machine;
    machine.Offered = R"(["On","whether the change was done is not known"])";
    WaitingChanges waiting;
    waiting.Expected = {{"A", "new"}};
    const Answer answer = Rebooted(machine, waiting, 600);
    EXPECT_EQ(answer.Code, 16);
    EXPECT_EQ(answer.Message, "The system was not restarted: The BMC does not offer the reset GracefulRestart; it "
                              "offers: On, whether the change was done is not known");
    EXPECT_EQ(machine.Clock, milliseconds(0)) << "there is nothing to wait for";
}
