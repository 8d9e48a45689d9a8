// Defaults of single settings, from a BMC that does not do what it says.

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <sstream>
#include <string>
#include <vector>

#include <boost/json/parse.hpp>

#include "ChildProcess.h"
#include "FaultyProxy.h"
#include "RunningBmc.h"
#include "SharedData.h"
#include "TemporaryFolder.h"

using namespace tooltest;

namespace
{

bool Says(const std::string& text, const std::string& words) { return text.find(words) != std::string::npos; }

/// A UEFI system with protected settings and with defaults as no value is written.
class UefiMachine
{
  public:
    UefiMachine()
    {
        m_Folder.Write("machine/bios.json", R"({"@odata.id":"/redfish/v1/Systems/1/Bios",
            "@odata.type":"#Bios.v1_2_0.Bios","Id":"Bios","Name":"BIOS","AttributeRegistry":"Plain.v1_0_0",
            "@Redfish.Settings":{"@odata.type":"#Settings.v1_3_3.Settings",
                "SettingsObject":{"@odata.id":"/redfish/v1/Systems/1/Bios/Settings"}},
            "Actions":{"#Bios.ResetBios":{"target":"/redfish/v1/Systems/1/Bios/Actions/Bios.ResetBios"}},
            "Attributes":{"Flag":true,"Fixed":1,"Size":1,"Word":""}})");
        m_Folder.Write("machine/registry.en.json", R"({"@odata.type":"#AttributeRegistry.v1_3_6.AttributeRegistry",
            "Id":"Plain.v1_0_0","Name":"Plain","Language":"en","OwningEntity":"Tests","RegistryVersion":"1.0.0",
            "RegistryEntries":{"Attributes":[
            {"AttributeName":"Flag","Type":"Boolean","DefaultValue":"False"},
            {"AttributeName":"Size","Type":"Integer","DefaultValue":5},
            {"AttributeName":"Fixed","Type":"Integer","DefaultValue":5,"ReadOnly":true},
            {"AttributeName":"Word","Type":"Password","DefaultValue":"changeit"},
            {"AttributeName":"Seal","Type":"Boolean","DefaultValue":"False","Oem":{"Zorvan":{"Protected":true}}}],
            "Menus":[],"Dependencies":[]}})");
        m_Folder.Write("machine/protected.json", R"({"Attributes":{"Seal":true}})");
    }

    /// What a simulator is started with to be this machine.
    std::vector<std::string> With(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.end(), {"--machine", (m_Folder.Path() / "machine").string(), "--access-log", Log()});
        return arguments;
    }

    /// How many of the requests so far were sent to the action that reads protected settings.
    int ProtectedReads() const { return Count("POST", "GetProtectedAttributes"); }
    int RegistryReads() const { return Count("GET", "/Registries/Plain.v1_0_0.en.json"); }

  private:
    std::string Log() const { return (m_Folder.Path() / "access").string(); }

    int Count(const std::string& method, const std::string& end) const
    {
        int count = 0;
        std::istringstream lines(testdata::ReadFile(Log()));
        for (std::string line; std::getline(lines, line) && !lines.eof();)
        {
            const boost::json::value record = boost::json::parse(line);
            const bool isMeant = record.at("method").as_string() == method.c_str() &&
                                 std::string(record.at("path").as_string().c_str()).ends_with(end);
            count += isMeant ? 1 : 0;
        }
        return count;
    }

    testdata::TemporaryFolder m_Folder;
};

Launch LoadUefi(const RunningBmc& bmc, const std::vector<std::string>& words)
{
    std::vector<std::string> arguments = {"--no-cache", "--system-type", "uefi", "loaddefault"};
    arguments.insert(arguments.end(), words.begin(), words.end());
    return bmc.Tool(arguments);
}

} // namespace

