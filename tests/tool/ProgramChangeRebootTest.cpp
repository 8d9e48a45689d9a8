// set --reboot: what was changed is brought into force, and verified with --wait.

#include <gtest/gtest.h>

#include <algorithm>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <httplib.h>

#include "ChangeMachine.h"
#include "FaultyProxy.h"
#include "InsideRun.h"
#include "TemporaryFolder.h"

using namespace tooltest;

namespace json = boost::json;

namespace
{

using Words = std::vector<std::string>;

constexpr const char* SettingsPath = "/redfish/v1/Systems/1/Bios/Settings";

bool IsReset(const std::string& request) { return request.ends_with("/Actions/ComputerSystem.Reset"); }

bool Says(const std::string& text, const std::string& words) { return text.find(words) != std::string::npos; }

constexpr const char* NotVerified =
    "AdminPassword: its new value is not verified, since it cannot be read or may be a password\n";

class ProgramChangeReboot : public ::testing::Test
{
  public:
    const ChangeMachine Machine;
    const InsideBmc Bmc{Machine.Path()};
    const InsideRun Tool{Bmc.Url()};

    std::size_t Resets() const { return ResetsOf(Bmc); }

    static std::size_t ResetsOf(const InsideBmc& bmc)
    {
        const std::vector<bmcsim::AccessRecord> log = bmc.Simulator().AccessLog();
        return static_cast<std::size_t>(
            std::count_if(log.begin(), log.end(), [](const auto& one) { return IsReset(one.Path); }));
    }
};

/// A system with one value that is not its default, and a file with that value.
class ProgramChangeDefaults : public ::testing::Test
{
  public:
    const std::string Warning = "tavrine: warning: all settings go to their defaults at the next start of the system\n";
    const InsideBmc Bmc;
    const InsideRun Tool{Bmc.Url()};
    const testdata::TemporaryFolder Folder;
    const std::string Saved = Folder.Write("saved.conf", "BootFailLimit=3\n");
    const std::string Now = (Folder.Path() / "now.json").string();

    void SetUp() override { ASSERT_EQ(Tool({"set", "BootFailLimit=3", "--reboot", "--wait", "60"}).Status, 0); }

    void ExpectNothingRestored(const Words& words) const
    {
        const Finished restored = Tool(words);
        EXPECT_EQ(restored.Status, 18);
        EXPECT_TRUE(Says(restored.Errors, "All settings go to their defaults at the next start")) << restored.Errors;
        EXPECT_TRUE(Says(restored.Errors, "nothing was sent")) << restored.Errors;
    }

    void ExpectNoRestart(const Words& words) const
    {
        const Finished changed = Tool(words);
        EXPECT_EQ(changed.Status, 18) << changed.Errors;
        EXPECT_TRUE(Says(changed.Errors, Warning)) << changed.Errors;
        EXPECT_TRUE(Says(changed.Errors, "The system was not restarted, since all settings would go to their defaults"))
            << changed.Errors;
    }

    /// Programs tell it by a member, not by words.
    void ExpectDataTellsDefaults(bool pending) const
    {
        for (const Words& words : {Words{"--json", "pending"}, {"--json", "pending", "NumLock"}})
        {
            const json::object document = json::parse(Tool(words).Output).as_object();
            EXPECT_TRUE(document.contains("defaultsPending") && document.at("defaultsPending") == json::value(pending))
                << json::serialize(document);
        }
        const json::value results = json::parse(Tool({"--json", "results"}).Output);
        EXPECT_EQ(results.at("results").at("defaultsPending"), json::value(pending));
    }

    void ExpectLoadedByTheNextStart() const
    {
        EXPECT_EQ(Tool({"show", "BootFailLimit"}).Output, "BIOS.BootFailLimit=3\n");
        EXPECT_EQ(Tool({"reboot", "--wait", "60"}).Status, 0);
        EXPECT_EQ(Tool({"show", "BootFailLimit"}).Output, "BIOS.BootFailLimit=5\n");
    }
};

} // namespace

