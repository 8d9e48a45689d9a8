#pragma once

#include <string>
#include <vector>

#include "Answer.h"

namespace Tavrine::Tool
{

/// Whether a refusal reads as that of a service that does not know the OEM actions for
/// protected settings.
bool MissesAction(const Failure& failure);

/// Notes what to do about it, where it reads so.
void HintAtMissingAction(const Failure& failure, std::vector<std::string>& notes);

} // namespace Tavrine::Tool
