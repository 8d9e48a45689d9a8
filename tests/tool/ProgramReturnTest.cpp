#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <vector>

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include "ChildProcess.h"
#include "ParsedJson.h"
#include "RunningBmc.h"
#include "SharedData.h"
#include "TemporaryFolder.h"
#include "TestMachine.h"

using namespace tooltest;

namespace json = boost::json;

namespace
{

/// One machine over several runs of the tool.
class ProgramReturn : public ::testing::Test
{
  public:
    Finished Run(const std::vector<std::string>& arguments, const std::string& input = {}) const
    {
        Launch launch;
        launch.Arguments = {"--simulate", "--state", Name("state.json")};
        launch.Arguments.insert(launch.Arguments.end(), arguments.begin(), arguments.end());
        launch.Input = input;
        return RunToEnd(launch);
    }

    void Good(const std::vector<std::string>& arguments) const
    {
        const Finished finished = Run(arguments);
        EXPECT_EQ(finished.Status, 0) << arguments.front() << ": " << finished.Errors;
    }

    std::string Name(const std::string& file) const { return (m_Folder.Path() / file).string(); }
    std::string Content(const std::string& file) const { return testdata::ReadFile(Name(file)); }
    json::value Settings(const std::string& file) const { return Parsed(Content(file)).at("settings"); }
    std::string Shown(const std::string& name) const { return Run({"show", name}).Output; }
    const testdata::TemporaryFolder& Folder() const { return m_Folder; }

  private:
    testdata::TemporaryFolder m_Folder;
};

} // namespace

TEST_F(ProgramReturn, ARestoreBringsTheSavedSettingsBack)
{
    for (const std::string file : {"first.json", "first.conf"})
    {
        Good({"save", Name(file)});
        Good({"save", Name("before.json")});
        Good({"set", "BootFailLimit=3", "AssetOwner=Someone else"});
        Good({"reboot", "--wait", "20"});
        EXPECT_EQ(Shown("BootFailLimit"), "UEFI.BootFailLimit=3\n");
        const Finished restored = Run({"restore", Name(file)});
        EXPECT_EQ(restored.Status, 0) << restored.Errors;
        EXPECT_NE(restored.Output.find("UEFI.BootFailLimit\t5\tsent, takes effect after a reboot\n"),
                  std::string::npos);
        EXPECT_EQ(Shown("BootFailLimit"), "UEFI.BootFailLimit=3\n");
        Good({"reboot", "--wait", "20"});
        Good({"save", Name("after.json")});
        EXPECT_EQ(Settings("after.json"), Settings("before.json"));
        EXPECT_FALSE(Settings("after.json").as_object().empty());
    }
}

TEST_F(ProgramReturn, ASavedFileTellsItsSystemAndIsItsOwnersAlone)
{
    Good({"save", Name("saved.json")});
    const json::value document = Parsed(Content("saved.json"));
    for (const char* member : {"time", "bmc", "manufacturer", "model", "serial", "biosVersion", "registry", "prefix"})
    {
        EXPECT_FALSE(document.at(member).as_string().empty()) << member;
    }
    EXPECT_EQ(document.at("version"), 1);
    struct stat kind = {};
    ASSERT_EQ(stat(Name("saved.json").c_str(), &kind), 0);
    EXPECT_EQ(kind.st_mode & 0777U, 0600U);
    const json::value printed = Parsed(Run({"save"}).Output);
    EXPECT_EQ(printed.at("settings"), document.at("settings"));
}

TEST_F(ProgramReturn, ARestoreWithRebootVerifiesEachChange)
{
    Good({"save", Name("saved.json")});
    Good({"set", "BootFailLimit=3"});
    Good({"reboot", "--wait", "20"});
    const Finished restored = Run({"--json", "restore", Name("saved.json"), "--reboot", "--wait", "20"});
    EXPECT_EQ(restored.Status, 0) << restored.Errors;
    EXPECT_EQ(Parsed(restored.Output).at("verified").as_object(), (json::object{{"UEFI.BootFailLimit", "in force"}}));
    EXPECT_EQ(Shown("BootFailLimit"), "UEFI.BootFailLimit=5\n");
}

