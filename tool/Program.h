#pragma once

namespace Tavrine::Tool
{

/// The whole program. @return its exit status.
int RunProgram(int argc, char** argv);

} // namespace Tavrine::Tool
