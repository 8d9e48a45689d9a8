#include "SettingValues.h"

#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>

#include "JsonText.h"
#include "Log.h"
#include "PlainText.h"
#include "ValueConversions.h"

namespace Tavrine
{

namespace
{

namespace json = boost::json;

std::string String(json::string_view text) { return {text.data(), text.size()}; }

/// @return false for a kind that no setting has.
bool ReadValue(const json::value& from, OptionalVar& value)
{
    switch (from.kind())
    {
    case json::kind::null:
        value.reset();
        return true;
    case json::kind::string:
        value = String(from.get_string());
        return true;
    case json::kind::bool_:
        value = from.get_bool();
        return true;
    case json::kind::int64:
        value = from.get_int64();
        return true;
    default: // numbers beyond 64 bits signed are of the kinds uint64 and double
        return false;
    }
}

} // namespace

RedfishConfigResult ReadSettingValues(std::string_view response, SettingValueMap& values)
{
    const std::optional<json::value> document = ParseJson(response);
    if (!document)
    {
        const std::string fault = LookAtJson(response).Fault;
        return {27, "The values cannot be read: the text is " + (fault.empty() ? "too large" : fault) + ".", ""};
    }
    const json::value* const member = Member(&*document, "Attributes");
    const json::object* const attributes = member == nullptr ? nullptr : member->if_object();
    if (attributes == nullptr)
    {
        return {27, "The values cannot be read: the text has no object \"Attributes\".", ""};
    }
    SettingValueMap read;
    for (const auto& attribute : *attributes)
    {
        OptionalVar value;
        if (ReadValue(attribute.value(), value))
        {
            // Most BMCs list them in order, and then the place is known.
            read.insert_or_assign(read.end(), String(attribute.key()), std::move(value));
        }
        else
        {
            Log(4, __FILE__, __LINE__).Stream()
                << "The value of " << CleanText(String(attribute.key())) << " is of no usable kind, so skipped.";
        }
    }
    values = std::move(read);
    return {0, "", ""};
}

RedfishConfigResult MakeValueText(const std::string& name, const std::string& value, const OptionalVar& current,
                                  std::string& jsonText)
{
    OptionalVar changed = current;
    if (!TransferStringToOptionalVar(changed, value) || !changed)
    {
        return {10, "The new value of " + name + " is not of the kind of its value in force.", name};
    }
    jsonText = json::serialize(VariantToJson(*changed));
    return {0, "", ""};
}

} // namespace Tavrine
