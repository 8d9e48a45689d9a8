#include "SaveCommand.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <boost/json/object.hpp>
#include <fmt/chrono.h>

#include "BiosSettingManager.h"
#include "Bmc.h"
#include "CauseLog.h"
#include "JsonOutput.h"
#include "Options.h"
#include "OutputFile.h"
#include "PendingFallback.h"
#include "SavedSettingsWriter.h"
#include "SettingManager.h"
#include "SystemResource.h"

namespace json = boost::json;

namespace Tavrine::Tool
{
namespace
{

std::string UtcNow()
{
    return fmt::format("{:%Y-%m-%dT%H:%M:%SZ}",
                       fmt::gmtime(std::chrono::system_clock::to_time_t(std::chrono::system_clock::now())));
}

json::object ObjectOf(const SettingStringMap& settings)
{
    json::object object;
    for (const auto& [name, text] : settings)
    {
        object[ValidUtf8(name)] = ValidUtf8(text);
    }
    return object;
}

/// What asks for something to be done is no state to go back to.
void LeaveRequestsOut(SettingStringMap& settings, const std::string& prefix, std::vector<std::string>& notes)
{
    const std::string name = prefix + "." + std::string(PostLoadSetting);
    if (const auto found = settings.find(name);
        found != settings.end() && AsksForDefaults(PostLoadSetting, found->second))
    {
        notes.push_back(fmt::format("note: {}={} is not saved, since it asks for all defaults", name, found->second));
        settings.erase(found);
    }
}

} // namespace

std::string SaveFault(const Options& options)
{
    return options.Names.size() > 1                      ? "save takes one file"
           : options.Names == std::vector{std::string()} ? "save needs a file name that is not empty"
           : options.Hex                                 ? "Saved numbers are decimal: leave out --hex"
                                                         : "";
}

Answer SaveSettings(RedfishConfigProc& front, const Options& options, SavedHeader header,
                    const std::function<RedfishConfigResult()>& lastFailure)
{
    Answer answer;
    CauseLog causes;
    SavedSettings saved{std::move(header), {}};
    const PendingFallback fallback;
    const RedfishConfigResult result = front.QuerySaveSettingValues(saved.Settings);
    if (!IsSuccess(result.ErrorCode()))
    {
        AddFailure(answer, causes.Explain(result));
        return answer;
    }
    if (const std::optional<int> code = fallback.FailedRead())
    {
        const RedfishConfigResult failed = lastFailure();
        const Failure read = FailureOf(failed == *code ? failed : RedfishConfigResult(*code, "", ""));
        AddFailure(answer,
                   {*code, "The values that wait for a reboot could not be read, so that what is saved may lack "
                           "some: " +
                               read.Message});
    }
    WarnOfDefaults(front, answer.Notes);
    LeaveRequestsOut(saved.Settings, front.GetSecondPrefix(), answer.Notes);
    if (saved.Settings.empty())
    {
        answer.Notes.emplace_back(
            "warning: there is nothing to save: no setting that the BMC reports can be changed by "
            "its attribute registry, or the configuration hides them");
    }
    const std::string file = options.Names.empty() || options.Names.front() == "-" ? "" : options.Names.front();
    if (!file.empty())
    {
        const std::string text = WantsLines(file) ? SavedLines(saved) : SavedDocument(saved);
        if (std::optional<Failure> failure = SaveFile(file, text, OwnersAlone))
        {
            AddFailure(answer, std::move(*failure));
            return answer;
        }
        answer.More["file"] = ValidUtf8(file);
    }
    if (options.Json)
    {
        answer.Data = ObjectOf(saved.Settings);
    }
    else if (file.empty())
    {
        answer.Text = SavedDocument(saved);
    }
    else
    {
        answer.Notes.push_back(fmt::format("{} settings saved in {}", saved.Settings.size(), file));
    }
    return answer;
}

Answer RunSave(const Options& options, Bmc& bmc)
{
    Answer answer;
    const BmcRequests requests = RequestsOf(bmc);
    SystemResource system;
    BiosResource bios;
    const RedfishConfigResult result = ReadSystemAndBios(requests, system, bios);
    if (!IsSuccess(result.ErrorCode()))
    {
        AddFailure(answer, FailureOf(result));
        return answer;
    }
    RedfishConfigProc& front = bmc.Keep(bmc.Front());
    return SaveSettings(front, options,
                        {UtcNow(), bmc.Name(), system.Manufacturer, system.Model, system.SerialNumber,
                         system.BiosVersion, bios.Registry, front.GetSecondPrefix()},
                        [&bmc] { return bmc.Connection().LastFailure().Result; });
}

} // namespace Tavrine::Tool
