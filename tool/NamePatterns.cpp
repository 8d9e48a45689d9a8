#include "NamePatterns.h"

#include <fnmatch.h>
#include <utility>

namespace Tavrine::Tool
{

bool IsPattern(const std::string& word) { return word.find_first_of("*?[") != std::string::npos; }

bool MatchesPattern(const std::string& pattern, const std::string& text)
{
    return fnmatch(pattern.c_str(), text.c_str(), 0) == 0;
}

NamePattern::NamePattern(std::string pattern, Prefixes prefixes)
    : m_Pattern(std::move(pattern)), m_Bare(BareName(m_Pattern, prefixes)), m_Prefixes(std::move(prefixes))
{
}

bool NamePattern::Matches(const std::string& bareName) const
{
    if (MatchesPattern(m_Bare, bareName))
    {
        return true;
    }
    return m_Pattern.find('.') != std::string::npos && (MatchesPattern(m_Pattern, m_Prefixes.First + "." + bareName) ||
                                                        MatchesPattern(m_Pattern, m_Prefixes.Second + "." + bareName));
}

Failure NothingMatches(const std::string& pattern)
{
    return {CodeNotFound, "Unable to find a setting that matches " + pattern, pattern};
}

} // namespace Tavrine::Tool
