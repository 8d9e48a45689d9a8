#include "Answers.h"

#include "Digest.h"
#include "JsonFile.h"
#include "RedfishErrors.h"

#include <boost/json/serialize.hpp>
#include <string_view>

namespace bmcsim
{
namespace
{

std::string_view Trimmed(std::string_view text)
{
    const auto begin = text.find_first_not_of(" \t");
    const auto end = text.find_last_not_of(" \t");
    return begin == std::string_view::npos ? std::string_view() : text.substr(begin, end - begin + 1);
}

/// RFC 9110: tags are compared without regard to their weakness here.
std::string_view Opaque(std::string_view tag)
{
    tag = tag.starts_with("W/") ? tag.substr(2) : tag;
    const bool quoted = tag.size() >= 2 && tag.front() == '"' && tag.back() == '"';
    return quoted ? tag.substr(1, tag.size() - 2) : tag;
}

} // namespace

std::string EntityTag(const std::string& content) { return '"' + Sha256Hex(content).substr(0, 32) + '"'; }

std::string TagResource(boost::json::object& resource, bool unchanged)
{
    std::string own = FindText(resource, "@odata.etag");
    if (unchanged && !own.empty())
    {
        return own;
    }
    resource.erase("@odata.etag");
    std::string tag = EntityTag(boost::json::serialize(resource));
    resource["@odata.etag"] = tag;
    return tag;
}

HttpResponse ReadAnswer(const HttpRequest& request, std::string body, const std::string& tag)
{
    HttpResponse response = EmptyAnswer(200);
    if (!tag.empty())
    {
        response.Headers["ETag"] = tag;
        if (NamesTag(request.Header("if-none-match"), tag))
        {
            response.Status = 304;
            return response;
        }
    }
    response.Body = std::move(body);
    return response;
}

bool NamesTag(std::string_view list, std::string_view tag)
{
    while (!list.empty())
    {
        const auto comma = list.find(',');
        const auto item = Trimmed(list.substr(0, comma));
        if (item == "*" || Opaque(item) == Opaque(tag))
        {
            return true;
        }
        list = comma == std::string_view::npos ? std::string_view() : list.substr(comma + 1);
    }
    return false;
}

HttpResponse JsonAnswer(int status, const boost::json::object& body)
{
    HttpResponse response = EmptyAnswer(status);
    response.Body = boost::json::serialize(body);
    return response;
}

HttpResponse EmptyAnswer(int status)
{
    HttpResponse response;
    response.Status = status;
    response.Headers["OData-Version"] = "4.0";
    response.Headers["Cache-Control"] = "no-cache";
    return response;
}

std::optional<boost::json::object> ObjectBody(const HttpRequest& request, bool emptyAllowed, HttpResponse& refusal)
{
    if (!request.Header("x-body-encoding").empty())
    {
        refusal = RedfishError(415, Base::UnrecognizedRequestBody);
        return std::nullopt;
    }
    if (request.Body.empty() && emptyAllowed)
    {
        return boost::json::object();
    }
    auto value = ParseBody(request.Body);
    if (!value)
    {
        refusal = RedfishError(400, Base::MalformedJSON);
        return std::nullopt;
    }
    if (!value->is_object())
    {
        refusal = RedfishError(400, Base::UnrecognizedRequestBody);
        return std::nullopt;
    }
    return std::move(value->get_object());
}

} // namespace bmcsim
