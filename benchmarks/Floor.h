#pragma once

#include <string>
#include <vector>

#include "Children.h"

namespace bench
{

/// The least that a run can cost: curl in one process over one connection, sending the
/// same requests in the same order. What the tool was spared by its copy of a registry
/// curl is spared, too; it logs in and out as the tool does, but proves itself to
/// the other requests by user and password, since it cannot pick up a token.
/// @param body    what a PATCH carries.
/// @param folder  where curl's configuration is written.
/// @return the command.
Words FloorCommand(const Simulator& simulator, const std::vector<Request>& requests, const std::string& body,
                   const std::string& folder);

/// Empty, or how the requests of the floor differ from those that it stands for.
std::string FloorFault(const std::vector<Request>& requests, const std::vector<Request>& floor);

} // namespace bench
