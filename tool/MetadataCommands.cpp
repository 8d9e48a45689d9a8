#include "MetadataCommands.h"

#include <memory>
#include <string>

#include <fmt/format.h>

#include "Bmc.h"
#include "JsonOutput.h"
#include "Options.h"
#include "SettingSelection.h"
#include "TextOutput.h"

namespace Tavrine::Tool
{
namespace
{

using LibraryQuery = RedfishConfigResult (RedfishConfigProc::*)(SettingStringMap&, const std::string&);

Answer ListTexts(RedfishConfigProc& front, const Options& options, LibraryQuery query, const char* lacked)
{
    Answer answer;
    SettingSelection<SettingStringMap> selection(
        front, [&](SettingStringMap& values, const std::string& name) { return (front.*query)(values, name); },
        [&](SettingStringMap& known) { return front.QuerySettingDescriptions(known, ""); }, answer);
    selection.Take(options.Names);
    if (!selection.Missing().empty())
    {
        answer.Notes.push_back(
            fmt::format("note: {} of {} settings have no {}", selection.Missing().size(), selection.Meant(), lacked));
    }
    if (!options.Json)
    {
        answer.Text = SettingLines(selection.Entries());
        return answer;
    }
    for (const auto& [name, text] : selection.Entries())
    {
        answer.Data[ValidUtf8(name)] = ValidUtf8(text);
    }
    return answer;
}

} // namespace

Answer ListValues(RedfishConfigProc& front, const Options& options)
{
    return ListTexts(front, options, &RedfishConfigProc::QuerySettingValidValues, "valid values in the registry");
}

Answer ListDefaults(RedfishConfigProc& front, const Options& options)
{
    return ListTexts(front, options, &RedfishConfigProc::QuerySettingDefaultValues, "default value");
}

Answer RunValues(const Options& options, Bmc& bmc) { return ListValues(*bmc.Front(0), options); }

Answer RunDefaults(const Options& options, Bmc& bmc) { return ListDefaults(*bmc.Front(0), options); }

} // namespace Tavrine::Tool
