#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include "ChildProcess.h"
#include "ParsedJson.h"
#include "RunningBmc.h"
#include "SharedData.h"
#include "TestMachine.h"

using namespace tooltest;

namespace json = boost::json;

namespace
{

/// The attributes of a Bios resource under the names that the tool shows.
json::object Expected(const std::string& bios, const std::string& prefix)
{
    json::object expected;
    const json::value resource = Parsed(bios);
    for (const auto& attribute : resource.at("Attributes").as_object())
    {
        expected[prefix + "." + std::string(attribute.key())] = attribute.value();
    }
    return expected;
}

Launch Simulated(const TestMachine& machine, std::vector<std::string> arguments)
{
    Launch launch;
    launch.Arguments = {"--simulate", "--machine", machine.Path()};
    launch.Arguments.insert(launch.Arguments.end(), arguments.begin(), arguments.end());
    return launch;
}

} // namespace

TEST(ProgramShow, JsonEqualsTheAttributesOfEveryMachine)
{
    if (testdata::Machines().empty())
    {
        GTEST_SKIP() << "no machines in " << testdata::SharedData();
    }
    for (const auto& machine : testdata::Machines())
    {
        SCOPED_TRACE(machine.string());
        const RunningBmc bmc({"--machine", machine.string()});
        const Finished shown = RunToEnd(bmc.Tool({"show", "--json"}));
        EXPECT_EQ(shown.Status, 0);
        EXPECT_EQ(shown.Errors, "");
        const json::value document = Parsed(shown.Output);
        EXPECT_EQ(document.at("code"), 0);
        EXPECT_EQ(document.at("message"), "Succeed.");
        EXPECT_EQ(document.at("errors"), json::array());
        EXPECT_EQ(document.at("settings").as_object(), Expected(testdata::ReadFile(machine / "bios.json"), "BIOS"));
    }
}

TEST(ProgramShow, EveryNameThatAMachineReportsCanBeShownByItself)
{
    if (testdata::Machines().empty())
    {
        GTEST_SKIP() << "no machines in " << testdata::SharedData();
    }
    for (const auto& machine : testdata::Machines())
    {
        SCOPED_TRACE(machine.string());
        const RunningBmc bmc({"--machine", machine.string()});
        std::vector<std::string> arguments = {"show", "--json"};
        json::object expected = Expected(testdata::ReadFile(machine / "bios.json"), "BIOS");
        for (auto setting = expected.begin(); setting != expected.end();)
        {
            setting = setting->value().is_null() ? expected.erase(setting) : setting + 1;
        }
        for (const auto& setting : expected)
        {
            arguments.emplace_back(setting.key());
        }
        const Finished shown = RunToEnd(bmc.Tool(arguments));
        EXPECT_EQ(shown.Status, 0);
        EXPECT_EQ(shown.Errors, "");
        EXPECT_EQ(Parsed(shown.Output).at("settings").as_object(), expected);
    }
}

TEST(ProgramShow, TheBuiltInMachineIsAUefiSystem)
{
    Launch launch;
    launch.Arguments = {"show", "--simulate", "--json"};
    const Finished uefi = RunToEnd(launch);
    EXPECT_EQ(uefi.Status, 0) << uefi.Errors;
    const json::value settings = Parsed(uefi.Output).at("settings");
    EXPECT_FALSE(settings.as_object().empty());
    for (const auto& setting : settings.as_object())
    {
        EXPECT_TRUE(setting.key().starts_with("UEFI.")) << setting.key();
    }
    launch.Arguments.insert(launch.Arguments.end(), {"--system-type", "bios"});
    const json::value asBios = Parsed(RunToEnd(launch).Output).at("settings");
    EXPECT_EQ(asBios.as_object().size(), settings.as_object().size());
    EXPECT_TRUE(asBios.as_object().begin()->key().starts_with("BIOS."));
}

TEST(ProgramShow, TextIsOneLineASettingInByteOrder)
{
    const TestMachine machine;
    const Finished shown = RunToEnd(Simulated(machine, {"show"}));
    EXPECT_EQ(shown.Status, 0) << shown.Errors;
    EXPECT_EQ(shown.Output, "UEFI.Loose=31\n"
                            "UEFI.Mode=Uefi\n"
                            "UEFI.NumLock=true\n"
                            "UEFI.Owner=a\\\\b\\nc\\td\\x01\xC3\xBC\n"
                            "UEFI.Timeout=255\n");
    EXPECT_EQ(shown.Errors, "");
}

