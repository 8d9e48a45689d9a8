#pragma once

#include "AttributeRules.h"
#include "RedfishErrors.h"

#include <boost/json/value.hpp>
#include <optional>
#include <string>

namespace bmcsim
{

/// Judges one new value of an attribute by type, list, bounds, length and pattern.
/// @param current  its value in force, whose kind counts where the registry tells no
///                 type; null where there is none.
/// @return empty when the attribute takes the value.
std::optional<Notice> CheckValue(const RulesNow& rules, const std::string& name, const boost::json::value& value,
                                 const boost::json::value* current);

/// JSON pointer to an attribute of the Bios resource.
std::string AttributePointer(std::string_view name);

} // namespace bmcsim
