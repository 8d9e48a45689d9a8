#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <boost/json/parse.hpp>

#include "BmcSimulator.h"
#include "ChildProcess.h"
#include "FakeBmc.h"
#include "RunningBmc.h"
#include "SharedData.h"
#include "TestMachine.h"

using namespace tooltest;

namespace json = boost::json;

namespace
{

/// Expects a failure with this code in all its forms: exit status, line on standard
/// error, and with `--json` a document.
void ExpectFailure(Launch launch, int code, const std::string& word)
{
    const Finished text = RunToEnd(launch);
    EXPECT_EQ(text.Status, code) << text.Errors;
    EXPECT_EQ(text.Output, "");
    EXPECT_NE(text.Errors.find("tavrine: " + std::to_string(code) + " "), std::string::npos) << text.Errors;
    EXPECT_NE(text.Errors.find(word), std::string::npos) << text.Errors;

    launch.Arguments.emplace_back("--json");
    const Finished data = RunToEnd(launch);
    EXPECT_EQ(data.Status, code);
    EXPECT_EQ(data.Errors, text.Errors);
    json::error_code failure;
    const json::value document = json::parse(data.Output, failure);
    ASSERT_FALSE(failure) << data.Output;
    EXPECT_EQ(document.at("code"), code);
    EXPECT_EQ(document.at("settings"), json::object());
    ASSERT_FALSE(document.at("errors").as_array().empty());
    EXPECT_EQ(document.at("errors").at(0).at("code"), code);
}

/// A port of loopback on which nobody listens while this lives.
class DeadPort
{
  public:
    DeadPort() : m_Socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        bind(m_Socket, reinterpret_cast<sockaddr*>(&address), sizeof(address));
        socklen_t size = sizeof(address);
        getsockname(m_Socket, reinterpret_cast<sockaddr*>(&address), &size);
        m_Port = ntohs(address.sin_port);
    }
    DeadPort(const DeadPort&) = delete;
    DeadPort& operator=(const DeadPort&) = delete;
    ~DeadPort() { close(m_Socket); }
    std::string Address() const { return "127.0.0.1:" + std::to_string(m_Port); }

  private:
    int m_Socket;
    int m_Port = 0;
};

Launch To(const std::string& bmc, const std::vector<std::string>& arguments)
{
    Launch launch;
    launch.Arguments = {"--bmc", bmc, "--user", "admin"};
    launch.Arguments.insert(launch.Arguments.end(), arguments.begin(), arguments.end());
    launch.Variables = {{"TAVRINE_PASSWORD", "password"}};
    return launch;
}

const std::string Systems = R"({"Members":[{"@odata.id":"/redfish/v1/Systems/1"}]})";

} // namespace

TEST(ProgramFailure, NobodyListens)
{
    const DeadPort port;
    ExpectFailure(To(port.Address(), {"show"}), 24, port.Address());
    ExpectFailure(To(port.Address(), {"show", "Mode"}), 24, port.Address());
}

TEST(ProgramFailure, WrongPassword)
{
    const RunningBmc bmc;
    Launch launch = bmc.Tool({"show"});
    launch.Variables["TAVRINE_PASSWORD"] = "hunter2";
    ExpectFailure(launch, 24, "password");
    EXPECT_EQ(RunToEnd(launch).Errors.find("hunter2"), std::string::npos);
}

TEST(ProgramFailure, UntrustedCertificate)
{
    const RunningBmc bmc;
    ExpectFailure(To(bmc.Url(), {"show"}), 24, "certificate");
    ExpectFailure(To(bmc.Url(), {"show", "--pin", "sha256:" + std::string(64, '0')}), 24, "certificate");
}

