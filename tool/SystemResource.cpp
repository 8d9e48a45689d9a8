#include "SystemResource.h"

#include <initializer_list>
#include <optional>
#include <string_view>
#include <utility>

#include <boost/json/array.hpp>
#include <boost/json/monotonic_resource.hpp>
#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/string.hpp>
#include <boost/json/value.hpp>

#include "Answer.h"
#include "BiosSettingManager.h"
#include "Bmc.h"
#include "BmcConnection.h"
#include "SettingPointer.h"

namespace json = boost::json;

namespace Tavrine::Tool
{
namespace
{

constexpr const char* SystemsPath = "/redfish/v1/Systems";
/// More messages than settings that a registry can have are of no use to anyone.
constexpr std::size_t MostMessages = 100'000;

/// The member that stands at the end of these names; null where the way breaks off.
const json::value* Find(const json::object& from, std::initializer_list<std::string_view> names)
{
    const json::object* object = &from;
    const json::value* found = nullptr;
    for (const std::string_view name : names)
    {
        found = object != nullptr ? object->if_contains(name) : nullptr;
        object = found != nullptr ? found->if_object() : nullptr;
    }
    return found;
}

std::string Text(const json::object& from, std::initializer_list<std::string_view> names)
{
    const json::value* value = Find(from, names);
    const json::string* text = value != nullptr ? value->if_string() : nullptr;
    return text != nullptr ? std::string(*text) : std::string();
}

/// As it stands there, since it may be most of a large document; an empty one where there is none.
const json::array& Array(const json::object& from, std::initializer_list<std::string_view> names)
{
    static const json::array none;
    const json::value* value = Find(from, names);
    const json::array* found = value != nullptr ? value->if_array() : nullptr;
    return found != nullptr ? *found : none;
}

std::vector<std::string> Texts(const json::array& array)
{
    std::vector<std::string> texts;
    for (const json::value& value : array)
    {
        if (const json::string* text = value.if_string())
        {
            texts.emplace_back(*text);
        }
    }
    return texts;
}

RedfishConfigResult GetObject(const BmcRequests& requests, const std::string& url, std::optional<json::object>& object)
{
    std::string response;
    RedfishConfigResult result = requests.Get(url, response);
    if (!IsSuccess(result.ErrorCode()))
    {
        return result;
    }
    json::error_code failure;
    // Read and never changed, so its memory may grow alone and go at one stroke.
    json::value value = json::parse(response, failure, json::make_shared_resource<json::monotonic_resource>());
    if (failure || !value.is_object())
    {
        return {CodeUnusable, "The answer of the BMC to GET " + url + " is no JSON object.", ""};
    }
    object.emplace(std::move(value.get_object()));
    return {CodeSucceed, "", ""};
}

ChangeMessage ReadMessage(const json::object& object)
{
    ChangeMessage message;
    message.Severity = Text(object, {"MessageSeverity"});
    if (message.Severity.empty())
    {
        message.Severity = Text(object, {"Severity"});
    }
    message.Text = Text(object, {"Message"});
    if (message.Text.empty())
    {
        message.Text = Text(object, {"MessageId"});
    }
    for (const std::string& property : Texts(Array(object, {"RelatedProperties"})))
    {
        std::string setting = SettingOfPointer(property);
        if (!setting.empty())
        {
            message.Settings.push_back(std::move(setting));
        }
    }
    return message;
}

} // namespace

BmcRequests RequestsOf(const Bmc& bmc)
{
    TavrineConnection::BmcConnection& connection = bmc.Connection();
    return {[&](const std::string& url, std::string& response) { return connection.Get(url, response); },
            [&](const std::string& url, const std::string& body, std::string& response)
            { return connection.Post(url, body, response, 0); }};
}

RedfishConfigResult ReadSystem(const BmcRequests& requests, SystemResource& system)
{
    std::optional<json::object> collection;
    RedfishConfigResult result = GetObject(requests, SystemsPath, collection);
    if (!IsSuccess(result.ErrorCode()))
    {
        return result;
    }
    system = {};
    for (const json::value& member : Array(*collection, {"Members"}))
    {
        if (const json::object* link = member.if_object(); link != nullptr && system.Path.empty())
        {
            system.Path = Text(*link, {"@odata.id"});
        }
    }
    if (system.Path.empty())
    {
        return {CodeQuery, "The BMC names no computer system.", ""};
    }
    return RefreshSystem(requests, system);
}

RedfishConfigResult RefreshSystem(const BmcRequests& requests, SystemResource& system)
{
    std::optional<json::object> object;
    RedfishConfigResult result = GetObject(requests, system.Path, object);
    if (!IsSuccess(result.ErrorCode()))
    {
        return result;
    }
    SystemResource read;
    read.Path = system.Path;
    read.Manufacturer = Text(*object, {"Manufacturer"});
    read.Model = Text(*object, {"Model"});
    read.SerialNumber = Text(*object, {"SerialNumber"});
    read.BiosVersion = Text(*object, {"BiosVersion"});
    read.PowerState = Text(*object, {"PowerState"});
    read.BootState = Text(*object, {"BootProgress", "LastState"});
    read.LastReset = Text(*object, {"LastResetTime"});
    read.ResetTarget = Text(*object, {"Actions", "#ComputerSystem.Reset", "target"});
    read.ResetInfo = Text(*object, {"Actions", "#ComputerSystem.Reset", "@Redfish.ActionInfo"});
    read.ResetTypes = Texts(Array(*object, {"Actions", "#ComputerSystem.Reset", "ResetType@Redfish.AllowableValues"}));
    system = std::move(read);
    return {CodeSucceed, "", ""};
}

RedfishConfigResult ReadBios(const BmcRequests& requests, const SystemResource& system, BiosResource& bios)
{
    std::optional<json::object> object;
    RedfishConfigResult result = GetObject(requests, system.Path + "/Bios", object);
    if (!IsSuccess(result.ErrorCode()))
    {
        return result;
    }
    bios = {};
    bios.Registry = Text(*object, {"AttributeRegistry"});
    bios.ChangeTime = Text(*object, {"@Redfish.Settings", "Time"});
    const json::value* defaults = Find(*object, {"ResetBiosToDefaultsPending"});
    bios.DefaultsPending = defaults != nullptr && defaults->is_bool() && defaults->get_bool();
    bios.PostLoad = Text(*object, {"Attributes", PostLoadSetting});
    bios.SettingsObject = Text(*object, {"@Redfish.Settings", "SettingsObject", "@odata.id"});
    for (const json::value& message : Array(*object, {"@Redfish.Settings", "Messages"}))
    {
        if (message.is_object() && bios.Messages.size() < MostMessages)
        {
            bios.Messages.push_back(ReadMessage(message.get_object()));
        }
    }
    return {CodeSucceed, "", ""};
}

RedfishConfigResult ReadPostLoad(const BmcRequests& requests, BiosResource& bios)
{
    if (bios.DefaultsPending || bios.PostLoad.empty())
    {
        return {CodeSucceed, "", ""};
    }
    RedfishConfigResult result(CodeSucceed, "", "");
    std::string waiting;
    if (!bios.SettingsObject.empty())
    {
        std::optional<json::object> object;
        result = GetObject(requests, bios.SettingsObject, object);
        waiting = object ? Text(*object, {"Attributes", PostLoadSetting}) : "";
    }
    bios.DefaultsPending = (waiting.empty() ? bios.PostLoad : waiting) == PostLoadValue;
    return result;
}

RedfishConfigResult ReadSystemAndBios(const BmcRequests& requests, SystemResource& system, BiosResource& bios)
{
    RedfishConfigResult result = ReadSystem(requests, system);
    return IsSuccess(result.ErrorCode()) ? ReadBios(requests, system, bios) : result;
}

RedfishConfigResult ReadResetTypes(const BmcRequests& requests, SystemResource& system)
{
    std::optional<json::object> info;
    if (!system.ResetTypes.empty() || system.ResetInfo.empty())
    {
        return {CodeSucceed, "", ""};
    }
    RedfishConfigResult result = GetObject(requests, system.ResetInfo, info);
    if (!info)
    {
        return result;
    }
    for (const json::value& value : Array(*info, {"Parameters"}))
    {
        const json::object* parameter = value.if_object();
        if (parameter != nullptr && Text(*parameter, {"Name"}) == "ResetType")
        {
            system.ResetTypes = Texts(Array(*parameter, {"AllowableValues"}));
        }
    }
    return result;
}

} // namespace Tavrine::Tool
