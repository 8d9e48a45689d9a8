#pragma once

#include <memory>
#include <string>
#include <vector>

#include "BiosBasicSettingAssistant.h"
#include "BiosBasicSettingProc.h"
#include "Contract.h"

namespace procs
{

/// A value store that answers as told and keeps what it was asked, in order.
class RecordingStore final : public Tavrine::BiosBasicSettingAssistant
{
  public:
    RedfishConfigResult FlushChanges() override
    {
        Steps.emplace_back("flush");
        Flushed = m_ChangedValues;
        return FlushResult;
    }
    RedfishConfigResult GetComparePendingValueMap(Tavrine::SettingCompareMap& compare,
                                                  const std::string& settingName) override
    {
        Steps.push_back("compare " + settingName);
        EXPECT_TRUE(compare.empty());
        compare = Compared;
        return CompareResult;
    }
    RedfishConfigResult UpdateSettingValueCache(const std::string& settingName, const std::string& value) override
    {
        Steps.push_back("cache " + settingName + "=" + value + ", staged " + m_ChangedValues[settingName]);
        return CacheResult;
    }
    void SetValueResponse(const std::string& response) override { Steps.push_back("response " + response); }
    RedfishConfigResult QueryEffectiveValue(Tavrine::SettingValueMap& values) override
    {
        Steps.emplace_back("effective");
        values = Effective;
        return EffectiveResult;
    }
    RedfishConfigResult QueryPendingValue(Tavrine::SettingValueMap& values) override
    {
        Steps.emplace_back("pending");
        values = Pending;
        return {0, "", ""};
    }
    RedfishConfigResult QueryValueURLResponse() override { return {99, "no read expected", ""}; }

    Tavrine::SettingValueMap Effective;
    Tavrine::SettingValueMap Pending;
    Tavrine::SettingCompareMap Compared;
    RedfishConfigResult EffectiveResult{0, "", ""};
    RedfishConfigResult FlushResult{0, "", ""};
    RedfishConfigResult CompareResult{0, "", ""};
    RedfishConfigResult CacheResult{0, "", ""};
    std::vector<std::string> Steps;
    /// What was staged at the last flush.
    Tavrine::SettingStringMap Flushed;
};

/// A proc with the prefixes "One" and "Two" over a recording store.
class ProcTest : public ContractTest
{
  protected:
    ProcTest()
    {
        m_Proc.m_Prefix = "One";
        m_Proc.m_SecondPrefix = "Two";
        m_Proc.m_Assistant = m_Store;
        m_Store->Effective = {
            {"BootMode", "Uefi"}, {"Cores", std::int64_t{10}}, {"Wake", true}, {"Nothing", std::nullopt}, {"Pin", "16"},
        };
    }

    std::shared_ptr<RecordingStore> m_Store = std::make_shared<RecordingStore>();
    Tavrine::BiosBasicSettingProc m_Proc;
};

inline const doubles::LogLine NoAssistant{1, "Construct assistant error."};

} // namespace procs
