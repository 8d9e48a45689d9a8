#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "Answer.h"
#include "RedfishConfigProc.h"
#include "SetSend.h"
#include "SettingPairs.h"

namespace CLI
{
class App;
}

namespace Tavrine::Tool
{

class Bmc;
struct Options;

void AddSetOptions(CLI::App& command, Options& options);

/// `set NAME=VALUE … [--no-check] [--dry-run]`.
Answer RunSet(const Options& options, Bmc& bmc);

/// Changes these settings through `front`, whose Config_Options::OutputFormat is 1 and
/// which was not used yet; with Options::DryRun nothing is sent but what reads.
/// @param freshFront  gives an object of text output that was not used yet; asked for
///                    what the BMC shows after a change.
Answer ChangeSettings(RedfishConfigProc& front, const Options& options, const std::vector<SettingPair>& pairs,
                      const FrontMaker& freshFront);

} // namespace Tavrine::Tool
