#include <stdexcept>
#include <utility>

#include <boost/json/parse.hpp>

#include "BIOSCompatibleModule.h"
#include "BMCBaseAssistant.h"
#include "Doubles.h"
#include "GlobalConfig.h"
#include "Log.h"
#include "RedfishConfigAssistant.h"
#include "RedfishConfigSettingManager.h"
#include "RedfishRegistryAssistant.h"

using doubles::Answer;
using doubles::RestCall;
using doubles::TheWorld;

namespace
{

/// Throws where the test wants it.
void Happen(const std::string& what)
{
    if (TheWorld().Throws.contains(what))
    {
        throw std::runtime_error(what);
    }
}

void EnterCall(const std::string& call)
{
    TheWorld().ManagerCalls.push_back(call);
    Happen(call);
}

Answer Respond(const RestCall& call)
{
    TheWorld().Calls.push_back(call);
    Happen(call.Verb + " " + call.Url);
    auto& answers = TheWorld().Answers;
    const auto scripted = answers.find({call.Verb, call.Url});
    if (scripted == answers.end())
    {
        return {.Result = {99, "unscripted request: " + call.Verb + " " + call.Url, ""}, .Body = "", .Errors = {}};
    }
    Answer answer = scripted->second.front();
    if (scripted->second.size() > 1)
    {
        scripted->second.pop_front();
    }
    return answer;
}

/// Records `call` and gives what was told for `key`.
doubles::ManagerAnswer Manage(const std::string& call, const std::string& key)
{
    EnterCall(call);
    const auto scripted = TheWorld().ManagerAnswers.find(key);
    if (scripted == TheWorld().ManagerAnswers.end())
    {
        return {.Result = {99, "unscripted operation: " + key, ""}, .Text = "", .Map = {}, .Errors = {}};
    }
    return scripted->second;
}

RedfishConfigResult ManageOne(const std::string& operation, const std::string& name, std::string& text)
{
    const std::string call = operation + " " + name;
    doubles::ManagerAnswer answer = Manage(call, call);
    text = answer.Text;
    return answer.Result;
}

RedfishConfigResult ManageAll(const std::string& operation, Tavrine::SettingStringMap& values)
{
    doubles::ManagerAnswer answer = Manage(operation, operation);
    values = answer.Map;
    return answer.Result;
}

} // namespace

class RedfishConfigSetting
{
};

RedfishConfigSettingManager::~RedfishConfigSettingManager() = default;

void RedfishConfigSettingManager::TakeRegistryOf(RedfishConfigSettingManager& other)
{
    EnterCall("TakeRegistryOf");
    m_Schema = other.m_Schema;
}

void RedfishConfigSettingManager::UpdateSettingValue(const Tavrine::SettingValueMap& values)
{
    EnterCall("UpdateSettingValue");
    TheWorld().UpdatedValues.push_back(values);
}

RedfishConfigResult RedfishConfigSettingManager::GetSettingProperties(const std::string name,
                                                                      Tavrine::RedfishConfigSettingInfoStru& info)
{
    EnterCall("GetSettingProperties " + name);
    const auto setting = TheWorld().Settings.find(name);
    if (setting == TheWorld().Settings.end())
    {
        return {20, "Unable to find the setting " + name, name};
    }
    info = setting->second;
    return {0, "", ""};
}

void RedfishConfigSettingManager::GetGroupList(Tavrine::SettingGroupMap& groups)
{
    EnterCall("GetGroupList");
    groups = TheWorld().Groups;
}

std::vector<RedfishConfigResult> RedfishConfigSettingManager::GetError() const { return m_ErrorList; }

std::vector<RedfishConfigResult> RedfishConfigSettingManager::TakeErrors()
{
    EnterCall("TakeErrors");
    return std::exchange(m_ErrorList, {});
}

RedfishConfigResult RedfishConfigSettingManager::QuerySettingDefaultValue(const std::string name, std::string& value)
{
    return ManageOne("QuerySettingDefaultValue", name, value);
}
RedfishConfigResult RedfishConfigSettingManager::QuerySettingValidValues(const std::string name, std::string& value)
{
    return ManageOne("QuerySettingValidValues", name, value);
}
RedfishConfigResult RedfishConfigSettingManager::QuerySettingDescription(const std::string name, std::string& value)
{
    return ManageOne("QuerySettingDescription", name, value);
}
RedfishConfigResult RedfishConfigSettingManager::QueryGroupSettingDefaultValues(Tavrine::SettingStringMap& values)
{
    return ManageAll("QueryGroupSettingDefaultValues", values);
}
RedfishConfigResult RedfishConfigSettingManager::QueryGroupSettingValidValues(Tavrine::SettingStringMap& values)
{
    return ManageAll("QueryGroupSettingValidValues", values);
}
RedfishConfigResult RedfishConfigSettingManager::QueryGroupSettingDescriptions(Tavrine::SettingStringMap& values)
{
    return ManageAll("QueryGroupSettingDescriptions", values);
}

