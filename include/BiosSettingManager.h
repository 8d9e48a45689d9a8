#pragma once

#include <memory>
#include <string_view>

#include "BiosRedfishConfigProc.h"
#include "Export.h"
#include "RedfishConfigResult.h"
#include "RedfishConfigSettingManager.h"

namespace Tavrine
{

/// The current values that a manager is to have, pending ones before those in force.
enum class ManagerValues
{
    None,
    /// Without those of protected settings.
    Ordinary,
    /// Those of protected settings, too, where the front object reaches them.
    All,
};

/// For a program that asks more about settings than the operations of the front object
/// answer: a manager of its own over the registry that `front` keeps. Registry and values are
/// fetched where `front` has not done so yet; for values that are not wanted nothing is sent.
/// @return 0; 26, 13, and what a request to the BMC ended in, as for the operations of `front` (see
/// RedfishConfigProc). A text that is no registry shows at the manager's first operation
/// (GetSettingNames, for one), by code 27. `manager` is untouched on failure.
///
/// The manager is the caller's, may outlive `front`, and may be used by another thread than it
/// afterwards; here `front` is used as by its own operations.
TAVRINE_EXPORT RedfishConfigResult TakeSettingManager(BiosRedfishConfigProc& front,
                                                      std::unique_ptr<RedfishConfigSettingManager>& manager,
                                                      ManagerValues wanted = ManagerValues::All);

/// Spares a new front object of the same BMC the registry: it takes over the one that
/// `manager` has, which is read where that has not been done yet; a text that is no registry is taken
/// over as well. Operations that make a manager with values (QuerySaveSettingValues, and
/// QuerySettingDefaultValues, QuerySettingDescriptions and QuerySettingValidValues) and
/// QueryGroupList still fetch it.
/// Sends nothing; both objects are used.
TAVRINE_EXPORT void GiveRegistry(BiosRedfishConfigProc& front, RedfishConfigSettingManager& manager);

/// The setting by which a firmware that has it loads all defaults at the next start of the system, and its value then.
inline constexpr std::string_view PostLoadSetting = "SystemRecovery_PostLoadSetupDefault";
inline constexpr std::string_view PostLoadValue = "Enabled";

/// Whether all settings go to their defaults at the next start of the system, as far as `front` has read: the Bios
/// resource says so (DSP8010, Bios, "ResetBiosToDefaultsPending"), which pending values do not show, or PostLoadSetting
/// has that value, pending or, where none waits, in force. False before any was read. Sends nothing.
TAVRINE_EXPORT bool AwaitsDefaults(const BiosRedfishConfigProc& front);

} // namespace Tavrine
