// Command lines: an answer to every one, in one line where it is a refusal, in which no
// value of an unknown option stands; what is taken, written anew, means the same.
#include <algorithm>
#include <initializer_list>
#include <utility>

#include "Options.h"
#include "Oracle.h"
#include "SettingPairs.h"

using namespace fuzztest;
using namespace Tavrine::Tool;

namespace
{

using Arguments = std::vector<std::string>;

const char* NoEnvironment(const char*) { return nullptr; }

ParsedCommandLine Parse(const Arguments& arguments) { return ParseCommandLine(arguments, Commands(), NoEnvironment); }

/// One argument a line; a command line can hold no NUL.
Arguments Lines(std::string_view text)
{
    Arguments lines;
    while (!text.empty())
    {
        const std::size_t end = std::min(text.find('\n'), text.size());
        lines.emplace_back(text.substr(0, std::min(end, text.substr(0, end).find('\0'))));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

std::string Joined(const Arguments& arguments)
{
    std::string text;
    for (const std::string& argument : arguments)
    {
        text += "[" + argument + "]";
    }
    return text;
}

void CheckRefusal(const ParsedCommandLine& parsed, const Arguments& arguments)
{
    FUZZ_REQUIRE(parsed.Status == 0 || parsed.Status == 64, Joined(arguments));
    FUZZ_REQUIRE(!parsed.Text.empty() && parsed.Text.back() == '\n', Joined(arguments));
    if (parsed.Status == 64)
    {
        FUZZ_REQUIRE(parsed.Text.starts_with("tavrine: 64 "), parsed.Text);
        FUZZ_REQUIRE(OnOneLine(parsed.Text.substr(0, parsed.Text.size() - 1)), parsed.Text);
    }
}

/// A secret behind an option that does not exist is not shown.
void CheckSecret(Arguments arguments)
{
    constexpr const char* secret = "Zq7unspoken";
    if (Joined(arguments).find(secret) != std::string::npos)
    {
        return;
    }
    arguments.push_back(std::string("--password=") + secret);
    const ParsedCommandLine parsed = Parse(arguments);
    FUZZ_REQUIRE(parsed.Text.find(secret) == std::string::npos, parsed.Text);
}

/// Options with a value: with "=" between, or as an argument of their own, which cannot
/// be told from another option when it begins with "-".
struct Writer
{
    Arguments& To;
    bool Joined;

    void Add(const std::string& name, const std::string& value) const
    {
        if (value.empty())
        {
            return;
        }
        if (Joined || value.starts_with('-'))
        {
            To.push_back(name + "=" + value);
            return;
        }
        To.insert(To.end(), {name, value});
    }
    void AddFlags(std::initializer_list<std::pair<bool, const char*>> flags) const
    {
        for (const auto& [set, name] : flags)
        {
            if (set)
            {
                To.emplace_back(name);
            }
        }
    }
};

void AddConnection(const Options& options, const Writer& writer)
{
    writer.AddFlags({{options.Simulate, "--simulate"},
                     {options.Insecure, "--insecure"},
                     {!options.Simulate && options.User.empty(), "--user="}});
    writer.Add("--bmc",
               options.Simulate ? "" : (options.Bmc.PlainHttp ? "http://" : "https://") + HostAndPort(options.Bmc));
    writer.Add("--user", options.User);
    writer.Add("--password-file", options.PasswordFile);
    writer.Add("--cacert", options.CaFile);
    writer.Add("--pin", options.Pin.empty() ? "" : "sha256:" + options.Pin);
    writer.Add("--machine", options.MachineDir);
    writer.Add("--state", options.StateFile);
    writer.Add("--timeout", options.Timeout ? std::to_string(*options.Timeout) : "");
    writer.Add("--retries", std::to_string(options.Retries));
}

void AddShown(const Options& options, const Writer& writer)
{
    writer.Add("--system-type", std::to_string(options.SystemType));
    writer.Add("--lang", options.Language);
    writer.Add("--prefix", options.FirstPrefix.empty() ? "" : options.FirstPrefix + "," + options.SecondPrefix);
    writer.Add("--debug-config", options.DebugConfigFile);
    writer.Add("--log-file", options.LogFile);
    writer.Add("--log-level", options.LogFile.empty() ? "" : std::to_string(options.LogLevel));
    writer.AddFlags({{options.Hex, "--hex"},
                     {options.Protected, "--protected"},
                     {options.LegacyNames, "--legacy-names"},
                     {options.Json, "--json"}});
}

void AddOwn(const Options& options, const Writer& writer)
{
    writer.AddFlags({{options.NoCheck, "--no-check"},
                     {options.DryRun, "--dry-run"},
                     {options.Changed, "--changed"},
                     {options.Regex, "--regex"},
                     {options.SameSystem, "--same-system"},
                     {options.Force, "--force"},
                     {options.Post, "--post"},
                     {options.Yes, "--yes"},
                     {options.Reboot, "--reboot"}});
    writer.Add("--wait", options.Wait ? std::to_string(*options.Wait) : "");
    writer.To.emplace_back("--");
    writer.To.insert(writer.To.end(), options.Names.begin(), options.Names.end());
}

bool Same(const Options& left, const Options& right)
{
    const auto texts = [](const Options& options)
    {
        return std::vector<std::string>{options.User,      options.PasswordFile,    options.CaFile,
                                        options.Pin,       options.Language,        options.MachineDir,
                                        options.StateFile, options.FirstPrefix,     options.SecondPrefix,
                                        options.LogFile,   options.DebugConfigFile, HostAndPort(options.Bmc)};
    };
    const auto numbers = [](const Options& options)
    {
        return std::vector<std::int64_t>{options.Insecure,     options.Timeout.value_or(0),
                                         options.Retries,      options.Simulate,
                                         options.SystemType,   options.Hex,
                                         options.Protected,    options.LegacyNames,
                                         options.Json,         options.LogLevel,
                                         options.NoCheck,      options.DryRun,
                                         options.Changed,      options.Regex,
                                         options.SameSystem,   options.Force,
                                         options.Post,         options.Yes,
                                         options.Reboot,       options.Wait.value_or(0),
                                         options.Bmc.PlainHttp};
    };
    return left.Chosen == right.Chosen && left.Names == right.Names && texts(left) == texts(right) &&
           numbers(left) == numbers(right);
}

void CheckRequest(const Options& options, const Arguments& arguments)
{
    FUZZ_REQUIRE(options.Chosen != nullptr && options.Names.size() >= options.Chosen->LeastNames, Joined(arguments));
    FUZZ_REQUIRE(options.Retries <= 20 && options.LogLevel >= 1 && options.LogLevel <= 4, Joined(arguments));
    FUZZ_REQUIRE(options.Simulate || !options.Bmc.Host.empty(), Joined(arguments));
    for (const bool joined : {false, true})
    {
        Arguments written = {options.Chosen->Name};
        const Writer writer{written, joined};
        AddConnection(options, writer);
        AddShown(options, writer);
        AddOwn(options, writer);
        const ParsedCommandLine again = Parse(written);
        FUZZ_REQUIRE(again.Request, again.Text + Joined(written));
        FUZZ_REQUIRE(Same(*again.Request, options), Joined(arguments) + "\n" + Joined(written));
    }
}

/// The pairs are those that one sees who cuts at the first "=".
void CheckPairs(const Options& options)
{
    const bool input = std::any_of(options.Names.begin(), options.Names.end(),
                                   [](const std::string& name) { return name.ends_with("=-"); });
    if (input || !PairsFault(options).empty())
    {
        return;
    }
    std::vector<SettingPair> pairs;
    FUZZ_REQUIRE(!ReadPairs(options, -1, pairs) && pairs.size() == options.Names.size(), Joined(options.Names));
    for (std::size_t i = 0; i < pairs.size(); ++i)
    {
        const std::string& name = options.Names[i];
        FUZZ_REQUIRE(pairs[i].Value == name.substr(name.find('=') + 1), name);
        FUZZ_REQUIRE(!pairs[i].Name.empty() && name.substr(0, name.find('=')).ends_with(pairs[i].Name), name);
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const Arguments arguments = Lines(Text(data, size));
    const ParsedCommandLine parsed = Parse(arguments);
    if (parsed.Request)
    {
        CheckRequest(*parsed.Request, arguments);
        CheckPairs(*parsed.Request);
    }
    else
    {
        CheckRefusal(parsed, arguments);
    }
    CheckSecret(arguments);
    return 0;
}
