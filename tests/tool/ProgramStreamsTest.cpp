#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <string>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "ChildProcess.h"
#include "RunningBmc.h"
#include "SharedData.h"
#include "TestMachine.h"

using namespace tooltest;

namespace
{

Launch Simulated(std::vector<std::string> arguments)
{
    Launch launch;
    launch.Arguments = {"--simulate"};
    launch.Arguments.insert(launch.Arguments.end(), arguments.begin(), arguments.end());
    return launch;
}

/// A machine with more settings than a pipe holds.
std::string BigMachine(const testdata::TemporaryFolder& folder)
{
    std::string attributes;
    for (int number = 0; number < 20000; ++number)
    {
        attributes += (number == 0 ? "\"S" : ",\"S") + std::to_string(number) + "\":\"a value of some length\"";
    }
    folder.Write("big/bios.json", R"({"@odata.id":"/redfish/v1/Systems/1/Bios","Id":"Bios","Name":"BIOS",)"
                                  R"("AttributeRegistry":"Big.v1_0_0","Attributes":{)" +
                                      attributes + "}}");
    folder.Write("big/registry.en.json", R"({"Id":"Big.v1_0_0","Name":"Big","Language":"en","OwningEntity":"Tests",)"
                                         R"("RegistryVersion":"1.0.0","RegistryEntries":{"Attributes":[]}})");
    return (folder.Path() / "big").string();
}

/// Waits until the access log of a BMC has a line with these words, for a minute at
/// most.
bool LogHas(const std::string& path, const std::string& words)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (std::chrono::steady_clock::now() < deadline)
    {
        if (testdata::ReadFile(path).find(words) != std::string::npos)
        {
            return true;
        }
        std::this_thread::yield();
    }
    return false;
}

/// Waits until nothing more fits the child's output; false where that does not come.
bool BecomesFull(const ChildProcess& child, int bytes)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (child.UnreadOutput() < bytes && std::chrono::steady_clock::now() < deadline)
    {
        std::this_thread::yield();
    }
    return child.UnreadOutput() == bytes;
}

/// Waits until all that was written was read; false where that does not come.
bool BecomesEmpty(int pipe)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    int unread = -1;
    while (ioctl(pipe, FIONREAD, &unread) == 0 && unread > 0 && std::chrono::steady_clock::now() < deadline)
    {
        std::this_thread::yield();
    }
    return unread == 0;
}

} // namespace

TEST(ProgramStreams, AReaderThatGoesAwayIsNoError)
{
    const testdata::TemporaryFolder folder;
    for (const std::size_t bytes : {std::size_t{0}, std::size_t{20}})
    {
        Launch launch = Simulated({"--machine", BigMachine(folder), "show"});
        launch.ReadAtMost = bytes;
        const Finished shown = RunToEnd(launch);
        EXPECT_EQ(shown.Status, 0);
        EXPECT_FALSE(shown.Killed);
        EXPECT_EQ(shown.Errors, "");
        launch.Arguments.emplace_back("Unknown");
        EXPECT_EQ(RunToEnd(launch).Status, 20);
    }
}

TEST(ProgramStreams, AFullDiskIsAnError)
{
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"show"}, {"show", "--json"}, {"groups"}, {"--help"}, {"--version"}})
    {
        Launch launch = Simulated(arguments);
        launch.OutputFile = "/dev/full";
        const Finished shown = RunToEnd(launch);
        EXPECT_EQ(shown.Status, 15);
        EXPECT_EQ(shown.Errors, "tavrine: 15 Unable to write to standard output: No space left on device\n");
    }
}

TEST(ProgramStreams, AFailureKeepsItsCodeWhereStandardOutputIsLostToo)
{
    Launch launch = Simulated({"show", "Unknown", "--json"});
    launch.OutputFile = "/dev/full";
    const Finished shown = RunToEnd(launch);
    EXPECT_EQ(shown.Status, 20);
    EXPECT_NE(shown.Errors.find("tavrine: 15 Unable to write to standard output: "), std::string::npos) << shown.Errors;
}

