#pragma once

#include <map>
#include <optional>
#include <string>

#include "RedfishConfigProc.h"
#include "RedfishConfigResult.h"
#include "ValueTypes.h"

namespace Tavrine::Tool
{

/// What a BMC says about its settings now, by bare name in whatever case. A setting
/// whose pending value is the one in force has no pending value here.
struct PendingValues
{
    std::map<std::string, std::string, CaseInsensitiveComparator> Effective;
    std::map<std::string, std::string, CaseInsensitiveComparator> Pending;
};

/// Whether a comparison with the pending values came to an end: that there are none is an answer, too.
bool Answered(const RedfishConfigResult& result);

/// Reads the ordinary settings, without those that the configuration hides.
/// @param front  has read nothing since the last change, since an object keeps what it has read; of text output.
/// @return 0, and `values` is filled; otherwise why they could not be read.
RedfishConfigResult ReadPendingValues(RedfishConfigProc& front, PendingValues& values);

/// Adds one setting, protected ones included, unless it cannot be read. Costs a read of the attribute registry.
void AddPendingValue(RedfishConfigProc& front, const std::string& name, PendingValues& values);

} // namespace Tavrine::Tool
