#pragma once

#include <string>

#include "Answer.h"
#include "Fronts.h"
#include "RedfishConfigProc.h"
#include "SettingManager.h"
#include "SystemResource.h"
#include "Verify.h"

namespace CLI
{
class App;
}

namespace Tavrine::Tool
{

class Bmc;
struct Options;

/// `--post`, `--yes`, `--reboot` and `--wait`.
void AddLoadDefaultOptions(CLI::App& command, Options& options);

/// What is wrong with the options of `loaddefault`; empty for nothing.
std::string LoadDefaultFault(const Options& options);

/// `loaddefault UEFI|BIOS [--post]` and `loaddefault NAME …`.
Answer RunLoadDefault(const Options& options, Bmc& bmc);

/// Loads the defaults of the settings that `options` names, one after the other.
/// @param freshFront  gives an object of text output that was not used yet.
/// @param waiting  receives what a reboot is to bring into force.
Answer LoadSingleDefaults(const Options& options, const FrontMaker& freshFront, const ManagerReader& readManager,
                          WaitingChanges& waiting);

/// Asks for the defaults of all settings: by the reset action, or with `--post` by the
/// firmware at its next start.
/// @param requests  look whether a BMC whose answer was lost did it.
Answer LoadAllDefaults(RedfishConfigProc& front, const BmcRequests& requests, const Options& options);

} // namespace Tavrine::Tool
