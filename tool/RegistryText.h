#pragma once

#include <string>

#include "RedfishConfigProc.h"
#include "RedfishConfigResult.h"

namespace Tavrine::Tool
{

/// The attribute registry as JSON text, the values that settings have now, pending ones
/// first, written into it as "CurrentValue".
/// @param front  of OutputForm::Registry.
/// @return 0 with `text` filled, or the library's failure, or 26 when it has no text.
RedfishConfigResult ReadRegistryText(RedfishConfigProc& front, std::string& text);

} // namespace Tavrine::Tool
