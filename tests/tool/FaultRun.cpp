#include "FaultRun.h"

#include <algorithm>
#include <filesystem>
#include <regex>
#include <stdexcept>
#include <utility>

#include <boost/algorithm/string/replace.hpp>
#include <httplib.h>

#include "SharedData.h"
#include "TemporaryFolder.h"

namespace tooltest
{
namespace
{

constexpr const char* User = "admin";
constexpr const char* Password = "Quenya-77-secret";
constexpr const char* Systems = "/redfish/v1/Systems/1";
/// More would cost time and find nothing: what grows with their number is tested elsewhere.
constexpr unsigned int Attributes = 12;

std::unique_ptr<bmcsim::BmcSimulator> StartBmc(const FaultRun& run, const std::string& stateFile)
{
    bmcsim::SimulatorOptions options;
    options.PlainHttp = !run.Https;
    options.User = User;
    options.Password = Password;
    options.Attributes = Attributes;
    options.StateFile = stateFile;
    options.FaultRules = run.Rules;
    options.AnswerWithTasks = run.Tasks;
    options.TaskLooks = 1;
    std::string error;
    auto bmc = bmcsim::BmcSimulator::Start(options, error);
    if (!bmc)
    {
        throw std::runtime_error(error);
    }
    return bmc;
}

std::string MakeStateBefore()
{
    const testdata::TemporaryFolder folder;
    const std::string file = (folder.Path() / "state").string();
    const auto bmc = StartBmc({}, file);
    httplib::Client client(bmc->Url());
    client.set_basic_auth(User, Password);
    const std::string system = Systems;
    const auto patched =
        client.Patch(system + "/Bios/Settings",
                     R"({"Attributes":{"Setting000001":")" + std::string(WaitingValue) + R"("}})", "application/json");
    const auto written =
        client.Post(system + "/Actions/Oem/ZorvanComputerSystem.DSWriteFile",
                    R"({"FileName":"custom_default","Content":"kept","Create":true})", "application/json");
    if (!patched || patched->status >= 300 || !written || written->status >= 300)
    {
        throw std::runtime_error("the state before cannot be made");
    }
    return testdata::ReadFile(file);
}

std::string Neutral(std::string text, const std::string& folder, const std::string& bmc)
{
    static const std::regex time("[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:.]+Z");
    boost::algorithm::replace_all(text, folder, "@");
    boost::algorithm::replace_all(text, bmc, "[bmc]");
    return std::regex_replace(text, time, "TIME");
}

Launch ToolLaunch(const FaultRun& run, const bmcsim::BmcSimulator& bmc, const std::string& folder,
                  const std::string& log)
{
    Launch launch;
    launch.Arguments = {"--bmc", bmc.Url(), "--user", User, "--log-file", log, "--log-level", "4"};
    if (run.Timeout > 0)
    {
        launch.Arguments.insert(launch.Arguments.end(), {"--timeout", std::to_string(run.Timeout)});
    }
    if (run.Https)
    {
        launch.Arguments.insert(launch.Arguments.end(), {"--pin", "sha256:" + bmc.Fingerprint()});
    }
    for (std::string argument : run.Arguments)
    {
        boost::algorithm::replace_all(argument, "@", folder);
        launch.Arguments.push_back(argument);
    }
    launch.Variables = {{"TAVRINE_PASSWORD", Password}};
    return launch;
}

} // namespace

std::string StateBefore()
{
    static const std::string state = MakeStateBefore();
    return state;
}

FaultOutcome RunWithFaults(const FaultRun& run)
{
    const testdata::TemporaryFolder ours;
    const testdata::TemporaryFolder folder;
    const std::string state = ours.Write("state", StateBefore());
    const std::string log = (ours.Path() / "log").string();
    folder.Write("saved.conf", "Setting000000=Disabled\nSetting000006=50\n");
    folder.Write("custom", "[1]");
    folder.Write("out", OldOutput);
    auto bmc = StartBmc(run, state);
    FaultOutcome outcome;
    const std::string place = "127.0.0.1:" + std::to_string(bmc->Port());
    const auto neutral = [&](std::string text) { return Neutral(std::move(text), folder.Path().string(), place); };
    const auto begun = std::chrono::steady_clock::now();
    outcome.Tool = RunToEnd(ToolLaunch(run, *bmc, folder.Path().string(), log));
    outcome.Took = std::chrono::steady_clock::now() - begun;
    outcome.Tool.Output = neutral(outcome.Tool.Output);
    outcome.Tool.Errors = neutral(outcome.Tool.Errors);
    outcome.Log = neutral(testdata::ReadFile(log));
    // Once it has stopped, nothing that was asked for comes later.
    outcome.Requests = bmc->AccessLog();
    bmc.reset();
    outcome.State = neutral(testdata::ReadFile(state));
    for (const auto& entry : std::filesystem::directory_iterator(folder.Path()))
    {
        outcome.Files[entry.path().filename().string()] = neutral(testdata::ReadFile(entry.path().string()));
    }
    return outcome;
}

bool HoldsASecret(const std::string& text)
{
    // A session's token is 32 hexadecimal digits, and nothing else that is told is.
    static const std::regex token("(^|[^0-9a-f])[0-9a-f]{32}($|[^0-9a-f])");
    // The password in the header of basic authentication.
    static const std::string encoded = httplib::make_basic_authentication_header(User, Password).second.substr(6);
    return text.find(Password) != std::string::npos || text.find(encoded) != std::string::npos ||
           std::regex_search(text, token);
}

} // namespace tooltest
