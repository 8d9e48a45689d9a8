#pragma once

#include "HttpServer.h"
#include "Machine.h"
#include "Sessions.h"
#include "State.h"

#include <boost/json/object.hpp>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace bmcsim
{

struct Credentials
{
    std::string User;
    std::string Password;
};

/// The Redfish service of one machine: who may ask, what stands at which path, and
/// what each method does there. Safe to use from several threads.
class Service
{
  public:
    /// @param state  outlives the service.
    Service(Machine machine, State& state, Credentials credentials, std::chrono::milliseconds sessionTimeout);

    HttpResponse Handle(const HttpRequest& request);

  private:
    using Method = std::function<HttpResponse(const HttpRequest&)>;
    /// By the method's name; HEAD is answered by GET.
    using Methods = std::map<std::string, Method>;

    bool IsAuthorised(const HttpRequest& request);
    const Methods* FindMethods(const std::string& path) const;
    HttpResponse Call(const HttpRequest& request, const Methods& methods) const;

    void Route(const std::string& path, const std::string& name, Method method);
    void RouteResources();
    void RouteBios();
    void RouteActions();
    void RouteSessions();

    HttpResponse GetBios(const HttpRequest& request) const;
    HttpResponse GetSettings(const HttpRequest& request) const;
    HttpResponse GetProtectedAttributes(const HttpRequest& request) const;
    HttpResponse GetSessionCollection(const HttpRequest& request);
    HttpResponse OpenSession(const HttpRequest& request);
    HttpResponse GetSession(const HttpRequest& request);
    HttpResponse CloseSession(const HttpRequest& request);

    const Machine m_Machine;
    State& m_State;
    const Credentials m_Credentials;
    Sessions m_Sessions;
    std::map<std::string, Methods> m_Routes;
    Methods m_SessionMethods;
};

} // namespace bmcsim