RedfishConfigResult RedfishConfigSettingManager::FetchSaveSettingValues(Tavrine::SettingStringMap& values,
                                                                        Tavrine::filterAction action)
{
    doubles::ManagerAnswer answer =
        Manage("FetchSaveSettingValues " + std::to_string(action), "FetchSaveSettingValues");
    values = answer.Map;
    return answer.Result;
}

RedfishConfigResult RedfishConfigSettingManager::PreparePatchContext(const std::string name, const std::string value,
                                                                     std::string& context, Tavrine::filterAction action)
{
    doubles::ManagerAnswer answer = Manage("PreparePatchContext " + name + "=" + value + " " + std::to_string(action),
                                           "PreparePatchContext " + name);
    context = answer.Text;
    m_ErrorList.insert(m_ErrorList.end(), answer.Errors.begin(), answer.Errors.end());
    return answer.Result;
}

RedfishConfigResult RedfishConfigSettingManager::PreparePatchContext(const Tavrine::SettingStringMap& values,
                                                                     Tavrine::SettingStringMap& contexts,
                                                                     Tavrine::filterAction action)
{
    std::string pairs;
    for (const auto& [name, value] : values)
    {
        pairs += (pairs.empty() ? "" : ",") + name + "=" + value;
    }
    doubles::ManagerAnswer answer =
        Manage("PreparePatchContext {" + pairs + "} " + std::to_string(action), "PreparePatchContext");
    contexts = answer.Map;
    m_ErrorList.insert(m_ErrorList.end(), answer.Errors.begin(), answer.Errors.end());
    return answer.Result;
}

// The type table of the constructors points at these; nothing here calls them.
RedfishConfigSetting* RedfishConfigSettingManager::createNumericSetting(Tavrine::RedfishConfigSettingInfoStru&,
                                                                        const Tavrine::Config_Options&)
{
    return nullptr;
}
RedfishConfigSetting* RedfishConfigSettingManager::createTextSetting(Tavrine::RedfishConfigSettingInfoStru&,
                                                                     const Tavrine::Config_Options&)
{
    return nullptr;
}
RedfishConfigSetting* RedfishConfigSettingManager::createEnumerateSetting(Tavrine::RedfishConfigSettingInfoStru&,
                                                                          const Tavrine::Config_Options&)
{
    return nullptr;
}
RedfishConfigSetting* RedfishConfigSettingManager::createBooleanSetting(Tavrine::RedfishConfigSettingInfoStru&,
                                                                        const Tavrine::Config_Options&)
{
    return nullptr;
}
RedfishConfigSetting* RedfishConfigSettingManager::createPasswordSetting(Tavrine::RedfishConfigSettingInfoStru&,
                                                                         const Tavrine::Config_Options&)
{
    return nullptr;
}