TEST(ProgramLoadDefault, WhatCannotBeReadBackIsNotCalledInPlace)
{
    const RunningBmc bmc({"--fault", "PATCH * #2 done status 200", "--fault", "GET */Bios/Settings #4 status 500"});
    ASSERT_EQ(RunToEnd(bmc.Tool({"set", "AltitudeMetres=500"})).Status, 0);
    ASSERT_EQ(RunToEnd(bmc.Tool({"reboot", "--wait", "60"})).Status, 0);
    const Finished loaded = RunToEnd(bmc.Tool({"loaddefault", "AltitudeMetres"}));
    EXPECT_EQ(loaded.Status, 32) << loaded.Errors;
    EXPECT_EQ(loaded.Output, "BIOS.AltitudeMetres: unknown: whether it has its default, or gets it with a reboot, is "
                             "not known; its pending value could not be read\n");
    EXPECT_EQ(RunToEnd(bmc.Tool({"pending"})).Output, "BIOS.AltitudeMetres=500 -> 0\n");
}

TEST(ProgramLoadDefault, AnotherValueThatWaitsIsNotTheDefault)
{
    const RunningBmc bmc({"--fault", "PATCH * #2+ status 200"});
    ASSERT_EQ(RunToEnd(bmc.Tool({"set", "AltitudeMetres=500"})).Status, 0);
    const Finished loaded = RunToEnd(bmc.Tool({"loaddefault", "AltitudeMetres", "--reboot", "--wait", "60"}));
    EXPECT_EQ(loaded.Status, 18) << loaded.Errors;
    EXPECT_EQ(loaded.Output, "BIOS.AltitudeMetres: unknown: no failure was reported, but the BMC does not show the "
                             "default among its pending values\n");
    EXPECT_TRUE(Says(loaded.Errors, "tavrine: not restarted, since what the BMC has received is not known\n"))
        << loaded.Errors;
    EXPECT_EQ(RunToEnd(bmc.Tool({"pending"})).Output, "BIOS.AltitudeMetres=408 -> 500\n");
}

TEST(ProgramLoadDefault, ADefaultIsVerifiedWhereTheBmcLacksTheActionsForProtectedSettings)
{
    const RunningBmc bmc({"--fault", "POST *GetProtectedAttributes status 404"});
    const Finished loaded =
        RunToEnd(bmc.Tool({"--system-type", "uefi", "loaddefault", "AltitudeMetres", "--reboot", "--wait", "60"}));
    EXPECT_EQ(loaded.Status, 0) << loaded.Errors;
    EXPECT_EQ(loaded.Output, "UEFI.AltitudeMetres: sent, takes effect after a reboot\n"
                             "1 of 1 new values are in force\n");
}

TEST(ProgramLoadDefault, AllDefaultsAreVerifiedWhateverFormNumbersAreShownIn)
{
    std::vector<std::string> told;
    for (const std::vector<std::string>& form : {std::vector<std::string>(), {"--hex"}})
    {
        const RunningBmc bmc;
        ASSERT_EQ(RunToEnd(bmc.Tool({"set", "AltitudeMetres=700", "--reboot", "--wait", "60"})).Status, 0);
        std::vector<std::string> words = {"loaddefault", "BIOS", "--yes", "--reboot", "--wait", "60"};
        words.insert(words.end(), form.begin(), form.end());
        const Finished loaded = RunToEnd(bmc.Tool(words));
        EXPECT_EQ(loaded.Status, 0) << loaded.Errors;
        told.push_back(loaded.Output);
    }
    EXPECT_EQ(told[0], told[1]);
    EXPECT_TRUE(Says(told[1], " new values are in force\n")) << told[1];
}

/// Some show an empty text for every password.
TEST(ProgramLoadDefault, WhatABmcShowsForAPasswordIsNotVerified)
{
    const UefiMachine machine;
    const RunningBmc bmc(machine.With({}));
    const Finished loaded = RunToEnd(LoadUefi(bmc, {"UEFI", "--yes", "--reboot", "--wait", "60"}));
    EXPECT_EQ(loaded.Status, 0) << loaded.Errors;
    EXPECT_TRUE(Says(loaded.Output, "2 of 2 new values are in force\n")) << loaded.Output;
}

