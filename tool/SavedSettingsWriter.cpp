#include "SavedSettingsWriter.h"

#include <algorithm>
#include <cstddef>
#include <locale>

#include <boost/algorithm/string/case_conv.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>
#include <fmt/format.h>

#include "JsonOutput.h"
#include "TextOutput.h"

namespace json = boost::json;

namespace Tavrine::Tool
{
namespace
{

std::string Json(const std::string& text)
{
    const auto isPlain = [](char c) { return c >= ' ' && c < 0x7F && c != '"' && c != '\\'; };
    return std::all_of(text.begin(), text.end(), isPlain) ? '"' + text + '"' // as nearly all names and values are
                                                          : json::serialize(json::value(ValidUtf8(text)));
}

/// A name in front of the "=" of a line.
std::string LineName(const std::string& name)
{
    std::string escaped = EscapeText(name);
    for (std::size_t at = escaped.find('='); at != std::string::npos; at = escaped.find('=', at))
    {
        escaped.replace(at, 1, "\\x3D");
    }
    if (escaped.starts_with('#') || escaped.starts_with('{'))
    {
        escaped.replace(0, 1, fmt::format("\\x{:02X}", static_cast<unsigned int>(escaped.front())));
    }
    return escaped;
}

} // namespace

bool WantsLines(const std::string& path)
{
    const std::string lowered = boost::algorithm::to_lower_copy(path, std::locale::classic());
    return lowered.ends_with(".txt") || lowered.ends_with(".conf");
}

std::string SavedDocument(const SavedSettings& saved)
{
    std::string text = "{\n  \"format\": " + Json(std::string(SavedFormat)) +
                       ",\n  \"version\": " + std::to_string(SavedVersion) + ",\n";
    for (const SavedHeaderMember& member : SavedHeaderMembers)
    {
        text += fmt::format("  \"{}\": {},\n", member.Name, Json(saved.Header.*member.Text));
    }
    text += "  \"settings\": {";
    const char* separator = "\n";
    for (const auto& [name, value] : saved.Settings)
    {
        text += separator + ("    " + Json(name)) + ": " + Json(value);
        separator = ",\n";
    }
    return text + (saved.Settings.empty() ? "}\n}\n" : "\n  }\n}\n");
}

std::string SavedLines(const SavedSettings& saved)
{
    std::string text = fmt::format("# {}: {}\n", SavedFormat, SavedVersion);
    for (const SavedHeaderMember& member : SavedHeaderMembers)
    {
        text += fmt::format("# {}: {}\n", member.Name, EscapeText(saved.Header.*member.Text));
    }
    for (const auto& [name, value] : saved.Settings)
    {
        text += LineName(name) + "=" + EscapeText(value) + "\n";
    }
    return text.append(SavedEnd) + "\n";
}

} // namespace Tavrine::Tool
