#include "JsonText.h"

#include <initializer_list>
#include <utility>

#include <boost/json/basic_parser_impl.hpp>
#include <boost/json/monotonic_resource.hpp>
#include <boost/json/parse.hpp>

#include "ShapeHandler.h"
#include "StringNodeReader.h"

namespace Tavrine
{

namespace
{

namespace json = boost::json;

std::string FaultText(const json::error_code& ec, std::size_t position)
{
    if (ec == json::error::too_deep)
    {
        return "nested deeper than " + std::to_string(MaxJsonDepth) + " levels";
    }
    if (ec == json::error::array_too_large || ec == json::error::object_too_large)
    {
        return "larger than " + std::to_string(MaxJsonValues) + " values";
    }
    if (ec == json::error::exponent_overflow)
    {
        return "unusable: a number is too large near byte " + std::to_string(position);
    }
    return "no JSON: " + ec.message() + " near byte " + std::to_string(position);
}

} // namespace

json::parse_options JsonOptions()
{
    json::parse_options options;
    options.max_depth = MaxJsonDepth;
    return options;
}

std::string ParseFault(json::error_code ec, std::size_t used, std::size_t size)
{
    if (!ec && used < size)
    {
        ec = json::error::extra_data;
    }
    return ec ? FaultText(ec, used) : std::string();
}

JsonShape LookAtJson(std::string_view text)
{
    json::basic_parser<ShapeHandler> parser(JsonOptions());
    JsonShape shape;
    shape.Fault = ParseShape(parser, text);
    shape.HasError = parser.handler().HasError();
    return shape;
}

std::optional<json::value> ParseJson(std::string_view text)
{
    if (!LookAtJson(text).Fault.empty())
    {
        return std::nullopt;
    }
    json::error_code ec;
    // Read and never changed, so its memory may grow alone and go at one stroke.
    json::value document = json::parse(json::string_view(text.data(), text.size()), ec,
                                       json::make_shared_resource<json::monotonic_resource>(), JsonOptions());
    return ec ? std::nullopt : std::optional(std::move(document));
}

const json::value* Member(const json::value* parent, std::string_view name)
{
    const json::object* const object = parent == nullptr ? nullptr : parent->if_object();
    return object == nullptr ? nullptr : object->if_contains(json::string_view(name.data(), name.size()));
}

std::string_view TextMember(const json::value* parent, std::string_view name)
{
    const json::value* const member = Member(parent, name);
    const json::string* const text = member == nullptr ? nullptr : member->if_string();
    return text == nullptr ? std::string_view() : std::string_view(text->data(), text->size());
}

std::string TextMemberOf(std::string_view text, std::string_view name)
{
    if (!LookAtJson(text).Fault.empty())
    {
        return {};
    }
    json::basic_parser<StringNodeReader> parser(JsonOptions(), std::initializer_list<std::string_view>{name});
    json::error_code ec;
    parser.write_some(false, text.data(), text.size(), ec);
    return ec ? std::string() : parser.handler().Found().value_or(std::string());
}

} // namespace Tavrine
