#pragma once

#include <filesystem>
#include <string>

#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>

#include "SharedData.h"
#include "ValueTypes.h"

/// The values of a machine's Bios resource.
/// @param machine  its folder.
inline Tavrine::SettingValueMap BiosValues(const std::filesystem::path& machine)
{
    Tavrine::SettingValueMap values;
    const boost::json::value bios = boost::json::parse(testdata::ReadFile(machine / "bios.json"));
    for (const auto& member : bios.at("Attributes").as_object())
    {
        Tavrine::OptionalVar& value = values[std::string(member.key())];
        if (const auto* text = member.value().if_string())
        {
            value = std::string(*text);
        }
        else if (const auto* number = member.value().if_int64())
        {
            value = *number;
        }
        else if (const auto* flag = member.value().if_bool())
        {
            value = *flag;
        }
    }
    return values;
}