TEST_F(ProgramChangeReboot, ChangesAreVerifiedWhenTheSystemIsBack)
{
    const Finished set = Tool({"set", "Timeout=20", "Owner=you", "Mode=Uefi", "--reboot", "--wait", "60"});
    EXPECT_EQ(set.Status, 0) << set.Errors;
    EXPECT_EQ(set.Output, "BIOS.Timeout: changed, takes effect after a reboot\n"
                          "BIOS.Owner: changed, takes effect after a reboot\n"
                          "BIOS.Mode: already Uefi, in force\n"
                          "2 of 2 new values are in force\n");
    EXPECT_EQ(Resets(), 1U);
    EXPECT_EQ(Tool({"show", "Timeout", "Owner"}).Output, "BIOS.Owner=you\nBIOS.Timeout=20\n");
}

TEST_F(ProgramChangeReboot, DataTellsWhatIsInForce)
{
    const Finished set = Tool({"--hex", "set", "Timeout=0x14", "Mode=Legacy", "--reboot", "--wait", "60", "--json"});
    EXPECT_EQ(set.Status, 0) << set.Errors;
    const json::value document = json::parse(set.Output);
    EXPECT_EQ(document.at("verified"), (json::object{{"BIOS.Timeout", "in force"}, {"BIOS.Mode", "in force"}}));
    EXPECT_EQ(document.at("settings").at("BIOS.Timeout"),
              (json::object{{"outcome", "changed"}, {"value", 20}, {"inForce", false}}));
}

TEST_F(ProgramChangeReboot, ProtectedSettingsAreVerifiedAndPasswordsAreSaidNotToBe)
{
    const Finished set = Tool({"--system-type", "uefi", "--protected", "set", "Seal=broken", "AdminPassword=hunter2",
                               "--reboot", "--wait", "60"});
    EXPECT_EQ(set.Status, 0) << set.Errors;
    EXPECT_TRUE(Says(set.Output, "1 of 1 new values are in force\n")) << set.Output;
    EXPECT_TRUE(Says(set.Errors, NotVerified)) << set.Errors;
}

TEST_F(ProgramChangeReboot, APasswordAloneIsReasonEnough)
{
    const Finished set = Tool({"set", "AdminPassword=-", "--reboot", "--wait", "60"}, "hunter2\n");
    EXPECT_EQ(set.Status, 0) << set.Errors;
    EXPECT_EQ(set.Output, "BIOS.AdminPassword: changed, takes effect after a reboot\n");
    EXPECT_EQ(Resets(), 1U);
    const testdata::TemporaryFolder folder;
    const std::string file = folder.Write("saved.conf", "AdminPassword=hunter2\n");
    const Finished restored = Tool({"restore", file, "--reboot", "--wait", "60"});
    EXPECT_EQ(restored.Status, 0) << restored.Errors;
    EXPECT_EQ(restored.Output, "BIOS.AdminPassword\t********\tsent, takes effect after a reboot\n");
    EXPECT_TRUE(Says(restored.Errors, NotVerified)) << restored.Errors;
    EXPECT_EQ(Resets(), 2U);
    const Finished unwatched = Tool({"restore", file, "--reboot"});
    EXPECT_FALSE(Says(unwatched.Errors, NotVerified)) << unwatched.Errors;
    EXPECT_EQ(Resets(), 3U);
}

TEST_F(ProgramChangeReboot, WithoutWaitTheRestartIsOnlyAskedFor)
{
    const Finished set = Tool({"set", "Timeout=20", "--reboot"});
    EXPECT_EQ(set.Status, 0) << set.Errors;
    EXPECT_EQ(set.Output, "BIOS.Timeout: changed, takes effect after a reboot\n");
    EXPECT_TRUE(Says(set.Errors, "restart requested (GracefulRestart)")) << set.Errors;
    EXPECT_EQ(Resets(), 1U);
}

