#include "SchemaCommand.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>

#include "Bmc.h"
#include "CauseLog.h"
#include "JsonOutput.h"
#include "MissingActions.h"
#include "Options.h"
#include "OutputFile.h"
#include "RegistryText.h"
#include "SettingManager.h"

namespace json = boost::json;

namespace Tavrine::Tool
{
namespace
{

Answer WriteSchema(const std::string& text, const Options& options)
{
    Answer answer;
    const std::string& file = options.Names.front();
    if (std::optional<Failure> failure = SaveFile(file, text + "\n"))
    {
        AddFailure(answer, std::move(*failure));
    }
    else if (options.Json)
    {
        answer.Data["file"] = ValidUtf8(file);
    }
    return answer;
}

/// A registry that cannot be read is told of as by all other commands, which a setting manager does.
RedfishConfigResult ReadRegistry(RedfishConfigProc& front, std::string& text)
{
    const RedfishConfigResult result = ReadRegistryText(front, text);
    if (result != CodeUnusable)
    {
        return result;
    }
    std::unique_ptr<RedfishConfigSettingManager> manager;
    const RedfishConfigResult told = ReadSettingManager(front, manager, ManagerValues::None);
    return told == CodeUnusable ? told : result;
}

Answer PrintSchema(const std::string& text, const Options& options)
{
    Answer answer;
    if (!options.Json)
    {
        answer.Text = text + "\n";
        return answer;
    }
    json::error_code failure;
    json::value parsed = json::parse(text, failure);
    json::object* registry = failure ? nullptr : parsed.if_object();
    if (registry == nullptr)
    {
        AddFailure(answer, {CodeInternal, "The attribute registry of the library is no JSON object."});
        return answer;
    }
    answer.Data = std::move(*registry);
    return answer;
}

} // namespace

Answer ExportSchema(RedfishConfigProc& front, const Options& options)
{
    CauseLog causes;
    std::string text;
    const RedfishConfigResult result = ReadRegistry(front, text);
    if (IsSuccess(result.ErrorCode()))
    {
        return options.Names.empty() ? PrintSchema(text, options) : WriteSchema(text, options);
    }
    Answer answer;
    const Failure failure = causes.Explain(result);
    HintAtMissingAction(failure, answer.Notes);
    AddFailure(answer, failure);
    return answer;
}

std::string SchemaFault(const Options& options)
{
    return options.Names.size() > 1                      ? "schema takes one file"
           : options.Names == std::vector{std::string()} ? "schema needs a file name that is not empty"
                                                         : "";
}

Answer RunSchema(const Options& options, Bmc& bmc)
{
    const std::unique_ptr<RedfishConfigProc> front =
        options.Protected ? bmc.Front(OutputForm::Registry) : bmc.StandardFront(OutputForm::Registry);
    return ExportSchema(*front, options);
}

} // namespace Tavrine::Tool
