// Defaults of single settings, from a BMC that does not do what it says.

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <string>
#include <vector>

#include "ChildProcess.h"
#include "FaultyProxy.h"
#include "RunningBmc.h"

using namespace tooltest;

namespace
{

bool Says(const std::string& text, const std::string& words) { return text.find(words) != std::string::npos; }

} // namespace

TEST(ProgramLoadDefault, WhatCannotBeReadBackIsNotCalledInPlace)
{
    const RunningBmc bmc({"--fault", "PATCH * #2 done status 200", "--fault", "GET */Bios/Settings #4 status 500"});
    ASSERT_EQ(RunToEnd(bmc.Tool({"set", "AltitudeMetres=500"})).Status, 0);
    ASSERT_EQ(RunToEnd(bmc.Tool({"reboot", "--wait", "60"})).Status, 0);
    const Finished loaded = RunToEnd(bmc.Tool({"loaddefault", "AltitudeMetres"}));
    EXPECT_EQ(loaded.Status, 32) << loaded.Errors;
    EXPECT_EQ(loaded.Output, "BIOS.AltitudeMetres: unknown: whether it has its default, or gets it with a reboot, is "
                             "not known; its pending value could not be read\n");
    EXPECT_EQ(RunToEnd(bmc.Tool({"pending"})).Output, "BIOS.AltitudeMetres=500 -> 0\n");
}

TEST(ProgramLoadDefault, AnotherValueThatWaitsIsNotTheDefault)
{
    const RunningBmc bmc({"--fault", "PATCH * #2+ status 200"});
    ASSERT_EQ(RunToEnd(bmc.Tool({"set", "AltitudeMetres=500"})).Status, 0);
    const Finished loaded = RunToEnd(bmc.Tool({"loaddefault", "AltitudeMetres", "--reboot", "--wait", "60"}));
    EXPECT_EQ(loaded.Status, 18) << loaded.Errors;
    EXPECT_EQ(loaded.Output, "BIOS.AltitudeMetres: unknown: no failure was reported, but the BMC does not show the "
                             "default among its pending values\n");
    EXPECT_TRUE(Says(loaded.Errors, "tavrine: not restarted, since what the BMC has received is not known\n"))
        << loaded.Errors;
    EXPECT_EQ(RunToEnd(bmc.Tool({"pending"})).Output, "BIOS.AltitudeMetres=408 -> 500\n");
}

TEST(ProgramLoadDefault, ADefaultIsVerifiedWhereTheBmcLacksTheActionsForProtectedSettings)
{
    const RunningBmc bmc({"--fault", "POST *GetProtectedAttributes status 404"});
    const Finished loaded =
        RunToEnd(bmc.Tool({"--system-type", "uefi", "loaddefault", "AltitudeMetres", "--reboot", "--wait", "60"}));
    EXPECT_EQ(loaded.Status, 0) << loaded.Errors;
    EXPECT_EQ(loaded.Output, "UEFI.AltitudeMetres: sent, takes effect after a reboot\n"
                             "1 of 1 new values are in force\n");
}

TEST(ProgramLoadDefault, AnInterruptedRunTellsOfEachSetting)
{
    const RunningBmc bmc({"--http"});
    ASSERT_EQ(RunToEnd(bmc.Tool({"set", "AltitudeMetres=500", "BootFailLimit=3", "AssetOwner=me"})).Status, 0);
    const auto run = [&](std::vector<std::string> words)
    {
        std::atomic<const ChildProcess*> running = nullptr;
        const FaultyProxy proxy(bmc.Port(),
                                [&](int, const std::string& line)
                                {
                                    if (!line.starts_with("PATCH"))
                                    {
                                        return Fault::None;
                                    }
                                    running.wait(nullptr);
                                    running.load()->Signal(SIGINT);
                                    return Fault::DeadBefore;
                                });
        words.insert(words.end(), {"loaddefault", "AltitudeMetres", "BootFailLimit", "AssetOwner"});
        Launch launch = bmc.Tool(words);
        launch.Arguments[1] = proxy.Url();
        ChildProcess tool(launch);
        running = &tool;
        running.notify_all();
        return tool.Wait();
    };
    const std::string doubt = "whether the change was done is not known; its pending value could not be read";
    const Finished text = run({});
    EXPECT_EQ(text.Status, 128 + SIGINT);
    EXPECT_TRUE(
        Says(text.Errors, "tavrine: 24 Stopped by a signal: Interrupt; whether the change was done is not known"))
        << text.Errors;
    EXPECT_EQ(text.Output, "BIOS.AltitudeMetres: unknown: " + doubt +
                               "\nBIOS.BootFailLimit: not sent: a request before it failed\n"
                               "BIOS.AssetOwner: not sent: a request before it failed\n");
    const Finished data = run({"--json"});
    EXPECT_TRUE(
        Says(data.Output, R"("settings":{"BIOS.AltitudeMetres":{"outcome":"unknown","reason":")" + doubt +
                              R"("},"BIOS.BootFailLimit":{"outcome":"not sent","reason":"a request before it failed"},)"
                              R"("BIOS.AssetOwner":{"outcome":"not sent","reason":"a request before it failed"}})"))
        << data.Output;
}
