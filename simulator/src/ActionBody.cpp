#include "ActionBody.h"

#include "Answers.h"
#include "RedfishErrors.h"
#include "Scalars.h"

#include <algorithm>
#include <vector>

namespace bmcsim
{
namespace
{

namespace json = boost::json;

bool IsOfKind(const json::value& value, ActionParameter::Kind kind)
{
    return kind == ActionParameter::Text   ? value.is_string()
           : kind == ActionParameter::Flag ? value.is_bool()
                                           : value.is_object();
}

} // namespace

std::optional<json::object> ActionBody(const HttpRequest& request, const std::string& action,
                                       std::initializer_list<ActionParameter> parameters, HttpResponse& refusal)
{
    auto body = ObjectBody(request, true, refusal);
    if (!body)
    {
        return std::nullopt;
    }
    std::vector<Notice> faults;
    for (const auto& [name, value] : *body)
    {
        const auto parameter =
            std::find_if(parameters.begin(), parameters.end(),
                         [&name = name](const ActionParameter& known) { return name == known.Name; });
        if (parameter == parameters.end())
        {
            faults.push_back({Base::ActionParameterUnknown, {action, name}});
        }
        else if (!IsOfKind(value, parameter->Type))
        {
            faults.push_back({Base::ActionParameterValueTypeError, {ShortText(value), name, action}});
        }
    }
    for (const ActionParameter& parameter : parameters)
    {
        if (parameter.Required && !body->contains(parameter.Name))
        {
            faults.push_back({Base::ActionParameterMissing, {action, parameter.Name}});
        }
    }
    if (!faults.empty())
    {
        refusal = RedfishErrors(400, faults);
        return std::nullopt;
    }
    return body;
}

} // namespace bmcsim
