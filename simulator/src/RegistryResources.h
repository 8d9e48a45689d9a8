#pragma once

#include "Machine.h"

#include <boost/json/object.hpp>
#include <map>
#include <string>

namespace bmcsim
{

/// Attribute registries by their language, as "en".
using Registries = std::map<std::string, boost::json::object>;

/// Adds to the machine's resources its attribute registries at the places that the
/// registry file names, and that file, which is made where it is null. A language
/// that the file names but that has no registry stays without.
void AddRegistries(Machine& machine, Registries registries, const boost::json::object* file);

/// Adds every resource that leads a client to the Bios resource and the registries
/// and that the machine's own files do not bring.
void AddServiceResources(Machine& machine);

} // namespace bmcsim