TEST_F(ProgramReturn, AStartThatTakesAWhileIsWaitedFor)
{
    const RunningBmc bmc({"--reboot-ms", "700"});
    const Finished set = RunToEnd(bmc.Tool({"set", "BootFailLimit=3"}));
    ASSERT_EQ(set.Status, 0) << set.Errors;
    const Finished back = RunToEnd(bmc.Tool({"reboot", "--wait", "30"}));
    EXPECT_EQ(back.Status, 0) << back.Errors;
    EXPECT_NE(back.Errors.find("waiting for the system to start"), std::string::npos) << back.Errors;
    EXPECT_EQ(RunToEnd(bmc.Tool({"show", "BootFailLimit"})).Output, "BIOS.BootFailLimit=3\n");
}

TEST_F(ProgramReturn, ValuesWrittenByHandAreSentAndJudgedAsTheBmcHasThem)
{
    const Finished sent = Run({"restore", "-"}, "BootFailLimit=03\nNumLock=False\nPowerOnDelaySeconds=+35\n");
    EXPECT_EQ(sent.Status, 0) << sent.Errors;
    EXPECT_EQ(sent.Output, "UEFI.BootFailLimit\t3\tsent, takes effect after a reboot\n"
                           "UEFI.NumLock\tfalse\tsent, takes effect after a reboot\n"
                           "UEFI.PowerOnDelaySeconds\t35\tsent, takes effect after a reboot\n");
    Good({"reboot", "--wait", "20"});
    // The last one is read-only.
    const Finished again = Run({"restore", "-", "--dry-run"}, "BootFailLimit=+3\nNumLock=FALSE\nPostTimeMs=074210\n");
    EXPECT_EQ(again.Output, "UEFI.BootFailLimit\t3\tin place\nUEFI.NumLock\tfalse\tin place\n"
                            "UEFI.PostTimeMs\t74210\tin place\n");
}

TEST_F(ProgramReturn, NothingIsInPlaceWhereWhatWaitsCannotBeRead)
{
    const RunningBmc bmc({"--fault", "GET */Bios/Settings status 500"});
    const std::string file = Folder().Write("saved.conf", "BootFailLimit=5\n");
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"restore", file, "--reboot"}, {"restore", file, "--dry-run"}})
    {
        const Finished restored = RunToEnd(bmc.Tool(words));
        EXPECT_NE(restored.Status, 0);
        EXPECT_EQ(restored.Output, "BIOS.BootFailLimit\t5\tunknown: another value may wait for a reboot\n");
    }
}

/// The values in force are all that the first look has, and the second one sees that another one waits.
TEST_F(ProgramReturn, ADryRunSaysWhatTheRunComesToWhereAnotherValueWaits)
{
    const std::string file = Folder().Write("saved.conf", "BootFailLimit=5\n");
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"restore", file, "--dry-run"}, {"restore", file}})
    {
        const RunningBmc bmc({"--fault", "GET */Bios/Settings #3 status 500"});
        ASSERT_EQ(RunToEnd(bmc.Tool({"set", "BootFailLimit=3"})).Status, 0);
        const Finished restored = RunToEnd(bmc.Tool(words));
        EXPECT_EQ(restored.Status, 18) << words.back() << restored.Errors;
        EXPECT_EQ(restored.Output, "BIOS.BootFailLimit\t5\tunknown: another value waits for a reboot\n")
            << words.back();
    }
}

TEST_F(ProgramReturn, ARefusalNamesTheSettingAsTheTableDoes)
{
    const Finished refused = Run({"restore", "-"}, "BootFailLimit=21\n");
    EXPECT_EQ(refused.Output,
              "UEFI.BootFailLimit\t21\trefused: The new value is invalid: the setting UEFI.BootFailLimit takes a whole "
              "number from 0 to 20.\n");
}

