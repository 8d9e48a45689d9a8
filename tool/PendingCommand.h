#pragma once

#include "Answer.h"
#include "Fronts.h"
#include "RedfishConfigProc.h"

namespace Tavrine::Tool
{

class Bmc;
struct Options;

/// `pending [NAME …]`.
Answer RunPending(const Options& options, Bmc& bmc);

/// What waits for a reboot: of all ordinary settings, or of those that `options` names.
/// That nothing waits is a good answer.
/// @param freshFront  gives an object that was not used yet.
/// @param typed       false: data holds all values as texts, and nothing is read for their kinds.
Answer ShowPending(const Options& options, const FormedFrontMaker& freshFront, bool typed = true);

/// The same of all ordinary settings, through a text object that its caller keeps: what was
/// fetched stays at hand there.
Answer ShowAllPending(const Options& options, RedfishConfigProc& front, const FormedFrontMaker& freshFront,
                      bool typed = true);

} // namespace Tavrine::Tool
