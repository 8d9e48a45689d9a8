#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "BmcAddress.h"
#include "Command.h"

namespace Tavrine::Tool
{

/// Seconds that one can wait for a BMC or a system: a day.
inline constexpr std::uint32_t LongestWait = 86'400;

/// What a command line asks for, checked. File names are not yet opened.
struct Options
{
    /// Never null after a successful parse.
    const Command* Chosen = nullptr;
    std::vector<std::string> Names;

    /// The BMC; of no meaning with Simulate.
    BmcAddress Bmc;
    /// Empty: no credentials are sent.
    std::string User;
    /// "-" for standard input; empty: TAVRINE_PASSWORD or a prompt.
    std::string PasswordFile;
    std::string CaFile;
    /// 64 small hexadecimal digits, or empty.
    std::string Pin;
    bool Insecure = false;
    /// Seconds; nothing: the client's own.
    std::optional<std::uint16_t> Timeout;
    std::uint32_t Retries = 2;
    /// Seconds to wait, in all, for a BMC that is not ready.
    std::uint32_t WaitReady = 0;
    std::string Language = "en";
    /// Where registries are kept from run to run; empty: nowhere.
    std::string CacheDir;
    bool NoCache = false;

    bool Simulate = false;
    std::string MachineDir;
    std::string StateFile;

    std::int32_t SystemType = 0;
    bool Hex = false;
    bool Protected = false;
    bool LegacyNames = false;
    /// Empty: the library's own prefixes.
    std::string FirstPrefix;
    std::string SecondPrefix;
    std::string DebugConfigFile;

    bool Json = false;
    std::string LogFile;
    unsigned int LogLevel = 3;

    /// What single commands add; each says which of these it takes.
    bool NoCheck = false;
    bool DryRun = false;
    bool Changed = false;
    bool Regex = false;
    bool SameSystem = false;
    bool Force = false;
    bool Post = false;
    bool Yes = false;
    bool Reboot = false;
    /// Seconds to wait until BMC and system are back.
    std::optional<std::uint32_t> Wait;
};

/// A command line, read. Either Request is there, or the run ends with Status and
/// Text: on standard output for status 0, on standard error otherwise.
struct ParsedCommandLine
{
    std::optional<Options> Request;
    int Status = 0;
    std::string Text;
};

/// Value of an environment variable, null where it is unset.
using Environment = std::function<const char*(const char*)>;

/// @param arguments  without the program's name.
/// Every refusal has status 64 and one line, "tavrine: 64 text"; what stands behind
/// an unknown option is not repeated, since it may be a secret.
ParsedCommandLine ParseCommandLine(const std::vector<std::string>& arguments, std::span<const Command> commands,
                                   const Environment& environment);

} // namespace Tavrine::Tool
