#include "SettingDescription.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <limits>
#include <string_view>
#include <utility>
#include <variant>

#include <boost/json/array.hpp>
#include <boost/json/parse.hpp>
#include <fmt/format.h>

#include "DisplayWidth.h"
#include "JsonOutput.h"
#include "TextOutput.h"
#include "ValueConversions.h"

namespace json = boost::json;

namespace Tavrine::Tool
{
namespace
{

using Info = RedfishConfigSettingInfoStru;

constexpr std::size_t LabelWidth = 18;
constexpr std::size_t LeastTextWidth = 10;
constexpr const char* Nothing = "(none)";

struct FlagWords
{
    bool Info::*Flag;
    /// As the registry and Info::ForcedBy call it.
    const char* Property;
    const char* Member;
    const char* Words;
    /// Whether it keeps the setting from being changed.
    bool Locks;
};
constexpr std::array<FlagWords, 7> Flags = {{
    {&Info::ReadOnly, "ReadOnly", "readOnly", "read-only", true},
    {&Info::GrayOut, "GrayOut", "grayedOut", "grayed out", true},
    {&Info::Hidden, "Hidden", "hidden", "hidden", true},
    {&Info::Immutable, "Immutable", "immutable", "immutable", true},
    {&Info::WriteOnly, "WriteOnly", "writeOnly", "write-only", false},
    {&Info::IsSystemUnique, "IsSystemUniqueProperty", "systemUnique", "unique to this system", false},
    {&Info::IsProtected, "", "protected", "protected", false},
}};

std::vector<std::string> StateLines(const Info& info)
{
    std::vector<std::string> lines;
    bool locked = false;
    for (const FlagWords& flag : Flags)
    {
        if (!(info.*flag.Flag))
        {
            continue;
        }
        locked = locked || flag.Locks;
        const auto cause = info.ForcedBy.find(flag.Property);
        lines.push_back(flag.Words + (cause != info.ForcedBy.end() ? ", because " + cause->second
                                      : flag.Locks                 ? std::string(", as the registry says")
                                                                   : std::string()));
    }
    if (!locked)
    {
        lines.insert(lines.begin(), "can be changed");
    }
    return lines;
}

/// What dependencies force beyond flags that are set.
std::vector<std::string> ForcedLines(const Info& info)
{
    std::vector<std::string> lines;
    for (const auto& [property, condition] : info.ForcedBy)
    {
        const bool told = std::any_of(Flags.begin(), Flags.end(),
                                      [&, &property = property](const FlagWords& flag)
                                      { return property == flag.Property && info.*flag.Flag; });
        if (!told)
        {
            lines.push_back(property + ", because " + condition);
        }
    }
    return lines;
}

std::vector<std::string> SplitLines(std::string_view text)
{
    std::vector<std::string> lines;
    while (!text.empty())
    {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        line.remove_suffix(line.ends_with('\r') ? 1 : 0);
        lines.emplace_back(line);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

/// Writes labels and the texts beside them.
class Screen
{
  public:
    explicit Screen(std::optional<std::size_t> columns)
    {
        if (columns)
        {
            m_TextWidth = std::max(*columns, LabelWidth + LeastTextWidth) - LabelWidth;
        }
    }

    void Title(const std::string& text) { m_Text += EscapeControls(text) + "\n"; }

    /// Nothing is written where there are no lines.
    void Field(std::string_view label, const std::vector<std::string>& lines)
    {
        std::string start = "  " + std::string(label);
        for (const std::string& line : lines)
        {
            for (const std::string& wrapped : WrapText(EscapeControls(line), m_TextWidth))
            {
                start.resize(LabelWidth, ' ');
                m_Text += start + wrapped;
                m_Text.erase(m_Text.find_last_not_of(' ') + 1);
                m_Text += "\n";
                start.clear();
            }
        }
    }

    std::string Text() && { return std::move(m_Text); }

  private:
    std::optional<std::size_t> m_TextWidth;
    std::string m_Text;
};

std::vector<std::string> ValueLines(const ReadValue& value)
{
    if (!value.Unknown.empty())
    {
        return {"(unknown: " + value.Unknown + ")"};
    }
    // As `show` and `set` write it: one line.
    return {value.Text ? EscapeText(*value.Text) : Nothing};
}

/// The library tells in decimal what waits.
ReadValue ShownPending(const SettingDescription& description, bool hexadecimal)
{
    ReadValue pending = description.Pending;
    if (hexadecimal && pending.Text && IsNumSetting(description.Info.CurrentValue))
    {
        pending.Text = DecToHex(*pending.Text);
    }
    return pending;
}

json::value TypedValue(const std::string& text, const OptionalVar& kind, bool hexadecimal)
{
    OptionalVar typed = kind;
    const std::string plain = hexadecimal && IsNumSetting(kind) ? HexToDec(text) : text;
    if (!TransferStringToOptionalVar(typed, plain) || !typed)
    {
        return json::value(ValidUtf8(text));
    }
    const auto* words = std::get_if<std::string>(&*typed);
    return words != nullptr ? json::value(ValidUtf8(*words)) : VariantToJson(*typed);
}

json::value TextOrNull(const std::optional<std::string>& text)
{
    return text && !text->empty() ? json::value(ValidUtf8(*text)) : json::value();
}

json::array NamesArray(const std::vector<std::string>& names)
{
    json::array array;
    for (const std::string& name : names)
    {
        array.emplace_back(ValidUtf8(name));
    }
    return array;
}

json::array ValuesArray(const RedfishConfigSettingTexts& texts)
{
    json::array array;
    for (const auto& [name, displayName] : texts.Values)
    {
        json::object value;
        value["name"] = ValidUtf8(name);
        value["displayName"] = ValidUtf8(displayName);
        array.push_back(std::move(value));
    }
    return array;
}

/// A number that was narrowed to the ends of 64 bits is told as the registry has it, unless a dependency
/// forces it.
json::value ExactNumber(std::int64_t number, const SettingDescription& description, const char* property)
{
    const bool atEnd =
        number == std::numeric_limits<std::int64_t>::min() || number == std::numeric_limits<std::int64_t>::max();
    const auto& numbers = description.Texts->Numbers;
    const auto exact = numbers.find(property);
    return atEnd && exact != numbers.end() && !description.Info.ForcedBy.contains(property) ? json::parse(exact->second)
                                                                                            : json::value(number);
}

void AddLimits(json::object& object, const SettingDescription& description)
{
    struct Limit
    {
        std::optional<std::int64_t> Info::*Number;
        const char* Property;
        const char* Member;
    };
    static constexpr std::array<Limit, 5> Limits = {{{&Info::LowerBound, "LowerBound", "lowerBound"},
                                                     {&Info::UpperBound, "UpperBound", "upperBound"},
                                                     {&Info::ScalarIncrement, "ScalarIncrement", "scalarIncrement"},
                                                     {&Info::MinLength, "MinLength", "minLength"},
                                                     {&Info::MaxLength, "MaxLength", "maxLength"}}};
    for (const Limit& limit : Limits)
    {
        if (const std::optional<std::int64_t>& number = description.Info.*limit.Number)
        {
            object[limit.Member] = ExactNumber(*number, description, limit.Property);
        }
    }
    if (description.Info.ValueExpression)
    {
        object["valueExpression"] = ValidUtf8(*description.Info.ValueExpression);
    }
    if (!description.Texts->Values.empty())
    {
        object["values"] = ValuesArray(*description.Texts);
    }
}

json::value DefaultValue(const SettingDescription& description)
{
    if (!description.Default)
    {
        return nullptr;
    }
    if (description.Info.DefaultValue)
    {
        return TypedValue(*description.Default, description.Info.DefaultValue, false);
    }
    std::uint64_t number = 0;
    const char* end = description.Default->data() + description.Default->size();
    const bool whole = std::from_chars(description.Default->data(), end, number).ptr == end;
    return whole && !description.Default->empty() ? json::value(number) : json::value(ValidUtf8(*description.Default));
}

json::object FlagsAndCauses(const Info& info, json::object object)
{
    for (const FlagWords& flag : Flags)
    {
        object[flag.Member] = info.*flag.Flag;
    }
    json::object causes;
    for (const auto& [property, condition] : info.ForcedBy)
    {
        causes[ValidUtf8(property)] = ValidUtf8(condition);
    }
    object["forcedBy"] = std::move(causes);
    return object;
}

} // namespace

std::string DescriptionText(const SettingDescription& description, std::optional<std::size_t> columns, bool hexadecimal)
{
    Screen screen(columns);
    screen.Title(description.ShownName);
    if (!description.Texts)
    {
        screen.Field("Value", ValueLines(description.InForce));
        screen.Field("Pending value", ValueLines(description.Pending));
        screen.Field("", {"The attribute registry does not describe this setting."});
        return std::move(screen).Text();
    }
    const Info& info = description.Info;
    const auto orNothing = [](const std::string& text) { return std::vector{text.empty() ? Nothing : text}; };
    screen.Field("Display name", orNothing(info.DisplayName.value_or("")));
    screen.Field("Menu", orNothing(description.Texts->Group));
    screen.Field("Type", orNothing(info.SettingType.value_or("")));
    screen.Field("Value", ValueLines(description.InForce));
    screen.Field("Pending value", ValueLines(ShownPending(description, hexadecimal)));
    screen.Field("Default", {description.Default ? EscapeText(*description.Default) : Nothing});
    screen.Field("Valid values", orNothing(description.ValidValues));
    screen.Field("State", StateLines(info));
    screen.Field("Forced now", ForcedLines(info));
    screen.Field("Help", SplitLines(info.HelpText.value_or("")));
    screen.Field("Warning", SplitLines(info.WarningText.value_or("")));
    screen.Field("Depends on", orNothing(fmt::format("{}", fmt::join(description.Relations.DependsOn, ", "))));
    screen.Field("Needed by", orNothing(fmt::format("{}", fmt::join(description.Relations.NeededBy, ", "))));
    return std::move(screen).Text();
}

json::object DescriptionObject(const SettingDescription& description, bool hexadecimal)
{
    const Info& info = description.Info;
    const auto typed = [&](const ReadValue& value, bool hex)
    { return value.Text ? TypedValue(*value.Text, info.CurrentValue, hex) : json::value(); };
    json::object object;
    object["value"] = typed(description.InForce, hexadecimal);
    object["pending"] = typed(description.Pending, false);
    object["registered"] = description.Texts.has_value();
    if (!description.Texts)
    {
        return object;
    }
    object["displayName"] = TextOrNull(info.DisplayName);
    object["menu"] = TextOrNull(description.Texts->Group);
    object["type"] = TextOrNull(info.SettingType);
    object["default"] = DefaultValue(description);
    object["validValues"] = TextOrNull(description.ValidValues);
    AddLimits(object, description);
    object["help"] = TextOrNull(info.HelpText);
    object["warning"] = TextOrNull(info.WarningText);
    object = FlagsAndCauses(info, std::move(object));
    object["dependsOn"] = NamesArray(description.Relations.DependsOn);
    object["neededBy"] = NamesArray(description.Relations.NeededBy);
    return object;
}

} // namespace Tavrine::Tool
