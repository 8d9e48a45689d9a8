#include "SettingTypeCode.h"

#include <map>

namespace Tavrine
{

SettingTypeCode TypeCodeOf(const std::optional<std::string>& typeWord)
{
    static const std::map<std::string, SettingTypeCode> Codes = {
        {"Integer", SettingTypeCode::Integer},         {"String", SettingTypeCode::String},
        {"Enumeration", SettingTypeCode::Enumeration}, {"Boolean", SettingTypeCode::Boolean},
        {"Password", SettingTypeCode::Password},
    };
    const auto code = Codes.find(typeWord.value_or(""));
    return code != Codes.end() ? code->second : SettingTypeCode::Unknown;
}

} // namespace Tavrine
