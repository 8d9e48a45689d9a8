#pragma once

#include <string>
#include <string_view>

#include "RedfishConfigResult.h"
#include "ValueTypes.h"

namespace Tavrine
{

/// See BMCBaseAssistant::ParseSettingValuesFromResponse.
RedfishConfigResult ReadSettingValues(std::string_view response, SettingValueMap& values);

/// The JSON text of a new value of the kind of `current`: a number or a boolean where
/// the one in force is that, else a string.
/// @return 0; 10 when the text does not suit the kind.
RedfishConfigResult MakeValueText(const std::string& name, const std::string& value, const OptionalVar& current,
                                  std::string& jsonText);

} // namespace Tavrine
