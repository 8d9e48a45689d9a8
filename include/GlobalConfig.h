#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "Export.h"

namespace Tavrine
{

/// The configuration of this machine: one TOML file, read at first use and kept.
/// It is the file that TAVRINE_CONFIG names, else
/// `$XDG_CONFIG_HOME/tavrine/config.toml` (`~/.config` where that variable is
/// unset), else `/etc/tavrine/config.toml`; the first that exists. No file at all
/// is no failure, save that TAVRINE_CONFIG must name one that exists. At most 1 MiB
/// is read. Safe from any thread.
class TAVRINE_EXPORT GlobalConfig
{
  public:
    /// The item `key` of the top level as text: a string as it stands, an integer
    /// in decimal, a boolean or other number in TOML's own form, an array of these
    /// joined by commas. An empty array counts as missing.
    /// @return 0 and `value` filled when it is there; 1 when it is not, or is of
    ///         another kind; 2 when the file cannot be read or is no TOML
    ///         (`value` is untouched then; LoadError() tells more).
    static int GetConfigItem(const std::string key, std::string& value);

    /// The string members of the top-level table `name`, in byte order; empty
    /// where there is none.
    static std::map<std::string, std::string> GetTable(const std::string& name);

    /// Empty when the configuration is usable, else one line that names file,
    /// line, column and cause.
    static std::string LoadError();

    /// What the file has and nobody reads, since it is mistyped, most likely: items and tables of
    /// other names than these, and what is of a kind that GetConfigItem or GetTable leaves out, save
    /// an empty array under the name of an item.
    /// One line each that names file, line and name; at most ten, and one that counts the others.
    /// Empty for a file that cannot be used, see LoadError().
    static std::vector<std::string> Unread(const std::set<std::string>& items, const std::set<std::string>& tables);

    /// Forgets what was read, so that the next use reads anew.
    static void Reload();
};

} // namespace Tavrine
