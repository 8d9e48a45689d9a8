#include "Children.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>

#include <boost/json/parse.hpp>

namespace bench
{
namespace
{

constexpr std::chrono::minutes Patience{2};
constexpr std::size_t MostErrorBytes = 4000;

struct Started
{
    pid_t Id = -1;
    /// Reading end of standard output or standard error.
    int Pipe = -1;
};

/// @param kept  the stream of the child that is read here; the other one goes nowhere.
Started Start(const Words& command, const std::map<std::string, std::string>& variables, int kept)
{
    std::array<int, 2> pipe{};
    if (pipe2(pipe.data(), O_CLOEXEC) != 0)
    {
        throw std::runtime_error("no pipe");
    }
    std::vector<char*> arguments;
    for (const std::string& word : command)
    {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    const pid_t id = fork();
    if (id == 0)
    {
        const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
        dup2(nowhere, STDIN_FILENO);
        dup2(kept == STDOUT_FILENO ? pipe[1] : nowhere, STDOUT_FILENO);
        if (kept == STDERR_FILENO)
        {
            dup2(pipe[1], STDERR_FILENO);
        }
        for (const auto& [name, value] : variables)
        {
            setenv(name.c_str(), value.c_str(), 1);
        }
        execvp(arguments[0], arguments.data());
        _exit(127);
    }
    close(pipe[1]);
    if (id < 0)
    {
        close(pipe[0]);
        throw std::runtime_error("no process for " + command[0]);
    }
    return {id, pipe[0]};
}

std::string ReadToEnd(int descriptor)
{
    std::string text;
    std::array<char, 4096> buffer{};
    for (ssize_t count = 0; (count = read(descriptor, buffer.data(), buffer.size())) > 0;)
    {
        text.append(buffer.data(), text.size() < MostErrorBytes ? static_cast<std::size_t>(count) : 0);
    }
    return text;
}

double Milliseconds(const timeval& time)
{
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
}

std::string Joined(const Words& command)
{
    std::string text;
    for (const std::string& word : command)
    {
        text += (text.empty() ? "" : " ") + word;
    }
    return text;
}

} // namespace

Cost RunMeasured(const Words& command, const std::map<std::string, std::string>& variables)
{
    const auto begun = std::chrono::steady_clock::now();
    const Started child = Start(command, variables, STDERR_FILENO);
    const std::string errors = ReadToEnd(child.Pipe);
    close(child.Pipe);
    int status = 0;
    rusage usage{};
    wait4(child.Id, &status, 0, &usage);
    const std::chrono::duration<double, std::milli> wall = std::chrono::steady_clock::now() - begun;
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
    {
        throw std::runtime_error(Joined(command) + ": status " + std::to_string(status) + ": " + errors);
    }
    return {wall.count(), Milliseconds(usage.ru_utime) + Milliseconds(usage.ru_stime),
            static_cast<double>(usage.ru_maxrss) / 1024};
}

Simulator::Simulator(const std::string& program, const Words& arguments, std::string log) : m_Log(std::move(log))
{
    Words command = {program, "--port", "0", "--access-log", m_Log};
    command.insert(command.end(), arguments.begin(), arguments.end());
    const Started child = Start(command, {}, STDOUT_FILENO);
    m_Id = child.Id;
    std::string line;
    for (char c = 0; read(child.Pipe, &c, 1) == 1 && c != '\n';)
    {
        line += c;
    }
    close(child.Pipe);
    std::istringstream words(line);
    std::string ready;
    words >> ready >> m_Url >> m_Pin;
    if (ready != "ready")
    {
        throw std::runtime_error("the simulated BMC did not start: " + Joined(command));
    }
}

Simulator::~Simulator()
{
    kill(m_Id, SIGTERM);
    waitpid(m_Id, nullptr, 0);
}

std::vector<Request> Simulator::TakeRequests()
{
    std::vector<Request> requests;
    const auto deadline = std::chrono::steady_clock::now() + Patience;
    while (requests.empty() || requests.back().Method != "DELETE")
    {
        std::ifstream log(m_Log);
        log.seekg(m_Read);
        for (std::string line; std::getline(log, line) && !log.eof();)
        {
            m_Read = log.tellg();
            const boost::json::value record = boost::json::parse(line);
            requests.push_back({record.at("method").as_string().c_str(), record.at("path").as_string().c_str(),
                                static_cast<int>(record.at("status").as_int64()),
                                static_cast<std::size_t>(record.at("bytes").as_int64()),
                                static_cast<int>(record.at("connection").as_int64())});
        }
        if (std::chrono::steady_clock::now() > deadline)
        {
            throw std::runtime_error("no session was closed: " + m_Log);
        }
        std::this_thread::yield();
    }
    return requests;
}

} // namespace bench
