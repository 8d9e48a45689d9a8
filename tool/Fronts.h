#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "RedfishConfigProc.h"

namespace Tavrine::Tool
{

/// What a front object answers with.
enum class OutputForm : std::int32_t
{
    /// A text for each setting.
    Text = 0,
    /// JSON values.
    Typed = 1,
    /// Texts, and the whole registry for valid values.
    Registry = 2,
};

/// As Config_Options::OutputFormat has it.
constexpr std::int32_t FormatOf(OutputForm form) { return static_cast<std::int32_t>(form); }

/// Gives an object that was not used yet, since an object keeps what it has read; of text output where nothing else is
/// said.
using FrontMaker = std::function<std::unique_ptr<RedfishConfigProc>()>;

/// The same, of the form that is asked for.
using FormedFrontMaker = std::function<std::unique_ptr<RedfishConfigProc>(OutputForm form)>;

} // namespace Tavrine::Tool
