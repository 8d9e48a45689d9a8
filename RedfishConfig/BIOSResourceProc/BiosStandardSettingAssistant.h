#pragma once

#include <string>

#include "BMCBaseAssistant.h"
#include "BiosBasicSettingAssistant.h"
#include "ConnectionInfo.h"

namespace Tavrine
{

/// The system's Bios resource and the settings object that it names (DSP8010, Bios;
/// DSP0266, settings resources). The text of the Bios resource is fetched once and is the
/// root of everything else here.
class BiosStandardSettingAssistant : public BiosBasicSettingAssistant, public BMCBaseAssistant
{
  public:
    explicit BiosStandardSettingAssistant(const TavrineConnection::ConnectionInfo& connection);
    ~BiosStandardSettingAssistant() override = default;

    RedfishConfigResult FlushChanges() override;
    void SetValueResponse(const std::string& response) override;
    RedfishConfigResult QueryEffectiveValue(SettingValueMap& values) override;
    /// The values always go into m_PendingValues, whatever the argument.
    RedfishConfigResult QueryPendingValue(SettingValueMap& values) override;
    RedfishConfigResult QueryValueURLResponse() override;

    RedfishConfigResult ComplementQueryValuesURL();
    RedfishConfigResult QueryPatchURL();
    /// Makes a change conditional on the stored etag of the Bios resource.
    RedfishConfigResult BuildPatchHeaders(SettingStringMap& headers);

    /// URL of the settings object.
    std::string m_PatchURL;
    std::string m_UnusedFirst;
    std::string m_UnusedSecond;
    /// URL of the Bios resource.
    std::string m_ValueURL;
    /// Text of the Bios resource as the BMC sent it.
    std::string m_ValueResponse;
};

} // namespace Tavrine
