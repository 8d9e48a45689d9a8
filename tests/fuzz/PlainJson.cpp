#include "PlainJson.h"

#include <charconv>
#include <cmath>
#include <cstdlib>

#include "Oracle.h"

namespace fuzztest
{

namespace
{

/// Steps down the text; whoever finds a fault answers false, and all end there.
class Reader
{
  public:
    explicit Reader(std::string_view text) : m_Rest(text) {}

    bool Document(PlainJson& value)
    {
        SkipBlanks();
        if (!Value(value, 0))
        {
            return false;
        }
        SkipBlanks();
        return m_Rest.empty();
    }

    bool Doubtful = false;

  private:
    bool Take(std::string_view word)
    {
        const bool there = m_Rest.substr(0, word.size()) == word;
        m_Rest.remove_prefix(there ? word.size() : 0);
        return there;
    }

    void SkipBlanks()
    {
        while (Take(" ") || Take("\t") || Take("\r") || Take("\n"))
        {
        }
    }

    bool Value(PlainJson& value, unsigned int depth)
    {
        using Kind = PlainJson::Kind;
        if (Take("null"))
        {
            return true;
        }
        if (Take("true") || Take("false"))
        {
            value.Is = Kind::Boolean;
            value.Flag = *(m_Rest.data() - 2) == 'u';
            return true;
        }
        if (Take("\""))
        {
            value.Is = Kind::String;
            return String(value.Text);
        }
        if (Take("["))
        {
            value.Is = Kind::Array;
            return depth < PlainJsonDepth && List("]", [&] { return Value(value.Elements.emplace_back(), depth + 1); });
        }
        if (Take("{"))
        {
            value.Is = Kind::Object;
            return depth < PlainJsonDepth && List("}", [&] { return Pair(value, depth); });
        }
        return Number(value);
    }

    bool Pair(PlainJson& object, unsigned int depth)
    {
        auto& [name, value] = object.Members.emplace_back();
        if (!Take("\"") || !String(name))
        {
            return false;
        }
        SkipBlanks();
        const bool colon = Take(":");
        SkipBlanks();
        return colon && Value(value, depth + 1);
    }

    template <class Element> bool List(std::string_view end, const Element& element)
    {
        SkipBlanks();
        if (Take(end))
        {
            return true;
        }
        do
        {
            SkipBlanks();
            if (!element())
            {
                return false;
            }
            SkipBlanks();
        } while (Take(","));
        return Take(end);
    }

    std::size_t Digits()
    {
        std::size_t count = 0;
        for (; !m_Rest.empty() && m_Rest.front() >= '0' && m_Rest.front() <= '9'; ++count)
        {
            m_Rest.remove_prefix(1);
        }
        return count;
    }

    bool Number(PlainJson& value)
    {
        const std::string_view start = m_Rest;
        Take("-");
        const bool zero = Take("0");
        if (!zero && Digits() == 0)
        {
            return false;
        }
        bool whole = true;
        if (Take("."))
        {
            whole = false;
            if (Digits() == 0)
            {
                return false;
            }
        }
        if (Take("e") || Take("E"))
        {
            whole = false;
            Take("+") || Take("-");
            const std::size_t digits = Digits();
            Doubtful = Doubtful || digits > 2;
            if (digits == 0)
            {
                return false;
            }
        }
        value.Text = start.substr(0, start.size() - m_Rest.size());
        const char* const end = value.Text.data() + value.Text.size();
        // Readers differ over what no double holds.
        Doubtful = Doubtful || std::isinf(std::strtod(value.Text.c_str(), nullptr));
        const auto [stop, fault] = std::from_chars(value.Text.data(), end, value.Whole);
        value.Is = whole && fault == std::errc() && stop == end ? PlainJson::Kind::Integer : PlainJson::Kind::Number;
        return true;
    }

    bool Hex4(unsigned int& unit)
    {
        const std::string_view digits = m_Rest.substr(0, 4);
        const auto [stop, fault] = std::from_chars(digits.data(), digits.data() + digits.size(), unit, 16);
        m_Rest.remove_prefix(digits.size());
        return digits.size() == 4 && fault == std::errc() && stop == digits.data() + 4;
    }

