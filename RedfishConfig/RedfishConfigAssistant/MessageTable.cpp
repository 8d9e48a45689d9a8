#include "MessageTable.h"

#include <algorithm>
#include <iterator>

namespace Tavrine
{

namespace
{

using enum MessageKind;

/// Keys of the Base message registry (DSP8011), and a few of other registries.
/// Arguments that hold a property are the same in all versions.
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
     "In order to recover from errors, a component reset is recommended with the Reset action URI '%1' and ResetType "
     "'%2'."},
    {"AccountRemoved", Success, 0, "The account was successfully removed."},
    {"AccountForSessionNoLongerExists", Note, 0,
     "The account for the current session was removed, and so the current session was removed as well."},
    {"SubscriptionTerminated", Note, 0, "The event subscription was terminated."},
    {"OneTimePasscodeSent", Note, 0,
     "A one-time passcode was sent to: %1. Supply the passcode as the Token property in the request to create a "
     "session."},
    {"ResourceDeprecated", Note, 0, "The operation was performed on a deprecated resource '%1'."},
    {"ActionDeprecated", Note, 0, "The action %1 is deprecated."},
    {"ConditionInRelatedResource", Note, 0,
     "One or more conditions exist in a related resource. See the OriginOfCondition property."},
    {"EventBufferExceeded", Note, 0, "Undelivered events may have been lost due to exceeding the event buffer."},

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
    {"ArraySizeTooLong", BadValue, 1, "The array provided for property %1 exceeds the size limit %2."},
    {"ArraySizeTooShort", BadValue, 1, "The array provided for property %1 is under the minimum size limit %2."},
    {"InvalidIndex", BadValue, 0, "The index %1 is not a valid offset into the array."},

    {"PropertyUnknown", Unknown, 1, "The property %1 is not in the list of valid properties for the resource."},
    {"ActionParameterUnknown", Unknown, 2, "The action %1 was submitted with the invalid parameter %2."},
    {"ActionParameterNotSupported", Unknown, 1,
     "The parameter %1 for the action %2 is not supported on the target resource."},

