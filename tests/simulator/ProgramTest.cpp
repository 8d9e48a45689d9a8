// tavrine-bmcsim as its users start it.

#include "Fixture.h"
#include "SharedData.h"

#include <csignal>
#include <fcntl.h>
#include <regex>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

using namespace bmctest;
using testing::HasSubstr;

/// The program as a child, with its output caught.
class Child
{
  public:
    explicit Child(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), BMCSIM_PROGRAM);
        std::vector<char*> argv;
        for (std::string& argument : arguments)
        {
            argv.push_back(argument.data());
        }
        argv.push_back(nullptr);
        int pipe[2];
        EXPECT_EQ(pipe2(pipe, O_CLOEXEC), 0);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, pipe[1], STDOUT_FILENO);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, ErrorFile().c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                         0600);
        EXPECT_EQ(posix_spawn(&m_Process, BMCSIM_PROGRAM, &actions, nullptr, argv.data(), environ), 0);
        posix_spawn_file_actions_destroy(&actions);
        close(pipe[1]);
        m_Output = pipe[0];
    }
    ~Child()
    {
        if (m_Process > 0)
        {
            kill(m_Process, SIGKILL);
            Wait();
        }
        close(m_Output);
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    /// What stands on standard output up to the first line's end.
    std::string ReadLine()
    {
        std::string line;
        for (char c = 0; line.empty() || line.back() != '\n';)
        {
            if (read(m_Output, &c, 1) != 1)
            {
                break;
            }
            line += c;
        }
        return line;
    }
    std::string ReadRest()
    {
        std::string text;
        for (std::string line = ReadLine(); !line.empty(); line = ReadLine())
        {
            text += line;
        }
        return text;
    }
    void Signal(int number) const { kill(m_Process, number); }
    /// Exit status, or -1 for an end by a signal.
    int Wait()
    {
        int status = 0;
        waitpid(m_Process, &status, 0);
        m_Process = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    std::string Errors() const { return testdata::ReadFile(ErrorFile()); }

  private:
    std::string ErrorFile() const { return (m_Folder.Path() / "stderr").string(); }

    testdata::TemporaryFolder m_Folder;
    pid_t m_Process = -1;
    int m_Output = -1;
};

/// The URL of a ready line; empty when the line has another form.
std::string UrlOf(const std::string& line, bool https)
{
    const std::regex form(https ? "ready (https://127\\.0\\.0\\.1:[0-9]+) sha256:[0-9a-f]{64}\n"
                                : "ready (http://127\\.0\\.0\\.1:[0-9]+)\n");
    std::smatch match;
    return std::regex_match(line, match, form) ? match[1].str() : std::string();
}

TEST(Program, TellsThatItIsReadyAndServesUntilItIsTerminated)
{
    for (const bool https : {true, false})
    {
        for (const int signal : {SIGTERM, SIGINT})
        {
            Child child(https ? std::vector<std::string>{} : std::vector<std::string>{"--http", "--port", "0"});
            const std::string url = UrlOf(child.ReadLine(), https);
            ASSERT_NE(url, "");
            httplib::Client client(url);
            client.enable_server_certificate_verification(false);
            client.set_basic_auth("admin", "password");
            client.set_keep_alive(true);
            const auto answer = client.Get("/redfish/v1/Systems/1/Bios");
            ASSERT_TRUE(answer);
            EXPECT_EQ(answer->status, 200);
            child.Signal(signal);
            EXPECT_EQ(child.ReadRest(), "");
            EXPECT_EQ(child.Wait(), 0);
            EXPECT_EQ(child.Errors(), "");
        }
    }
}

TEST(Program, TakesItsOptions)
{
    const testdata::TemporaryFolder folder;
    const std::string state = (folder.Path() / "state.json").string();
    const std::string log = (folder.Path() / "access.log").string();
    folder.Write("machine/bios.json", R"({"Attributes":{"A":"b"}})");
    Child child({"--http", "--bind", "127.0.0.1", "--user", "root", "--password-file",
                 folder.Write("password", "line one\r\nline two\n"), "--machine", (folder.Path() / "machine").string(),
                 "--state", state, "--access-log", log, "--latency-ms", "5"});
    const std::string url = UrlOf(child.ReadLine(), false);
    ASSERT_NE(url, "");
    httplib::Client client(url);
    client.set_basic_auth("root", "line one");
    const auto answer = client.Get("/redfish/v1/Systems/1/Bios");
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, 200);
    EXPECT_EQ(At(Parse(answer->body), "/Attributes/A"), "b");
    EXPECT_EQ(At(Parse(testdata::ReadFile(log)), "/status"), 200);
    EXPECT_EQ(At(ParseFile(state), "/Effective/A"), "b");
    child.Signal(SIGTERM);
    EXPECT_EQ(child.Wait(), 0);
}

TEST(Program, MakesUpAMachineAndAnswersWithTasks)
{
    Child child({"--http", "--attributes", "30", "--tasks", "--task-looks", "1", "--reboot-ms", "3600000"});
    const std::string url = UrlOf(child.ReadLine(), false);
    ASSERT_NE(url, "");
    httplib::Client client(url);
    client.set_basic_auth("admin", "password");
    const auto bios = client.Get("/redfish/v1/Systems/1/Bios");
    ASSERT_TRUE(bios);
    EXPECT_EQ(At(Parse(bios->body), "/Attributes").as_object().size(), 30U);
    const auto reset = client.Post("/redfish/v1/Systems/1/Actions/ComputerSystem.Reset",
                                   R"({"ResetType":"ForceRestart"})", "application/json");
    ASSERT_TRUE(reset);
    EXPECT_EQ(reset->status, 202);
    EXPECT_EQ(client.Get(reset->get_header_value("Location"))->status, 202);
    EXPECT_EQ(client.Get(reset->get_header_value("Location"))->status, 200);
    const auto system = client.Get("/redfish/v1/Systems/1");
    ASSERT_TRUE(system);
    EXPECT_EQ(At(Parse(system->body), "/PowerState"), "PoweringOn");
    child.Signal(SIGTERM);
    EXPECT_EQ(child.Wait(), 0);
}

