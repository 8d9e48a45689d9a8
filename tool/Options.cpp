#include "Options.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <limits>
#include <map>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "ConfigOptions.h"
#include "TextOutput.h"

#ifndef TAVRINE_VERSION
#error "TAVRINE_VERSION is given by the build"
#endif

namespace Tavrine::Tool
{
namespace
{

constexpr std::size_t LongestLanguage = 35;
constexpr std::size_t LongestPrefix = 64;

/// CLI11 takes "[A,B]" and "{}" for lists. Here they are texts like any other (a shell
/// pattern, a file name), so they are parsed behind a mark.
constexpr char Mark = '\x01';

std::string Marked(const std::string& argument)
{
    const bool special = argument.find_first_of("[{\x01") == 0;
    return special ? Mark + argument : argument;
}

std::string Unmarked(std::string argument)
{
    if (!argument.empty() && argument.front() == Mark)
    {
        argument.erase(0, 1);
    }
    return argument;
}

/// What cannot be stored as it is written.
struct Written
{
    std::string Bmc;
    std::string SystemType;
    std::string Prefix;
};

template <typename Number> std::string ReadNumber(const std::string& text, Number low, Number high, Number& value)
{
    Number read{};
    const char* end = text.data() + text.size();
    const auto [stop, failure] = std::from_chars(text.data(), end, read);
    if (failure != std::errc() || stop != end || read < low || read > high)
    {
        return fmt::format("must be a whole number from {} to {}", low, high);
    }
    value = read;
    return {};
}

std::string ReadSystemType(const std::string& text, std::int32_t& type)
{
    static const std::map<std::string, std::int32_t> Words = {{"bios", SystemTypeBios}, {"uefi", SystemTypeUefi}};
    if (const auto word = Words.find(CLI::detail::to_lower(text)); word != Words.end())
    {
        type = word->second;
        return {};
    }
    const std::string error = ReadNumber(text, 0, std::numeric_limits<std::int32_t>::max(), type);
    return error.empty() ? error : "must be bios, uefi or a number from 0 to 2147483647";
}

bool IsPrefix(std::string_view text)
{
    return !text.empty() && text.size() <= LongestPrefix &&
           std::all_of(text.begin(), text.end(),
                       [](char c)
                       { return static_cast<unsigned char>(c) > ' ' && c != '\x7F' && c != '=' && c != ','; });
}

std::string ReadPrefix(const std::string& text, Options& options)
{
    const std::size_t comma = text.find(',');
    const std::string first = text.substr(0, comma);
    const std::string second = comma == std::string::npos ? first : text.substr(comma + 1);
    if (!IsPrefix(first) || !IsPrefix(second))
    {
        return "must be one prefix or two with a comma between, without blanks and \"=\"";
    }
    options.FirstPrefix = first;
    options.SecondPrefix = second;
    return {};
}

std::string CheckLanguage(const std::string& text)
{
    const bool good =
        !text.empty() && text.size() <= LongestLanguage && text.front() != '-' && text.back() != '-' &&
        std::all_of(text.begin(), text.end(),
                    [](char c)
                    { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-'; });
    return good ? std::string() : "must be a language such as en or ja";
}

std::string CheckFileName(const std::string& text) { return text.empty() ? "must not be empty" : std::string(); }

/// A check that also stores, for values that are no plain text.
CLI::Validator Check(std::function<std::string(const std::string&)> check)
{
    return CLI::Validator([check = std::move(check)](std::string& text) { return check(text); }, std::string());
}

void AddConnectionOptions(CLI::App& app, Options& options, Written& written)
{
    const std::string group = "Connection";
    app.add_option("--bmc", written.Bmc, "The BMC, https unless http:// is written [TAVRINE_BMC]")
        ->type_name("URL|HOST[:PORT]")
        ->check(Check([&](const std::string& text) { return ParseBmcAddress(text, options.Bmc); }))
        ->group(group);
    app.add_option("--user", options.User, "User name; an empty one sends no credentials [TAVRINE_USER]")
        ->type_name("NAME")
        ->group(group);
    app.add_option(
           "--password-file", options.PasswordFile,
           "The password is the first line of FILE, - for standard input [else TAVRINE_PASSWORD, else a prompt]")
        ->type_name("FILE")
        ->check(Check(CheckFileName))
        ->group(group);
    CLI::Option* ca = app.add_option("--cacert", options.CaFile, "Trust these certificate authorities (PEM) alone")
                          ->type_name("FILE")
                          ->check(Check(CheckFileName))
                          ->group(group);
    CLI::Option* pin = app.add_option_function<std::string>(
                              "--pin", [](const std::string&) {}, "Trust the one certificate with this SHA-256")
                           ->type_name("sha256:HEX")
                           ->check(Check([&](const std::string& text) { return ParsePin(text, options.Pin); }))
                           ->group(group);
    CLI::Option* insecure =
        app.add_flag("--insecure", options.Insecure, "Take any certificate: nothing is verified")->group(group);
    ca->excludes(pin)->excludes(insecure);
    pin->excludes(insecure);
    CLI::Option* cache =
        app.add_option("--cache-dir", options.CacheDir,
                       "Where attribute registries are kept [else XDG_CACHE_HOME/tavrine or ~/.cache/tavrine]")
            ->type_name("DIR")
            ->check(Check(CheckFileName))
            ->group(group);
    app.add_flag("--no-cache", options.NoCache, "Keep nothing from run to run")->excludes(cache)->group(group);
    const auto add = [&](const char* name, const char* type, const char* help, auto check)
    {
        app.add_option_function<std::string>(
               name, [](const std::string&) {}, help)
            ->type_name(type)
            ->check(Check(check))
            ->group(group);
    };
    add("--timeout", "SECONDS", "Longest time for one request (default 60)",
        [&](const std::string& text) {
            return ReadNumber<std::uint16_t>(text, 1, std::numeric_limits<std::uint16_t>::max(),
                                             options.Timeout.emplace());
        });
    add("--retries", "N", "How often a read is tried again whose connection failed (default 2)",
        [&](const std::string& text) { return ReadNumber<std::uint32_t>(text, 0, 20, options.Retries); });
    add("--wait-ready", "SECONDS", "Wait so long, in all, for a BMC that says it is busy",
        [&](const std::string& text) { return ReadNumber<std::uint32_t>(text, 1, LongestWait, options.WaitReady); });
}

void AddSimulatorOptions(CLI::App& app, Options& options)
{
    const std::string group = "Simulated BMC";
    CLI::Option* simulate =
        app.add_flag("--simulate", options.Simulate, "Use a simulated BMC inside this program")->group(group);
    app.add_option("--machine", options.MachineDir, "Folder with the answers of a machine")
        ->type_name("DIR")
        ->check(Check(CheckFileName))
        ->needs(simulate)
        ->group(group);
    app.add_option("--state", options.StateFile, "File that keeps the simulated BMC's state from run to run")
        ->type_name("FILE")
        ->check(Check(CheckFileName))
        ->needs(simulate)
        ->group(group);
    for (const char* name : {"--bmc", "--user", "--password-file", "--cacert", "--pin", "--insecure", "--cache-dir"})
    {
        simulate->excludes(app.get_option(name));
    }
}

void AddSettingOptions(CLI::App& app, Options& options, Written& written)
{
    const std::string group = "Settings";
    app.add_option("--system-type", written.SystemType, "bios, uefi or a number (default bios; uefi with --simulate)")
        ->type_name("TYPE")
        ->check(Check([&](const std::string& text) { return ReadSystemType(text, options.SystemType); }))
        ->group(group);
    app.add_flag("--hex", options.Hex,
                 "Show and take values that are numbers in hexadecimal (text output); defaults and compare defaults "
                 "stay decimal")
        ->group(group);
    app.add_flag("--protected", options.Protected,
                 "Allow protected settings of a UEFI system, where they are named, a file of compare included")
        ->group(group);
    app.add_flag("--legacy-names", options.LegacyNames,
                 "Names, those of a file too, may be old names, as the configuration lists them")
        ->group(group);
    app.add_option("--prefix", written.Prefix, "Prefix of shown names, and that of whole groups")
        ->type_name("A[,B]")
        ->check(Check([&](const std::string& text) { return ReadPrefix(text, options); }))
        ->group(group);
    app.add_option("--debug-config", options.DebugConfigFile, "JSON file that stands in for answers of the BMC")
        ->type_name("FILE")
        ->check(Check(CheckFileName))
        ->group(group);
    app.add_option("--lang", options.Language, "Language of the texts of settings (default en)")
        ->type_name("L")
        ->check(Check(CheckLanguage))
        ->group(group);
}

void AddOutputOptions(CLI::App& app, Options& options)
{
    const std::string group = "Output";
    app.add_flag("--json", options.Json, "Print one JSON document")->group(group);
    CLI::Option* file = app.add_option("--log-file", options.LogFile, "Append a log to FILE")
                            ->type_name("FILE")
                            ->check(Check(CheckFileName))
                            ->group(group);
    app.add_option_function<std::string>(
           "--log-level", [](const std::string&) {}, "1 failures, 3 operations, 4 detail (default 3)")
        ->type_name("N")
        ->check(Check([&](const std::string& text) { return ReadNumber(text, 1U, 4U, options.LogLevel); }))
        ->needs(file)
        ->group(group);
}

void AddCommands(CLI::App& app, std::span<const Command> commands, Options& options)
{
    for (const Command& command : commands)
    {
        CLI::App* sub = app.add_subcommand(command.Name, command.Summary);
        sub->group("Commands");
        sub->footer("Further options: tavrine --help");
        sub->parse_complete_callback([&options, &command] { options.Chosen = &command; });
        if (command.NamesHelp != nullptr)
        {
            sub->add_option("NAME", options.Names, command.NamesHelp)->type_name(command.NamesUsage);
        }
        if (command.AddOptions != nullptr)
        {
            command.AddOptions(*sub, options);
        }
    }
}

/// What is left over: the first option in it, without its value, or else the first
/// word.
std::string DescribeExtras(const CLI::App& app, bool commandChosen)
{
    const std::vector<std::string> extras = app.remaining(true);
    if (extras.empty())
    {
        return {};
    }
    const auto option =
        std::find_if(extras.begin(), extras.end(), [](const std::string& text) { return text.starts_with("-"); });
    if (option != extras.end())
    {
        // A value can stand behind "=" and, with a short option, right behind its letter.
        const std::string name =
            option->starts_with("--") ? option->substr(0, option->find('=')) : option->substr(0, 2);
        const char* hint = name == "--password" ? "; give --password-file or TAVRINE_PASSWORD" : "";
        return "Unknown option " + name + hint;
    }
    const std::string word = Unmarked(extras.front());
    return commandChosen ? "Unexpected argument " + word : "Unknown command " + word + ": see tavrine --help";
}

/// Options without the lists of others that they need or exclude.
class HelpFormatter : public CLI::Formatter
{
  public:
    HelpFormatter()
    {
        label("SUBCOMMAND", "COMMAND [NAME ...]");
        column_width(28);
    }
    std::string make_option_opts(const CLI::Option* option) const override
    {
        const bool isNamed = !option->get_positional() && !option->get_type_name().empty();
        return isNamed ? " " + option->get_type_name() : std::string();
    }
    std::string make_option_name(const CLI::Option* option, bool isPositional) const override
    {
        return isPositional ? option->get_type_name() : CLI::Formatter::make_option_name(option, false);
    }
    std::string make_option_usage(const CLI::Option* option) const override { return option->get_type_name(); }
};

ParsedCommandLine Refusal(const std::string& text)
{
    return {std::nullopt, StatusUsage, fmt::format("tavrine: {} {}\n", StatusUsage, EscapeControls(text))};
}

/// The folder for what can be fetched again, as the XDG Base Directory rules of freedesktop.org
/// have it; empty where there is none.
std::string CacheFolder(const std::string& cacheHome, const std::string& home)
{
    const bool fromXdg = cacheHome.starts_with('/');
    const std::string base = fromXdg ? cacheHome : home + "/.cache";
    return fromXdg || home.starts_with('/') ? base + "/tavrine" : std::string();
}

/// Takes what the command line leaves open from the environment.
std::string CompleteFromEnvironment(const CLI::App& app, const Environment& environment, Options& options)
{
    if (app.count("--system-type") == 0)
    {
        options.SystemType = options.Simulate ? SystemTypeUefi : SystemTypeBios;
    }
    if (options.Simulate)
    {
        return {};
    }
    const auto value = [&](const char* name) { return std::string(environment(name) ? environment(name) : ""); };
    if (options.CacheDir.empty() && !options.NoCache)
    {
        options.CacheDir = CacheFolder(value("XDG_CACHE_HOME"), value("HOME"));
    }
    if (app.count("--bmc") == 0)
    {
        const std::string address = value("TAVRINE_BMC");
        if (address.empty())
        {
            return "No BMC: give --bmc, TAVRINE_BMC or --simulate";
        }
        if (const std::string error = ParseBmcAddress(address, options.Bmc); !error.empty())
        {
            return "TAVRINE_BMC: " + error;
        }
    }
    if (app.count("--user") == 0)
    {
        options.User = value("TAVRINE_USER");
        if (options.User.empty())
        {
            return "No user name: give --user or TAVRINE_USER";
        }
    }
    if (options.Bmc.PlainHttp && (!options.CaFile.empty() || !options.Pin.empty()))
    {
        return "--cacert and --pin need https";
    }
    return {};
}

} // namespace

ParsedCommandLine ParseCommandLine(const std::vector<std::string>& arguments, std::span<const Command> commands,
                                   const Environment& environment)
{
    Options options;
    Written written;
    CLI::App app("Reads and changes the BIOS/UEFI settings of a server through its BMC (Redfish).", "tavrine");
    app.formatter(std::make_shared<HelpFormatter>());
    app.fallthrough();
    app.require_subcommand(1);
    app.set_help_flag("--help,-h", "Show this help");
    app.set_version_flag("--version", "tavrine " TAVRINE_VERSION, "Show the version");
    AddConnectionOptions(app, options, written);
    AddSimulatorOptions(app, options);
    AddSettingOptions(app, options, written);
    AddOutputOptions(app, options);
    for (CLI::Option* option : app.get_options())
    {
        option->transform(Unmarked);
    }
    AddCommands(app, commands, options);

    std::vector<std::string> reversed;
    std::transform(arguments.rbegin(), arguments.rend(), std::back_inserter(reversed), Marked);
    try
    {
        app.parse(std::move(reversed));
    }
    catch (const CLI::CallForHelp&)
    {
        return {std::nullopt, 0, app.help()};
    }
    catch (const CLI::CallForVersion& version)
    {
        return {std::nullopt, 0, std::string(version.what()) + "\n"};
    }
    catch (const CLI::ParseError& error)
    {
        const std::string extras = DescribeExtras(app, options.Chosen != nullptr);
        return Refusal(!extras.empty()                                              ? extras
                       : dynamic_cast<const CLI::RequiredError*>(&error) != nullptr ? "No command: see tavrine --help"
                                                                                    : error.what());
    }
    if (const std::string error = CompleteFromEnvironment(app, environment, options); !error.empty())
    {
        return Refusal(error);
    }
    if (options.Names.size() < options.Chosen->LeastNames)
    {
        return Refusal(
            fmt::format("{0} needs {1}: see tavrine {0} --help", options.Chosen->Name, options.Chosen->NamesUsage));
    }
    std::transform(options.Names.begin(), options.Names.end(), options.Names.begin(), Unmarked);
    if (const std::string error = options.Chosen->Check != nullptr ? options.Chosen->Check(options) : std::string();
        !error.empty())
    {
        return Refusal(error);
    }
    ParsedCommandLine parsed;
    parsed.Request = std::move(options);
    return parsed;
}

} // namespace Tavrine::Tool
