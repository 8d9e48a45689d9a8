#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "FakeFront.h"
#include "Fronts.h"
#include "Log.h"
#include "Options.h"
#include "Verify.h"

namespace tooltest
{

/// A machine whose state is a function of the time since its reset; the clock runs by
/// pauses alone.
struct FakeMachine
{
    std::chrono::milliseconds Clock{0};
    std::chrono::milliseconds LongestPause{0};
    std::chrono::milliseconds ResetAt{-1};
    std::string ResetBody;
    std::vector<std::string> Told;
    /// The types of resets; empty: there is no such action.
    std::string Offered = R"(["On","ForceOff","GracefulRestart"])";
    std::string SystemBefore = Plain("On");
    /// What the system answers so long after its reset; empty: no answer.
    std::function<std::string(std::chrono::milliseconds)> System = [](std::chrono::milliseconds)
    { return Plain("On"); };
    std::function<std::string(std::chrono::milliseconds)> Values = [](std::chrono::milliseconds)
    { return R"({"A":"new"})"; };
    /// What a read of them comes to, with a line in the log that tells the cause of a failure.
    RedfishConfigResult ValuesResult{0, "", ""};
    /// What waits before the reset, and what a read of it comes to.
    SettingCompareMap Pending;
    RedfishConfigResult PendingResult{2, "", ""};
    /// The BIOS resource cannot be read before the reset.
    bool IsBiosUnread = false;
    /// So long after the reset the BIOS resource cannot be read.
    std::chrono::milliseconds BiosLost{0};
    /// What the request for a reset comes to; done all the same.
    RedfishConfigResult ResetResult{0, "", ""};
    std::string Before = "";
    std::string After = R"("Time":"2026-01-01T00:00:00Z",)";
    std::string Messages = "[]";

    static std::string Plain(const std::string& power, const std::string& more = "")
    {
        return R"("PowerState":")" + power + "\"" + more;
    }

    std::chrono::milliseconds Since() const { return Clock - ResetAt; }
    bool Reset() const { return ResetAt >= std::chrono::milliseconds(0); }

    RedfishConfigResult Get(const std::string& url, std::string& response)
    {
        if (url == "/redfish/v1/Systems")
        {
            response = R"({"Members":[{"@odata.id":"/redfish/v1/Systems/7"}]})";
        }
        else if (url == "/redfish/v1/Systems/7")
        {
            const std::string state = Reset() ? System(Since()) : SystemBefore;
            if (state.empty())
            {
                return {24, "nobody there", ""};
            }
            const std::string actions =
                R"(,"Actions":{"#ComputerSystem.Reset":{"target":"/reset","ResetType@Redfish.AllowableValues":)" +
                Offered + "}}";
            response = "{" + state + (Offered.empty() ? "" : actions) + "}";
        }
        else if (url == "/redfish/v1/Systems/7/Bios" && (Reset() ? Since() >= BiosLost : !IsBiosUnread))
        {
            response = R"({"AttributeRegistry":"R","@Redfish.Settings":{)" + (Reset() ? After : Before) +
                       R"("Messages":)" + Messages + "}}";
        }
        else
        {
            return {26, "not found", ""};
        }
        return {0, "", ""};
    }
};

class ValuesFront : public FakeFront
{
  public:
    ValuesFront(const FakeMachine& machine, Tavrine::Tool::OutputForm form) : m_Machine(machine), m_Form(form)
    {
        Group = {machine.ValuesResult, {{"BIOS", machine.Values(machine.Since())}}};
    }

    RedfishConfigResult QueryGroupSettingValues(SettingStringMap& values) override
    {
        EXPECT_EQ(m_Form, Tavrine::Tool::OutputForm::Typed);
        if (Group.first != 0)
        {
            Tavrine::Log(1, __FILE__, __LINE__).Stream() << "failed though: no way to it";
        }
        return FakeFront::QueryGroupSettingValues(values);
    }

    RedfishConfigResult CompareSettingPendingValues(SettingCompareMap& values, const std::string& setting) override
    {
        EXPECT_TRUE(setting.empty() && m_Form == Tavrine::Tool::OutputForm::Text && !m_Machine.Reset());
        values = m_Machine.Pending;
        return m_Machine.PendingResult;
    }

  private:
    const FakeMachine& m_Machine;
    Tavrine::Tool::OutputForm m_Form;
};

inline Tavrine::Tool::RebootMeans MeansOf(FakeMachine& machine)
{
    return {{[&](const std::string& url, std::string& response) { return machine.Get(url, response); },
             [&](const std::string& url, const std::string& body, std::string&)
             {
                 EXPECT_EQ(url, "/reset");
                 machine.ResetBody = body;
                 machine.ResetAt = machine.Clock;
                 return machine.ResetResult;
             }},
            [&](Tavrine::Tool::OutputForm form) { return std::make_unique<ValuesFront>(machine, form); },
            [&] { return machine.Clock; },
            [&](std::chrono::milliseconds time)
            {
                machine.Clock += time;
                machine.LongestPause = std::max(machine.LongestPause, time);
                return true;
            },
            [&](const std::string& line) { machine.Told.push_back(line); }};
}

inline Tavrine::Tool::Answer Verified(FakeMachine& machine, std::uint32_t wait = 600)
{
    Tavrine::Tool::Options options;
    options.Reboot = true;
    if (wait > 0)
    {
        options.Wait = wait;
    }
    Tavrine::Tool::Answer answer;
    Tavrine::Tool::RebootAndVerify(MeansOf(machine), options, {{"A", "new"}}, answer);
    return answer;
}

inline std::string AwayUntil(std::chrono::milliseconds since, std::chrono::milliseconds down,
                             std::chrono::milliseconds up)
{
    return since < down ? FakeMachine::Plain("On")
           : since < up ? ""
                        : FakeMachine::Plain("On", R"(,"BootProgress":{"LastState":"OSRunning"})");
}

} // namespace tooltest
