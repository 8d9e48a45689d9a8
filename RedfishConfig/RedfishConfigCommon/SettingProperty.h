#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "RedfishConfigSettingInfo.h"
#include "RegistryScalar.h"

namespace Tavrine
{

struct RegistryAttribute;

/// The properties of a setting that a dependency can read or force. The flags,
/// which menus have as well, come first.
enum class SettingProperty : std::uint8_t
{
    ReadOnly,
    WriteOnly,
    GrayOut,
    Hidden,
    Immutable,
    LowerBound,
    UpperBound,
    ScalarIncrement,
    MinLength,
    MaxLength,
    DisplayOrder,
    DisplayName,
    HelpText,
    WarningText,
    ValueExpression,
    DefaultValue,
    CurrentValue,
};
constexpr std::size_t PropertyCount = 17;
inline constexpr std::array FlagProperties = {SettingProperty::ReadOnly, SettingProperty::WriteOnly,
                                              SettingProperty::GrayOut, SettingProperty::Hidden,
                                              SettingProperty::Immutable};

/// By the word of the registry, compared exactly.
std::optional<SettingProperty> PropertyFromWord(std::string_view word);
const char* PropertyWord(SettingProperty property);
bool IsFlag(SettingProperty property);
/// SuitedTo leaves a text as it is.
bool TakesText(SettingProperty property);

/// The value as the property's kind takes it (the text "true" for a flag, "8" for
/// a bound); nothing for a value that cannot be one.
std::optional<RegistryScalar> SuitedTo(SettingProperty property, RegistryScalar value);

/// What the registry itself says, no dependency applied; null where it is silent, false
/// for a flag. The reference is good as long as the attribute.
const RegistryScalar& PropertyOfRegistry(const RegistryAttribute& attribute, SettingProperty property);

/// A flag as a value that lives on.
const RegistryScalar& FlagScalar(bool on);

/// Enters a value that SuitedTo accepted into what the registry says; once a property.
void AddRegistryProperty(RegistryAttribute& attribute, SettingProperty property, RegistryScalar value);

/// Writes a value that SuitedTo accepted into the public record; null empties.
void SetProperty(RedfishConfigSettingInfoStru& info, SettingProperty property, const RegistryScalar& value);
void SetFlag(RedfishConfigSettingInfoStru& info, SettingProperty flag, bool on);

} // namespace Tavrine
