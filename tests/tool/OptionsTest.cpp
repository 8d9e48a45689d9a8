#include "Options.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

using namespace Tavrine::Tool;

namespace
{

using Arguments = std::vector<std::string>;
using Variables = std::map<std::string, std::string>;

Answer NotRun(const Options&, Bmc&) { return {}; }

constexpr Command TestCommands[] = {
    {"show", "Show", "[NAME ...]", "Names", 0, nullptr, "settings", NotRun},
    {"groups", "Groups", nullptr, nullptr, 0, nullptr, "groups", NotRun},
};

ParsedCommandLine Parse(const Arguments& arguments, const Variables& variables = {})
{
    return ParseCommandLine(arguments, TestCommands,
                            [&](const char* name)
                            {
                                const auto variable = variables.find(name);
                                return variable == variables.end() ? nullptr : variable->second.c_str();
                            });
}

/// A command line that reaches the simulator, with these words added.
Options Accepted(Arguments arguments)
{
    arguments.insert(arguments.begin(), {"--simulate", "show"});
    ParsedCommandLine parsed = Parse(arguments);
    EXPECT_TRUE(parsed.Request) << parsed.Text;
    return parsed.Request.value_or(Options());
}

Options AcceptedForBmc(Arguments arguments)
{
    arguments.insert(arguments.begin(), {"show", "--bmc", "host", "--user", "u"});
    ParsedCommandLine parsed = Parse(arguments);
    EXPECT_TRUE(parsed.Request) << parsed.Text;
    return parsed.Request.value_or(Options());
}

const std::string Pin(64, 'a');

} // namespace

TEST(Options, DefaultsAreThoseOfTheHelp)
{
    const Options options = AcceptedForBmc({});
    EXPECT_STREQ(options.Chosen->Name, "show");
    EXPECT_TRUE(options.Names.empty());
    EXPECT_EQ(options.SystemType, 0);
    EXPECT_EQ(options.LogLevel, 3U);
    EXPECT_EQ(options.Retries, 2U);
    EXPECT_EQ(options.WaitReady, 0U);
    EXPECT_FALSE(options.Timeout);
    EXPECT_EQ(options.Language, "en");
    EXPECT_FALSE(options.Hex || options.Json || options.Protected || options.LegacyNames || options.Insecure ||
                 options.Simulate);
    EXPECT_EQ(options.FirstPrefix, "");
}

TEST(Options, SimulatedSystemsAreUefiUnlessSaidOtherwise)
{
    EXPECT_EQ(Accepted({}).SystemType, 5);
    EXPECT_EQ(Accepted({"--system-type", "bios"}).SystemType, 0);
    EXPECT_EQ(Accepted({"--system-type", "UEFI"}).SystemType, 5);
    EXPECT_EQ(Accepted({"--system-type", "0"}).SystemType, 0);
    EXPECT_EQ(Accepted({"--system-type", "2147483647"}).SystemType, 2147483647);
}

TEST(Options, RegistriesAreKeptInTheCacheFolder)
{
    struct Row
    {
        Arguments Given;
        Variables Set;
        std::string Folder;
    };
    const Row rows[] = {
        {{}, {}, ""},
        {{}, {{"HOME", "/home/u"}}, "/home/u/.cache/tavrine"},
        {{}, {{"HOME", "relative"}}, ""},
        {{}, {{"HOME", "/home/u"}, {"XDG_CACHE_HOME", "/var/u"}}, "/var/u/tavrine"},
        {{}, {{"HOME", "/home/u"}, {"XDG_CACHE_HOME", "relative"}}, "/home/u/.cache/tavrine"},
        {{"--cache-dir", "here"}, {{"HOME", "/home/u"}}, "here"},
        {{"--no-cache"}, {{"HOME", "/home/u"}}, ""},
    };
    for (const Row& row : rows)
    {
        Arguments arguments = {"show", "--bmc", "host", "--user", "u"};
        arguments.insert(arguments.end(), row.Given.begin(), row.Given.end());
        const ParsedCommandLine parsed = Parse(arguments, row.Set);
        ASSERT_TRUE(parsed.Request) << parsed.Text;
        EXPECT_EQ(parsed.Request->CacheDir, row.Folder);
    }
    EXPECT_EQ(Parse({"--simulate", "show"}, {{"HOME", "/home/u"}}).Request.value().CacheDir, "");
    for (const Arguments& refused : {Arguments{"--cache-dir", "d", "--no-cache"}, Arguments{"--cache-dir", ""},
                                     Arguments{"--simulate", "--cache-dir", "d"}})
    {
        Arguments arguments = refused;
        arguments.push_back("show");
        EXPECT_EQ(Parse(arguments).Status, 64);
    }
}