TEST_F(ProgramReturn, StandardInputIsCalledByItsName)
{
    struct Row
    {
        std::vector<std::string> Arguments;
        std::string Input;
        const char* Says;
    };
    const Row rows[] = {
        {{"restore", "-"}, "rubbish", "16 Standard input holds no saved settings: "},
        {{"restore", "-"}, "A=1\nUEFI.A=1\n", "16 Standard input cannot be restored: "},
        {{"restore", "-"}, R"({"model":"Other","settings":{"A":"1"}})", "16 Standard input is from another system: "},
        {{"restore", "-"}, std::string((16U << 20U) + 1, 'x'), "38 Unable to read standard input: "},
        {{"compare", "-"}, "A=1\nUEFI.A=1\n", "16 Standard input cannot be compared: "},
        {{"compare", "-", "B"}, "A=1\n", "20 Standard input does not have the setting UEFI.B"},
        {{"custom-default", "import", "-"}, "\xFF", "16 Standard input cannot be sent: "},
        {{"custom-default", "import", "-"}, std::string((16U << 20U) + 1, 'x'), "38 Unable to read standard input: "},
    };
    for (const Row& row : rows)
    {
        const Finished finished = Run(row.Arguments, row.Input);
        EXPECT_EQ(finished.Errors.find(std::string("tavrine: ") + row.Says), 0U) << finished.Errors;
    }
}

TEST_F(ProgramReturn, OneSettingUnderTwoNamesIsNeitherRestoredNorCompared)
{
    for (const char* lines :
         {"BootFailLimit=1\nUEFI.BootFailLimit=2\n", "BIOS.BootFailLimit=1\nUEFI.BootFailLimit=2\n"})
    {
        const std::string file = Folder().Write("two.conf", lines);
        for (const std::vector<std::string>& words : {std::vector<std::string>{"compare", file}, {"restore", file}})
        {
            const Finished refused = Run(words);
            EXPECT_EQ(refused.Status, 16) << words.front();
            EXPECT_THAT(refused.Errors, testing::HasSubstr("setting BootFailLimit stands in it under two names"));
        }
    }
}

TEST_F(ProgramReturn, AFileOfAnotherKindOfSystemMeansTheSameToARestoreAndAComparison)
{
    const std::string file = Folder().Write("other.conf", "BIOS.BootFailLimit=3\n");
    EXPECT_EQ(Run({"compare", file}).Output, "UEFI.BootFailLimit\t5\t3\n");
    const Finished restored = Run({"restore", file, "--dry-run"});
    EXPECT_EQ(restored.Status, 0) << restored.Errors;
    EXPECT_EQ(restored.Output, "UEFI.BootFailLimit\t3\twould be sent\n");
}

TEST_F(ProgramReturn, AFileWithAPrefixOfItsOwnMeansTheSameToARestoreAndAComparison)
{
    for (const char* name : {"rack.json", "rack.conf"})
    {
        Good({"--prefix", "Rack,Rack", "save", Name(name)});
        ASSERT_THAT(Content(name), testing::HasSubstr("Rack.BootFailLimit"));
        const Finished compared = Run({"compare", Name(name), "--changed"});
        EXPECT_EQ(compared.Output, "");
        EXPECT_EQ(compared.Errors, "");
        EXPECT_EQ(Run({"compare", Name(name), "BootFailLimit"}).Output, "UEFI.BootFailLimit\t5\t5\n");
        const Finished restored = Run({"restore", Name(name), "--dry-run"});
        EXPECT_EQ(restored.Status, 0) << restored.Errors;
        EXPECT_THAT(restored.Output, testing::HasSubstr("UEFI.BootFailLimit\t5\tin place\n"));
    }
}

