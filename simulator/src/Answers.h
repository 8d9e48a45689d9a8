#pragma once

#include "HttpServer.h"

#include <boost/json/object.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace bmcsim
{

/// A strong entity tag, quotes included, that follows from the content alone.
std::string EntityTag(const std::string& content);

/// Tags a resource in "@odata.etag": with the tag that it came with as long as it is
/// unchanged.
std::string TagResource(boost::json::object& resource, bool unchanged);

/// Answer to a GET: 304 without a body when the client names the tag as known.
/// @param tag  empty: the answer goes out without one.
HttpResponse ReadAnswer(const HttpRequest& request, std::string body, const std::string& tag);

/// Whether a list of tags, as "If-Match" has it, names the tag. Tags without their
/// quotes are taken, too.
bool NamesTag(std::string_view list, std::string_view tag);

HttpResponse JsonAnswer(int status, const boost::json::object& body);
HttpResponse EmptyAnswer(int status);

/// The body as an object; a body of no bytes counts as one without members where
/// emptyAllowed is set. Otherwise empty, and refusal tells the client why.
std::optional<boost::json::object> ObjectBody(const HttpRequest& request, bool emptyAllowed, HttpResponse& refusal);

} // namespace bmcsim