TEST(ProgramStreams, WhatBecameOfChangesIsToldWhereStandardOutputIsLost)
{
    const RunningBmc bmc;
    Launch launch = bmc.Tool({"set", "BootPromptSeconds=9"});
    launch.OutputFile = "/dev/full";
    const Finished set = RunToEnd(launch);
    EXPECT_EQ(set.Status, 15);
    EXPECT_EQ(set.Errors, "tavrine: 15 Unable to write to standard output: No space left on device\n"
                          "BIOS.BootPromptSeconds: changed, takes effect after a reboot\n");
    launch.Arguments.emplace_back("--json");
    const std::string document = RunToEnd(launch).Errors;
    EXPECT_NE(document.find(R"("outcome":"already")"), std::string::npos) << document;

    const testdata::TemporaryFolder folder;
    const std::string file = folder.Write("custom", "BootPromptSeconds=9\n");
    launch = bmc.Tool({"custom-default", "import", file, "--json"});
    launch.OutputFile = "/dev/full";
    const std::string imported = RunToEnd(launch).Errors;
    EXPECT_NE(imported.find(R"("bytes":20)"), std::string::npos) << imported;
}

TEST(ProgramStreams, AReaderIsWaitedForWhereWritingDoesNot)
{
    Launch launch = Simulated({"show", "--json"});
    const std::string whole = RunToEnd(launch).Output;
    ASSERT_GT(whole.size(), 8192U);
    launch.NonBlockingOutput = 4096;
    ChildProcess tool(launch);
    ASSERT_TRUE(BecomesFull(tool, launch.NonBlockingOutput));
    const Finished shown = tool.Wait();
    EXPECT_EQ(shown.Status, 0);
    EXPECT_EQ(shown.Errors, "");
    EXPECT_EQ(shown.Output, whole);
}

TEST(ProgramStreams, ASignalEndsTheWaitForAReader)
{
    Launch launch = Simulated({"show", "--json"});
    launch.NonBlockingOutput = 4096;
    ChildProcess tool(launch);
    ASSERT_TRUE(BecomesFull(tool, launch.NonBlockingOutput));
    tool.Signal(SIGTERM);
    siginfo_t ended;
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(tool.Id()), &ended, WEXITED | WNOWAIT), 0);
    const Finished stopped = tool.Wait();
    EXPECT_EQ(stopped.Status, 128 + SIGTERM) << stopped.Errors;
    EXPECT_FALSE(stopped.Killed);
    EXPECT_EQ(stopped.Output.size(), 4096U);
}

TEST(ProgramStreams, ALogThatCannotBeWrittenIsTold)
{
    const Finished shown = RunToEnd(Simulated({"show", "AssetTag", "--log-file", "/dev/full"}));
    EXPECT_EQ(shown.Status, 0) << shown.Errors;
    EXPECT_EQ(shown.Errors.find("tavrine: warning: /dev/full: lost "), 0U) << shown.Errors;
}

TEST(ProgramStreams, AClosedStandardOutputIsAnErrorAndGetsNowhereElse)
{
    const testdata::TemporaryFolder folder;
    const std::string log = (folder.Path() / "log").string();
    Launch launch = Simulated({"show", "--json", "--log-file", log});
    launch.CloseOutput = true;
    EXPECT_EQ(RunToEnd(launch).Status, 15);
    const std::string text = testdata::ReadFile(log);
    EXPECT_NE(text, "");
    EXPECT_EQ(text.find("\"settings\""), std::string::npos);
}

