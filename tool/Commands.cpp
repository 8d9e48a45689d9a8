#include "Command.h"

#include <array>

#include "CompareCommand.h"
#include "CustomDefaultCommand.h"
#include "DescribeCommand.h"
#include "FindCommand.h"
#include "GroupsCommand.h"
#include "LoadDefaultCommand.h"
#include "MetadataCommands.h"
#include "PendingCommand.h"
#include "PowerCommands.h"
#include "RestoreCommand.h"
#include "SaveCommand.h"
#include "SchemaCommand.h"
#include "SetCommand.h"
#include "ShowCommand.h"

namespace Tavrine::Tool
{

std::span<const Command> Commands()
{
    static constexpr std::array Table = {
        Command{"show", "Show settings and their values", "[NAME ...]",
                "Settings to show, with or without the prefix, or shell patterns; all of them without a name", 0,
                nullptr, "settings", RunShow},
        Command{"groups", "List the menu groups and their settings", "[GROUP ...]",
                "Groups to list, exactly or as shell patterns; all of them without a name", 0, nullptr, "groups",
                RunGroups},
        Command{"values", "Show the values that settings take", "[NAME ...]",
                "Settings or shell patterns; all settings without a name", 0, nullptr, "values", RunValues},
        Command{"defaults", "Show the defaults of settings", "[NAME ...]",
                "Settings or shell patterns; all settings without a name", 0, nullptr, "defaults", RunDefaults},
        Command{"describe", "Show everything about a setting", "NAME ...", "Settings or shell patterns", 1, nullptr,
                "settings", RunDescribe},
        Command{"schema", "Export the attribute registry with the current values", "[FILE]",
                "File to write; standard output without one", 0, nullptr, "schema", RunSchema, SchemaFault},
        Command{"compare", "Show two values of settings side by side", "defaults|pending|FILE [NAME ...]",
                "defaults, pending or a saved FILE, then settings or shell patterns; all settings without a name", 1,
                AddCompareOptions, "settings", RunCompare},
        Command{"find", "Find settings by what is said about them", "WORD ...",
                "What to look for in names, texts and values, in whatever case; all of several", 1, AddFindOptions,
                "settings", RunFind, FindFault},
        Command{"set", "Change settings, all of them checked first", "NAME=VALUE ...",
                "Settings and their new values; NAME=- for a value from standard input", 1, AddSetOptions, "settings",
                RunSet, SetFault},
        Command{"pending", "Show what waits for a reboot", "[NAME ...]",
                "Settings to look at, protected ones too; all ordinary ones without a name", 0, nullptr, "settings",
                RunPending},
        Command{"save", "Save all settings, in lines where the file's name ends in .txt or .conf", "[FILE]",
                "File to write; standard output without one", 0, nullptr, "settings", RunSave, SaveFault},
        Command{"restore", "Bring back saved settings", "FILE", "File to read, - for standard input", 1,
                AddRestoreOptions, "settings", RunRestore, RestoreFault},
        Command{"loaddefault", "Load defaults", "UEFI|BIOS|NAME ...",
                "UEFI or BIOS for all settings, or the names of settings", 1, AddLoadDefaultOptions, "settings",
                RunLoadDefault, LoadDefaultFault},
        Command{"custom-default", "Read or write the file of custom defaults that the BMC keeps", "export|import FILE",
                "export or import, and a file, - for standard output or input", 2, nullptr, "customDefault",
                RunCustomDefault, CustomDefaultFault},
        Command{"reboot", "Restart the system", "[TYPE]",
                "Type of the reset: On, ForceOn, GracefulRestart (default), ForceRestart, PowerCycle or FullPowerCycle",
                0, AddPowerOptions, "reboot", RunReboot, RebootTypeFault},
        Command{"results", "Show what became of the changes at the last start", nullptr, nullptr, 0, nullptr, "results",
                RunResults},
    };
    return Table;
}

} // namespace Tavrine::Tool
