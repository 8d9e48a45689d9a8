#pragma once

#include <boost/json/object.hpp>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace bmcsim
{

/// One simulated server as its files describe it. Not changed once it is loaded.
struct Machine
{
    std::string SystemId = "1";
    /// The Bios resource, with the "@odata.etag" that its file gives it; empty where the machine has none.
    std::optional<boost::json::object> Bios;
    /// Where the Bios resource says that it stands.
    std::string BiosPath;
    /// The settings object as a file gives it; empty where it is to be made.
    std::optional<boost::json::object> Settings;
    /// Where the Bios resource says that its settings object stands; empty: nowhere.
    std::string SettingsPath;
    /// Attributes behind the OEM actions; empty where the machine has no such.
    std::optional<boost::json::object> Protected;
    /// Everything else that can be read, by its path.
    std::map<std::string, boost::json::object> Resources;
    /// Tells the states of different machines apart.
    std::string Identity() const;
};

/// @param folder  with bios.json and its companions, or a tree of index.json files.
///                Empty: the built-in machine.
/// @param error  one line that names the file or folder.
std::optional<Machine> LoadMachine(const std::string& folder, std::string& error);

/// A machine made up of so many attributes.
std::optional<Machine> GenerateMachine(unsigned int attributes, std::string& error);

/// One form for every way of writing a path: small letters, no doubled and no
/// trailing slashes.
std::string NormalPath(std::string_view path);
/// The machine's resource at a path, however the two are written; null where there is none.
const boost::json::object* FindResource(const Machine& machine, std::string_view path);
/// "3" of "/redfish/v1/TaskService/Tasks/3/".
std::string LastSegment(std::string_view path);

} // namespace bmcsim
