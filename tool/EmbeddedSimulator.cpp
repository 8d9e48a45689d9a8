#include "EmbeddedSimulator.h"

#include <dlfcn.h>

#include "Signals.h"
#include "SimulatorModule.h"

namespace Tavrine::Tool
{
namespace
{

std::string LoaderError()
{
    const char* told = dlerror();
    return told ? told : "the loader tells no reason";
}

} // namespace

std::unique_ptr<bmcsim::EmbeddedSimulator> StartSimulator(const bmcsim::SimulatorOptions& options, std::string& error)
{
    // A bare name is looked for where this program's other libraries are.
    void* module = dlopen(TAVRINE_SIMULATOR_MODULE, RTLD_NOW | RTLD_LOCAL);
    void* start = module ? dlsym(module, bmcsim::StartEmbeddedSimulatorName) : nullptr;
    if (!start)
    {
        error = LoaderError();
        return nullptr;
    }
    const HeldStopSignals held; // from all of its threads
    return std::unique_ptr<bmcsim::EmbeddedSimulator>(
        reinterpret_cast<bmcsim::StartEmbeddedSimulator*>(start)(options, error));
}

} // namespace Tavrine::Tool
