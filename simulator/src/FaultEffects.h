#pragma once

#include "FaultRule.h"
#include "HttpServer.h"

#include <string>

namespace bmcsim
{

class HttpConnection;

/// What a fault makes of an answer before it is written as HTTP.
/// @param answer  that of the request if it was carried out.
HttpResponse FaultyResponse(const Fault& fault, const HttpRequest& request, HttpResponse answer);

/// Whether a fault acts on the bytes of the answer, so that these are held back for
/// SendFaulty.
bool ActsOnBytes(FaultKind kind);

/// Whether nothing goes out that has a status.
bool IsSilent(const Fault& fault);

/// Sends what the fault makes of the answer's bytes.
/// @return whether the connection stays open.
bool SendFaulty(const Fault& fault, const std::string& answer, HttpConnection& connection);

} // namespace bmcsim
