#pragma once

#include <string>

#include "Answer.h"

namespace Tavrine::Tool
{

/// Whether a refusal reads as that of a service that does not know the OEM actions for
/// protected settings.
bool MissesAction(const Failure& failure);

/// What to do about it.
inline constexpr const char* MissingActionHint =
    "hint: the BMC lacks the OEM actions for protected settings; for such a BMC give --system-type bios";

} // namespace Tavrine::Tool
