#pragma once

#include <memory>

#include "BiosRedfishConfigProc.h"
#include "Export.h"
#include "RedfishConfigResult.h"
#include "RedfishConfigSettingManager.h"

namespace Tavrine
{

/// For a program that asks more about settings than the operations of the front object
/// answer: a manager of its own over the registry that `front` keeps, with the current
/// values, pending ones before those in force. Protected settings are among them where
/// `front` reaches them. Registry and values are fetched where `front` has not done so yet.
/// @return as QuerySettingValidValues of all with Config_Options::OutputFormat 2, but for a text
/// that is no registry: that shows at the manager's first operation (GetSettingNames, for one).
/// `manager` is untouched on failure.
TAVRINE_EXPORT RedfishConfigResult TakeSettingManager(BiosRedfishConfigProc& front,
                                                      std::unique_ptr<RedfishConfigSettingManager>& manager);

/// Spares a new front object of the same BMC the registry: it takes over the one that
/// `manager` has, which is read where that has not been done yet. Operations that make a
/// manager with values (QuerySaveSettingValues, and QuerySettingDefaultValues,
/// QuerySettingDescriptions and QuerySettingValidValues) or hand out the registry still fetch
/// it.
TAVRINE_EXPORT void GiveRegistry(BiosRedfishConfigProc& front, RedfishConfigSettingManager& manager);

/// Whether the Bios resource, as `front` has read it, says that all settings go to their defaults at the
/// next start of the system (DSP8010, Bios, "ResetBiosToDefaultsPending"): pending values do not show that.
/// False before the resource was read. Sends nothing.
TAVRINE_EXPORT bool AwaitsDefaults(const BiosRedfishConfigProc& front);

} // namespace Tavrine
