#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <cwchar>
#include <locale.h> // NOLINT(modernize-deprecated-headers): newlocale is POSIX
#include <optional>
#include <poll.h>
#include <pty.h>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <utmp.h>
#include <vector>

#include "ChildProcess.h"
#include "RunningBmc.h"
#include "SharedData.h"
#include "TestMachine.h"

using namespace tooltest;

namespace
{

/// The tool on a terminal of its own: all three streams are the terminal.
class OnTerminal
{
  public:
    explicit OnTerminal(const Launch& launch, unsigned short columns = 0)
    {
        const winsize size{0, columns, 0, 0};
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
        openpty(&m_Terminal, &m_Other, nullptr, nullptr, &size);
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

    /// Reads until the child has ended and nothing is left. @return its exit status.
    int ReadToEnd()
    {
        int status = 0;
        bool ended = false;
        for (bool more = true; more;)
        {
            ended = ended || waitpid(m_Id, &status, WNOHANG) == m_Id;
            pollfd input{m_Terminal, POLLIN, 0};
            std::array<char, 4096> buffer{};
            const ssize_t count = poll(&input, 1, 20) > 0 ? read(m_Terminal, buffer.data(), buffer.size()) : 0;
            m_Shown.append(buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
            more = !ended || count > 0;
        }
        m_Id = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
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

/// Columns that a line takes on a terminal; nothing where it is no UTF-8.
std::optional<std::size_t> ColumnsOf(const std::string& line)
{
    const locale_t utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    const locale_t former = uselocale(utf8);
    std::wstring wide(line.size() + 1, L'\0');
    const std::size_t length = mbstowcs(wide.data(), line.c_str(), wide.size());
    const int columns = length == static_cast<std::size_t>(-1) ? -1 : wcswidth(wide.data(), length);
    uselocale(former);
    freelocale(utf8);
    return columns < 0 ? std::nullopt : std::optional(static_cast<std::size_t>(columns));
}

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
