#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <set>
#include <sstream>
#include <thread>

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

using Words = std::vector<std::string>;

/// The machines of the shared data, and "" for the built-in one.
Words AllMachines()
{
    Words machines = {""};
    for (const auto& machine : testdata::Machines())
    {
        machines.push_back(machine.string());
    }
    return machines;
}

Launch On(const std::string& machine, const Words& arguments)
{
    Launch launch;
    launch.Arguments = {"--simulate"};
    if (!machine.empty())
    {
        launch.Arguments.insert(launch.Arguments.end(), {"--machine", machine});
    }
    launch.Arguments.insert(launch.Arguments.end(), arguments.begin(), arguments.end());
    return launch;
}

json::object DataOf(const Launch& launch, const char* member)
{
    Launch asked = launch;
    asked.Arguments.emplace_back("--json");
    const Finished finished = RunToEnd(asked);
    EXPECT_EQ(finished.Status, 0) << finished.Errors;
    const json::value document = Parsed(finished.Output);
    const json::object* object = document.if_object();
    const json::value* data = object != nullptr ? object->if_contains(member) : nullptr;
    EXPECT_TRUE(data != nullptr && data->is_object());
    return data != nullptr && data->is_object() ? data->get_object() : json::object();
}

/// Takes the current values out of a registry. @return them by name.
json::object TakeCurrentValues(json::value& registry)
{
    json::object values;
    for (json::value& attribute : registry.at("RegistryEntries").at("Attributes").as_array())
    {
        json::object& members = attribute.as_object();
        if (const json::value* value = members.if_contains("CurrentValue"))
        {
            values[members.at("AttributeName").as_string()] = *value;
            members.erase("CurrentValue");
        }
    }
    return values;
}

/// Attributes of the registry that a machine serves, those without a name left out.
json::object Attributes(const std::string& machine)
{
    json::object attributes;
    const json::object registry = DataOf(On(machine, {"schema"}), "schema");
    for (const json::value& attribute : registry.at("RegistryEntries").at("Attributes").as_array())
    {
        attributes["UEFI." + std::string(attribute.at("AttributeName").as_string())] = attribute;
    }
    return attributes;
}

std::set<std::string> Keys(const json::object& object)
{
    std::set<std::string> keys;
    for (const auto& member : object)
    {
        keys.emplace(member.key());
    }
    return keys;
}

/// The first cells of lines.
std::set<std::string> FirstCells(const std::string& text, char end)
{
    std::set<std::string> cells;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
    {
        cells.insert(line.substr(0, line.find(end)));
    }
    return cells;
}

/// GET requests that one run sends, the login and logout around it left out.
Words RequestsOf(const Words& arguments, const std::string& machine)
{
    const testdata::TemporaryFolder folder;
    const std::string log = (folder.Path() / "access").string();
    const RunningBmc bmc({"--machine", machine, "--access-log", log});
    EXPECT_EQ(RunToEnd(bmc.Tool(arguments)).Status, 0);
    Words requests;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    for (bool ended = false; !ended && std::chrono::steady_clock::now() < deadline; std::this_thread::yield())
    {
        requests.clear();
        std::istringstream lines(testdata::ReadFile(log));
        for (std::string line; std::getline(lines, line);)
        {
            ended = ended || line.find("\"DELETE\"") != std::string::npos;
            if (line.find("\"GET\"") != std::string::npos)
            {
                requests.push_back(Parsed(line).at("path").as_string().c_str());
            }
        }
    }
    return requests;
}

} // namespace

TEST(ProgramKnow, EveryAttributeHasADescriptionValuesAndAGroup)
{
    for (const std::string& machine : AllMachines())
    {
        SCOPED_TRACE(machine);
        const std::set<std::string> attributes = Keys(Attributes(machine));
        ASSERT_FALSE(attributes.empty());
        EXPECT_EQ(Keys(DataOf(On(machine, {"values"}), "values")), attributes);
        std::set<std::string> grouped;
        for (const auto& group : DataOf(On(machine, {"groups"}), "groups"))
        {
            EXPECT_FALSE(group.key().empty());
            for (const json::value& name : group.value().as_array())
            {
                EXPECT_TRUE(grouped.emplace(name.as_string()).second) << name;
            }
        }
        EXPECT_EQ(grouped, attributes);
        const json::object described = DataOf(On(machine, {"describe", "*"}), "settings");
        EXPECT_EQ(Keys(described), attributes);
        for (const auto& setting : described)
        {
            EXPECT_TRUE(setting.value().at("menu").is_string()) << setting.key();
            EXPECT_TRUE(setting.value().at("validValues").is_string()) << setting.key();
            EXPECT_TRUE(setting.value().at("type").is_string()) << setting.key();
            EXPECT_TRUE(setting.value().at("displayName").is_string()) << setting.key();
        }
    }
}

