#include "JsonText.h"

#include <cmath>
#include <exception>

#include <boost/json/basic_parser_impl.hpp>
#include <boost/json/monotonic_resource.hpp>
#include <boost/json/parse.hpp>

#include "StringNodeReader.h"

namespace Tavrine
{

namespace
{

namespace json = boost::json;

json::parse_options Options()
{
    json::parse_options options;
    options.max_depth = MaxJsonDepth;
    return options;
}

/// Counts and forgets. Each value ends in one call of Value().
class ShapeHandler
{
  public:
    static constexpr std::size_t max_object_size = MaxJsonValues;
    static constexpr std::size_t max_array_size = MaxJsonValues;
    static constexpr std::size_t max_key_size = json::string::max_size();
    static constexpr std::size_t max_string_size = json::string::max_size();

    bool on_document_begin(json::error_code&) { return true; }
    bool on_document_end(json::error_code&) { return true; }
    bool on_object_begin(json::error_code&)
    {
        m_HasError = m_HasError || (m_Depth == 1 && m_InObject && m_Key == "error");
        m_InObject = m_Depth == 0 ? true : m_InObject;
        ++m_Depth;
        m_Key.clear();
        return true;
    }
    bool on_object_end(std::size_t, json::error_code& ec) { return Leave(ec); }
    bool on_array_begin(json::error_code&)
    {
        ++m_Depth;
        m_Key.clear();
        return true;
    }
    bool on_array_end(std::size_t, json::error_code& ec) { return Leave(ec); }
    bool on_key_part(json::string_view part, std::size_t, json::error_code&) { return AddKey(part, false); }
    bool on_key(json::string_view part, std::size_t, json::error_code&) { return AddKey(part, true); }
    bool on_string_part(json::string_view, std::size_t, json::error_code&) { return true; }
    bool on_string(json::string_view, std::size_t, json::error_code& ec) { return Value(ec); }
    bool on_number_part(json::string_view, json::error_code&) { return true; }
    bool on_int64(std::int64_t, json::string_view, json::error_code& ec) { return Value(ec); }
    bool on_uint64(std::uint64_t, json::string_view, json::error_code& ec) { return Value(ec); }
    bool on_double(double number, json::string_view, json::error_code& ec)
    {
        if (!std::isfinite(number))
        {
            ec = json::error::exponent_overflow; // it would be written as "Infinity", which is no JSON
            return false;
        }
        return Value(ec);
    }
    bool on_bool(bool, json::error_code& ec) { return Value(ec); }
    bool on_null(json::error_code& ec) { return Value(ec); }
    bool on_comment_part(json::string_view, json::error_code&) { return true; }
    bool on_comment(json::string_view, json::error_code&) { return true; }

    bool HasError() const { return m_HasError; }

  private:
    bool Leave(json::error_code& ec)
    {
        --m_Depth;
        return Value(ec);
    }
    bool Value(json::error_code& ec)
    {
        if (++m_Values > MaxJsonValues)
        {
            ec = json::error::array_too_large;
            return false;
        }
        return true;
    }
    bool AddKey(json::string_view part, bool last)
    {
        constexpr std::size_t enough = 8; // only "error" is of interest
        if (m_Depth == 1)
        {
            if (m_KeyEnded)
            {
                m_Key.clear();
            }
            m_Key.append(part.data(), std::min(part.size(), enough));
            m_KeyEnded = last;
        }
        return true;
    }

    std::size_t m_Depth = 0;
    std::size_t m_Values = 0;
    std::string m_Key;
    bool m_KeyEnded = true;
    bool m_InObject = false;
    bool m_HasError = false;
};

std::string FaultText(const json::error_code& ec, std::size_t position)
{
    if (ec == json::error::too_deep)
    {
        return "nested deeper than " + std::to_string(MaxJsonDepth) + " levels";
    }
    if (ec == json::error::array_too_large || ec == json::error::object_too_large)
    {
        return "more than " + std::to_string(MaxJsonValues) + " values";
    }
    if (ec == json::error::exponent_overflow)
    {
        return "a number is too large near byte " + std::to_string(position);
    }
    return "no JSON: " + ec.message() + " near byte " + std::to_string(position);
}

} // namespace

JsonShape LookAtJson(std::string_view text)
{
    json::basic_parser<ShapeHandler> parser(Options());
    json::error_code ec;
    const std::size_t used = parser.write_some(false, text.data(), text.size(), ec);
    if (!ec && used < text.size())
    {
        ec = json::error::extra_data;
    }
    JsonShape shape;
    shape.Fault = ec ? FaultText(ec, used) : std::string();
    shape.HasError = parser.handler().HasError();
    return shape;
}

std::optional<json::value> ParseJson(std::string_view text)
{
    if (!LookAtJson(text).Fault.empty())
    {
        return std::nullopt;
    }
    try
    {
        json::error_code ec;
        // Read and never changed, so its memory may grow alone and go at one stroke.
        json::value document = json::parse(json::string_view(text.data(), text.size()), ec,
                                           json::make_shared_resource<json::monotonic_resource>(), Options());
        return ec ? std::nullopt : std::optional(std::move(document));
    }
    catch (const std::exception&) // memory alone can do this
    {
        return std::nullopt;
    }
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
    json::basic_parser<StringNodeReader> parser(Options(), std::initializer_list<std::string_view>{name});
    json::error_code ec;
    parser.write_some(false, text.data(), text.size(), ec);
    return ec ? std::string() : parser.handler().Found().value_or(std::string());
}

} // namespace Tavrine
