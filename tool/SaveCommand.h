#pragma once

#include <functional>
#include <string>

#include "Answer.h"
#include "RedfishConfigProc.h"
#include "RedfishConfigResult.h"
#include "SavedSettings.h"

namespace Tavrine::Tool
{

class Bmc;
struct Options;

/// What is wrong with the names of `save`; empty for nothing.
std::string SaveFault(const Options& options);

/// `save [FILE]`.
Answer RunSave(const Options& options, Bmc& bmc);

/// The settings that a save keeps, with this header, as the form that the options and the
/// name of the file ask for; to the file, or without one into the answer.
/// @param front  of text output.
/// @param lastFailure  the last request that failed, since the library does not say why values cannot be read.
Answer SaveSettings(RedfishConfigProc& front, const Options& options, SavedHeader header,
                    const std::function<RedfishConfigResult()>& lastFailure);

} // namespace Tavrine::Tool
