#pragma once

#include <memory>
#include <string>

#include "BmcSimulator.h"

namespace Tavrine::Tool
{

/// Loads the simulated BMC, a shared object of this build, and starts it. It stays loaded to
/// the end of the program.
/// @param error  one line that tells what failed.
/// @return empty on failure.
std::unique_ptr<bmcsim::EmbeddedSimulator> StartSimulator(const bmcsim::SimulatorOptions& options, std::string& error);

} // namespace Tavrine::Tool
