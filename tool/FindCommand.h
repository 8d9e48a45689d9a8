#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "Answer.h"
#include "RedfishConfigProc.h"
#include "SettingManager.h"

namespace CLI
{
class App;
}

namespace Tavrine::Tool
{

class Bmc;
struct Options;

/// The option `--regex`.
void AddFindOptions(CLI::App& command, Options& options);

/// What is wrong with the words; empty for nothing.
std::string FindFault(const Options& options);

/// `find WORD …`.
Answer RunFind(const Options& options, Bmc& bmc);

/// The settings in which all the words of `options` occur, in whatever case: in their
/// names, display names, help and warning texts, values (those that they may take and the
/// one that they have). Settings that the configuration hides are left out.
/// @param front  one that gives ordinary settings alone.
/// @param columns  width of the table; nothing: a line a setting, its name, display name
///                 and where the words were, with tabs between.
Answer FindSettings(RedfishConfigProc& front, const ManagerReader& readManager, const Options& options,
                    std::optional<std::size_t> columns);

} // namespace Tavrine::Tool
