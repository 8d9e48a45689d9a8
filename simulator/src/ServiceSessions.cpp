// The session service.

#include "Service.h"

#include "Answers.h"
#include "Digest.h"
#include "JsonFile.h"
#include "RedfishErrors.h"

#include <algorithm>
#include <boost/json/serialize.hpp>

namespace bmcsim
{
namespace
{

namespace json = boost::json;

constexpr const char* ServicePath = "/redfish/v1/SessionService";
constexpr const char* CollectionPath = "/redfish/v1/SessionService/Sessions";

std::string SessionPath(const std::string& id) { return std::string(CollectionPath) + '/' + id; }

json::object DescribeSession(const std::string& id, const std::string& user)
{
    return {
        {"@odata.id", SessionPath(id)},
        {"@odata.type", "#Session.v1_3_0.Session"},
        {"Id", id},
        {"Name", "User Session"},
        {"UserName", user},
        {"Password", nullptr},
    };
}

json::object DescribeService(std::chrono::milliseconds timeout)
{
    // The property is in seconds and never 0.
    const auto seconds = std::max<std::int64_t>(1, std::chrono::ceil<std::chrono::seconds>(timeout).count());
    return {
        {"@odata.id", ServicePath},
        {"@odata.type", "#SessionService.v1_1_8.SessionService"},
        {"Id", "SessionService"},
        {"Name", "Session Service"},
        {"ServiceEnabled", true},
        {"SessionTimeout", seconds},
        {"Sessions", json::object{{"@odata.id", CollectionPath}}},
    };
}

/// The text behind a key that must be there; otherwise refusal tells the client why.
std::optional<std::string> RequiredText(const json::object& body, const char* key, HttpResponse& refusal)
{
    const json::value* value = body.if_contains(key);
    if (value == nullptr)
    {
        refusal = RedfishError(400, Base::PropertyMissing, {key});
        return std::nullopt;
    }
    if (!value->is_string())
    {
        // The value itself may be a password in the wrong form.
        refusal = RedfishError(400, Base::PropertyValueTypeError, {"******", key});
        return std::nullopt;
    }
    return FindText(body, key);
}

} // namespace

void Service::RouteSessions()
{
    const std::string service = NormalPath(ServicePath);
    if (!m_Routes.contains(service))
    {
        const std::string body = json::serialize(DescribeService(m_Sessions.Timeout()));
        Route(service, "GET",
              [body](const HttpRequest& request) { return ReadAnswer(request, body, EntityTag(body)); });
    }
    Route(CollectionPath, "GET", [this](const HttpRequest& request) { return GetSessionCollection(request); });
    Route(CollectionPath, "POST", [this](const HttpRequest& request) { return OpenSession(request); });
    RouteMember(CollectionPath, "GET", [this](const HttpRequest& request) { return GetSession(request); });
    RouteMember(CollectionPath, "DELETE", [this](const HttpRequest& request) { return CloseSession(request); });
}

HttpResponse Service::GetSessionCollection(const HttpRequest& request)
{
    json::array members;
    json::object collection{
        {"@odata.id", CollectionPath},
        {"@odata.type", "#SessionCollection.SessionCollection"},
        {"Name", "Session Collection"},
    };
    if (const json::object* file = FindResource(m_Machine, CollectionPath))
    {
        collection = *file;
        const json::array* given = FindArray(collection, "Members");
        members = given != nullptr ? *given : json::array();
    }
    for (const std::string& id : m_Sessions.Ids())
    {
        members.emplace_back(json::object{{"@odata.id", SessionPath(id)}});
    }
    collection["Members@odata.count"] = members.size();
    collection["Members"] = std::move(members);
    const std::string body = json::serialize(collection);
    return ReadAnswer(request, body, EntityTag(body));
}

HttpResponse Service::OpenSession(const HttpRequest& request)
{
    HttpResponse refusal;
    const auto body = ObjectBody(request, false, refusal);
    const auto user = body ? RequiredText(*body, "UserName", refusal) : std::nullopt;
    const auto password = user ? RequiredText(*body, "Password", refusal) : std::nullopt;
    if (!password)
    {
        return refusal;
    }
    if (!SameSecret(*user, m_Options.User) || !SameSecret(*password, m_Options.Password))
    {
        return RedfishError(401, Base::ResourceAtUriUnauthorized, {request.Path, "Invalid user name or password"});
    }
    const auto session = m_Sessions.Open();
    if (!session)
    {
        return RedfishError(500, Base::InternalError);
    }
    HttpResponse response = JsonAnswer(201, DescribeSession(session->Id, m_Options.User));
    response.Headers["X-Auth-Token"] = session->Token;
    response.Headers["Location"] = SessionPath(session->Id);
    return response;
}

HttpResponse Service::GetSession(const HttpRequest& request)
{
    const std::string id = LastSegment(request.Path);
    if (!m_Sessions.IsOpen(id))
    {
        return RedfishError(404, Base::ResourceMissingAtURI, {request.Path});
    }
    const std::string body = json::serialize(DescribeSession(id, m_Options.User));
    return ReadAnswer(request, body, EntityTag(body));
}

HttpResponse Service::CloseSession(const HttpRequest& request)
{
    return m_Sessions.Close(LastSegment(request.Path)) ? EmptyAnswer(204)
                                                       : RedfishError(404, Base::ResourceMissingAtURI, {request.Path});
}

} // namespace bmcsim
