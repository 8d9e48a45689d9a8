#pragma once

#include <algorithm>
#include <array>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <boost/json/parse.hpp>

#include "SharedData.h"

namespace testdata
{

/// A setting of a machine with a value that it does not have and may be given.
struct ChangeableSetting
{
    std::string Name;
    std::string Now;
    std::string Other;
};

/// What a machine's files say of itself.
class MachineFiles
{
  public:
    explicit MachineFiles(const std::filesystem::path& folder)
        : m_Bios(boost::json::parse(ReadFile(folder / "bios.json"))),
          m_Registry(boost::json::parse(ReadFile(folder / "registry.en.json")))
    {
    }

    bool HasSettingsObject() const { return m_Bios.as_object().contains("@Redfish.Settings"); }

    /// Its enumerations that no flag of the registry locks; a dependency may all the same.
    std::vector<ChangeableSetting> Changeable() const
    {
        std::vector<ChangeableSetting> settings;
        for (const auto& entry : m_Registry.at("RegistryEntries").at("Attributes").as_array())
        {
            const boost::json::object& attribute = entry.as_object();
            const std::string name(attribute.at("AttributeName").as_string());
            const boost::json::value* now = m_Bios.at("Attributes").as_object().if_contains(name);
            if (attribute.at("Type") != "Enumeration" || IsLocked(attribute) || now == nullptr || !now->is_string())
            {
                continue;
            }
            std::vector<std::string> values;
            for (const auto& value : attribute.at("Value").as_array())
            {
                values.emplace_back(value.at("ValueName").as_string());
            }
            const std::string text(now->as_string());
            const auto other = std::find_if(values.begin(), values.end(), [&](const auto& one) { return one != text; });
            if (other != values.end() && std::find(values.begin(), values.end(), text) != values.end())
            {
                settings.push_back({name, text, *other});
            }
        }
        return settings;
    }

    /// Pairs of settings, the second of which depends on the first.
    std::vector<std::pair<std::string, std::string>> Dependencies() const
    {
        std::vector<std::pair<std::string, std::string>> pairs;
        const boost::json::value* list = m_Registry.at("RegistryEntries").as_object().if_contains("Dependencies");
        for (const auto& entry : list != nullptr ? list->as_array() : boost::json::array())
        {
            const boost::json::object& dependency = entry.at("Dependency").as_object();
            for (const auto& from : dependency.at("MapFrom").as_array())
            {
                const std::pair<std::string, std::string> pair(from.at("MapFromAttribute").as_string(),
                                                               dependency.at("MapToAttribute").as_string());
                if (pair.first != pair.second && std::find(pairs.begin(), pairs.end(), pair) == pairs.end())
                {
                    pairs.push_back(pair);
                }
            }
        }
        return pairs;
    }

  private:
    static bool IsLocked(const boost::json::object& attribute)
    {
        constexpr std::array locks = {"ReadOnly", "Immutable", "GrayOut", "Hidden", "WriteOnly"};
        const bool locked = std::any_of(locks.begin(), locks.end(),
                                        [&](const char* lock)
                                        {
                                            const boost::json::value* flag = attribute.if_contains(lock);
                                            return flag != nullptr && flag->is_bool() && flag->get_bool();
                                        });
        return locked || attribute.contains("Oem"); // which may make it a protected one
    }

    boost::json::value m_Bios;
    boost::json::value m_Registry;
};

} // namespace testdata
