#pragma once

#include <cstddef>
#include <optional>

#include "Answer.h"
#include "Fronts.h"
#include "RedfishConfigProc.h"
#include "SettingManager.h"

namespace Tavrine::Tool
{

class Bmc;
struct Options;

/// `describe NAME …`.
Answer RunDescribe(const Options& options, Bmc& bmc);

/// The front objects that a description is made with; of text output.
struct DescribeSources
{
    /// Gives ordinary settings alone.
    RedfishConfigProc& Standard;
    ManagerReader Manager;
    /// Gives one that was not used yet and may ask for protected settings.
    FrontMaker FreshFront;
};

/// Everything that is known about each of the settings that `options` names, exactly or as
/// shell patterns. The values of a protected setting are asked for with `--protected`
/// alone.
/// @param columns  width to which long texts are wrapped; nothing: they are not.
Answer DescribeSettings(const DescribeSources& sources, const Options& options, std::optional<std::size_t> columns);

} // namespace Tavrine::Tool
