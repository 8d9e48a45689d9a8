#include "JsonOutput.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

#include <boost/json/array.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include "TextOutput.h"

namespace json = boost::json;

namespace Tavrine::Tool
{

std::string ValidUtf8(std::string_view text)
{
    std::string out;
    out.reserve(text.size());
    ForEachCharacter(text, [&](std::string_view piece, bool isUtf8) { out += isUtf8 ? piece : "\xEF\xBF\xBD"; });
    return out;
}

std::string JsonDocument(const Answer& answer, const char* member)
{
    json::array errors;
    for (const Failure& failure : answer.Errors)
    {
        json::object entry;
        entry["setting"] = ValidUtf8(failure.Setting);
        entry["code"] = failure.Code;
        entry["message"] = ValidUtf8(failure.Message);
        if (!failure.Cause.empty())
        {
            entry["cause"] = ValidUtf8(failure.Cause);
        }
        errors.push_back(std::move(entry));
    }
    json::object document;
    document["code"] = answer.Code;
    document["message"] = ValidUtf8(answer.Message.empty() ? StandardText(answer.Code) : answer.Message);
    document[member] = answer.Data;
    document.insert(answer.More.begin(), answer.More.end());
    document["errors"] = std::move(errors);
    return json::serialize(document) + "\n";
}

json::object SettingsObject(const TypedSettings& settings)
{
    json::object object;
    for (const auto& [name, value] : settings)
    {
        object[ValidUtf8(name)] = value;
    }
    return object;
}

json::object GroupsObject(const SettingGroupMap& groups)
{
    json::object object;
    for (const auto& [group, names] : groups)
    {
        std::vector<std::string> sorted = names;
        std::sort(sorted.begin(), sorted.end());
        json::array array;
        for (const std::string& name : sorted)
        {
            array.emplace_back(ValidUtf8(name));
        }
        object[ValidUtf8(group)] = std::move(array);
    }
    return object;
}

bool ReadTypedSettings(const std::string& text, const std::string& front, TypedSettings& settings)
{
    if (text.empty())
    {
        return true;
    }
    json::error_code failure;
    json::value parsed = json::parse(text, failure);
    json::object* object = failure ? nullptr : parsed.if_object();
    if (object == nullptr)
    {
        return false;
    }
    for (auto& [name, value] : *object)
    {
        settings[front + std::string(name)] = value;
    }
    return true;
}

RedfishConfigResult ReadTypedValues(RedfishConfigProc& front, TypedSettings& values)
{
    SettingStringMap given;
    const RedfishConfigResult result = front.QueryGroupSettingValues(given);
    if (!IsSuccess(result.ErrorCode()))
    {
        return result;
    }
    const auto entry = given.find(front.GetSecondPrefix());
    const bool good = entry == given.end() || ReadTypedSettings(entry->second, "", values);
    return good ? result : RedfishConfigResult(CodeInternal, "", "");
}

} // namespace Tavrine::Tool
