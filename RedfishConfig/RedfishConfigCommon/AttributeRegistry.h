#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "RedfishConfigSettingInfo.h"
#include "RegistryScalar.h"
#include "SettingProperty.h"

namespace Tavrine
{

constexpr std::size_t NoIndex = static_cast<std::size_t>(-1);

/// One of the values that an enumeration takes.
struct RegistryValueName
{
    std::string Name;
    std::optional<std::string> DisplayName;

    const std::string& Shown() const { return DisplayName ? *DisplayName : Name; }
};

/// One attribute as the registry writes it, no dependency applied. Registries have
/// thousands of them, so that only what is given takes room.
struct RegistryAttribute
{
    const std::string& Name() const { return *Key; }

    /// The key of this attribute in AttributeRegistry::AttributeIndex.
    const std::string* Key = nullptr;
    std::optional<std::string> Type;
    std::optional<std::string> MenuPath;
    /// Those that are given and no flags, in the order of SettingProperty; see PropertyOfRegistry.
    std::vector<std::pair<SettingProperty, RegistryScalar>> Properties;
    /// In the order of the registry, each name once.
    std::vector<RegistryValueName> ValueNames;
    /// The nearest menu that holds the setting, and whether it is the very one
    /// that the attribute's "MenuPath" names.
    std::size_t Menu = NoIndex;
    bool MenuIsKnown = false;

    bool IsSystemUnique = false;
    bool IsProtected = false;
    std::bitset<FlagProperties.size()> Flags;
};

/// The public record of an attribute, numbers narrowed.
RedfishConfigSettingInfoStru InfoOf(const RegistryAttribute& attribute);

struct RegistryMenu
{
    std::string Name;
    /// Normalised; empty for the root menu.
    std::string Path;
    std::string DisplayName;
    /// Indexed by SettingProperty; registries give three of the five.
    std::array<bool, FlagProperties.size()> Flags{};
    std::size_t Parent = NoIndex;
};

enum class TermCondition : std::uint8_t
{
    Equal,
    NotEqual,
    Greater,
    Less,
    GreaterOrEqual,
    LessOrEqual,
};

struct DependencyTerm
{
    /// NoIndex for a name that is no attribute: the term is false.
    std::size_t Attribute = NoIndex;
    std::string AttributeName;
    /// Empty for a property that settings do not have: the term is false.
    std::optional<SettingProperty> Property;
    TermCondition Condition = TermCondition::Equal;
    RegistryScalar Value;
    /// Joined by OR, else by AND, to what stands before it.
    bool Or = false;
};

/// "Map" dependency: when the terms hold, the property of an attribute, or of all
/// attributes of a menu and the menus below it, has this value.
struct RegistryDependency
{
    std::vector<DependencyTerm> Terms;
    /// One of the two is NoIndex.
    std::size_t Attribute = NoIndex;
    std::size_t Menu = NoIndex;
    SettingProperty Property = SettingProperty::ReadOnly;
    RegistryScalar Value;
};

/// An attribute registry (DSP8010, AttributeRegistry schema), read once. Names
/// are unique: the first of several attributes or menus of one name or path wins.
struct AttributeRegistry
{
    AttributeRegistry() = default;
    /// Attributes point to keys of the index, which a copy would leave behind.
    AttributeRegistry(AttributeRegistry&&) = default;
    AttributeRegistry& operator=(AttributeRegistry&&) = default;

    std::vector<RegistryAttribute> Attributes;
    /// Parents stand before their children.
    std::vector<RegistryMenu> Menus;
    std::vector<RegistryDependency> Dependencies;
    std::unordered_map<std::string, std::size_t> AttributeIndex;
};

/// What was left out of a registry while reading it: the first lines, and how
/// many more there would be.
struct RegistryNotes
{
    std::vector<std::string> Lines;
    std::size_t More = 0;

    void Add(const std::string& line, std::size_t times = 1);
    void Add(const RegistryNotes& others);
};

/// More than these are left out, with a note.
constexpr std::size_t MaxRegistryAttributes = 200'000;
constexpr std::size_t MaxRegistryMenus = 20'000;
constexpr std::size_t MaxRegistryDependencies = 200'000;
constexpr std::size_t MaxDependencyTerms = 64;
constexpr std::size_t MaxMenuDepth = 32;
/// Bytes of a menu's display name: the names of the menus below have it in front.
constexpr std::size_t MaxMenuName = 128;
constexpr std::size_t MaxRegistryDepth = 32;
constexpr std::size_t MaxRegistryBytes = std::size_t{128} << 20;

/// Reads a registry. Attributes without a name and dependencies that cannot be
/// understood are left out with a note; they never fail the whole.
/// @param error  the cause when the text is no registry; `registry` and `notes` are of no
///               meaning then.
bool ReadAttributeRegistry(std::string_view text, AttributeRegistry& registry, RegistryNotes& notes,
                           std::string& error);

/// "./A/B/", "/A/B" and "A//B" are "A/B"; the root is empty.
std::string NormalisedMenuPath(std::string_view path);

} // namespace Tavrine
