#include "Command.h"

#include <array>

#include "GroupsCommand.h"
#include "ShowCommand.h"

namespace Tavrine::Tool
{

std::span<const Command> Commands()
{
    static constexpr std::array Table = {
        Command{"show", "Show settings and their values",
                "Settings to show, with or without the prefix; all of them without a name", 0, nullptr, "settings",
                RunShow},
        Command{"groups", "List the menu groups and their settings", nullptr, 0, nullptr, "groups", RunGroups},
    };
    return Table;
}

} // namespace Tavrine::Tool
