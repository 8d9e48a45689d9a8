// The Bios resource and its settings object.

#include "Service.h"

#include "Answers.h"
#include "JsonFile.h"
#include "RedfishErrors.h"
#include "ServicePaths.h"

#include <boost/json/serialize.hpp>

namespace bmcsim
{
namespace
{

namespace json = boost::json;

/// The member as an object, made where it is missing or of another kind.
json::object& Member(json::object& object, const char* key)
{
    json::value& value = object[key];
    return value.is_object() ? value.get_object() : value.emplace_object();
}

void ListOemActions(const Machine& machine, json::object& bios)
{
    json::object& oem = Member(Member(bios, "Actions"), "Oem");
    for (const char* name : {GetProtectedAction, SetProtectedAction})
    {
        oem.emplace(std::string("#") + name, json::object{{"target", OemBiosAction(machine, name)}});
    }
}

/// Tags the resource: with the file's own tag as long as what it says still holds.
std::string Tag(json::object& resource, bool unchanged)
{
    std::string own = FindText(resource, "@odata.etag");
    if (unchanged && !own.empty())
    {
        return own;
    }
    resource.erase("@odata.etag");
    std::string tag = EntityTag(json::serialize(resource));
    resource["@odata.etag"] = tag;
    return tag;
}

/// Of a settings object from a file the names are kept, each with its pending value
/// or, where none is pending, the one in force.
json::object FileStyleAttributes(const json::object& file, const Values& values)
{
    json::object attributes;
    for (const auto& [name, value] : file)
    {
        const json::value* pending = values.Pending.if_contains(name);
        const json::value* effective = values.Effective.if_contains(name);
        attributes.emplace(name, pending != nullptr ? *pending : effective != nullptr ? *effective : value);
    }
    for (const auto& [name, value] : values.Pending)
    {
        attributes.emplace(name, value);
    }
    return attributes;
}

json::object MakeSettings(const Machine& machine, const Values& values)
{
    return {
        {"@odata.id", machine.SettingsPath},
        {"@odata.type", "#Bios.v1_1_0.Bios"},
        {"Id", "Settings"},
        {"Name", "BIOS Pending Settings"},
        {"AttributeRegistry", FindText(*machine.Bios, "AttributeRegistry")},
        {"Attributes", values.Pending},
    };
}

} // namespace

void Service::RouteBios()
{
    if (!m_Machine.Bios)
    {
        return;
    }
    const Method get = [this](const HttpRequest& request) { return GetBios(request); };
    Route(SystemPath(m_Machine) + "/Bios", "GET", get);
    if (!m_Machine.BiosPath.empty())
    {
        Route(m_Machine.BiosPath, "GET", get);
    }
    if (!m_Machine.SettingsPath.empty())
    {
        Route(m_Machine.SettingsPath, "GET", [this](const HttpRequest& request) { return GetSettings(request); });
        Route(m_Machine.SettingsPath, "PATCH",
              [](const HttpRequest&) { return RedfishError(501, Base::ActionNotSupported, {"PATCH"}); });
    }
}

HttpResponse Service::GetBios(const HttpRequest& request) const
{
    const Values values = m_State.Snapshot();
    json::object bios = *m_Machine.Bios;
    const json::object* original = FindObject(bios, "Attributes");
    const bool unchanged = original != nullptr ? *original == values.Effective : values.Effective.empty();
    if (!unchanged)
    {
        bios["Attributes"] = values.Effective;
    }
    if (m_Machine.Protected)
    {
        ListOemActions(m_Machine, bios);
    }
    const std::string tag = Tag(bios, unchanged);
    return ReadAnswer(request, json::serialize(bios), tag);
}

HttpResponse Service::GetSettings(const HttpRequest& request) const
{
    const Values values = m_State.Snapshot();
    json::object settings = m_Machine.Settings ? *m_Machine.Settings : MakeSettings(m_Machine, values);
    const json::object* original = m_Machine.Settings ? FindObject(*m_Machine.Settings, "Attributes") : nullptr;
    bool unchanged = true;
    if (original != nullptr)
    {
        json::object attributes = FileStyleAttributes(*original, values);
        unchanged = attributes == *original;
        settings["Attributes"] = std::move(attributes);
    }
    const std::string tag = Tag(settings, unchanged);
    return ReadAnswer(request, json::serialize(settings), tag);
}

} // namespace bmcsim
