#include "SavedFile.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>

namespace json = boost::json;

namespace Tavrine::Tool
{
namespace
{

constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";
constexpr std::size_t LongestShownName = 80;

std::string ReadAll(int descriptor, std::string& text)
{
    struct stat kind = {};
    if (fstat(descriptor, &kind) == 0 && S_ISDIR(kind.st_mode))
    {
        return std::strerror(EISDIR);
    }
    std::array<char, 65536> buffer{};
    for (;;)
    {
        const ssize_t count = read(descriptor, buffer.data(), buffer.size());
        if (count < 0 && errno != EINTR)
        {
            return std::strerror(errno);
        }
        if (count == 0)
        {
            return {};
        }
        text.append(buffer.data(), count < 0 ? 0 : static_cast<std::size_t>(count));
        if (text.size() > LargestSavedFile)
        {
            return "is larger than " + std::to_string(LargestSavedFile) + " bytes";
        }
    }
}

std::string ParseDocument(std::string_view text, SavedFile& file)
{
    json::error_code failure;
    const json::value document = json::parse({text.data(), text.size()}, failure);
    if (failure)
    {
        return "no JSON: " + failure.message();
    }
    const json::object* object = document.if_object();
    const json::value* member = object != nullptr ? object->if_contains("settings") : nullptr;
    const json::object* settings = member != nullptr ? member->if_object() : nullptr;
    if (settings == nullptr)
    {
        return "no object \"settings\"";
    }
    for (const auto& [key, value] : *settings)
    {
        const std::string name = key;
        if (value.is_structured())
        {
            return "the value of " + name.substr(0, LongestShownName) + " is no text, number or boolean";
        }
        file.Settings[name] = value;
    }
    return {};
}

std::string ParseLine(std::string_view line, SavedFile& file)
{
    if (line.empty() || line.front() == '#')
    {
        return {};
    }
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos || equals == 0)
    {
        return "no NAME=VALUE";
    }
    const std::optional<std::string> name = UnescapeText(line.substr(0, equals));
    const std::optional<std::string> value = UnescapeText(line.substr(equals + 1));
    if (!name || !value)
    {
        return R"(a "\" without one of \, n, t, r and xNN behind it)";
    }
    file.Settings[*name] = json::value(*value);
    return {};
}

std::string ParseLines(std::string_view text, SavedFile& file)
{
    for (std::size_t number = 1; !text.empty(); ++number)
    {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        if (line.ends_with('\r'))
        {
            line.remove_suffix(1);
        }
        if (const std::string error = ParseLine(line, file); !error.empty())
        {
            return "line " + std::to_string(number) + ": " + error;
        }
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return {};
}

} // namespace

std::optional<std::string> UnescapeText(std::string_view line)
{
    static const std::map<char, char> Letters = {{'\\', '\\'}, {'n', '\n'}, {'t', '\t'}, {'r', '\r'}};
    std::string text;
    for (std::size_t at = line.find('\\'); at != std::string_view::npos; at = line.find('\\'))
    {
        text += line.substr(0, at);
        line.remove_prefix(at + 1);
        const auto letter = line.empty() ? Letters.end() : Letters.find(line.front());
        unsigned char byte = 0;
        if (letter != Letters.end())
        {
            text += letter->second;
            line.remove_prefix(1);
        }
        else if (line.size() >= 3 && line.front() == 'x' &&
                 std::from_chars(line.data() + 1, line.data() + 3, byte, 16).ptr == line.data() + 3)
        {
            text += static_cast<char>(byte);
            line.remove_prefix(3);
        }
        else
        {
            return std::nullopt;
        }
    }
    return text.append(line);
}

std::string ParseSavedFile(std::string_view text, SavedFile& file)
{
    if (text.starts_with(ByteOrderMark))
    {
        text.remove_prefix(ByteOrderMark.size());
    }
    const std::size_t start = text.find_first_not_of(" \t\r\n");
    const bool document = start != std::string_view::npos && text[start] == '{';
    return document ? ParseDocument(text, file) : ParseLines(text, file);
}

std::optional<Failure> ReadSavedFile(const std::string& path, SavedFile& file)
{
    std::string text;
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const std::string lost = descriptor < 0 ? std::strerror(errno) : ReadAll(descriptor, text);
    if (descriptor >= 0)
    {
        close(descriptor);
    }
    if (!lost.empty())
    {
        return Failure{CodeOpenFile, "Unable to read the file " + path + ": " + lost, {}, {}};
    }
    if (const std::string error = ParseSavedFile(text, file); !error.empty())
    {
        return Failure{CodeParameter, "The file " + path + " holds no saved settings: " + error, {}, {}};
    }
    return std::nullopt;
}

} // namespace Tavrine::Tool
