#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ValueTypes.h"

namespace Tavrine
{

/// The properties of one setting as the attribute registry gives them (DSP8010,
/// AttributeRegistry schema), dependencies applied over the values that the
/// setting manager knows. Every optional is empty where the registry is silent.
struct RedfishConfigSettingInfoStru
{
    bool ReadOnly = false;
    bool WriteOnly = false;
    /// The setting is reached by the OEM actions for protected attributes. A registry marks it at the
    /// attribute (DSP8010 has no member for that): "Oem": {"Zorvan": {"Protected": true}}.
    bool IsProtected = false;
    bool Hidden = false;
    bool GrayOut = false;
    bool Immutable = false;
    bool IsSystemUnique = false;

    /// Bounds outside the 64-bit signed range are narrowed to its ends here;
    /// the setting manager checks new values against the exact ones.
    std::optional<std::int64_t> LowerBound;
    std::optional<std::int64_t> UpperBound;
    /// 0 or nothing: any step.
    std::optional<std::int64_t> ScalarIncrement;
    /// Lengths in code points.
    std::optional<std::int64_t> MinLength;
    std::optional<std::int64_t> MaxLength;
    std::optional<std::int64_t> DisplayOrder;

    /// "Integer", "String", "Enumeration", "Boolean" or "Password"; nothing for any
    /// other word.
    std::optional<std::string> SettingType;
    std::optional<std::string> DisplayName;
    /// "AttributeName": the name that a change is addressed to. Always filled
    /// by a successful RedfishConfigSettingManager::GetSettingProperties.
    std::optional<std::string> AttributeKey;
    std::optional<std::string> HelpText;
    std::optional<std::string> WarningText;

    /// Nothing, too, for a number outside the 64-bit signed range.
    OptionalVar CurrentValue;
    OptionalVar DefaultValue;

    std::optional<std::string> MenuPath;
    std::optional<std::string> ValueExpression;

    /// Value name to display name of an enumeration.
    SettingStringMap ValueNames;
    /// Other settings that this one depends on or that depend on it, by themselves
    /// or by their menus, each once, in the order of the registry.
    std::vector<std::string> DependencyNames;
    /// Property that a dependency forces at the moment (a flag that it sets, such
    /// as "ReadOnly" or "GrayOut", a bound, a length, a default, a text) to the
    /// condition that does it, such as "BootMode is LegacyBios".
    SettingStringMap ForcedBy;
};

/// What the attribute registry itself says about one setting in words, no dependency
/// applied, and its current value. A text that is lacking is empty.
struct RedfishConfigSettingTexts
{
    /// "Type", whatever the word.
    std::string Type;
    std::string DisplayName;
    std::string HelpText;
    std::string WarningText;
    /// Value names and their display names, in the order of the registry.
    std::vector<std::pair<std::string, std::string>> Values;
    /// The value that the setting manager was given, else the registry's, as text.
    std::string CurrentValue;
    /// Its whole numbers ("LowerBound", "MaxLength" and so on) in decimal, beyond the range of
    /// RedfishConfigSettingInfoStru as well.
    SettingStringMap Numbers;
    /// The group that RedfishConfigSettingManager::GetGroupList has it in.
    std::string Group;
};

/// The settings that dependencies connect with one, by the direction, each once and in the
/// order of the registry; one that goes both ways is in both lists.
struct RedfishConfigSettingRelations
{
    std::vector<std::string> DependsOn;
    std::vector<std::string> NeededBy;
};

} // namespace Tavrine
