#pragma once

#include <string>

#include "Export.h"
#include "ValueTypes.h"

namespace boost::json
{
class value;
}

namespace Tavrine
{

/// The JSON form of a value: string, number or boolean of its own kind.
TAVRINE_EXPORT boost::json::value VariantToJson(const SettingVariant& value);

/// Stores a text in `value`, keeping the kind that stands there: decimal text within 64 bits signed for
/// an integer, "true" or "false" in any case for a boolean, the text itself for a
/// string or where no value stood.
/// @return false, and `value` untouched, when the text does not suit the kind.
TAVRINE_EXPORT bool TransferStringToOptionalVar(OptionalVar& value, const std::string text);

/// Writes the text of a value: strings as they stand, integers in decimal,
/// booleans as "true" and "false".
/// @return false, and `text` untouched, when there is no value.
TAVRINE_EXPORT bool GetOptionalVarAsString(const OptionalVar& value, std::string& text);

/// Whether there is a value, and it is an integer.
TAVRINE_EXPORT bool IsNumSetting(const OptionalVar& value);
/// Whether there is a value, and it is a boolean.
TAVRINE_EXPORT bool IsBoolenSetting(const OptionalVar& value);

/// A hexadecimal number that HexToDec takes: an optional "-", an optional "0x" or
/// "0X", digits in either case, within -2^63 to 2^64-1.
TAVRINE_EXPORT bool isHexString(const std::string text);

/// Hexadecimal to decimal text; a text that isHexString refuses comes back as it
/// is.
TAVRINE_EXPORT std::string HexToDec(const std::string text);

/// Decimal to hexadecimal text: "0x" and capital digits, a negative number with a
/// leading "-", within -2^63 to 2^64-1. Any other text comes back as it is.
/// HexToDec(DecToHex(x)) == x for every integer x in that range.
TAVRINE_EXPORT std::string DecToHex(const std::string text);

} // namespace Tavrine
