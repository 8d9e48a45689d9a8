#include "RedfishErrors.h"

#include <array>
#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>
#include <fmt/format.h>

namespace bmcsim
{
namespace
{

namespace json = boost::json;

struct Message
{
    const char* Key;
    const char* Text;
    const char* Severity;
    const char* Resolution;
};

/// In the order of Base.
constexpr std::array Messages{
    Message{"ActionNotSupported", "The action %1 is not supported by the resource.", "Critical",
            "Check the Actions property in the resource for the supported actions."},
    Message{"ActionParameterUnknown", "The action %1 was submitted with the invalid parameter %2.", "Warning",
            "Correct the invalid action parameter and resubmit the request if the operation failed."},
    Message{
        "ActionParameterValueTypeError",
        "The value '%1' for the parameter %2 in the action %3 is not a type that the parameter can accept.", "Warning",
        "Correct the value for the parameter in the request body and resubmit the request if the operation failed."},
    Message{"GeneralError",
            "A general error has occurred.  See Resolution for information on how to resolve the error, or "
            "@Message.ExtendedInfo if Resolution is not provided.",
            "Critical", "None."},
    Message{"InternalError", "The request failed due to an internal service error.  The service is still operational.",
            "Critical", "Resubmit the request.  If the problem persists, consider resetting the service."},
    Message{"MalformedJSON",
            "The request body submitted was malformed JSON and could not be parsed by the receiving service.",
            "Critical", "Ensure that the request body is valid JSON and resubmit the request."},
    Message{"NoValidSession", "There is no valid session established with the implementation.", "Critical",
            "Establish a session before attempting any operations."},
    Message{"OperationNotAllowed", "The HTTP method is not allowed on this resource.", "Critical", "None."},
    Message{"PayloadTooLarge", "The supplied payload exceeds the maximum size supported by the service.", "Critical",
            "Check that the supplied payload is correct and supported by this service."},
    Message{"PropertyMissing", "The property %1 is a required property and must be included in the request.", "Warning",
            "Ensure that the property is in the request body and has a valid value and resubmit the request if the "
            "operation failed."},
    Message{"PropertyValueTypeError", "The value '%1' for the property %2 is not a type that the property can accept.",
            "Warning",
            "Correct the value for the property in the request body and resubmit the request if the operation failed."},
    Message{"QueryParameterUnsupported", "Query parameter '%1' is not supported.", "Warning",
            "Correct or remove the query parameter and resubmit the request."},
    Message{"ResourceAtUriUnauthorized",
            "While accessing the resource at '%1', the service received an authorization error '%2'.", "Critical",
            "Ensure that the appropriate access is provided for the service in order for it to access the URI."},
    Message{"ResourceMissingAtURI", "The resource at the URI '%1' was not found.", "Critical",
            "Place a valid resource at the URI or correct the URI and resubmit the request."},
    Message{"UnrecognizedRequestBody", "The service detected a malformed request body that it was unable to interpret.",
            "Warning", "Correct the request body and resubmit the request if it failed."},
};
static_assert(Messages.size() == static_cast<std::size_t>(Base::UnrecognizedRequestBody) + 1);

std::string FillIn(std::string text, const std::vector<std::string>& arguments)
{
    for (std::size_t i = arguments.size(); i > 0; --i)
    {
        const std::string mark = fmt::format("%{}", i);
        const std::size_t at = text.find(mark);
        if (at != std::string::npos)
        {
            text.replace(at, mark.size(), arguments[i - 1]);
        }
    }
    return text;
}

} // namespace

HttpResponse RedfishError(int status, Base message, const std::vector<std::string>& arguments)
{
    const Message& entry = Messages.at(static_cast<std::size_t>(message));
    const std::string id = fmt::format("Base.1.18.0.{}", entry.Key);
    const std::string text = FillIn(entry.Text, arguments);
    json::object info{
        {"@odata.type", "#Message.v1_1_2.Message"},
        {"MessageId", id},
        {"Message", text},
        {"MessageArgs", json::array(arguments.begin(), arguments.end())},
        {"MessageSeverity", entry.Severity},
        {"Severity", entry.Severity},
        {"Resolution", entry.Resolution},
    };
    json::object error{{"code", id}, {"message", text}, {"@Message.ExtendedInfo", json::array{std::move(info)}}};
    HttpResponse response;
    response.Status = status;
    response.Body = json::serialize(json::object{{"error", std::move(error)}});
    response.Headers["OData-Version"] = "4.0";
    response.Headers["Cache-Control"] = "no-cache";
    return response;
}

HttpResponse RefusalPage(int status)
{
    return status == 413 ? RedfishError(status, Base::PayloadTooLarge)
                         : RedfishError(status, status >= 500 ? Base::InternalError : Base::GeneralError);
}

} // namespace bmcsim
