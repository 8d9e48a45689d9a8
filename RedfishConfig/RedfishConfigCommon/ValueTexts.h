#pragma once

#include <string>

#include "ValueRules.h"

namespace Tavrine
{

/// The valid values in the form that RedfishConfigSettingManager tells. Empty for an
/// enumeration without value names.
std::string ValidValuesLine(const ValueRules& rules);

/// What the setting takes as the end of a sentence, such as "a whole number from 0
/// to 64" or "one of Enabled, Disabled". Registry texts that hold the setting's own
/// name are left out: callers replace that name wherever it stands in a message.
std::string AcceptedWords(const ValueRules& rules, NumberForm form);

/// Whether a registry's text can stand in a message about this setting.
bool MayBeQuoted(const RegistryAttribute& attribute, const std::string& text);

} // namespace Tavrine
