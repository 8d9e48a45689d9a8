#pragma once

#include <string>

#include "ConfigOptions.h"
#include "ConnectionInfo.h"
#include "RedfishRegistryAssistant.h"

namespace Tavrine
{

/// The assistant of the front class: finds the Bios resource of the first system and
/// delivers the text of its attribute registry; it keeps the URL, not the text. It also
/// carries the actions that concern the whole system.
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
    /// Reads the target of the reset action from the Bios resource. 27 when it has none, 32
    /// when it is empty.
    RedfishConfigResult QueryLoadToDefaultActionURL(std::string& url);
    /// Resets the whole BIOS to its defaults. 1 on success: it takes a reboot.
    RedfishConfigResult PostResetBiosAction();
    RedfishConfigResult ExportUEFICustomDefaultFile(std::string& content);
    RedfishConfigResult ImportUEFICustomDefaultFile(const std::string& content);

    std::string m_SystemsCollectionURL;
    ConfigurateSupportedSystemType m_SupportedSystemType;

  private:
    RedfishConfigResult NeedValueURL();
};

} // namespace Tavrine