TEST_F(ProgramChangeReboot, WhatIsPendingAlreadyIsBroughtIntoForceToo)
{
    EXPECT_EQ(Tool({"set", "Timeout=20"}).Status, 0);
    const Finished set = Tool({"set", "Timeout=20", "--reboot", "--wait", "60"});
    EXPECT_EQ(set.Status, 0) << set.Errors;
    EXPECT_EQ(set.Output, "BIOS.Timeout: already 20, takes effect after a reboot\n"
                          "1 of 1 new values are in force\n");
}

TEST_F(ProgramChangeReboot, WhereNothingWaitsNothingIsRestarted)
{
    const Finished already = Tool({"set", "Timeout=10", "--reboot", "--wait", "60"});
    EXPECT_EQ(already.Status, 0) << already.Errors;
    EXPECT_TRUE(Says(already.Errors, "not restarted, since none of these changes waits for it")) << already.Errors;
    const Finished refused = Tool({"set", "Timeout=999", "--reboot", "--wait", "60"});
    EXPECT_EQ(refused.Status, 10);
    EXPECT_TRUE(Says(refused.Errors, "not restarted, since none of these changes waits for it")) << refused.Errors;
    EXPECT_EQ(Resets(), 0U);
}

TEST_F(ProgramChangeReboot, AnOpenChangeIsNotFollowedByARestart)
{
    const FaultyProxy proxy(Bmc.Port(), [](int, const std::string& line)
                            { return line.starts_with("PATCH ") ? Fault::CutBefore : Fault::None; });
    const Finished set = InsideRun(proxy.Url())({"set", "Timeout=20", "--reboot", "--wait", "60"});
    EXPECT_EQ(set.Status, 24);
    EXPECT_TRUE(Says(set.Errors, "not restarted, since what the BMC has received is not known")) << set.Errors;
    EXPECT_EQ(Resets(), 0U);
}

TEST_F(ProgramChangeReboot, HalfOfTheChangesAreNotFollowedByARestart)
{
    int changes = 0;
    const FaultyProxy proxy(Bmc.Port(), [&](int, const std::string& line)
                            { return line.starts_with("PATCH ") && ++changes == 2 ? Fault::Busy : Fault::None; });
    const Finished busy =
        InsideRun(proxy.Url())({"set", "Watchdog=On", "WatchdogMinutes=20", "--reboot", "--wait", "60"});
    EXPECT_EQ(busy.Status, 33);
    EXPECT_EQ(busy.Output, "BIOS.Watchdog: changed, takes effect after a reboot\n");
    EXPECT_EQ(changes, 2);
    EXPECT_TRUE(Says(busy.Errors, "not restarted, since a request failed")) << busy.Errors;
    EXPECT_EQ(Resets(), 0U);
}

TEST_F(ProgramChangeReboot, WhatElseComesIntoForceWithTheRestartIsTold)
{
    EXPECT_EQ(Tool({"set", "Owner=you"}).Status, 0);
    testing::internal::CaptureStderr(); // it is told at once
    const Finished set = Tool({"set", "Timeout=20", "--reboot", "--wait", "60"});
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_EQ(set.Status, 0) << set.Errors;
    EXPECT_TRUE(told.starts_with("tavrine: warning: other changes wait, too, and come into force with a restart: "
                                 "BIOS.Owner\ntavrine: restart requested (GracefulRestart)\n"))
        << told;
}

TEST_F(ProgramChangeReboot, ARefusedSettingKeepsTheOthersFromARestart)
{
    for (const char* wrong : {"Timeout=999", "Timeuot=20"})
    {
        const Finished set = Tool({"set", "Owner=you", wrong, "--reboot", "--wait", "60"});
        EXPECT_NE(set.Status, 0) << wrong;
        EXPECT_TRUE(Says(set.Output, "BIOS.Owner: ")) << set.Output;
        EXPECT_TRUE(Says(set.Output, ", takes effect after a reboot\n")) << set.Output;
        EXPECT_TRUE(Says(set.Errors, "not restarted, since a setting was refused; what was not comes into force with: "
                                     "tavrine reboot\n"))
            << set.Errors;
    }
    EXPECT_EQ(Resets(), 0U);
}

