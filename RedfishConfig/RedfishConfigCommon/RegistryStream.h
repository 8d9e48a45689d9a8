#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <boost/json/monotonic_resource.hpp>
#include <boost/json/value.hpp>

#include "AttributeDraft.h"
#include "AttributeRegistry.h"

namespace Tavrine
{

/// What a registry's text holds besides its attributes, which are handed over one by
/// one and are never in memory together.
struct RegistryLists
{
    RegistryLists() = default;
    RegistryLists(const RegistryLists&) = delete;
    RegistryLists& operator=(const RegistryLists&) = delete;

    struct List
    {
        std::size_t Most;
        /// Of all elements; the first `Most` of them are kept.
        std::size_t Count = 0;
        std::vector<boost::json::value> Kept = {};
    };

    /// Of the elements that are kept; given back at one stroke.
    boost::json::monotonic_resource Memory;
    List Menus = {MaxRegistryMenus};
    List Dependencies = {MaxRegistryDependencies};
};

struct AttributeActions
{
    /// The list begins; what was handed over before does not count.
    std::function<void()> Begin;
    /// An element; nullptr for one that is no object. The draft is filled anew when this has returned.
    std::function<void(AttributeDraft* attribute)> Take;
};

/// Reads a registry's text. Of several members of one name the last one counts, as usual
/// for JSON.
/// @return the cause where it is no registry; empty for success.
std::string ReadRegistryText(std::string_view text, RegistryLists& lists, const AttributeActions& attributes);

} // namespace Tavrine
