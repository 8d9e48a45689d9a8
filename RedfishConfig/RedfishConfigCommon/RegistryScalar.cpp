#include "RegistryScalar.h"

#include <cmath>
#include <cstdint>
#include <utility>

#include <boost/json/value.hpp>

#include "ValueConversions.h"

namespace Tavrine
{

namespace
{

std::optional<ExactInteger> WholeNumber(double number)
{
    constexpr double above = 18446744073709551616.0;
    constexpr double lowest = -9223372036854775808.0;
    if (!(number >= lowest && number < above) || number != std::trunc(number))
    {
        return std::nullopt;
    }
    return number < 0 ? ExactFrom(static_cast<std::int64_t>(number))
                      : ExactFromUnsigned(static_cast<std::uint64_t>(number));
}

} // namespace

std::optional<RegistryScalar> ScalarFromJson(const boost::json::value& value)
{
    switch (value.kind())
    {
    case boost::json::kind::null:
        return std::optional<RegistryScalar>(std::in_place);
    case boost::json::kind::bool_:
        return RegistryScalar(*value.if_bool());
    case boost::json::kind::int64:
        return RegistryScalar(ExactFrom(*value.if_int64()));
    case boost::json::kind::uint64:
        return RegistryScalar(ExactFromUnsigned(*value.if_uint64()));
    case boost::json::kind::double_:
    {
        const std::optional<ExactInteger> number = WholeNumber(*value.if_double());
        return number ? std::optional<RegistryScalar>(*number) : std::nullopt;
    }
    case boost::json::kind::string:
        return RegistryScalar(std::string(*value.if_string()));
    default:
        return std::nullopt;
    }
}

RegistryScalar ScalarFromValue(const OptionalVar& value)
{
    if (!value)
    {
        return {};
    }
    if (const auto* number = std::get_if<std::int64_t>(&*value))
    {
        return ExactFrom(*number);
    }
    if (const auto* flag = std::get_if<bool>(&*value))
    {
        return *flag;
    }
    return std::get<std::string>(*value);
}

OptionalVar ValueFromScalar(const RegistryScalar& scalar)
{
    if (const auto* text = std::get_if<std::string>(&scalar))
    {
        return *text;
    }
    if (const auto* flag = std::get_if<bool>(&scalar))
    {
        return *flag;
    }
    const auto* number = std::get_if<ExactInteger>(&scalar);
    return number != nullptr && FitsSigned(*number) ? OptionalVar(Narrowed(*number)) : std::nullopt;
}

bool HasValue(const RegistryScalar& scalar) { return !std::holds_alternative<std::monostate>(scalar); }

std::optional<ExactInteger> ScalarAsInteger(const RegistryScalar& scalar)
{
    if (const auto* text = std::get_if<std::string>(&scalar))
    {
        return ParseExact(*text, 10);
    }
    const auto* number = std::get_if<ExactInteger>(&scalar);
    return number != nullptr ? std::optional<ExactInteger>(*number) : std::nullopt;
}

std::optional<bool> ScalarAsFlag(const RegistryScalar& scalar)
{
    if (const auto* text = std::get_if<std::string>(&scalar))
    {
        OptionalVar flag = false;
        return TransferStringToOptionalVar(flag, *text) ? std::optional<bool>(std::get<bool>(*flag)) : std::nullopt;
    }
    const auto* flag = std::get_if<bool>(&scalar);
    return flag != nullptr ? std::optional<bool>(*flag) : std::nullopt;
}

bool IsSet(const std::optional<RegistryScalar>& scalar) { return scalar && ScalarAsFlag(*scalar).value_or(false); }

std::string ScalarText(const RegistryScalar& scalar)
{
    if (const auto* text = std::get_if<std::string>(&scalar))
    {
        return *text;
    }
    if (const auto* number = std::get_if<ExactInteger>(&scalar))
    {
        return ExactText(*number, 10);
    }
    const auto* flag = std::get_if<bool>(&scalar);
    return flag == nullptr ? "null" : *flag ? "true" : "false";
}

bool SameScalar(const RegistryScalar& left, const RegistryScalar& right)
{
    if (left.index() == right.index() || !HasValue(left) || !HasValue(right))
    {
        return left == right;
    }
    if (const std::optional<bool> flag = ScalarAsFlag(left))
    {
        return flag == ScalarAsFlag(right);
    }
    const std::optional<ExactInteger> number = ScalarAsInteger(left);
    return number && number == ScalarAsInteger(right);
}

std::optional<std::strong_ordering> OrderScalars(const RegistryScalar& left, const RegistryScalar& right)
{
    const std::optional<ExactInteger> first = ScalarAsInteger(left);
    const std::optional<ExactInteger> second = ScalarAsInteger(right);
    return first && second ? std::optional<std::strong_ordering>(*first <=> *second) : std::nullopt;
}

} // namespace Tavrine
