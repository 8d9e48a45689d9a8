#include "ToolRun.h"

#include <optional>
#include <stdexcept>
#include <utility>

#include "Bmc.h"
#include "Command.h"
#include "Options.h"
#include "Program.h"
#include "SavedSettings.h"
#include "SharedData.h"

using namespace Tavrine::Tool;

namespace endtoend
{
namespace
{

constexpr const char* StateName = "state.json";
constexpr const char* PasswordName = "password";

Answer Failed(Failure failure)
{
    Answer answer;
    AddFailure(answer, std::move(failure));
    return answer;
}

} // namespace

ToolRun::ToolRun(const std::string& machineDir, const std::string& state)
{
    bmcsim::SimulatorOptions options;
    options.PlainHttp = true;
    options.MachineDir = machineDir;
    options.StateFile = File(StateName);
    if (!state.empty())
    {
        m_Folder.Write(StateName, state);
    }
    m_Folder.Write(PasswordName, options.Password + "\n");
    m_Simulator = bmcsim::BmcSimulator::Start(options, m_Error);
}

Answer ToolRun::Run(const std::vector<std::string>& arguments) const { return RunAt(m_Simulator->Url(), arguments); }

Answer ToolRun::RunAt(const std::string& url, const std::vector<std::string>& arguments) const
{
    std::vector<std::string> all = {
        "--bmc",     url, "--user", bmcsim::SimulatorOptions().User, "--password-file", File(PasswordName),
        "--retries", "0"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    const ParsedCommandLine parsed = ParseCommandLine(all, Commands(), [](const char*) { return nullptr; });
    if (!parsed.Request)
    {
        return Failed({StatusUsage, parsed.Text, {}, {}});
    }
    std::unique_ptr<Bmc> bmc;
    return Perform(
        *parsed.Request, [](const std::string&) {}, bmc);
}

Tavrine::SettingStringMap ToolRun::Read(const std::string& name) const
{
    SavedSettings saved;
    if (const std::optional<Failure> failure = ReadSavedSettings(File(name), saved))
    {
        throw std::runtime_error(failure->Message);
    }
    return saved.Settings;
}

std::string ToolRun::State() const { return testdata::ReadFile(File(StateName)); }

std::string Told(const Answer& answer)
{
    std::string text;
    for (const Failure& failure : answer.Errors)
    {
        text += std::to_string(failure.Code) + " " + failure.Message + "\n";
    }
    return text;
}

} // namespace endtoend
