// The attribute registry with the current values written into it.
#include "BiosRedfishConfigProc.h"

#include <exception>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include "BiosSettingAssistant.h"
#include "Results.h"
#include "Trace.h"
#include "ValueConversions.h"

namespace Tavrine
{

namespace
{

/// An attribute whose name the values do not know stays as it is; one without a value gets
/// a null only where the registry brought no value of its own.
void EnterCurrentValue(boost::json::value& attribute, const SettingValueMap& values)
{
    boost::json::object* members = attribute.if_object();
    const boost::json::value* name = members != nullptr ? members->if_contains("AttributeName") : nullptr;
    if (name == nullptr || !name->is_string())
    {
        return;
    }
    const auto entry = values.find(std::string(name->get_string()));
    if (entry == values.end())
    {
        return;
    }
    if (entry->second)
    {
        (*members)["CurrentValue"] = VariantToJson(*entry->second);
    }
    else
    {
        members->emplace("CurrentValue", nullptr);
    }
}

RedfishConfigResult EnterCurrentValues(boost::json::value& registry, const SettingValueMap& values)
{
    boost::json::value* entries = registry.as_object().if_contains("RegistryEntries");
    if (entries == nullptr || !entries->is_object())
    {
        TAVRINE_LOG(LogFailure) << "Cannot find RegistryEntries node in schema.";
        return BareResult(ResultParseFailed);
    }
    boost::json::value* attributes = entries->get_object().if_contains("Attributes");
    if (attributes == nullptr || !attributes->is_array())
    {
        TAVRINE_LOG(LogFailure) << "Cannot find Attributes node in schema.";
        return BareResult(ResultParseFailed);
    }
    for (boost::json::value& attribute : attributes->get_array())
    {
        EnterCurrentValue(attribute, values);
    }
    return BareResult(ResultSuccess);
}

} // namespace

RedfishConfigResult BiosRedfishConfigProc::GenerateSchemaJsonStr(SettingStringMap& output)
{
    TAVRINE_LOG(LogDetail) << "Enter BiosRedfishConfigProc::GenerateSchemaJsonStr()";
    constexpr const char* MissingAssistant = "Construct assistant error.";
    if (m_SettingAssistant == nullptr)
    {
        TAVRINE_LOG(LogFailure) << MissingAssistant;
        return BareResult(ResultInternalError);
    }
    RedfishConfigResult result = FetchSchema(MissingAssistant);
    if (result != ResultSuccess)
    {
        return result;
    }
    SettingValueMap values;
    result = GetCurrentValuesMap(values, true);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed to get current values map though: " << result.ErrorMsg();
        return result;
    }
    if (!m_Schema.empty() && !values.empty())
    {
        try
        {
            boost::json::value registry = boost::json::parse(m_Schema);
            RedfishConfigResult entered = EnterCurrentValues(registry, values);
            if (entered != ResultSuccess)
            {
                return entered;
            }
            output[m_SecondPrefix] = boost::json::serialize(registry);
        }
        catch (const std::exception& failure)
        {
            TAVRINE_LOG(LogFailure) << "Generate Schema Json failed: " << failure.what();
            return BareResult(ResultParseFailed);
        }
    }
    TAVRINE_LOG(LogDetail) << "Exit BiosRedfishConfigProc::GenerateSchemaJsonStr()";
    return result;
}

} // namespace Tavrine
