#pragma once

#include "HttpServer.h"

#include <boost/json/object.hpp>
#include <initializer_list>
#include <optional>
#include <string>

namespace bmcsim
{

/// A parameter that an action takes.
struct ActionParameter
{
    enum Kind
    {
        Text,
        Flag,
        Object,
    };
    const char* Name;
    Kind Type = Text;
    bool Required = false;
};

/// The parameters of an action, none but those that it takes and each of its kind. A
/// body of no bytes has none. Otherwise empty, and refusal tells the client why.
std::optional<boost::json::object> ActionBody(const HttpRequest& request, const std::string& action,
                                              std::initializer_list<ActionParameter> parameters, HttpResponse& refusal);

} // namespace bmcsim