    {"PropertyNotWritable", Refused, 1, "The property %1 is a read-only property and cannot be assigned a value."},
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
     "The password provided for this account must be changed before access is granted. PATCH the Password property for "
     "this account located at the target URI '%1' to complete this process."},
    {"PreconditionFailed", Refused, 0, "The ETag supplied did not match the ETag required to change this resource."},
    {"PreconditionRequired", Refused, 0, "A precondition header or annotation is required to change this resource."},
    {"OperationNotAllowed", Refused, 0, "The HTTP method is not allowed on this resource."},
    {"OperationFailed", Refused, 0,
     "An error occurred internal to the service as part of the overall request. Partial results may have been "
     "returned."},
    {"LicenseRequired", Refused, 0, "A license is required for this operation: %1."},
    {"InvalidJSON", Refused, 0,
     "The request body submitted is invalid JSON starting at line %1 and could not be parsed by the receiving "
     "service."},
    {"CreateFailedMissingReqProperties", Refused, 1,
     "The create operation failed because the required property %1 was missing from the request."},
    {"InvalidObject", Refused, 0, "The object at '%1' is invalid."},
    {"ResourceTypeIncompatible", Refused, 0,
     "The @odata.type of the request body %1 is incompatible with the @odata.type of the resource, which is %2."},
    {"PayloadTooLarge", Refused, 0, "The supplied payload exceeds the maximum size supported by the service."},
    {"MissingOrMalformedPart", Refused, 0,
     "The multipart request contains malformed parts or is missing required parts."},
    {"HeaderMissing", Refused, 0, "Required header '%1' is missing in the request."},
    {"HeaderInvalid", Refused, 0, "Header '%1' is invalid."},
    {"QueryParameterUnsupported", Refused, 0, "Query parameter '%1' is not supported."},
    {"QueryParameterValueTypeError", Refused, 0,
     "The value '%1' for the query parameter %2 is not a type that the parameter can accept."},
    {"QueryParameterValueFormatError", Refused, 0,
     "The value '%1' for the parameter %2 is not a format that the parameter can accept."},
    {"QueryParameterValueError", Refused, 0, "The value for the parameter %1 is invalid."},
    {"QueryParameterOutOfRange", Refused, 0, "The value '%1' for the query parameter %2 is out of range %3."},
    {"QueryNotSupportedOnResource", Refused, 0, "Querying is not supported on the requested resource."},
    {"QueryNotSupportedOnOperation", Refused, 0, "Querying is not supported with the requested operation."},
    {"QueryNotSupported", Refused, 0, "Querying is not supported by the implementation."},
    {"QueryCombinationInvalid", Refused, 0, "Two or more query parameters in the request cannot be used together."},
    {"ResourceAlreadyExists", Refused, 0,
     "The requested resource of type %1 with the property %2 with the value '%3' already exists."},
    {"ResourceCreationConflict", Refused, 0,
     "The resource could not be created. The service has a resource at URI '%1' that conflicts with the creation "
     "request."},
    {"ResourceCannotBeDeleted", Refused, 0,
     "The delete request failed because the resource requested cannot be deleted."},
    {"CreateLimitReachedForResource", Refused, 0,
     "The create operation failed because the resource has reached the limit of possible resources."},
    {"EventSubscriptionLimitExceeded", Refused, 0,
     "The event subscription failed due to the number of simultaneous subscriptions exceeding the limit of the "
     "implementation."},
    {"InsufficientStorage", Refused, 0, "Insufficient storage or memory available to complete the request."},
    {"AccountNotModified", Refused, 0, "The account modification request failed."},
    {"ResourceAtUriInUnknownFormat", Refused, 0, "The resource at '%1' is in a format not recognized by the service."},
    {"ResourceAtUriUnauthorized", Refused, 0,
     "While accessing the resource at '%1', the service received an authorization error '%2'."},
    {"CouldNotEstablishConnection", Refused, 0, "The service failed to establish a connection with the URI '%1'."},
    {"SourceDoesNotSupportProtocol", Refused, 0,
     "The other end of the connection at '%1' does not support the specified protocol %2."},
    {"AccessDenied", Refused, 0, "While attempting to establish a connection to '%1', the service denied access."},
    {"NetworkNameResolutionNotConfigured", Refused, 0, "Network name resolution is not configured on this service."},
    {"NetworkNameResolutionNotSupported", Refused, 0,
     "Resolution of network-based names is not supported by this service."},
    {"AuthenticationTokenRequired", Refused, 0,
     "The request could not be performed because an authentication token was not provided."},
    {"RestrictedRole", Refused, 0, "The operation was not successful because the role '%1' is restricted."},
    {"RestrictedPrivilege", Refused, 0, "The operation was not successful because the privilege '%1' is restricted."},
    {"StrictAccountTypes", Refused, 1,
     "The request could not be fulfilled with the account types included in property '%1' because the property "
     "StrictAccountTypes is set to true."},
    {"ServiceDisabled", Refused, 0,
     "The operation failed because the service at %1 is disabled and cannot accept requests."},
    {"ChassisPowerStateOnRequired", Refused, 0,
     "The chassis with Id '%1' is required to be powered on to perform this request."},
    {"ChassisPowerStateOffRequired", Refused, 0,
     "The chassis with Id '%1' is required to be powered off to perform this request."},
    {"OperationTimeout", Refused, 0,
     "A timeout internal to the service occurred as part of the request. Partial results may have been returned."},
    {"UndeterminedFault", Refused, 0, "An undetermined fault condition was reported by '%1'."},
    {"MaximumErrorsExceeded", Refused, 0, "Too many errors have occurred to report them all."},
};

static_assert(std::none_of(std::begin(knownMessages), std::end(knownMessages),
                           [](const KnownMessage& message) { return message.Text.empty(); }));

} // namespace

std::string FilledText(std::string_view text, const std::vector<std::string>& arguments)
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
    return known == nullptr ? std::string(messageId) : FilledText(known->Text, arguments);
}

} // namespace Tavrine
