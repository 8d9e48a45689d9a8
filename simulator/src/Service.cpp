#include "Service.h"

#include "Answers.h"
#include "Digest.h"
#include "JsonFile.h"
#include "RedfishErrors.h"
#include "ServicePaths.h"
#include "SmallLetters.h"

#include <algorithm>
#include <array>
#include <boost/json/serialize.hpp>
#include <string_view>

namespace bmcsim
{
namespace
{

namespace json = boost::json;

constexpr std::string_view OpenPaths[] = {"/redfish", "/redfish/v1", "/redfish/v1/odata", "/redfish/v1/$metadata"};
constexpr std::string_view SessionsPath = "/redfish/v1/sessionservice/sessions";

constexpr const char* Metadata = R"(<?xml version="1.0" encoding="UTF-8"?>
<edmx:Edmx xmlns:edmx="http://docs.oasis-open.org/odata/ns/edmx" Version="4.0">
  <edmx:Reference Uri="http://redfish.dmtf.org/schemas/v1/ServiceRoot_v1.xml">
    <edmx:Include Namespace="ServiceRoot"/>
    <edmx:Include Namespace="ServiceRoot.v1_9_0"/>
  </edmx:Reference>
  <edmx:DataServices>
    <Schema xmlns="http://docs.oasis-open.org/odata/ns/edm" Namespace="Service">
      <EntityContainer Name="Service" Extends="ServiceRoot.v1_9_0.ServiceContainer"/>
    </Schema>
  </edmx:DataServices>
</edmx:Edmx>
)";

/// What may be read, or done, without credentials (DSP0266).
bool IsOpen(const HttpRequest& request, const std::string& path)
{
    if (request.Method == "POST")
    {
        return path == SessionsPath;
    }
    const bool reads = request.Method == "GET" || request.Method == "HEAD";
    return reads && std::find(std::begin(OpenPaths), std::end(OpenPaths), path) != std::end(OpenPaths);
}

/// The first query option that begins with "$", all of which are ones that the
/// service does not know; empty when there is none.
std::string UnknownOption(std::string_view query)
{
    while (!query.empty())
    {
        const auto end = query.find('&');
        const std::string_view option = query.substr(0, query.substr(0, end).find('='));
        if (option.starts_with("$") || option.starts_with("%24"))
        {
            return std::string(option);
        }
        query = end == std::string_view::npos ? std::string_view() : query.substr(end + 1);
    }
    return {};
}

HttpResponse Unauthorised(const HttpRequest& request)
{
    const bool tried = !request.Header("authorization").empty();
    HttpResponse response =
        tried ? RedfishError(401, Base::ResourceAtUriUnauthorized, {request.Path, "Invalid user name or password"})
              : RedfishError(401, Base::NoValidSession);
    response.Headers["WWW-Authenticate"] = "Basic realm=\"Redfish\"";
    return response;
}

} // namespace

Service::Service(Machine machine, State& state, ServiceOptions options)
    : m_Machine(std::move(machine)), m_Rules(m_Machine), m_State(state), m_Options(std::move(options)),
      m_Sessions(m_Options.SessionTimeout), m_Tasks(m_Options.TaskLooks)
{
    RouteResources();
    RouteBios();
    RouteActions();
    RouteSessions();
    RouteTasks();
}

HttpResponse Service::Handle(const HttpRequest& request)
{
    FinishStart();
    const std::string path = NormalPath(request.Path);
    if (!IsOpen(request, path) && !IsAuthorised(request))
    {
        return Unauthorised(request);
    }
    const Methods* methods = FindMethods(path);
    return methods != nullptr ? Call(request, *methods) : RedfishError(404, Base::ResourceMissingAtURI, {request.Path});
}

bool Service::IsAuthorised(const HttpRequest& request)
{
    const std::string token = request.Header("x-auth-token");
    if (!token.empty())
    {
        return m_Sessions.Use(token);
    }
    const std::string header = request.Header("authorization");
    constexpr std::string_view scheme = "basic ";
    if (SmallLetters(header.substr(0, scheme.size())) != scheme)
    {
        return false;
    }
    const auto text = DecodeBase64(header.substr(scheme.size()));
    return text && SameSecret(*text, m_Options.User + ':' + m_Options.Password);
}

const Service::Methods* Service::FindMethods(const std::string& path) const
{
    const auto found = m_Routes.find(path);
    if (found != m_Routes.end())
    {
        return &found->second;
    }
    const auto members = m_MemberRoutes.find(path.substr(0, path.rfind('/')));
    return members != m_MemberRoutes.end() ? &members->second : nullptr;
}

HttpResponse Service::Call(const HttpRequest& request, const Methods& methods) const
{
    const auto method = methods.find(request.Method == "HEAD" ? "GET" : request.Method);
    if (method == methods.end())
    {
        std::string allowed;
        for (const auto& [name, function] : methods)
        {
            allowed += (allowed.empty() ? "" : ", ") + name + (name == "GET" ? ", HEAD" : "");
        }
        HttpResponse response = RedfishError(405, Base::OperationNotAllowed);
        response.Headers["Allow"] = allowed;
        return response;
    }
    const std::string option = UnknownOption(request.Query);
    return option.empty() ? method->second(request) : RedfishError(501, Base::QueryParameterUnsupported, {option});
}

/// Carries out a change that fills in its own answer.
HttpResponse Service::Changed(const std::function<bool(Values&, HttpResponse&)>& change)
{
    HttpResponse response;
    const bool kept = m_State.Update([&](Values& values) { return change(values, response); });
    return kept ? response : RedfishError(500, Base::InternalError);
}

void Service::Route(const std::string& path, const std::string& name, Method method)
{
    m_Routes[NormalPath(path)].insert_or_assign(name, std::move(method));
}

void Service::RouteMember(const std::string& collection, const std::string& name, Method method)
{
    m_MemberRoutes[NormalPath(collection)].insert_or_assign(name, std::move(method));
}

void Service::RouteResources()
{
    const auto serve = [this](const std::string& path, const json::object& resource)
    {
        std::string body = json::serialize(resource);
        const std::string own = FindText(resource, "@odata.etag");
        const std::string tag = own.empty() ? EntityTag(body) : own;
        Route(path, "GET",
              [body = std::move(body), tag](const HttpRequest& request) { return ReadAnswer(request, body, tag); });
    };
    for (const auto& [path, resource] : m_Machine.Resources)
    {
        serve(path, resource);
    }
    if (const json::object* system = FindResource(m_Machine, SystemPath(m_Machine)))
    {
        Route(SystemPath(m_Machine), "GET",
              [this, system](const HttpRequest& request) { return GetSystem(request, *system); });
    }
    Route("/redfish/v1/$metadata", "GET",
          [](const HttpRequest& request)
          {
              HttpResponse response = ReadAnswer(request, Metadata, EntityTag(Metadata));
              response.ContentType = "application/xml";
              return response;
          });
}

} // namespace bmcsim
