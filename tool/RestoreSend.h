#pragma once

#include <string>
#include <vector>

#include "Fronts.h"
#include "RedfishConfigProc.h"
#include "RestorePlan.h"

namespace Tavrine::Tool
{

struct Options;

/// Hands the calls of a plan to the library and finds out what became of each setting, by
/// the library's answers and then by what the BMC itself says.
/// @param freshFront  gives an object of text output that has not read anything since the last change.
/// @param notes  receives what could not be found out.
void SendRestore(RestorePlan& plan, const Options& options, const FrontMaker& freshFront,
                 std::vector<std::string>& notes);

/// Of a plan that nothing is sent of: what is in place may be so after a reboot alone.
/// @param notes  receives what could not be found out.
void FindWaiting(RestorePlan& plan, RedfishConfigProc& front, std::vector<std::string>& notes);

} // namespace Tavrine::Tool
