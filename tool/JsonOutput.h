#pragma once

#include <map>
#include <string>
#include <string_view>

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include "Answer.h"
#include "RedfishConfigProc.h"
#include "ValueTypes.h"

namespace Tavrine::Tool
{

/// Settings with the values' own kinds; null where the BMC has no value.
using TypedSettings = std::map<std::string, boost::json::value>;

/// The one document of `--json`: "code", "message", the command's own member, and
/// "errors", on one line. An error has "setting", "code", "message" and, where more is known, "cause".
std::string JsonDocument(const Answer& answer, const char* member);

boost::json::object SettingsObject(const TypedSettings& settings);
boost::json::object GroupsObject(const SettingGroupMap& groups);

/// Reads the JSON object that the library gives under one key in its JSON form;
/// each name gets `front` in front, such as "BIOS.". An empty text is no settings.
/// @return false when the text is no JSON object.
bool ReadTypedSettings(const std::string& text, const std::string& front, TypedSettings& settings);

/// The typed values in force of all settings, by bare name.
/// @param front  of typed output.
/// @return as QueryGroupSettingValues; 13 for what is no object.
RedfishConfigResult ReadTypedValues(RedfishConfigProc& front, TypedSettings& values);

/// The text with every byte that is no UTF-8 replaced by U+FFFD, so that it can
/// stand in a document.
std::string ValidUtf8(std::string_view text);

} // namespace Tavrine::Tool
