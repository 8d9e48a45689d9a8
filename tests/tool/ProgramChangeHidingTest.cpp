// Where values of settings must not be seen: the log, the process list, files.

#include <gtest/gtest.h>

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <future>
#include <set>

#include "ChangeMachine.h"
#include "FaultyProxy.h"
#include "InsideRun.h"
#include "SharedData.h"

using namespace tooltest;

namespace fs = std::filesystem;

namespace
{

using Words = std::vector<std::string>;

constexpr const char* Mark = "Zebra9";

/// Everything that a process shows of itself while it runs.
struct Shown
{
    std::string CommandLine;
    std::string Environment;
    /// Regular files that it may write to and has not inherited from the tests.
    std::set<std::string> WrittenFiles;
};

std::set<std::string> WrittenBy(const fs::path& process)
{
    std::set<std::string> files;
    for (const auto& entry : fs::directory_iterator(process / "fd"))
    {
        std::error_code failure;
        const bool regular = fs::is_regular_file(entry.path(), failure);
        std::ifstream info(process / "fdinfo" / entry.path().filename());
        std::string word;
        while (info >> word && word != "flags:")
        {
        }
        int flags = O_RDONLY; // of a file that was closed meanwhile
        info >> std::oct >> flags;
        if (regular && (flags & O_ACCMODE) != O_RDONLY)
        {
            files.insert(fs::read_symlink(entry.path(), failure).string());
        }
    }
    return files;
}

Shown ShownBy(pid_t id)
{
    const fs::path process = fs::path("/proc") / std::to_string(id);
    Shown shown{testdata::ReadFile(process / "cmdline"), testdata::ReadFile(process / "environ"), WrittenBy(process)};
    for (const std::string& inherited : WrittenBy("/proc/self"))
    {
        shown.WrittenFiles.erase(inherited);
    }
    return shown;
}

std::size_t FilesIn(const fs::path& folder)
{
    return static_cast<std::size_t>(
        std::distance(fs::recursive_directory_iterator(folder), fs::recursive_directory_iterator()));
}

} // namespace

TEST(ProgramChangeHiding, AValueFromStandardInputIsInNoProcessListAndInNoFile)
{
    const ChangeMachine machine;
    const InsideBmc bmc(machine.Path());
    const testdata::TemporaryFolder folder;
    for (const Words& change : {Words{"set", "Owner=-"}, Words{"set", "--no-check", "AdminPassword=-"}})
    {
        std::promise<pid_t> started;
        const std::shared_future<pid_t> id = started.get_future().share();
        std::vector<Shown> looks;
        std::size_t files = 0;
        Finished set;
        {
            const FaultyProxy proxy(bmc.Port(),
                                    [&](int, const std::string&)
                                    {
                                        looks.push_back(ShownBy(id.get()));
                                        files += FilesIn(folder.Path());
                                        return Fault::None;
                                    });
            Launch launch;
            launch.Arguments = {"--bmc", proxy.Url(), "--user", "admin"};
            launch.Arguments.insert(launch.Arguments.end(), change.begin(), change.end());
            launch.Variables = {{"TAVRINE_PASSWORD", "password"}, {"TMPDIR", folder.Path().string()}};
            launch.Input = std::string(Mark) + Mark + "\n";
            ChildProcess tool(launch);
            started.set_value(tool.Id());
            set = tool.Wait();
        }
        EXPECT_EQ(set.Status, 0) << set.Errors;
        EXPECT_GT(looks.size(), 5U);
        for (const Shown& look : looks)
        {
            EXPECT_NE(look.CommandLine.find(change.back()), std::string::npos) << look.CommandLine;
            EXPECT_EQ(look.CommandLine.find(Mark), std::string::npos) << look.CommandLine;
            EXPECT_EQ(look.Environment.find(Mark), std::string::npos);
            EXPECT_EQ(look.WrittenFiles, std::set<std::string>());
        }
        EXPECT_EQ(files + FilesIn(folder.Path()), 0U);
    }
}

