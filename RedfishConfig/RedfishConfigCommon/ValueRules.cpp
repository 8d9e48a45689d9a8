#include "ValueRules.h"

#include <algorithm>
#include <cstdint>
#include <variant>

#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>

#include "CodePoints.h"
#include "TextBytes.h"
#include "ValueConversions.h"
#include "ValueExpression.h"

namespace Tavrine
{

namespace
{

std::optional<ExactInteger> NumberOf(const DependencyEvaluation& evaluation, std::size_t index,
                                     SettingProperty property)
{
    return ScalarAsInteger(evaluation.Now(index, property));
}

RegistryScalar ReadNumber(const std::string& text, NumberForm form)
{
    if (form == NumberForm::Hexadecimal)
    {
        return isHexString(text) ? ReadNumber(HexToDec(text), NumberForm::DecimalFromHex) : RegistryScalar();
    }
    const bool plus = form == NumberForm::Decimal && text.starts_with('+') && !text.starts_with("+-");
    const std::optional<ExactInteger> number = ParseExact(plus ? text.substr(1) : text, 10);
    const bool taken = number && (form == NumberForm::Decimal || ExactText(*number, 10) == text);
    return taken ? RegistryScalar(*number) : RegistryScalar();
}

std::uint64_t Remainder(const ExactInteger& number, std::uint64_t step)
{
    const std::uint64_t rest = number.Magnitude % step;
    return number.Negative && rest != 0 ? step - rest : rest;
}

bool StandsOnStep(const ValueRules& rules, const ExactInteger& number)
{
    const std::uint64_t step = rules.Step ? rules.Step->Magnitude : 1;
    return Remainder(number, step) == Remainder(rules.LowerBound.value_or(ExactInteger()), step);
}

std::optional<SettingProperty> BrokenNumberRule(const ValueRules& rules, const ExactInteger& number)
{
    if (rules.LowerBound && number < *rules.LowerBound)
    {
        return SettingProperty::LowerBound;
    }
    if (rules.UpperBound && number > *rules.UpperBound)
    {
        return SettingProperty::UpperBound;
    }
    return StandsOnStep(rules, number) ? std::nullopt : std::optional(SettingProperty::ScalarIncrement);
}

std::optional<SettingProperty> BrokenTextRule(const ValueRules& rules, const std::string& text, std::string& trouble)
{
    const ExactInteger length = ExactFromUnsigned(CodePoints(text).value_or(text.size()));
    if (rules.MinLength && length < *rules.MinLength)
    {
        return SettingProperty::MinLength;
    }
    if (rules.MaxLength && length > *rules.MaxLength)
    {
        return SettingProperty::MaxLength;
    }
    const bool differs =
        rules.Expression && SearchExpression(*rules.Expression, text, trouble) == ExpressionOutcome::Differs;
    return differs ? std::optional(SettingProperty::ValueExpression) : std::nullopt;
}

std::string AsciiLowered(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), LowerAscii);
    return text;
}

} // namespace

SettingKind KindOfValues(const RedfishConfigSetting& setting, const SettingValueMap& values)
{
    if (setting.Kind() != SettingKind::Unknown)
    {
        return setting.Kind();
    }
    const RegistryAttribute& attribute = setting.Attribute();
    if (!attribute.ValueNames.empty())
    {
        return SettingKind::Enumerate;
    }
    const auto found = values.find(attribute.Name());
    const RegistryScalar current = found != values.end() ? ScalarFromValue(found->second)
                                                         : PropertyOfRegistry(attribute, SettingProperty::CurrentValue);
    return std::holds_alternative<ExactInteger>(current) ? SettingKind::Numeric
           : std::holds_alternative<bool>(current)       ? SettingKind::Boolean
                                                         : SettingKind::Text;
}

ValueRules RulesOf(const RedfishConfigSetting& setting, SettingKind kind, const DependencyEvaluation& evaluation)
{
    const std::size_t index = setting.Index();
    ValueRules rules;
    rules.Kind = kind;
    rules.Attribute = &setting.Attribute();
    rules.ShowHex = setting.Options().HexValueMode;
    rules.LowerBound = NumberOf(evaluation, index, SettingProperty::LowerBound);
    rules.UpperBound = NumberOf(evaluation, index, SettingProperty::UpperBound);
    rules.Step = NumberOf(evaluation, index, SettingProperty::ScalarIncrement);
    if (rules.Step && *rules.Step <= ExactFrom(1))
    {
        rules.Step.reset();
    }
    rules.MinLength = NumberOf(evaluation, index, SettingProperty::MinLength);
    rules.MaxLength = NumberOf(evaluation, index, SettingProperty::MaxLength);
    const RegistryScalar& expression = evaluation.Now(index, SettingProperty::ValueExpression);
    const auto* text = std::get_if<std::string>(&expression);
    if (text != nullptr && !text->empty())
    {
        rules.Expression = *text;
    }
    return rules;
}

RegistryScalar ReadValue(SettingKind kind, const RegistryAttribute& attribute, const std::string& text, NumberForm form)
{
    switch (kind)
    {
    case SettingKind::Numeric:
        return ReadNumber(text, form);
    case SettingKind::Boolean:
    {
        const std::optional<bool> flag = ScalarAsFlag(text);
        return flag ? RegistryScalar(*flag) : RegistryScalar();
    }
    case SettingKind::Enumerate:
        if (!attribute.ValueNames.empty() &&
            std::none_of(attribute.ValueNames.begin(), attribute.ValueNames.end(),
                         [&](const RegistryValueName& value) { return value.Name == text; }))
        {
            return {};
        }
        break;
    default:
        break;
    }
    return CodePoints(text) ? RegistryScalar(text) : RegistryScalar();
}

std::optional<SettingProperty> BrokenRule(const ValueRules& rules, const RegistryScalar& value, std::string& trouble)
{
    if (const auto* number = std::get_if<ExactInteger>(&value))
    {
        return BrokenNumberRule(rules, *number);
    }
    const auto* text = std::get_if<std::string>(&value);
    const bool free = rules.Kind == SettingKind::Text || rules.Kind == SettingKind::Password;
    return text != nullptr && free ? BrokenTextRule(rules, *text, trouble) : std::nullopt;
}

std::string NameMeant(const RegistryAttribute& attribute, const std::string& text)
{
    const std::string lowered = AsciiLowered(text);
    std::string meant;
    for (const RegistryValueName& value : attribute.ValueNames)
    {
        if (AsciiLowered(value.Name) == lowered || AsciiLowered(value.Shown()) == lowered)
        {
            if (!meant.empty())
            {
                return "";
            }
            meant = value.Name;
        }
    }
    return meant;
}

std::string JsonText(const RegistryScalar& value)
{
    if (const auto* text = std::get_if<std::string>(&value))
    {
        return boost::json::serialize(boost::json::value(*text));
    }
    return ScalarText(value);
}

} // namespace Tavrine
