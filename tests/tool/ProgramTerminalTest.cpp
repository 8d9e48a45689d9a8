#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "ChildProcess.h"
#include "OnTerminal.h"
#include "RunningBmc.h"
#include "SharedData.h"
#include "TestMachine.h"

using namespace tooltest;

namespace
{

Launch WithoutPassword(const RunningBmc& bmc, const std::vector<std::string>& arguments)
{
    Launch launch = bmc.Tool(arguments);
    launch.Variables.clear();
    return launch;
}

} // namespace

TEST(ProgramTerminal, ThePasswordIsAskedForWithoutEcho)
{
    const TestMachine machine;
    const RunningBmc bmc({"--machine", machine.Path()});
    OnTerminal tool(WithoutPassword(bmc, {"show", "Mode"}));
    ASSERT_TRUE(tool.Shows("Password of admin at 127.0.0.1:" + bmc.Port() + ": ")) << tool.Shown();
    EXPECT_FALSE(tool.Echoes());
    tool.Type("password\n");
    EXPECT_TRUE(tool.Shows("BIOS.Mode=Uefi")) << tool.Shown();
    EXPECT_EQ(tool.Status(), 0);
    EXPECT_TRUE(tool.Echoes());
    EXPECT_EQ(tool.Shown().find("password"), std::string::npos) << tool.Shown();
}

TEST(ProgramTerminal, ASignalAtThePromptBringsTheEchoBack)
{
    const RunningBmc bmc;
    OnTerminal tool(WithoutPassword(bmc, {"show"}));
    ASSERT_TRUE(tool.Shows("Password of ")) << tool.Shown();
    tool.Type("\x03");
    EXPECT_EQ(tool.Status(), 128 + SIGINT);
    EXPECT_TRUE(tool.Echoes());
}

TEST(ProgramTerminal, AValueIsAskedForWithoutEcho)
{
    Launch launch;
    launch.Arguments = {"--simulate", "set", "AssetTag=-"};
    OnTerminal tool(launch);
    ASSERT_TRUE(tool.Shows("New value of UEFI.AssetTag: ")) << tool.Shown();
    EXPECT_FALSE(tool.Echoes());
    tool.Type("hidden-words\n");
    ASSERT_TRUE(tool.Shows("The same again: ")) << tool.Shown();
    EXPECT_FALSE(tool.Echoes());
    tool.Type("hidden-words\n");
    EXPECT_TRUE(tool.Shows("UEFI.AssetTag: changed, takes effect after a reboot")) << tool.Shown();
    EXPECT_EQ(tool.Status(), 0);
    EXPECT_TRUE(tool.Echoes());
    EXPECT_EQ(tool.Shown().find("hidden-words"), std::string::npos) << tool.Shown();
}

TEST(ProgramTerminal, ASlipInAValueThatNobodySeesIsNoticed)
{
    Launch launch;
    launch.Arguments = {"--simulate", "set", "AssetTag=-"};
    OnTerminal tool(launch);
    ASSERT_TRUE(tool.Shows("New value of UEFI.AssetTag: ")) << tool.Shown();
    tool.Type("hidden-words\n");
    ASSERT_TRUE(tool.Shows("The same again: ")) << tool.Shown();
    tool.Type("hidden-worts\n");
    EXPECT_TRUE(
        tool.Shows("Unable to read the value of UEFI.AssetTag from the terminal: the two lines are not the same"))
        << tool.Shown();
    EXPECT_EQ(tool.Status(), 16);
    EXPECT_EQ(tool.Shown().find("hidden-wor"), std::string::npos) << tool.Shown();
}

TEST(ProgramTerminal, NoSignalLeavesTheEchoOff)
{
    for (const char* typed : {"\x03", "\x1c"})
    {
        Launch launch;
        launch.Arguments = {"--simulate", "set", "AssetTag=-"};
        OnTerminal tool(launch);
        ASSERT_TRUE(tool.Shows("New value of UEFI.AssetTag: ")) << tool.Shown();
        tool.Type(typed);
        tool.Type("\n"); // where the signal is put off, it comes behind the line
        EXPECT_NE(tool.Status(), 0);
        EXPECT_TRUE(tool.Echoes());
    }
}

TEST(ProgramTerminal, WhatAPasswordIsInDangerOfIsToldBeforeItIsAskedFor)
{
    const RunningBmc bmc({"--http"});
    OnTerminal tool(WithoutPassword(bmc, {"show", "AssetTag"}));
    ASSERT_TRUE(tool.Shows("Password of ")) << tool.Shown();
    EXPECT_NE(tool.Shown().find("in clear"), std::string::npos) << tool.Shown();
    tool.Type("password\n");
    EXPECT_EQ(tool.Status(), 0);
}

TEST(ProgramTerminal, GroupsAreATreeThere)
{
    const TestMachine machine;
    Launch launch;
    launch.Arguments = {"groups", "--simulate", "--machine", machine.Path()};
    OnTerminal tool(launch);
    EXPECT_TRUE(tool.Shows("Boot Options\r\n  UEFI.Mode\r\n  UEFI.Timeout\r\nKey\\tboard\r\n")) << tool.Shown();
    EXPECT_EQ(tool.Status(), 0);
}

TEST(ProgramTerminal, WhatTakesLongIsTold)
{
    const TestMachine machine;
    const RunningBmc bmc({"--machine", machine.Path(), "--latency-ms", "700"});
    OnTerminal slow(bmc.Tool({"show", "Mode"}));
    EXPECT_TRUE(slow.Shows("tavrine: reading from 127.0.0.1:" + bmc.Port())) << slow.Shown();
    EXPECT_TRUE(slow.Shows("BIOS.Mode=Uefi")) << slow.Shown();
    EXPECT_EQ(slow.Status(), 0);
}

TEST(ProgramTerminal, LongJapaneseTextsStayWithinTheTerminal)
{
    const auto machine = testdata::SharedData() / "hpe-DL360";
    if (!std::filesystem::exists(machine))
    {
        GTEST_SKIP() << "no " << machine;
    }
    Launch launch;
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"describe", "ProcVirtualization", "BootMode"}, {"find", "ハイパー"}})
    {
        launch.Arguments = {"--simulate", "--machine", machine.string(), "--lang", "ja"};
        launch.Arguments.insert(launch.Arguments.end(), command.begin(), command.end());
        OnTerminal tool(launch, 50);
        EXPECT_EQ(tool.ReadToEnd(), 0);
        EXPECT_NE(tool.Shown().find("UEFI.Proc"), std::string::npos) << tool.Shown();
        std::istringstream lines(tool.Shown());
        std::size_t widest = 0;
        for (std::string line; std::getline(lines, line);)
        {
            line.erase(line.find_last_not_of('\r') + 1);
            const std::optional<std::size_t> width = ColumnsOf(line);
            ASSERT_TRUE(width) << "no UTF-8: " << line;
            EXPECT_LE(*width, 50U) << line;
            widest = std::max(widest, *width);
        }
        EXPECT_GT(widest, 40U);
    }
}

TEST(ProgramTerminal, ComparisonsAreATableThere)
{
    const TestMachine machine;
    Launch launch;
    launch.Arguments = {"--simulate", "--machine", machine.Path(), "compare",
                        machine.Folder().Write("saved", "Mode=" + std::string(100, 'x') + "\n")};
    OnTerminal tool(launch, 30);
    EXPECT_TRUE(tool.Shows("SETTING    CURRENT  SAVED\r\nUEFI.Mode  Uefi     xxxxxxxxx…\r\n")) << tool.Shown();
    EXPECT_EQ(tool.Status(), 0);
}
