#include "ValueTexts.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include <boost/json/serialize.hpp>
#include <boost/json/string.hpp>
#include <boost/json/value.hpp>

#include "ValueConversions.h"

namespace Tavrine
{

namespace
{

constexpr std::size_t MaxNamesListed = 10;
constexpr std::size_t MaxQuotedBytes = 300;

using Bound = std::optional<ExactInteger>;

bool NeedsQuotes(const std::string& word)
{
    const auto special = [](char letter)
    {
        return static_cast<unsigned char>(letter) < 0x20 || letter == 0x7F ||
               std::string_view(";[]\"\\").find(letter) != std::string_view::npos;
    };
    return word.empty() || word.front() == ' ' || word.back() == ' ' || std::any_of(word.begin(), word.end(), special);
}

std::string ItemWord(const std::string& word)
{
    return NeedsQuotes(word) ? boost::json::serialize(boost::json::value(word)) : word;
}

std::string NamesLine(const RegistryAttribute& attribute)
{
    std::string line;
    for (const RegistryValueName& value : attribute.ValueNames)
    {
        line += (line.empty() ? "" : "; ") + ItemWord(value.Name);
        line += value.Shown() == value.Name ? "" : " [" + ItemWord(value.Shown()) + "]";
    }
    return line;
}

std::string DecimalText(const ExactInteger& number) { return ExactText(number, 10); }
std::string HexText(const ExactInteger& number) { return DecToHex(DecimalText(number)); }

using NumberText = std::string (*)(const ExactInteger&);

std::string RangeLine(const ValueRules& rules, NumberText write)
{
    const auto bound = [write](const Bound& number) { return number ? write(*number) : "any"; };
    return bound(rules.LowerBound) + " to " + bound(rules.UpperBound) +
           (rules.Step ? ", step " + write(*rules.Step) : "");
}

std::string NumberLine(const ValueRules& rules)
{
    const bool anyNumber = !rules.LowerBound && !rules.UpperBound && !rules.Step;
    return RangeLine(rules, DecimalText) + (rules.ShowHex && !anyNumber ? " (" + RangeLine(rules, HexText) + ")" : "");
}

std::string LengthLine(const ValueRules& rules)
{
    return DecimalText(rules.MinLength.value_or(ExactInteger())) + " to " +
           (rules.MaxLength ? DecimalText(*rules.MaxLength) : "any") + " characters" +
           (rules.Expression ? ", pattern " + *rules.Expression : "");
}

std::string NamesWords(const RegistryAttribute& attribute)
{
    std::string words;
    std::size_t listed = 0;
    for (const auto& [name, display] : attribute.ValueNames)
    {
        if (listed < MaxNamesListed && name.size() <= MaxQuotedBytes && MayBeQuoted(attribute, name))
        {
            words += (words.empty() ? "" : ", ") + ItemWord(name);
            ++listed;
        }
    }
    const std::size_t more = attribute.ValueNames.size() - listed;
    if (listed == 0)
    {
        return "one of its " + std::to_string(more) + " value names";
    }
    return "one of " + words + (more == 0 ? "" : " and " + std::to_string(more) + " more");
}

/// " from 1 to 9", " of at least 1", " of at most 9" or nothing.
std::string BoundWords(const Bound& lower, const Bound& upper, NumberText write)
{
    if (lower && upper)
    {
        return " from " + write(*lower) + " to " + write(*upper);
    }
    return lower ? " of at least " + write(*lower) : upper ? " of at most " + write(*upper) : "";
}

std::string StepWords(const ValueRules& rules, NumberText write)
{
    return rules.Step ? " in steps of " + write(*rules.Step) + " counted from " +
                            write(rules.LowerBound.value_or(ExactInteger()))
                      : "";
}

std::string NumberWords(const ValueRules& rules, NumberForm form)
{
    const auto range = [&rules](NumberText write)
    { return BoundWords(rules.LowerBound, rules.UpperBound, write) + StepWords(rules, write); };
    const ExactInteger lowest{true, std::uint64_t{1} << 63U};
    const ExactInteger highest{false, ~std::uint64_t{0}};
    const std::string decimal = !rules.LowerBound && !rules.UpperBound
                                    ? BoundWords(lowest, highest, DecimalText) + StepWords(rules, DecimalText)
                                    : range(DecimalText);
    if (form == NumberForm::Decimal)
    {
        return "a whole number" + decimal;
    }
    const std::string hexadecimal = range(HexText);
    return "a hexadecimal number" + hexadecimal +
           (hexadecimal.empty() ? "" : " (in decimal" + range(DecimalText) + ")");
}

std::string TextWords(const ValueRules& rules)
{
    const auto unit = [](const Bound& length)
    { return length && *length == ExactFrom(1) ? std::string(" character") : std::string(" characters"); };
    const Bound lower = rules.MinLength && *rules.MinLength > ExactInteger() ? rules.MinLength : std::nullopt;
    std::string words = "a text" + (lower && rules.MaxLength && *lower == *rules.MaxLength
                                        ? " of exactly " + DecimalText(*lower)
                                        : BoundWords(lower, rules.MaxLength, DecimalText));
    words += lower || rules.MaxLength ? unit(rules.MaxLength ? rules.MaxLength : lower) : "";
    if (!rules.Expression)
    {
        return words;
    }
    const bool shown = rules.Expression->size() <= MaxQuotedBytes && MayBeQuoted(*rules.Attribute, *rules.Expression);
    return words + " that matches the pattern" + (shown ? " " + *rules.Expression : " among its valid values");
}

} // namespace

bool MayBeQuoted(const RegistryAttribute& attribute, const std::string& text)
{
    return text.find(attribute.Name()) == std::string::npos;
}

std::string ValidValuesLine(const ValueRules& rules)
{
    switch (rules.Kind)
    {
    case SettingKind::Enumerate:
        return NamesLine(*rules.Attribute);
    case SettingKind::Boolean:
        return "true; false";
    case SettingKind::Numeric:
        return NumberLine(rules);
    default:
        return LengthLine(rules);
    }
}

std::string AcceptedWords(const ValueRules& rules, NumberForm form)
{
    switch (rules.Kind)
    {
    case SettingKind::Enumerate:
        return NamesWords(*rules.Attribute);
    case SettingKind::Boolean:
        return "true or false";
    case SettingKind::Numeric:
        return NumberWords(rules, form);
    default:
        return TextWords(rules);
    }
}

} // namespace Tavrine
