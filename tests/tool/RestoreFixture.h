#pragma once

#include <set>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "ConfigOptions.h"
#include "Options.h"
#include "RedfishConfigSettingManager.h"
#include "RestorePlan.h"

namespace tooltest
{

/// A registry with one setting of each kind that a restore treats in a way of its own.
inline constexpr const char* RestoreRegistry =
    R"({"@odata.type":"#AttributeRegistry.v1_3_6.AttributeRegistry","Id":"R.v1_0_0",
    "RegistryEntries":{"Attributes":[
    {"AttributeName":"Mode","Type":"Enumeration","CurrentValue":"Free","Value":[{"ValueName":"Free"},{"ValueName":"Fixed"}]},
    {"AttributeName":"Size","Type":"Integer","CurrentValue":7,"LowerBound":1,"UpperBound":9},
    {"AttributeName":"Tag","Type":"String","CurrentValue":"t","MaxLength":4},
    {"AttributeName":"Unique","Type":"String","CurrentValue":"u","IsSystemUniqueProperty":true},
    {"AttributeName":"Fixed","Type":"String","CurrentValue":"f","ReadOnly":true},
    {"AttributeName":"Silent","Type":"String"},
    {"AttributeName":"Seal","Type":"String","CurrentValue":"s","Oem":{"Zorvan":{"Protected":true}}},
    {"AttributeName":"Word","Type":"Password"},
    {"AttributeName":"_first","Type":"String","CurrentValue":"1"},
    {"AttributeName":"Zone","Type":"Integer","CurrentValue":1,"UpperBound":9},
    {"AttributeName":"apple","Type":"String","CurrentValue":"1"},
    {"AttributeName":"SystemRecovery_PostLoadSetupDefault","Type":"Enumeration","CurrentValue":"Disabled",
    "Value":[{"ValueName":"Disabled"},{"ValueName":"Enabled"}]},
    {"AttributeName":"Limited","Type":"Integer","CurrentValue":1,"UpperBound":9}],
    "Dependencies":[{"Type":"Map","DependencyFor":"Size","Dependency":{"MapFrom":[{"MapFromAttribute":"Mode",
    "MapFromProperty":"CurrentValue","MapFromCondition":"EQU","MapFromValue":"Fixed"}],"MapToAttribute":"Size",
    "MapToProperty":"ReadOnly","MapToValue":true}},
    {"Type":"Map","DependencyFor":"Limited","Dependency":{"MapFrom":[{"MapFromAttribute":"Mode",
    "MapFromProperty":"CurrentValue","MapFromCondition":"EQU","MapFromValue":"Fixed"}],"MapToAttribute":"Limited",
    "MapToProperty":"UpperBound","MapToValue":4}}]}})";

inline Tavrine::Tool::RestorePlan PlanOf(const Tavrine::SettingStringMap& settings, bool sameSystem = false,
                                         bool uefi = false, const std::set<std::string>& reported = {})
{
    Tavrine::Tool::RestorePlan plan;
    EXPECT_EQ(Tavrine::Tool::TakeSavedNames({{}, settings}, {"BIOS", "BIOS"}, plan), "");
    RedfishConfigSettingManager manager(RestoreRegistry, false, Tavrine::Config_Options());
    RedfishConfigResult result = Tavrine::Tool::JudgeRestore(
        manager, sameSystem, uefi, [&](const std::string& name) { return reported.contains(name); }, plan);
    EXPECT_EQ(result.ErrorCode(), 0) << result.ErrorMsg();
    return plan;
}

inline Tavrine::Tool::Options OptionsFor()
{
    Tavrine::Tool::Options options;
    options.Names = {"file.json"};
    return options;
}

inline const Tavrine::Tool::RestoreSetting& Find(const Tavrine::Tool::RestorePlan& plan, const std::string& name)
{
    for (const Tavrine::Tool::RestoreSetting& setting : plan.Settings)
    {
        if (setting.Name == name)
        {
            return setting;
        }
    }
    throw std::out_of_range(name);
}

} // namespace tooltest
