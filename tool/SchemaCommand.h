#pragma once

#include <string>

#include "Answer.h"
#include "RedfishConfigProc.h"

namespace Tavrine::Tool
{

class Bmc;
struct Options;

/// What is wrong with the names of the command line; empty for nothing.
std::string SchemaFault(const Options& options);

/// `schema [FILE]`. Values of protected settings are in it with `--protected` alone.
Answer RunSchema(const Options& options, Bmc& bmc);

/// The attribute registry with the current values, as the answer's text or data, or
/// written to the one file that `options` names.
/// @param front  of OutputForm::Registry.
Answer ExportSchema(RedfishConfigProc& front, const Options& options);

} // namespace Tavrine::Tool
