#include "JsonNodes.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <exception>
#include <fstream>
#include <vector>

#include <boost/json/basic_parser_impl.hpp>
#include <boost/json/monotonic_resource.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include "Trace.h"

namespace Tavrine
{

namespace
{

/// One token of a JSON pointer (RFC 6901).
std::string EscapeToken(std::string_view token)
{
    std::string escaped;
    for (const char character : token)
    {
        switch (character)
        {
        case '~':
            escaped += "~0";
            break;
        case '/':
            escaped += "~1";
            break;
        default:
            escaped += character;
        }
    }
    return escaped;
}

/// Not by iterators: these throw where the path is a folder.
std::string ReadUpTo(std::istream& file, std::size_t most)
{
    std::string content;
    std::array<char, 65536> block;
    do
    {
        const std::size_t wanted = std::min(block.size(), most - content.size());
        file.read(block.data(), static_cast<std::streamsize>(wanted));
        content.append(block.data(), static_cast<std::size_t>(file.gcount()));
    } while (file && content.size() < most);
    return content;
}

/// Takes the events of a parser and keeps the text at the end of a path of object keys. Of several members
/// of one name the last one counts.
class StringNodeReader
{
  public:
    static constexpr std::size_t max_object_size = boost::json::object::max_size();
    static constexpr std::size_t max_array_size = boost::json::array::max_size();
    static constexpr std::size_t max_key_size = boost::json::string::max_size();
    static constexpr std::size_t max_string_size = boost::json::string::max_size();

    explicit StringNodeReader(std::initializer_list<std::string_view> path) : m_Path(path) {}

    const std::optional<std::string>& Found() const { return m_Found; }

    // The names and results are those that boost::json::basic_parser asks for.
    using Error = boost::json::error_code;
    using View = boost::json::string_view;
    bool on_document_begin(Error&) { return true; }
    bool on_document_end(Error&) { return true; }
    bool on_object_begin(Error&)
    {
        const bool root = m_Depth == 0;
        if (root || (BeginValue() && m_Depth < m_Path.size()))
        {
            m_Followed = m_Depth + 1;
            m_AtKey = false;
        }
        ++m_Depth;
        return true;
    }
    bool on_object_end(std::size_t, Error&) { return End(); }
    bool on_array_begin(Error&)
    {
        BeginValue();
        ++m_Depth;
        return true;
    }
    bool on_array_end(std::size_t, Error&) { return End(); }
    bool on_key_part(View part, std::size_t, Error&)
    {
        m_Text.append(part.data(), part.size());
        return true;
    }
    bool on_key(View part, std::size_t, Error&)
    {
        if (m_Depth == m_Followed)
        {
            m_AtKey = m_Text.append(part.data(), part.size()) == m_Path[m_Depth - 1];
        }
        m_Text.clear();
        return true;
    }
    bool on_string_part(View part, std::size_t, Error&)
    {
        if (AtEnd())
        {
            m_Text.append(part.data(), part.size());
        }
        return true;
    }
    bool on_string(View part, std::size_t, Error&)
    {
        const bool wanted = AtEnd();
        BeginValue();
        if (wanted)
        {
            m_Found = m_Text.append(part.data(), part.size());
            m_Text.clear();
        }
        return true;
    }
    bool on_int64(std::int64_t, View, Error&) { return Scalar(); }
    bool on_uint64(std::uint64_t, View, Error&) { return Scalar(); }
    bool on_double(double, View, Error&) { return Scalar(); }
    bool on_bool(bool, Error&) { return Scalar(); }
    bool on_null(Error&) { return Scalar(); }
    // GCOV_EXCL_START
    // Asked for, and called for numbers that come in parts and for comments alone; neither comes.
    bool on_number_part(View, Error&) { return true; }
    bool on_comment_part(View, Error&) { return true; }
    bool on_comment(View, Error&) { return true; }
    // GCOV_EXCL_STOP

