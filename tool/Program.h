#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Answer.h"

namespace Tavrine::Tool
{

class Bmc;
struct Options;

/// Does what a command line asks for, from the configuration file to the end of the
/// session.
/// @param warn  writes lines that cannot wait for the answer.
/// @param bmc  receives the BMC of the run, closed, with the models that were read; none when this throws.
Answer Perform(const Options& options, const std::function<void(const std::string&)>& warn, std::unique_ptr<Bmc>& bmc);

/// The whole program. @return its exit status.
int RunProgram(int argc, char** argv);

} // namespace Tavrine::Tool
