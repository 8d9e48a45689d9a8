// The task service, where changes are answered with tasks.

#include "Service.h"

#include "Answers.h"
#include "RedfishErrors.h"

#include <boost/json/array.hpp>
#include <fmt/format.h>

namespace bmcsim
{
namespace
{

namespace json = boost::json;

constexpr const char* ServicePath = "/redfish/v1/TaskService";

json::object DescribeService()
{
    return {
        {"@odata.id", ServicePath}, {"@odata.type", "#TaskService.v1_2_0.TaskService"},
        {"Id", "TaskService"},      {"Name", "Task Service"},
        {"ServiceEnabled", true},   {"Tasks", json::object{{"@odata.id", Tasks::TaskCollection}}},
    };
}

json::object DescribeCollection(const std::vector<std::string>& ids)
{
    json::array members;
    for (const std::string& id : ids)
    {
        members.push_back(json::object{{"@odata.id", fmt::format("{}/{}", Tasks::TaskCollection, id)}});
    }
    return {
        {"@odata.id", Tasks::TaskCollection}, {"@odata.type", "#TaskCollection.TaskCollection"},
        {"Name", "Task Collection"},          {"Members@odata.count", members.size()},
        {"Members", std::move(members)},
    };
}

} // namespace

/// A request that changes something, or an action: answered with a task where the
/// options ask for that.
void Service::RouteChange(const std::string& path, const std::string& name, Method method)
{
    if (!m_Options.AnswerWithTasks)
    {
        Route(path, name, std::move(method));
        return;
    }
    Route(path, name,
          [this, method = std::move(method)](const HttpRequest& request) { return m_Tasks.Begin(method(request)); });
}

void Service::RouteTasks()
{
    if (!m_Options.AnswerWithTasks)
    {
        return;
    }
    using Look = std::optional<HttpResponse> (Tasks::*)(const std::string&);
    const auto look = [this](Look at)
    {
        return [this, at](const HttpRequest& request)
        {
            const auto answer = (m_Tasks.*at)(LastSegment(request.Path));
            return answer ? *answer : RedfishError(404, Base::ResourceMissingAtURI, {request.Path});
        };
    };
    Route(ServicePath, "GET", [](const HttpRequest&) { return JsonAnswer(200, DescribeService()); });
    Route(Tasks::TaskCollection, "GET",
          [this](const HttpRequest&) { return JsonAnswer(200, DescribeCollection(m_Tasks.Ids())); });
    RouteMember(Tasks::TaskCollection, "GET", look(&Tasks::LookAtTask));
    RouteMember(Tasks::MonitorCollection, "GET", look(&Tasks::LookAtMonitor));
}

} // namespace bmcsim
