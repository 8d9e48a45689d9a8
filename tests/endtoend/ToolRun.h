#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Answer.h"
#include "BmcSimulator.h"
#include "TemporaryFolder.h"
#include "ValueTypes.h"

namespace endtoend
{

/// A simulated BMC over plain HTTP and the tool's commands against it, in this process.
class ToolRun
{
  public:
    /// @param machineDir  folder of a machine; empty for the built-in one.
    /// @param state  what the BMC starts with, as it keeps it itself; empty for the
    ///               machine's own values.
    explicit ToolRun(const std::string& machineDir, const std::string& state = {});

    /// Empty when all is ready.
    const std::string& Error() const { return m_Error; }
    const bmcsim::BmcSimulator& Simulator() const { return *m_Simulator; }

    /// A command and its own arguments, as after "tavrine".
    Tavrine::Tool::Answer Run(const std::vector<std::string>& arguments) const;
    /// The same, but sent to another address.
    Tavrine::Tool::Answer RunAt(const std::string& url, const std::vector<std::string>& arguments) const;

    /// Name of a file in a folder that goes with this object.
    std::string File(const std::string& name) const { return (m_Folder.Path() / name).string(); }
    /// The settings in such a file; throws where it is of no use.
    Tavrine::SettingStringMap Read(const std::string& name) const;
    /// What the BMC keeps from run to run.
    std::string State() const;

  private:
    testdata::TemporaryFolder m_Folder;
    std::string m_Error;
    std::unique_ptr<bmcsim::BmcSimulator> m_Simulator;
};

/// Failures of an answer, a line each.
std::string Told(const Tavrine::Tool::Answer& answer);

} // namespace endtoend
