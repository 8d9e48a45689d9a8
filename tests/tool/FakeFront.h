#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "RedfishConfigProc.h"

namespace tooltest
{

using Tavrine::SettingCompareMap;
using Tavrine::SettingGroupMap;
using Tavrine::SettingStringMap;

/// A front object that answers from tables. Operations that a test does not set up
/// answer 11.
class FakeFront : public Tavrine::RedfishConfigProc
{
  public:
    explicit FakeFront(const std::string& first = "BIOS", const std::string& second = "BIOS")
    {
        m_Prefix = first;
        m_SecondPrefix = second;
    }

    /// Answers of QuerySettingValue by bare name; a name without one is answered 20.
    std::map<std::string, std::pair<RedfishConfigResult, SettingStringMap>> Single;
    std::pair<RedfishConfigResult, SettingStringMap> Group{{11, "", ""}, {}};
    std::pair<RedfishConfigResult, SettingGroupMap> Groups{{11, "", ""}, {}};
    /// What was asked, in order; "*" for the group.
    std::vector<std::string> Asked;

    RedfishConfigResult QueryGroupSettingValues(SettingStringMap& values) override
    {
        Asked.emplace_back("*");
        values.insert(Group.second.begin(), Group.second.end());
        return Group.first;
    }
    RedfishConfigResult QuerySettingValue(const std::string& setting, SettingStringMap& values) override
    {
        Asked.push_back(setting);
        const auto answer = Single.find(setting);
        if (answer == Single.end())
        {
            return {20, "Unable to find the setting " + m_Prefix + "." + setting, ""};
        }
        values.insert(answer->second.second.begin(), answer->second.second.end());
        return answer->second.first;
    }
    RedfishConfigResult QueryGroupList(SettingGroupMap& groups) override
    {
        groups = Groups.second;
        return Groups.first;
    }

    RedfishConfigResult PatchSettingNewValueWithOutCheck(const std::string&, const std::string&, bool) override
    {
        return NotSetUp();
    }
    RedfishConfigResult QuerySettingValidValues(SettingStringMap&, const std::string&) override { return NotSetUp(); }
    RedfishConfigResult QuerySettingDefaultValues(SettingStringMap&, const std::string&) override { return NotSetUp(); }
    RedfishConfigResult QuerySettingDescriptions(SettingStringMap&, const std::string&) override { return NotSetUp(); }
    RedfishConfigResult PatchSettingNewValue(const std::string&, const std::string&, bool) override
    {
        return NotSetUp();
    }
    RedfishConfigResult QuerySaveSettingValues(SettingStringMap&) override { return NotSetUp(); }
    RedfishConfigResult Restore(SettingStringMap&, SettingStringMap&, SettingStringMap&, bool, bool) override
    {
        return NotSetUp();
    }
    RedfishConfigResult PostDefaultvalue(const std::string&, const std::string&) override { return NotSetUp(); }
    RedfishConfigResult CheckSettingCouldbeSupported(const std::string&) override { return NotSetUp(); }
    RedfishConfigResult CompareSettingPendingValues(SettingCompareMap&, const std::string&) override
    {
        return NotSetUp();
    }

  private:
    static RedfishConfigResult NotSetUp() { return {11, "", ""}; }
};

} // namespace tooltest
