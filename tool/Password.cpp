#include "Password.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include "InputFile.h"
#include "Progress.h"

namespace Tavrine::Tool
{
namespace
{

constexpr const char* Terminal = "/dev/tty";
constexpr const char* Variable = "TAVRINE_PASSWORD";

/// An open file that is closed when this goes, unless it is not ours to close.
class Descriptor
{
  public:
    Descriptor(int number, bool owned) : m_Number(number), m_Owned(owned) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor()
    {
        if (m_Owned && m_Number >= 0)
        {
            close(m_Number);
        }
    }
    int Number() const { return m_Number; }

  private:
    int m_Number;
    bool m_Owned;
};

/// Turns the echo of a terminal off, and on again when this goes. Suspending is put
/// off for as long, since a shell would turn the echo on behind our back, and so is the
/// signal that ends the program at once and would leave the echo off.
class EchoOff
{
  public:
    explicit EchoOff(int terminal) : m_Terminal(terminal)
    {
        sigset_t suspend;
        sigemptyset(&suspend);
        sigaddset(&suspend, SIGTSTP);
        sigaddset(&suspend, SIGQUIT);
        pthread_sigmask(SIG_BLOCK, &suspend, &m_FormerMask);
        m_Done = tcgetattr(terminal, &m_Former) == 0;
        if (m_Done)
        {
            termios silent = m_Former;
            silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
            silent.c_lflag |= ECHONL;
            m_Done = tcsetattr(terminal, TCSAFLUSH, &silent) == 0;
        }
    }
    EchoOff(const EchoOff&) = delete;
    EchoOff& operator=(const EchoOff&) = delete;
    ~EchoOff()
    {
        if (m_Done)
        {
            tcsetattr(m_Terminal, TCSAFLUSH, &m_Former);
        }
        pthread_sigmask(SIG_SETMASK, &m_FormerMask, nullptr);
    }
    bool Done() const { return m_Done; }

  private:
    int m_Terminal;
    bool m_Done = false;
    termios m_Former{};
    sigset_t m_FormerMask{};
};

/// Reads up to a line's end, byte by byte, so that nothing behind it is swallowed.
/// @return empty, or what went wrong.
std::string ReadLine(int descriptor, PasswordText& password)
{
    std::string& line = password.Text();
    for (;;)
    {
        char byte = 0;
        std::string error;
        const std::optional<std::size_t> count = ReadSome(descriptor, &byte, 1, error);
        if (!count)
        {
            return error;
        }
        if (*count == 0 || byte == '\n')
        {
            break;
        }
        if (byte == '\0')
        {
            return "the first line holds a NUL byte";
        }
        if (line.size() == LongestPassword)
        {
            return "the first line is longer than " + std::to_string(LongestPassword) + " bytes";
        }
        line.push_back(byte);
    }
    if (!line.empty() && line.back() == '\r')
    {
        line.pop_back();
    }
    return line.empty() ? "the first line is empty" : std::string();
}

std::optional<Failure> ReadPasswordFile(const std::string& file, PasswordText& password)
{
    const bool standardInput = file == "-";
    const std::string shown = standardInput ? "standard input" : file;
    const Descriptor input(standardInput ? STDIN_FILENO : open(file.c_str(), O_RDONLY | O_CLOEXEC), !standardInput);
    if (input.Number() < 0)
    {
        return Failure{CodeOpenFile, "Unable to open the password file " + shown + ": " + std::strerror(errno)};
    }
    if (const std::string error = ReadLine(input.Number(), password); !error.empty())
    {
        return Failure{CodeParameter, "Unable to read the password from " + shown + ": " + error};
    }
    return std::nullopt;
}

/// @param value  of the variable; nothing of it is left there.
std::optional<Failure> TakeFromEnvironment(char* value, PasswordText& password)
{
    const std::size_t size = std::strlen(value);
    const bool isTooLong = size > LongestPassword;
    password.Text().assign(value, isTooLong ? 0 : size);
    explicit_bzero(value, size);
    unsetenv(Variable);
    return !isTooLong ? std::nullopt
                      : std::optional(Failure{CodeParameter, "Unable to read the password from " +
                                                                 std::string(Variable) + ": it is longer than " +
                                                                 std::to_string(LongestPassword) + " bytes"});
}

bool HasControllingTerminal() { return Descriptor(open(Terminal, O_RDWR | O_CLOEXEC | O_NOCTTY), true).Number() >= 0; }

std::optional<Failure> Prompt(const std::string& who, PasswordText& password)
{
    if (!HasControllingTerminal())
    {
        return Failure{StatusUsage, "No password: give --password-file or TAVRINE_PASSWORD"};
    }
    const std::string error = AskHidden("Password of " + who + ": ", password);
    return error.empty()
               ? std::nullopt
               : std::optional(Failure{CodeParameter, "Unable to read the password from the terminal: " + error});
}

} // namespace

std::string AskHidden(const std::string& question, PasswordText& reply)
{
    const Descriptor terminal(open(Terminal, O_RDWR | O_CLOEXEC | O_NOCTTY), true);
    if (terminal.Number() < 0)
    {
        return std::string("there is no terminal to ask on: ") + std::strerror(errno);
    }
    const Progress::Pause pause;
    const EchoOff silence(terminal.Number());
    if (!silence.Done() || write(terminal.Number(), question.data(), question.size()) < 0)
    {
        return std::string("nobody can be asked: ") + std::strerror(errno);
    }
    return ReadLine(terminal.Number(), reply);
}

std::optional<Failure> FindPassword(const std::string& file, const std::string& who, PasswordText& password)
{
    if (!file.empty())
    {
        return ReadPasswordFile(file, password);
    }
    char* const value = std::getenv(Variable);
    const bool isSet = value != nullptr && *value != '\0';
    return isSet ? TakeFromEnvironment(value, password) : Prompt(who, password);
}

} // namespace Tavrine::Tool
