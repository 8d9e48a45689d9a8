// Actions of the system and of its Bios resource.

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

/// Name and target of each action that a resource lists.
std::vector<std::pair<std::string, std::string>> ListedActions(const json::object& resource)
{
    std::vector<std::pair<std::string, std::string>> actions;
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
            actions.emplace_back(name, target);
        }
    }
    return actions;
}

} // namespace

void Service::RouteActions()
{
    std::vector<std::pair<std::string, std::string>> unsupported;
    if (m_Machine.Bios)
    {
        unsupported = ListedActions(*m_Machine.Bios);
    }
    unsupported.emplace_back("#ComputerSystem.Reset", SystemPath(m_Machine) + "/Actions/ComputerSystem.Reset");
    if (m_Machine.Protected)
    {
        unsupported.emplace_back(SetProtectedAction, OemBiosAction(m_Machine, SetProtectedAction));
        unsupported.emplace_back(ReadFileAction, OemSystemAction(m_Machine, ReadFileAction));
        unsupported.emplace_back(WriteFileAction, OemSystemAction(m_Machine, WriteFileAction));
    }
    for (const auto& [name, target] : unsupported)
    {
        Route(target, "POST",
              [name = name](const HttpRequest&) { return RedfishError(501, Base::ActionNotSupported, {name}); });
    }
    if (m_Machine.Protected)
    {
        Route(OemBiosAction(m_Machine, GetProtectedAction), "POST",
              [this](const HttpRequest& request) { return GetProtectedAttributes(request); });
    }
}

HttpResponse Service::GetProtectedAttributes(const HttpRequest& request) const
{
    HttpResponse refusal;
    const auto body = ObjectBody(request, true, refusal);
    if (!body)
    {
        return refusal;
    }
    bool pending = false;
    for (const auto& [name, value] : *body)
    {
        if (name != "Pending")
        {
            return RedfishError(400, Base::ActionParameterUnknown, {GetProtectedAction, name});
        }
        if (!value.is_bool())
        {
            return RedfishError(400, Base::ActionParameterValueTypeError,
                                {json::serialize(value), "Pending", GetProtectedAction});
        }
        pending = value.get_bool();
    }
    const Values values = m_State.Snapshot();
    return JsonAnswer(200, {{"Attributes", pending ? values.ProtectedPending : values.ProtectedEffective}});
}

} // namespace bmcsim