TEST(Options, StandBeforeAndAfterTheCommand)
{
    for (const Arguments& arguments : {Arguments{"--json", "--hex", "--simulate", "show", "A", "B"},
                                       Arguments{"show", "A", "B", "--simulate", "--json", "--hex"},
                                       Arguments{"--simulate", "show", "--json", "A", "--hex", "B"}})
    {
        const ParsedCommandLine parsed = Parse(arguments);
        ASSERT_TRUE(parsed.Request) << parsed.Text;
        EXPECT_TRUE(parsed.Request->Json && parsed.Request->Hex && parsed.Request->Simulate);
        EXPECT_EQ(parsed.Request->Names, (Arguments{"A", "B"}));
    }
}

TEST(Options, NamesAreTakenAsTheyStand)
{
    const Arguments names = {"groups", "[A,B]", "A,B", "=", "a b", "{}", "%%", "\x01", "\xFF"};
    EXPECT_EQ(Accepted(names).Names, names);
    EXPECT_EQ(Accepted({"{}"}).Names, Arguments{"{}"});
    EXPECT_EQ(Accepted({"[AB]"}).Names, Arguments{"[AB]"});
    EXPECT_EQ(Accepted({"--state", "[s]", "--machine={m}"}).StateFile, "[s]");
    EXPECT_EQ(Accepted({"--state", "[s]", "--machine={m}"}).MachineDir, "{m}");
    EXPECT_EQ(Accepted({"--", "-x", "--json"}).Names, (Arguments{"-x", "--json"}));
    EXPECT_FALSE(Accepted({"--", "--json"}).Json);
}

TEST(Options, ValuesReachTheirPlaces)
{
    const Options options =
        AcceptedForBmc({"--password-file", "-",          "--cacert",    "ca.pem",         "--timeout",
                        "65535",           "--retries",  "20",          "--wait-ready",   "86400",
                        "--lang",          "zh-Hant-TW", "--protected", "--legacy-names", "--debug-config",
                        "d.json",          "--log-file", "l",           "--log-level",    "4",
                        "--system-type",   "1"});
    EXPECT_EQ(options.Bmc.Host, "host");
    EXPECT_EQ(options.User, "u");
    EXPECT_EQ(options.PasswordFile, "-");
    EXPECT_EQ(options.CaFile, "ca.pem");
    EXPECT_EQ(options.Timeout, 65535);
    EXPECT_EQ(options.Retries, 20U);
    EXPECT_EQ(options.WaitReady, 86400U);
    EXPECT_EQ(options.Language, "zh-Hant-TW");
    EXPECT_TRUE(options.Protected && options.LegacyNames);
    EXPECT_EQ(options.DebugConfigFile, "d.json");
    EXPECT_EQ(options.LogFile, "l");
    EXPECT_EQ(options.LogLevel, 4U);
    EXPECT_EQ(options.SystemType, 1);
    EXPECT_EQ(AcceptedForBmc({"--pin", "sha256:" + Pin}).Pin, Pin);
    EXPECT_TRUE(AcceptedForBmc({"--insecure"}).Insecure);
    EXPECT_EQ(Accepted({"--machine", "m", "--state=s"}).MachineDir, "m");
    EXPECT_EQ(Accepted({"--machine", "m", "--state=s"}).StateFile, "s");
}

TEST(Options, PrefixesComeSinglyOrInPairs)
{
    EXPECT_EQ(Accepted({"--prefix", "Srv"}).FirstPrefix, "Srv");
    EXPECT_EQ(Accepted({"--prefix", "Srv"}).SecondPrefix, "Srv");
    EXPECT_EQ(Accepted({"--prefix", "A,B"}).FirstPrefix, "A");
    EXPECT_EQ(Accepted({"--prefix", "A,B"}).SecondPrefix, "B");
}

