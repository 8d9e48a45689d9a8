#pragma once

#include <string>
#include <vector>

#include "BmcSimulator.h"
#include "ChildProcess.h"
#include "ConfigFile.h"
#include "TemporaryFolder.h"

namespace tooltest
{

/// Runs of the tool within this process: from the words of a command line to what would
/// be written, much faster than a child. The configuration is empty meanwhile.
class InsideRun
{
  public:
    /// @param url  of a service of plain HTTP.
    explicit InsideRun(std::string url) : m_Url(std::move(url)) {}

    /// @param input  standard input.
    Finished operator()(const std::vector<std::string>& arguments, const std::string& input = {}) const;

  private:
    std::string m_Url;
    Configured m_Nothing{""};
};

/// A simulated BMC of plain HTTP within this process.
class InsideBmc
{
  public:
    /// @param machineDir  folder of a machine; empty for the built-in one.
    explicit InsideBmc(const std::string& machineDir = {});
    /// @param attributes  of a machine that is made up.
    explicit InsideBmc(unsigned int attributes);

    bmcsim::BmcSimulator& Simulator() const { return *m_Simulator; }
    std::string Url() const { return m_Simulator->Url(); }
    std::string Port() const { return std::to_string(m_Simulator->Port()); }

  private:
    void Start(bmcsim::SimulatorOptions options);

    std::unique_ptr<bmcsim::BmcSimulator> m_Simulator;
};

} // namespace tooltest
