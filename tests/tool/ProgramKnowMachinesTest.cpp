// What the tool knows about every attribute of every machine, held against the machine's own files.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <initializer_list>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include "ChildProcess.h"
#include "OnTerminal.h"
#include "ParsedJson.h"
#include "RunningBmc.h"
#include "SharedData.h"
#include "TestMachine.h"

using namespace tooltest;

namespace json = boost::json;

namespace
{

using Words = std::vector<std::string>;

/// Folder of the built-in machine, and those of the shared data.
std::vector<std::filesystem::path> EveryFolder()
{
    std::vector<std::filesystem::path> folders = testdata::Machines();
    folders.insert(folders.begin(), MACHINE_FOLDER);
    return folders;
}

Words Joined(Words first, const Words& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Launch Simulated(const Words& arguments)
{
    Launch launch;
    launch.Arguments = Joined({"--simulate"}, arguments);
    return launch;
}

Launch On(const std::filesystem::path& machine, const Words& arguments)
{
    // The built-in machine is the one that needs no words.
    return Simulated(machine == MACHINE_FOLDER ? arguments : Joined({"--machine", machine.string()}, arguments));
}

json::value Document(Launch launch, int status = 0)
{
    launch.Arguments.emplace_back("--json");
    const Finished finished = RunToEnd(launch);
    EXPECT_EQ(finished.Status, status) << finished.Errors;
    return Parsed(finished.Output);
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

std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
    {
        lines.push_back(line);
    }
    return lines;
}

json::array AttributesOf(const json::value& registry)
{
    return registry.at("RegistryEntries").at("Attributes").as_array();
}

std::string MemberText(const json::value& attribute, const char* member)
{
    const json::value* value = attribute.as_object().if_contains(member);
    return value != nullptr && value->is_string() ? std::string(value->as_string()) : std::string();
}

std::string TextOrEmpty(const json::value& value)
{
    return value.is_string() ? std::string(value.as_string()) : std::string();
}

/// Texts that the tool gives of a setting beside those of the registry that it serves.
void ExpectTexts(const json::object& described, const json::value& registry)
{
    for (const json::value& attribute : AttributesOf(registry))
    {
        const std::string name = "UEFI." + MemberText(attribute, "AttributeName");
        const json::value& setting = described.at(name);
        EXPECT_EQ(TextOrEmpty(setting.at("displayName")), MemberText(attribute, "DisplayName")) << name;
        EXPECT_EQ(TextOrEmpty(setting.at("help")), MemberText(attribute, "HelpText")) << name;
        EXPECT_EQ(TextOrEmpty(setting.at("warning")), MemberText(attribute, "WarningText")) << name;
        EXPECT_EQ(TextOrEmpty(setting.at("type")), MemberText(attribute, "Type")) << name;
        EXPECT_NE(TextOrEmpty(setting.at("displayName")), "") << name;
        EXPECT_NE(TextOrEmpty(setting.at("validValues")), "") << name;
        EXPECT_NE(TextOrEmpty(setting.at("menu")), "") << name;
    }
}

/// Values that a machine reports, pending ones in front.
json::object ReportedValues(const std::filesystem::path& machine)
{
    json::object values = Parsed(testdata::ReadFile(machine / "bios.json")).at("Attributes").as_object();
    if (std::filesystem::exists(machine / "settings.json"))
    {
        const json::value settings = Parsed(testdata::ReadFile(machine / "settings.json"));
        for (const auto& pending : settings.at("Attributes").as_object())
        {
            if (values.contains(pending.key()))
            {
                values[pending.key()] = pending.value();
            }
        }
    }
    return values;
}

/// A registry as it is to be exported: a reported value stands in place of what was there,
/// null only where nothing was.
json::value WithCurrentValues(json::value registry, const json::object& reported)
{
    for (json::value& attribute : registry.at("RegistryEntries").at("Attributes").as_array())
    {
        json::object& members = attribute.as_object();
        const json::value* value = reported.if_contains(members.at("AttributeName").as_string());
        if (value != nullptr && (!value->is_null() || !members.contains("CurrentValue")))
        {
            members["CurrentValue"] = *value;
        }
    }
    return registry;
}

class KnownMachine : public testing::TestWithParam<std::filesystem::path>
{
  protected:
    json::value m_Registry = Parsed(testdata::ReadFile(GetParam() / "registry.en.json"));

    std::set<std::string> ShownNames() const
    {
        std::set<std::string> names;
        for (const json::value& attribute : AttributesOf(m_Registry))
        {
            names.insert("UEFI." + MemberText(attribute, "AttributeName"));
        }
        return names;
    }
};

} // namespace

TEST_P(KnownMachine, EachAttributeHasValuesAndOneGroup)
{
    const std::set<std::string> names = ShownNames();
    ASSERT_FALSE(names.empty());
    const json::value values = Document(On(GetParam(), {"values"}));
    EXPECT_EQ(Keys(values.at("values").as_object()), names);
    for (const auto& setting : values.at("values").as_object())
    {
        EXPECT_NE(TextOrEmpty(setting.value()), "") << setting.key();
    }
    EXPECT_EQ(Lines(RunToEnd(On(GetParam(), {"values"})).Output).size(), names.size());
    std::multiset<std::string> grouped;
    for (const std::string& line : Lines(RunToEnd(On(GetParam(), {"groups"})).Output))
    {
        const std::size_t tab = line.find('\t');
        ASSERT_NE(tab, std::string::npos) << line;
        EXPECT_NE(tab, 0U) << line;
        grouped.insert(line.substr(tab + 1));
    }
    EXPECT_EQ(grouped, std::multiset<std::string>(names.begin(), names.end()));
}

TEST_P(KnownMachine, EachAttributeIsDescribedInTheWordsOfTheRegistry)
{
    const json::value described = Document(On(GetParam(), {"describe", "*"}));
    EXPECT_EQ(Keys(described.at("settings").as_object()), ShownNames());
    ExpectTexts(described.at("settings").as_object(), m_Registry);
}

TEST_P(KnownMachine, OneSettingIsDescribedAsItIsAmongAll)
{
    const json::value all = Document(On(GetParam(), {"describe", "*"}));
    const std::set<std::string> names = ShownNames();
    const std::size_t step = names.size() / 8 + 1;
    std::size_t index = 0;
    for (const std::string& name : names)
    {
        if (index++ % step == 0)
        {
            const json::value one = Document(On(GetParam(), {"describe", name}));
            EXPECT_EQ(one.at("settings").at(name), all.at("settings").at(name)) << name;
        }
    }
}

TEST_P(KnownMachine, TheSchemaIsTheRegistryWithEveryReportedValue)
{
    const json::value expected = WithCurrentValues(m_Registry, ReportedValues(GetParam()));
    const Finished text = RunToEnd(On(GetParam(), {"schema"}));
    EXPECT_EQ(text.Status, 0) << text.Errors;
    const bool same = Parsed(text.Output) == expected;
    EXPECT_TRUE(same);
    const bool sameData = Document(On(GetParam(), {"schema"})).at("schema") == expected;
    EXPECT_TRUE(sameData);
}

TEST_P(KnownMachine, EveryAnswerIsOneJsonDocument)
{
    const std::string bare = ShownNames().begin()->substr(5);
    const Words commands[] = {{"groups"}, {"values", bare},        {"describe", bare},
                              {"schema"}, {"compare", "defaults"}, {"find", bare}};
    for (const Words& command : commands)
    {
        const json::value document = Document(On(GetParam(), command));
        EXPECT_EQ(document.at("code"), 0) << command[0];
        EXPECT_EQ(document.as_object().size(), 4U) << command[0];
        EXPECT_TRUE(document.at("errors").as_array().empty()) << command[0];
    }
    for (const Words& command :
         {Words{"values", "NoSuchName"}, Words{"defaults", "NoSuchName"}, Words{"show", "No*Such"},
          Words{"describe", "NoSuchName"}, Words{"compare", "defaults", "NoSuchName"}, Words{"groups", "NoSuchName"},
          Words{"find", "NoSuchName"}})
    {
        const json::value document = Document(On(GetParam(), command), 20);
        EXPECT_EQ(document.at("code"), 20) << command[0];
        EXPECT_EQ(document.at("errors").as_array().size(), 1U) << command[0];
    }
}

namespace
{

std::string NameOfMachine(const testing::TestParamInfo<std::filesystem::path>& machine)
{
    std::string name = machine.param == MACHINE_FOLDER ? "BuiltIn" : machine.param.filename().string();
    std::erase_if(name, [](char character) { return std::isalnum(static_cast<unsigned char>(character)) == 0; });
    return name;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Every, KnownMachine, testing::ValuesIn(EveryFolder()), NameOfMachine);

namespace
{

class JapaneseMachine : public testing::Test
{
  protected:
    std::filesystem::path m_Machine = testdata::SharedData() / "hpe-DL360";

