#pragma once

#include <optional>

#include "CauseLog.h"
#include "Fronts.h"
#include "RedfishConfigProc.h"
#include "SetPlan.h"

namespace Tavrine::Tool
{

/// Sends what is planned through the object that the plan was made with, and finds out
/// what became of each setting: by the answers, and then by what the BMC itself says,
/// where it can be asked. After a request that failed no other is sent.
/// @param freshFront  gives an object of text output that was not used yet.
/// @return what failed beyond single settings, nothing in most cases.
std::optional<Failure> SendPlan(SetPlan& plan, RedfishConfigProc& front, const Options& options, CauseLog& causes,
                                const FrontMaker& freshFront);

} // namespace Tavrine::Tool
