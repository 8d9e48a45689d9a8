#include "SimulatorModule.h"

extern "C" __attribute__((visibility("default"))) bmcsim::StartEmbeddedSimulator TavrineStartEmbeddedSimulator;

bmcsim::EmbeddedSimulator* TavrineStartEmbeddedSimulator(const bmcsim::SimulatorOptions& options, std::string& error)
{
    return bmcsim::BmcSimulator::Start(options, error).release();
}
