#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <csignal>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include "ChildProcess.h"
#include "FaultyProxy.h"
#include "RunningBmc.h"
#include "SharedData.h"
#include "TestMachine.h"

using namespace tooltest;

namespace json = boost::json;

namespace
{

using Words = std::vector<std::string>;

/// The tool against a service of plain HTTP.
Finished RunOn(const std::string& url, const Words& arguments, const std::string& input = {})
{
    Launch launch;
    launch.Arguments = {"--bmc", url, "--user", "admin"};
    launch.Arguments.insert(launch.Arguments.end(), arguments.begin(), arguments.end());
    launch.Variables = {{"TAVRINE_PASSWORD", "password"}};
    launch.Input = input;
    return RunToEnd(launch);
}

json::value Document(const Finished& finished)
{
    json::error_code failure;
    json::value document = json::parse(finished.Output, failure);
    EXPECT_FALSE(failure) << finished.Output << finished.Errors;
    return document;
}

bool Says(const Finished& finished, const std::string& words)
{
    return finished.Output.find(words) != std::string::npos || finished.Errors.find(words) != std::string::npos;
}

bool IsPending(const std::string& url, const std::string& line)
{
    const Finished pending = RunOn(url, {"pending"});
    EXPECT_EQ(pending.Status, 0) << pending.Errors;
    return pending.Output.find(line) != std::string::npos;
}

bool IsChange(const std::string& request)
{
    return request.starts_with("PATCH ") ||
           (request.starts_with("POST ") && request.find("SetProtectedAttributes") != std::string::npos);
}

} // namespace

TEST(ProgramSet, AChangeWaitsAndIsNotMadeTwice)
{
    const RunningBmc bmc;
    const Finished nothing = RunToEnd(bmc.Tool({"pending"}));
    EXPECT_EQ(nothing.Status, 0) << nothing.Errors;
    EXPECT_EQ(nothing.Output, NothingPending);

    Finished set = RunToEnd(bmc.Tool({"set", "BIOS.BootPromptSeconds=9", "BIOS.BootMode=Uefi"}));
    EXPECT_EQ(set.Status, 0) << set.Errors;
    EXPECT_EQ(set.Output, "BIOS.BootPromptSeconds: changed, takes effect after a reboot\n"
                          "BIOS.BootMode: already Uefi, in force\n");
    EXPECT_EQ(RunToEnd(bmc.Tool({"pending"})).Output, "BIOS.BootPromptSeconds=5 -> 9\n");
    EXPECT_EQ(RunToEnd(bmc.Tool({"pending", "BootMode"})).Output, "Nothing is pending.\n");
    EXPECT_EQ(json::serialize(Document(RunToEnd(bmc.Tool({"pending", "--json"}))).at("settings")),
              R"({"BIOS.BootPromptSeconds":{"current":5,"pending":9}})");
    EXPECT_EQ(RunToEnd(bmc.Tool({"set", "BootPromptSeconds=9"})).Output,
              "BIOS.BootPromptSeconds: already 9, takes effect after a reboot\n");

    set = RunToEnd(bmc.Tool({"set", "BootPromptSeconds=5"}));
    EXPECT_EQ(set.Output, "BIOS.BootPromptSeconds: changed, the BMC shows it in force\n") << set.Errors;
    EXPECT_EQ(RunToEnd(bmc.Tool({"pending"})).Output, NothingPending);
}

TEST(ProgramSet, ProtectedSettingsAreChangedWhereAllowed)
{
    const RunningBmc bmc;
    const Finished hidden = RunToEnd(bmc.Tool({"--system-type", "uefi", "set", "TpmHash=Sha256"}));
    EXPECT_EQ(hidden.Status, 34);
    const Finished set = RunToEnd(
        bmc.Tool({"--system-type", "uefi", "--protected", "set", "PreBootDmaProtection=false", "ContactTeam=a"}));
    EXPECT_EQ(set.Status, 0) << set.Errors;
    EXPECT_EQ(set.Output, "UEFI.PreBootDmaProtection: changed, takes effect after a reboot\n"
                          "UEFI.ContactTeam: changed, takes effect after a reboot\n");
    EXPECT_EQ(RunToEnd(bmc.Tool({"--system-type", "uefi", "--protected", "pending", "PreBootDmaProtection"})).Output,
              "UEFI.PreBootDmaProtection=true -> false\n");
}

