#include "SavedSettings.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <set>
#include <utility>
#include <vector>

#include <boost/json/basic_parser_impl.hpp>
#include <fmt/format.h>

#include "BiosSettingManager.h"
#include "InputFile.h"
#include "JsonOutput.h"
#include "TextOutput.h"

namespace json = boost::json;

namespace Tavrine::Tool
{
namespace
{

constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";
constexpr std::size_t LongestShownName = 80;
constexpr std::size_t DeepestDocument = 16;

std::string SavedHeader::*FindHeaderMember(std::string_view name)
{
    const auto member = std::find_if(SavedHeaderMembers.begin(), SavedHeaderMembers.end(),
                                     [&](const SavedHeaderMember& one) { return one.Name == name; });
    return member != SavedHeaderMembers.end() ? member->Text : nullptr;
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
            return text == SavedFormat ||
                   Refuse(failure, "its format is " + Quoted(text) + ", not " + Quoted(SavedFormat));
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

    /// Whether it is a file that save has begun to write, without its end.
    bool IsCut() const { return m_HasFormat && !m_HasEnd; }

  private:
    /// Lines that are no part of a header are anyone's own remarks.
    std::string TakeComment(std::string_view line)
    {
        m_HasEnd = m_HasEnd || line == SavedEnd;
        const std::size_t colon = line.find(": ");
        const std::string_view member =
            colon != std::string_view::npos && line.starts_with("# ") ? line.substr(2, colon - 2) : std::string_view();
        const std::string_view text = member.empty() ? member : line.substr(colon + 2);
        if (member == SavedFormat)
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
    bool m_HasEnd = false;
};

std::string ParseLines(std::string_view text, SavedSettings& saved)
{
    LineReader reader(saved);
    std::size_t number = 0;
    while (!text.empty())
    {
        ++number;
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
    return reader.IsCut() ? fmt::format("line {}: the file was cut off here, since no \"{}\" follows", number, SavedEnd)
           : saved.Settings.empty() ? "it has no settings"
                                    : "";
}

} // namespace

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

std::optional<Failure> ReadSavedSettings(const std::string& path, SavedSettings& saved)
{
    FileContent file;
    if (std::optional<Failure> failure = LoadFile(path, LargestSavedSettings, file))
    {
        return failure;
    }
    if (const std::string error = ParseSavedSettings(file.Text, saved); !error.empty())
    {
        return Failure{CodeParameter, InputNameFirst(path) + " holds no saved settings: " + error};
    }
    return std::nullopt;
}

bool AsksForDefaults(std::string_view bareName, std::string_view value)
{
    return bareName == PostLoadSetting && value == PostLoadValue;
}

std::string TakeBareSettings(const SavedSettings& saved, const Prefixes& prefixes, SettingStringMap& bare,
                             bool legacyNames)
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
        stripped = CurrentName(stripped, legacyNames);
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
