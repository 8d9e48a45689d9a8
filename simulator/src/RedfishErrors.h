#pragma once

#include "HttpServer.h"

#include <boost/json/object.hpp>
#include <string>
#include <vector>

namespace bmcsim
{

/// Messages of the Base registry that the service answers with.
enum class Base
{
    ActionNotSupported,
    ActionParameterMissing,
    ActionParameterUnknown,
    ActionParameterValueFormatError,
    ActionParameterValueNotInList,
    ActionParameterValueTypeError,
    CreateLimitReachedForResource,
    GeneralError,
    InternalError,
    MalformedJSON,
    NoValidSession,
    OperationNotAllowed,
    PayloadTooLarge,
    PreconditionFailed,
    PropertyMissing,
    PropertyNotWritable,
    PropertyUnknown,
    PropertyValueError,
    PropertyValueFormatError,
    PropertyValueNotInList,
    PropertyValueOutOfRange,
    PropertyValueTypeError,
    QueryParameterUnsupported,
    ResetRequired,
    ResourceAtUriUnauthorized,
    ResourceInUse,
    ResourceMissingAtURI,
    ResourceNotFound,
    Success,
    UnrecognizedRequestBody,
};

/// One message of an answer, or of what "@Redfish.Settings" tells.
struct Notice
{
    Base Message;
    /// What stands for %1, %2 … in the message's text.
    std::vector<std::string> Arguments = {};
    /// JSON pointer to the property that it is about; empty: to none.
    std::string Property = {};
};

boost::json::object DescribeNotice(const Notice& notice);

/// An answer of status 200 that carries messages.
HttpResponse DoneAnswer(const std::vector<Notice>& notices);

/// An answer with the error object of DSP0266. @param notices  at least one.
HttpResponse RedfishErrors(int status, const std::vector<Notice>& notices);

/// An answer with the error object of DSP0266.
/// @param arguments  what stands for %1, %2 … in the message's text.
HttpResponse RedfishError(int status, Base message, const std::vector<std::string>& arguments = {});

/// The page for a request that could not be read as HTTP.
HttpResponse RefusalPage(int status);

} // namespace bmcsim
