#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <boost/json/error.hpp>
#include <boost/json/string.hpp>

#include "JsonText.h"

namespace Tavrine
{

/// What JsonShape::Fault says of a parser that ended in this way.
/// @param used  bytes of `size` that it took.
std::string ParseFault(boost::json::error_code ec, std::size_t used, std::size_t size);

/// Takes the events of a boost::json::basic_parser with JsonOptions and refuses what is beyond the limits: counts and
/// forgets. Each value ends in one call of Value(). One that keeps something hides the events that it needs, and calls
/// those of this class from them.
class ShapeHandler
{
  public:
    static constexpr std::size_t max_object_size = MaxJsonValues;
    static constexpr std::size_t max_array_size = MaxJsonValues;
    static constexpr std::size_t max_key_size = boost::json::string::max_size();
    static constexpr std::size_t max_string_size = boost::json::string::max_size();

    bool on_document_begin(boost::json::error_code&) { return true; }
    bool on_document_end(boost::json::error_code&) { return true; }
    bool on_object_begin(boost::json::error_code&)
    {
        m_HasError = m_HasError || (m_Depth == 1 && m_InObject && m_Key == "error");
        m_InObject = m_Depth == 0 ? true : m_InObject;
        ++m_Depth;
        m_Key.clear();
        return true;
    }
    bool on_object_end(std::size_t, boost::json::error_code& ec) { return Leave(ec); }
    bool on_array_begin(boost::json::error_code&)
    {
        ++m_Depth;
        m_Key.clear();
        return true;
    }
    bool on_array_end(std::size_t, boost::json::error_code& ec) { return Leave(ec); }
    bool on_key_part(boost::json::string_view part, std::size_t, boost::json::error_code&)
    {
        return AddKey(part, false);
    }
    bool on_key(boost::json::string_view part, std::size_t, boost::json::error_code&) { return AddKey(part, true); }
    bool on_string_part(boost::json::string_view, std::size_t, boost::json::error_code&) { return true; }
    bool on_string(boost::json::string_view, std::size_t, boost::json::error_code& ec) { return Value(ec); }
    bool on_number_part(boost::json::string_view, boost::json::error_code&) { return true; }
    bool on_int64(std::int64_t, boost::json::string_view, boost::json::error_code& ec) { return Value(ec); }
    bool on_uint64(std::uint64_t, boost::json::string_view, boost::json::error_code& ec) { return Value(ec); }
    bool on_double(double number, boost::json::string_view, boost::json::error_code& ec)
    {
        if (!std::isfinite(number))
        {
            ec = boost::json::error::exponent_overflow; // it would be written as "Infinity", which is no JSON
            return false;
        }
        return Value(ec);
    }
    bool on_bool(bool, boost::json::error_code& ec) { return Value(ec); }
    bool on_null(boost::json::error_code& ec) { return Value(ec); }
    bool on_comment_part(boost::json::string_view, boost::json::error_code&) { return true; }
    bool on_comment(boost::json::string_view, boost::json::error_code&) { return true; }

    bool HasError() const { return m_HasError; }

  protected:
    /// Arrays and objects that are open.
    std::size_t Depth() const { return m_Depth; }

  private:
    bool Leave(boost::json::error_code& ec)
    {
        --m_Depth;
        return Value(ec);
    }
    bool Value(boost::json::error_code& ec)
    {
        if (++m_Values > MaxJsonValues)
        {
            ec = boost::json::error::array_too_large;
            return false;
        }
        return true;
    }
    bool AddKey(boost::json::string_view part, bool last)
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

/// Reads the whole text.
/// @return why it is refused; empty for a document within the limits.
template <class Parser> std::string ParseShape(Parser& parser, std::string_view text)
{
    boost::json::error_code ec;
    const std::size_t used = parser.write_some(false, text.data(), text.size(), ec);
    return ParseFault(ec, used, text.size());
}

} // namespace Tavrine