  private:
    /// The value that comes is that of the path's next key.
    bool AtNext() const { return m_Depth != 0 && m_Depth == m_Followed && m_AtKey; }
    bool AtEnd() const { return AtNext() && m_Depth == m_Path.size(); }

    /// @return AtNext.
    bool BeginValue()
    {
        if (!AtNext())
        {
            return false;
        }
        m_Found.reset();
        return true;
    }
    bool Scalar()
    {
        BeginValue();
        return true;
    }
    bool End()
    {
        --m_Depth;
        m_Followed = std::min(m_Followed, m_Depth);
        m_AtKey = false;
        return true;
    }

    std::vector<std::string_view> m_Path;
    std::optional<std::string> m_Found;
    /// A key or the text wanted, while it comes in parts.
    std::string m_Text;
    std::size_t m_Depth = 0;
    /// So many objects that are open now lie on the path, from the root on.
    std::size_t m_Followed = 0;
    bool m_AtKey = false;
};

} // namespace

std::optional<boost::json::value> ParseJson(const std::string& text)
try
{
    boost::json::error_code error;
    // Read and never changed, so its memory may grow alone and go at one stroke.
    boost::json::value parsed =
        boost::json::parse(text, error, boost::json::make_shared_resource<boost::json::monotonic_resource>());
    return error ? std::nullopt : std::optional(std::move(parsed));
}
// GCOV_EXCL_START
// Memory alone can do this.
catch (const std::exception&)
{
    return std::nullopt;
}
// GCOV_EXCL_STOP

const boost::json::value* FindNode(const boost::json::value& root, std::initializer_list<std::string_view> path)
{
    std::string pointer;
    for (const std::string_view token : path)
    {
        pointer += '/';
        pointer += EscapeToken(token);
    }
    boost::json::error_code error;
    return root.find_pointer(pointer, error);
}

bool ReadStringNode(const boost::json::value& root, std::initializer_list<std::string_view> path, std::string& text)
{
    const boost::json::value* node = FindNode(root, path);
    const boost::json::string* found = node != nullptr ? node->if_string() : nullptr;
    if (found == nullptr)
    {
        return false;
    }
    text.assign(found->data(), found->size());
    return true;
}

bool ReadStringNode(const std::string& document, std::initializer_list<std::string_view> path, std::string& text)
try
{
    // A resource has thousands of values, of which this is one, so that no document is made.
    boost::json::basic_parser<StringNodeReader> parser(boost::json::parse_options(), path);
    boost::json::error_code error;
    const std::size_t read = parser.write_some(false, document.data(), document.size(), error);
    if (error || read < document.size() || !parser.handler().Found())
    {
        return false;
    }
    text = *parser.handler().Found();
    return true;
}
// GCOV_EXCL_START
// Memory alone can do this.
catch (const std::exception&)
{
    return false;
}
// GCOV_EXCL_STOP

std::string ReadDebugConfigNode(const std::string& path, std::string_view key)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
    {
        TAVRINE_LOG(LogFailure) << "The specified debug configfile doesn't exist.";
    }
    std::string content = ReadUpTo(file, MaxDebugConfigBytes + 1);
    if (content.size() > MaxDebugConfigBytes)
    {
        TAVRINE_LOG(LogFailure) << "The debug configfile is larger than " << MaxDebugConfigBytes << " bytes.";
        content.clear();
    }

    const std::optional<boost::json::value> root = ParseJson(content);
    const boost::json::value* node = root ? FindNode(*root, {key}) : nullptr;
    const std::string text = node != nullptr ? boost::json::serialize(*node) : std::string();
    // A number that no double holds is read as infinite, which JSON has no text for.
    if (!ParseJson(text))
    {
        TAVRINE_LOG(LogFailure) << "Failed to get the schema from debug config file";
        return boost::json::serialize(boost::json::value(nullptr));
    }
    return text;
}

} // namespace Tavrine