TEST(ProgramKnow, DescriptionsAgreeWithTheOtherCommands)
{
    for (const std::string& machine : AllMachines())
    {
        SCOPED_TRACE(machine);
        const json::object described = DataOf(On(machine, {"describe", "*"}), "settings");
        const json::object shown = DataOf(On(machine, {"show"}), "settings");
        const json::object defaults = DataOf(On(machine, {"defaults"}), "defaults");
        const json::object values = DataOf(On(machine, {"values"}), "values");
        for (const auto& [name, setting] : described)
        {
            const json::value* value = shown.if_contains(name);
            EXPECT_EQ(setting.at("value"), value != nullptr ? *value : json::value()) << name;
            EXPECT_EQ(setting.at("default").is_null(), !defaults.contains(name)) << name;
            EXPECT_EQ(setting.at("validValues"), values.at(name)) << name;
        }
    }
}

TEST(ProgramKnow, TheSchemaIsTheRegistryButForTheCurrentValues)
{
    if (testdata::Machines().empty())
    {
        GTEST_SKIP() << "no machines in " << testdata::SharedData();
    }
    for (const auto& machine : testdata::Machines())
    {
        SCOPED_TRACE(machine.string());
        json::value expected = Parsed(testdata::ReadFile(machine / "registry.en.json"));
        const json::object ofRegistry = TakeCurrentValues(expected);
        const Finished exported = RunToEnd(On(machine.string(), {"schema"}));
        EXPECT_EQ(exported.Status, 0) << exported.Errors;
        json::value registry = Parsed(exported.Output);
        const json::object written = TakeCurrentValues(registry);
        EXPECT_EQ(registry, expected);

        json::object current = Parsed(testdata::ReadFile(machine / "bios.json")).at("Attributes").as_object();
        if (std::filesystem::exists(machine / "settings.json"))
        {
            const json::value settings = Parsed(testdata::ReadFile(machine / "settings.json"));
            for (const auto& pending : settings.at("Attributes").as_object())
            {
                if (current.contains(pending.key()))
                {
                    current[pending.key()] = pending.value();
                }
            }
        }
        for (const auto& [name, value] : written)
        {
            const json::value* reported = current.if_contains(name);
            const json::value* own = ofRegistry.if_contains(name);
            EXPECT_EQ(value, reported != nullptr && !reported->is_null() ? *reported
                             : own != nullptr                            ? *own
                                                                         : json::value())
                << name;
        }
        EXPECT_FALSE(written.empty());
    }
}

TEST(ProgramKnow, TheSchemaGoesToAFile)
{
    const testdata::TemporaryFolder folder;
    const std::string file = (folder.Path() / "schema.json").string();
    const Finished written = RunToEnd(On("", {"schema", file}));
    EXPECT_EQ(written.Status, 0) << written.Errors;
    EXPECT_EQ(written.Output, "");
    EXPECT_EQ(testdata::ReadFile(file), RunToEnd(On("", {"schema"})).Output);
    EXPECT_EQ(RunToEnd(On("", {"schema", "/dev/null"})).Status, 38);
    EXPECT_EQ(RunToEnd(On("", {"schema", file, file})).Status, 64);
}

TEST(ProgramKnow, ProtectedValuesAreExportedOnlyWhenThatIsAllowed)
{
    TestMachine machine;
    machine.AddProtected();
    const auto exported = [&](const Words& arguments) { return RunToEnd(On(machine.Path(), arguments)).Output; };
    EXPECT_EQ(exported({"schema"}).find("unbroken"), std::string::npos);
    EXPECT_NE(exported({"schema", "--protected"}).find("unbroken"), std::string::npos);
    EXPECT_EQ(exported({"describe", "Seal"}).find("unbroken"), std::string::npos);
    EXPECT_NE(exported({"describe", "Seal", "--protected"}).find("unbroken"), std::string::npos);
}

