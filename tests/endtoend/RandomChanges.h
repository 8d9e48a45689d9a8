#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <rapidcheck.h>

#include "ValueTypes.h"

namespace endtoend
{

/// A setting of an attribute registry (DSP8010) that can be written, and values that it
/// takes.
struct WritableSetting
{
    std::string Name;
    rc::Gen<std::string> Value;
    /// It belongs to one system alone.
    bool Unique = false;
};

/// Those that the BMC shows a value of and can be brought back to it; none where it has no place for changes.
/// @param machineDir  folder with bios.json and registry.en.json.
std::vector<WritableSetting> WritableSettings(const std::filesystem::path& machineDir);

/// New values of some of the settings, by name.
rc::Gen<Tavrine::SettingStringMap> RandomChanges(std::vector<WritableSetting> settings, std::size_t most);

} // namespace endtoend
