#include "MessageTable.h"

namespace Tavrine
{

namespace
{

using enum MessageKind;

/// Keys of the Base message registry (DSP8011) that an answer to a request of ours
/// can hold, and a few keys of other registries. Arguments that hold a property are
/// the same in all versions.
constexpr KnownMessage knownMessages[] = {
    {"Success", Success, 0, "The request completed successfully."},
    {"Created", Success, 0, "The resource was created successfully."},
    {"NoOperation", Note, 0,
     "The request body submitted contain no data to act upon and no changes to the resource took place."},
    {"AccountModified", Success, 0, "The account was successfully modified."},
    {"SessionTerminated", Success, 0, "The session was successfully terminated."},
    {"PropertyValueModified", Note, 1,
     "The property %1 was assigned the value '%2' due to modification by the service."},
    {"PropertyDeprecated", Note, 1, "The deprecated property %1 was included in the request body."},
    {"PropertyValueDeprecated", Note, 2, "The value '%1' for the property %2 is deprecated."},
    {"ResetRecommended", Note, 0,
     "In order to recover from errors, a component reset is recommended with the Reset action URI '%1' and "
     "ResetType '%2'."},

    {"ResetRequired", ResetNeeded, 0,
     "In order to apply changes, recover from errors, or complete the operation, a component reset is required with "
     "the Reset action URI '%1' and ResetType '%2'."},
    {"SystemResetRequired", ResetNeeded, 0, "The system must be reset for the changes to take effect."},
    {"RebootRequired", ResetNeeded, 0, "The system must be restarted for the changes to take effect."},

    {"ServiceTemporarilyUnavailable", Busy, 0, "The service is temporarily unavailable. Retry in %1 seconds."},
    {"ServiceShuttingDown", Busy, 0,
     "The operation failed because the service is shutting down and can no longer take incoming requests."},
    {"ServiceStarting", Busy, 0, "The service is starting."},

    {"PropertyValueNotInList", BadValue, 2,
     "The value '%1' for the property %2 is not in the list of acceptable values."},
    {"PropertyValueTypeError", BadValue, 2,
     "The value '%1' for the property %2 is not a type that the property can accept."},
    {"PropertyValueFormatError", BadValue, 2,
     "The value '%1' for the property %2 is not a format that the property can accept."},
    {"PropertyValueOutOfRange", BadValue, 2,
     "The value '%1' for the property %2 is not in the supported range of acceptable values."},
    {"PropertyValueError", BadValue, 1, "The value provided for the property %1 is not valid."},
    {"PropertyValueIncorrect", BadValue, 1,
     "The property '%1' with the requested value of '%2' could not be written because the value does not meet the "
     "constraints of the implementation."},
    {"PropertyValueConflict", BadValue, 1,
     "The property '%1' could not be written because its value would conflict with the value of the '%2' property."},
    {"PropertyValueResourceConflict", BadValue, 1,
     "The property '%1' with the requested value of '%2' could not be written because the value conflicts with the "
     "state or configuration of the resource at '%3'."},
    {"PropertyValueExternalConflict", BadValue, 1,
     "The property '%1' with the requested value of '%2' could not be written because the value is not available due "
     "to a configuration conflict."},
    {"StringValueTooLong", BadValue, 0, "The string '%1' exceeds the length limit %2."},
    {"StringValueTooShort", BadValue, 0, "The string '%1' was under the minimum required length %2."},
    {"ActionParameterValueNotInList", BadValue, 2,
     "The value '%1' for the parameter %2 in the action %3 is not in the list of acceptable values."},
    {"ActionParameterValueTypeError", BadValue, 2,
     "The value '%1' for the parameter %2 in the action %3 is not a type that the parameter can accept."},
    {"ActionParameterValueFormatError", BadValue, 2,
     "The value '%1' for the parameter %2 in the action %3 is not a format that the parameter can accept."},
    {"ActionParameterValueOutOfRange", BadValue, 2,
     "The value '%1' for the parameter %2 in the action %3 is not in the supported range of acceptable values."},
    {"ActionParameterValueError", BadValue, 1, "The value for the parameter %1 in the action %2 is invalid."},
    {"ActionParameterValueConflict", BadValue, 1,
     "The parameter '%1' with the requested value of '%2' does not meet the constraints of the implementation."},

    {"PropertyUnknown", Unknown, 1, "The property %1 is not in the list of valid properties for the resource."},
    {"ActionParameterUnknown", Unknown, 2, "The action %1 was submitted with the invalid parameter %2."},
    {"ActionParameterNotSupported", Unknown, 1,
     "The parameter %1 for the action %2 is not supported on the target resource."},

    {"PropertyNotWritable", Refused, 1, "The property %1 is a read only property and cannot be assigned a value."},
    {"PropertyNotUpdated", Refused, 1,
     "The property %1 was not updated due to an internal service error. The service is still operational."},
    {"PropertyDuplicate", Refused, 1, "The property %1 was duplicated in the request."},
    {"PropertyMissing", Refused, 1, "The property %1 is a required property and must be included in the request."},
    {"ActionParameterDuplicate", Refused, 2,
     "The action %1 was submitted with more than one value for the parameter %2."},
    {"ActionParameterMissing", Refused, 2,
     "The action %1 requires the parameter %2 to be present in the request body."},
    {"ActionNotSupported", Refused, 0, "The action %1 is not supported by the resource."},
    {"GeneralError", Refused, 0, "A general error has occurred."},
    {"InternalError", Refused, 0,
     "The request failed due to an internal service error. The service is still operational."},
    {"ServiceInUnknownState", Refused, 0,
     "The operation failed because the service is in an unknown state and can no longer take incoming requests."},
    {"MalformedJSON", Refused, 0,
     "The request body submitted was malformed JSON and could not be parsed by the receiving service."},
    {"EmptyJSON", Refused, 0,
     "The request body submitted contained an empty JSON object and the service is unable to process it."},
    {"UnrecognizedRequestBody", Refused, 0,
     "The service detected a malformed request body that it was unable to interpret."},
    {"ResourceInUse", Refused, 0,
     "The change to the requested resource failed because the resource is in use or in transition."},
    {"ResourceNotFound", Refused, 0, "The requested resource of type %1 named '%2' was not found."},
    {"ResourceMissingAtURI", Refused, 0, "The resource at the URI '%1' was not found."},
    {"InvalidURI", Refused, 0, "The URI %1 was not found."},
    {"ResourceInStandby", Refused, 0, "The request could not be performed because the resource is in standby."},
    {"ResourceExhaustion", Refused, 0,
     "The resource '%1' was unable to satisfy the request due to unavailability of resources."},
    {"SessionLimitExceeded", Refused, 0,
     "The session establishment failed due to the number of simultaneous sessions exceeding the limit of the "
     "implementation."},
    {"NoValidSession", Refused, 0, "There is no valid session established with the implementation."},
    {"InsufficientPrivilege", Refused, 0,
     "There are insufficient privileges for the account or credentials associated with the current session to perform "
     "the requested operation."},
    {"PasswordChangeRequired", Refused, 0,
     "The password provided for this account must be changed before access is granted."},
    {"PreconditionFailed", Refused, 0, "The ETag supplied did not match the ETag required to change this resource."},
    {"PreconditionRequired", Refused, 0, "A precondition header or annotation is required to change this resource."},
    {"OperationNotAllowed", Refused, 0, "The HTTP method is not allowed on this resource."},
    {"OperationFailed", Refused, 0,
     "An error occurred internal to the service as part of the overall request. Partial results may have been "
     "returned."},
    {"LicenseRequired", Refused, 0, "A license is required for this operation: %1."},
};

std::string Filled(std::string_view text, const std::vector<std::string>& arguments)
{
    std::string filled;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const bool place = text[i] == '%' && i + 1 < text.size() && text[i + 1] >= '1' && text[i + 1] <= '9';
        if (!place)
        {
            filled += text[i];
            continue;
        }
        const auto index = static_cast<std::size_t>(text[++i] - '1');
        filled += index < arguments.size() ? arguments[index] : "?";
    }
    return filled;
}

} // namespace

std::string_view MessageKey(std::string_view messageId)
{
    const std::size_t mark = messageId.find_last_of(".:");
    return mark == std::string_view::npos ? messageId : messageId.substr(mark + 1);
}

const KnownMessage* FindMessage(std::string_view key)
{
    for (const KnownMessage& message : knownMessages)
    {
        if (message.Key == key)
        {
            return &message;
        }
    }
    return nullptr;
}

std::string MessageText(std::string_view messageId, const std::vector<std::string>& arguments)
{
    const KnownMessage* const known = FindMessage(MessageKey(messageId));
    return known == nullptr || known->Text.empty() ? std::string(messageId) : Filled(known->Text, arguments);
}

} // namespace Tavrine
