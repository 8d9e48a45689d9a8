#include "SettingTypeCode.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace Tavrine
{
namespace
{

constexpr std::array<std::pair<std::string_view, SettingTypeCode>, 5> Codes = {{
    {"Integer", SettingTypeCode::Integer},
    {"String", SettingTypeCode::String},
    {"Enumeration", SettingTypeCode::Enumeration},
    {"Boolean", SettingTypeCode::Boolean},
    {"Password", SettingTypeCode::Password},
}};

} // namespace

SettingTypeCode TypeCodeOf(const std::optional<std::string>& typeWord)
{
    const auto code =
        std::find_if(Codes.begin(), Codes.end(), [&](const auto& entry) { return typeWord == entry.first; });
    return code != Codes.end() ? code->second : SettingTypeCode::Unknown;
}

} // namespace Tavrine
