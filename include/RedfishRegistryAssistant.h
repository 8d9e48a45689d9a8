#pragma once

#include <memory>
#include <string>

#include "ConnectionInfo.h"
#include "Export.h"
#include "RedfishConfigAssistant.h"
#include "RedfishConfigResult.h"
#include "ValueTypes.h"

namespace Tavrine
{

class BMCBaseAssistant;
class RedfishClient;

/// Access to a value resource and to the attribute registry that it names
/// (DSP8010: Bios "AttributeRegistry", MessageRegistryFileCollection,
/// MessageRegistryFile, AttributeRegistry). Codes are those of BMCBaseAssistant,
/// and 26 when the registry cannot be found.
class TAVRINE_EXPORT RedfishRegistryAssistant : public RedfishConfigAssistant
{
  public:
    explicit RedfishRegistryAssistant(const TavrineConnection::ConnectionInfo& connection);
    ~RedfishRegistryAssistant() override;

    /// The text of the value resource read last; empty before the first read.
    virtual std::string GetValueResponse();
    /// Reads the registry anew and hands over its text; `schema` becomes empty when
    /// that fails.
    virtual RedfishConfigResult GetSchema(std::string& schema);
    /// The values in force, read at the first call.
    virtual RedfishConfigResult GetEffectiveValueMap(SettingValueMap& values);
    /// Enters a change, its JSON text made from the kind of the value in force (a
    /// string where that is unknown), for the next flush.
    virtual RedfishConfigResult UpdateSettingValueCache(const std::string name, const std::string value);
    /// Sends what is cached by PATCH to `target`, or to the settings object of the
    /// value resource where `target` is empty (DSP0266, "Settings resource"). The
    /// cache is emptied by the PATCH, whatever came of it, also where none went out for lack of
    /// a connection; it stays where the settings object was not found.
    RedfishConfigResult FlushChanges(const std::string target) override;

  protected:
    virtual RedfishConfigResult QueryEffectiveValue();
    virtual RedfishConfigResult QueryValueURLResponse();
    /// Reads the registry that the resource at m_ValueURL names into m_Schema: the
    /// registry file whose identifier is exactly the one named, found through
    /// /redfish/v1/Registries (all pages), then its "Location" in the language
    /// of the connection (the region aside where none fits exactly), then English,
    /// then the first. m_Schema is empty after a failure.
    virtual RedfishConfigResult QuerySchema();
    /// Completes a registry's identifier to the URL of its text; untouched on failure.
    virtual RedfishConfigResult ComplementQuerySchemaURL(std::string& schemaURL);

    /// Never null.
    std::shared_ptr<BMCBaseAssistant> m_BMCClient;
    /// URL of the value resource; empty until a derived class finds it.
    std::string m_ValueURL;
    std::string m_Schema;
    std::string m_ValueResponse;
    SettingValueMap m_EffectiveValues;

  private:
    std::shared_ptr<RedfishClient> m_Client;
};

} // namespace Tavrine
