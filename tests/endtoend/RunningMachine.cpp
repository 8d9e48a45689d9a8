#include "RunningMachine.h"

namespace endtoend
{

namespace
{

bmcsim::SimulatorOptions MachineIn(const std::string& folder)
{
    bmcsim::SimulatorOptions options;
    options.MachineDir = folder;
    return options;
}

bmcsim::SimulatorOptions MachineOf(unsigned int attributes)
{
    bmcsim::SimulatorOptions options;
    options.Attributes = attributes;
    return options;
}

} // namespace

RunningMachine::RunningMachine(const std::string& machineDir) : RunningMachine(MachineIn(machineDir)) {}

RunningMachine::RunningMachine(unsigned int attributes) : RunningMachine(MachineOf(attributes)) {}

RunningMachine::RunningMachine(bmcsim::SimulatorOptions options)
{
    options.User = "operator";
    options.Password = "a password";
    m_Simulator = bmcsim::BmcSimulator::Start(options, m_Error);
    if (m_Simulator == nullptr)
    {
        return;
    }
    TavrineConnection::ConnectionInfo info;
    info.Host = "127.0.0.1";
    info.Port = m_Simulator->Port();
    info.User = options.User;
    info.Password = options.Password;
    TavrineConnection::ConnectionProfile profile;
    profile.PinnedSha256 = m_Simulator->Fingerprint();
    m_Connection = std::make_unique<TavrineConnection::BmcConnection>(info, profile);
}

std::vector<std::string> RunningMachine::NewRequests()
{
    const std::vector<bmcsim::AccessRecord> log = m_Simulator->AccessLog();
    std::vector<std::string> requests;
    for (; m_Seen < log.size(); ++m_Seen)
    {
        requests.push_back(log[m_Seen].Method + " " + log[m_Seen].Path);
    }
    return requests;
}

} // namespace endtoend