    void SetUp() override
    {
        if (!std::filesystem::exists(m_Machine))
        {
            GTEST_SKIP() << "no " << m_Machine;
        }
    }

    /// Runs on a terminal of so many columns. @return its lines, each within them.
    Words ShownOn(unsigned short columns, const Words& command) const
    {
        OnTerminal tool(On(m_Machine, Joined({"--lang", "ja"}, command)), columns);
        EXPECT_EQ(tool.ReadToEnd(), 0);
        Words lines = Lines(tool.Shown());
        // What takes long is told there too, beside the answer.
        std::erase_if(lines, [](const std::string& line) { return line.starts_with("tavrine: reading"); });
        for (std::string& line : lines)
        {
            line.erase(line.find_last_not_of('\r') + 1);
            const std::optional<std::size_t> width = ColumnsOf(line);
            EXPECT_TRUE(width) << "no UTF-8: " << line;
            EXPECT_LE(width.value_or(0), columns) << line;
        }
        return lines;
    }
};

} // namespace

TEST_F(JapaneseMachine, EachAttributeIsDescribedInJapanese)
{
    const json::value registry = Parsed(testdata::ReadFile(m_Machine / "registry.ja.json"));
    const json::value described = Document(On(m_Machine, {"--lang", "ja", "describe", "*"}));
    ExpectTexts(described.at("settings").as_object(), registry);
}

TEST_F(JapaneseMachine, DescriptionsKeepTheirTextAtEveryWidth)
{
    const json::value described = Document(On(m_Machine, {"--lang", "ja", "describe", "ProcVirtualization"}));
    std::string help(described.at("settings").at("UEFI.ProcVirtualization").at("help").as_string());
    const auto withoutBlanks = [](std::string text)
    {
        std::erase(text, ' ');
        return text;
    };
    for (const unsigned short columns : std::initializer_list<unsigned short>{28, 31, 80, 200})
    {
        std::string shown;
        for (const std::string& line : ShownOn(columns, {"describe", "ProcVirtualization"}))
        {
            shown += line;
        }
        EXPECT_NE(withoutBlanks(shown).find(withoutBlanks(help)), std::string::npos) << columns << ": " << shown;
    }
}

TEST_F(JapaneseMachine, TablesAreCutBetweenCharactersAtEveryWidth)
{
    // Every one of these settings has a display name of wide characters.
    for (const unsigned short columns : std::initializer_list<unsigned short>{40, 41, 50, 51, 63})
    {
        const Words lines = ShownOn(columns, {"find", "プロセッサ"});
        ASSERT_GT(lines.size(), 5U) << columns;
        EXPECT_TRUE(std::any_of(lines.begin(), lines.end(),
                                [](const std::string& line) { return line.find("…") != std::string::npos; }))
            << columns;
    }
}

TEST_F(JapaneseMachine, AThirdLanguageIsEnglishInEveryCommand)
{
    for (const Words& command : {Words{"describe", "ProcVirtualization"}, Words{"values", "Proc*"}, Words{"groups"},
                                 Words{"find", "hyper"}, Words{"schema"}, Words{"compare", "defaults", "Proc*"}})
    {
        const Finished english = RunToEnd(On(m_Machine, command));
        const Finished french = RunToEnd(On(m_Machine, Joined({"--lang", "fr"}, command)));
        EXPECT_EQ(french.Status, 0) << french.Errors;
        EXPECT_EQ(french.Output, english.Output) << command[0];
        EXPECT_NE(french.Output, "") << command[0];
    }
    EXPECT_NE(RunToEnd(On(m_Machine, {"--lang", "ja", "groups"})).Output, RunToEnd(On(m_Machine, {"groups"})).Output);
}

TEST(KnowLargeOutput, AHeadThatLeavesIsNotNoticed)
{
    const RunningBmc bmc({"--attributes", "3000"});
    for (const Words& command : {Words{"show"}, Words{"groups"}, Words{"values"}, Words{"defaults"}, Words{"schema"},
                                 Words{"describe", "*"}, Words{"compare", "defaults"}, Words{"find", "e", "--json"}})
    {
        SCOPED_TRACE(command[0]);
        const Launch tool = bmc.Tool(command);
        // More than a pipe holds, so that the tool is still writing when its reader goes.
        ASSERT_GT(RunToEnd(tool).Output.size(), 70000U);
        Launch shell;
        shell.Program = "/bin/bash";
        shell.Arguments = {"-c", R"("$@" | head -1 | wc -l; echo "status ${PIPESTATUS[0]}")", "bash", tool.Program};
        shell.Arguments.insert(shell.Arguments.end(), tool.Arguments.begin(), tool.Arguments.end());
        shell.Variables = tool.Variables;
        const Finished finished = RunToEnd(shell);
        EXPECT_EQ(finished.Output, "1\nstatus 0\n");
        EXPECT_EQ(finished.Errors.find("write"), std::string::npos) << finished.Errors;
    }
}

namespace
{

/// A machine whose settings object differs from the values in force.
class WaitingMachine
{
  public:
    WaitingMachine()
    {
        m_Machine.Folder().Write("machine/settings.json", R"({"@odata.id":"/redfish/v1/Systems/1/Bios/Settings",
            "Id":"Settings","Name":"Pending","Attributes":{"Mode":"Legacy","Timeout":16,"NumLock":true,"Loose":32}})");
        const std::string path = Path() + "/bios.json";
        std::string bios = testdata::ReadFile(path);
        bios.insert(1,
                    R"("@Redfish.Settings":{"SettingsObject":{"@odata.id":"/redfish/v1/Systems/1/Bios/Settings"}},)");
        m_Machine.Folder().Write("machine/bios.json", bios);
    }