/// Read once, it serves for as many connections as come.
TEST(ProgramFailure, CertificatesMayComeThroughAPipe)
{
    for (const std::vector<std::string>& faults : {std::vector<std::string>{}, {"GET * close-after"}})
    {
        bmcsim::SimulatorOptions simulated;
        simulated.FaultRules = faults;
        std::string error;
        const auto bmc = bmcsim::BmcSimulator::Start(simulated, error);
        ASSERT_NE(bmc, nullptr) << error;
        Launch launch = To(bmc->Url(), {"show", "--cacert", "/dev/stdin"});
        launch.Input = bmc->CertificatePem();
        const Finished shown = RunToEnd(launch);
        ASSERT_EQ(shown.Status, 0) << shown.Errors;
        EXPECT_NE(shown.Output, "");
        EXPECT_EQ(bmc->AccessLog().back().Connection > 1, !faults.empty());
    }
}

TEST(ProgramFailure, AnInsecureConnectionSaysSo)
{
    const RunningBmc bmc;
    const Finished shown = RunToEnd(To(bmc.Url(), {"show", "--insecure"}));
    EXPECT_EQ(shown.Status, 0) << shown.Errors;
    EXPECT_NE(shown.Output, "");
    EXPECT_NE(shown.Errors.find("not verified"), std::string::npos) << shown.Errors;
}

TEST(ProgramFailure, PlainHttpSaysSo)
{
    const RunningBmc bmc({"--http"});
    const Finished shown = RunToEnd(To(bmc.Url(), {"show"}));
    EXPECT_EQ(shown.Status, 0) << shown.Errors;
    EXPECT_NE(shown.Errors.find("in clear"), std::string::npos) << shown.Errors;
}

TEST(ProgramFailure, HttpOnAnHttpsPort)
{
    const RunningBmc bmc;
    ExpectFailure(To("http://127.0.0.1:" + bmc.Port(), {"show"}), 24, "the port may want https");
}

TEST(ProgramFailure, HttpsOnAnHttpPort)
{
    const RunningBmc bmc({"--http"});
    ExpectFailure(To("127.0.0.1:" + bmc.Port(), {"show"}), 24, bmc.Port());
}

TEST(ProgramFailure, ABiosResourceThatCannotBeUsedIsExplained)
{
    struct Row
    {
        std::string Bios;
        int Code;
        const char* Word;
    };
    const Row rows[] = {
        {"no JSON", 27, "/redfish/v1/Systems/1/Bios from 127.0.0.1"},
        {R"({"Id":"Bios"})", 26, "has no object \"Attributes\""},
        {std::string(20000, '['), 27, "nested deeper"},
    };
    for (const Row& row : rows)
    {
        const FakeBmc bmc({{"/redfish/v1/Systems", Systems}, {"/redfish/v1/Systems/1/Bios", row.Bios}});
        ExpectFailure(bmc.Tool({"show"}), row.Code, row.Word);
    }
    const FakeBmc bmc({{"/redfish/v1/Systems", Systems}});
    ExpectFailure(bmc.Tool({"show"}), 26, "404");
}

TEST(ProgramFailure, AFileThatStandsInForAnswersIsNamed)
{
    const testdata::TemporaryFolder folder;
    const std::string file = folder.Write("debug.json", "{}");
    const RunningBmc bmc({"--http"});
    const std::string host = "127.0.0.1:" + bmc.Port();
    const std::string source = "tavrine: cause: " + file + " stands in for answers of ";
    ExpectFailure(bmc.Tool({"show", "--debug-config", file, "BootFailLimit"}), 27, source + host + "\n");
    ExpectFailure(bmc.Tool({"show", "--debug-config", file}), 26, source + host + ": ");
    Launch simulated;
    simulated.Arguments = {"show", "--simulate", "--debug-config", file};
    ExpectFailure(simulated, 26, source + "the simulated BMC: ");
}

