#include "CustomDefaultCommand.h"

#include <cstddef>
#include <utility>

#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/string.hpp>
#include <boost/json/value.hpp>
#include <fmt/format.h>

#include "Bmc.h"
#include "CauseLog.h"
#include "InputFile.h"
#include "JsonOutput.h"
#include "Options.h"
#include "OutputFile.h"

namespace json = boost::json;

namespace Tavrine::Tool
{
namespace
{

constexpr std::size_t LargestCustomDefault = std::size_t{16} << 20;

Answer Export(RedfishConfigProc& front, const Options& options)
{
    Answer answer;
    CauseLog causes;
    std::string response;
    const RedfishConfigResult result = front.ExportUEFICustomDefaultFile(response);
    if (!IsSuccess(result.ErrorCode()))
    {
        AddFailure(answer, causes.Explain(result));
        return answer;
    }
    const std::optional<std::string> found = FileInAnswer(response);
    if (!found)
    {
        AddFailure(answer,
                   {CodeUnusable, "The answer of the BMC holds no file of custom defaults: it is empty or no JSON"});
        return answer;
    }
    const std::string& content = *found;
    const std::string& file = options.Names[1];
    if (file != "-")
    {
        if (std::optional<Failure> failure = SaveFile(file, content, OwnersAlone))
        {
            AddFailure(answer, std::move(*failure));
            return answer;
        }
        answer.Data = {{"file", ValidUtf8(file)}, {"bytes", content.size()}};
    }
    else if (options.Json)
    {
        answer.Data = {{"content", ValidUtf8(content)}};
    }
    else
    {
        answer.Text = content;
    }
    return answer;
}

Answer Import(RedfishConfigProc& front, const Options& options)
{
    Answer answer;
    CauseLog causes;
    const std::string& file = options.Names[1];
    FileContent read;
    if (std::optional<Failure> failure = LoadFile(file, LargestCustomDefault, read))
    {
        AddFailure(answer, std::move(*failure));
        return answer;
    }
    const std::string& content = read.Text;
    if (content.empty() && !read.IsPlainFile)
    {
        AddFailure(answer, {CodeParameter,
                            InputNameFirst(file) +
                                " is empty and no plain file; only an empty plain file empties what the BMC keeps"});
        return answer;
    }
    if (ValidUtf8(content) != content)
    {
        AddFailure(answer, {CodeParameter, InputNameFirst(file) + " cannot be sent: it is no text in UTF-8"});
        return answer;
    }
    const RedfishConfigResult result = front.ImportUEFICustomDefaultFile(content);
    if (!IsSuccess(result.ErrorCode()))
    {
        AddFailure(answer, causes.Explain(result));
        return answer;
    }
    answer.Data = {{"file", ValidUtf8(file)}, {"bytes", content.size()}};
    answer.OfChanges = true;
    return answer;
}

} // namespace

std::optional<std::string> FileInAnswer(const std::string& answer)
{
    json::error_code failure;
    const json::value value = json::parse(answer, failure);
    const json::object* object = failure ? nullptr : value.if_object();
    const json::value* member = object != nullptr ? object->if_contains("Content") : nullptr;
    const json::string* content = member != nullptr ? member->if_string() : nullptr;
    const std::size_t first = answer.find_first_not_of(" \t\r\n");
    if (object == nullptr && (first == std::string::npos || answer[first] == '{'))
    {
        return std::nullopt;
    }
    return content != nullptr ? std::string(*content) : answer;
}

std::string CustomDefaultFault(const Options& options)
{
    const bool known = options.Names.front() == "export" || options.Names.front() == "import";
    if (!known || options.Names.size() != 2 || options.Names[1].empty())
    {
        return "custom-default takes export or import, and one file";
    }
    return options.Names[0] == "import" && options.Names[1] == "-" && options.PasswordFile == "-"
               ? "--password-file - and import - cannot both read standard input"
               : "";
}

Answer CarryCustomDefault(RedfishConfigProc& front, const Options& options)
{
    return options.Names.front() == "export" ? Export(front, options) : Import(front, options);
}

Answer RunCustomDefault(const Options& options, Bmc& bmc) { return CarryCustomDefault(*bmc.Front(), options); }

} // namespace Tavrine::Tool
