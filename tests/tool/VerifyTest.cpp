#include "Verify.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "FakeMachine.h"
#include "Options.h"
#include "PowerCommands.h"

using namespace Tavrine::Tool;
using namespace tooltest;
using std::chrono::milliseconds;

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