TEST_F(ProgramChangeReboot, AValueThatTheBmcDidNotTakeIsAFailure)
{
    // Somebody else changes it once more before the restart.
    const FaultyProxy proxy(Bmc.Port(),
                            [&](int, const std::string& line)
                            {
                                if (IsReset(line))
                                {
                                    httplib::Client other(Bmc.Url());
                                    other.set_basic_auth("admin", "password");
                                    const auto answer = other.Patch(SettingsPath, R"({"Attributes":{"Timeout":7}})",
                                                                    "application/json");
                                    EXPECT_TRUE(answer && answer->status == 200);
                                }
                                return Fault::None;
                            });
    const Finished set = InsideRun(proxy.Url())({"set", "Timeout=20", "Owner=you", "--reboot", "--wait", "60"});
    EXPECT_EQ(set.Status, 18);
    EXPECT_TRUE(Says(set.Output, "1 of 2 new values are in force\n")) << set.Output;
    EXPECT_TRUE(Says(set.Errors, "BIOS.Timeout: the new value is not in force after the reboot; it is 7"))
        << set.Errors;
    EXPECT_FALSE(Says(set.Errors, "BIOS.Owner")) << set.Errors;
}

TEST_F(ProgramChangeReboot, ABmcThatDoesNotComeBackIsAFailure)
{
    const FaultyProxy proxy(Bmc.Port(), [](int, const std::string& line)
                            { return IsReset(line) ? Fault::GoneAfter : Fault::None; });
    const Finished set = InsideRun(proxy.Url())({"set", "Timeout=20", "--reboot", "--wait", "1"});
    EXPECT_EQ(set.Status, 24);
    EXPECT_TRUE(Says(set.Output, "BIOS.Timeout: changed, takes effect after a reboot\n")) << set.Output;
    EXPECT_TRUE(Says(set.Errors, "The BMC did not come back within the time to wait")) << set.Errors;
    EXPECT_TRUE(Says(set.Errors, "whether the changes are in force is not known")) << set.Errors;
}

TEST_F(ProgramChangeReboot, ARestartWhoseAnswerIsLostIsLookedFor)
{
    const auto lose = [this](Fault how, const Words& arguments)
    {
        const FaultyProxy proxy(Bmc.Port(),
                                [how](int, const std::string& line) { return IsReset(line) ? how : Fault::None; });
        return InsideRun(proxy.Url())(arguments);
    };
    const Finished seen = lose(Fault::CutAfter, {"set", "Timeout=20", "--reboot", "--wait", "60"});
    EXPECT_EQ(seen.Status, 0) << seen.Errors;
    EXPECT_EQ(seen.Output, "BIOS.Timeout: changed, takes effect after a reboot\n1 of 1 new values are in force\n");
    EXPECT_TRUE(Says(seen.Errors, "warning: the request to restart has failed, but the system was restarted: "))
        << seen.Errors;
    const Finished unseen = lose(Fault::CutAfter, {"set", "Timeout=21", "--reboot"});
    EXPECT_EQ(unseen.Status, 24);
    EXPECT_TRUE(Says(unseen.Errors, "tavrine: 24 Whether the system is restarted is not known: ")) << unseen.Errors;
    const Finished never = lose(Fault::CutBefore, {"set", "Timeout=22", "--reboot", "--wait", "1"});
    EXPECT_EQ(never.Status, 24);
    EXPECT_TRUE(Says(never.Errors, "tavrine: 24 Whether the system is restarted is not known: ")) << never.Errors;
    EXPECT_TRUE(Says(never.Errors, "Whether the system was restarted within the time to wait is not known"))
        << never.Errors;
    EXPECT_EQ(Tool({"pending"}).Output, "BIOS.Timeout=21 -> 22\n");
    const Finished reboot = lose(Fault::CutAfter, {"reboot", "--wait", "60"});
    EXPECT_EQ(reboot.Status, 0) << reboot.Errors;
    EXPECT_EQ(reboot.Output, "the system is back (GracefulRestart)\n");
}

