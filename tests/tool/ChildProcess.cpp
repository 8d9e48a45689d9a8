#include "ChildProcess.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <string_view>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tooltest
{
namespace
{

constexpr std::chrono::seconds Patience(60);

struct Pipe
{
    int Read = -1;
    int Write = -1;
};

Pipe MakePipe()
{
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
    {
        throw std::runtime_error("no pipe");
    }
    return {ends[0], ends[1]};
}

std::vector<char*> Pointers(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    for (std::string& text : texts)
    {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

[[noreturn]] void Become(const Launch& launch, int input, int output, int errors, char** arguments, char** environment)
{
    setsid();
    dup2(input, STDIN_FILENO);
    dup2(errors, STDERR_FILENO);
    if (launch.CloseOutput)
    {
        close(STDOUT_FILENO);
    }
    else if (!launch.OutputFile.empty())
    {
        dup2(open(launch.OutputFile.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600), STDOUT_FILENO);
    }
    else
    {
        dup2(output, STDOUT_FILENO);
    }
    if (launch.NonBlockingOutput != 0)
    {
        fcntl(STDOUT_FILENO, F_SETPIPE_SZ, launch.NonBlockingOutput);
        fcntl(STDOUT_FILENO, F_SETFL, O_WRONLY | O_NONBLOCK);
    }
    execve(arguments[0], arguments, environment);
    _exit(126);
}

} // namespace

std::vector<std::string> ChildEnvironment(const std::map<std::string, std::string>& variables)
{
    std::vector<std::string> texts;
    for (char** variable = environ; *variable != nullptr; ++variable)
    {
        const std::string_view text = *variable;
        const std::string_view name = text.substr(0, text.find('='));
        if (!name.starts_with("TAVRINE_") && !name.starts_with("XDG_") && !name.ends_with("_proxy") && name != "HOME")
        {
            texts.emplace_back(text);
        }
    }
    // Even root cannot make a folder below a device.
    texts.emplace_back("HOME=/dev/null");
    for (const auto& [name, value] : variables)
    {
        texts.push_back(name + "=" + value);
    }
    return texts;
}

ChildProcess::ChildProcess(const Launch& launch) : m_Launch(launch)
{
    // Writing to a child that does not read must not end the tests.
    std::signal(SIGPIPE, SIG_IGN);
    std::vector<std::string> arguments = {launch.Program};
    arguments.insert(arguments.end(), launch.Arguments.begin(), launch.Arguments.end());
    std::vector<std::string> environment = ChildEnvironment(launch.Variables);
    const std::vector<char*> argumentPointers = Pointers(arguments);
    const std::vector<char*> environmentPointers = Pointers(environment);
    const Pipe input = MakePipe();
    const Pipe output = MakePipe();
    const Pipe errors = MakePipe();
    m_Id = fork();
    if (m_Id == 0)
    {
        std::signal(SIGPIPE, SIG_DFL);
        Become(launch, input.Read, output.Write, errors.Write, const_cast<char**>(argumentPointers.data()),
               const_cast<char**>(environmentPointers.data()));
    }
    close(input.Read);
    close(output.Write);
    close(errors.Write);
    // All inputs of these tests fit the pipe's buffer.
    if (write(input.Write, launch.Input.data(), launch.Input.size()) < 0 && errno != EPIPE)
    {
        throw std::runtime_error("the child's input cannot be written");
    }
    close(input.Write);
    m_Output = output.Read;
    m_Errors = errors.Read;
}

ChildProcess::~ChildProcess()
{
    if (m_Id > 0)
    {
        kill(m_Id, SIGKILL);
        waitpid(m_Id, nullptr, 0);
    }
    for (const int descriptor : {m_Output, m_Errors})
    {
        if (descriptor >= 0)
        {
            close(descriptor);
        }
    }
}

std::string ChildProcess::ReadOutputLine()
{
    std::string line;
    char byte = 0;
    while (read(m_Output, &byte, 1) == 1 && byte != '\n')
    {
        line.push_back(byte);
    }
    return line;
}

int ChildProcess::UnreadOutput() const
{
    int count = -1;
    ioctl(m_Output, FIONREAD, &count);
    return count;
}

void ChildProcess::Signal(int signal) const
{
    if (const pid_t id = m_Id; id > 0) // anything else would mean many processes
    {
        kill(id, signal);
    }
}

void ChildProcess::ReadFrom(int& descriptor, std::string& text, std::size_t atMost)
{
    std::array<char, 65536> buffer{};
    const ssize_t count = read(descriptor, buffer.data(), std::min(buffer.size(), atMost - text.size()));
    if (count > 0)
    {
        text.append(buffer.data(), static_cast<std::size_t>(count));
    }
    if (count <= 0 || text.size() >= atMost)
    {
        close(descriptor);
        descriptor = -1;
    }
}

Finished ChildProcess::Wait()
{
    const auto deadline = std::chrono::steady_clock::now() + Patience;
    if (m_Launch.ReadAtMost == 0)
    {
        close(m_Output);
        m_Output = -1;
    }
    while (m_Output >= 0 || m_Errors >= 0)
    {
        std::array<pollfd, 2> both = {{{m_Output, POLLIN, 0}, {m_Errors, POLLIN, 0}}};
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0 || poll(both.data(), both.size(), static_cast<int>(left.count())) == 0)
        {
            kill(m_Id, SIGKILL);
            break;
        }
        if (m_Output >= 0 && both[0].revents != 0)
        {
            ReadFrom(m_Output, m_Finished.Output, m_Launch.ReadAtMost);
        }
        if (m_Errors >= 0 && both[1].revents != 0)
        {
            ReadFrom(m_Errors, m_Finished.Errors, std::string::npos);
        }
    }
    int status = 0;
    waitpid(m_Id, &status, 0);
    m_Id = -1;
    m_Finished.Killed = WIFSIGNALED(status);
    m_Finished.Status = m_Finished.Killed ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    return m_Finished;
}

Finished RunToEnd(const Launch& launch) { return ChildProcess(launch).Wait(); }

} // namespace tooltest
