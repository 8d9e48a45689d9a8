#pragma once

#include <string>

#include "BmcSimulator.h"

namespace bmcsim
{

/// The one function of its own that the shared object libtavrine-bmcsim exports. A program that
/// only sometimes simulates loads it with dlopen(3) then: the HTTP server, with all that it
/// stands on, would cost every start of it more than a millisecond. Program and shared object
/// must be of one version, which the soname has.
/// @return what BmcSimulator::Start returns, to be deleted by the caller; null on failure.
using StartEmbeddedSimulator = EmbeddedSimulator*(const SimulatorOptions& options, std::string& error);

/// Its name, for dlsym(3).
constexpr const char* StartEmbeddedSimulatorName = "TavrineStartEmbeddedSimulator";

} // namespace bmcsim
