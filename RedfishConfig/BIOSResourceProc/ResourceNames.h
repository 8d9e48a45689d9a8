#pragma once

#include <string>

namespace Tavrine
{

/// The two resources that settings lie in; keys of the procs, compared exactly.
inline const std::string StandardSettings = "StandardSettings";
inline const std::string ProtectedSettings = "ProtectedSettings";

} // namespace Tavrine
