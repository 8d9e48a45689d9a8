#pragma once

#include <memory>
#include <string>
#include <vector>

#include "BiosRedfishConfigProc.h"
#include "BmcConnection.h"
#include "BmcSimulator.h"

namespace endtoend
{

/// A simulated BMC over HTTPS and a verified connection to it. Basic authentication, so
/// that the access log holds the library's requests alone.
class RunningMachine
{
  public:
    /// @param machineDir  folder of a machine; empty for the built-in one.
    explicit RunningMachine(const std::string& machineDir);
    /// @param attributes  so many are made up.
    explicit RunningMachine(unsigned int attributes);

    /// Empty when all is ready.
    const std::string& Error() const { return m_Error; }
    const TavrineConnection::ConnectionInfo& Info() const { return m_Connection->Info(); }
    TavrineConnection::Traffic Counters() const { return m_Connection->Counters(); }
    bmcsim::BmcSimulator& Simulator() { return *m_Simulator; }

    /// "METHOD PATH" of the requests since the last call.
    std::vector<std::string> NewRequests();

  private:
    explicit RunningMachine(bmcsim::SimulatorOptions options);

    std::string m_Error;
    std::unique_ptr<bmcsim::BmcSimulator> m_Simulator;
    std::unique_ptr<TavrineConnection::BmcConnection> m_Connection;
    std::size_t m_Seen = 0;
};

} // namespace endtoend