namespace Tavrine
{

Log::Log(unsigned int level, const char* sourcePath, int sourceLine)
    : m_Level(level), m_SourcePath(sourcePath), m_SourceLine(sourceLine), m_Stream(std::in_place)
{
}
Log::~Log() { TheWorld().Logs.push_back({m_Level, m_Stream->str()}); }
std::ostringstream& Log::Stream() { return *m_Stream; }

int GlobalConfig::GetConfigItem(const std::string key, std::string& value)
{
    TheWorld().ConfigAsked.push_back(key);
    const auto item = TheWorld().Config.find(key);
    if (item == TheWorld().Config.end())
    {
        return 1;
    }
    value = item->second;
    return 0;
}

BIOSCompatibleModule::BIOSCompatibleModule(const Config_Options& options) : m_Options(options) {}
BIOSCompatibleModule::~BIOSCompatibleModule() = default;
RedfishConfigResult BIOSCompatibleModule::ConvertNameFromOldToNew(const std::string oldName, std::string& newName)
{
    TheWorld().NamesAsked.push_back(oldName);
    Happen("ConvertNameFromOldToNew " + oldName);
    const auto name = TheWorld().NewNames.find(oldName);
    if (name == TheWorld().NewNames.end())
    {
        return {20, "", oldName};
    }
    newName = name->second;
    return {0, "", ""};
}

/// Never made: the double has no client.
class RedfishClient
{
};

BMCBaseAssistant::BMCBaseAssistant(const TavrineConnection::ConnectionInfo& connection,
                                   const ConfigurateSupportedSystemType& systemType)
{
    TheWorld().Clients.emplace_back(connection.Host, static_cast<int>(systemType));
}
BMCBaseAssistant::~BMCBaseAssistant() = default;

RedfishConfigResult BMCBaseAssistant::PatchData(const std::string url, const std::string body,
                                                std::vector<RedfishConfigResult>& errors, bool flag,
                                                const SettingStringMap& headers)
{
    Answer answer =
        Respond({.Verb = "PATCH", .Url = url, .Body = body, .Flag = flag, .Timeout = 0, .Headers = headers});
    errors.insert(errors.end(), answer.Errors.begin(), answer.Errors.end());
    return answer.Result;
}

RedfishConfigResult BMCBaseAssistant::PostData(const std::string url, const std::string body, std::string& response,
                                               std::vector<RedfishConfigResult>& errors, bool flag, int timeout)
{
    Answer answer =
        Respond({.Verb = "POST+errors", .Url = url, .Body = body, .Flag = flag, .Timeout = timeout, .Headers = {}});
    errors.insert(errors.end(), answer.Errors.begin(), answer.Errors.end());
    response = answer.Body;
    return answer.Result;
}

RedfishConfigResult BMCBaseAssistant::PostData(const std::string url, const std::string body, std::string& response,
                                               bool flag, int timeout)
{
    Answer answer =
        Respond({.Verb = "POST", .Url = url, .Body = body, .Flag = flag, .Timeout = timeout, .Headers = {}});
    response = answer.Body;
    return answer.Result;
}

RedfishConfigResult BMCBaseAssistant::GetData(const std::string url, std::string& response)
{
    Answer answer = Respond({.Verb = "GET", .Url = url, .Body = "", .Flag = false, .Timeout = 0, .Headers = {}});
    if (answer.Result == 0)
    {
        response = answer.Body;
    }
    return answer.Result;
}

RedfishConfigResult BMCBaseAssistant::DeleteData(const std::string url, std::string& response)
{
    Answer answer = Respond({.Verb = "DELETE", .Url = url, .Body = "", .Flag = false, .Timeout = 0, .Headers = {}});
    response = answer.Body;
    return answer.Result;
}

RedfishConfigResult BMCBaseAssistant::ParseSettingValuesFromResponse(const std::string response,
                                                                     SettingValueMap& values)
{
    boost::json::error_code error;
    const boost::json::value root = boost::json::parse(response, error);
    const boost::json::value* attributes = error ? nullptr : root.find_pointer("/Attributes", error);
    if (attributes == nullptr || !attributes->is_object())
    {
        return {27, "no attributes", ""};
    }
    values.clear();
    for (const auto& [name, value] : attributes->get_object())
    {
        OptionalVar& entry = values[name];
        if (value.is_string())
        {
            entry = std::string(value.get_string());
        }
        else if (value.is_int64())
        {
            entry = value.get_int64();
        }
        else if (value.is_bool())
        {
            entry = value.get_bool();
        }
    }
    return {0, "", ""};
}

RedfishConfigAssistant::RedfishConfigAssistant() = default;
RedfishConfigAssistant::~RedfishConfigAssistant() = default;
std::vector<RedfishConfigResult> RedfishConfigAssistant::GetError() { return m_Errors; }
void RedfishConfigAssistant::UpdateError(const std::vector<RedfishConfigResult>& errors) { m_Errors = errors; }
void RedfishConfigAssistant::CacheSetContext(const std::string name, const std::string context)
{
    m_SetContexts[name] = context;
}
RedfishConfigResult RedfishConfigAssistant::FlushChanges(const std::string) { return {11, "", ""}; }

RedfishRegistryAssistant::RedfishRegistryAssistant(const TavrineConnection::ConnectionInfo& connection)
    : m_BMCClient(std::make_shared<BMCBaseAssistant>(connection, SystemTypeBios))
{
}
RedfishRegistryAssistant::~RedfishRegistryAssistant() = default;
std::string RedfishRegistryAssistant::GetValueResponse() { return m_ValueResponse; }
RedfishConfigResult RedfishRegistryAssistant::GetSchema(std::string&) { return {11, "", ""}; }
RedfishConfigResult RedfishRegistryAssistant::GetEffectiveValueMap(SettingValueMap&) { return {11, "", ""}; }
RedfishConfigResult RedfishRegistryAssistant::UpdateSettingValueCache(const std::string, const std::string)
{
    return {11, "", ""};
}
RedfishConfigResult RedfishRegistryAssistant::FlushChanges(const std::string) { return {11, "", ""}; }
RedfishConfigResult RedfishRegistryAssistant::QueryEffectiveValue() { return {11, "", ""}; }
RedfishConfigResult RedfishRegistryAssistant::QueryValueURLResponse() { return {11, "", ""}; }
RedfishConfigResult RedfishRegistryAssistant::QuerySchema()
{
    Answer answer =
        Respond({.Verb = "SCHEMA", .Url = m_ValueURL, .Body = "", .Flag = false, .Timeout = 0, .Headers = {}});
    if (answer.Result == 0)
    {
        m_Schema = answer.Body;
    }
    return answer.Result;
}
RedfishConfigResult RedfishRegistryAssistant::ComplementQuerySchemaURL(std::string&) { return {11, "", ""}; }

} // namespace Tavrine