TEST(ProgramStreams, ASessionIsOpenedAndClosedOnOneConnection)
{
    const testdata::TemporaryFolder folder;
    const std::string log = (folder.Path() / "access").string();
    const RunningBmc bmc({"--access-log", log});
    EXPECT_EQ(RunToEnd(bmc.Tool({"show"})).Status, 0);
    ASSERT_TRUE(LogHas(log, "DELETE"));
    std::ifstream file(log);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);)
    {
        lines.push_back(line);
    }
    EXPECT_NE(lines.front().find("\"POST\""), std::string::npos) << lines.front();
    EXPECT_NE(lines.back().find("\"DELETE\""), std::string::npos) << lines.back();
    for (const std::string& line : lines)
    {
        EXPECT_NE(line.find("\"connection\":1"), std::string::npos) << line;
    }
}

TEST(ProgramStreams, ASignalClosesTheSession)
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
    {
        const testdata::TemporaryFolder folder;
        const std::string log = (folder.Path() / "access").string();
        const RunningBmc bmc({"--access-log", log, "--latency-ms", "300"});
        ChildProcess tool(bmc.Tool({"show", "--json"}));
        // By then the login is answered: one that is not cannot be undone.
        ASSERT_TRUE(LogHas(log, "\"GET\""));
        tool.Signal(signal);
        const Finished stopped = tool.Wait();
        EXPECT_EQ(stopped.Status, 128 + signal) << stopped.Errors;
        EXPECT_FALSE(stopped.Killed);
        EXPECT_EQ(stopped.Errors.find("tavrine: 24 Stopped by a signal"), 0U) << stopped.Errors;
        EXPECT_TRUE(LogHas(log, "DELETE"));
    }
}

TEST(ProgramStreams, ASignalEndsTheWaitForAnInput)
{
    const testdata::TemporaryFolder folder;
    const std::string input = (folder.Path() / "input").string();
    ASSERT_EQ(mkfifo(input.c_str(), 0600), 0);
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"restore", input}, {"compare", input}, {"custom-default", "import", input}})
    {
        const int writer = open(input.c_str(), O_RDWR | O_CLOEXEC);
        ASSERT_EQ(write(writer, "A=1\n", 4), 4);
        ChildProcess tool(Simulated(command));
        ASSERT_TRUE(BecomesEmpty(writer)) << command[0];
        tool.Signal(SIGTERM);
        const Finished stopped = tool.Wait();
        EXPECT_EQ(stopped.Status, 128 + SIGTERM) << command[0] << stopped.Errors;
        EXPECT_FALSE(stopped.Killed) << command[0];
        close(writer);
    }
}

/// To the end of this search it would take minutes.
TEST(ProgramStreams, ASignalEndsASearch)
{
    const testdata::TemporaryFolder folder;
    const std::string log = (folder.Path() / "access").string();
    const RunningBmc bmc({"--machine", BigMachine(folder), "--access-log", log});
    ChildProcess tool(bmc.Tool({"find", "--regex", "^(?:([a-z ]+)*[#!]|.*)$"}));
    ASSERT_TRUE(LogHas(log, "Big.v1_0_0.en.json"));
    tool.Signal(SIGINT);
    const Finished stopped = tool.Wait();
    EXPECT_EQ(stopped.Status, 128 + SIGINT) << stopped.Errors;
    EXPECT_FALSE(stopped.Killed);
    EXPECT_EQ(stopped.Output, "");
}

TEST(ProgramStreams, HelpAndVersionTouchNothing)
{
    Launch launch;
    launch.Variables["TAVRINE_CONFIG"] = "/nonexistent";
    launch.Arguments = {"--version"};
    const Finished version = RunToEnd(launch);
    EXPECT_EQ(version.Status, 0);
    EXPECT_EQ(version.Output.find("tavrine "), 0U);
    EXPECT_EQ(version.Errors, "");
    launch.Arguments = {"--help"};
    const Finished help = RunToEnd(launch);
    EXPECT_EQ(help.Status, 0);
    EXPECT_NE(help.Output.find("--password-file"), std::string::npos);
}
