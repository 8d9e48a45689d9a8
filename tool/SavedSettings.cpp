#include "SavedSettings.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <set>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include <boost/algorithm/string/case_conv.hpp>
#include <boost/json/basic_parser_impl.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>
#include <fmt/format.h>

#include "JsonOutput.h"
#include "Signals.h"
#include "TextOutput.h"

namespace json = boost::json;

namespace Tavrine::Tool
{
namespace
{

constexpr std::string_view FormatName = "tavrine-settings";
constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";
constexpr std::size_t LongestShownName = 80;
constexpr std::size_t DeepestDocument = 16;

struct HeaderMember
{
    const char* Name;
    std::string SavedHeader::*Text;
};

constexpr std::array HeaderMembers = {
    HeaderMember{"time", &SavedHeader::Time},
    HeaderMember{"bmc", &SavedHeader::Bmc},
    HeaderMember{"manufacturer", &SavedHeader::Manufacturer},
    HeaderMember{"model", &SavedHeader::Model},
    HeaderMember{"serial", &SavedHeader::SerialNumber},
    HeaderMember{"biosVersion", &SavedHeader::BiosVersion},
    HeaderMember{"registry", &SavedHeader::Registry},
    HeaderMember{"prefix", &SavedHeader::Prefix},
};

std::string SavedHeader::*FindHeaderMember(std::string_view name)
{
    const auto member = std::find_if(HeaderMembers.begin(), HeaderMembers.end(),
                                     [&](const HeaderMember& one) { return one.Name == name; });
    return member != HeaderMembers.end() ? member->Text : nullptr;
}

std::string Quoted(std::string_view name)
{
    return '"' + std::string(name.substr(0, LongestShownName)) + (name.size() > LongestShownName ? "…" : "") + '"';
}

std::string Twice(const std::string& name) { return "the name " + Quoted(name) + " occurs twice"; }

std::string UnknownVersion(std::string_view version)
{
    return fmt::format("its format version is {}, and this program knows {}", version, SavedVersion);
}

/// Takes a document as it is parsed. Boost.JSON's own values keep one of several members
/// with the same name and say nothing.
class DocumentReader
{
  public:
    static constexpr std::size_t max_object_size = std::size_t(-1);
    static constexpr std::size_t max_array_size = std::size_t(-1);
    static constexpr std::size_t max_key_size = std::size_t(-1);
    static constexpr std::size_t max_string_size = std::size_t(-1);

    explicit DocumentReader(SavedSettings& saved) : m_Saved(saved) {}

    const std::string& Fault() const { return m_Fault; }
    /// The entry that was read last.
    const std::string& Entry() const { return m_Entry; }
    bool HasSettings() const { return m_HasSettings; }

