#pragma once

#include <string>

#include "BMCBaseAssistant.h"
#include "BiosBasicSettingAssistant.h"
#include "ConnectionInfo.h"

namespace Tavrine
{

/// The OEM actions that carry the protected attributes. They name system 1, whatever the
/// systems collection holds.
inline const std::string ProtectedAttributesGetURL =
    "/redfish/v1/Systems/1/Bios/Actions/Oem/ZorvanBios.GetProtectedAttributes";
inline const std::string ProtectedAttributesSetURL =
    "/redfish/v1/Systems/1/Bios/Actions/Oem/ZorvanBios.SetProtectedAttributes";

/// The protected attributes of a UEFI system: one action reads them, one writes them.
/// Nothing is discovered and no text is kept.
class BiosProtectedSettingAssistant : public BiosBasicSettingAssistant, public BMCBaseAssistant
{
  public:
    explicit BiosProtectedSettingAssistant(const TavrineConnection::ConnectionInfo& connection);
    ~BiosProtectedSettingAssistant() override = default;

    RedfishConfigResult FlushChanges() override;
    RedfishConfigResult QueryEffectiveValue(SettingValueMap& values) override;
    RedfishConfigResult QueryPendingValue(SettingValueMap& values) override;
    /// Always 0; there is no such resource here.
    RedfishConfigResult QueryValueURLResponse() override;
};

} // namespace Tavrine
