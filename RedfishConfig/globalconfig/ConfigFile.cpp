#include "ConfigFile.h"

#include <cerrno>
#include <optional>
#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <toml++/toml.h>
#include <unistd.h>

namespace Tavrine::ConfigFile
{

namespace
{

std::string Variable(const Environment& environment, const char* name)
{
    const char* value = environment(name);
    return value != nullptr ? value : "";
}

// Control characters of the file come back in the parser's messages.
std::string OnOneLine(std::string_view text)
{
    std::string line(text);
    for (char& character : line)
    {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < 0x20 || byte == 0x7F)
        {
            character = ' ';
        }
    }
    return line;
}

std::string Cause(const std::string& path, int error)
{
    return OnOneLine(path + ": " + std::generic_category().message(error));
}

constexpr std::size_t BlockSize = 16384;

// Reads a block over the limit at most.
int ReadAll(int file, std::string& text)
{
    char block[BlockSize];
    while (text.size() <= MaxSize)
    {
        const ssize_t count = ::read(file, block, sizeof block);
        if (count == 0)
        {
            return 0;
        }
        if (count < 0 && errno != EINTR)
        {
            return errno;
        }
        if (count > 0)
        {
            text.append(block, static_cast<std::size_t>(count));
        }
    }
    return 0;
}

int ReadFile(const std::string& path, std::string& text)
{
    text.reserve(MaxSize + BlockSize); // nothing throws while the file is open
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0)
    {
        return errno;
    }
    const int failure = ReadAll(file, text);
    ::close(file);
    return failure;
}

std::optional<std::string> ScalarText(const toml::node& node)
{
    if (const auto* text = node.as_string())
    {
        return text->get();
    }
    if (const auto* number = node.as_integer())
    {
        return std::to_string(number->get());
    }
    if (const auto* flag = node.as_boolean())
    {
        return flag->get() ? "true" : "false";
    }
    if (const auto* number = node.as_floating_point())
    {
        std::ostringstream stream;
        stream << *number;
        return std::move(stream).str();
    }
    return std::nullopt;
}

std::optional<std::string> ArrayText(const toml::array& array)
{
    std::string joined;
    const char* separator = "";
    for (const toml::node& element : array)
    {
        const auto text = ScalarText(element);
        if (!text)
        {
            return std::nullopt;
        }
        joined += separator + *text;
        separator = ",";
    }
    return joined;
}

void AddTable(const std::string& name, const toml::table& table, Content& content)
{
    std::map<std::string, std::string>& members = content.Tables[name];
    for (const auto& [key, node] : table)
    {
        if (const auto* text = node.as_string())
        {
            members.emplace(key.str(), text->get());
        }
        else
        {
            content.NoTexts.emplace(name + "." + std::string(key.str()), key.source().begin.line);
        }
    }
}

Content FromTable(const toml::table& root)
{
    Content content;
    for (const auto& [key, node] : root)
    {
        const std::string name(key.str());
        content.Lines.emplace(name, key.source().begin.line);
        const auto* const array = node.as_array();
        if (const auto* table = node.as_table())
        {
            AddTable(name, *table, content);
        }
        else if (array != nullptr && array->empty())
        {
            content.EmptyArrays.insert(name); // no item: as an empty text it would read as one empty word
        }
        else if (const auto text = array != nullptr ? ArrayText(*array) : ScalarText(node))
        {
            content.Items.emplace(name, *text);
        }
    }
    return content;
}

Content Failure(std::string error)
{
    Content content;
    content.Error = std::move(error);
    return content;
}

Content Parse(const std::string& path, const std::string& text)
{
    if (text.size() > MaxSize)
    {
        return Failure(OnOneLine(path) + ": larger than " + std::to_string(MaxSize) + " bytes");
    }
    try
    {
        Content content = FromTable(toml::parse(text, path));
        content.Path = path;
        return content;
    }
    catch (const toml::parse_error& failure)
    {
        const auto& begin = failure.source().begin;
        return Failure(OnOneLine(path) + ": line " + std::to_string(begin.line) + ", column " +
                       std::to_string(begin.column) + ": " + OnOneLine(failure.description()));
    }
}

} // namespace

std::vector<Candidate> Candidates(const Environment& environment)
{
    const std::string named = Variable(environment, "TAVRINE_CONFIG");
    if (!named.empty())
    {
        return {{named, true}};
    }
    std::vector<Candidate> candidates;
    const std::string folder = Variable(environment, "XDG_CONFIG_HOME");
    const std::string home = Variable(environment, "HOME");
    // The XDG base directory rules: a relative path counts as unset.
    if (folder.starts_with('/'))
    {
        candidates.push_back({folder + "/tavrine/config.toml", false});
    }
    else if (!home.empty())
    {
        candidates.push_back({home + "/.config/tavrine/config.toml", false});
    }
    candidates.push_back({"/etc/tavrine/config.toml", false});
    return candidates;
}

Content Load(const std::vector<Candidate>& candidates)
{
    for (const Candidate& candidate : candidates)
    {
        std::string text;
        const int failure = ReadFile(candidate.Path, text);
        if (failure == 0)
        {
            return Parse(candidate.Path, text);
        }
        const bool missing = failure == ENOENT || failure == ENOTDIR;
        if (candidate.Required || !missing)
        {
            return Failure(Cause(candidate.Path, failure));
        }
    }
    return {};
}

std::vector<std::string> Unread(const Content& content, const std::set<std::string>& items,
                                const std::set<std::string>& tables)
{
    constexpr std::size_t MostLines = 10;
    std::vector<std::string> lines;
    std::size_t more = 0;
    const auto tell = [&](const std::string& name, std::size_t line, const char* what)
    {
        if (lines.size() == MostLines)
        {
            ++more;
            return;
        }
        lines.push_back(OnOneLine(content.Path + ": line " + std::to_string(line) + ": " + name + what));
    };
    for (const auto& [name, line] : content.Lines)
    {
        const bool isItem = items.contains(name);
        const bool isTable = tables.contains(name);
        const bool itemFits = content.Items.contains(name) || content.EmptyArrays.contains(name);
        const bool read = (isItem && itemFits) || (isTable && content.Tables.contains(name));
        if (!read)
        {
            tell(name, line, isItem || isTable ? " is of another kind than expected and left out" : " is not known");
        }
    }
    for (const auto& [name, line] : content.NoTexts)
    {
        if (tables.contains(name.substr(0, name.find('.'))))
        {
            tell(name, line, " is no text and left out");
        }
    }
    if (more != 0)
    {
        lines.push_back(OnOneLine(content.Path) + ": " + std::to_string(more) + " more like these");
    }
    return lines;
}

} // namespace Tavrine::ConfigFile