TEST(Options, TheEnvironmentFillsWhatIsNotWritten)
{
    const Variables variables = {{"TAVRINE_BMC", "http://[::1]:8080"}, {"TAVRINE_USER", "root"}};
    const ParsedCommandLine parsed = Parse({"groups"}, variables);
    ASSERT_TRUE(parsed.Request) << parsed.Text;
    EXPECT_STREQ(parsed.Request->Chosen->Name, "groups");
    EXPECT_EQ(parsed.Request->Bmc.Host, "::1");
    EXPECT_EQ(parsed.Request->Bmc.Port, 8080);
    EXPECT_TRUE(parsed.Request->Bmc.PlainHttp);
    EXPECT_EQ(parsed.Request->User, "root");

    const ParsedCommandLine written = Parse({"groups", "--bmc", "other", "--user", "me"}, variables);
    ASSERT_TRUE(written.Request) << written.Text;
    EXPECT_EQ(written.Request->Bmc.Host, "other");
    EXPECT_FALSE(written.Request->Bmc.PlainHttp);
    EXPECT_EQ(written.Request->User, "me");
}

TEST(Options, TheEnvironmentDoesNotDisturbTheSimulator)
{
    const ParsedCommandLine parsed = Parse({"groups", "--simulate"}, {{"TAVRINE_BMC", "no good@"}});
    EXPECT_TRUE(parsed.Request) << parsed.Text;
}

TEST(Options, AnEmptyUserOnTheCommandLineMeansNoCredentials)
{
    const ParsedCommandLine parsed = Parse({"show", "--bmc", "h", "--user", ""}, {{"TAVRINE_USER", "root"}});
    ASSERT_TRUE(parsed.Request) << parsed.Text;
    EXPECT_EQ(parsed.Request->User, "");
}

TEST(Options, HelpAndVersionEndTheRunWell)
{
    struct Row
    {
        Arguments Line;
        const char* Word;
    };
    const Row rows[] = {
        {{"--help"}, "--password-file"},     {{"-h"}, "show"},
        {{"show", "--help"}, "NAME"},        {{"--version"}, "tavrine "},
        {{"show", "--version"}, "tavrine "}, {{"groups", "-h"}, "groups"},
    };
    for (const Row& row : rows)
    {
        const ParsedCommandLine parsed = Parse(row.Line);
        EXPECT_FALSE(parsed.Request);
        EXPECT_EQ(parsed.Status, 0);
        EXPECT_NE(parsed.Text.find(row.Word), std::string::npos) << parsed.Text;
    }
}