TEST_F(ProgramReturn, OldNamesOfAFileMeanTheSameToARestoreAndAComparison)
{
    const std::string config = Folder().Write("names.toml", "[legacy_names]\nOldOwner = \"AssetOwner\"\n");
    const std::string file = Folder().Write("old.conf", "OldOwner=Nobody\n");
    const auto run = [&](const std::string& command)
    {
        Launch launch;
        launch.Arguments = {"--simulate", "--state", Name("state.json"), "--legacy-names", command, file};
        launch.Variables["TAVRINE_CONFIG"] = config;
        return RunToEnd(launch);
    };
    const Finished restored = run("restore");
    EXPECT_EQ(restored.Status, 0) << restored.Errors;
    EXPECT_EQ(restored.Output, "UEFI.AssetOwner\tNobody\tsent, takes effect after a reboot\n");
    EXPECT_EQ(run("compare").Output, "UEFI.AssetOwner\tComputing Centre\tNobody\n");
    Folder().Write("old.conf", "OldOwner=Nobody\nAssetOwner=Nobody\n");
    for (const std::string command : {"restore", "compare"})
    {
        const Finished refused = run(command);
        EXPECT_EQ(refused.Status, 16);
        EXPECT_NE(refused.Errors.find(": the setting AssetOwner stands in it under two names\n"), std::string::npos)
            << refused.Errors;
    }
}

TEST_F(ProgramReturn, ARestoreReadsTheValuesOnceBeforeItsChangeAndOnceBehindIt)
{
    const RunningBmc bmc({"--access-log", Name("log")});
    const Finished restored = RunToEnd(bmc.Tool({"restore", Folder().Write("saved.conf", "BootFailLimit=3\n")}));
    EXPECT_EQ(restored.Status, 0) << restored.Errors;
    EXPECT_EQ(restored.Output, "BIOS.BootFailLimit\t3\tsent, takes effect after a reboot\n");
    std::istringstream lines(Content("log"));
    std::string requests;
    for (std::string line; std::getline(lines, line);)
    {
        const json::value request = Parsed(line);
        if (request.at("path").as_string().ends_with("/Bios/Settings"))
        {
            requests += request.at("method").as_string();
            requests += ' ';
        }
    }
    EXPECT_EQ(requests, "GET PATCH GET ");
}

TEST_F(ProgramReturn, ADryRunChangesNothing)
{
    Good({"save", Name("saved.json")});
    Good({"set", "BootFailLimit=3"});
    Good({"reboot", "--wait", "20"});
    const std::string before = Content("state.json");
    const Finished dry = Run({"restore", Name("saved.json"), "--dry-run"});
    EXPECT_EQ(dry.Status, 0) << dry.Errors;
    EXPECT_NE(dry.Output.find("UEFI.BootFailLimit\t5\twould be sent\n"), std::string::npos);
    EXPECT_EQ(Content("state.json"), before);
}

TEST_F(ProgramReturn, AFileOfAnotherModelNeedsForce)
{
    Folder().Write("other.json",
                   R"({"version":1,"model":"Another","settings":{"UEFI.BootFailLimit":"3","UEFI.Strange":"x"}})");
    const Finished refused = Run({"restore", Name("other.json")});
    EXPECT_EQ(refused.Status, 16);
    EXPECT_NE(refused.Errors.find("its model is Another"), std::string::npos) << refused.Errors;
    const Finished forced = Run({"restore", Name("other.json"), "--force"});
    EXPECT_EQ(forced.Status, 20);
    EXPECT_NE(forced.Errors.find("1 setting of the file is not known to this system and left out: Strange"),
              std::string::npos)
        << forced.Errors;
    EXPECT_EQ(forced.Output, "UEFI.BootFailLimit\t3\tsent, takes effect after a reboot\n"
                             "UEFI.Strange\tx\tnot sent: this system does not know the setting\n");
}

