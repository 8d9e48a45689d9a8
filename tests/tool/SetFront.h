#pragma once

#include <deque>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "FakeFront.h"
#include "Fronts.h"

namespace tooltest
{

/// A front object with a small registry whose changes are answered from tables.
class SetFront : public FakeFront
{
  public:
    explicit SetFront(const std::string& prefix = "BIOS") : FakeFront(prefix, prefix)
    {
        m_Options.OutputFormat = FormatOf(Tavrine::Tool::OutputForm::Typed);
        Value("Mode", R"("Uefi")");
        Value("Timeout", "10");
        Value("NumLock", "true");
        Value("Owner", R"("me")");
        Value("Slot", R"("A")");
        Single.insert({"Secret", {{8, "The setting BIOS.Secret cannot be shown.", ""}, {}}});
        Single.insert({"Seal", {{34, "The operation on setting Seal fails since it is hidden.", ""}, {}}});
    }

    void Value(const std::string& name, const std::string& json)
    {
        Single.insert_or_assign(name, std::pair<RedfishConfigResult, SettingStringMap>{
                                          {0, "", ""}, {{m_SecondPrefix, "{\"" + name + "\":" + json + "}"}}});
    }

    /// What the attribute registry is answered with.
    std::pair<RedfishConfigResult, std::string> Registry{{0, "", ""}, DefaultRegistry()};
    /// Answers of both ways of changing, by name; 0 without one.
    std::map<std::string, RedfishConfigResult> Changes;
    /// What one change leaves in the error list.
    std::map<std::string, std::vector<RedfishConfigResult>> ChangeErrors;
    struct Flush
    {
        RedfishConfigResult Result;
        std::vector<RedfishConfigResult> Errors;
    };
    /// Answers of the flushes, in order; 0 when there are no more.
    std::deque<Flush> Flushes;
    /// What was done, in order: "NAME=VALUE" with "+" behind it in batch mode and "!"
    /// without the check, and "flush".
    std::vector<std::string> Done;

    RedfishConfigResult QuerySettingValidValues(SettingStringMap& values, const std::string& setting) override
    {
        if (m_Options.OutputFormat != FormatOf(Tavrine::Tool::OutputForm::Registry) || !setting.empty())
        {
            return {11, "", ""};
        }
        if (Registry.first == 0)
        {
            values[m_SecondPrefix] = Registry.second;
        }
        return Registry.first;
    }
    RedfishConfigResult PatchSettingNewValue(const std::string& setting, const std::string& value,
                                             bool batchMode) override
    {
        return Change(setting, setting + "=" + value + (batchMode ? "+" : ""));
    }
    RedfishConfigResult PatchSettingNewValueWithOutCheck(const std::string& setting, const std::string& value,
                                                         bool batchMode) override
    {
        return Change(setting, setting + "=" + value + "!" + (batchMode ? "+" : ""));
    }
    RedfishConfigResult FlushChanges() override
    {
        Done.emplace_back("flush");
        m_ErrorList.clear();
        if (Flushes.empty())
        {
            return {0, "", ""};
        }
        const Flush flush = Flushes.front();
        Flushes.pop_front();
        m_ErrorList = flush.Errors;
        return flush.Result;
    }

    static std::string DefaultRegistry()
    {
        return R"({"RegistryEntries":{"Attributes":[
            {"AttributeName":"Mode","Type":"Enumeration","CurrentValue":"Uefi",
             "Value":[{"ValueName":"Uefi"},{"ValueName":"Legacy"}]},
            {"AttributeName":"Timeout","Type":"Integer","LowerBound":0,"UpperBound":255,"CurrentValue":10},
            {"AttributeName":"NumLock","Type":"Boolean","CurrentValue":true},
            {"AttributeName":"Owner","Type":"String","CurrentValue":"me"},
            {"AttributeName":"Slot","Type":"String","CurrentValue":"A"},
            {"AttributeName":"Quiet","Type":"String"},
            {"AttributeName":"Secret","Type":"Password","CurrentValue":null},
            {"AttributeName":"Seal","Type":"String","Oem":{"Zorvan":{"Protected":true}}}],
            "Dependencies":[{"Type":"Map","DependencyFor":"Slot","Dependency":{"MapFrom":[
                {"MapFromAttribute":"Mode","MapFromProperty":"CurrentValue","MapFromCondition":"EQU",
                 "MapFromValue":"Uefi"}],"MapToAttribute":"Slot","MapToProperty":"GrayOut","MapToValue":true}}]}})";
    }

  private:
    RedfishConfigResult Change(const std::string& setting, std::string done)
    {
        Done.push_back(std::move(done));
        m_ErrorList = ChangeErrors[setting];
        const auto answer = Changes.find(setting);
        return answer == Changes.end() ? RedfishConfigResult{0, "", ""} : answer->second;
    }
};

/// A front object for what the BMC shows after a change.
class ShownFront : public FakeFront
{
  public:
    RedfishConfigResult Result{0, "", ""};
    SettingCompareMap Compared;
    /// Asked, in order; "*" for all.
    std::vector<std::string> ComparedNames;

    RedfishConfigResult CompareSettingPendingValues(SettingCompareMap& values, const std::string& setting) override
    {
        ComparedNames.push_back(setting.empty() ? "*" : setting);
        values.insert(Compared.begin(), Compared.end());
        return Result;
    }
};

} // namespace tooltest
