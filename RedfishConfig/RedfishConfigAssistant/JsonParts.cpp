#include "JsonParts.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include <boost/json/basic_parser_impl.hpp>
#include <boost/json/monotonic_resource.hpp>
#include <boost/json/value_stack.hpp>

#include "JsonText.h"
#include "ShapeHandler.h"

namespace Tavrine
{

namespace
{

namespace json = boost::json;

/// On the parser's stack, in its list or object, and in the table or the spare room of that.
constexpr std::size_t ValueBytes = 3 * sizeof(json::value);

/// Builds a document of the values that are kept, and passes over the others.
class PartsHandler : public ShapeHandler
{
  public:
    explicit PartsHandler(KeepRule rule) : m_Rule(rule)
    {
        // Read and never changed, so its memory may grow alone and go at one stroke.
        m_Values.reset(json::make_shared_resource<json::monotonic_resource>());
    }

    bool on_object_begin(json::error_code& ec)
    {
        Open(true);
        return ShapeHandler::on_object_begin(ec);
    }
    bool on_object_end(std::size_t size, json::error_code& ec)
    {
        if (const auto members = Close())
        {
            m_Values.push_object(*members);
        }
        return ShapeHandler::on_object_end(size, ec);
    }
    bool on_array_begin(json::error_code& ec)
    {
        Open(false);
        return ShapeHandler::on_array_begin(ec);
    }
    bool on_array_end(std::size_t size, json::error_code& ec)
    {
        if (const auto elements = Close())
        {
            m_Values.push_array(*elements);
        }
        return ShapeHandler::on_array_end(size, ec);
    }
    bool on_key_part(json::string_view part, std::size_t size, json::error_code& ec)
    {
        AddToName(part, false);
        return ShapeHandler::on_key_part(part, size, ec);
    }
    bool on_key(json::string_view part, std::size_t size, json::error_code& ec)
    {
        AddToName(part, true);
        return ShapeHandler::on_key(part, size, ec);
    }
    bool on_string_part(json::string_view part, std::size_t size, json::error_code& ec)
    {
        if (KeepOfNext() == Keep::All)
        {
            Append(m_Text, part, m_Left);
        }
        return ShapeHandler::on_string_part(part, size, ec);
    }
    bool on_string(json::string_view part, std::size_t size, json::error_code& ec)
    {
        if (Take(m_Text.size() + part.size()))
        {
            m_Values.push_string(m_Text.append(part.data(), part.size()));
        }
        m_Text.clear();
        return ShapeHandler::on_string(part, size, ec);
    }
    bool on_int64(std::int64_t number, json::string_view text, json::error_code& ec)
    {
        if (Take())
        {
            m_Values.push_int64(number);
        }
        return ShapeHandler::on_int64(number, text, ec);
    }
    bool on_uint64(std::uint64_t number, json::string_view text, json::error_code& ec)
    {
        if (Take())
        {
            m_Values.push_uint64(number);
        }
        return ShapeHandler::on_uint64(number, text, ec);
    }
    bool on_double(double number, json::string_view text, json::error_code& ec)
    {
        if (Take())
        {
            m_Values.push_double(number);
        }
        return ShapeHandler::on_double(number, text, ec);
    }
    bool on_bool(bool flag, json::error_code& ec)
    {
        if (Take())
        {
            m_Values.push_bool(flag);
        }
        return ShapeHandler::on_bool(flag, ec);
    }
    bool on_null(json::error_code& ec)
    {
        if (Take())
        {
            m_Values.push_null();
        }
        return ShapeHandler::on_null(ec);
    }

    JsonParts Release()
    {
        return {m_HasRoot ? std::optional(m_Values.release()) : std::nullopt,
                m_Cut ? "too large to be read whole" : ""};
    }

  private:
    /// An object or array that is kept, and is open.
    struct Holder
    {
        Keep Members = Keep::Nothing;
        bool IsObject = false;
        /// Empty for the document and for an element.
        std::string Name;
        std::size_t Count = 0;
    };