TEST_F(ProgramReturn, HostileFilesAreNamedAndNothingIsSent)
{
    const std::string before = Run({"show"}).Output;
    for (const std::string content :
         {R"({"settings":{"UEFI.BootFailLimit":{}}})", R"({"settings":{"UEFI.BootFailLimit":"3)",
          R"({"settings":{"UEFI.BootFailLimit":"3","UEFI.BootFailLimit":"4"}})",
          "UEFI.BootFailLimit=3\nUEFI.BootFailLimit=4\n", "UEFI.BootFailLimit=\xFF\n", "UEFI.BootFailLimit=\\x4\n",
          R"({"settings":{"UEFI.BootFailLimit":null,"UEFI.BootFailLimit":"3"}})",
          R"({"settings":{"UEFI.BootFailLimit":1.5}})", R"({"settings":{"UEFI.BootFailLimit":["3"]}})",
          "{\"settings\":{\"UEFI.BootFailLimit\":\"\xFF\"}}"})
    {
        Folder().Write("hostile", content);
        const Finished restored = Run({"restore", Name("hostile")});
        EXPECT_EQ(restored.Status, 16) << content;
        EXPECT_NE(restored.Errors.find("The file " + Name("hostile")), std::string::npos) << restored.Errors;
        EXPECT_NE(restored.Errors.find("BootFailLimit"), std::string::npos) << restored.Errors;
    }
    EXPECT_EQ(Run({"pending"}).Output, NothingPending);
    EXPECT_EQ(Run({"show"}).Output, before);
}

TEST_F(ProgramReturn, AHundredThousandUnknownNamesAreLeftOut)
{
    constexpr int Count = 100'000;
    std::string lines = "UEFI.BootFailLimit=3\n";
    for (int number = 0; number < Count; ++number)
    {
        lines += "UEFI.Strange" + std::to_string(Count + number) + "=x\n";
    }
    Folder().Write("many.conf", lines);
    const Finished restored = Run({"restore", Name("many.conf")});
    EXPECT_EQ(restored.Status, 20);
    EXPECT_EQ(restored.Errors,
              "tavrine: 20 100000 settings of the file are not known to this system and left out: Strange100000, "
              "Strange100001, Strange100002, Strange100003, Strange100004 and 99995 more\n"
              "tavrine: warning: the file does not tell which system it is from\n");
    EXPECT_EQ(std::count(restored.Output.begin(), restored.Output.end(), '\n'), Count + 1);
    EXPECT_TRUE(restored.Output.starts_with("UEFI.BootFailLimit\t3\tsent, takes effect after a reboot\n"));
    EXPECT_EQ(Run({"pending"}).Output, "UEFI.BootFailLimit=5 -> 3\n");
}

TEST_F(ProgramReturn, AnExistingFileOutlivesASaveThatCannotRead)
{
    const RunningBmc bmc;
    Folder().Write("saved.json", "what was there");
    Launch launch = bmc.Tool({"save", Name("saved.json")});
    launch.Variables["TAVRINE_PASSWORD"] = "wrong";
    EXPECT_EQ(RunToEnd(launch).Status, 24);
    EXPECT_EQ(Content("saved.json"), "what was there");
}

TEST_F(ProgramReturn, ASaveThatMayLackWhatWaitsIsWrittenAndFails)
{
    struct Row
    {
        const char* Fault;
        int Status;
    };
    const Row rows[] = {{"status 500", 32}, {"close-before", 24}, {"busy 5", 33}, {"status 404", 26}};
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.Fault);
        const RunningBmc bmc({"--fault", std::string("GET */Bios/Settings ") + row.Fault});
        const Finished saved = RunToEnd(bmc.Tool({"--retries", "0", "save", Name("saved.conf")}));
        EXPECT_EQ(saved.Status, row.Status) << saved.Errors;
        EXPECT_NE(saved.Errors.find("tavrine: " + std::to_string(row.Status) +
                                    " The values that wait for a reboot could not be read, so that what is saved may "
                                    "lack some: "),
                  std::string::npos)
            << saved.Errors;
        EXPECT_NE(Content("saved.conf").find("\nBIOS.BootFailLimit=5\n"), std::string::npos);
        const Finished data = RunToEnd(bmc.Tool({"--retries", "0", "--json", "save"}));
        EXPECT_EQ(data.Status, row.Status);
        const json::value document = Parsed(data.Output);
        EXPECT_EQ(document.at("code"), row.Status);
        EXPECT_EQ(document.at("settings").at("BIOS.BootFailLimit"), "5");
        EXPECT_EQ(document.at("errors").at(0).at("code"), row.Status);
    }
}

