#include "SoakBmc.h"

#include <stdexcept>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "BmcSimulator.h"

namespace soak
{
namespace
{

/// One line without its end; false when there is no more.
bool ReadLine(int socket, std::string& line)
{
    line.clear();
    for (char letter = 0; read(socket, &letter, 1) == 1;)
    {
        if (letter == '\n')
        {
            return true;
        }
        line += letter;
    }
    return false;
}

bool WriteLine(int socket, const std::string& line)
{
    const std::string text = line + "\n";
    return send(socket, text.data(), text.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(text.size());
}

/// Answers each rule with what is wrong with it, until nobody sends any more.
void Serve(int socket)
{
    bmcsim::SimulatorOptions options;
    options.PlainHttp = true;
    std::string error;
    const auto simulator = bmcsim::BmcSimulator::Start(options, error);
    if (simulator == nullptr || !WriteLine(socket, std::to_string(simulator->Port())))
    {
        return;
    }
    for (std::string rule; ReadLine(socket, rule);)
    {
        error.clear();
        simulator->SetFaultRules(rule.empty() ? std::vector<std::string>() : std::vector<std::string>{rule}, error);
        WriteLine(socket, error);
    }
}

} // namespace

SoakBmc::SoakBmc()
{
    int ends[2] = {-1, -1};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0 || (m_Id = fork()) < 0)
    {
        throw std::runtime_error("the simulated BMC cannot be started");
    }
    if (m_Id == 0)
    {
        close(ends[0]);
        Serve(ends[1]);
        _exit(0);
    }
    close(ends[1]);
    m_Socket = ends[0];
    if (!ReadLine(m_Socket, m_Port))
    {
        throw std::runtime_error("the simulated BMC did not start");
    }
}

SoakBmc::~SoakBmc()
{
    close(m_Socket);
    waitpid(m_Id, nullptr, 0);
}

void SoakBmc::SetFaultRule(const std::string& rule) const
{
    std::string error;
    if (!WriteLine(m_Socket, rule) || !ReadLine(m_Socket, error) || !error.empty())
    {
        throw std::runtime_error("the simulated BMC did not take the rule " + rule + ": " + error);
    }
}

} // namespace soak
