#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>

#include "FakeFront.h"
#include "LoadDefaultCommand.h"
#include "Options.h"

namespace tooltest
{

/// What the library and the BMC say; the objects that are made for each question answer
/// from here.
struct LoadScript
{
    /// Setting and request of each call.
    std::vector<std::pair<std::string, std::string>> Asked;
    /// By setting; 1 where there is none.
    std::map<std::string, RedfishConfigResult> Answers;
    RedfishConfigResult Read{0, "", ""};
    SettingStringMap Effective;
    SettingCompareMap Pending;
    /// Of the registry, by setting.
    SettingStringMap Defaults;
};

inline constexpr const char* LoadRegistry =
    R"({"@odata.type":"#AttributeRegistry.v1_3_6.AttributeRegistry","Id":"R.v1_0_0",
    "RegistryEntries":{"Attributes":[
    {"AttributeName":"A","Type":"String","CurrentValue":"1"},
    {"AttributeName":"B","Type":"String","CurrentValue":"1"},
    {"AttributeName":"C","Type":"String","CurrentValue":"1"},
    {"AttributeName":"D","Type":"String","CurrentValue":"1"},
    {"AttributeName":"Mode","Type":"Enumeration","CurrentValue":"1"},
    {"AttributeName":"Size","Type":"Integer","CurrentValue":1},
    {"AttributeName":"Flag","Type":"Boolean","CurrentValue":true},
    {"AttributeName":"Bare"},
    {"AttributeName":"Word","Type":"Password"}]}})";

/// Reads the registry with the defaults of the script.
inline Tavrine::Tool::ManagerReader KindsOf(const LoadScript& script)
{
    return [&script](Tavrine::RedfishConfigProc& front, std::unique_ptr<RedfishConfigSettingManager>& manager)
    {
        boost::json::value registry = boost::json::parse(LoadRegistry);
        for (boost::json::value& attribute : registry.at("RegistryEntries").at("Attributes").as_array())
        {
            const auto known = script.Defaults.find(attribute.at("AttributeName").as_string().c_str());
            if (known != script.Defaults.end())
            {
                attribute.as_object()["DefaultValue"] = known->second;
            }
        }
        manager =
            std::make_unique<RedfishConfigSettingManager>(boost::json::serialize(registry), false, front.m_Options);
        return RedfishConfigResult(0, "", "");
    };
}

class LoadFront : public FakeFront
{
  public:
    explicit LoadFront(LoadScript& script) : m_Script(script) {}

    RedfishConfigResult PostDefaultvalue(const std::string& setting, const std::string& request) override
    {
        m_Script.Asked.emplace_back(setting, request);
        const auto answer = m_Script.Answers.find(setting);
        return answer != m_Script.Answers.end() ? answer->second : RedfishConfigResult(1, "", "");
    }
    RedfishConfigResult CompareSettingPendingValues(SettingCompareMap& values, const std::string&) override
    {
        values = m_Script.Pending;
        return m_Script.Read == 0 && m_Script.Pending.empty() ? RedfishConfigResult(2, "", "") : m_Script.Read;
    }
    RedfishConfigResult QueryGroupSettingValues(SettingStringMap& values) override
    {
        values = m_Script.Effective;
        return m_Script.Read;
    }

  private:
    LoadScript& m_Script;
};

inline Tavrine::Tool::Options OptionsToLoad(const std::vector<std::string>& names)
{
    Tavrine::Tool::Options options;
    options.Names = names;
    return options;
}

inline Tavrine::Tool::Answer Load(LoadScript& script, const std::vector<std::string>& names,
                                  Tavrine::Tool::WaitingChanges& waiting)
{
    return Tavrine::Tool::LoadSingleDefaults(
        OptionsToLoad(names), [&] { return std::make_unique<LoadFront>(script); }, KindsOf(script), waiting);
}

inline Tavrine::Tool::Answer Load(LoadScript& script, const std::vector<std::string>& names)
{
    Tavrine::Tool::WaitingChanges waiting;
    return Load(script, names, waiting);
}

using LoadCalls = std::vector<std::pair<std::string, std::string>>;

} // namespace tooltest
