#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "BiosBasicSettingProc.h"
#include "ConfigOptions.h"
#include "ConnectionInfo.h"
#include "Contract.h"
#include "ValueTypes.h"

/// What the tests of the value assistants share: typed values, the requests that they
/// expect and a BMC with one system.
namespace assistants
{

inline Tavrine::OptionalVar Text(const std::string& text) { return Tavrine::SettingVariant(text); }
inline Tavrine::OptionalVar Number(std::int64_t number) { return Tavrine::SettingVariant(number); }
inline Tavrine::OptionalVar Switch(bool on) { return Tavrine::SettingVariant(on); }
inline Tavrine::OptionalVar NoValue() { return {}; }

inline doubles::RestCall Get(const std::string& url)
{
    return {.Verb = "GET", .Url = url, .Body = "", .Flag = false, .Timeout = 0, .Headers = {}};
}

/// A result as a neighbour may give it for a success, to see whether it is handed on whole.
inline RedfishConfigResult RemarkedSuccess() { return {0, "remark", "Remarked"}; }

inline doubles::Answer Remarked(const std::string& body)
{
    return {.Result = RemarkedSuccess(), .Body = body, .Errors = {}};
}

/// A collection resource (DSP0266) with these members, each given as JSON text.
inline std::string Collection(std::initializer_list<std::string> members)
{
    std::string list;
    for (const std::string& member : members)
    {
        list += (list.empty() ? "" : ",") + member;
    }
    return "{\"Members\":[" + list + "]}";
}

inline std::string Member(const std::string& url) { return "{\"@odata.id\":\"" + url + "\"}"; }

inline const std::string SystemsURL = "/redfish/v1/Systems";
inline const std::string BiosURL = "/redfish/v1/Systems/blade-7/Bios";
inline const std::string SettingsURL = "/redfish/v1/Systems/blade-7/Bios/Settings";

/// Each differs from what it is by default.
inline constexpr Tavrine::Config_Options EveryOption = {.HexValueMode = true,
                                                        .allowProtectedSettings = true,
                                                        .ReservedOption = true,
                                                        .LegacyNameMode = true,
                                                        .OutputFormat = 1};

/// A BMC whose one system has a Bios resource and a settings object.
class AssistantTest : public ContractTest
{
  protected:
    /// What holds for a proc that was made with them and has done nothing yet.
    void ExpectNew(const Tavrine::BiosBasicSettingProc& proc)
    {
        EXPECT_EQ(proc.m_Assistant.use_count(), 1);
        EXPECT_THAT(world.Clients, testing::ElementsAre(testing::Pair("bmc1", 6)));
        EXPECT_TRUE(proc.m_Options.HexValueMode);
        EXPECT_TRUE(proc.m_Options.allowProtectedSettings);
        EXPECT_TRUE(proc.m_Options.ReservedOption);
        EXPECT_TRUE(proc.m_Options.LegacyNameMode);
        EXPECT_EQ(proc.m_Options.OutputFormat, 1);
        EXPECT_THAT(proc.m_Prefix, testing::IsEmpty());
        EXPECT_THAT(proc.m_SecondPrefix, testing::IsEmpty());
        EXPECT_THAT(proc.m_DebugConfigFile, testing::IsEmpty());
        EXPECT_THAT(proc.m_ErrorList, testing::IsEmpty());
        EXPECT_EQ(static_cast<int>(proc.m_SystemType), 0);
        EXPECT_THAT(world.Logs, testing::IsEmpty());
        EXPECT_THAT(world.Calls, testing::IsEmpty());
    }

    void TellSystems() { world.Tell("GET", SystemsURL, Collection({Member("/redfish/v1/Systems/blade-7")})); }

    void TellStandard(const std::string& effective, const std::string& pending)
    {
        TellSystems();
        world.Tell("GET", BiosURL, doubles::BiosResource(effective, SettingsURL, "tag-1"));
        world.Tell("GET", SettingsURL, "{\"Attributes\":" + pending + "}");
    }

    TavrineConnection::ConnectionInfo m_Connection{.Host = "bmc1", .User = "", .Password = ""};
};

} // namespace assistants
