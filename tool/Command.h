#pragma once

#include <span>

#include "Answer.h"

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
    /// Help for the names that may follow; null when the command takes none.
    const char* NamesHelp;
    /// The command's own member of the JSON document.
    const char* JsonMember;
    Answer (*Run)(const Options& options, Bmc& bmc);
};

std::span<const Command> Commands();

} // namespace Tavrine::Tool
