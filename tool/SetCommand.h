#pragma once

#include <string>
#include <vector>

#include "Answer.h"
#include "RedfishConfigProc.h"
#include "SetSend.h"
#include "SettingManager.h"
#include "SettingPairs.h"
#include "Verify.h"

namespace CLI
{
class App;
}

namespace Tavrine::Tool
{

class Bmc;
struct Options;

void AddSetOptions(CLI::App& command, Options& options);

/// What is wrong with a command line of `set`; empty for nothing.
std::string SetFault(const Options& options);

/// `set NAME=VALUE … [--no-check] [--dry-run] [--reboot [--wait SECONDS]]`.
Answer RunSet(const Options& options, Bmc& bmc);

/// Changes these settings through `front`, which is of typed output and
/// was not used yet; with Options::DryRun nothing is sent but what reads.
/// @param freshFront  gives an object of text output that was not used yet; asked for
///                    what the BMC shows after a change.
/// @param waiting  receives what a reboot is to bring into force: what was changed, and
///                 what was pending already.
Answer ChangeSettings(RedfishConfigProc& front, const ManagerReader& readManager, const Options& options,
                      const std::vector<SettingPair>& pairs, const FrontMaker& freshFront, WaitingChanges& waiting);

} // namespace Tavrine::Tool
