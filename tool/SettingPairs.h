#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Answer.h"
#include "SettingNames.h"

namespace Tavrine::Tool
{

struct Options;

/// The most that "NAME=-" reads from standard input.
inline constexpr std::size_t LargestInputValue = 1024 * 1024;

/// One "NAME=VALUE" of a command line. The value is wiped when this goes.
struct SettingPair
{
    SettingPair() = default;
    SettingPair(std::string name, std::string value) : Name(std::move(name)), Value(std::move(value)) {}
    SettingPair(SettingPair&&) = default;
    SettingPair& operator=(SettingPair&&) = default;
    ~SettingPair();

    /// Bare, as the caller wrote it.
    std::string Name;
    std::string Value;
};

/// What is wrong with the pairs among the names of a command line; empty for nothing.
/// It never repeats what may be a value.
std::string PairsFault(const Options& options);

/// Splits the names of a command line that PairsFault has passed, at the first "=" each,
/// and reads the value of "NAME=-" from `input`: all of it, without one line's end
/// behind it.
/// @return nothing when `pairs` is filled.
std::optional<Failure> ReadPairs(const Options& options, int input, std::vector<SettingPair>& pairs);

} // namespace Tavrine::Tool
