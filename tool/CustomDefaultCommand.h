#pragma once

#include <optional>
#include <string>

#include "Answer.h"
#include "RedfishConfigProc.h"

namespace Tavrine::Tool
{

class Bmc;
struct Options;

/// What is wrong with the names of `custom-default`; empty for nothing.
std::string CustomDefaultFault(const Options& options);

/// `custom-default export FILE|-` and `custom-default import FILE|-`.
Answer RunCustomDefault(const Options& options, Bmc& bmc);

/// The same through this object.
Answer CarryCustomDefault(RedfishConfigProc& front, const Options& options);

/// The file in the BMC's answer: its text "Content" where the answer is a JSON object that
/// has one, else the answer itself. Nothing where the answer is empty or begins as an object
/// and is none, so that it must have been damaged.
std::optional<std::string> FileInAnswer(const std::string& answer);

} // namespace Tavrine::Tool