TEST_F(ProgramReturn, ASaveOfABmcThatHasNothingWaitingIsNoFailure)
{
    const TestMachine machine; // names no settings object
    Launch launch;
    launch.Arguments = {"--simulate", "--machine", machine.Path(), "save", Name("saved.conf")};
    const Finished saved = RunToEnd(launch);
    EXPECT_EQ(saved.Status, 0) << saved.Errors;
    EXPECT_EQ(saved.Errors.find("could not be read"), std::string::npos) << saved.Errors;
}

TEST_F(ProgramReturn, ASaveOfNothingIsTold)
{
    Launch launch;
    launch.Arguments = {"--simulate", "--machine", (testdata::SharedData() / "openstack-sushy").string(), "save",
                        Name("saved.json")};
    const Finished finished = RunToEnd(launch);
    EXPECT_EQ(finished.Status, 0) << finished.Errors;
    EXPECT_EQ(finished.Errors, "tavrine: warning: there is nothing to save: no setting that the BMC reports can be "
                               "changed by its attribute registry, or the configuration hides them\n"
                               "tavrine: 0 settings saved in " +
                                   Name("saved.json") + "\n");
}

TEST_F(ProgramReturn, ADeviceIsNoPlaceForASave)
{
    const Finished device = Run({"save", "/dev/full"});
    EXPECT_EQ(device.Status, 38);
    EXPECT_NE(device.Errors.find("Unable to write the file /dev/full: is no plain file"), std::string::npos)
        << device.Errors;
    Launch launch;
    launch.Arguments = {"--simulate", "save"};
    launch.OutputFile = "/dev/full";
    const Finished full = RunToEnd(launch);
    EXPECT_EQ(full.Status, 15);
    EXPECT_NE(full.Errors.find("Unable to write to standard output: No space left on device"), std::string::npos)
        << full.Errors;
}

TEST_F(ProgramReturn, AnExistingFileOutlivesAFullDisk)
{
    const RunningBmc bmc;
    Folder().Write("saved.json", "what was there");
    Launch launch = bmc.Tool({"save", Name("saved.json")});
    // A write beyond the limit fails as one to a full disk does.
    launch.Arguments.insert(launch.Arguments.begin(),
                            {"-c", "trap '' XFSZ; ulimit -f 1; exec \"$@\"", "sh", launch.Program});
    launch.Program = "/bin/sh";
    const Finished finished = RunToEnd(launch);
    EXPECT_EQ(finished.Status, 38);
    EXPECT_NE(finished.Errors.find("Unable to write the file " + Name("saved.json") + ": File too large"),
              std::string::npos)
        << finished.Errors;
    EXPECT_EQ(Content("saved.json"), "what was there");
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(Folder().Path()))
    {
        files += entry.is_regular_file() ? 1U : 0U;
    }
    EXPECT_EQ(files, 1U) << "a temporary file is left";
}

TEST_F(ProgramReturn, AMissingFolderIsNamed)
{
    const Finished finished = Run({"save", Name("no/such/saved.json")});
    EXPECT_EQ(finished.Status, 38);
    EXPECT_NE(finished.Errors.find(Name("no/such/saved.json") + ": No such file or directory"), std::string::npos);
}

TEST_F(ProgramReturn, DefaultsAreLoadedOneByOne)
{
    Good({"set", "BootFailLimit=3", "AssetOwner=Someone"});
    Good({"reboot", "--wait", "20"});
    const Finished loaded = Run({"loaddefault", "BootFailLimit", "--reboot", "--wait", "20"});
    EXPECT_EQ(loaded.Status, 0) << loaded.Errors;
    EXPECT_EQ(loaded.Output, "UEFI.BootFailLimit: sent, takes effect after a reboot\n1 of 1 new values are in force\n");
    EXPECT_EQ(Shown("BootFailLimit"), "UEFI.BootFailLimit=5\n");
    EXPECT_EQ(Shown("AssetOwner"), "UEFI.AssetOwner=Someone\n");
    EXPECT_EQ(Run({"loaddefault", "BootFailLimit"}).Output, "UEFI.BootFailLimit: in place\n");
    EXPECT_EQ(Run({"loaddefault", "Strange"}).Status, 20);
}

