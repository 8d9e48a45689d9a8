#pragma once

#include <string>

#include "SavedSettings.h"

namespace Tavrine::Tool
{

/// Whether a file of this name gets lines: it ends in ".txt" or ".conf", in whatever case.
bool WantsLines(const std::string& path);

/// The text of a file of saved settings in either form.
std::string SavedDocument(const SavedSettings& saved);
std::string SavedLines(const SavedSettings& saved);

} // namespace Tavrine::Tool
