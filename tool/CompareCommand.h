#pragma once

#include <cstddef>
#include <optional>

#include "Answer.h"
#include "Fronts.h"
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

/// The option `--changed`.
void AddCompareOptions(CLI::App& command, Options& options);

/// `compare defaults|pending|FILE [NAME …]`.
Answer RunCompare(const Options& options, Bmc& bmc);

/// What the names of `options` compare, the first of them aside, and how it is shown.
struct CompareWay
{
    /// Gives a front object that was not used yet.
    FormedFrontMaker FreshFront;
    /// Width of the table; nothing: a line a setting, its name and both values, with tabs
    /// between and "\N" for a value that is not there.
    std::optional<std::size_t> Columns;
    /// For the kinds of settings; of no meaning where no file is compared.
    ManagerReader Manager = {};
};

/// Values that wait for a reboot, or else those in force, beside the defaults.
/// @param front    of text output.
/// @param columns  as CompareWay::Columns.
Answer CompareDefaults(RedfishConfigProc& front, const Options& options, std::optional<std::size_t> columns);
/// Values in force beside those that wait for a reboot, where these differ.
Answer ComparePending(const Options& options, const CompareWay& way);
/// Values in force beside those of the saved file that the first name of `options` is. A
/// name selects among the settings of the file. Of a password no value is shown, nor without a registry of
/// what may be one.
Answer CompareFile(const Options& options, const CompareWay& way);

} // namespace Tavrine::Tool
