#include "PowerCommands.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include "Bmc.h"
#include "DisplayWidth.h"
#include "JsonOutput.h"
#include "Options.h"
#include "SettingNames.h"
#include "TextOutput.h"

namespace json = boost::json;

namespace Tavrine::Tool
{
namespace
{

/// Types of a reset after which a system runs (DSP0268, "ResetType").
constexpr std::array<std::string_view, 6> StartingTypes = {"On",           "ForceOn",    "GracefulRestart",
                                                           "ForceRestart", "PowerCycle", "FullPowerCycle"};

json::array Names(const std::vector<std::string>& names, const std::string& prefix)
{
    json::array array;
    for (const std::string& name : names)
    {
        array.emplace_back(ValidUtf8(prefix + "." + name));
    }
    return array;
}

void PutMessages(const BiosResource& bios, const Options& options, const std::string& prefix, Answer& answer)
{
    json::array messages;
    std::vector<std::vector<std::string>> rows;
    for (const ChangeMessage& message : bios.Messages)
    {
        messages.push_back(json::object{{"settings", Names(message.Settings, prefix)},
                                        {"severity", ValidUtf8(message.Severity)},
                                        {"message", ValidUtf8(message.Text)}});
        for (const std::string& name : message.Settings.empty() ? std::vector<std::string>{""} : message.Settings)
        {
            rows.push_back({name.empty() ? "" : EscapeText(prefix + "." + name), EscapeText(message.Severity),
                            EscapeText(message.Text)});
        }
    }
    if (options.Json)
    {
        answer.Data["time"] = ValidUtf8(bios.ChangeTime);
        answer.Data["messages"] = std::move(messages);
        answer.Data["defaultsPending"] = bios.DefaultsPending;
        return;
    }
    answer.Text = TableText({"SETTING", "SEVERITY", "MESSAGE"}, rows, TerminalWidth());
    answer.Notes.push_back(bios.ChangeTime.empty() ? "the BMC does not tell when it last applied changes"
                                                   : "changes were last applied at " + bios.ChangeTime);
    if (bios.DefaultsPending)
    {
        answer.Notes.emplace_back("all settings go to their defaults at the next start");
    }
}

} // namespace

void AddPowerOptions(CLI::App& command, Options& options)
{
    command.add_option("--wait", options.Wait, "Wait so long until the BMC and the system are back")
        ->type_name("SECONDS")
        ->check(CLI::Range(std::uint32_t{1}, LongestWait));
}

std::string RebootTypeFault(const Options& options)
{
    if (options.Names.size() > 1)
    {
        return "reboot takes one reset type";
    }
    const bool known = options.Names.empty() || std::find(StartingTypes.begin(), StartingTypes.end(),
                                                          options.Names.front()) != StartingTypes.end();
    return known ? "" : "reboot takes On, ForceOn, GracefulRestart, ForceRestart, PowerCycle or FullPowerCycle";
}

Answer RestartSystem(const RebootMeans& means, const Options& options)
{
    Answer answer;
    SystemResource before;
    const std::chrono::milliseconds until = means.Now() + std::chrono::seconds(options.Wait.value_or(0));
    std::string type = options.Names.empty() ? std::string() : options.Names.front();
    RestartEnd end = Restart(means, options, until, before, type);
    if (options.Json)
    {
        answer.Data = RestartData(end.State, type);
    }
    if (end.Why && end.State != RestartState::Back)
    {
        AddFailure(answer, std::move(*end.Why));
        return answer;
    }
    if (end.Why)
    {
        answer.Notes.push_back(UnansweredWarning(*end.Why));
    }
    if (!options.Json)
    {
        answer.Text = (options.Wait ? "the system is back (" : "restart requested (") + EscapeText(type) + ")\n";
    }
    return answer;
}

Answer TellResults(const BmcRequests& requests, const Options& options, const std::string& prefix)
{
    Answer answer;
    SystemResource system;
    BiosResource bios;
    RedfishConfigResult result = ReadSystemAndBios(requests, system, bios);
    if (IsSuccess(result.ErrorCode()))
    {
        result = ReadPostLoad(requests, bios);
    }
    if (!IsSuccess(result.ErrorCode()))
    {
        AddFailure(answer, FailureOf(result));
        return answer;
    }
    PutMessages(bios, options, prefix, answer);
    return answer;
}

Answer RunReboot(const Options& options, Bmc& bmc)
{
    Answer answer = RestartSystem(MeansOf(bmc), options);
    answer.OfChanges = true;
    return answer;
}

Answer RunResults(const Options& options, Bmc& bmc)
{
    return TellResults(RequestsOf(bmc), options, PrefixesOf(options).First);
}

} // namespace Tavrine::Tool
