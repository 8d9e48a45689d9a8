#include "Verify.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "FakeFront.h"
#include "Log.h"
#include "Options.h"
#include "PowerCommands.h"

using namespace Tavrine::Tool;
using namespace tooltest;
using std::chrono::milliseconds;

namespace
{

/// A machine whose state is a function of the time since its reset; the clock runs by
/// pauses alone.
struct FakeMachine
{
    milliseconds Clock{0};
    milliseconds LongestPause{0};
    milliseconds ResetAt{-1};
    std::string ResetBody;
    std::vector<std::string> Told;
    /// The types of resets; empty: there is no such action.
    std::string Offered = R"(["On","ForceOff","GracefulRestart"])";
    std::string SystemBefore = Plain("On");
    /// What the system answers so long after its reset; empty: no answer.
    std::function<std::string(milliseconds)> System = [](milliseconds) { return Plain("On"); };
    std::function<std::string(milliseconds)> Values = [](milliseconds) { return R"({"A":"new"})"; };
    /// What a read of them comes to, with a line in the log that tells the cause of a failure.
    RedfishConfigResult ValuesResult{0, "", ""};
    /// What waits before the reset, and what a read of it comes to.
    tooltest::SettingCompareMap Pending;
    RedfishConfigResult PendingResult{2, "", ""};
    /// So long after the reset the BIOS resource cannot be read.
    milliseconds BiosLost{0};
    /// What the request for a reset comes to; done all the same.
    RedfishConfigResult ResetResult{0, "", ""};
    std::string Before = "";
    std::string After = R"("Time":"2026-01-01T00:00:00Z",)";
    std::string Messages = "[]";

    static std::string Plain(const std::string& power, const std::string& more = "")
    {
        return R"("PowerState":")" + power + "\"" + more;
    }

    milliseconds Since() const { return Clock - ResetAt; }
    bool Reset() const { return ResetAt >= milliseconds(0); }

    RedfishConfigResult Get(const std::string& url, std::string& response)
    {
        if (url == "/redfish/v1/Systems")
        {
            response = R"({"Members":[{"@odata.id":"/redfish/v1/Systems/7"}]})";
        }
        else if (url == "/redfish/v1/Systems/7")
        {
            const std::string state = Reset() ? System(Since()) : SystemBefore;
            if (state.empty())
            {
                return {24, "nobody there", ""};
            }
            const std::string actions =
                R"(,"Actions":{"#ComputerSystem.Reset":{"target":"/reset","ResetType@Redfish.AllowableValues":)" +
                Offered + "}}";
            response = "{" + state + (Offered.empty() ? "" : actions) + "}";
        }
        else if (url == "/redfish/v1/Systems/7/Bios" && (!Reset() || Since() >= BiosLost))
        {
            response = R"({"AttributeRegistry":"R","@Redfish.Settings":{)" + (Reset() ? After : Before) +
                       R"("Messages":)" + Messages + "}}";
        }
        else
        {
            return {26, "not found", ""};
        }
        return {0, "", ""};
    }
};

class ValuesFront : public FakeFront
{
  public:
    explicit ValuesFront(const FakeMachine& machine) : m_Machine(machine)
    {
        Group = {machine.ValuesResult, {{"BIOS", machine.Values(machine.Since())}}};
    }

    RedfishConfigResult QueryGroupSettingValues(SettingStringMap& values) override
    {
        if (Group.first != 0)
        {
            Tavrine::Log(1, __FILE__, __LINE__).Stream() << "failed though: no way to it";
        }
        return FakeFront::QueryGroupSettingValues(values);
    }

    RedfishConfigResult CompareSettingPendingValues(tooltest::SettingCompareMap& values,
                                                    const std::string& setting) override
    {
        EXPECT_TRUE(setting.empty() && !m_Machine.Reset());
        values = m_Machine.Pending;
        return m_Machine.PendingResult;
    }

  private:
    const FakeMachine& m_Machine;
};

RebootMeans MeansOf(FakeMachine& machine)
{
    return {{[&](const std::string& url, std::string& response) { return machine.Get(url, response); },
             [&](const std::string& url, const std::string& body, std::string&)
             {
                 EXPECT_EQ(url, "/reset");
                 machine.ResetBody = body;
                 machine.ResetAt = machine.Clock;
                 return machine.ResetResult;
             }},
            [&](bool) { return std::make_unique<ValuesFront>(machine); },
            [&] { return machine.Clock; },
            [&](milliseconds time)
            {
                machine.Clock += time;
                machine.LongestPause = std::max(machine.LongestPause, time);
                return true;
            },
            [&](const std::string& line) { machine.Told.push_back(line); }};
}

