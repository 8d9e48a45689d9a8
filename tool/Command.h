#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "Answer.h"

namespace CLI
{
class App;
}

namespace Tavrine::Tool
{

class Bmc;
struct Options;

/// One command of the tool. A family of commands has a file of its own and an entry
/// in the table.
struct Command
{
    const char* Name;
    const char* Summary;
    /// What may follow, as a usage line has it; null when the command takes no names.
    const char* NamesUsage;
    /// Help for these.
    const char* NamesHelp;
    /// How many names the command needs at least.
    std::size_t LeastNames;
    /// Adds the options that this command alone has; null when it has none.
    void (*AddOptions)(CLI::App& command, Options& options);
    /// The command's own member of the JSON document.
    const char* JsonMember;
    Answer (*Run)(const Options& options, Bmc& bmc);
    /// What is wrong with the options before anything is opened or asked, empty for
    /// nothing; null when the command has nothing of its own to check.
    std::string (*Check)(const Options& options) = nullptr;
};

std::span<const Command> Commands();

} // namespace Tavrine::Tool
