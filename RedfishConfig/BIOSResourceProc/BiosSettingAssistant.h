#pragma once

#include <string>

#include "ConfigOptions.h"
#include "ConnectionInfo.h"
#include "RedfishRegistryAssistant.h"

namespace Tavrine
{

/// The assistant of the front class: finds the Bios resource of the first system and
/// delivers the text of its attribute registry. It keeps the URL, not the text.
class BiosSettingAssistant : public RedfishRegistryAssistant
{
  public:
    BiosSettingAssistant(const TavrineConnection::ConnectionInfo& connection,
                         ConfigurateSupportedSystemType systemType);
    ~BiosSettingAssistant() override = default;

    /// `schema` stays as it was when the Bios resource cannot be found, and becomes empty
    /// when the registry cannot be read.
    RedfishConfigResult GetSchema(std::string& schema) override;

    /// Finds m_ValueURL. 26 when no system has one.
    RedfishConfigResult ComplementQueryValuesURL();

    std::string m_SystemsCollectionURL;
    ConfigurateSupportedSystemType m_SupportedSystemType;
};

} // namespace Tavrine
