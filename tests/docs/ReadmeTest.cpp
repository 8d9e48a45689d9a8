// README.md shows what the programs do.

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>

#include "../tool/ChildProcess.h"
#include "Command.h"
#include "Examples.h"
#include "Options.h"
#include "SharedData.h"
#include "TemporaryFolder.h"

using docs::Example;
using docs::ExamplesOf;

namespace json = boost::json;

namespace
{

std::string Readme() { return testdata::ReadFile(DOCUMENTED_PROJECT "/README.md"); }

/// Both streams of a command line, in a folder.
std::string OutputOf(const std::string& command, const std::string& folder)
{
    tooltest::Launch launch;
    launch.Program = "/bin/sh";
    launch.Arguments = {
        "-c", "exec 2>&1; cd \"$1\" && PATH=\"$2:$PATH\" && eval \"$3\"", "sh", folder, PROGRAM_FOLDER, command};
    return tooltest::RunToEnd(launch).Output;
}

std::set<std::string> LongOptions(const std::string& text)
{
    const std::regex option("--[a-z][a-z-]*");
    std::set<std::string> options;
    for (std::sregex_iterator found(text.begin(), text.end(), option), end; found != end; ++found)
    {
        options.insert(found->str());
    }
    return options;
}

/// The help of the program and of all its commands.
std::string Help()
{
    const auto helpOf = [](const std::vector<std::string>& arguments)
    {
        return Tavrine::Tool::ParseCommandLine(arguments, Tavrine::Tool::Commands(),
                                               [](const char*) { return nullptr; })
            .Text;
    };
    std::string help = helpOf({"--help"});
    for (const Tavrine::Tool::Command& command : Tavrine::Tool::Commands())
    {
        help += helpOf({command.Name, "--help"});
    }
    return help;
}

/// What stands between backticks.
std::set<std::string> Quoted(const std::string& text)
{
    const std::regex quoted("`([^`]+)`");
    std::set<std::string> words;
    for (std::sregex_iterator found(text.begin(), text.end(), quoted), end; found != end; ++found)
    {
        words.insert((*found)[1]);
    }
    return words;
}

/// The row of the table of JSON documents that tells of a command.
std::string JsonRow(const std::string& command)
{
    const std::string readme = Readme();
    const std::size_t table = readme.find("| Command | Member |");
    const std::regex row("\n\\| [^|\n]*`" + command + "`[^|\n]* \\|[^\n]*");
    std::smatch found;
    const std::string rows = readme.substr(std::min(table, readme.size()));
    return std::regex_search(rows, found, row) ? found.str() : std::string();
}

/// The names of members in what a document has under a command's own member, those of its first object where it
/// goes by setting, and of the members beside it.
std::set<std::string> MemberNames(const json::object& document, const std::string& own, bool bySetting)
{
    std::set<std::string> names = {own};
    for (const auto& member : document)
    {
        names.insert(member.key());
    }
    for (const char* const common : {"code", "message", "errors"})
    {
        names.erase(common);
    }
    const json::object& data = document.at(own).as_object();
    const json::object none;
    const json::object* const shown = !bySetting ? &data
                                      : data.empty() || !data.begin()->value().is_object()
                                          ? &none
                                          : &data.begin()->value().get_object();
    for (const auto& member : *shown)
    {
        names.insert(member.key());
    }
    return names;
}

bool Uses(const Example& example, const std::string& word)
{
    return std::regex_search(example.Command, std::regex("(^| )" + word + "( |$)"));
}

} // namespace

TEST(Readme, EveryExamplePrintsWhatItShows)
{
    const testdata::TemporaryFolder folder;
    const std::vector<Example> examples = ExamplesOf(Readme());
    ASSERT_FALSE(examples.empty());
    for (const Example& example : examples)
    {
        EXPECT_EQ(docs::Normalised(OutputOf(example.Command, folder.Path().string())), docs::Normalised(example.Output))
            << "README.md:" << example.Line << ": " << example.Command;
    }
}

TEST(Readme, EveryCommandHasAnExample)
{
    const std::vector<Example> examples = ExamplesOf(Readme());
    for (const Tavrine::Tool::Command& command : Tavrine::Tool::Commands())
    {
        EXPECT_TRUE(std::any_of(examples.begin(), examples.end(),
                                [&](const Example& example) { return Uses(example, command.Name); }))
            << command.Name;
    }
}

TEST(Readme, TellsOfEveryOptionAndOfNoOther)
{
    const std::set<std::string> known = LongOptions(Help());
    const std::set<std::string> told = LongOptions(Readme());
    ASSERT_GT(known.size(), 20U);
    for (const std::string& option : known)
    {
        EXPECT_TRUE(told.contains(option)) << option << " is missing";
    }
    // Those of the simulated BMC as a program and of cmake.
    const std::set<std::string> others = {"--all",   "--password", "--fault", "--preset",
                                          "--build", "--install",  "--prefix"};
    for (const std::string& option : told)
    {
        EXPECT_TRUE(known.contains(option) || others.contains(option)) << option << " is no option";
    }
}

TEST(Readme, TellsTheShapeOfEveryJsonDocument)
{
    struct Row
    {
        const char* Command;
        const char* Words;
        bool BySetting;
    };
    const Row rows[] = {
        {"show", "show BootFailLimit", true},
        {"groups", "groups Power", true},
        {"values", "values BootFailLimit", true},
        {"defaults", "defaults BootFailLimit", true},
        {"describe", "describe BootFailLimit", true},
        {"describe", "describe BootMode", true},
        {"describe", "describe AssetOwner", true},
        {"schema", "schema registry.json", false},
        {"compare defaults", "compare defaults BootFailLimit", true},
        {"set", "set --dry-run BootFailLimit=3", true},
        {"set", "set BootFailLimit=3 --reboot --wait 20", true},
        {"set", "set BootFailLimit=4", true},
        {"pending", "pending", true},
        {"compare pending", "compare pending", true},
        {"save", "save saved.json", true},
        {"restore", "restore saved.json --reboot --wait 20", true},
        {"compare FILE", "compare saved.json", true},
        {"find", "find boot limit", true},
        {"find", "find --regex '(a+)+$'", true},
        {"loaddefault", "loaddefault BootFailLimit --reboot --wait 20", true},
        {"custom-default", "custom-default import custom.txt", false},
        {"custom-default", "custom-default export -", false},
        {"reboot", "reboot", false},
        {"results", "results", false},
    };
    const testdata::TemporaryFolder folder;
    folder.Write("custom.txt", "BootFailLimit=3\n");
    std::set<std::string> commands;
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.Words);
        const std::string command = std::string(row.Command).substr(0, std::string(row.Command).find(' '));
        const auto known = std::ranges::find(Tavrine::Tool::Commands(), command, &Tavrine::Tool::Command::Name);
        ASSERT_NE(known, Tavrine::Tool::Commands().end());
        const std::string output =
            OutputOf(std::string("tavrine --simulate --state bmc.json --json ") + row.Words + " 2>/dev/null",
                     folder.Path().string());
        json::error_code failure;
        const json::value document = json::parse(output, failure);
        ASSERT_TRUE(!failure && document.is_object()) << output;
        const std::set<std::string> told = Quoted(JsonRow(row.Command));
        for (const std::string& name : MemberNames(document.get_object(), known->JsonMember, row.BySetting))
        {
            EXPECT_TRUE(told.contains(name)) << name << " is not told";
        }
        commands.insert(command);
    }
    EXPECT_EQ(commands.size(), Tavrine::Tool::Commands().size());
}
