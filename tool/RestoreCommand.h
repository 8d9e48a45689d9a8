#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Answer.h"
#include "RestorePlan.h"
#include "SystemResource.h"

namespace CLI
{
class App;
}

namespace Tavrine::Tool
{

class Bmc;
struct Options;

/// `--same-system`, `--force`, `--dry-run`, `--reboot` and `--wait`.
void AddRestoreOptions(CLI::App& command, Options& options);

/// What is wrong with the options of `restore`; empty for nothing.
std::string RestoreFault(const Options& options);

/// `restore FILE`.
Answer RunRestore(const Options& options, Bmc& bmc);

/// Why a file with this header is not for this system; nothing where it is, or where
/// `--force` says that it is to be taken all the same.
/// @param notes  receives what cannot be compared.
std::optional<Failure> OtherSystem(const SavedHeader& header, const SystemResource& system, const BiosResource& bios,
                                   const Options& options, std::vector<std::string>& notes);

/// Puts what became of each setting into an answer: a table of all, and a failure for
/// each that is not where it should be. Of settings that this system does not know there is
/// one failure.
/// @param prefix  in front of shown names.
void TellRestore(const RestorePlan& plan, const Options& options, const std::string& prefix, Answer& answer);

} // namespace Tavrine::Tool
