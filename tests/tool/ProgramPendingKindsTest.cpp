// Pending values have the kinds of the values in force, or are not shown by kind at all.
#include <gtest/gtest.h>

#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>

#include "InsideRun.h"
#include "TemporaryFolder.h"

using namespace tooltest;

namespace json = boost::json;

namespace
{

using Words = std::vector<std::string>;

class PendingKinds : public testing::Test
{
  protected:
    const InsideBmc m_Bmc;
    const InsideRun m_Tool{m_Bmc.Url()};

    /// @param first  from which on the Bios resource cannot be read.
    Finished RunWithFaults(int first, const Words& words) const
    {
        std::string error;
        const std::string rule = "GET */Bios #" + std::to_string(first) + "+ status 500";
        EXPECT_TRUE(m_Bmc.Simulator().SetFaultRules({rule}, error)) << error;
        return m_Tool(words);
    }
};

} // namespace

TEST_F(PendingKinds, AProtectedSettingHasItsOwn)
{
    const Words uefi = {"--system-type", "uefi", "--protected"};
    const auto run = [&](Words words)
    {
        words.insert(words.begin(), uefi.begin(), uefi.end());
        return m_Tool(words);
    };
    ASSERT_EQ(run({"set", "TpmClear=true", "MemoryEncryption=MultiKey", "MemoryEncryptionKeys=16"}).Status, 0);
    const json::object expected = {{"UEFI.TpmClear", {{"current", false}, {"pending", true}}},
                                   {"UEFI.MemoryEncryptionKeys", {{"current", 64}, {"pending", 16}}}};
    for (const Words& command : {Words{"pending"}, Words{"compare", "pending"}})
    {
        Words words = command;
        words.insert(words.end(), {"TpmClear", "MemoryEncryptionKeys"});
        words.emplace_back("--json");
        EXPECT_EQ(json::parse(run(words).Output).at("settings"), json::value(expected)) << command[0];
        words.back() = "--hex";
        const std::string hex = run(words).Output;
        EXPECT_NE(hex.find("0x40"), std::string::npos) << hex;
        EXPECT_NE(hex.find("0x10"), std::string::npos) << hex;
    }
}

TEST_F(PendingKinds, WhatCannotBeReadIsAFailureWhereItMatters)
{
    ASSERT_EQ(m_Tool({"set", "BootFailLimit=18"}).Status, 0);
    struct Row
    {
        int FirstFault;
        Words Command;
        bool Fails;
        std::string Output;
    };
    const Row rows[] = {
        {2, {"pending"}, false, "BIOS.BootFailLimit=5 -> 18\n"},
        {2, {"pending", "--hex"}, true, ""},
        {3, {"pending", "BootFailLimit", "--hex"}, true, ""},
        {2, {"compare", "pending"}, false, "BIOS.BootFailLimit\t5\t18\n"},
        {2, {"compare", "pending", "Boot*"}, false, "BIOS.BootFailLimit\t5\t18\n"},
        {2, {"compare", "pending", "--hex"}, true, ""},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.Command[0] + " " + row.Command.back());
        const Finished finished = RunWithFaults(row.FirstFault, row.Command);
        EXPECT_EQ(finished.Status != 0, row.Fails) << finished.Errors;
        EXPECT_EQ(finished.Output, row.Output);
        EXPECT_EQ(finished.Errors.find("The kinds of the values could not be read: ") != std::string::npos, row.Fails)
            << finished.Errors;
    }
    const Finished data = RunWithFaults(2, {"pending", "--json"});
    const json::value document = json::parse(data.Output);
    EXPECT_NE(data.Status, 0);
    EXPECT_EQ(document.at("code"), data.Status);
    EXPECT_TRUE(document.at("settings").as_object().empty());
    EXPECT_EQ(document.at("errors").as_array().size(), 1U);
}

TEST(PendingPassword, WhatIsShownForItDoesNotTellThatNothingWaits)
{
    const testdata::TemporaryFolder folder;
    folder.Write("machine/bios.json", R"({"@odata.id":"/redfish/v1/Systems/1/Bios","@odata.type":"#Bios.v1_1_0.Bios",
        "Id":"Bios","Name":"BIOS","AttributeRegistry":"Small.v1_0_0","Attributes":{"Word":"","Mode":"a"},
        "@Redfish.Settings":{"SettingsObject":{"@odata.id":"/redfish/v1/Systems/1/Bios/Settings"}}})");
    folder.Write("machine/registry.en.json", R"({"@odata.type":"#AttributeRegistry.v1_3_6.AttributeRegistry",
        "Id":"Small.v1_0_0","Name":"Small","Language":"en","OwningEntity":"Tests","RegistryVersion":"1.0.0",
        "RegistryEntries":{"Attributes":[{"AttributeName":"Word","Type":"Password"},
                                         {"AttributeName":"Mode","Type":"String"}],"Menus":[],"Dependencies":[]}})");
    const InsideBmc bmc((folder.Path() / "machine").string());
    const InsideRun tool(bmc.Url());
    for (const Words& names : {Words{"Word"}, Words{"Mode", "Word"}})
    {
        Words words = {"pending"};
        words.insert(words.end(), names.begin(), names.end());
        const Finished pending = tool(words);
        EXPECT_EQ(pending.Status, 0) << pending.Errors;
        EXPECT_EQ(pending.Output, "Nothing is pending that the BMC shows.\n");
        EXPECT_NE(pending.Errors.find("tavrine: BIOS.Word: whether a change waits is not known, since it is a "
                                      "password\n"),
                  std::string::npos)
            << pending.Errors;
    }
    EXPECT_EQ(tool({"pending", "Mode"}).Output, "Nothing is pending.\n");
}
