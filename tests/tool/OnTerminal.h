#pragma once

#include <algorithm>
#include <array>
#include <csignal>
#include <cwchar>
#include <gtest/gtest.h>
#include <locale.h> // NOLINT(modernize-deprecated-headers): newlocale is POSIX
#include <optional>
#include <poll.h>
#include <pty.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <utmp.h>
#include <vector>

#include "ChildProcess.h"

namespace tooltest
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

    /// From now on bytes are handed over as they are typed, and not echoed.
    void WaitForNoLines() const
    {
        termios state{};
        tcgetattr(m_Other, &state);
        state.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
        EXPECT_EQ(tcsetattr(m_Other, TCSANOW, &state), 0);
    }

    /// Bytes that were typed and that nobody has read.
    int Unread() const
    {
        int count = -1;
        ioctl(m_Other, FIONREAD, &count);
        return count;
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
inline std::optional<std::size_t> ColumnsOf(const std::string& line)
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

} // namespace tooltest