    static void Append(std::string& text, unsigned int point)
    {
        const auto tail = [&](unsigned int shift) { text += static_cast<char>(0x80U | ((point >> shift) & 0x3FU)); };
        if (point < 0x80)
        {
            text += static_cast<char>(point);
        }
        else if (point < 0x800)
        {
            text += static_cast<char>(0xC0U | (point >> 6U));
            tail(0);
        }
        else if (point < 0x10000)
        {
            text += static_cast<char>(0xE0U | (point >> 12U));
            tail(6);
            tail(0);
        }
        else
        {
            text += static_cast<char>(0xF0U | (point >> 18U));
            tail(12);
            tail(6);
            tail(0);
        }
    }

    bool CodePoint(std::string& text)
    {
        unsigned int point = 0;
        if (!Hex4(point) || (point >= 0xDC00 && point <= 0xDFFF))
        {
            return false;
        }
        if (point >= 0xD800 && point <= 0xDBFF)
        {
            unsigned int low = 0;
            if (!Take("\\u") || !Hex4(low) || low < 0xDC00 || low > 0xDFFF)
            {
                return false;
            }
            point = 0x10000 + ((point - 0xD800) << 10U) + (low - 0xDC00);
        }
        Append(text, point);
        return true;
    }

    bool Escape(std::string& text)
    {
        constexpr std::string_view letters = "\"\\/bfnrt";
        constexpr std::string_view meant = "\"\\/\b\f\n\r\t";
        if (Take("u"))
        {
            return CodePoint(text);
        }
        const std::size_t place = m_Rest.empty() ? std::string_view::npos : letters.find(m_Rest.front());
        if (place == std::string_view::npos)
        {
            return false;
        }
        m_Rest.remove_prefix(1);
        text += meant[place];
        return true;
    }

    bool String(std::string& text)
    {
        while (!m_Rest.empty() && static_cast<unsigned char>(m_Rest.front()) >= 0x20)
        {
            if (Take("\""))
            {
                return IsUtf8(text);
            }
            if (Take("\\"))
            {
                // A sequence that an escape cuts in two is none.
                if (!IsUtf8(text) || !Escape(text))
                {
                    return false;
                }
                continue;
            }
            text += m_Rest.front();
            m_Rest.remove_prefix(1);
        }
        return false;
    }

    std::string_view m_Rest;
};

} // namespace

const PlainJson* PlainJson::Find(std::string_view name) const
{
    const PlainJson* found = nullptr;
    for (const auto& [key, value] : Members)
    {
        found = key == name ? &value : found;
    }
    return found;
}

std::string PlainJson::TextOf(std::string_view name) const
{
    const PlainJson* const member = Find(name);
    return member != nullptr && member->Is == Kind::String ? member->Text : std::string();
}

const std::vector<PlainJson>* PlainJson::ArrayOf(std::string_view name) const
{
    const PlainJson* const member = Find(name);
    return member != nullptr && member->Is == Kind::Array ? &member->Elements : nullptr;
}

std::optional<PlainJson> ReadPlainJson(std::string_view text, bool& doubtful)
{
    Reader reader(text);
    PlainJson value;
    const bool good = reader.Document(value);
    doubtful = reader.Doubtful;
    return good ? std::optional(std::move(value)) : std::nullopt;
}

std::string QuotedJson(std::string_view text)
{
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string quoted = "\"";
    for (const char c : text)
    {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20)
        {
            quoted.append("\\u00").append(1, digits[byte >> 4U]).append(1, digits[byte & 15U]);
            continue;
        }
        quoted.append(c == '"' || c == '\\' ? "\\" : "").append(1, c);
    }
    return quoted + "\"";
}

std::string WritePlainJson(const PlainJson& value)
{
    std::string text;
    switch (value.Is)
    {
    case PlainJson::Kind::Null:
        return "null";
    case PlainJson::Kind::Boolean:
        return value.Flag ? "true" : "false";
    case PlainJson::Kind::Integer:
        return std::to_string(value.Whole);
    case PlainJson::Kind::Number:
        return value.Text;
    case PlainJson::Kind::String:
        return QuotedJson(value.Text);
    case PlainJson::Kind::Array:
        for (const PlainJson& element : value.Elements)
        {
            text += (text.empty() ? "" : ",") + WritePlainJson(element);
        }
        return "[" + text + "]";
    case PlainJson::Kind::Object:
        for (const auto& [name, member] : value.Members)
        {
            text += (text.empty() ? "" : ",") + QuotedJson(name) + ":" + WritePlainJson(member);
        }
        return "{" + text + "}";
    }
    return text;
}

} // namespace fuzztest
