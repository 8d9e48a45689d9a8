#pragma once

#include <deque>
#include <string>
#include <vector>

#include "AssistantWorld.h"
#include "BiosBasicSettingAssistant.h"

namespace assistants
{

struct Read
{
    RedfishConfigResult Result{0, "", ""};
    Tavrine::SettingValueMap Values;
};

/// Plays the reads that a test has scripted and keeps their order.
class ScriptedAssistant final : public Tavrine::BiosBasicSettingAssistant
{
  public:
    RedfishConfigResult FlushChanges() override { return {99, "no flush expected", ""}; }
    RedfishConfigResult QueryEffectiveValue(Tavrine::SettingValueMap& values) override
    {
        EXPECT_EQ(&values, &m_EffectiveValues);
        return Play("effective", Effective, values);
    }
    RedfishConfigResult QueryPendingValue(Tavrine::SettingValueMap& values) override
    {
        EXPECT_EQ(&values, &m_PendingValues);
        return Play("pending", Pending, values);
    }
    RedfishConfigResult QueryValueURLResponse() override { return {99, "no read expected", ""}; }

    std::deque<Read> Effective;
    std::deque<Read> Pending;
    std::vector<std::string> Reads;

  private:
    RedfishConfigResult Play(const std::string& kind, std::deque<Read>& script, Tavrine::SettingValueMap& values)
    {
        Reads.push_back(kind);
        if (script.empty())
        {
            return {99, "unscripted read: " + kind, ""};
        }
        const Read read = script.front();
        script.pop_front();
        if (read.Result.ErrorCode() == 0)
        {
            values = read.Values;
        }
        return read.Result;
    }
};

/// The value store alone, its reads scripted.
class BasicAssistantTest : public ContractTest
{
  protected:
    ScriptedAssistant m_Assistant;
};

} // namespace assistants
