#pragma once

#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace bmcsim
{

/// What can happen to a request instead of an ordinary answer.
enum class FaultKind
{
    Status,
    Busy,
    RedirectLoop,
    CloseBefore,
    CloseWithin,
    CloseAfter,
    TlsCut,
    Stall,
    Slow,
    Truncated,
    WrongLength,
    ContentType,
    Garbage,
    GarbageJson,
    Huge,
    Endless,
    HugeHead,
};

struct Fault
{
    FaultKind Kind = FaultKind::Status;
    /// The request is carried out all the same.
    bool Done = false;
    /// The number behind the effect's name, or its usual one: a status, seconds, bytes, as the effect has it. Empty
    /// where there is neither.
    std::optional<std::int64_t> Amount;
    /// The text behind the effect's name.
    std::string Text;
    /// Of Status.
    std::map<std::string, std::string> Headers;
};

/// One rule: which requests, and what happens to them.
struct FaultRule
{
    /// Empty: all.
    std::vector<std::string> Methods;
    /// Shell pattern of the decoded path without its query; "*" stands for "/", too.
    std::string Path;
    /// Counted from 1 over the requests that method and path name.
    std::uint64_t First = 1;
    std::uint64_t Last = std::numeric_limits<std::uint64_t>::max();
    Fault What;

    bool Names(const std::string& method, const std::string& path) const;
};

/// Reads a rule such as "GET /redfish/v1/* #2 status 503 Retry-After=1".
/// @param error  one line that quotes the rule and tells what is wrong with it.
std::optional<FaultRule> ParseFaultRule(const std::string& text, std::string& error);

/// The effects by name, for help and tests.
std::vector<std::string_view> FaultNames();

} // namespace bmcsim
