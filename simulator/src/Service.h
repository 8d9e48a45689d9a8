#pragma once

#include "AttributeRules.h"
#include "HttpServer.h"
#include "Machine.h"
#include "Sessions.h"
#include "State.h"
#include "Tasks.h"

#include <boost/json/object.hpp>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace bmcsim
{

struct ServiceOptions
{
    std::string User;
    std::string Password;
    std::chrono::milliseconds SessionTimeout{0};
    /// How long a start of the system takes.
    std::chrono::milliseconds RebootTime{0};
    /// Changes and actions are answered with tasks that run for so many looks.
    bool AnswerWithTasks = false;
    unsigned int TaskLooks = 0;
};

/// The Redfish service of one machine: who may ask, what stands at which path, and
/// what each method does there. Safe to use from several threads.
class Service
{
  public:
    /// @param state  outlives the service.
    Service(Machine machine, State& state, ServiceOptions options);

    HttpResponse Handle(const HttpRequest& request);

  private:
    using Method = std::function<HttpResponse(const HttpRequest&)>;
    /// By the method's name; HEAD is answered by GET.
    using Methods = std::map<std::string, Method>;

    /// A resource as it was last made, and of which values.
    struct Page
    {
        std::shared_ptr<const Values> Of;
        std::string Body;
        std::string Tag;
    };

    bool IsAuthorised(const HttpRequest& request);
    const Methods* FindMethods(const std::string& path) const;
    HttpResponse Call(const HttpRequest& request, const Methods& methods) const;

    void Route(const std::string& path, const std::string& name, Method method);
    /// For all paths one step below a collection.
    void RouteMember(const std::string& collection, const std::string& name, Method method);
    void RouteChange(const std::string& path, const std::string& name, Method method);
    void RouteResources();
    void RouteBios();
    void RouteActions();
    void RouteFiles();
    void RouteSessions();
    void RouteTasks();

    HttpResponse Changed(const std::function<bool(Values&, HttpResponse&)>& change);
    void FinishStart();

    Page BiosPage(std::shared_ptr<const Values> values) const;
    Page SettingsPage(std::shared_ptr<const Values> values) const;
    HttpResponse GetPage(const HttpRequest& request, Page& kept,
                         Page (Service::*make)(std::shared_ptr<const Values>) const);
    HttpResponse GetSystem(const HttpRequest& request, const boost::json::object& resource) const;
    HttpResponse PatchSettings(const HttpRequest& request);
    HttpResponse ResetSystem(const HttpRequest& request);
    HttpResponse ResetBios(const HttpRequest& request);
    HttpResponse GetProtectedAttributes(const HttpRequest& request) const;
    HttpResponse SetProtectedAttributes(const HttpRequest& request);
    HttpResponse ReadFile(const HttpRequest& request) const;
    HttpResponse WriteFile(const HttpRequest& request);
    HttpResponse GetSessionCollection(const HttpRequest& request);
    HttpResponse OpenSession(const HttpRequest& request);
    HttpResponse GetSession(const HttpRequest& request);
    HttpResponse CloseSession(const HttpRequest& request);

    const Machine m_Machine;
    const AttributeRules m_Rules;
    State& m_State;
    const ServiceOptions m_Options;
    Sessions m_Sessions;
    Tasks m_Tasks;
    /// Read and written inside of changes alone.
    std::chrono::steady_clock::time_point m_StartEnds;
    std::mutex m_PagesMutex;
    Page m_BiosPage;
    Page m_SettingsPage;
    std::map<std::string, Methods> m_Routes;
    /// By the path of the collection.
    std::map<std::string, Methods> m_MemberRoutes;
};

} // namespace bmcsim