TEST(ProgramSet, ASettingThatAnotherSetsFreeFollowsInARequestOfItsOwn)
{
    const RunningBmc bmc({"--http"});
    const FaultyProxy proxy(bmc.Port(), [](int, const std::string&) { return Fault::None; });
    EXPECT_EQ(RunOn(proxy.Url(), {"set", "OsWatchdogMinutes=20"}).Status, 18);
    const Finished set = RunOn(proxy.Url(), {"set", "OsWatchdogMinutes=20", "OsWatchdog=Enabled"});
    EXPECT_EQ(set.Status, 0) << set.Errors;
    EXPECT_EQ(set.Output, "BIOS.OsWatchdogMinutes: changed, takes effect after a reboot\n"
                          "BIOS.OsWatchdog: changed, takes effect after a reboot\n");
    const Words requests = proxy.Requests();
    EXPECT_EQ(std::count_if(requests.begin(), requests.end(), IsChange), 2);
}

TEST(ProgramSet, ABatchThatTheBmcRefusesShowsEveryReasonAndChangesNothing)
{
    const RunningBmc bmc({"--http"});
    const Finished set =
        RunOn(bmc.Url(), {"set", "--no-check", "BootPromptSeconds=9999", "BootMode=Sideways", "ContactTeam=x"});
    EXPECT_EQ(set.Status, 10);
    EXPECT_EQ(set.Output, "");
    EXPECT_TRUE(Says(set, "tavrine: 10 ")) << set.Errors;
    EXPECT_TRUE(Says(set, "BIOS.BootPromptSeconds")) << set.Errors;
    EXPECT_TRUE(Says(set, "BIOS.BootMode")) << set.Errors;
    EXPECT_TRUE(Says(set, "BIOS.ContactTeam: not changed, refused together with the others")) << set.Errors;
    EXPECT_EQ(RunToEnd(bmc.Tool({"pending"})).Output, NothingPending);
}

TEST(ProgramSet, ADryRunSendsNoChange)
{
    const RunningBmc bmc({"--http"});
    const FaultyProxy proxy(bmc.Port(), [](int, const std::string&) { return Fault::None; });
    const Finished run =
        RunOn(proxy.Url(), {"--system-type", "uefi", "--protected", "set", "--dry-run", "BootPromptSeconds=9",
                            "AdminPassword=hunter2hunter2", "TpmHash=Sha256", "AssetTag=x", "AltitudeMetres=x"});
    EXPECT_EQ(run.Status, 10);
    EXPECT_EQ(run.Output, "{\"Attributes\":{\"TpmHash\":\"Sha256\"}}\n"
                          "{\"Attributes\":{\"AdminPassword\":\"********\",\"AssetTag\":\"x\","
                          "\"BootPromptSeconds\":9}}\n")
        << run.Errors;
    const Words requests = proxy.Requests();
    EXPECT_FALSE(requests.empty());
    EXPECT_EQ(std::count_if(requests.begin(), requests.end(), IsChange), 0);
    const json::value document = Document(
        RunOn(proxy.Url(), {"set", "--dry-run", "--json", "BootPromptSeconds=9", "AdminPassword=hunter2hunter2"}));
    EXPECT_EQ(json::serialize(document.at("bodies")),
              R"([{"Attributes":{"AdminPassword":"********","BootPromptSeconds":9}}])");
    EXPECT_EQ(document.at("settings").at("BIOS.AdminPassword"), json::object({{"outcome", "would change"}}));
}

TEST(ProgramSet, ValuesFromStandardInputArriveUnchanged)
{
    const RunningBmc bmc;
    for (const std::string text : {"a=b", "x\"y\\z", " lead and trail ", "Zürich", "{\"a\":1}", "-", "%s%n"})
    {
        for (const Words& words : {Words{"set", "ContactTeam=-"}, Words{"set", "--no-check", "ContactTeam=-"}})
        {
            Launch launch = bmc.Tool(words);
            launch.Input = text + "\n";
            const Finished set = RunToEnd(launch);
            EXPECT_EQ(set.Status, 0) << text << set.Errors;
        }
        const json::value document = Document(RunToEnd(bmc.Tool({"pending", "ContactTeam", "--json"})));
        EXPECT_EQ(document.at("settings").at("BIOS.ContactTeam").at("pending"), json::value(text));
    }
}

TEST(ProgramSet, WrongPairsAreRefusedBeforeAnythingIsAsked)
{
    for (const Words& words : {Words{"set"},
                               {"set", "ContactTeam"},
                               {"set", "=x"},
                               {"set", "A=-", "B=-"},
                               {"set", "A=1", "BIOS.A=2"},
                               {"set", "A=-", "--password-file", "-"}})
    {
        const Finished refused = RunOn("http://127.0.0.1:1", words, "x");
        EXPECT_EQ(refused.Status, 64) << refused.Errors;
        EXPECT_EQ(refused.Output, "");
    }
}