TEST(ProgramShow, OptionsOfTheOutputWorkTogether)
{
    TestMachine machine;
    machine.AddProtected();
    struct Row
    {
        std::vector<std::string> Arguments;
        std::string Output;
    };
    const Row rows[] = {
        {{"show", "Timeout", "--hex"}, "UEFI.Timeout=0xFF\n"},
        {{"show", "Loose", "--hex"}, "UEFI.Loose=0x1F\n"},
        {{"--system-type", "bios", "show", "bios.Timeout", "NumLock", "Timeout"},
         "BIOS.NumLock=true\nBIOS.Timeout=255\n"},
        {{"show", "--prefix", "One,Two", "one.Mode", "Two.Timeout", "Loose"},
         "One.Loose=31\nOne.Mode=Uefi\nOne.Timeout=255\n"},
        {{"show", "--protected", "UEFI.Seal"}, "UEFI.Seal=unbroken\n"},
        {{"show", "--protected", "Seal", "Loose"}, "UEFI.Loose=31\nUEFI.Seal=unbroken\n"},
        {{"show", "--json", "--hex", "Timeout", "Loose"},
         "{\"code\":0,\"message\":\"Succeed.\",\"settings\":{\"UEFI.Loose\":31,\"UEFI.Timeout\":255},\"errors\":[]}\n"},
        {{"show", "--json", "--prefix", "A,B", "--protected", "Seal"},
         "{\"code\":0,\"message\":\"Succeed.\",\"settings\":{\"A.Seal\":\"unbroken\"},\"errors\":[]}\n"},
    };
    for (const Row& row : rows)
    {
        const Finished shown = RunToEnd(Simulated(machine, row.Arguments));
        EXPECT_EQ(shown.Output, row.Output);
        EXPECT_EQ(shown.Errors, "");
        EXPECT_EQ(shown.Status, 0);
    }
}

TEST(ProgramShow, ProtectedSettingsNameTheirOptionWhateverIsAskedOfThem)
{
    const char* const hint = "tavrine: hint: protected settings need --protected\n";
    TestMachine machine;
    machine.AddProtected();
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"show", "Seal"}, {"set", "Seal=x"}, {"pending", "Seal"}})
    {
        EXPECT_NE(RunToEnd(Simulated(machine, words)).Errors.find(hint), std::string::npos) << words.front();
        std::vector<std::string> allowed = words;
        allowed.insert(allowed.begin(), "--protected");
        EXPECT_EQ(RunToEnd(Simulated(machine, allowed)).Errors.find(hint), std::string::npos) << words.front();
    }
}

TEST(ProgramShow, EachNameFailsForItself)
{
    TestMachine machine;
    machine.AddProtected();
    const Finished shown = RunToEnd(Simulated(machine, {"show", "Nowhere", "Mode", "Seal", "Empty", "timeout"}));
    EXPECT_EQ(shown.Output, "UEFI.Mode=Uefi\n");
    for (const char* line : {"tavrine: 20 Unable to find the setting UEFI.Nowhere\n",
                             "tavrine: 34 The operation on setting Seal fails since it is hidden.\n",
                             "tavrine: 8 The setting UEFI.Empty cannot be shown since it has no current value info.\n",
                             "tavrine: 20 Unable to find the setting UEFI.timeout",
                             "tavrine: hint: protected settings need --protected\n"})
    {
        EXPECT_NE(shown.Errors.find(line), std::string::npos) << shown.Errors;
    }
    EXPECT_EQ(std::count(shown.Errors.begin(), shown.Errors.end(), '\n'), 5) << shown.Errors;
    EXPECT_EQ(shown.Status, 20);

    const Finished reversed = RunToEnd(Simulated(machine, {"show", "--json", "Seal", "Nowhere", "Mode"}));
    EXPECT_EQ(reversed.Status, 34);
    const json::value document = Parsed(reversed.Output);
    EXPECT_EQ(document.at("code"), 34);
    EXPECT_EQ(document.at("settings"), Parsed(R"({"UEFI.Mode":"Uefi"})"));
    ASSERT_EQ(document.at("errors").as_array().size(), 2U);
    EXPECT_EQ(document.at("errors").at(1),
              Parsed(R"({"setting":"UEFI.Nowhere","code":20,"message":"Unable to find the setting UEFI.Nowhere"})"));
}

