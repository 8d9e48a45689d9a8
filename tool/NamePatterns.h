#pragma once

#include <string>

#include "Answer.h"
#include "SettingNames.h"

namespace Tavrine::Tool
{

/// Whether a word of the command line is a shell pattern: it holds "*", "?" or "[".
bool IsPattern(const std::string& word);

/// Whether `text` as a whole matches the pattern (fnmatch; "*" crosses every character).
bool MatchesPattern(const std::string& pattern, const std::string& text);

/// A shell pattern over the names of settings. It is held against the bare name and,
/// when it has a point, against the shown ones too; so "B*" means names with a B and
/// not all of "BIOS.…". A prefix in force may stand in front, in whatever case.
class NamePattern
{
  public:
    NamePattern(std::string pattern, Prefixes prefixes);

    bool Matches(const std::string& bareName) const;

  private:
    std::string m_Pattern;
    std::string m_Bare;
    Prefixes m_Prefixes;
};

/// Code 20 for a pattern that matches no setting.
Failure NothingMatches(const std::string& pattern);

} // namespace Tavrine::Tool
