#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

namespace soak
{

/// A setting that no dependency and no lock touches, so that it is known what a change of it does.
struct Setting
{
    std::string Name;
    boost::json::value Default;
    /// Some of what it can hold, the ends of its range included.
    std::vector<boost::json::value> Values;
};

/// Those of a registry that a machine with these values has.
std::vector<Setting> FreeSettings(const boost::json::value& registry, const boost::json::object& inForce);

/// A value as a caller of the library writes it.
std::string TextOf(const boost::json::value& value);

/// Changes that wait in an object of the library.
using Queue = std::map<std::string, boost::json::value>;

/// The one setting that asks the firmware for its defaults at the next start.
inline constexpr const char* DefaultsWish = "SystemRecovery_PostLoadSetupDefault";

/// What should be on the BMC.
struct Model
{
    boost::json::object InForce;
    boost::json::object Pending;
    /// Those that only the actions for protected settings reach.
    boost::json::object ProtectedInForce;
    boost::json::object ProtectedPending;
    bool DefaultsDue = false;
    std::optional<std::string> File;

    /// The reset action of the Bios resource.
    void ResetBios();
    /// A start of the system. @return whether defaults were loaded.
    bool Restart(const std::vector<Setting>& settings, const std::vector<Setting>& guarded);
    /// What differs from what is in force, name to both texts.
    std::map<std::string, std::pair<std::string, std::string>> Waiting() const;
};

/// Where changes of a kind of settings go, and what tells that they were sent.
struct Place
{
    const char* Request;
    boost::json::object Model::*InForce;
    boost::json::object Model::*Pending;
};

/// The names under which two objects differ, with both values; for messages.
std::string Differences(const boost::json::object& expected, const boost::json::object& found);

} // namespace soak
