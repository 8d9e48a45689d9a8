#pragma once

#include <string>

#include "RedfishConfigResult.h"

namespace Tavrine
{

class BMCBaseAssistant;

/// The systems collection of every Redfish service (DSP0266).
inline const std::string SystemsCollectionURL = "/redfish/v1/Systems";

/// Turns the systems collection into the URL of the Bios resource of its first usable
/// member: the first one with a string "@odata.id", "/Bios" added as it stands.
/// `valueURL` keeps what it held when the collection has no such member.
/// @return 0; 26 when `valueURL` is empty in the end; that of the read when it failed.
RedfishConfigResult DiscoverValueURL(BMCBaseAssistant& client, const std::string& collectionURL, std::string& valueURL);

} // namespace Tavrine
