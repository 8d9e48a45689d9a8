#pragma once

#include "Changes.h"
#include "HttpServer.h"

namespace bmcsim
{

/// Enters a change as pending, as a whole or, where one of its values is bad, not at
/// all.
/// @return the answer; its status is 200 when the change was taken.
HttpResponse EnterChange(const Machine& machine, const AttributeRules& rules, Values& values, Place place,
                         const boost::json::object& change);

} // namespace bmcsim
