#pragma once

#include <string>
#include <vector>

namespace Tavrine::Tool
{

struct Options;

/// The prefixes of shown names that are in force.
struct Prefixes
{
    /// In front of single settings.
    std::string First;
    /// In front of a whole group's.
    std::string Second;
};

/// Those that the options ask for, or the library's own: what Bmc::Front makes has them.
Prefixes PrefixesOf(const Options& options);

/// The bare name of a setting: a leading "PREFIX." goes when it is one of those in
/// force, in whatever case.
std::string BareName(const std::string& name, const Prefixes& prefixes);

/// The bare names in the order in which they were given, each once.
std::vector<std::string> BareNames(const std::vector<std::string>& names, const Prefixes& prefixes);

/// The name that a setting has now under an old one of the configuration file (LegacyNamesTable); any other name stays
/// as it is, and so does each where old names are not asked for.
std::string CurrentName(const std::string& name, bool legacyNames);

/// A message of the library, in which the first "setting NAME" becomes "setting SHOWN".
/// @param name  the bare name as the message has it: in the answers of a setting manager the name that it was asked
///              about, or the setting's key; in those of a front object the name that it was asked about, and where
///              that is an old name and the registry has no such setting, the new one.
std::string WithShownName(std::string message, const std::string& name, const std::string& shownName);

/// What the library and the tool read of the configuration file: an item and a table.
inline constexpr const char* HiddenKeywordsItem = "HIDDEN_CONFIG_KEYWORDS_LIST";
inline constexpr const char* LegacyNamesTable = "legacy_names";

/// The configured keywords of settings that are not to be shown
/// (HiddenKeywordsItem): split at commas, white space and double quotes
/// taken out. Nothing is configured: none.
std::vector<std::string> HiddenKeywords();

/// The keywords of one configured text.
std::vector<std::string> SplitKeywords(const std::string& text);

/// Whether one of the keywords occurs in the shown name; an empty one always does.
bool IsHidden(const std::string& shownName, const std::vector<std::string>& keywords);

} // namespace Tavrine::Tool
