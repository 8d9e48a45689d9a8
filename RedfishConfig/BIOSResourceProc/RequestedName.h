#pragma once

#include <cstddef>
#include <string>

namespace Tavrine
{

/// Puts the name that the caller asked for in place of a translated one: the entry under
/// `keyName`, or else the first whose key ends where a point and that name first stand in it,
/// moves to `requestedName`, in place of an entry that it has. The case counts. An entry
/// that stands under `requestedName` already, and is the one to move, is lost.
template <typename Map>
void MoveToRequestedName(Map& values, const std::string& keyName, const std::string& requestedName)
{
    const auto exact = values.find(keyName);
    if (exact != values.end())
    {
        if (keyName != requestedName)
        {
            values[requestedName] = exact->second;
        }
        values.erase(exact);
        return;
    }
    for (auto entry = values.begin(); entry != values.end(); ++entry)
    {
        const std::size_t point = entry->first.find("." + keyName);
        if (point == std::string::npos || entry->first.size() != point + 1 + keyName.size())
        {
            continue;
        }
        values[requestedName] = entry->second;
        values.erase(entry);
        return;
    }
}

} // namespace Tavrine