    bool on_document_begin(json::error_code&) { return true; }
    bool on_document_end(json::error_code&) { return true; }
    bool on_object_begin(json::error_code& failure)
    {
        if (IsHeader() || m_InSettings)
        {
            return WrongKind(failure);
        }
        m_HasSettings = m_HasSettings || IsSettings();
        m_InSettings = IsSettings();
        ++m_Depth;
        return true;
    }
    bool on_object_end(std::size_t, json::error_code&)
    {
        m_InSettings = false;
        --m_Depth;
        return true;
    }
    bool on_array_begin(json::error_code& failure)
    {
        if (m_Depth == 0)
        {
            return Refuse(failure, "it is no JSON object");
        }
        if (IsHeader() || IsSettings())
        {
            return WrongKind(failure);
        }
        ++m_Depth;
        return true;
    }
    bool on_array_end(std::size_t, json::error_code&)
    {
        --m_Depth;
        return true;
    }
    bool on_key_part(json::string_view part, std::size_t, json::error_code&)
    {
        m_Key.append(part.data(), part.size());
        return true;
    }
    bool on_key(json::string_view part, std::size_t, json::error_code& failure)
    {
        m_Key.append(part.data(), part.size());
        const std::string key = std::exchange(m_Key, {});
        if (m_Depth == 1)
        {
            m_Member = m_Entry = key;
            return m_Members.insert(key).second || Refuse(failure, Twice(key));
        }
        if (m_Depth == 2 && m_InSettings)
        {
            m_Entry = key;
            const std::size_t before = m_Names.size();
            m_Names.insert(m_Names.end(), key); // where it belongs in a file that save has written
            return m_Names.size() != before || Refuse(failure, Twice(key));
        }
        return true;
    }
    bool on_string_part(json::string_view part, std::size_t, json::error_code&)
    {
        m_Text.append(part.data(), part.size());
        return true;
    }
    bool on_string(json::string_view part, std::size_t, json::error_code& failure)
    {
        m_Text.append(part.data(), part.size());
        const std::string text = std::exchange(m_Text, {});
        if (m_Depth == 1 && m_Member == "format")
        {
            return text == FormatName ||
                   Refuse(failure, "its format is " + Quoted(text) + ", not " + Quoted(FormatName));
        }
        if (m_Depth == 1 && FindHeaderMember(m_Member) != nullptr)
        {
            m_Saved.Header.*FindHeaderMember(m_Member) = text;
            return true;
        }
        return Take(text, failure);
    }
    bool on_number_part(json::string_view, json::error_code&) { return true; }
    bool on_int64(std::int64_t number, json::string_view, json::error_code& failure)
    {
        return TakeNumber(std::to_string(number), failure);
    }
    bool on_uint64(std::uint64_t number, json::string_view, json::error_code& failure)
    {
        return TakeNumber(std::to_string(number), failure);
    }
    bool on_double(double, json::string_view, json::error_code& failure)
    {
        return IsSettings() || IsHeader() ? WrongKind(failure) : true;
    }
    bool on_bool(bool flag, json::error_code& failure) { return Take(flag ? "true" : "false", failure); }
    bool on_null(json::error_code&) { return true; }
    bool on_comment_part(json::string_view, json::error_code&) { return true; }
    bool on_comment(json::string_view, json::error_code&) { return true; }

  private:
    bool IsSettings() const { return m_InSettings || (m_Depth == 1 && m_Member == "settings"); }
    bool IsHeader() const
    {
        return m_Depth == 1 && (m_Member == "format" || m_Member == "version" || FindHeaderMember(m_Member) != nullptr);
    }

    bool Refuse(json::error_code& failure, std::string fault)
    {
        m_Fault = std::move(fault);
        failure = make_error_code(boost::system::errc::invalid_argument);
        return false;
    }
    bool WrongKind(json::error_code& failure)
    {
        return Refuse(failure, IsHeader() || !m_InSettings
                                   ? "the member " + Quoted(m_Member) + " is of the wrong kind"
                                   : "the value of " + Quoted(m_Entry) + " is no text, whole number or boolean");
    }
    bool TakeNumber(const std::string& number, json::error_code& failure)
    {
        if (m_Depth == 1 && m_Member == "version")
        {
            return number == std::to_string(SavedVersion) || Refuse(failure, UnknownVersion(number));
        }
        return Take(number, failure);
    }
    bool Take(const std::string& text, json::error_code& failure)
    {
        if (m_Depth == 0)
        {
            return Refuse(failure, "it is no JSON object");
        }
        if (m_Depth == 1 && (IsSettings() || IsHeader()))
        {
            return WrongKind(failure);
        }
        if (m_Depth == 2 && m_InSettings)
        {
            m_Saved.Settings.emplace_hint(m_Saved.Settings.end(), m_Entry, text);
        }
        return true;
    }

    SavedSettings& m_Saved;
    std::size_t m_Depth = 0;
    std::string m_Key;
    std::string m_Text;
    /// The member of the document that is being read.
    std::string m_Member;
    std::string m_Entry;
    bool m_InSettings = false;
    bool m_HasSettings = false;
    std::set<std::string> m_Members;
    std::set<std::string> m_Names;
    std::string m_Fault;
};

std::string ParseDocument(std::string_view text, SavedSettings& saved)
{
    json::parse_options options;
    options.max_depth = DeepestDocument;
    json::basic_parser<DocumentReader> parser(options, saved);
    json::error_code failure;
    const std::size_t read = parser.write_some(false, text.data(), text.size(), failure);
    if (!failure && text.find_first_not_of(" \t\r\n", read) != std::string_view::npos)
    {
        failure = json::error::extra_data;
    }
    const DocumentReader& reader = parser.handler();
    if (failure)
    {
        const auto line = std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(read), '\n') + 1;
        const std::string place = fmt::format("line {}: ", line);
        return place + (!reader.Fault().empty()
                            ? reader.Fault()
                            : fmt::format("no JSON at byte {}{}: {}", read + 1,
                                          reader.Entry().empty() ? "" : ", at the entry " + Quoted(reader.Entry()),
                                          failure.message()));
    }
    return reader.HasSettings() ? "" : "it has no object \"settings\"";
}

class LineReader
{
  public:
    explicit LineReader(SavedSettings& saved) : m_Saved(saved) {}

