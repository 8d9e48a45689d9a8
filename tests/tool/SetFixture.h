#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <boost/json/serialize.hpp>
#include <gtest/gtest.h>

#include "ConfigFile.h"
#include "Options.h"
#include "SetCommand.h"
#include "SetFront.h"
#include "TextManager.h"

namespace tooltest
{

using Words = std::vector<std::string>;
using Result = RedfishConfigResult;

inline const Result Good{0, "", ""};

/// The last failure that an answer tells.
inline std::string LastWords(const Tavrine::Tool::Answer& answer)
{
    return answer.Errors.empty() ? "" : answer.Errors.back().Message;
}

inline const char* const CutOff =
    "h:443: the connection ended before an answer had come; whether the change was done is not known.";

/// The `set` command over a scripted front object.
class SetFixture : public ::testing::Test
{
  public:
    /// What the BMC shows after the change; by default everything that was asked for.
    std::function<void(ShownFront&)> Shows = [](ShownFront& shown)
    {
        shown.Group = {Good,
                       {{"BIOS.Mode", "Uefi"},
                        {"BIOS.Timeout", "10"},
                        {"BIOS.NumLock", "true"},
                        {"BIOS.Owner", "me"},
                        {"BIOS.Slot", "A"}}};
        shown.Compared = {{"BIOS.Mode", {"Uefi", "Legacy"}},
                          {"BIOS.Timeout", {"10", "20"}},
                          {"BIOS.NumLock", {"true", "false"}},
                          {"BIOS.Owner", {"me", "you"}},
                          {"BIOS.Slot", {"A", "B"}}};
    };
    int ReadBacks = 0;
    Tavrine::Tool::WaitingChanges Waiting;
    Tavrine::Tool::Options Given;
    SetFront Front;

    Tavrine::Tool::Answer Set(const Words& words)
    {
        Given.Names = words;
        EXPECT_EQ(Tavrine::Tool::PairsFault(Given), "");
        std::vector<Tavrine::Tool::SettingPair> pairs;
        EXPECT_FALSE(Tavrine::Tool::ReadPairs(Given, -1, pairs));
        Front.m_Options.HexValueMode = Given.Hex;
        Front.m_Options.LegacyNameMode = Given.LegacyNames;
        return Tavrine::Tool::ChangeSettings(
            Front, ReadTextManager, Given, pairs,
            [this]
            {
                ++ReadBacks;
                auto shown = std::make_unique<ShownFront>();
                Shows(*shown);
                return shown;
            },
            Waiting);
    }

    std::string SetData(const Words& words)
    {
        Given.Json = true;
        return boost::json::serialize(Set(words).Data);
    }

  private:
    Configured m_NothingConfigured{""};
};

} // namespace tooltest
