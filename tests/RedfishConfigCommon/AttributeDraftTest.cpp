#include "AttributeRegistry.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include <boost/json/parse.hpp>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "RegistryTexts.h"

// An attribute that is read from the parser's events is the one that a document of it gives.

using namespace Tavrine;
namespace json = boost::json;

namespace
{

using Words = std::vector<std::string>;

const Words Keys = {"Type",
                    "Typ\\u0065",
                    "MenuPath",
                    "IsSystemUniqueProperty",
                    "Value",
                    "Oem",
                    "ReadOnly",
                    "Hidden",
                    "LowerBound",
                    "UpperBound",
                    "HelpText",
                    "DisplayName",
                    "DefaultValue",
                    "CurrentValue",
                    "ValueExpression",
                    "Other",
                    ""};

const Words Scalars = {"null",
                       "true",
                       "false",
                       "0",
                       "-7",
                       "18446744073709551615",
                       "1e400",
                       "2.5",
                       "8.0",
                       R"("")",
                       R"("true")",
                       R"("12")",
                       R"("x")",
                       R"("a\"b\u00e4\n")",
                       R"("longer than what stands in place in a text")"};

const Words Containers = {
    "[]",
    "{}",
    "[[]]",
    R"({"ValueName":"A"})",
    R"([{"ValueName":"A","ValueDisplayName":"a"},{"ValueName":"B"}])",
    R"([{"ValueName":"A"},{"ValueName":"A","ValueDisplayName":"later"},{"ValueName":1},7,"x",null,[],{}])",
    R"([{"ValueName":"A","ValueName":2},{"ValueDisplayName":"d","ValueName":"B\u0020","ValueDisplayName":null}])",
    R"([{"x":{"ValueName":"inner"},"ValueName":"outer"},[{"ValueName":"in an array"}]])",
    R"({"Zorvan":{"Protected":true}})",
    R"({"Zorvan":{"Protected":"true","Protected":false}})",
    R"({"Zorvan":{"Protected":true},"Zorvan":{}})",
    R"({"Zorvan":{"Protected":true},"Zorvan":1})",
    R"({"Zorvan":{"Protected":[true]}})",
    R"({"Zorvan":[{"Protected":true}]})",
    R"([{"Zorvan":{"Protected":true}}])",
    R"({"Other":{"Protected":true},"Zorvan":{"x":{"Protected":true}}})",
    R"({"Zorvan":{"Protected":1}})",
    R"({"Zorvan":{"Protected":true},"Other":{"Protected":false}})",
    R"({"Zorvan":{"a":[{"b":0}],"Protected":"TRUE"}})"};

rc::Gen<std::string> Member()
{
    return rc::gen::map(rc::gen::pair(rc::gen::elementOf(Keys),
                                      rc::gen::oneOf(rc::gen::elementOf(Scalars), rc::gen::elementOf(Containers))),
                        [](const std::pair<std::string, std::string>& member)
                        { return ",\"" + member.first + "\":" + member.second; });
}

std::optional<std::string> TextOf(const json::object& object, const char* key)
{
    const json::value* const member = object.if_contains(key);
    return member != nullptr && member->is_string() ? std::optional(std::string(member->get_string())) : std::nullopt;
}

bool FlagOf(const json::object& object, const char* key)
{
    const json::value* const member = object.if_contains(key);
    const auto scalar = member != nullptr ? ScalarFromJson(*member) : std::nullopt;
    return scalar && ScalarAsFlag(*scalar).value_or(false);
}

bool IsProtected(const json::object& attribute)
{
    const json::value* const oem = attribute.if_contains("Oem");
    const json::value* const zorvan =
        oem != nullptr && oem->is_object() ? oem->get_object().if_contains("Zorvan") : nullptr;
    return zorvan != nullptr && zorvan->is_object() && FlagOf(zorvan->get_object(), "Protected");
}

RegistryScalar PropertyOf(const json::object& attribute, SettingProperty property)
{
    const json::value* const member = attribute.if_contains(PropertyWord(property));
    const auto scalar = member != nullptr && !member->is_null() ? ScalarFromJson(*member) : std::nullopt;
    const auto suited = scalar ? SuitedTo(property, *scalar) : std::nullopt;
    return suited ? *suited : IsFlag(property) ? RegistryScalar(false) : RegistryScalar();
}

/// Names and display names, each name once.
std::vector<std::pair<std::string, std::optional<std::string>>> ValuesOf(const json::object& attribute)
{
    std::vector<std::pair<std::string, std::optional<std::string>>> values;
    const json::value* const list = attribute.if_contains("Value");
    for (const json::value& element : list != nullptr && list->is_array() ? list->get_array() : json::array())
    {
        const auto name = element.is_object() ? TextOf(element.get_object(), "ValueName") : std::nullopt;
        const bool known =
            name && std::any_of(values.begin(), values.end(), [&](const auto& value) { return value.first == *name; });
        if (name && !known)
        {
            values.emplace_back(*name, TextOf(element.get_object(), "ValueDisplayName"));
        }
    }
    return values;
}

} // namespace

RC_GTEST_PROP(AttributeDraft, ReadsWhatADocumentHas, ())
{
    // Two of them, so that nothing of the one before is left.
    std::string attributes;
    std::vector<json::object> documents;
    for (const char* name : {"First", "Second"})
    {
        std::string text = std::string(R"({"AttributeName":")") + name + "\"";
        for (const std::string& member : *rc::gen::container<Words>(Member()))
        {
            text += member;
        }
        text += "}";
        documents.push_back(json::parse(text).as_object());
        attributes += (attributes.empty() ? "" : ",") + text;
    }
    AttributeRegistry registry;
    RegistryNotes notes;
    std::string error;
    RC_ASSERT(ReadAttributeRegistry(registrytext::Registry(attributes), registry, notes, error));
    RC_ASSERT(registry.Attributes.size() == documents.size());
    for (std::size_t index = 0; index < documents.size(); ++index)
    {
        const RegistryAttribute& read = registry.Attributes[index];
        const json::object& document = documents[index];
        RC_ASSERT(read.Type == TextOf(document, "Type"));
        RC_ASSERT(read.MenuPath == TextOf(document, "MenuPath"));
        RC_ASSERT(read.IsSystemUnique == FlagOf(document, "IsSystemUniqueProperty"));
        RC_ASSERT(read.IsProtected == IsProtected(document));
        for (std::size_t row = 0; row < PropertyCount; ++row)
        {
            const auto property = static_cast<SettingProperty>(row);
            RC_ASSERT(PropertyOfRegistry(read, property) == PropertyOf(document, property));
        }
        std::vector<std::pair<std::string, std::optional<std::string>>> values;
        for (const RegistryValueName& value : read.ValueNames)
        {
            values.emplace_back(value.Name, value.DisplayName);
        }
        RC_ASSERT(values == ValuesOf(document));
    }
}
