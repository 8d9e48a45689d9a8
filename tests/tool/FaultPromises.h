#pragma once

#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "FaultRun.h"

namespace tooltest
{

/// Where a command's faults begin: what comes before, another command goes through as well.
enum class From
{
    Start,
    Change,
    Restart,
};

struct CommandRow
{
    const char* Name;
    std::vector<std::string> Arguments;
    /// The code that the library gives every failed read of this command; 0 where the
    /// cause has its own.
    int FixedCode = 0;
    bool Tasks = false;
    /// Meets faults that cost seconds at every request.
    bool Patient = false;
    /// Looks afterwards at what became of a PATCH.
    bool ReadsBack = false;
    From First = From::Start;
};

inline void PrintTo(const CommandRow& row, std::ostream* stream) { *stream << row.Name; }

/// Which requests a fault is worth trying at.
enum class At
{
    All,
    /// What makes a difference only where something is asked to be done.
    Changes,
    /// Changes whose outcome the command looks at.
    ReadBackChanges,
    Reads,
};

struct FaultRow
{
    const char* Effect;
    At Where;
    /// The codes that a failed run may end with.
    std::set<int> Codes;
    /// Some word of the cause stands on standard error.
    const char* Cause;
    /// The rule's count goes on from the request on, for all requests or those of its path.
    const char* Count = "";
    bool SamePath = false;
    bool Https = false;
    bool Stalls = false;
};

/// A run with a fault, beside the one without.
struct Case
{
    const CommandRow& Command;
    const FaultRow& Fault;
    const FaultOutcome& Good;
    const FaultOutcome& Ran;
    bool Json = false;

    bool Succeeded() const { return Ran.Tool.Status == 0; }
    std::string Texts() const { return Ran.Tool.Output + Ran.Tool.Errors; }
};

/// Which promise a run broke; empty where it kept all.
std::string Broken(const Case& of);

/// A request that does something, beside logins and logouts.
bool IsChange(const bmcsim::AccessRecord& request);
/// An action that does not.
bool OnlyReads(const bmcsim::AccessRecord& request);

} // namespace tooltest
