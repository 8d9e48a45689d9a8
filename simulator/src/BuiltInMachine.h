#pragma once

#include <string_view>
#include <utility>
#include <vector>

namespace bmcsim
{

/// The files of the folder simulator/machine, as name and text.
std::vector<std::pair<std::string_view, std::string_view>> BuiltInFiles();

} // namespace bmcsim
