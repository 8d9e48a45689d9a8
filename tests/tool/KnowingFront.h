#pragma once

#include <map>
#include <string>
#include <utility>

#include "FakeFront.h"
#include "Fronts.h"

namespace tooltest
{

/// A FakeFront that also answers what is known about settings. Each table goes by bare
/// name, "" for all; a name that it lacks is answered 20.
class KnowingFront : public FakeFront
{
  public:
    using FakeFront::FakeFront;

    template <typename Map> using Table = std::map<std::string, std::pair<RedfishConfigResult, Map>>;
    Table<SettingStringMap> ValidValues;
    Table<SettingStringMap> Defaults;
    Table<SettingStringMap> Descriptions;
    Table<SettingCompareMap> DefaultPairs;
    Table<SettingCompareMap> PendingPairs;
    /// What valid values are with OutputForm::Registry, under the second prefix.
    std::pair<RedfishConfigResult, std::string> Registry{{11, "", ""}, ""};

    RedfishConfigResult QuerySettingValidValues(SettingStringMap& values, const std::string& setting) override
    {
        if (m_Options.OutputFormat != FormatOf(Tavrine::Tool::OutputForm::Registry))
        {
            return Look("values", ValidValues, setting, values);
        }
        Asked.emplace_back("registry");
        if (Registry.first == 0 && !Registry.second.empty())
        {
            values[m_SecondPrefix] = Registry.second;
        }
        return Registry.first;
    }
    RedfishConfigResult QuerySettingDefaultValues(SettingStringMap& values, const std::string& setting) override
    {
        return Look("defaults", Defaults, setting, values);
    }
    RedfishConfigResult QuerySettingDescriptions(SettingStringMap& values, const std::string& setting) override
    {
        return Look("descriptions", Descriptions, setting, values);
    }
    RedfishConfigResult CompareSettingDefaultValues(SettingCompareMap& values, const std::string& setting) override
    {
        return Look("compare", DefaultPairs, setting, values);
    }
    RedfishConfigResult CompareSettingPendingValues(SettingCompareMap& values, const std::string& setting) override
    {
        return Look("pending", PendingPairs, setting, values);
    }

  private:
    template <typename Map>
    RedfishConfigResult Look(const std::string& what, const Table<Map>& table, const std::string& setting, Map& values)
    {
        Asked.push_back(what + " " + (setting.empty() ? "*" : setting));
        const auto answer = table.find(setting);
        if (answer == table.end())
        {
            return {20, "Unable to find the setting " + m_Prefix + "." + setting, ""};
        }
        values.insert(answer->second.second.begin(), answer->second.second.end());
        return answer->second.first;
    }
};

} // namespace tooltest
