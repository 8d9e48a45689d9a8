#pragma once

#include "Answer.h"
#include "RedfishConfigProc.h"

namespace Tavrine::Tool
{

class Bmc;
struct Options;

/// `groups [GROUP …]`.
Answer RunGroups(const Options& options, Bmc& bmc);

/// The groups of `front`, all or those that `options` names (exactly, or as a shell
/// pattern), the settings under their shown names. Settings that the configuration hides
/// are left out, and so is a group of such settings alone.
/// @param tree  text output as an indented tree.
Answer ListGroups(RedfishConfigProc& front, const Options& options, bool tree);

} // namespace Tavrine::Tool
