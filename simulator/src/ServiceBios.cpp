// The Bios resource and its settings object.

#include "Service.h"

#include "Answers.h"
#include "EnterChange.h"
#include "JsonFile.h"
#include "RedfishErrors.h"
#include "Scalars.h"
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

/// The new values of a PATCH; null when it cannot be carried out, and refusal tells why.
const json::object* NewAttributes(const Machine& machine, const json::object& body, HttpResponse& refusal)
{
    std::vector<Notice> faults;
    for (const auto& [key, value] : body)
    {
        const std::string name = key;
        // Annotations, as the time to apply, ask for nothing else than what is done.
        if (name != "Attributes" && name.find('@') == std::string::npos)
        {
            const bool known = machine.Bios->contains(name);
            faults.push_back({known ? Base::PropertyNotWritable : Base::PropertyUnknown, {name}, "/" + name});
        }
    }
    const json::value* attributes = body.if_contains("Attributes");
    if (attributes == nullptr)
    {
        faults.push_back({Base::PropertyMissing, {"Attributes"}, "/Attributes"});
    }
    else if (!attributes->is_object())
    {
        faults.push_back({Base::PropertyValueTypeError, {ShortText(*attributes), "Attributes"}, "/Attributes"});
    }
    if (!faults.empty())
    {
        refusal = RedfishErrors(400, faults);
        return nullptr;
    }
    return attributes->if_object();
}

} // namespace

void Service::RouteBios()
{
    if (!m_Machine.Bios)
    {
        return;
    }
    const Method get = [this](const HttpRequest& request) { return GetPage(request, m_BiosPage, &Service::BiosPage); };
    Route(SystemPath(m_Machine) + "/Bios", "GET", get);
    if (!m_Machine.BiosPath.empty())
    {
        Route(m_Machine.BiosPath, "GET", get);
    }
    if (!m_Machine.SettingsPath.empty())
    {
        Route(m_Machine.SettingsPath, "GET",
              [this](const HttpRequest& request) { return GetPage(request, m_SettingsPage, &Service::SettingsPage); });
        RouteChange(m_Machine.SettingsPath, "PATCH",
                    [this](const HttpRequest& request) { return PatchSettings(request); });
    }
}

/// Makes the resource anew only when its values are others than last time.
HttpResponse Service::GetPage(const HttpRequest& request, Page& kept,
                              Page (Service::*make)(std::shared_ptr<const Values>) const)
{
    const auto values = m_State.Current();
    Page page;
    {
        const std::lock_guard lock(m_PagesMutex);
        page = kept;
    }
    if (page.Of != values)
    {
        page = (this->*make)(values);
        const std::lock_guard lock(m_PagesMutex);
        kept = page;
    }
    return ReadAnswer(request, std::move(page.Body), page.Tag);
}

Service::Page Service::BiosPage(std::shared_ptr<const Values> values) const
{
    json::object bios = *m_Machine.Bios;
    if (bios.contains("Attributes") || !values->Effective.empty())
    {
        bios["Attributes"] = values->Effective;
    }
    if (bios.contains("ResetBiosToDefaultsPending") || values->DefaultsPending)
    {
        bios["ResetBiosToDefaultsPending"] = values->DefaultsPending;
    }
    if (json::value* settings = bios.if_contains("@Redfish.Settings"); settings != nullptr && settings->is_object())
    {
        for (const auto& [name, value] : values->Outcome)
        {
            settings->get_object()[name] = value;
        }
    }
    const bool unchanged = bios == *m_Machine.Bios;
    if (m_Machine.Protected)
    {
        ListOemActions(m_Machine, bios);
    }
    const std::string tag = TagResource(bios, unchanged);
    return {std::move(values), json::serialize(bios), tag};
}

Service::Page Service::SettingsPage(std::shared_ptr<const Values> values) const
{
    json::object settings = m_Machine.Settings ? *m_Machine.Settings : MakeSettings(m_Machine, *values);
    const json::object* original = m_Machine.Settings ? FindObject(*m_Machine.Settings, "Attributes") : nullptr;
    if (m_Machine.Settings && (original != nullptr || !values->Pending.empty()))
    {
        settings["Attributes"] = FileStyleAttributes(original != nullptr ? *original : json::object(), *values);
    }
    const bool unchanged = m_Machine.Settings && settings == *m_Machine.Settings;
    const std::string tag = TagResource(settings, unchanged);
    return {std::move(values), json::serialize(settings), tag};
}

HttpResponse Service::PatchSettings(const HttpRequest& request)
{
    HttpResponse refusal;
    const auto body = ObjectBody(request, false, refusal);
    const json::object* change = body ? NewAttributes(m_Machine, *body, refusal) : nullptr;
    if (change == nullptr)
    {
        return refusal;
    }
    const std::string condition = request.Header("if-match");
    return Changed(
        [&](Values& values, HttpResponse& response)
        {
            if (!condition.empty() && !NamesTag(condition, SettingsPage(std::make_shared<Values>(values)).Tag))
            {
                response = RedfishError(412, Base::PreconditionFailed);
                return false;
            }
            response = EnterChange(m_Machine, m_Rules, values, Place::Standard, *change);
            return response.Status == 200 && !change->empty();
        });
}

} // namespace bmcsim