TEST(ProgramKnow, ProtectedSettingsOfAFileAreComparedWhereThatIsAllowed)
{
    TestMachine machine;
    machine.AddProtected();
    const std::string file = machine.Folder().Write("saved", "Seal=broken\nMode=Legacy\nEmpty=x\n");
    Words words = {"compare", file};
    const Finished withheld = RunToEnd(On(machine.Path(), words));
    EXPECT_EQ(withheld.Status, 0);
    EXPECT_EQ(withheld.Output, "UEFI.Empty\t\\N\tx\nUEFI.Mode\tUefi\tLegacy\nUEFI.Seal\t\\N\tbroken\n");
    EXPECT_EQ(withheld.Errors, "tavrine: note: 1 of 3 settings of the file are protected, so that their values are "
                               "not read; give --protected\n"
                               "tavrine: note: 1 of 3 settings of the file have no value on the machine\n");
    words.emplace_back("--protected");
    const Finished read = RunToEnd(On(machine.Path(), words));
    EXPECT_EQ(read.Status, 0);
    EXPECT_EQ(read.Output, "UEFI.Empty\t\\N\tx\nUEFI.Mode\tUefi\tLegacy\nUEFI.Seal\tunbroken\tbroken\n");
    EXPECT_EQ(read.Errors, "tavrine: note: 1 of 3 settings of the file have no value on the machine\n");
    words.insert(words.begin(), {"--system-type", "bios"});
    EXPECT_NE(RunToEnd(On(machine.Path(), words)).Errors.find("2 of 3 settings of the file have no value on the"),
              std::string::npos);
}

TEST(ProgramKnow, ABmcWithoutTheActionsFailsOnceForAllProtectedSettingsOfAFile)
{
    const TestMachine machine;
    const Finished compared = RunToEnd(
        On(machine.Path(), {"--protected", "compare", machine.Folder().Write("saved", "Seal=broken\nMode=Uefi\n")}));
    EXPECT_NE(compared.Status, 0);
    EXPECT_EQ(compared.Output, "UEFI.Mode\tUefi\tUefi\nUEFI.Seal\t\\N\tbroken\n");
    EXPECT_NE(compared.Errors.find("hint: the BMC lacks the OEM actions for protected settings"), std::string::npos)
        << compared.Errors;
    EXPECT_EQ(compared.Errors.find("have no value on the machine"), std::string::npos) << compared.Errors;
}

TEST(ProgramKnow, WhatWasSavedEqualsTheMachine)
{
    const testdata::TemporaryFolder folder;
    for (const std::string& machine : AllMachines())
    {
        SCOPED_TRACE(machine);
        for (const Words& form : {Words{"show"}, Words{"show", "--json"}, Words{"show", "--hex"}})
        {
            const std::string file = folder.Write("saved", RunToEnd(On(machine, form)).Output);
            const Finished compared = RunToEnd(On(machine, {"compare", file, "--changed"}));
            EXPECT_EQ(compared.Status, 0);
            EXPECT_EQ(compared.Output, "");
            EXPECT_EQ(compared.Errors, "");
            EXPECT_NE(RunToEnd(On(machine, {"compare", file})).Output, "");
        }
    }
}

TEST(ProgramKnow, APasswordOfAFileIsNotShown)
{
    const testdata::TemporaryFolder folder;
    const std::string file = folder.Write("saved.conf", "AdminPassword=Sup3rS3cret\nUEFI.NumLock=TRUE\n");
    const Finished compared = RunToEnd(On("", {"compare", file, "--changed"}));
    EXPECT_EQ(compared.Status, 0) << compared.Errors;
    EXPECT_EQ(compared.Output, "UEFI.AdminPassword\t\\N\t********\n");
    EXPECT_EQ(RunToEnd(On("", {"compare", file, "--json"})).Output.find("Sup3r"), std::string::npos);
}

TEST(ProgramKnow, WhatWaitsDoesNotMatterToAFile)
{
    const RunningBmc bmc({"--fault", "GET */Bios/Settings status 500"});
    const testdata::TemporaryFolder folder;
    const std::string file = folder.Write("saved.conf", "BootPromptSeconds=9\n");
    const Finished compared = RunToEnd(bmc.Tool({"compare", file}));
    EXPECT_EQ(compared.Status, 0);
    EXPECT_EQ(compared.Output, "BIOS.BootPromptSeconds\t5\t9\n");
    EXPECT_EQ(compared.Errors, "");
}