Answer Verified(FakeMachine& machine, std::uint32_t wait = 600)
{
    Options options;
    options.Reboot = true;
    if (wait > 0)
    {
        options.Wait = wait;
    }
    Answer answer;
    RebootAndVerify(MeansOf(machine), options, {{"A", "new"}}, answer);
    return answer;
}

std::string AwayUntil(milliseconds since, milliseconds down, milliseconds up)
{
    return since < down ? FakeMachine::Plain("On")
           : since < up ? ""
                        : FakeMachine::Plain("On", R"(,"BootProgress":{"LastState":"OSRunning"})");
}

} // namespace

TEST(Verify, ASystemThatWentAwayAndCameBackIsVerified)
{
    FakeMachine machine;
    machine.System = [](milliseconds since) { return AwayUntil(since, milliseconds(5000), milliseconds(60'000)); };
    const Answer answer = Verified(machine);
    EXPECT_EQ(answer.Code, 0) << answer.Message;
    EXPECT_EQ(answer.Text, "1 of 1 new values are in force\n");
    EXPECT_EQ(machine.ResetBody, R"({"ResetType":"GracefulRestart"})");
    EXPECT_EQ(machine.Told,
              (std::vector<std::string>{"restart requested (GracefulRestart)", "waiting for the system to go down …",
                                        "waiting for the BMC …", "the system is back"}));
    EXPECT_GE(machine.Clock, milliseconds(60'000));
}

TEST(Verify, TheTimeOfTheLastResetTellsOfARestartThatNobodySaw)
{
    FakeMachine machine;
    machine.System = [](milliseconds)
    { return FakeMachine::Plain("On", R"(,"LastResetTime":"2026-01-01T00:00:00Z")"); };
    EXPECT_EQ(Verified(machine).Code, 0);
    EXPECT_EQ(machine.Clock, milliseconds(0));
}

TEST(Verify, FirmwareAtWorkIsWaitedFor)
{
    for (const std::string state :
         {"PrimaryProcessorInitializationStarted", "BusInitializationStarted", "MemoryInitializationStarted",
          "SecondaryProcessorInitializationStarted", "PCIResourceConfigStarted"})
    {
        FakeMachine machine;
        machine.System = [&](milliseconds since)
        {
            return FakeMachine::Plain("On", R"(,"BootProgress":{"LastState":")" +
                                                (since < milliseconds(9000) ? state : "OSRunning") + "\"}");
        };
        EXPECT_EQ(Verified(machine).Code, 0) << state;
        EXPECT_GE(machine.Clock, milliseconds(9000)) << state;
    }
}

TEST(Verify, ASystemThatWasOffIsBackAsSoonAsItIsOn)
{
    FakeMachine machine;
    machine.SystemBefore = FakeMachine::Plain("Off");
    const Answer answer = Verified(machine);
    EXPECT_EQ(answer.Code, 0) << answer.Message;
    EXPECT_EQ(machine.ResetBody, R"({"ResetType":"On"})");
    EXPECT_EQ(machine.Clock, milliseconds(0));
}

TEST(Verify, ALongRestartIsLookedAtEveryTenSeconds)
{
    FakeMachine machine;
    machine.System = [](milliseconds since) { return AwayUntil(since, milliseconds(0), milliseconds(500'000)); };
    EXPECT_EQ(Verified(machine).Code, 0);
    EXPECT_EQ(machine.LongestPause, milliseconds(10'000));
}

TEST(Verify, TimeThatRunsOutIsAFailureAndNothingIsClaimed)
{
    const std::pair<std::function<std::string(milliseconds)>, std::string> cases[] = {
        {[](milliseconds) { return FakeMachine::Plain("On"); },
         "Whether the system was restarted within the time to wait is not known; whether the changes are in force is "
         "not "
         "known"},
        {[](milliseconds) { return std::string(); }, "The BMC did not come back within the time to wait: nobody there; "
                                                     "whether the changes are in force is not known"},
        {[](milliseconds) { return FakeMachine::Plain("Off"); },
         "The system has not started within the time to wait; whether the changes are in force is not known"},
    };
    for (const auto& [system, message] : cases)
    {
        FakeMachine machine;
        machine.System = system;
        const Answer answer = Verified(machine, 30);
        EXPECT_EQ(answer.Code, 24);
        EXPECT_EQ(answer.Message, message);
        EXPECT_EQ(answer.Text, "");
        EXPECT_EQ(machine.Clock, milliseconds(30'000));
    }
}

TEST(Verify, AValueThatIsNotInForceIsAFailureWithTheBmcsOwnWords)
{
    FakeMachine machine;
    machine.System = [](milliseconds since) { return AwayUntil(since, milliseconds(0), milliseconds(1)); };
    machine.Values = [](milliseconds) { return R"({"A":"old"})"; };
    machine.Messages = R"([{"Message":"Fine."},{"Message":"Not today.","RelatedProperties":["#/Attributes/A"]}])";
    const Answer answer = Verified(machine);
    EXPECT_EQ(answer.Code, 18);
    ASSERT_EQ(answer.Errors.size(), 1U);
    EXPECT_EQ(answer.Errors[0].Message, "BIOS.A: the new value is not in force after the reboot; it is old");
    EXPECT_EQ(answer.Errors[0].Cause, "Not today.");
    EXPECT_EQ(answer.Text, "0 of 1 new values are in force\n");
}

TEST(Verify, NoNumberIsToldOfValuesThatCannotBeRead)
{
    FakeMachine machine;
    machine.System = [](milliseconds since) { return AwayUntil(since, milliseconds(0), milliseconds(1)); };
    machine.ValuesResult = {26, "", ""};
    const Answer answer = Verified(machine);
    EXPECT_EQ(answer.Code, 26);
    EXPECT_EQ(answer.Text, "");
    ASSERT_EQ(answer.Errors.size(), 1U);
    EXPECT_EQ(answer.Errors[0].Message, "Whether the new values are in force is not known: Fail to query the setting.");
    EXPECT_EQ(answer.Errors[0].Cause, "no way to it");
}

TEST(Verify, ValuesThatLagBehindAreLookedAtAgain)
{
    FakeMachine machine;
    machine.After = ""; // it does not tell when it applies changes
    machine.System = [](milliseconds since) { return AwayUntil(since, milliseconds(0), milliseconds(1)); };
    machine.Values = [](milliseconds since)
    { return since < milliseconds(20'000) ? R"({"A":"old"})" : R"({"A":"new"})"; };
    EXPECT_EQ(Verified(machine).Code, 0);
    EXPECT_GE(machine.Clock, milliseconds(20'000));
}

TEST(Verify, ValuesThatDoNotComeAreWaitedForAMinuteWithinTheTimeToWait)
{
    for (const auto& [wait, end] : {std::pair{30U, 30'000}, {60U, 60'000}, {600U, 60'000}})
    {
        FakeMachine machine;
        machine.After = "";
        machine.System = [](milliseconds)
        { return FakeMachine::Plain("On", R"(,"LastResetTime":"2026-01-01T00:00:00Z")"); };
        machine.Values = [](milliseconds) { return R"({"A":"old"})"; };
        EXPECT_EQ(Verified(machine, wait).Code, 18);
        EXPECT_EQ(machine.Clock, milliseconds(end)) << wait;
    }
}

TEST(Verify, AFailedReadDoesNotTellThatChangesWereApplied)
{
    FakeMachine machine;
    machine.Before = machine.After;
    machine.BiosLost = milliseconds(2000);
    machine.System = [](milliseconds since) { return AwayUntil(since, milliseconds(0), milliseconds(1)); };
    machine.Values = [](milliseconds since)
    { return since < milliseconds(5000) ? R"({"A":"old"})" : R"({"A":"new"})"; };
    const Answer answer = Verified(machine);
    EXPECT_EQ(answer.Code, 0) << answer.Message;
    EXPECT_GE(machine.Clock, milliseconds(5000));
}

/// A network that lost the request may lose more: only the system itself tells that it has restarted.
TEST(Verify, AnOutageIsNotTakenForARestart)
{
    struct Case
    {
        std::function<std::string(milliseconds)> System;
        bool IsSeen;
        std::string Words;
    };
    const auto seconds = [](int count) { return milliseconds(1000 * count); };
    const Case cases[] = {
        {[&](milliseconds since) { return since < seconds(9) ? "" : FakeMachine::Plain("On"); }, false,
         "h: gone; whether the change was done is not known. Whether the system was restarted within the time to wait "
         "is not known"},
        {[&](milliseconds since) { return since < seconds(9) ? FakeMachine::Plain("Off") : FakeMachine::Plain("On"); },
         true, ""},
        {[&](milliseconds since)
         { return FakeMachine::Plain("On", since < seconds(9) ? "" : R"(,"LastResetTime":"2026-01-02T00:00:00Z")"); },
         true, ""},
        {[](milliseconds) { return FakeMachine::Plain("Off"); }, false,
         "h: gone; whether the change was done is not known. The system has not started within the time to wait"},
    };
    for (const Case& one : cases)
    {
        FakeMachine machine;
        machine.ResetResult = RedfishConfigResult(24, "h: gone; whether the change was done is not known.", "");
        machine.System = one.System;
        const Answer answer = Verified(machine, 60);
        EXPECT_EQ(answer.Code, one.IsSeen ? 0 : 24);
        EXPECT_EQ(answer.Message, one.IsSeen ? "" : "Whether the system is restarted is not known: " + one.Words);
        EXPECT_EQ(answer.Notes.empty(), !one.IsSeen);
    }
}

TEST(Verify, AMissingValueIsNotCalledInForce)
{
    FakeMachine machine;
    machine.System = [](milliseconds since) { return AwayUntil(since, milliseconds(0), milliseconds(1)); };
    machine.Values = [](milliseconds) { return R"({"A":null})"; };
    const Answer answer = Verified(machine);
    EXPECT_EQ(answer.Code, 18);
    EXPECT_NE(answer.Message.find("is not known"), std::string::npos) << answer.Message;
}

TEST(Verify, WithoutWaitTheRestartIsOnlyAskedFor)
{
    FakeMachine machine;
    const Answer answer = Verified(machine, 0);
    EXPECT_EQ(answer.Code, 0);
    EXPECT_EQ(machine.ResetBody, R"({"ResetType":"GracefulRestart"})");
    EXPECT_EQ(answer.Notes, std::vector<std::string>{
                                "restart requested (GracefulRestart); what comes of the changes: tavrine results"});
}

TEST(Verify, OnlyForWhatIsKnownToWaitIsASystemRestarted)
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
        Options options;
        Answer unasked;
        RebootForChanges(MeansOf(machine), options, one.Waiting, unasked);
        EXPECT_TRUE(unasked.Notes.empty()) << one.What;
        options.Reboot = true;
        options.Wait = one.Wait ? std::optional<std::uint32_t>(600) : std::nullopt;
        Answer answer;
        RebootForChanges(MeansOf(machine), options, one.Waiting, answer);
        EXPECT_EQ(machine.Reset(), one.Restarts) << one.What;
        EXPECT_EQ(answer.Notes, one.Note.empty() ? std::vector<std::string>() : std::vector<std::string>{one.Note})
            << one.What;
        EXPECT_EQ(answer.Code, 0) << one.What;
    }
}

TEST(Verify, WhatElseComesIntoForceIsTold)
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
        std::vector<std::string> Notes;
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
        Options options;
        options.Reboot = true;
        WaitingChanges waiting;
        waiting.Expected = {{"A", "new"}};
        waiting.Unreadable = {"BIOS.P"};
        waiting.Secrets.emplace_back(std::string("hunter2000"));
        Answer answer;
        RebootForChanges(MeansOf(machine), options, waiting, answer);
        EXPECT_TRUE(machine.Reset());
        std::vector<std::string> notes = one.Notes;
        notes.emplace_back("restart requested (GracefulRestart); what comes of the changes: tavrine results");
        EXPECT_EQ(answer.Notes, notes);
    }
}

TEST(Verify, NoValueIsSaidToBeUnverifiedWhereTheSystemWasNotRestarted)
{
    FakeMachine machine;
    machine.Offered = R"(["On"])";
    Options options;
    options.Reboot = true;
    options.Wait = 600;
    WaitingChanges waiting;
    waiting.Unreadable = {"BIOS.P"};
    Answer answer;
    RebootForChanges(MeansOf(machine), options, waiting, answer);
    EXPECT_EQ(answer.Code, 16);
    EXPECT_EQ(answer.Notes, std::vector<std::string>());
}

TEST(Verify, WhatTheBmcTellsOfTheChangesShowsNoPassword)
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
        Options options;
        options.Reboot = true;
        options.Wait = 600;
        WaitingChanges waiting;
        waiting.Expected = {{"A", "new"}};
        waiting.Secrets.emplace_back(std::string(one.Password));
        Answer answer;
        RebootForChanges(MeansOf(machine), options, waiting, answer);
        ASSERT_EQ(answer.Errors.size(), 1U);
        EXPECT_EQ(answer.Errors[0].Message, "BIOS.A: the new value is not in force after the reboot; it is old");
        EXPECT_EQ(answer.Errors[0].Cause, one.Told);
    }
}

TEST(Verify, AnAnswerToTheRequestForARestartShowsNoPassword)
{
    FakeMachine machine;
    machine.ResetResult = RedfishConfigResult(18, "Not with hunter2000.", "");
    Options options;
    options.Reboot = true;
    WaitingChanges waiting;
    waiting.Expected = {{"A", "new"}};
    waiting.Secrets.emplace_back(std::string("hunter2000"));
    Answer answer;
    RebootForChanges(MeansOf(machine), options, waiting, answer);
    EXPECT_EQ(answer.Message, "The system was not restarted: Not with ********.");
}

TEST(Verify, WhatIsToldOfALostRestartOrOfLostValuesShowsNoPassword)
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
        Options options;
        options.Reboot = true;
        options.Wait = 600;
        WaitingChanges waiting;
        waiting.Expected = {{"A", "new"}};
        waiting.Secrets.emplace_back(std::string("hunter2000"));
        Answer answer;
        RebootForChanges(MeansOf(machine), options, waiting, answer);
        EXPECT_EQ(answer.Notes, one.Notes);
        EXPECT_EQ(answer.Message, one.Message);
    }
}

TEST(Verify, ASystemWithoutAResetActionIsNotRestarted)
{
    FakeMachine machine;
    machine.Offered = "";
    const Answer answer = Verified(machine);
    EXPECT_EQ(answer.Code, 11);
    EXPECT_EQ(answer.Message, "The system was not restarted: The BMC offers no reset action for /redfish/v1/Systems/7");
    EXPECT_FALSE(machine.Reset());
}

TEST(Verify, AResetThatIsNotOfferedIsNotSent)
{
    FakeMachine machine;
    machine.Offered = R"(["ForceRestart","On"])";
    const Answer answer = Verified(machine);
    EXPECT_EQ(answer.Code, 16);
    EXPECT_EQ(answer.Message,
              "The system was not restarted: The BMC does not offer the reset GracefulRestart; it offers: "
              "ForceRestart, On");
    EXPECT_EQ(machine.ResetBody, "");
}

TEST(PowerCommands, TypesThatLeaveASystemOffAreNoReboot)
{
    Options options;
    EXPECT_EQ(RebootTypeFault(options), "");
    options.Names = {"ForceRestart"};
    EXPECT_EQ(RebootTypeFault(options), "");
    options.Names = {"ForceOff"};
    EXPECT_NE(RebootTypeFault(options), "");
    options.Names = {"On", "On"};
    EXPECT_NE(RebootTypeFault(options), "");
}

TEST(PowerCommands, ResultsAreToldSettingBySetting)
{
    FakeMachine machine;
    machine.ResetAt = milliseconds(0);
    machine.Messages = R"([7,{"MessageId":"Base.1.0.Success","MessageSeverity":"OK"},
        {"Message":"No.","Severity":"Critical","RelatedProperties":["/Attributes/A~1b","#/Attributes/C/0","/Other/D","E"]}])";
    Options options;
    Answer answer = TellResults(MeansOf(machine).Requests, options, "BIOS");
    EXPECT_EQ(answer.Code, 0);
    EXPECT_EQ(answer.Text, "\tOK\tBase.1.0.Success\nBIOS.A/b\tCritical\tNo.\nBIOS.C/0\tCritical\tNo.\n"
                           "BIOS.E\tCritical\tNo.\n");
    EXPECT_EQ(answer.Notes, std::vector<std::string>{"changes were last applied at 2026-01-01T00:00:00Z"});
}
