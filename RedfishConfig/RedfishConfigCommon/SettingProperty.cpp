#include "SettingProperty.h"

#include <string>
#include <variant>

#include "AttributeRegistry.h"

namespace Tavrine
{

namespace
{

using Info = RedfishConfigSettingInfoStru;

struct NumberMembers
{
    std::optional<std::int64_t> Info::*Narrow;
    std::optional<ExactInteger> RegistryAttribute::*Exact;
};

struct ValueMembers
{
    OptionalVar Info::*Public;
    RegistryScalar RegistryAttribute::*Exact;
};

using PropertyMembers = std::variant<bool Info::*, NumberMembers, std::optional<std::string> Info::*, ValueMembers>;

struct PropertyRow
{
    const char* Word;
    PropertyMembers Members;
};

/// In the order of SettingProperty.
const std::array<PropertyRow, PropertyCount> PropertyTable = {{
    {"ReadOnly", &Info::ReadOnly},
    {"WriteOnly", &Info::WriteOnly},
    {"GrayOut", &Info::GrayOut},
    {"Hidden", &Info::Hidden},
    {"Immutable", &Info::Immutable},
    {"LowerBound", NumberMembers{&Info::LowerBound, &RegistryAttribute::LowerBound}},
    {"UpperBound", NumberMembers{&Info::UpperBound, &RegistryAttribute::UpperBound}},
    {"ScalarIncrement", NumberMembers{&Info::ScalarIncrement, &RegistryAttribute::ScalarIncrement}},
    {"MinLength", NumberMembers{&Info::MinLength, &RegistryAttribute::MinLength}},
    {"MaxLength", NumberMembers{&Info::MaxLength, &RegistryAttribute::MaxLength}},
    {"DisplayOrder", NumberMembers{&Info::DisplayOrder, &RegistryAttribute::DisplayOrder}},
    {"DisplayName", &Info::DisplayName},
    {"HelpText", &Info::HelpText},
    {"WarningText", &Info::WarningText},
    {"ValueExpression", &Info::ValueExpression},
    {"DefaultValue", ValueMembers{&Info::DefaultValue, &RegistryAttribute::DefaultValue}},
    {"CurrentValue", ValueMembers{&Info::CurrentValue, &RegistryAttribute::CurrentValue}},
}};

const PropertyRow& RowOf(SettingProperty property) { return PropertyTable[static_cast<std::size_t>(property)]; }

template <class... Cases> struct Overloaded : Cases...
{
    using Cases::operator()...;
};
template <class... Cases> Overloaded(Cases...) -> Overloaded<Cases...>;

} // namespace

std::optional<SettingProperty> PropertyFromWord(std::string_view word)
{
    for (std::size_t row = 0; row < PropertyTable.size(); ++row)
    {
        if (word == PropertyTable[row].Word)
        {
            return static_cast<SettingProperty>(row);
        }
    }
    return std::nullopt;
}

const char* PropertyWord(SettingProperty property) { return RowOf(property).Word; }

bool IsFlag(SettingProperty property) { return static_cast<std::size_t>(property) < FlagProperties.size(); }

std::optional<RegistryScalar> SuitedTo(SettingProperty property, const RegistryScalar& value)
{
    const auto wrap = [](const auto& suited)
    { return suited ? std::optional<RegistryScalar>(*suited) : std::optional<RegistryScalar>(); };
    const Overloaded cases{
        [&](bool Info::*) { return wrap(ScalarAsFlag(value)); },
        [&](const NumberMembers&)
        { return HasValue(value) ? wrap(ScalarAsInteger(value)) : std::optional<RegistryScalar>(value); },
        [&](std::optional<std::string> Info::*)
        {
            return !HasValue(value) || std::holds_alternative<std::string>(value) ? std::optional<RegistryScalar>(value)
                                                                                  : std::nullopt;
        },
        [&](const ValueMembers&) { return std::optional<RegistryScalar>(value); },
    };
    return std::visit(cases, RowOf(property).Members);
}

RegistryScalar PropertyOfRegistry(const RegistryAttribute& attribute, SettingProperty property)
{
    const auto wrap = [](const auto& held) { return held ? RegistryScalar(*held) : RegistryScalar(); };
    const Overloaded cases{
        [&](bool Info::*flag) { return RegistryScalar(attribute.Info.*flag); },
        [&](const NumberMembers& number) { return wrap(attribute.*number.Exact); },
        [&](std::optional<std::string> Info::*text) { return wrap(attribute.Info.*text); },
        [&](const ValueMembers& value) { return attribute.*value.Exact; },
    };
    return std::visit(cases, RowOf(property).Members);
}

void SetRegistryProperty(RegistryAttribute& attribute, SettingProperty property, const RegistryScalar& value)
{
    SetProperty(attribute.Info, property, value);
    if (const auto* number = std::get_if<NumberMembers>(&RowOf(property).Members))
    {
        attribute.*number->Exact = ScalarAsInteger(value);
    }
    else if (const auto* members = std::get_if<ValueMembers>(&RowOf(property).Members))
    {
        attribute.*members->Exact = value;
    }
}

void SetProperty(RedfishConfigSettingInfoStru& info, SettingProperty property, const RegistryScalar& value)
{
    const Overloaded cases{
        [&](bool Info::*flag) { info.*flag = ScalarAsFlag(value).value_or(false); },
        [&](const NumberMembers& number)
        {
            const std::optional<ExactInteger> exact = ScalarAsInteger(value);
            info.*number.Narrow = exact ? std::optional<std::int64_t>(Narrowed(*exact)) : std::nullopt;
        },
        [&](std::optional<std::string> Info::*text)
        {
            const auto* words = std::get_if<std::string>(&value);
            info.*text = words != nullptr ? std::optional<std::string>(*words) : std::nullopt;
        },
        [&](const ValueMembers& members) { info.*members.Public = ValueFromScalar(value); },
    };
    std::visit(cases, RowOf(property).Members);
}

} // namespace Tavrine