    Keep KeepOfNext() const
    {
        if (m_Skipped > 0 || m_Holders.empty())
        {
            return Keep::Nothing;
        }
        const Holder& holder = m_Holders.back();
        return holder.Members == Keep::All ? Keep::All : m_Rule(holder.Name, m_Name);
    }

    /// What comes in parts is held before it is known to be too large.
    void Append(std::string& begun, json::string_view part, std::size_t most)
    {
        m_Cut = m_Cut || begun.size() + part.size() > most;
        if (!m_Cut)
        {
            begun.append(part.data(), part.size());
        }
    }

    /// Makes room for the value that comes, where it is kept whole.
    bool Take(std::size_t bytes = 0)
    {
        const Keep keep = KeepOfNext();
        if (keep == Keep::Members)
        {
            PlaceNull();
        }
        return keep == Keep::All && Place(bytes);
    }

    /// For a value that has no members: of several of one name the last one counts.
    void PlaceNull()
    {
        if (Place(0))
        {
            m_Values.push_null();
        }
    }

    bool Place(std::size_t bytes)
    {
        const std::size_t cost = ValueBytes + bytes + m_Name.size();
        if (m_Cut || cost > m_Left)
        {
            m_Cut = true;
            return false;
        }
        m_Left -= cost;
        Holder& holder = m_Holders.back();
        if (holder.IsObject)
        {
            m_Values.push_key(m_Name);
        }
        ++holder.Count;
        return true;
    }

    void Open(bool isObject)
    {
        const bool root = m_Holders.empty() && m_Skipped == 0;
        const Keep keep = root ? Keep::Members : KeepOfNext();
        const bool wanted = keep == Keep::All || (keep == Keep::Members && isObject);
        if (keep == Keep::Members && !isObject && !root)
        {
            PlaceNull();
        }
        if (!wanted || !(root || Place(0)))
        {
            ++m_Skipped;
            return;
        }
        m_HasRoot = true;
        m_Holders.push_back({keep, isObject, std::exchange(m_Name, {}), 0});
    }

    /// @return how many values the kept object or array has that ends; nothing for one that is passed over.
    std::optional<std::size_t> Close()
    {
        if (m_Skipped > 0)
        {
            --m_Skipped;
            return std::nullopt;
        }
        const std::size_t count = m_Holders.back().Count;
        m_Holders.pop_back();
        m_Name.clear();
        return count;
    }

    void AddToName(json::string_view part, bool last)
    {
        if (m_Skipped > 0)
        {
            return;
        }
        if (m_NameEnded)
        {
            m_Name.clear();
        }
        Append(m_Name, part, MaxPartsBytes);
        m_NameEnded = last;
    }

    KeepRule m_Rule;
    json::value_stack m_Values;
    std::vector<Holder> m_Holders;
    /// Objects and arrays that are open and passed over.
    std::size_t m_Skipped = 0;
    std::size_t m_Left = MaxPartsBytes;
    /// Of the member that comes.
    std::string m_Name;
    bool m_NameEnded = true;
    /// A string while it comes in parts.
    std::string m_Text;
    bool m_HasRoot = false;
    bool m_Cut = false;
};

} // namespace

JsonParts ParseParts(std::string_view text, KeepRule rule)
{
    json::basic_parser<PartsHandler> parser(JsonOptions(), rule);
    std::string fault = ParseShape(parser, text);
    if (fault.empty())
    {
        return parser.handler().Release();
    }
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    text.remove_prefix(text.starts_with(byteOrderMark) ? byteOrderMark.size() : 0);
    const std::size_t begin = text.find_first_not_of(" \t\r\n");
    const bool isObject = begin != std::string_view::npos && text[begin] == '{';
    return {std::nullopt, isObject ? std::move(fault) : std::string()};
}

} // namespace Tavrine