    std::string Take(std::string_view line)
    {
        if (line.empty())
        {
            return {};
        }
        if (line.front() == '#')
        {
            return TakeComment(line);
        }
        const std::size_t equals = line.find('=');
        const std::string shown = Quoted(line.substr(0, equals));
        if (equals == std::string_view::npos || equals == 0)
        {
            return "no NAME=VALUE";
        }
        const std::optional<std::string> name = UnescapeText(line.substr(0, equals));
        const std::optional<std::string> value = UnescapeText(line.substr(equals + 1));
        if (!name || !value)
        {
            return R"(a "\" without one of \, n, t, r and xNN behind it, at the entry )" + shown;
        }
        if (ValidUtf8(*name) != *name || ValidUtf8(*value) != *value)
        {
            return "no UTF-8, at the entry " + ValidUtf8(shown);
        }
        return m_Saved.Settings.emplace(*name, *value).second ? std::string() : Twice(*name);
    }

  private:
    /// Lines that are no part of a header are anyone's own remarks.
    std::string TakeComment(std::string_view line)
    {
        const std::size_t colon = line.find(": ");
        const std::string_view member =
            colon != std::string_view::npos && line.starts_with("# ") ? line.substr(2, colon - 2) : std::string_view();
        const std::string_view text = member.empty() ? member : line.substr(colon + 2);
        if (member == FormatName)
        {
            m_HasFormat = true;
            return text == std::to_string(SavedVersion) ? std::string() : UnknownVersion(Quoted(text));
        }
        if (m_HasFormat && FindHeaderMember(member) != nullptr)
        {
            m_Saved.Header.*FindHeaderMember(member) = ValidUtf8(UnescapeText(text).value_or(std::string()));
        }
        return {};
    }

