#include "RunningBmc.h"

#include <sstream>
#include <stdexcept>

namespace tooltest
{
namespace
{

Launch SimulatorLaunch(const std::vector<std::string>& arguments)
{
    Launch launch;
    launch.Program = TAVRINE_BMCSIM_PROGRAM;
    launch.Arguments = {"--port", "0"};
    launch.Arguments.insert(launch.Arguments.end(), arguments.begin(), arguments.end());
    return launch;
}

} // namespace

RunningBmc::RunningBmc(const std::vector<std::string>& arguments) : m_Process(SimulatorLaunch(arguments))
{
    std::istringstream line(m_Process.ReadOutputLine());
    std::string ready;
    line >> ready >> m_Url >> m_Pin;
    if (ready != "ready")
    {
        throw std::runtime_error("the simulated BMC did not start: " + m_Process.Wait().Errors);
    }
}

Launch RunningBmc::Tool(std::vector<std::string> arguments) const
{
    Launch launch;
    launch.Arguments = {"--bmc", m_Url, "--user", "admin"};
    if (!m_Pin.empty())
    {
        launch.Arguments.insert(launch.Arguments.end(), {"--pin", m_Pin});
    }
    launch.Arguments.insert(launch.Arguments.end(), arguments.begin(), arguments.end());
    launch.Variables = {{"TAVRINE_PASSWORD", "password"}};
    return launch;
}

} // namespace tooltest
