#pragma once

#include <string>
#include <system_error>

namespace bmcsim
{

/// What the system says of an errno.
inline std::string SystemMessage(int number) { return std::generic_category().message(number); }

} // namespace bmcsim