TEST(Options, WrongCommandLinesAreRefusedWithTheirReason)
{
    struct Row
    {
        Arguments Line;
        const char* Word;
    };
    const Row rows[] = {
        {{}, "No command"},
        {{"--simulate"}, "No command"},
        {{"frobnicate", "--simulate"}, "Unknown command frobnicate: see tavrine --help"},
        {{"--simulate", "groups", "Boot"}, "Unexpected argument Boot"},
        {{"show", "--simulate", "--colour"}, "Unknown option --colour"},
        {{"show", "--simulate", "--colour=never"}, "Unknown option --colour"},
        {{"show", "--simulate", "-x"}, "Unknown option -x"},
        {{"show", "--simulate", "-phunter2"}, "Unknown option -p"},
        {{"show", "--bmc", "h", "--user", "u", "--password", "hunter2"}, "--password-file"},
        {{"show", "--bmc", "h", "--user", "u", "--password=hunter2"}, "--password-file"},
        {{"show", "--bmc", "admin:hunter2@h"}, "--bmc"},
        {{"show", "--user", "u"}, "--bmc"},
        {{"show", "--bmc", "h"}, "--user"},
        {{"show", "--bmc"}, "--bmc"},
        {{"show", "--bmc", "h", "--bmc", "g", "--user", "u"}, "--bmc"},
        {{"show", "--simulate", "--bmc", "h"}, "--bmc"},
        {{"show", "--simulate", "--user", "u"}, "--user"},
        {{"show", "--simulate", "--password-file", "-"}, "--password-file"},
        {{"show", "--simulate", "--insecure"}, "--insecure"},
        {{"show", "--bmc", "h", "--user", "u", "--machine", "m"}, "--simulate"},
        {{"show", "--bmc", "h", "--user", "u", "--state", "s"}, "--simulate"},
        {{"show", "--bmc", "h", "--user", "u", "--pin", "sha256:" + Pin, "--insecure"}, "--insecure"},
        {{"show", "--bmc", "h", "--user", "u", "--pin", "sha256:" + Pin, "--cacert", "c"}, "--pin"},
        {{"show", "--bmc", "h", "--user", "u", "--cacert", "c", "--insecure"}, "--insecure"},
        {{"show", "--bmc", "http://h", "--user", "u", "--pin", "sha256:" + Pin}, "need https"},
        {{"show", "--bmc", "h", "--user", "u", "--pin", "sha256:12"}, "--pin"},
        {{"show", "--bmc", "h", "--user", "u", "--password-file", ""}, "--password-file"},
        {{"show", "--simulate", "--system-type", "-1"}, "--system-type"},
        {{"show", "--simulate", "--system-type", "2147483648"}, "--system-type"},
        {{"show", "--simulate", "--system-type", "4294967296"}, "--system-type"},
        {{"show", "--simulate", "--system-type", "efi"}, "--system-type"},
        {{"show", "--simulate", "--system-type", "0x5"}, "--system-type"},
        {{"show", "--simulate", "--system-type", ""}, "--system-type"},
        {{"show", "--simulate", "--timeout", "0"}, "--timeout"},
        {{"show", "--simulate", "--timeout", "65536"}, "--timeout"},
        {{"show", "--simulate", "--timeout", "1.5"}, "--timeout"},
        {{"show", "--simulate", "--retries", "21"}, "--retries"},
        {{"show", "--simulate", "--retries", "-1"}, "--retries"},
        {{"show", "--simulate", "--wait-ready", "0"}, "--wait-ready"},
        {{"show", "--simulate", "--wait-ready", "86401"}, "--wait-ready"},
        {{"show", "--simulate", "--lang", "e n"}, "--lang"},
        {{"show", "--simulate", "--lang", "../en"}, "--lang"},
        {{"show", "--simulate", "--lang", ""}, "--lang"},
        {{"show", "--simulate", "--prefix", ""}, "--prefix"},
        {{"show", "--simulate", "--prefix", "A,"}, "--prefix"},
        {{"show", "--simulate", "--prefix", ",B"}, "--prefix"},
        {{"show", "--simulate", "--prefix", "A,B,C"}, "--prefix"},
        {{"show", "--simulate", "--prefix", "A=B"}, "--prefix"},
        {{"show", "--simulate", "--log-file", "l", "--log-level", "0"}, "--log-level"},
        {{"show", "--simulate", "--log-file", "l", "--log-level", "5"}, "--log-level"},
        {{"show", "--simulate", "--log-level", "4"}, "--log-file"},
        {{"show", "--simulate", "--log-file", ""}, "--log-file"},
        {{"show", "--simulate=perhaps"}, "--simulate"},
        {{"show", "groups", "--frob", "--simulate"}, "Unknown option --frob"},
    };
    for (const Row& row : rows)
    {
        const ParsedCommandLine parsed = Parse(row.Line);
        EXPECT_FALSE(parsed.Request) << row.Word;
        EXPECT_EQ(parsed.Status, 64) << row.Word;
        EXPECT_EQ(parsed.Text.find("tavrine: 64 "), 0U) << parsed.Text;
        EXPECT_NE(parsed.Text.find(row.Word), std::string::npos) << row.Word << ": " << parsed.Text;
        EXPECT_EQ(parsed.Text.find("hunter2"), std::string::npos) << parsed.Text;
        EXPECT_EQ(parsed.Text.find('\n'), parsed.Text.size() - 1) << parsed.Text;
    }
}

TEST(Options, ABadAddressInTheEnvironmentNamesTheVariable)
{
    const ParsedCommandLine parsed = Parse({"show", "--user", "u"}, {{"TAVRINE_BMC", "https://u:hunter2@h"}});
    EXPECT_EQ(parsed.Status, 64);
    EXPECT_NE(parsed.Text.find("TAVRINE_BMC"), std::string::npos);
    EXPECT_EQ(parsed.Text.find("hunter2"), std::string::npos);
}