TEST(ProgramChangeHiding, NoValueNewOrOldIsInALogBelowLevelFour)
{
    const ChangeMachine machine(Mark);
    const InsideBmc bmc(machine.Path());
    const testdata::TemporaryFolder folder;
    const std::string log = (folder.Path() / "log").string();
    const auto run = [&](const std::string& url, Words words)
    {
        words.insert(words.begin(), {"--protected", "--log-file", log, "--log-level", "3"});
        return InsideRun(url)(words, "Zebra9Input");
    };
    for (const Words& words :
         {Words{"set", "Owner=Zebra9New", "Mode=Zebra9Other"}, Words{"set", "Owner=-"}, Words{"set", "Mode=Zebra9Bad"},
          Words{"set", "--no-check", "Mode=Zebra9Bad", "Owner=Zebra9New"}, Words{"set", "AdminPassword=-"},
          Words{"set", "--no-check", "AdminPassword=-"}, Words{"set", "Timeout=Zebra9"}, Words{"set", "Nothing=Zebra9"},
          Words{"set", "--dry-run", "Owner=Zebra9New"}, Words{"set", "Seal=Zebra9New"},
          Words{"set", "--no-check", "Seal=Zebra9New"}, Words{"pending"}, Words{"pending", "Seal"}, Words{"show"},
          Words{"show", "Seal", "Owner", "Mode"}, Words{"set", "--reboot", "--wait", "60", "Owner=Zebra9Last"}})
    {
        for (const char* type : {"bios", "uefi"})
        {
            Words typed = words;
            typed.insert(typed.begin(), {"--system-type", type});
            run(bmc.Url(), typed);
            for (const Fault fault : {Fault::Busy, Fault::CutAfter})
            {
                const FaultyProxy proxy(bmc.Port(),
                                        [fault](int, const std::string& line)
                                        {
                                            const bool change =
                                                line.starts_with("PATCH ") || line.ends_with(".SetProtectedAttributes");
                                            return change ? fault : Fault::None;
                                        });
                run(proxy.Url(), typed);
            }
            const std::string text = testdata::ReadFile(log);
            EXPECT_NE(text.find(" 3 [] "), std::string::npos);
            const std::size_t at = text.find(Mark);
            EXPECT_EQ(at, std::string::npos)
                << words.back() << ": "
                << text.substr(text.rfind('\n', at) + 1, text.find('\n', at) - text.rfind('\n', at));
            fs::remove(log);
        }
    }
    EXPECT_NE(InsideRun(bmc.Url())({"show", "Owner"}).Output.find("Zebra9Last"), std::string::npos);
}

TEST(ProgramChangeHiding, AValueThatMayBeAPasswordIsInNoAnswerOfABmcThatRepeatsIt)
{
    // Without the registry and the OEM actions nothing tells what is a password.
    const ChangeMachine machine;
    fs::remove(fs::path(machine.Path()) / "protected.json");
    const InsideBmc bmc(machine.Path());
    for (const char* value : {"Zebra9", "Zebra\"nine", "Zebra\\nine", "Zebra\tnine", "Zebra/nine", "Zébra nine "})
    {
        const Finished set = InsideRun(bmc.Url())({"--system-type", "uefi", "set", "--no-check", "Mode=-"}, value);
        EXPECT_EQ(set.Status, 18);
        EXPECT_EQ(set.Errors.find("bra"), std::string::npos) << set.Errors;
        EXPECT_NE(set.Errors.find("The value '********' for the property Mode"), std::string::npos) << set.Errors;
    }
}

/// The password is a word of what the BMC says to the restart.
TEST(ProgramChangeHiding, ARestoredPasswordIsInNoAnswerToTheRestart)
{
    const ChangeMachine machine;
    const InsideBmc bmc(machine.Path());
    std::string error;
    ASSERT_TRUE(bmc.Simulator().SetFaultRules({"POST */ComputerSystem.Reset status 400"}, error)) << error;
    const testdata::TemporaryFolder folder;
    const auto told = [&](const std::string& settings)
    {
        Words words = {"restore", folder.Write("saved.conf", settings), "--reboot", "--wait", "60"};
        const std::string errors = InsideRun(bmc.Url())(words).Errors;
        return errors.substr(std::min(errors.find("The system was not restarted: "), errors.size()));
    };
    const std::string open = told("Timeout=20\n");
    EXPECT_NE(open.find("information"), std::string::npos) << open;
    const std::string hidden = told("Timeout=21\nAdminPassword=information\n");
    EXPECT_NE(hidden.find("********"), std::string::npos) << hidden;
    EXPECT_EQ(hidden.find("information"), std::string::npos) << hidden;
}
