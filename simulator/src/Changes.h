#pragma once

#include "AttributeRules.h"
#include "RedfishErrors.h"
#include "State.h"

#include <boost/json/object.hpp>
#include <string>
#include <vector>

namespace bmcsim
{

/// Which attributes a change is about: those of the Bios resource, or those behind
/// the OEM actions.
enum class Place
{
    Standard,
    Protected,
};

/// Judges a change as it would leave the machine: over the values in force, the
/// pending ones and all of the change itself.
/// @return one notice for each attribute that cannot be changed so; empty when the
/// change is good.
std::vector<Notice> CheckChange(const AttributeRules& rules, const Values& values, Place place,
                                const boost::json::object& change);

/// Enters a good change as pending. Secrets are not kept, not even here.
void StageChange(const AttributeRules& rules, Values& values, Place place, const boost::json::object& change);

/// What a start of the system does: defaults, where their load is pending, then the
/// pending values, which may have become bad since they were taken. The outcome is
/// told with the time. Nothing pending: nothing happens.
void ApplyPending(const AttributeRules& rules, Values& values);

/// The present time as Redfish writes it, in milliseconds.
std::string UtcNow();

} // namespace bmcsim