TEST(ProgramFailure, WhatWasJudgedHereHasNoCauseInAnswers)
{
    const RunningBmc bmc({"--http"});
    const Finished refused = RunToEnd(bmc.Tool({"set", "BiosVersion=1"}));
    EXPECT_EQ(refused.Status, 18);
    EXPECT_NE(refused.Errors.find("it is read-only"), std::string::npos) << refused.Errors;
    EXPECT_EQ(refused.Errors.find("cause: "), std::string::npos) << refused.Errors;

    const RunningBmc slow({"--http", "--reboot-ms", "60000"});
    const Finished late = RunToEnd(slow.Tool({"reboot", "--wait", "1"}));
    EXPECT_EQ(late.Status, 24);
    EXPECT_NE(late.Errors.find("24 The system has not started within the time to wait\n"), std::string::npos)
        << late.Errors;
    EXPECT_EQ(late.Errors.find("cause: "), std::string::npos) << late.Errors;
}

TEST(ProgramFailure, ARegistryThatCannotBeFoundStopsSingleReadsAlone)
{
    const FakeBmc bmc({{"/redfish/v1/Systems", Systems},
                       {"/redfish/v1/Systems/1/Bios", R"({"AttributeRegistry":"Lost.v1","Attributes":{"A":"1"}})"},
                       {"/redfish/v1/Registries", R"({"Members":[]})"}});
    ExpectFailure(bmc.Tool({"show", "A"}), 26, "Lost.v1");
    EXPECT_EQ(RunToEnd(bmc.Tool({"show"})).Output, "BIOS.A=1\n");
    const testdata::TemporaryFolder folder;
    const Finished compared = RunToEnd(bmc.Tool({"compare", folder.Write("saved.conf", "A=geheim\n")}));
    EXPECT_EQ(compared.Status, 26) << compared.Errors;
    EXPECT_EQ(compared.Output, "BIOS.A\t********\t********\n");
    EXPECT_NE(compared.Errors.find("texts are not shown, since any may be a password\n"), std::string::npos)
        << compared.Errors;
    EXPECT_NE(compared.Errors.find("Lost.v1"), std::string::npos) << compared.Errors;

    const Finished groups = RunToEnd(bmc.Tool({"groups", "--json"}));
    EXPECT_EQ(groups.Status, 26);
    EXPECT_NE(groups.Output.find("\"groups\":{}"), std::string::npos) << groups.Output;
}

TEST(ProgramFailure, ARegistryThatCannotBeReadIsToldInOneWay)
{
    const FakeBmc bmc(
        {{"/redfish/v1/Systems", Systems},
         {"/redfish/v1/Systems/1/Bios", R"({"AttributeRegistry":"Odd.v1","Attributes":{"A":"1"}})"},
         {"/redfish/v1/Registries", R"({"Members":[{"@odata.id":"/redfish/v1/Registries/Odd.v1"}]})"},
         {"/redfish/v1/Registries/Odd.v1", R"({"Id":"Odd.v1","Location":[{"Language":"en","Uri":"/odd.json"}]})"},
         {"/odd.json", R"({"Id":"Odd.v1","Language":"en","RegistryEntries":[]})"}});
    for (const std::vector<std::string>& command : {std::vector<std::string>{"schema"},
                                                    {"find", "A"},
                                                    {"values", "A"},
                                                    {"defaults", "A", "B"},
                                                    {"describe", "A"},
                                                    {"set", "A=2"},
                                                    {"set", "A=2", "--no-check"}})
    {
        const Finished told = RunToEnd(bmc.Tool(command));
        EXPECT_EQ(told.Status, 27) << command[0];
        const char* const words =
            "tavrine: 27 The attribute registry cannot be read: it has no object \"RegistryEntries\".";
        EXPECT_NE(told.Errors.find(words), std::string::npos) << told.Errors;
    }
}