TEST(ProgramKnow, PatternsSelectInEveryCommandThatTakesThem)
{
    const TestMachine machine;
    const std::string file = machine.Folder().Write("saved", "Mode=Legacy\nTimeout=255\n");
    struct Row
    {
        Words Arguments;
        int Status;
        std::string Output;
    };
    const Row rows[] = {
        {{"show", "*o*e*", "Loose"}, 0, "UEFI.Loose=31\nUEFI.Mode=Uefi\n"},
        {{"show", "uefi.M*"}, 0, "UEFI.Mode=Uefi\n"},
        {{"show", "Zz*"}, 20, ""},
        {{"values", "M*"}, 0, "UEFI.Mode=Uefi; Legacy\n"},
        {{"values", "Zz*"}, 20, ""},
        {{"defaults", "M*"}, 0, ""},
        {{"defaults", "Mode"}, 21, ""},
        {{"defaults", "Zz*"}, 20, ""},
        {{"compare", "defaults", "M*"}, 0, ""},
        {{"compare", "defaults", "Zz*"}, 20, ""},
        {{"compare", file, "M*"}, 0, "UEFI.Mode\tUefi\tLegacy\n"},
        {{"compare", file, "Zz*"}, 20, ""},
        {{"groups", "Boot*"}, 0, "Boot Options\tUEFI.Mode\nBoot Options\tUEFI.Timeout\n"},
        {{"groups", "Boot Options"}, 0, "Boot Options\tUEFI.Mode\nBoot Options\tUEFI.Timeout\n"},
        {{"groups", "Boot"}, 20, ""},
    };
    for (const Row& row : rows)
    {
        const Finished finished = RunToEnd(On(machine.Path(), row.Arguments));
        EXPECT_EQ(finished.Status, row.Status) << row.Arguments[0] << ": " << finished.Errors;
        EXPECT_EQ(finished.Output, row.Output) << row.Arguments[0];
        if (row.Status != 0)
        {
            EXPECT_NE(finished.Errors.find(row.Arguments.back()), std::string::npos) << finished.Errors;
        }
    }
}

TEST(ProgramKnow, PatternsCostNoMoreRequestsThanAll)
{
    const TestMachine machine;
    EXPECT_EQ(RequestsOf({"show", "M*", "T*", "*o*"}, machine.Path()), RequestsOf({"show"}, machine.Path()));
    EXPECT_EQ(RequestsOf({"values", "M*", "T*"}, machine.Path()), RequestsOf({"values"}, machine.Path()));
    EXPECT_EQ(RequestsOf({"defaults", "M*", "T*"}, machine.Path()), RequestsOf({"defaults"}, machine.Path()));
    EXPECT_EQ(RequestsOf({"compare", "defaults", "M*"}, machine.Path()),
              RequestsOf({"compare", "defaults"}, machine.Path()));
    EXPECT_FALSE(RequestsOf({"show"}, machine.Path()).empty());
}

TEST(ProgramKnow, DescribingManySettingsCostsNoMoreRequestsThanOne)
{
    const TestMachine machine;
    const Words one = RequestsOf({"describe", "Mode"}, machine.Path());
    EXPECT_FALSE(one.empty());
    EXPECT_EQ(RequestsOf({"describe", "Mode", "Timeout", "NumLock", "Owner"}, machine.Path()), one);
    EXPECT_EQ(RequestsOf({"describe", "*"}, machine.Path()), one);
}

TEST(ProgramKnow, NothingPendingIsAGoodAnswer)
{
    const Finished text = RunToEnd(On("", {"compare", "pending"}));
    EXPECT_EQ(text.Status, 0);
    EXPECT_EQ(text.Output, "");
    EXPECT_EQ(text.Errors, "tavrine: note: Nothing is pending; passwords and protected settings are not looked at.\n");
    const Finished data = RunToEnd(On("", {"compare", "pending", "--json"}));
    EXPECT_EQ(data.Status, 0);
    EXPECT_EQ(Parsed(data.Output), Parsed(R"({"code":0,
        "message":"Nothing is pending; passwords and protected settings are not looked at.","settings":{},"errors":[]})"));
}

TEST(ProgramKnow, SettingsWithoutADefaultAreANoteAndNoFailure)
{
    const TestMachine machine;
    const Finished all = RunToEnd(On(machine.Path(), {"defaults"}));
    EXPECT_EQ(all.Status, 0);
    EXPECT_EQ(all.Errors, "tavrine: note: 6 of 6 settings have no default value\n");
}

