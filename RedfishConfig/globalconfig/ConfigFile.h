#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace Tavrine::ConfigFile
{

inline constexpr std::size_t MaxSize = std::size_t{1024} * 1024;

/// A place where the configuration may be.
struct Candidate
{
    std::string Path;
    /// A missing file is a failure instead of leading to the next candidate.
    bool Required = false;
};

/// The value of an environment variable, or null.
using Environment = std::function<const char*(const char*)>;

/// The places in the order in which they are tried.
std::vector<Candidate> Candidates(const Environment& environment);

/// What one configuration file says.
struct Content
{
    /// One line that names file, place and cause; the rest is empty then.
    std::string Error;
    /// The file; empty where there is none.
    std::string Path;
    std::map<std::string, std::string> Items;
    /// Those of the top level; they count as missing.
    std::set<std::string> EmptyArrays;
    std::map<std::string, std::map<std::string, std::string>> Tables;
    /// Items and tables, those of a kind that is left out included, to the line where they stand.
    std::map<std::string, std::size_t> Lines;
    /// Members of tables, as TABLE.NAME, that are no texts and so left out.
    std::map<std::string, std::size_t> NoTexts;
};

/// Reads the first candidate that exists; none at all gives empty content.
Content Load(const std::vector<Candidate>& candidates);

/// See GlobalConfig::Unread.
std::vector<std::string> Unread(const Content& content, const std::set<std::string>& items,
                                const std::set<std::string>& tables);

} // namespace Tavrine::ConfigFile