    std::string Path() const { return m_Machine.Path(); }
    const testdata::TemporaryFolder& Folder() const { return m_Machine.Folder(); }

  private:
    TestMachine m_Machine;
};

} // namespace

TEST(KnowPending, NamesAndPatternsSelect)
{
    const WaitingMachine machine;
    struct Row
    {
        Words Arguments;
        int Status;
        std::string Output;
    };
    const Row rows[] = {
        {{}, 0, "UEFI.Loose\t31\t32\nUEFI.Mode\tUefi\tLegacy\nUEFI.Timeout\t255\t16\n"},
        {{"*o*e*"}, 0, "UEFI.Loose\t31\t32\nUEFI.Mode\tUefi\tLegacy\n"},
        {{"uefi.M*", "Timeout"}, 0, "UEFI.Mode\tUefi\tLegacy\nUEFI.Timeout\t255\t16\n"},
        {{"T*", "--hex"}, 0, "UEFI.Timeout\t0xFF\t0x10\n"},
        {{"Loose"}, 0, "UEFI.Loose\t31\t32\n"},
        {{"Num*"}, 0, ""},
        {{"NumLock"}, 0, ""},
        {{"Zz*"}, 20, ""},
        {{"Zz"}, 20, ""},
    };
    for (const Row& row : rows)
    {
        const Finished finished = RunToEnd(On(machine.Path(), Joined({"compare", "pending"}, row.Arguments)));
        EXPECT_EQ(finished.Status, row.Status) << finished.Errors;
        EXPECT_EQ(finished.Output, row.Output) << (row.Arguments.empty() ? "" : row.Arguments[0]);
    }
}

TEST(KnowPending, PatternsCostNoMoreRequestsThanAll)
{
    const WaitingMachine machine;
    const auto requests = [&](const Words& words)
    {
        const std::string log = (machine.Folder().Path() / "log").string();
        std::filesystem::remove(log);
        const Finished finished =
            RunToEnd(On(machine.Path(), Joined({"--log-level", "4", "--log-file", log, "compare", "pending"}, words)));
        EXPECT_EQ(finished.Status, 0) << finished.Errors;
        Words found;
        for (const std::string& line : Lines(testdata::ReadFile(log)))
        {
            if (const std::size_t at = line.find("GET ");
                at != std::string::npos && line.find(" to ") != std::string::npos)
            {
                found.push_back(line.substr(at, line.find(" to ") - at));
            }
        }
        return found;
    };
    const Words all = requests({});
    EXPECT_FALSE(all.empty());
    EXPECT_EQ(requests({"M*", "T*"}), all);
    EXPECT_EQ(requests({"M*", "Num*"}), all);
}

TEST(KnowPending, NothingPendingIsStatusZeroInEveryForm)
{
    for (const Words& command : {Words{"pending"}, Words{"pending", "BootMode"}, Words{"compare", "pending"},
                                 Words{"compare", "pending", "BootMode"}, Words{"compare", "pending", "Boot*"}})
    {
        const Finished text = RunToEnd(Simulated(command));
        EXPECT_EQ(text.Status, 0) << text.Errors;
        EXPECT_EQ(text.Output, command[0] != "pending" ? ""
                               : command.size() == 1   ? NothingPending
                                                       : "Nothing is pending.\n");
        const json::value document = Document(Simulated(command));
        EXPECT_EQ(document.at("code"), 0);
        EXPECT_TRUE(document.at("settings").as_object().empty());
        EXPECT_TRUE(document.at("errors").as_array().empty());
    }
}

TEST(KnowPending, HiddenKeywordsHide)
{
    const WaitingMachine machine;
    const std::string config = machine.Folder().Write("config.toml", "HIDDEN_CONFIG_KEYWORDS_LIST = \"Mod, Loo\"\n");
    for (const Words& command : {Words{"pending"}, Words{"compare", "pending"}, Words{"compare", "pending", "*"}})
    {
        Launch launch = On(machine.Path(), command);
        EXPECT_EQ(Keys(Document(launch).at("settings").as_object()),
                  (std::set<std::string>{"UEFI.Loose", "UEFI.Mode", "UEFI.Timeout"}));
        launch.Variables["TAVRINE_CONFIG"] = config;
        EXPECT_EQ(Keys(Document(launch).at("settings").as_object()), std::set<std::string>{"UEFI.Timeout"})
            << command.back();
    }
}

TEST(KnowPending, AMachineWithoutASettingsObjectSaysSo)
{
    const TestMachine machine;
    std::string bios = testdata::ReadFile(machine.Path() + "/bios.json");
    bios.insert(1, R"("@Redfish.Settings":{"ETag":""},)");
    machine.Folder().Write("machine/bios.json", bios);
    for (const Words& command : {Words{"pending"}, Words{"compare", "pending"}, Words{"compare", "pending", "*"}})
    {
        const Finished finished = RunToEnd(On(machine.Path(), command));
        EXPECT_EQ(finished.Status, 26);
        EXPECT_EQ(finished.Output, "");
        EXPECT_EQ(finished.Errors,
                  "tavrine: 26 The BMC names no settings object, so that it does not tell what is pending.\n");
    }
    const Finished named = RunToEnd(On(machine.Path(), {"pending", "Mode"}));
    EXPECT_EQ(named.Status, 26);
    EXPECT_EQ(named.Errors, "tavrine: 26 UEFI.Mode: The BMC names no settings object, so that it does not tell what "
                            "is pending.\n");
    EXPECT_EQ(RunToEnd(On(machine.Path(), {"show", "Mode"})).Output, "UEFI.Mode=Uefi\n");
    EXPECT_EQ(RunToEnd(On(machine.Path(), {"describe", "Mode"})).Status, 0);
}