TEST(ProgramKnow, HiddenKeywordsHideInEveryGroupForm)
{
    const testdata::TemporaryFolder folder;
    const std::string config = folder.Write("config.toml", "HIDDEN_CONFIG_KEYWORDS_LIST = \"Boot, Proc\"\n");
    const std::string saved = folder.Write("saved", RunToEnd(On("", {"show"})).Output);
    const auto hidden = [](const std::string& name)
    { return name.find("Boot") != std::string::npos || name.find("Proc") != std::string::npos; };
    const Words forms[] = {
        {"show"},
        {"show", "*"},
        {"groups"},
        {"values"},
        {"values", "*"},
        {"defaults"},
        {"find", "e"},
        {"defaults", "*"},
        {"compare", "defaults"},
        {"compare", "defaults", "*"},
        {"compare", saved},
        {"compare", saved, "*"},
    };
    for (const Words& form : forms)
    {
        SCOPED_TRACE(form[0] + " " + form.back());
        Launch launch = On("", form);
        const std::string open = RunToEnd(launch).Output;
        launch.Variables["TAVRINE_CONFIG"] = config;
        const Finished closed = RunToEnd(launch);
        EXPECT_EQ(closed.Status, 0) << closed.Errors;
        const auto names = [&](const std::string& text)
        {
            std::set<std::string> found;
            std::istringstream lines(text);
            for (std::string line; std::getline(lines, line);)
            {
                const std::size_t start = form[0] == "groups" ? line.find('\t') + 1 : 0;
                found.insert(line.substr(start, line.find_first_of("=\t", start) - start));
            }
            return found;
        };
        std::set<std::string> expected = names(open);
        EXPECT_GT(std::erase_if(expected, hidden), 0U);
        EXPECT_FALSE(expected.empty());
        EXPECT_EQ(names(closed.Output), expected);
    }
    Launch described = On("", {"describe", "*"});
    described.Variables["TAVRINE_CONFIG"] = config;
    for (const std::string& name : Keys(DataOf(described, "settings")))
    {
        EXPECT_FALSE(hidden(name)) << name;
    }
}

TEST(ProgramKnow, FindsByTextsOfTheLanguageThatWasAskedFor)
{
    const auto machine = testdata::SharedData() / "hpe-DL360";
    if (!std::filesystem::exists(machine))
    {
        GTEST_SKIP() << "no " << machine;
    }
    const Finished found = RunToEnd(On(machine.string(), {"--lang", "ja", "find", "ハイパースレッデ"}));
    EXPECT_EQ(found.Status, 0) << found.Errors;
    EXPECT_EQ(FirstCells(found.Output, '\t').count("UEFI.ProcHyperthreading"), 1U) << found.Output;
    EXPECT_EQ(RunToEnd(On(machine.string(), {"find", "ハイパースレッデ"})).Status, 20);
    const Finished data = RunToEnd(On(machine.string(), {"--lang", "ja", "describe", "ProcVirtualization", "--json"}));
    EXPECT_NE(data.Output.find("仮想化オプション"), std::string::npos) << data.Output;
}

TEST(ProgramKnow, ALanguageThatTheBmcLacksIsEnglish)
{
    const Finished english = RunToEnd(On("", {"describe", "BootMode"}));
    const Finished klingon = RunToEnd(On("", {"--lang", "tlh", "describe", "BootMode"}));
    EXPECT_EQ(klingon.Status, 0) << klingon.Errors;
    EXPECT_EQ(klingon.Output, english.Output);
    EXPECT_EQ(english.Output.find("UEFI.BootMode\n  Display name"), 0U) << english.Output;
}

TEST(ProgramKnow, AReaderThatGoesAwayIsNoError)
{
    const testdata::TemporaryFolder folder;
    const std::string saved = folder.Write("saved", RunToEnd(On("", {"show"})).Output);
    const Words forms[] = {{"groups"},
                           {"values"},
                           {"defaults"},
                           {"describe", "*"},
                           {"schema"},
                           {"find", "e"},
                           {"compare", "defaults"},
                           {"compare", saved},
                           {"describe", "*", "--json"}};
    for (const Words& form : forms)
    {
        for (const std::size_t bytes : {std::size_t{0}, std::size_t{20}})
        {
            Launch launch = On("", form);
            launch.ReadAtMost = bytes;
            const Finished finished = RunToEnd(launch);
            EXPECT_EQ(finished.Status, 0) << form[0];
            EXPECT_FALSE(finished.Killed);
            EXPECT_EQ(finished.Errors.find("write"), std::string::npos) << finished.Errors;
        }
    }
    Launch failing = On("", {"describe", "*", "Nowhere"});
    failing.ReadAtMost = 0;
    EXPECT_EQ(RunToEnd(failing).Status, 20);
}

TEST(ProgramKnow, WrongWordsAreRefusedBeforeAnythingIsOpened)
{
    for (const Words& arguments : {Words{"find"}, Words{"find", "--regex", "("}, Words{"find", ""}, Words{"describe"},
                                   Words{"compare"}, Words{"values", "--regex"}, Words{"show", "--changed"}})
    {
        EXPECT_EQ(RunToEnd(On("/nonexistent", arguments)).Status, 64) << arguments[0];
    }
    EXPECT_EQ(RunToEnd(On("", {"compare", "/nonexistent/file"})).Status, 38);
}
