#pragma once

#include <boost/json/object.hpp>
#include <map>
#include <string>

namespace bmcsim
{

/// Files of a machine with so many attributes, by the names that a machine's folder
/// has. Always the same for the same number; the registry grows in proportion to it.
std::map<std::string, boost::json::object> GenerateFiles(unsigned int attributes);

} // namespace bmcsim
