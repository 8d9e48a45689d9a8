#pragma once

#include <compare>
#include <optional>
#include <string>
#include <variant>

#include "ExactInteger.h"
#include "ValueTypes.h"

namespace boost::json
{
class value;
}

namespace Tavrine
{

/// A value as a registry writes it: null, text, whole number or boolean.
using RegistryScalar = std::variant<std::monostate, std::string, ExactInteger, bool>;

/// Nothing for objects, arrays, fractions and numbers out of range.
std::optional<RegistryScalar> ScalarFromJson(const boost::json::value& value);
RegistryScalar ScalarFromValue(const OptionalVar& value);

/// Empty where the public type has no place for the number.
OptionalVar ValueFromScalar(const RegistryScalar& scalar);

bool HasValue(const RegistryScalar& scalar);
/// Also of a decimal text.
std::optional<ExactInteger> ScalarAsInteger(const RegistryScalar& scalar);
/// Also of the texts "true" and "false" in any case.
std::optional<bool> ScalarAsFlag(const RegistryScalar& scalar);
/// Whether it is there and true.
bool IsSet(const std::optional<RegistryScalar>& scalar);
std::string ScalarText(const RegistryScalar& scalar);

/// Equality across kinds, since registries write 0 as "0" and true as "true" or
/// "True". Two texts are equal by bytes only.
bool SameScalar(const RegistryScalar& left, const RegistryScalar& right);

/// The order of two numbers, texts of numbers included; nothing for others.
std::optional<std::strong_ordering> OrderScalars(const RegistryScalar& left, const RegistryScalar& right);

} // namespace Tavrine
