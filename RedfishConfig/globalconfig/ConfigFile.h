#pragma once

#include <cstddef>
#include <functional>
#include <map>
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
    std::map<std::string, std::string> Items;
    std::map<std::string, std::map<std::string, std::string>> Tables;
};

/// Reads the first candidate that exists; none at all gives empty content.
Content Load(const std::vector<Candidate>& candidates);

} // namespace Tavrine::ConfigFile
