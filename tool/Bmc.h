#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Answer.h"
#include "BmcConnection.h"
#include "BmcSimulator.h"
#include "Fronts.h"
#include "RedfishConfigProc.h"
#include "SettingManager.h"

namespace Tavrine::Tool
{

struct Options;

/// The BMC of one run: its connection, the session on it, and the simulator behind
/// it with `--simulate`. The session is closed when this goes, at the latest.
class Bmc
{
  public:
    explicit Bmc(const Options& options);
    Bmc(const Bmc&) = delete;
    Bmc& operator=(const Bmc&) = delete;
    ~Bmc();

    /// What is to be known of the way to the BMC before a password goes that way.
    std::vector<std::string> Warnings() const;

    /// Does what comes before the first request: checks the files that are named, finds
    /// the password, starts the simulator.
    /// @return nothing when all is ready.
    std::optional<Failure> Prepare();

    /// Opens a session. A service without sessions is served by basic authentication,
    /// and one that asks for no user by no authentication at all.
    /// @param notes  receives a hint where one can be given.
    /// @return nothing when the BMC can be worked with.
    std::optional<Failure> OpenSession(std::vector<std::string>& notes);

    /// Closes the session and tells what was lost on the way, a line each.
    void Close(std::vector<std::string>& notes);

    /// A front object of the library as the options ask for it.
    std::unique_ptr<RedfishConfigProc> Front(OutputForm form = OutputForm::Text) const;

    /// One of text output whose numbers are decimal whatever the options say: for what neither shows
    /// numbers nor takes them, and compares them with defaults, which always are.
    std::unique_ptr<RedfishConfigProc> DecimalFront() const;

    /// One that never asks for protected settings, whatever the kind of the system, and
    /// shows names as Front does.
    std::unique_ptr<RedfishConfigProc> StandardFront(OutputForm form = OutputForm::Text) const;

    /// Keeps a front object for as long as this stands: the program ends without freeing what it
    /// holds, which takes long for the model of a big registry.
    RedfishConfigProc& Keep(std::unique_ptr<RedfishConfigProc> front);

    /// Reads setting managers, and spares the front objects that are made after it the registry
    /// that it has read. The reader must not outlive this object.
    ManagerReader SettingManagers(ManagerValues wanted = ManagerValues::All);

    /// For single requests; there after Prepare.
    TavrineConnection::BmcConnection& Connection() const { return *m_Connection; }

    /// Host and port, or that the BMC is the simulated one; for messages.
    std::string Name() const;

  private:
    std::unique_ptr<RedfishConfigProc> MakeFront(OutputForm form, std::int32_t systemType, bool hex) const;
    std::optional<Failure> StartSimulator();
    std::optional<Failure> MakeConnection();
    TavrineConnection::ConnectionInfo Record() const;

    const Options& m_Options;
    /// Stands until the connection is gone.
    std::unique_ptr<bmcsim::EmbeddedSimulator> m_Simulator;
    std::unique_ptr<TavrineConnection::BmcConnection> m_Connection;
    /// Without values; null until a registry was read.
    std::unique_ptr<RedfishConfigSettingManager> m_Registry;
    std::vector<std::unique_ptr<RedfishConfigProc>> m_Kept;
};

} // namespace Tavrine::Tool