TEST(ProgramFailure, FilesThatCannotBeReadAreNamedBeforeAnythingIsSent)
{
    const DeadPort port;
    const testdata::TemporaryFolder folder;
    const std::string missing = (folder.Path() / "missing").string();
    ExpectFailure(To(port.Address(), {"show", "--password-file", missing}), 38, missing);
    ExpectFailure(To(port.Address(), {"show", "--debug-config", missing}), 38, missing);
    ExpectFailure(To(port.Address(), {"show", "--debug-config", folder.Path().string()}), 38, folder.Path().string());
    ExpectFailure(To(port.Address(), {"show", "--debug-config", "/dev/stdin"}), 38,
                  "Unable to read the debug configuration file /dev/stdin: it is no plain file");
    ExpectFailure(To(port.Address(), {"show", "--cacert", missing}), 38, missing);
    ExpectFailure(To(port.Address(), {"show", "--cacert", folder.Path().string()}), 38, "Is a directory");
    ExpectFailure(To(port.Address(), {"show", "--log-file", missing + "/log"}), 38, missing + "/log");
    ExpectFailure(To(port.Address(), {"show", "--password-file", folder.Write("empty", "")}), 16, "empty");
}

TEST(ProgramFailure, AMachineThatIsNotThereIsNamed)
{
    Launch launch;
    launch.Arguments = {"show", "--simulate", "--machine", "/nonexistent/machine"};
    ExpectFailure(launch, 15, "/nonexistent/machine");
}

TEST(ProgramFailure, AConfigurationWithASyntaxErrorStopsTheRun)
{
    const DeadPort port;
    const testdata::TemporaryFolder folder;
    Launch launch = To(port.Address(), {"show"});
    launch.Variables["TAVRINE_CONFIG"] = folder.Write("config.toml", "good = 1\nbad = = 2\n");
    ExpectFailure(launch, 17, "config.toml");
    EXPECT_NE(RunToEnd(launch).Errors.find("Fail to parse configuration file"), std::string::npos);
}

TEST(ProgramFailure, WithoutAPasswordAndATerminalTheRunEnds)
{
    const DeadPort port;
    Launch launch = To(port.Address(), {"show"});
    launch.Variables.clear();
    ExpectFailure(launch, 64, "--password-file");
}

TEST(ProgramFailure, ThePasswordComesFromStandardInputOrAFile)
{
    const RunningBmc bmc;
    Launch launch = bmc.Tool({"show", "--password-file", "-"});
    launch.Variables.clear();
    launch.Input = "password\nnot this\n";
    EXPECT_EQ(RunToEnd(launch).Status, 0);

    const testdata::TemporaryFolder folder;
    launch.Arguments.back() = folder.Write("password", "password\r\n");
    launch.Input.clear();
    EXPECT_EQ(RunToEnd(launch).Status, 0);
}

TEST(ProgramFailure, WrongCommandLinesPrintNothingElse)
{
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{}, {"frob"}, {"show", "--json", "--frob"}, {"show", "--json", "--bmc", "u:p@h"}})
    {
        Launch launch;
        launch.Arguments = arguments;
        const Finished refused = RunToEnd(launch);
        EXPECT_EQ(refused.Status, 64);
        EXPECT_EQ(refused.Output, "");
        EXPECT_EQ(refused.Errors.find("tavrine: 64 "), 0U) << refused.Errors;
    }
}

TEST(ProgramFailure, TheLogHoldsNeitherPasswordNorToken)
{
    const RunningBmc bmc;
    const testdata::TemporaryFolder folder;
    const std::string log = (folder.Path() / "log").string();
    EXPECT_EQ(RunToEnd(bmc.Tool({"show", "--log-file", log, "--log-level", "4"})).Status, 0);
    const std::string text = testdata::ReadFile(log);
    EXPECT_NE(text.find("Enter BiosRedfishConfigProc::QueryGroupSettingValues()"), std::string::npos) << text;
    EXPECT_EQ(text.find("\"password\""), std::string::npos) << text;
    EXPECT_EQ(text.find("X-Auth-Token"), std::string::npos) << text;
}