/// All defaults at the next start are no pending values of single settings.
TEST_F(ProgramChangeDefaults, ALoadOfAllDefaultsIsSeenUntilTheNextStart)
{
    EXPECT_FALSE(Says(Tool({"pending"}).Errors, Warning));
    ExpectDataTellsDefaults(false);
    EXPECT_EQ(Tool({"loaddefault", "BIOS", "--yes"}).Status, 0);
    ExpectDataTellsDefaults(true);

    const Finished pending = Tool({"pending"});
    EXPECT_EQ(pending.Status, 0);
    EXPECT_EQ(pending.Output, "All settings go to their defaults at the next start of the system.\n");
    for (const Words& words : {Words{"pending", "BootFailLimit"},
                               {"compare", "pending"},
                               {"save", Now},
                               {"describe", "BootFailLimit"},
                               {"set", "BootFailLimit=3"}})
    {
        EXPECT_TRUE(Says(Tool(words).Errors, Warning)) << words.front();
    }
    for (const Words& words : {Words{"restore", Saved}, {"restore", Saved, "--dry-run"}})
    {
        ExpectNothingRestored(words);
    }
    for (const Words& words : {Words{"set", "NumLock=false", "--reboot"}, {"loaddefault", "BootOrder1", "--reboot"}})
    {
        ExpectNoRestart(words);
    }
    ExpectLoadedByTheNextStart();
    EXPECT_EQ(Tool({"loaddefault", "BIOS", "--yes", "--reboot", "--wait", "60"}).Status, 0);
    EXPECT_EQ(Tool({"restore", Saved, "--reboot", "--wait", "60"}).Status, 0);
    EXPECT_EQ(Tool({"show", "BootFailLimit"}).Output, "BIOS.BootFailLimit=3\n");
    EXPECT_EQ(Tool({"pending"}).Output, NothingPending);
}

/// A firmware loads them, too, by a setting of its own, which waits as any other does.
TEST_F(ProgramChangeDefaults, ALoadByTheFirmwareIsSeenUntilTheNextStart)
{
    EXPECT_EQ(Tool({"loaddefault", "BIOS", "--post", "--yes"}).Status, 0);
    ExpectDataTellsDefaults(true);
    for (const Words& words : {Words{"pending"}, {"describe", "BootFailLimit"}, {"save", Now}})
    {
        EXPECT_TRUE(Says(Tool(words).Errors, Warning)) << words.front();
    }
    EXPECT_FALSE(Says(testdata::ReadFile(Now), "PostLoadSetupDefault")) << "to restore it would load the defaults";
    EXPECT_TRUE(Says(Tool({"results"}).Errors, "all settings go to their defaults at the next start"));
    ExpectNothingRestored({"restore", Saved});
    ExpectNoRestart({"set", "NumLock=false", "--reboot"});
    ExpectLoadedByTheNextStart();
    EXPECT_EQ(Tool({"loaddefault", "BIOS", "--post", "--yes", "--reboot", "--wait", "60"}).Status, 0);
    EXPECT_FALSE(Says(Tool({"set", "BootFailLimit=3", "--reboot", "--wait", "60"}).Errors, Warning));
    EXPECT_EQ(Tool({"show", "BootFailLimit"}).Output, "BIOS.BootFailLimit=3\n");
}