TEST(ProgramSet, NoValueIsInTheLogBelowLevelFour)
{
    const RunningBmc bmc;
    const testdata::TemporaryFolder folder;
    for (const Words& words :
         {Words{"set", "ContactTeam=Zebra9", "BootPromptSeconds=9"}, Words{"set", "--no-check", "ContactTeam=Zebra9"},
          Words{"set", "--no-check", "BootPromptSeconds=Zebra9"}, Words{"set", "BootMode=Zebra9"},
          Words{"set", "AdminPassword=-"}, Words{"set", "--no-check", "BootMode=Zebra9", "AdminPassword=-"},
          Words{"set", "--dry-run", "ContactTeam=Zebra9"}})
    {
        const std::string log = (folder.Path() / "log").string();
        Launch launch = bmc.Tool(words);
        launch.Input = "Zebra9Zebra9";
        launch.Arguments.insert(launch.Arguments.end(), {"--log-file", log, "--log-level", "3"});
        const Finished set = RunToEnd(launch);
        const std::string text = testdata::ReadFile(log);
        EXPECT_NE(text.find(" 3 [] "), std::string::npos);
        EXPECT_EQ(text.find("Zebra9"), std::string::npos) << text;
        if (words.back() == "AdminPassword=-")
        {
            EXPECT_EQ(set.Errors.find("Zebra9Zebra9"), std::string::npos) << set.Errors;
            EXPECT_EQ(set.Output.find("Zebra9"), std::string::npos) << set.Output;
        }
    }
}

TEST(ProgramSet, MissingOemActionsNameTheOption)
{
    const TestMachine machine;
    const RunningBmc bmc({"--machine", machine.Path()});
    const Finished set = RunToEnd(bmc.Tool({"--system-type", "uefi", "set", "Timeout=20"}));
    EXPECT_NE(set.Status, 0);
    EXPECT_EQ(set.Output, "");
    EXPECT_TRUE(Says(set, "--system-type bios")) << set.Errors;
    EXPECT_TRUE(Says(set, "UEFI.Timeout: not sent")) << set.Errors;
}

TEST(ProgramSet, ABmcWithoutASettingsObjectIsToldApartFromARefusal)
{
    const TestMachine machine;
    const RunningBmc bmc({"--machine", machine.Path()});
    const Finished set = RunToEnd(bmc.Tool({"set", "Timeout=20"}));
    EXPECT_EQ(set.Status, 26);
    EXPECT_TRUE(Says(set, "BIOS.Timeout: not sent")) << set.Errors;
}

TEST(ProgramSet, WhatIsSaidOfAChangeThatABusyOrLostBmcGotIsTrue)
{
    for (const Fault fault : {Fault::Busy, Fault::CutBefore, Fault::CutHalfway, Fault::CutAfter, Fault::CutWithin,
                              Fault::DeadBefore, Fault::DeadAfter})
    {
        const RunningBmc bmc({"--http"});
        const FaultyProxy proxy(bmc.Port(),
                                [fault](int, const std::string& line) { return IsChange(line) ? fault : Fault::None; });
        const Finished set = RunOn(proxy.Url(), {"set", "BootPromptSeconds=9"});
        SCOPED_TRACE(std::to_string(static_cast<int>(fault)) + "\n" + set.Output + set.Errors);
        const bool changed = IsPending(bmc.Url(), "BIOS.BootPromptSeconds=5 -> 9");
        const bool dead = fault == Fault::DeadBefore || fault == Fault::DeadAfter;
        // Only one that may have gone through stays open, and not where the BMC tells.
        EXPECT_EQ(Says(set, "BIOS.BootPromptSeconds: whether the change was done is not known"),
                  (fault != Fault::Busy && !changed) || dead);
        EXPECT_EQ(Says(set, "BIOS.BootPromptSeconds: changed"), changed && !dead);
        EXPECT_EQ(set.Status, fault == Fault::Busy ? 33 : changed && !dead ? 0 : 24);
        const Words requests = proxy.Requests();
        EXPECT_EQ(std::count_if(requests.begin(), requests.end(), IsChange), 1);
    }
}

TEST(ProgramSet, AStoppedRunTellsWhatIsOpen)
{
    const RunningBmc bmc({"--http"});
    std::atomic<ChildProcess*> child = nullptr;
    const FaultyProxy proxy(bmc.Port(),
                            [&](int, const std::string& line)
                            {
                                if (IsChange(line))
                                {
                                    child.load()->Signal(SIGTERM);
                                    return Fault::DeadBefore;
                                }
                                return Fault::None;
                            });
    Launch launch;
    launch.Arguments = {"--bmc", proxy.Url(), "--user", "admin", "set", "BootPromptSeconds=9"};
    launch.Variables = {{"TAVRINE_PASSWORD", "password"}};
    ChildProcess tool(launch);
    child = &tool;
    const Finished set = tool.Wait();
    EXPECT_EQ(set.Status, 128 + SIGTERM) << set.Errors;
    EXPECT_TRUE(Says(set, "BIOS.BootPromptSeconds: whether the change was done is not known")) << set.Errors;
}
