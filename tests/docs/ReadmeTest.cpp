// README.md shows what the programs do.

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "../tool/ChildProcess.h"
#include "Command.h"
#include "Examples.h"
#include "Options.h"
#include "SharedData.h"
#include "TemporaryFolder.h"

using docs::Example;
using docs::ExamplesOf;

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
