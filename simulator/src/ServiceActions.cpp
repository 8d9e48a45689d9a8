// Actions of the system and of its Bios resource.

#include "Service.h"

#include "ActionBody.h"
#include "Answers.h"
#include "EnterChange.h"
#include "JsonFile.h"
#include "RedfishErrors.h"
#include "ServicePaths.h"

#include <string>
#include <vector>

namespace bmcsim
{
namespace
{

namespace json = boost::json;

struct ListedAction
{
    std::string Name;
    std::string Target;
};

std::vector<ListedAction> ListedActions(const json::object& resource)
{
    std::vector<ListedAction> actions;
    const json::object* listed = FindObject(resource, "Actions");
    if (listed == nullptr)
    {
        return actions;
    }
    for (const auto& [name, value] : *listed)
    {
        const json::object* action = value.if_object();
        const std::string target = action != nullptr ? FindText(*action, "target") : std::string();
        if (!target.empty())
        {
            actions.push_back({name, target});
        }
    }
    return actions;
}

} // namespace

void Service::RouteActions()
{
    const auto actions = m_Machine.Bios ? ListedActions(*m_Machine.Bios) : std::vector<ListedAction>();
    for (const auto& [name, target] : actions)
    {
        if (name == "#Bios.ResetBios")
        {
            RouteChange(target, "POST", [this](const HttpRequest& request) { return ResetBios(request); });
            continue;
        }
        Route(target, "POST",
              [name = name](const HttpRequest&) { return RedfishError(501, Base::ActionNotSupported, {name}); });
    }
    RouteChange(ResetAction(m_Machine).Target, "POST",
                [this](const HttpRequest& request) { return ResetSystem(request); });
    if (m_Machine.Protected)
    {
        RouteChange(OemBiosAction(m_Machine, GetProtectedAction), "POST",
                    [this](const HttpRequest& request) { return GetProtectedAttributes(request); });
        RouteChange(OemBiosAction(m_Machine, SetProtectedAction), "POST",
                    [this](const HttpRequest& request) { return SetProtectedAttributes(request); });
        RouteFiles();
    }
}

HttpResponse Service::ResetBios(const HttpRequest& request)
{
    constexpr const char* action = "#Bios.ResetBios";
    HttpResponse refusal;
    const auto body = ActionBody(request, action, {{"ResetType"}}, refusal);
    if (!body)
    {
        return refusal;
    }
    const std::string type = FindText(*body, "ResetType");
    if (body->contains("ResetType") && type != "Reset")
    {
        return RedfishError(400, Base::ActionParameterValueNotInList, {type, "ResetType", action});
    }
    return Changed(
        [](Values& values, HttpResponse& response)
        {
            if (values.Starting)
            {
                response = RedfishError(409, Base::ResourceInUse);
                return false;
            }
            values.DefaultsPending = true;
            values.Pending.clear();
            values.ProtectedPending.clear();
            response = DoneAnswer({{Base::Success}});
            return true;
        });
}

HttpResponse Service::GetProtectedAttributes(const HttpRequest& request) const
{
    HttpResponse refusal;
    const auto body = ActionBody(request, GetProtectedAction, {{"Pending", ActionParameter::Flag}}, refusal);
    if (!body)
    {
        return refusal;
    }
    const json::value* pending = body->if_contains("Pending");
    const auto values = m_State.Current();
    return JsonAnswer(200, {{"Attributes", pending != nullptr && pending->get_bool() ? values->ProtectedPending
                                                                                     : values->ProtectedEffective}});
}

HttpResponse Service::SetProtectedAttributes(const HttpRequest& request)
{
    HttpResponse refusal;
    const auto body = ActionBody(request, SetProtectedAction, {{"Attributes", ActionParameter::Object, true}}, refusal);
    if (!body)
    {
        return refusal;
    }
    const json::object& change = body->at("Attributes").get_object();
    return Changed(
        [&](Values& values, HttpResponse& response)
        {
            response = EnterChange(m_Machine, m_Rules, values, Place::Protected, change);
            return response.Status == 200 && !change.empty();
        });
}

} // namespace bmcsim
