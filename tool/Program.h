#pragma once

#include <functional>
#include <string>

#include "Answer.h"

namespace Tavrine::Tool
{

struct Options;

/// Does what a command line asks for, from the configuration file to the end of the
/// session.
/// @param warn  writes lines that cannot wait for the answer.
Answer Perform(const Options& options, const std::function<void(const std::string&)>& warn);

/// The whole program. @return its exit status.
int RunProgram(int argc, char** argv);

} // namespace Tavrine::Tool
