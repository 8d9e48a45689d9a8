#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include "RedfishConfigSettingInfo.h"

namespace Tavrine::Tool
{

/// One of the values of a setting: read or not, there or not.
struct ReadValue
{
    /// Why it is not known; empty where it is.
    std::string Unknown;
    /// As the library shows it, a number that waits in decimal; nothing where the setting has none.
    std::optional<std::string> Text;
};

/// All that is known about one setting.
struct SettingDescription
{
    std::string ShownName;
    /// The registry's view, dependencies applied. Of no meaning without Texts.
    RedfishConfigSettingInfoStru Info;
    /// Nothing for a setting that has a value and is in no registry.
    std::optional<RedfishConfigSettingTexts> Texts;
    ReadValue InForce;
    ReadValue Pending;
    std::optional<std::string> Default;
    std::string ValidValues;
    /// Shown names.
    RedfishConfigSettingRelations Relations;
};

/// The description as lines, long texts wrapped to `columns` where it is given.
/// @param hexadecimal  numbers among the values are shown so, but for the default.
std::string DescriptionText(const SettingDescription& description, std::optional<std::size_t> columns,
                            bool hexadecimal);

/// The description as data. Values have the kind that the setting's current value has.
/// @param hexadecimal  the text of a number in force is hexadecimal.
boost::json::object DescriptionObject(const SettingDescription& description, bool hexadecimal);

} // namespace Tavrine::Tool
