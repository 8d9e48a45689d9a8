#include "SettingProperty.h"

#include <algorithm>
#include <string>
#include <utility>
#include <variant>

#include "AttributeRegistry.h"

namespace Tavrine
{

namespace
{

using Info = RedfishConfigSettingInfoStru;

using Number = std::optional<std::int64_t> Info::*;
using Text = std::optional<std::string> Info::*;
using Value = OptionalVar Info::*;

using PropertyMember = std::variant<bool Info::*, Number, Text, Value>;

struct PropertyRow
{
    const char* Word;
    PropertyMember Member;
};

/// In the order of SettingProperty.
const std::array<PropertyRow, PropertyCount> PropertyTable = {{
    {"ReadOnly", &Info::ReadOnly},
    {"WriteOnly", &Info::WriteOnly},
    {"GrayOut", &Info::GrayOut},
    {"Hidden", &Info::Hidden},
    {"Immutable", &Info::Immutable},
    {"LowerBound", &Info::LowerBound},
    {"UpperBound", &Info::UpperBound},
    {"ScalarIncrement", &Info::ScalarIncrement},
    {"MinLength", &Info::MinLength},
    {"MaxLength", &Info::MaxLength},
    {"DisplayOrder", &Info::DisplayOrder},
    {"DisplayName", &Info::DisplayName},
    {"HelpText", &Info::HelpText},
    {"WarningText", &Info::WarningText},
    {"ValueExpression", &Info::ValueExpression},
    {"DefaultValue", &Info::DefaultValue},
    {"CurrentValue", &Info::CurrentValue},
}};

const PropertyRow& RowOf(SettingProperty property) { return PropertyTable[static_cast<std::size_t>(property)]; }

/// nullptr for what is not given, and for flags.
const RegistryScalar* GivenProperty(const RegistryAttribute& attribute, SettingProperty property)
{
    const auto found = std::find_if(attribute.Properties.begin(), attribute.Properties.end(),
                                    [property](const auto& given) { return given.first == property; });
    return found != attribute.Properties.end() ? &found->second : nullptr;
}

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

bool TakesText(SettingProperty property)
{
    const auto& member = RowOf(property).Member;
    return std::holds_alternative<Text>(member) || std::holds_alternative<Value>(member);
}

std::optional<RegistryScalar> SuitedTo(SettingProperty property, RegistryScalar value)
{
    const auto wrap = [](const auto& suited)
    { return suited ? std::optional<RegistryScalar>(*suited) : std::optional<RegistryScalar>(); };
    const Overloaded cases{
        [&](bool Info::*) { return wrap(ScalarAsFlag(value)); },
        [&](Number) { return HasValue(value) ? wrap(ScalarAsInteger(value)) : std::optional<RegistryScalar>(value); },
        [&](Text)
        {
            return !HasValue(value) || std::holds_alternative<std::string>(value)
                       ? std::optional<RegistryScalar>(std::move(value))
                       : std::nullopt;
        },
        [&](Value) { return std::optional<RegistryScalar>(std::move(value)); },
    };
    return std::visit(cases, RowOf(property).Member);
}

const RegistryScalar& FlagScalar(bool on)
{
    static const std::array<RegistryScalar, 2> flags = {false, true};
    return flags[on ? 1 : 0];
}

const RegistryScalar& PropertyOfRegistry(const RegistryAttribute& attribute, SettingProperty property)
{
    static const RegistryScalar nothing;
    if (IsFlag(property))
    {
        return FlagScalar(attribute.Flags.test(static_cast<std::size_t>(property)));
    }
    const RegistryScalar* given = GivenProperty(attribute, property);
    return given != nullptr ? *given : nothing;
}

void AddRegistryProperty(RegistryAttribute& attribute, SettingProperty property, RegistryScalar value)
{
    if (IsFlag(property))
    {
        attribute.Flags.set(static_cast<std::size_t>(property), value == RegistryScalar(true));
    }
    else if (HasValue(value))
    {
        attribute.Properties.emplace_back(property, std::move(value));
    }
}

void SetFlag(Info& info, SettingProperty flag, bool on) { info.*std::get<bool Info::*>(RowOf(flag).Member) = on; }

void SetProperty(RedfishConfigSettingInfoStru& info, SettingProperty property, const RegistryScalar& value)
{
    const Overloaded cases{
        [&](bool Info::*flag) { info.*flag = ScalarAsFlag(value).value_or(false); },
        [&](Number number)
        {
            const std::optional<ExactInteger> exact = ScalarAsInteger(value);
            info.*number = exact ? std::optional<std::int64_t>(Narrowed(*exact)) : std::nullopt;
        },
        [&](Text text)
        {
            const auto* words = std::get_if<std::string>(&value);
            info.*text = words != nullptr ? std::optional<std::string>(*words) : std::nullopt;
        },
        [&](Value member) { info.*member = ValueFromScalar(value); },
    };
    std::visit(cases, RowOf(property).Member);
}

} // namespace Tavrine