TEST(Program, TakesSeveralFaultRules)
{
    Child child({"--http", "--fault", "GET * #1 status 500", "--fault", "GET * #2 status 501 \"X-Note=a b\""});
    const std::string url = UrlOf(child.ReadLine(), false);
    ASSERT_NE(url, "");
    httplib::Client client(url);
    EXPECT_EQ(client.Get("/redfish")->status, 500);
    const auto second = client.Get("/redfish");
    EXPECT_EQ(second->status, 501);
    EXPECT_EQ(second->get_header_value("X-Note"), "a b");
    EXPECT_EQ(client.Get("/redfish")->status, 200);
    child.Signal(SIGTERM);
    EXPECT_EQ(child.Wait(), 0);
}

TEST(Program, WrongOptionsAreRefused)
{
    struct Case
    {
        std::vector<std::string> Arguments;
        const char* Named;
    };
    const Case cases[] = {
        {{"--nonsense"}, "--nonsense"},
        {{"stray"}, "stray"},
        {{"--port", "65536"}, "--port"},
        {{"--port", "-1"}, "--port"},
        {{"--port", "x"}, "--port"},
        {{"--port"}, "--port"},
        {{"--latency-ms", "-5"}, "--latency-ms"},
        {{"--latency-ms", "3600001"}, "--latency-ms"},
        {{"--tls-cert", "a.pem"}, "--tls-key"},
        {{"--tls-key", "a.pem"}, "--tls-cert"},
        {{"--http", "--tls-cert", "a.pem", "--tls-key", "b.pem"}, "--http"},
        {{"--reboot-ms", "3600001"}, "--reboot-ms"},
        {{"--attributes", "0"}, "--attributes"},
        {{"--attributes", "100001"}, "--attributes"},
        {{"--attributes", "5", "--machine", "x"}, "--machine"},
        {{"--task-looks", "1"}, "--tasks"},
        {{"--tasks", "--task-looks", "-1"}, "--task-looks"},
        {{"--password", "x", "--password-file", "y"}, "--password"},
        {{"--fault"}, "--fault"},
        {{"--fault", "GET * busy", "--fault", "GET * burst"}, "fault rule 'GET * burst'"},
    };
    for (const Case& wrong : cases)
    {
        Child child(wrong.Arguments);
        EXPECT_EQ(child.ReadRest(), "") << wrong.Named;
        EXPECT_EQ(child.Wait(), 64) << wrong.Named;
        EXPECT_THAT(child.Errors(), HasSubstr(wrong.Named));
    }
}

TEST(Program, WhatCannotBeUsedIsNamedInOneLine)
{
    const testdata::TemporaryFolder folder;
    folder.Write("broken/bios.json", "{");
    const std::string brokenState = folder.Write("state.json", "nonsense");
    const auto taken = Start(PlainOptions());
    ASSERT_TRUE(taken);
    const std::string port = std::to_string(taken->Port());
    struct Case
    {
        std::vector<std::string> Arguments;
        std::string Named;
    };
    const Case cases[] = {
        {{"--machine", "/no/such/machine"}, "/no/such/machine"},
        {{"--machine", (folder.Path() / "broken").string()}, "bios.json"},
        {{"--port", port}, port},
        {{"--state", brokenState}, brokenState},
        {{"--access-log", "/no/such/folder/log"}, "/no/such/folder/log"},
        {{"--password-file", "/no/such/password"}, "/no/such/password"},
        {{"--password-file", folder.Write("empty", "")}, "empty"},
        {{"--tls-cert", "/no/such/cert", "--tls-key", "/no/such/key"}, "/no/such/cert"},
        {{"--bind", "not an address"}, "not an address"},
        {{"--http", "--fault", "GET * tls-cut"}, "GET * tls-cut"},
    };
    for (const Case& wrong : cases)
    {
        Child child(wrong.Arguments);
        EXPECT_EQ(child.ReadRest(), "") << wrong.Named;
        EXPECT_EQ(child.Wait(), 1) << wrong.Named;
        const std::string errors = child.Errors();
        EXPECT_THAT(errors, HasSubstr(wrong.Named));
        EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 1) << errors;
    }
}

TEST(Program, HelpAndVersionAreTold)
{
    Child help({"--help"});
    const std::string text = help.ReadRest();
    EXPECT_EQ(help.Wait(), 0);
    for (const char* option : {"--port", "--bind", "--http", "--tls-cert", "--tls-key", "--user", "--password",
                               "--password-file", "--machine", "--attributes", "--state", "--access-log",
                               "--latency-ms", "--reboot-ms", "--tasks", "--task-looks", "--fault", "close-within"})
    {
        EXPECT_THAT(text, HasSubstr(option));
    }
    Child version({"--version"});
    EXPECT_TRUE(std::regex_match(version.ReadRest(), std::regex("tavrine-bmcsim [0-9]+\\.[0-9]+\\.[0-9]+\n")));
    EXPECT_EQ(version.Wait(), 0);
}

} // namespace
