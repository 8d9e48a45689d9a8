#include "BmcSimulator.h"

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <exception>
#include <fmt/format.h>
#include <fstream>
#include <optional>
#include <string>

namespace
{

constexpr int ExitFailure = 1;
constexpr int ExitUsage = 64;

struct CommandLine
{
    bmcsim::SimulatorOptions Options;
    std::string PasswordFile;
    unsigned int LatencyMs = 0;
    unsigned int RebootMs = 0;
};

void Describe(CLI::App& app, CommandLine& line)
{
    bmcsim::SimulatorOptions& options = line.Options;
    app.add_option("--port", options.Port, "TCP port; 0 takes any free one")->check(CLI::Range(0, 65535));
    app.add_option("--bind", options.BindAddress, "Address to listen on")->capture_default_str();
    auto* http = app.add_flag("--http", options.PlainHttp, "Serve http instead of https");
    auto* certificate =
        app.add_option("--tls-cert", options.TlsCertFile, "Certificate (PEM); without it a self-signed one is made");
    auto* key = app.add_option("--tls-key", options.TlsKeyFile, "Key of the certificate (PEM)");
    app.add_option("--user", options.User, "User that may log in")->capture_default_str();
    auto* password = app.add_option("--password", options.Password, "Password of the user")->capture_default_str();
    app.add_option("--password-file", line.PasswordFile, "File whose first line is the password")->excludes(password);
    auto* machine =
        app.add_option("--machine", options.MachineDir,
                       "Folder with bios.json, registry.LANG.json and so on, or a tree of index.json files; without it "
                       "the built-in machine");
    app.add_option("--attributes", options.Attributes, "Make up a machine of so many attributes")
        ->check(CLI::Range(1U, bmcsim::BmcSimulator::MaxAttributes))
        ->excludes(machine);
    app.add_option("--state", options.StateFile, "File that keeps the values from run to run");
    app.add_option("--access-log", options.AccessLogFile, "File that gets one JSON line a request");
    app.add_option("--latency-ms", line.LatencyMs, "Pause before each answer")->check(CLI::Range(0, 3'600'000));
    app.add_option("--reboot-ms", line.RebootMs, "How long a start of the system takes")
        ->check(CLI::Range(0, 3'600'000));
    auto* tasks = app.add_flag("--tasks", options.AnswerWithTasks, "Answer changes and actions with a task");
    app.add_option("--task-looks", options.TaskLooks, "How often a task is still running when it is looked at")
        ->check(CLI::Range(0, 1000))
        ->capture_default_str()
        ->needs(tasks);
    // Each rule is one argument, so that the next word is not taken for another one.
    app.add_option("--fault", options.FaultRules, "What goes wrong, see below; may be given several times")
        ->type_name("RULE")
        ->expected(1)
        ->check(CLI::Validator([](std::string& rule) { return bmcsim::FaultRuleError(rule); }, ""))
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    app.footer(bmcsim::FaultHelp());
    certificate->needs(key)->excludes(http);
    key->needs(certificate)->excludes(http);
    app.set_version_flag("--version", std::string("tavrine-bmcsim ") + BMCSIM_VERSION);
}

/// @return the exit status when the program is to end here.
std::optional<int> Parse(int argc, char** argv, CommandLine& line)
{
    CLI::App app("Simulated BMC: a Redfish service of one server.\n"
                 "Prints \"ready URL sha256:FINGERPRINT\" when it listens and serves until it is interrupted.",
                 "tavrine-bmcsim");
    Describe(app, line);
    try
    {
        app.parse(argc, argv);
    }
    catch (const CLI::Success& wish)
    {
        return app.exit(wish);
    }
    catch (const CLI::ParseError& problem)
    {
        fmt::print(stderr, "tavrine-bmcsim: {}\nRun tavrine-bmcsim --help for the options.\n", problem.what());
        return ExitUsage;
    }
    line.Options.Latency = std::chrono::milliseconds(line.LatencyMs);
    line.Options.RebootTime = std::chrono::milliseconds(line.RebootMs);
    return std::nullopt;
}

bool ReadPassword(const std::string& path, std::string& password, std::string& error)
{
    std::ifstream file(path);
    if (!file || !std::getline(file, password))
    {
        error = fmt::format("cannot read a password from '{}'", path);
        return false;
    }
    if (!password.empty() && password.back() == '\r')
    {
        password.pop_back();
    }
    return true;
}

int Fail(const std::string& error)
{
    fmt::print(stderr, "tavrine-bmcsim: {}\n", error);
    return ExitFailure;
}

int Serve(const bmcsim::SimulatorOptions& options)
{
    // Blocked before any thread is made, so that only sigwait ever sees them.
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);

    std::string error;
    const auto simulator = bmcsim::BmcSimulator::Start(options, error);
    if (!simulator)
    {
        return Fail(error);
    }
    const std::string fingerprint = simulator->Fingerprint();
    const std::string ready =
        fmt::format("ready {}{}\n", simulator->Url(), fingerprint.empty() ? "" : " sha256:" + fingerprint);
    if (std::fputs(ready.c_str(), stdout) == EOF || std::fflush(stdout) != 0)
    {
        return Fail("cannot write to standard output");
    }
    int signal = 0;
    sigwait(&signals, &signal);
    const std::string trouble = simulator->Trouble();
    return trouble.empty() ? 0 : Fail(trouble);
}

} // namespace

int main(int argc, char** argv)
try
{
    CommandLine line;
    if (const auto status = Parse(argc, argv, line))
    {
        return *status;
    }
    std::string error;
    if (!line.PasswordFile.empty() && !ReadPassword(line.PasswordFile, line.Options.Password, error))
    {
        return Fail(error);
    }
    return Serve(line.Options);
}
catch (const std::exception& problem)
{
    std::fprintf(stderr, "tavrine-bmcsim: %s\n", problem.what());
    return ExitFailure;
}
