#pragma once

#include "HttpServer.h"

#include <string>
#include <vector>

namespace bmcsim
{

/// Messages of the Base registry that the service answers with.
enum class Base
{
    ActionNotSupported,
    ActionParameterUnknown,
    ActionParameterValueTypeError,
    GeneralError,
    InternalError,
    MalformedJSON,
    NoValidSession,
    OperationNotAllowed,
    PayloadTooLarge,
    PropertyMissing,
    PropertyValueTypeError,
    QueryParameterUnsupported,
    ResourceAtUriUnauthorized,
    ResourceMissingAtURI,
    UnrecognizedRequestBody,
};

/// An answer with the error object of DSP0266.
/// @param arguments  what stands for %1, %2 … in the message's text.
HttpResponse RedfishError(int status, Base message, const std::vector<std::string>& arguments = {});

/// The page for a request that could not be read as HTTP.
HttpResponse RefusalPage(int status);

} // namespace bmcsim
