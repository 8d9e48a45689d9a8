#pragma once

#include <map>
#include <string>

#include "Export.h"

namespace Tavrine
{

/// The standard text of every result code, never changed, to be read by any thread. 33
/// entries; 12, 14, 23, 35, 36 and 37 have none. Results are built with their own texts, often empty: a
/// program that shows a bare result takes its text from here.
TAVRINE_EXPORT extern const std::map<int, std::string> ResultMessageTable;

} // namespace Tavrine