TEST_F(ProgramChangeReboot, ARefusedLoadOfAllDefaultsIsNotFollowedByARestart)
{
    const InsideBmc bmc;
    std::string error;
    ASSERT_TRUE(bmc.Simulator().SetFaultRules({"POST */Bios.ResetBios status 400"}, error)) << error;
    for (const Words& words : {Words{"loaddefault", "BIOS", "--yes", "--reboot"},
                               {"loaddefault", "BIOS", "--yes", "--reboot", "--wait", "1"}})
    {
        const Finished refused = InsideRun(bmc.Url())(words);
        EXPECT_EQ(refused.Status, 28) << refused.Errors;
        EXPECT_EQ(refused.Output.find("BIOS: refused: "), 0U) << refused.Output;
        EXPECT_EQ(ResetsOf(bmc), 0U);
    }
}

TEST_F(ProgramChangeReboot, ARestoredValueThatWaitsAlreadyIsNotCalledInPlace)
{
    const testdata::TemporaryFolder folder;
    const std::string file = folder.Write("saved.conf", "Timeout=20\n");
    EXPECT_EQ(Tool({"set", "Timeout=20"}).Status, 0);
    for (const Words& words : {Words{"restore", file, "--dry-run"}, {"restore", file}})
    {
        const Finished restored = Tool(words);
        EXPECT_EQ(restored.Status, 0) << restored.Errors;
        EXPECT_TRUE(Says(restored.Output, "already waits for a reboot\n")) << restored.Output;
    }
    EXPECT_EQ(Tool({"restore", file, "--reboot", "--wait", "60"}).Status, 0);
    EXPECT_EQ(Tool({"show", "Timeout"}).Output, "BIOS.Timeout=20\n");
    EXPECT_TRUE(Says(Tool({"restore", file, "--dry-run"}).Output, "in place\n"));
}

TEST_F(ProgramChangeReboot, DefaultsAreComparedInDecimalWhateverIsShown)
{
    const InsideBmc bmc;
    const InsideRun tool(bmc.Url());
    const Finished loaded = tool({"--hex", "loaddefault", "FanMinimumPercent"});
    EXPECT_EQ(loaded.Status, 0) << loaded.Errors;
    EXPECT_EQ(loaded.Output, "BIOS.FanMinimumPercent: in place\n");
    EXPECT_EQ(tool({"set", "BootFailLimit=3"}).Status, 0);
    const Finished dropped = tool({"--hex", "loaddefault", "BootFailLimit"});
    EXPECT_EQ(dropped.Status, 0) << dropped.Errors;
    EXPECT_EQ(dropped.Output, "BIOS.BootFailLimit: in place\n");
    EXPECT_EQ(tool({"pending"}).Output, NothingPending);
}

TEST_F(ProgramChangeReboot, ARefusedRestartLeavesTheChangePending)
{
    const FaultyProxy proxy(Bmc.Port(),
                            [](int, const std::string& line) { return IsReset(line) ? Fault::Busy : Fault::None; });
    const Finished set = InsideRun(proxy.Url())({"set", "Timeout=20", "--reboot", "--wait", "60"});
    EXPECT_EQ(set.Status, 33);
    EXPECT_TRUE(Says(set.Errors, "The system was not restarted: ")) << set.Errors;
    EXPECT_EQ(Tool({"pending"}).Output, "BIOS.Timeout=10 -> 20\n");
}

TEST_F(ProgramChangeReboot, OptionsThatContradictAreRefused)
{
    const Finished dry = Tool({"set", "Timeout=20", "--dry-run", "--reboot"});
    EXPECT_EQ(dry.Status, 64);
    EXPECT_TRUE(Says(dry.Errors, "--dry-run and --reboot exclude each other")) << dry.Errors;
    EXPECT_EQ(Tool({"set", "Timeout=20", "--wait", "60"}).Status, 64);
    EXPECT_EQ(Tool({"set", "--reboot"}).Status, 64);
    EXPECT_TRUE(Bmc.Simulator().AccessLog().empty());
}
