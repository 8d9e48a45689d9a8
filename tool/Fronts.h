#pragma once

#include <functional>
#include <memory>

#include "RedfishConfigProc.h"

namespace Tavrine::Tool
{

/// Gives an object that was not used yet, since an object keeps what it has read; of text output where nothing else is
/// said.
using FrontMaker = std::function<std::unique_ptr<RedfishConfigProc>()>;

/// The same, of typed output where `typed` is set.
using TypedFrontMaker = std::function<std::unique_ptr<RedfishConfigProc>(bool typed)>;

} // namespace Tavrine::Tool
