#pragma once

#include "Answer.h"
#include "Fronts.h"
#include "RedfishConfigProc.h"

namespace Tavrine::Tool
{

class Bmc;
struct Options;

/// `show [NAME …]`.
Answer RunShow(const Options& options, Bmc& bmc);

/// All settings of `front`, of typed output when `options` asks for JSON and
/// of text output otherwise. Settings that the configuration hides are left out.
Answer ShowAll(RedfishConfigProc& front, const Options& options);

/// The settings that `options` names, each by a query of its own. A name that the
/// attribute registry does not have is looked up in the values that the BMC reports, and
/// shell patterns are held against these.
/// @param freshFront  gives an object that was not used yet; asked when `front`, after
///                    what it was asked before, has no group values to give.
Answer ShowNames(RedfishConfigProc& front, const Options& options, const FrontMaker& freshFront);

} // namespace Tavrine::Tool
