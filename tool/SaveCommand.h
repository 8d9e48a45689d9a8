#pragma once

#include <string>

#include "Answer.h"
#include "RedfishConfigProc.h"
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
Answer SaveSettings(RedfishConfigProc& front, const Options& options, SavedHeader header);

} // namespace Tavrine::Tool
