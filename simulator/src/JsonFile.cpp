#include "JsonFile.h"

#include "SystemMessage.h"

#include <algorithm>
#include <boost/json/parser.hpp>
#include <cerrno>
#include <fmt/format.h>
#include <fstream>
#include <system_error>

namespace bmcsim
{
namespace
{

namespace json = boost::json;

/// @param consumed  how far the text was understood.
std::optional<json::value> Parse(std::string_view text, std::size_t depth, std::size_t& consumed, std::string& reason)
{
    json::parse_options options;
    options.max_depth = depth;
    json::parser parser({}, options);
    boost::system::error_code code;
    consumed = parser.write_some(text.data(), text.size(), code);
    const auto rest = text.substr(std::min(consumed, text.size()));
    if (!code && rest.find_first_not_of(" \t\r\n") != std::string_view::npos)
    {
        code = json::error::extra_data;
    }
    if (code)
    {
        reason = code.message();
        return std::nullopt;
    }
    return parser.release();
}

} // namespace

std::optional<std::string> ReadTextFile(const std::filesystem::path& path, std::string& error, std::size_t limit)
{
    std::error_code code;
    const std::filesystem::file_type type = std::filesystem::status(path, code).type();
    if (type != std::filesystem::file_type::regular && type != std::filesystem::file_type::not_found &&
        type != std::filesystem::file_type::none)
    {
        // A pipe could hold the program up for ever.
        const bool folder = type == std::filesystem::file_type::directory;
        error = fmt::format("cannot read '{}': it is {}", path.string(), folder ? "a directory" : "no plain file");
        return std::nullopt;
    }
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    if (!file)
    {
        error = fmt::format("cannot read '{}': {}", path.string(), SystemMessage(errno));
        return std::nullopt;
    }
    std::string text;
    std::string block(std::size_t{64} * 1024, '\0');
    while (file.read(block.data(), static_cast<std::streamsize>(block.size())) || file.gcount() > 0)
    {
        text.append(block, 0, static_cast<std::size_t>(file.gcount()));
        if (text.size() > limit)
        {
            error = fmt::format("'{}' is larger than {} bytes", path.string(), limit);
            return std::nullopt;
        }
    }
    if (file.bad())
    {
        error = fmt::format("cannot read '{}': {}", path.string(), SystemMessage(errno));
        return std::nullopt;
    }
    return text;
}

std::optional<json::object> ParseObject(std::string_view text, const std::string& name, std::string& error)
{
    constexpr std::size_t depth = 64;
    std::size_t consumed = 0;
    std::string reason;
    auto value = Parse(text, depth, consumed, reason);
    if (!value)
    {
        const auto understood = text.substr(0, consumed);
        error = fmt::format("'{}' is no JSON: line {}: {}", name,
                            std::count(understood.begin(), understood.end(), '\n') + 1, reason);
        return std::nullopt;
    }
    if (!value->is_object())
    {
        error = fmt::format("'{}' holds no JSON object", name);
        return std::nullopt;
    }
    return std::move(value->get_object());
}

std::optional<json::value> ParseBody(std::string_view text)
{
    constexpr std::size_t depth = 32;
    std::size_t consumed = 0;
    std::string reason;
    return Parse(text, depth, consumed, reason);
}

const json::object* FindObject(const json::object& object, std::string_view key)
{
    const json::value* value = object.if_contains(key);
    return value != nullptr ? value->if_object() : nullptr;
}

const json::array* FindArray(const json::object& object, std::string_view key)
{
    const json::value* value = object.if_contains(key);
    return value != nullptr ? value->if_array() : nullptr;
}

std::string FindText(const json::object& object, std::string_view key)
{
    const json::value* value = object.if_contains(key);
    const json::string* text = value != nullptr ? value->if_string() : nullptr;
    return text != nullptr ? std::string(text->data(), text->size()) : std::string();
}

} // namespace bmcsim
