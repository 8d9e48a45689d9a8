#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "BiosSettingManager.h"
#include "RedfishConfigProc.h"
#include "RedfishConfigResult.h"
#include "RedfishConfigSettingManager.h"

namespace Tavrine::Tool
{

/// Gives a setting manager over the attribute registry and the current values that `front` reads, with its
/// Config_Options.
/// @return 0 with `manager` filled, the registry readable; or the failure, 26 when there is no
/// registry and 27 when it cannot be read.
using ManagerReader =
    std::function<RedfishConfigResult(RedfishConfigProc& front, std::unique_ptr<RedfishConfigSettingManager>& manager)>;

/// The ManagerReader of the library's own front objects: it shares the registry that the
/// object has read. Any other object is answered with 13.
RedfishConfigResult ReadSettingManager(RedfishConfigProc& front, std::unique_ptr<RedfishConfigSettingManager>& manager,
                                       ManagerValues wanted = ManagerValues::All);

/// AwaitsDefaults of the library's own front objects; false for any other.
bool DefaultsAreDue(const RedfishConfigProc& front);

/// Adds a warning where they are.
/// @return whether they are.
bool WarnOfDefaults(const RedfishConfigProc& front, std::vector<std::string>& notes);

} // namespace Tavrine::Tool
