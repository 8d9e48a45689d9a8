#pragma once

#include "HttpServer.h"

#include <boost/json/object.hpp>
#include <optional>
#include <string>

namespace bmcsim
{

/// A strong entity tag, quotes included, that follows from the content alone.
std::string EntityTag(const std::string& content);

/// Answer to a GET: 304 without a body when the client names the tag as known.
/// @param tag  empty: the answer goes out without one.
HttpResponse ReadAnswer(const HttpRequest& request, std::string body, const std::string& tag);

HttpResponse JsonAnswer(int status, const boost::json::object& body);
HttpResponse EmptyAnswer(int status);

/// The body as an object; a body of no bytes counts as one without members where
/// emptyAllowed is set. Otherwise empty, and refusal tells the client why.
std::optional<boost::json::object> ObjectBody(const HttpRequest& request, bool emptyAllowed, HttpResponse& refusal);

} // namespace bmcsim
