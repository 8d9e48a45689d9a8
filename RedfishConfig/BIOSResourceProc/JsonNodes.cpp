#include "JsonNodes.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <istream>
#include <utility>

#include <boost/json/basic_parser_impl.hpp>
#include <boost/json/monotonic_resource.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include "StringNodeReader.h"
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

} // namespace

std::optional<boost::json::value> ParseNodes(const std::string& text)
{
    boost::json::error_code error;
    // Read and never changed, so its memory may grow alone and go at one stroke.
    boost::json::value parsed =
        boost::json::parse(text, error, boost::json::make_shared_resource<boost::json::monotonic_resource>());
    return error ? std::nullopt : std::optional(std::move(parsed));
}

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

    const std::optional<boost::json::value> root = ParseNodes(content);
    const boost::json::value* node = root ? FindNode(*root, {key}) : nullptr;
    const std::string text = node != nullptr ? boost::json::serialize(*node) : std::string();
    // A number that no double holds is read as infinite, which JSON has no text for.
    if (!ParseNodes(text))
    {
        TAVRINE_LOG(LogFailure) << "Failed to get the schema from debug config file";
        return boost::json::serialize(boost::json::value(nullptr));
    }
    return text;
}

} // namespace Tavrine