TEST(ProgramShow, AServiceWithoutTheOemActionsIsToldFromOthers)
{
    const TestMachine machine;
    const Finished shown = RunToEnd(Simulated(machine, {"show", "--protected", "Seal"}));
    EXPECT_EQ(shown.Status, 28) << shown.Errors;
    EXPECT_NE(shown.Errors.find("--system-type bios"), std::string::npos) << shown.Errors;
    EXPECT_EQ(RunToEnd(Simulated(machine, {"show"})).Status, 0);
}

TEST(ProgramShow, TheStateFileIsKept)
{
    const TestMachine machine;
    const std::string state = (machine.Folder().Path() / "state.json").string();
    const Finished first = RunToEnd(Simulated(machine, {"--state", state, "show"}));
    EXPECT_EQ(first.Status, 0) << first.Errors;
    EXPECT_TRUE(std::filesystem::exists(state));
    EXPECT_EQ(RunToEnd(Simulated(machine, {"--state", state, "show"})).Output, first.Output);
}

TEST(ProgramShow, OldNamesAreTakenFromTheConfiguration)
{
    const TestMachine machine;
    Launch launch = Simulated(machine, {"--legacy-names", "show", "OldMode"});
    launch.Variables["TAVRINE_CONFIG"] = machine.Folder().Write("config.toml", "[legacy_names]\nOldMode = \"Mode\"\n");
    EXPECT_EQ(RunToEnd(launch).Output, "UEFI.Mode=Uefi\n");
    launch.Arguments.insert(launch.Arguments.end(), {"--prefix", "Srv"});
    EXPECT_EQ(RunToEnd(launch).Output, "OldMode=Uefi\n");
    launch.Arguments.emplace_back("--json");
    EXPECT_EQ(Parsed(RunToEnd(launch).Output).at("settings"), Parsed(R"({"OldMode":"Uefi"})"));
}

TEST(ProgramShow, HiddenKeywordsHideInBothForms)
{
    const TestMachine machine;
    Launch launch = Simulated(machine, {"show"});
    launch.Variables["TAVRINE_CONFIG"] =
        machine.Folder().Write("config.toml", "HIDDEN_CONFIG_KEYWORDS_LIST = \"Loose, Owner, Num\"\n");
    EXPECT_EQ(RunToEnd(launch).Output, "UEFI.Mode=Uefi\nUEFI.Timeout=255\n");
    launch.Arguments.emplace_back("--json");
    EXPECT_EQ(Parsed(RunToEnd(launch).Output).at("settings"),
              Parsed(R"({"UEFI.Empty":null,"UEFI.Mode":"Uefi","UEFI.Timeout":255})"));
}

TEST(ProgramShow, WarnsOfWhatNobodyReadsInTheConfiguration)
{
    const TestMachine machine;
    Launch launch = Simulated(machine, {"show", "Mode"});
    const std::string config =
        machine.Folder().Write("config.toml", "HIDDEN_KEYWORDS = \"Mode\"\n[legacy_names]\nA = 1\n");
    launch.Variables["TAVRINE_CONFIG"] = config;
    const Finished shown = RunToEnd(launch);
    EXPECT_EQ(shown.Status, 0);
    EXPECT_EQ(shown.Output, "UEFI.Mode=Uefi\n");
    EXPECT_EQ(shown.Errors, "tavrine: warning: " + config + ": line 1: HIDDEN_KEYWORDS is not known\n" +
                                "tavrine: warning: " + config + ": line 3: legacy_names.A is no text and left out\n");
}

TEST(ProgramGroups, LinesAndJsonNameSettingsAsShowDoes)
{
    const TestMachine machine;
    const Finished lines = RunToEnd(Simulated(machine, {"groups"}));
    EXPECT_EQ(lines.Status, 0) << lines.Errors;
    EXPECT_EQ(lines.Output, "Boot Options\tUEFI.Mode\nBoot Options\tUEFI.Timeout\n"
                            "Key\\tboard\tUEFI.Empty\nKey\\tboard\tUEFI.NumLock\nKey\\tboard\tUEFI.Owner\n"
                            "Key\\tboard\tUEFI.Seal\n");
    const Finished data = RunToEnd(Simulated(machine, {"groups", "--json"}));
    EXPECT_EQ(Parsed(data.Output), Parsed(R"({"code":0,"message":"Succeed.","groups":{
        "Boot Options":["UEFI.Mode","UEFI.Timeout"],
        "Key\tboard":["UEFI.Empty","UEFI.NumLock","UEFI.Owner","UEFI.Seal"]},"errors":[]})"));
}
