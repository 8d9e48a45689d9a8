#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

namespace Tavrine::Tool
{

/// What a registry says in words about one setting. Empty texts are those that it lacks.
struct RegistrySetting
{
    std::string Name;
    std::string Type;
    std::string DisplayName;
    std::string HelpText;
    std::string WarningText;
    /// Names and display names of its values.
    std::vector<std::string> ValueTexts;
    /// The registry's own object; lives as long as the document.
    const boost::json::object* Members = nullptr;
};

struct SettingRelations
{
    std::vector<std::string> DependsOn;
    std::vector<std::string> NeededBy;
};

/// An attribute registry (DSP8010, AttributeRegistry schema) as a person looks at it.
class RegistryDocument
{
  public:
    RegistryDocument() = default;
    RegistryDocument(const RegistryDocument&) = delete;
    RegistryDocument& operator=(const RegistryDocument&) = delete;

    /// @return false when the text is no registry.
    bool Read(const std::string& text);

    /// In the order of the registry; of several with one name the first.
    const std::vector<RegistrySetting>& Settings() const { return m_Settings; }
    /// Null for an unknown name.
    const RegistrySetting* Find(const std::string& name) const;

    /// Sorts settings that dependencies connect with this one (their names, in any
    /// order) by the direction; one that goes both ways is in both lists.
    SettingRelations Sort(const std::string& name, const std::vector<std::string>& related) const;

  private:
    struct Dependency
    {
        std::vector<std::string> From;
        /// One of the two is empty.
        std::string Attribute;
        std::optional<std::string> MenuPath;
    };

    void ReadSettings(const boost::json::object& entries);
    void ReadDependencies(const boost::json::object& entries);
    bool Forces(const Dependency& dependency, const std::string& name) const;

    /// In memory of its own, which is given back at one stroke.
    std::optional<boost::json::value> m_Document;
    std::vector<RegistrySetting> m_Settings;
    std::map<std::string, std::size_t> m_Index;
    /// By setting, normalised.
    std::map<std::string, std::string> m_MenuPaths;
    std::vector<Dependency> m_Dependencies;
};

} // namespace Tavrine::Tool