    SavedSettings& m_Saved;
    bool m_HasFormat = false;
};

std::string ParseLines(std::string_view text, SavedSettings& saved)
{
    LineReader reader(saved);
    for (std::size_t number = 1; !text.empty(); ++number)
    {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        if (line.ends_with('\r'))
        {
            line.remove_suffix(1);
        }
        if (const std::string error = reader.Take(line); !error.empty())
        {
            return fmt::format("line {}: {}", number, error);
        }
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return saved.Settings.empty() ? "it has no settings" : "";
}

std::string ReadDescriptor(int descriptor, std::size_t most, FileContent& content)
{
    struct stat kind = {};
    const bool isKnown = fstat(descriptor, &kind) == 0;
    if (isKnown && S_ISDIR(kind.st_mode))
    {
        return std::strerror(EISDIR);
    }
    content.IsPlainFile = isKnown && S_ISREG(kind.st_mode);
    std::array<char, 65536> buffer{};
    for (;;)
    {
        if (descriptor == STDIN_FILENO && !WaitForInput(descriptor))
        {
            return StopSignal() != 0 ? "interrupted" : std::strerror(errno);
        }
        const ssize_t count = read(descriptor, buffer.data(), buffer.size());
        if (count < 0 && errno != EINTR)
        {
            return std::strerror(errno);
        }
        if (count == 0)
        {
            return {};
        }
        content.Text.append(buffer.data(), count < 0 ? 0 : static_cast<std::size_t>(count));
        if (content.Text.size() > most)
        {
            return fmt::format("it is larger than {} bytes", most);
        }
    }
}

std::string Json(const std::string& text)
{
    const auto isPlain = [](char c) { return c >= ' ' && c < 0x7F && c != '"' && c != '\\'; };
    return std::all_of(text.begin(), text.end(), isPlain) ? '"' + text + '"' // as nearly all names and values are
                                                          : json::serialize(json::value(ValidUtf8(text)));
}

/// A name in front of the "=" of a line.
std::string LineName(const std::string& name)
{
    std::string escaped = EscapeText(name);
    for (std::size_t at = escaped.find('='); at != std::string::npos; at = escaped.find('=', at))
    {
        escaped.replace(at, 1, "\\x3D");
    }
    if (escaped.starts_with('#') || escaped.starts_with('{'))
    {
        escaped.replace(0, 1, fmt::format("\\x{:02X}", static_cast<unsigned int>(escaped.front())));
    }
    return escaped;
}

} // namespace

bool WantsLines(const std::string& path)
{
    const std::string lowered = boost::algorithm::to_lower_copy(path, std::locale::classic());
    return lowered.ends_with(".txt") || lowered.ends_with(".conf");
}

std::string SavedDocument(const SavedSettings& saved)
{
    std::string text = "{\n  \"format\": " + Json(std::string(FormatName)) +
                       ",\n  \"version\": " + std::to_string(SavedVersion) + ",\n";
    for (const HeaderMember& member : HeaderMembers)
    {
        text += fmt::format("  \"{}\": {},\n", member.Name, Json(saved.Header.*member.Text));
    }
    text += "  \"settings\": {";
    const char* separator = "\n";
    for (const auto& [name, value] : saved.Settings)
    {
        text += separator + ("    " + Json(name)) + ": " + Json(value);
        separator = ",\n";
    }
    return text + (saved.Settings.empty() ? "}\n}\n" : "\n  }\n}\n");
}

std::string SavedLines(const SavedSettings& saved)
{
    std::string text = fmt::format("# {}: {}\n", FormatName, SavedVersion);
    for (const HeaderMember& member : HeaderMembers)
    {
        text += fmt::format("# {}: {}\n", member.Name, EscapeText(saved.Header.*member.Text));
    }
    for (const auto& [name, value] : saved.Settings)
    {
        text += LineName(name) + "=" + EscapeText(value) + "\n";
    }
    return text;
}

std::string ParseSavedSettings(std::string_view text, SavedSettings& saved)
{
    if (text.starts_with(ByteOrderMark))
    {
        text.remove_prefix(ByteOrderMark.size());
    }
    const std::size_t start = text.find_first_not_of(" \t\r\n");
    const bool document = start != std::string_view::npos && text[start] == '{';
    return document ? ParseDocument(text, saved) : ParseLines(text, saved);
}

std::string ReadWholeFile(const std::string& path, std::size_t most, FileContent& content)
{
    if (path == "-")
    {
        return ReadDescriptor(STDIN_FILENO, most, content);
    }
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
    {
        return std::strerror(errno);
    }
    std::string error = ReadDescriptor(descriptor, most, content);
    close(descriptor);
    return error;
}

std::optional<Failure> ReadSavedSettings(const std::string& path, SavedSettings& saved)
{
    FileContent file;
    if (const std::string lost = ReadWholeFile(path, LargestSavedSettings, file); !lost.empty())
    {
        return Failure{CodeOpenFile, "Unable to read the file " + path + ": " + lost, {}, {}};
    }
    if (const std::string error = ParseSavedSettings(file.Text, saved); !error.empty())
    {
        return Failure{CodeParameter, "The file " + path + " holds no saved settings: " + error, {}, {}};
    }
    return std::nullopt;
}

std::string TakeBareSettings(const SavedSettings& saved, const Prefixes& prefixes, SettingStringMap& bare)
{
    std::vector<Prefixes> known = {prefixes, {"BIOS", "UEFI"}};
    if (!saved.Header.Prefix.empty())
    {
        known.insert(known.begin() + 1, Prefixes{saved.Header.Prefix, saved.Header.Prefix});
    }
    for (const auto& [name, text] : saved.Settings)
    {
        std::string stripped = name;
        for (auto one = known.begin(); one != known.end() && stripped.size() == name.size(); ++one)
        {
            stripped = BareName(name, *one);
        }
        const std::size_t before = bare.size();
        bare.emplace_hint(bare.end(), stripped, text); // where it belongs in a file that save has written
        if (bare.size() == before)
        {
            return "the setting " + stripped + " stands in it under two names";
        }
    }
    return {};
}

} // namespace Tavrine::Tool