/// The registry tells what kinds ordinary settings are, also of a BMC whose OEM actions fail.
TEST(ProgramLoadDefault, AnOrdinaryDefaultNeedsNoProtectedValues)
{
    for (const std::string fault : {"", "status 500", "status 404", "stall"})
    {
        const UefiMachine machine;
        const RunningBmc bmc(
            machine.With(fault.empty() ? std::vector<std::string>()
                                       : std::vector<std::string>{"--fault", "POST *GetProtectedAttributes " + fault}));
        const Finished loaded = RunToEnd(LoadUefi(bmc, {"Flag", "Size", "--reboot", "--wait", "60"}));
        EXPECT_EQ(loaded.Status, 0) << fault << ": " << loaded.Errors;
        EXPECT_EQ(loaded.Output, "UEFI.Flag: sent, takes effect after a reboot\n"
                                 "UEFI.Size: sent, takes effect after a reboot\n"
                                 "2 of 2 new values are in force\n")
            << fault;
        EXPECT_FALSE(Says(loaded.Errors, "not verified")) << fault << ": " << loaded.Errors;
        EXPECT_EQ(machine.ProtectedReads(), 0) << fault;
    }
}

TEST(ProgramLoadDefault, WhatWasNeverSentTakesNoProtectedValues)
{
    const UefiMachine machine;
    const RunningBmc bmc(machine.With({}));
    EXPECT_EQ(RunToEnd(LoadUefi(bmc, {"NoSuch"})).Status, 20);
    EXPECT_EQ(machine.RegistryReads(), 1);
    EXPECT_NE(RunToEnd(LoadUefi(bmc, {"Fixed"})).Status, 0);
    EXPECT_EQ(machine.RegistryReads(), 2);
    EXPECT_EQ(machine.ProtectedReads(), 0);
}

TEST(ProgramLoadDefault, AProtectedSettingIsJudgedByItsKind)
{
    const UefiMachine machine;
    const RunningBmc bmc(machine.With({}));
    const Finished loaded = RunToEnd(LoadUefi(bmc, {"Seal", "--protected", "--reboot", "--wait", "60"}));
    EXPECT_EQ(loaded.Status, 0) << loaded.Errors;
    EXPECT_EQ(loaded.Output, "UEFI.Seal: sent, takes effect after a reboot\n1 of 1 new values are in force\n");
}

TEST(ProgramLoadDefault, AnInterruptedRunTellsOfEachSetting)
{
    const RunningBmc bmc({"--http"});
    ASSERT_EQ(RunToEnd(bmc.Tool({"set", "AltitudeMetres=500", "BootFailLimit=3", "AssetOwner=me"})).Status, 0);
    const auto run = [&](std::vector<std::string> words)
    {
        std::atomic<const ChildProcess*> running = nullptr;
        const FaultyProxy proxy(bmc.Port(),
                                [&](int, const std::string& line)
                                {
                                    if (!line.starts_with("PATCH"))
                                    {
                                        return Fault::None;
                                    }
                                    running.wait(nullptr);
                                    running.load()->Signal(SIGINT);
                                    return Fault::DeadBefore;
                                });
        words.insert(words.end(), {"loaddefault", "AltitudeMetres", "BootFailLimit", "AssetOwner"});
        Launch launch = bmc.Tool(words);
        launch.Arguments[1] = proxy.Url();
        ChildProcess tool(launch);
        running = &tool;
        running.notify_all();
        return tool.Wait();
    };
    const std::string doubt = "whether the change was done is not known; its pending value could not be read";
    const Finished text = run({});
    EXPECT_EQ(text.Status, 128 + SIGINT);
    EXPECT_TRUE(
        Says(text.Errors, "tavrine: 24 Stopped by a signal: Interrupt; whether the change was done is not known"))
        << text.Errors;
    EXPECT_EQ(text.Output, "BIOS.AltitudeMetres: unknown: " + doubt +
                               "\nBIOS.BootFailLimit: not sent: a request before it failed\n"
                               "BIOS.AssetOwner: not sent: a request before it failed\n");
    const Finished data = run({"--json"});
    EXPECT_TRUE(
        Says(data.Output, R"("settings":{"BIOS.AltitudeMetres":{"outcome":"unknown","reason":")" + doubt +
                              R"("},"BIOS.BootFailLimit":{"outcome":"not sent","reason":"a request before it failed"},)"
                              R"("BIOS.AssetOwner":{"outcome":"not sent","reason":"a request before it failed"}})"))
        << data.Output;
}
