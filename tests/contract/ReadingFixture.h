#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "BiosBasicSettingAssistant.h"
#include "BiosBasicSettingProc.h"
#include "BiosRedfishConfigProc.h"
#include "BiosRedfishProcCreator.h"
#include "BiosSettingAssistant.h"
#include "Contract.h"
#include "RedfishConfigSettingManager.h"

/// The machine of the reading tests: one system, its Bios resource and settings object, and
/// the protected attributes of a UEFI system.
namespace reading
{

using doubles::LogLine;
using doubles::RestCall;

inline const std::string SystemsUrl = "/redfish/v1/Systems";
inline const std::string SystemUrl = "/redfish/v1/Systems/1";
inline const std::string BiosUrl = "/redfish/v1/Systems/1/Bios";
inline const std::string SettingsUrl = "/redfish/v1/Systems/1/Bios/Settings";
inline const std::string ProtectedUrl = "/redfish/v1/Systems/1/Bios/Actions/Oem/ZorvanBios.GetProtectedAttributes";

inline const std::string Schema = R"({"RegistryEntries":{"Attributes":[]}})";
inline const std::string SystemsBody = R"({"Members":[{"@odata.id":"/redfish/v1/Systems/1"}]})";

/// Requests as the doubles record them.
inline RestCall Get(const std::string& url)
{
    return {.Verb = "GET", .Url = url, .Body = "", .Flag = false, .Timeout = 0, .Headers = {}};
}
inline RestCall ReadSchema(const std::string& url)
{
    return {.Verb = "SCHEMA", .Url = url, .Body = "", .Flag = false, .Timeout = 0, .Headers = {}};
}
inline RestCall ReadProtected(const std::string& body)
{
    return {.Verb = "POST", .Url = ProtectedUrl, .Body = body, .Flag = false, .Timeout = 60, .Headers = {}};
}

/// Records of the steps below the front class, in their order.
inline const std::vector<LogLine> DiscoveryLogs = {{3, "Enter ComplementQueryValuesURL()"},
                                                   {4, "Systems member url: /redfish/v1/Systems/1"}};
inline const std::vector<LogLine> BiosReadLogs = {{4, "Enter RedfishRegistryAssistant::QueryValueURLResponse()"},
                                                  {3, "Enter ComplementQueryValuesURL()"},
                                                  {4, "Systems member url: /redfish/v1/Systems/1"},
                                                  {4, "Exit BiosStandardSettingAssistant::QueryValueURLResponse()"}};

inline std::vector<LogLine> Join(std::initializer_list<std::vector<LogLine>> parts)
{
    std::vector<LogLine> all;
    for (const std::vector<LogLine>& part : parts)
    {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

/// A proc that answers single and group queries as it is told. What it gives is entered in
/// the map also when it fails.
class ScriptedProc final : public Tavrine::BiosBasicSettingProc
{
  public:
    ScriptedProc(RedfishConfigResult result, Tavrine::SettingStringMap gives)
        : m_Result(std::move(result)), m_Gives(std::move(gives))
    {
    }

    RedfishConfigResult QueryGroupSettingValues(Tavrine::SettingStringMap& values) override
    {
        ++m_GroupQueries;
        values.insert(m_Gives.begin(), m_Gives.end());
        return m_Result;
    }
    RedfishConfigResult QuerySettingValue(const std::string& setting, Tavrine::SettingStringMap& values) override
    {
        m_NamesAsked.push_back(setting);
        values.insert(m_Gives.begin(), m_Gives.end());
        return m_Result;
    }

    RedfishConfigResult m_Result;
    Tavrine::SettingStringMap m_Gives;
    int m_GroupQueries = 0;
    std::vector<std::string> m_NamesAsked;
};

/// An assistant that answers both reads of current values as it is told, and keeps which
/// of the two was asked for.
class ScriptedAssistant final : public Tavrine::BiosBasicSettingAssistant
{
  public:
    ScriptedAssistant(RedfishConfigResult result, Tavrine::SettingValueMap gives)
        : m_Result(std::move(result)), m_Gives(std::move(gives))
    {
    }

    RedfishConfigResult GetCurrentValuesMap(Tavrine::SettingValueMap& values) override
    {
        return Give("current", values);
    }
    RedfishConfigResult ReloadAllSettingValues(Tavrine::SettingValueMap& values) override
    {
        return Give("reload", values);
    }
    RedfishConfigResult FlushChanges() override { return {99, "", ""}; }
    RedfishConfigResult QueryEffectiveValue(Tavrine::SettingValueMap&) override { return {99, "", ""}; }
    RedfishConfigResult QueryPendingValue(Tavrine::SettingValueMap&) override { return {99, "", ""}; }
    RedfishConfigResult QueryValueURLResponse() override { return {99, "", ""}; }

    RedfishConfigResult m_Result;
    Tavrine::SettingValueMap m_Gives;
    std::vector<std::string> m_Reads;

  private:
    RedfishConfigResult Give(const char* read, Tavrine::SettingValueMap& values)
    {
        m_Reads.emplace_back(read);
        values.insert(m_Gives.begin(), m_Gives.end());
        return m_Result;
    }
};

class FrontClassTest : public ContractTest
{
  protected:
    using Front = Tavrine::BiosRedfishConfigProc;

    /// A front object, its construction forgotten by the world's log.
    std::unique_ptr<Front> Make(Tavrine::ConfigurateSupportedSystemType systemType,
                                const Tavrine::Config_Options& options)
    {
        auto front = std::make_unique<Front>(m_Connection, systemType, options);
        world.Logs.clear();
        return front;
    }
    std::unique_ptr<Front> MakeBios(const Tavrine::Config_Options& options = {})
    {
        return Make(Tavrine::SystemTypeBios, options);
    }
    std::unique_ptr<Front> MakeUefi(const Tavrine::Config_Options& options = {})
    {
        return Make(Tavrine::SystemTypeUefi, options);
    }

    void TellSystem() { world.Tell("GET", SystemsUrl, SystemsBody); }
    void TellSchema() { world.Tell("SCHEMA", BiosUrl, Schema); }
    /// Systems, Bios resource and settings object, as the objects "Attributes".
    void TellStandard(const std::string& effective, const std::string& pending = "{}")
    {
        TellSystem();
        world.Tell("GET", BiosUrl, doubles::BiosResource(effective, SettingsUrl, "1"));
        world.Tell("GET", SettingsUrl, "{\"Attributes\":" + pending + "}");
    }
    /// The first read of protected attributes, then the pending ones.
    void TellProtected(const std::string& effective, const std::string& pending = "{}")
    {
        world.Tell("POST", ProtectedUrl, "{\"Attributes\":" + effective + "}");
        world.Tell("POST", ProtectedUrl, "{\"Attributes\":" + pending + "}");
    }
    /// A setting that the manager knows.
    Tavrine::RedfishConfigSettingInfoStru& Know(const std::string& name)
    {
        Tavrine::RedfishConfigSettingInfoStru& info = world.Settings[name];
        info.AttributeKey = name;
        return info;
    }

    std::shared_ptr<ScriptedProc> Enter(Front& front, const std::string& resource, RedfishConfigResult result,
                                        Tavrine::SettingStringMap gives)
    {
        auto proc = std::make_shared<ScriptedProc>(std::move(result), std::move(gives));
        front.m_ProcCreator->m_ProcMap[resource] = proc;
        return proc;
    }
    std::shared_ptr<ScriptedAssistant> EnterAssistant(Front& front, const std::string& resource,
                                                      RedfishConfigResult result, Tavrine::SettingValueMap gives)
    {
        auto proc = std::make_shared<Tavrine::BiosBasicSettingProc>();
        auto assistant = std::make_shared<ScriptedAssistant>(std::move(result), std::move(gives));
        proc->m_Assistant = assistant;
        front.m_ProcCreator->m_ProcMap[resource] = proc;
        return assistant;
    }

    TavrineConnection::ConnectionInfo m_Connection{.Host = "bmc1", .User = "", .Password = ""};
};

} // namespace reading