TEST_F(ProgramReturn, WhatWipesAMachineNeedsYes)
{
    Good({"set", "BootFailLimit=3"});
    Good({"reboot", "--wait", "20"});
    for (const std::vector<std::string>& refused :
         {std::vector<std::string>{"loaddefault", "UEFI"}, std::vector<std::string>{"loaddefault", "UEFI", "--post"},
          std::vector<std::string>{"loaddefault", "BIOS", "--yes"},
          std::vector<std::string>{"loaddefault", "UEFI", "AssetOwner", "--yes"},
          std::vector<std::string>{"loaddefault", "Asset*", "--yes"}})
    {
        EXPECT_EQ(Run(refused).Status, 64) << refused.back();
    }
    Good({"reboot", "--wait", "20"});
    EXPECT_EQ(Shown("BootFailLimit"), "UEFI.BootFailLimit=3\n");
    for (const std::vector<std::string>& way : {std::vector<std::string>{}, std::vector<std::string>{"--post"}})
    {
        std::vector<std::string> arguments = {"loaddefault", "UEFI", "--yes", "--reboot", "--wait", "20"};
        arguments.insert(arguments.end(), way.begin(), way.end());
        Good({"set", "BootFailLimit=3"});
        Good({"reboot", "--wait", "20"});
        Good(arguments);
        EXPECT_EQ(Shown("BootFailLimit"), "UEFI.BootFailLimit=5\n");
    }
}

TEST_F(ProgramReturn, AnImportAfterAnExportLeavesTheFileAsItWas)
{
    const std::string content = "a \"quoted\"\nline\\ \xC3\xBC\t{\"Content\":\"x\"}";
    Folder().Write("in", content);
    Good({"custom-default", "import", Name("in")});
    EXPECT_EQ(Run({"custom-default", "export", "-"}).Output, content);
    Good({"custom-default", "export", Name("out")});
    EXPECT_EQ(Content("out"), content);
    Good({"custom-default", "import", Name("out")});
    EXPECT_EQ(Run({"custom-default", "export", "-"}).Output, content);
    const Finished fromInput = Run({"custom-default", "import", "-"}, "a=b");
    EXPECT_EQ(fromInput.Status, 0) << fromInput.Errors;
    EXPECT_EQ(Run({"custom-default", "export", "-"}).Output, "a=b");
    for (const char* source : {"-", "/dev/stdin", "/dev/null"})
    {
        const Finished fromNothing = Run({"custom-default", "import", source}, "");
        EXPECT_EQ(fromNothing.Status, 16) << source;
        EXPECT_THAT(fromNothing.Errors, testing::HasSubstr("is empty and no plain file")) << source;
        EXPECT_EQ(Run({"custom-default", "export", "-"}).Output, "a=b");
    }
    Folder().Write("in", "");
    Good({"custom-default", "import", Name("in")});
    EXPECT_EQ(Run({"custom-default", "export", "-"}).Output, "");
    Folder().Write("in", "\xFF");
    EXPECT_EQ(Run({"custom-default", "import", Name("in")}).Status, 16);
    EXPECT_EQ(Run({"custom-default", "carry", Name("in")}).Status, 64);
}

TEST_F(ProgramReturn, ResultsTellOfTheLastStart)
{
    Good({"set", "BootFailLimit=3"});
    Good({"reboot"});
    const Finished results = Run({"--json", "results"});
    EXPECT_EQ(results.Status, 0) << results.Errors;
    const json::value told = Parsed(results.Output).at("results");
    EXPECT_FALSE(told.at("time").as_string().empty());
    EXPECT_FALSE(told.at("messages").as_array().empty());
}
