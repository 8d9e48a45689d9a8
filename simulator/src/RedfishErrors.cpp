#include "RedfishErrors.h"

#include "Answers.h"

#include <array>
#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
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
    Message{"ActionParameterMissing", "The action %1 requires the parameter %2 to be present in the request body.",
            "Critical",
            "Supply the action with the required parameter in the request body when the request is resubmitted."},
    Message{"ActionParameterUnknown", "The action %1 was submitted with the invalid parameter %2.", "Warning",
            "Correct the invalid action parameter and resubmit the request if the operation failed."},
    Message{
        "ActionParameterValueFormatError",
        "The value '%1' for the parameter %2 in the action %3 is not a format that the parameter can accept.",
        "Warning",
        "Correct the value for the parameter in the request body and resubmit the request if the operation failed."},
    Message{"ActionParameterValueNotInList",
            "The value '%1' for the parameter %2 in the action %3 is not in the list of acceptable values.", "Warning",
            "Choose a value from the enumeration list that the implementation can support and resubmit the request if "
            "the operation failed."},
    Message{
        "ActionParameterValueTypeError",
        "The value '%1' for the parameter %2 in the action %3 is not a type that the parameter can accept.", "Warning",
        "Correct the value for the parameter in the request body and resubmit the request if the operation failed."},
    Message{"CreateLimitReachedForResource",
            "The create operation failed because the resource has reached the limit of possible resources.", "Critical",
            "Either delete resources and resubmit the request if the operation failed or do not resubmit the request."},
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
    Message{"PreconditionFailed", "The ETag supplied did not match the ETag required to change this resource.",
            "Critical", "Try the operation again using the appropriate ETag."},
    Message{"PropertyMissing", "The property %1 is a required property and must be included in the request.", "Warning",
            "Ensure that the property is in the request body and has a valid value and resubmit the request if the "
            "operation failed."},
    Message{"PropertyNotWritable", "The property %1 is a read-only property and cannot be assigned a value.", "Warning",
            "Remove the property from the request body and resubmit the request if the operation failed."},
    Message{"PropertyUnknown", "The property %1 is not in the list of valid properties for the resource.", "Warning",
            "Remove the unknown property from the request body and resubmit the request if the operation failed."},
    Message{"PropertyValueError", "The value provided for the property %1 is not valid.", "Warning",
            "Correct the value for the property in the request body and resubmit the request if the operation failed."},
    Message{"PropertyValueFormatError",
            "The value '%1' for the property %2 is not a format that the property can accept.", "Warning",
            "Correct the value for the property in the request body and resubmit the request if the operation failed."},
    Message{"PropertyValueNotInList", "The value '%1' for the property %2 is not in the list of acceptable values.",
            "Warning",
            "Choose a value from the enumeration list that the implementation can support and resubmit the request if "
            "the operation failed."},
    Message{"PropertyValueOutOfRange",
            "The value '%1' for the property %2 is not in the supported range of acceptable values.", "Warning",
            "Correct the value for the property in the request body and resubmit the request if the operation failed."},
    Message{"PropertyValueTypeError", "The value '%1' for the property %2 is not a type that the property can accept.",
            "Warning",
            "Correct the value for the property in the request body and resubmit the request if the operation failed."},
    Message{"QueryParameterUnsupported", "Query parameter '%1' is not supported.", "Warning",
            "Correct or remove the query parameter and resubmit the request."},
    Message{"ResetRequired",
            "In order to apply changes, recover from errors, or complete the operation, a component reset is required "
            "with the Reset action URI '%1' and ResetType '%2'.",
            "Warning", "Perform the required reset action on the specified component."},
    Message{"ResourceAtUriUnauthorized",
            "While accessing the resource at '%1', the service received an authorization error '%2'.", "Critical",
            "Ensure that the appropriate access is provided for the service in order for it to access the URI."},
    Message{"ResourceInUse",
            "The change to the requested resource failed because the resource is in use or in transition.", "Warning",
            "Remove the condition and resubmit the request if the operation failed."},
    Message{"ResourceMissingAtURI", "The resource at the URI '%1' was not found.", "Critical",
            "Place a valid resource at the URI or correct the URI and resubmit the request."},
    Message{"ResourceNotFound", "The requested resource of type %1 named '%2' was not found.", "Critical",
            "Provide a valid resource identifier and resubmit the request."},
    Message{"Success", "The request completed successfully.", "OK", "None."},
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

std::string MessageId(const Message& message) { return fmt::format("Base.1.18.0.{}", message.Key); }

json::array Describe(const std::vector<Notice>& notices)
{
    json::array messages;
    for (const Notice& notice : notices)
    {
        messages.emplace_back(DescribeNotice(notice));
    }
    return messages;
}

} // namespace

json::object DescribeNotice(const Notice& notice)
{
    const Message& entry = Messages.at(static_cast<std::size_t>(notice.Message));
    json::object info{
        {"@odata.type", "#Message.v1_1_2.Message"},
        {"MessageId", MessageId(entry)},
        {"Message", FillIn(entry.Text, notice.Arguments)},
        {"MessageArgs", json::array(notice.Arguments.begin(), notice.Arguments.end())},
        {"MessageSeverity", entry.Severity},
        {"Severity", entry.Severity},
        {"Resolution", entry.Resolution},
    };
    if (!notice.Property.empty())
    {
        info.emplace("RelatedProperties", json::array{notice.Property});
    }
    return info;
}

HttpResponse DoneAnswer(const std::vector<Notice>& notices)
{
    return JsonAnswer(200, {{"@Message.ExtendedInfo", Describe(notices)}});
}

HttpResponse RedfishErrors(int status, const std::vector<Notice>& notices)
{
    const Notice general{Base::GeneralError};
    const json::object head = DescribeNotice(notices.size() == 1 ? notices.front() : general);
    json::object error{
        {"code", head.at("MessageId")}, {"message", head.at("Message")}, {"@Message.ExtendedInfo", Describe(notices)}};
    return JsonAnswer(status, {{"error", std::move(error)}});
}

HttpResponse RedfishError(int status, Base message, const std::vector<std::string>& arguments)
{
    return RedfishErrors(status, {{message, arguments}});
}

HttpResponse RefusalPage(int status)
{
    return status == 413 ? RedfishError(status, Base::PayloadTooLarge)
                         : RedfishError(status, status >= 500 ? Base::InternalError : Base::GeneralError);
}

} // namespace bmcsim
