#include "RedfishRegistryAssistant.h"

#include "BMCBaseAssistant.h"
#include "ClientPool.h"
#include "JsonText.h"
#include "Log.h"
#include "PlainText.h"
#include "RedfishClient.h"
#include "RegistryLookup.h"
#include "SettingValues.h"

namespace Tavrine
{

namespace
{

/// Where changes of a value resource go (DSP0266, "Settings resource"); empty when it
/// does not tell.
std::string SettingsPath(const std::string& valueResponse)
{
    const auto document = ParseJson(valueResponse);
    const auto* const settings = Member(document ? &*document : nullptr, "@Redfish.Settings");
    return std::string(TextMember(Member(settings, "SettingsObject"), "@odata.id"));
}

std::string PatchBody(const SettingStringMap& contexts)
{
    std::string body = "{\"Attributes\":{";
    bool first = true;
    for (const auto& [name, context] : contexts)
    {
        body += first ? "" : ",";
        first = false;
        AppendJsonString(body, name);
        body += ":" + context;
    }
    return body + "}}";
}

} // namespace

RedfishRegistryAssistant::RedfishRegistryAssistant(const TavrineConnection::ConnectionInfo& connection)
    : m_BMCClient(std::make_shared<BMCBaseAssistant>(connection, SystemTypeBios)),
      m_Client(ClientPool::Acquire(connection))
{
}

RedfishRegistryAssistant::~RedfishRegistryAssistant() = default;

std::string RedfishRegistryAssistant::GetValueResponse() { return m_ValueResponse; }

RedfishConfigResult RedfishRegistryAssistant::GetSchema(std::string& schema)
{
    RedfishConfigResult result = QuerySchema();
    schema = result == 0 ? m_Schema : std::string();
    return result;
}

RedfishConfigResult RedfishRegistryAssistant::GetEffectiveValueMap(SettingValueMap& values)
{
    if (m_EffectiveValues.empty())
    {
        RedfishConfigResult result = QueryEffectiveValue();
        if (result != 0)
        {
            return result;
        }
    }
    values = m_EffectiveValues;
    return {0, "", ""};
}

RedfishConfigResult RedfishRegistryAssistant::UpdateSettingValueCache(const std::string name, const std::string value)
{
    SettingValueMap values;
    RedfishConfigResult result = GetEffectiveValueMap(values);
    if (result != 0)
    {
        return result;
    }
    const auto current = values.find(name);
    std::string context;
    result = MakeValueText(name, value, current == values.end() ? OptionalVar() : current->second, context);
    if (result == 0)
    {
        CacheSetContext(name, context);
    }
    return result;
}

RedfishConfigResult RedfishRegistryAssistant::FlushChanges(const std::string target)
{
    m_Errors.clear();
    if (m_SetContexts.empty())
    {
        return {0, "", ""};
    }
    std::string path = target;
    if (path.empty())
    {
        RedfishConfigResult result = m_ValueResponse.empty() ? QueryValueURLResponse() : RedfishConfigResult(0, "", "");
        if (result != 0)
        {
            return result;
        }
        path = SettingsPath(m_ValueResponse);
    }
    if (path.empty())
    {
        return {26, "The resource " + m_ValueURL + " names no settings object.", ""};
    }
    RedfishConfigResult result = m_BMCClient->PatchData(path, PatchBody(m_SetContexts), m_Errors, true, {});
    m_SetContexts.clear();
    return result;
}

RedfishConfigResult RedfishRegistryAssistant::QueryEffectiveValue()
{
    RedfishConfigResult result = m_ValueResponse.empty() ? QueryValueURLResponse() : RedfishConfigResult(0, "", "");
    return result == 0 ? m_BMCClient->ParseSettingValuesFromResponse(m_ValueResponse, m_EffectiveValues) : result;
}

RedfishConfigResult RedfishRegistryAssistant::QueryValueURLResponse()
{
    if (m_ValueURL.empty())
    {
        return {26, "The URL of the value resource is not known.", ""};
    }
    return m_BMCClient->GetData(m_ValueURL, m_ValueResponse);
}

RedfishConfigResult RedfishRegistryAssistant::QuerySchema()
{
    m_Schema.clear();
    RedfishConfigResult result = QueryValueURLResponse();
    if (result != 0)
    {
        return result;
    }
    const std::string identifier = RegistryIdentifier(m_ValueResponse);
    if (identifier.empty())
    {
        return {26, "The resource " + m_ValueURL + " names no attribute registry.", ""};
    }
    const RegistryFinder find = [&](std::string& url)
    {
        url = identifier;
        RedfishConfigResult found = ComplementQuerySchemaURL(url);
        if (found == 0)
        {
            Log(4, __FILE__, __LINE__).Stream() << "The registry " << CleanText(identifier, 200) << " lies at " << url;
        }
        return found;
    };
    result = m_Client->Registries().Read(*m_Client, identifier, find, m_Schema);
    if (result == 0 && m_Schema.empty())
    {
        return {26, "The attribute registry " + CleanText(identifier, 200) + " is empty.", ""};
    }
    return result;
}

RedfishConfigResult RedfishRegistryAssistant::ComplementQuerySchemaURL(std::string& schemaURL)
{
    const std::string identifier = schemaURL;
    const ResourceReader read = [this](const std::string& path, std::string& text)
    { return m_BMCClient->GetData(path, text); };
    return FindRegistry(read, identifier, m_Client->Language(), schemaURL);
}

} // namespace Tavrine
