#pragma once

#include <optional>
#include <string>

#include "Dependencies.h"
#include "ExactInteger.h"
#include "RedfishConfigSetting.h"
#include "RegistryScalar.h"

namespace Tavrine
{

/// How the text of a number is written.
enum class NumberForm
{
    /// An optional sign and decimal digits.
    Decimal,
    /// Decimal as HexToDec writes it: what it never writes was no hexadecimal number.
    DecimalFromHex,
    /// As isHexString takes it.
    Hexadecimal,
};

/// What a value of one setting has to obey now, dependencies applied. The model
/// must outlive this.
struct ValueRules
{
    /// Never Unknown.
    SettingKind Kind = SettingKind::Text;
    std::optional<ExactInteger> LowerBound;
    std::optional<ExactInteger> UpperBound;
    /// Above 0 and not 1, which say nothing.
    std::optional<ExactInteger> Step;
    std::optional<ExactInteger> MinLength;
    std::optional<ExactInteger> MaxLength;
    /// Not empty.
    std::optional<std::string> Expression;
    const RegistryAttribute* Attribute = nullptr;
    /// Numbers are shown in hexadecimal, too.
    bool ShowHex = false;
};

/// The kind by which values are read: that of the registry, and for a setting of no
/// known type what its value names or its current value suggest.
SettingKind KindOfValues(const RedfishConfigSetting& setting, const SettingValueMap& values);

ValueRules RulesOf(const RedfishConfigSetting& setting, SettingKind kind, const DependencyEvaluation& evaluation);

/// A text as a value of this kind: what depends on nothing but the registry's own
/// words is checked here. Null for a text that is none.
RegistryScalar ReadValue(SettingKind kind, const RegistryAttribute& attribute, const std::string& text,
                         NumberForm form);

/// The property that forbids a value that ReadValue gave; nothing when all is well.
/// @param trouble  filled when the value expression could not be judged.
std::optional<SettingProperty> BrokenRule(const ValueRules& rules, const RegistryScalar& value, std::string& trouble);

/// The value name that a text perhaps means: the one that
/// differs in case alone, or whose display name it is in any case. Empty for none
/// or several.
std::string NameMeant(const RegistryAttribute& attribute, const std::string& text);

/// JSON text of a value that ReadValue gave.
std::string JsonText(const RegistryScalar& value);

} // namespace Tavrine
