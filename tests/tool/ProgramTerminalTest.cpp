#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <poll.h>
#include <pty.h>
#include <string>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <utmp.h>
#include <vector>

#include "ChildProcess.h"
#include "RunningBmc.h"
#include "TestMachine.h"

using namespace tooltest;

namespace
{

/// The tool on a terminal of its own: all three streams are the terminal.
class OnTerminal
{
  public:
    explicit OnTerminal(const Launch& launch)
    {
        std::vector<std::string> arguments = {launch.Program};
        arguments.insert(arguments.end(), launch.Arguments.begin(), launch.Arguments.end());
        std::vector<std::string> environment = ChildEnvironment(launch.Variables);
        std::vector<char*> argumentPointers;
        std::vector<char*> environmentPointers;
        for (std::string& text : arguments)
        {
            argumentPointers.push_back(text.data());
        }
        for (std::string& text : environment)
        {
            environmentPointers.push_back(text.data());
        }
        argumentPointers.push_back(nullptr);
        environmentPointers.push_back(nullptr);
        // The other end stays open here, so that what the child wrote can be read after it.
        openpty(&m_Terminal, &m_Other, nullptr, nullptr, nullptr);
        m_Id = fork();
        if (m_Id == 0)
        {
            close(m_Terminal);
            login_tty(m_Other);
            execve(argumentPointers[0], argumentPointers.data(), environmentPointers.data());
            _exit(126);
        }
    }
    OnTerminal(const OnTerminal&) = delete;
    OnTerminal& operator=(const OnTerminal&) = delete;
    ~OnTerminal()
    {
        if (m_Id > 0)
        {
            kill(m_Id, SIGKILL);
            waitpid(m_Id, nullptr, 0);
        }
        close(m_Terminal);
        close(m_Other);
    }

    /// Reads until the words were shown. @return false when they do not come within a
    /// minute.
    bool Shows(const std::string& words)
    {
        while (m_Shown.find(words) == std::string::npos)
        {
            pollfd input{m_Terminal, POLLIN, 0};
            std::array<char, 4096> buffer{};
            const ssize_t count = poll(&input, 1, 60000) > 0 ? read(m_Terminal, buffer.data(), buffer.size()) : 0;
            if (count <= 0)
            {
                return false;
            }
            m_Shown.append(buffer.data(), static_cast<std::size_t>(count));
        }
        return true;
    }

    void Type(const std::string& text) const
    {
        EXPECT_EQ(write(m_Terminal, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }

    bool Echoes() const
    {
        termios state{};
        return tcgetattr(m_Other, &state) == 0 && (state.c_lflag & ECHO) != 0;
    }

    int Status()
    {
        int status = 0;
        waitpid(m_Id, &status, 0);
        m_Id = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    const std::string& Shown() const { return m_Shown; }

  private:
    int m_Terminal = -1;
    int m_Other = -1;
    pid_t m_Id = -1;
    std::string m_Shown;
};

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
