#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "Export.h"

namespace Tavrine
{

/// A typed setting value, as the "Attributes" object of a Bios resource carries
/// it (DSP8010, Bios schema).
using SettingVariant = std::variant<std::string, std::int64_t, bool>;

/// A value, or nothing where the BMC reports null: that is not an empty string.
using OptionalVar = std::optional<SettingVariant>;

/// Orders names by their lowered copies (std::ctype of the global locale),
/// bytewise, the shorter first on a tie.
struct TAVRINE_EXPORT CaseInsensitiveComparator
{
    bool operator()(const std::string& left, const std::string& right) const;
};

/// Setting name to typed value; names that differ in case alone are one key,
/// which keeps the case of its first insertion.
using SettingValueMap = std::map<std::string, OptionalVar, CaseInsensitiveComparator>;

/// The maps below order their keys by plain bytes: case counts.
using SettingStringMap = std::map<std::string, std::string>;
using SettingCompareMap = std::map<std::string, std::pair<std::string, std::string>>;
using SettingGroupMap = std::map<std::string, std::vector<std::string>>;

} // namespace Tavrine
