#pragma once

#include <optional>
#include <string>

namespace Tavrine
{

/// What a registry's type word means to this library.
enum class SettingTypeCode : int
{
    Integer = 0,
    String = 1,
    Enumeration = 2,
    Boolean = 3,
    Password = 4,
    Unknown = 5,
};

/// The words are compared exactly; any other word, or none, is Unknown.
SettingTypeCode TypeCodeOf(const std::optional<std::string>& typeWord);

} // namespace Tavrine
