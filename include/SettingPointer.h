#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace Tavrine
{

/// What a BMC's message names is no setting where it is longer, in bytes.
inline constexpr std::size_t MaxSettingNameBytes = 256;

/// The setting that a BMC's message is about, by an entry of its "RelatedProperties" or by the argument that names a
/// property: a JSON pointer (RFC 6901) to a member of "Attributes", with or without "#" and the place of the resource
/// in front; one to a member of the resource itself, as services send it that leave "Attributes" out; or a bare name.
/// Empty for none: what a pointer finds elsewhere is no setting, though one may have the same name.
///
/// A setting holds nothing that a pointer could lead on to, so all that follows "Attributes/" is its name, also where
/// its "/" is not escaped. Of a service that does escape, a "/" as such ends the name.
inline std::string SettingOfPointer(std::string_view pointer)
{
    constexpr std::string_view attributes = "Attributes/";
    if (const std::size_t fragment = pointer.find("#/");
        fragment != std::string_view::npos || pointer.starts_with("/redfish/"))
    {
        pointer.remove_prefix(std::min(fragment, pointer.size()));
    }
    pointer.remove_prefix(pointer.starts_with('#') ? 1 : 0);
    const bool fromRoot = pointer.starts_with('/');
    pointer.remove_prefix(fromRoot ? 1 : 0);
    if (pointer.starts_with(attributes))
    {
        pointer.remove_prefix(attributes.size());
    }
    else if (pointer == "Attributes" || (fromRoot && pointer.find('/') != std::string_view::npos))
    {
        return {};
    }
    if (pointer.find("~0") != std::string_view::npos || pointer.find("~1") != std::string_view::npos)
    {
        pointer = pointer.substr(0, pointer.find('/'));
    }
    if (pointer.size() > MaxSettingNameBytes)
    {
        return {};
    }
    std::string name;
    for (std::size_t i = 0; i < pointer.size(); ++i)
    {
        const std::string_view escape = pointer.substr(i, 2);
        const bool isEscape = escape == "~0" || escape == "~1";
        name += isEscape ? (pointer[++i] == '0' ? '~' : '/') : pointer[i];
    }
    return name;
}

} // namespace Tavrine
