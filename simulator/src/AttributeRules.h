#pragma once

#include "Machine.h"

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>
#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace bmcsim
{

/// The value of an attribute; null where there is none.
using ValueLookup = std::function<const boost::json::value*(std::string_view name)>;

/// What a machine's attribute registry (DSP8010) says of its attributes. Points into
/// the machine, which must outlive it.
class AttributeRules
{
  public:
    explicit AttributeRules(const Machine& machine);

    /// Without a registry nothing can be said of any attribute.
    bool HasRegistry() const { return m_HasRegistry; }
    bool Knows(std::string_view name) const { return Entry(name) != nullptr; }
    /// A value that is never told.
    bool IsSecret(std::string_view name) const;
    /// What can only be written is an order to the firmware and has its former value
    /// again once it was carried out.
    bool IsOrder(std::string_view name) const;
    /// Facts about the machine, which no load of defaults touches.
    bool IsFixed(std::string_view name) const;
    /// The registry's own entry; null where there is none.
    const boost::json::object* Entry(std::string_view name) const;

  private:
    friend class RulesNow;

    struct Term
    {
        std::string Attribute;
        std::string Property;
        std::string Condition;
        const boost::json::value* Value = nullptr;
        bool Or = false;
    };
    struct Dependency
    {
        std::vector<Term> Terms;
        std::string Target;
        std::string Property;
        const boost::json::value* Value = nullptr;
    };
    struct Menu
    {
        std::string Name;
        std::string Path;
        const boost::json::object* Entry = nullptr;
    };

    void TakeDependency(const boost::json::object& entry);
    void TakeMenu(const boost::json::object& entry);

    bool m_HasRegistry = false;
    std::map<std::string, const boost::json::object*, std::less<>> m_Entries;
    std::vector<Menu> m_Menus;
    std::vector<Dependency> m_Dependencies;
};

/// The properties of all attributes as the registry's dependencies shape them over
/// given values. Values themselves are facts: a dependency on "CurrentValue" changes
/// none.
class RulesNow
{
  public:
    /// Conditions may form circles; what stands after so many rounds is taken.
    static constexpr unsigned int MaxRounds = 16;

    /// @param rules  must outlive this object, as must what `values` leads to.
    RulesNow(const AttributeRules& rules, ValueLookup values);

    /// Null where neither the registry nor a dependency gives the property.
    const boost::json::value* Property(std::string_view name, std::string_view property) const;
    /// A flag of the attribute itself or of a menu around it.
    bool Flag(std::string_view name, std::string_view flag) const;
    bool IsWritable(std::string_view name) const;

  private:
    /// By attribute or menu, and property.
    using Forced = std::map<std::pair<std::string, std::string>, const boost::json::value*, std::less<>>;

    const boost::json::value* ForcedValue(std::string_view name, std::string_view property) const;
    Forced Round() const;
    void SpreadMenuFlags();
    bool Holds(const AttributeRules::Dependency& dependency) const;
    bool Holds(const AttributeRules::Term& term) const;

    const AttributeRules& m_Rules;
    const ValueLookup m_Values;
    Forced m_Forced;
    /// Flag to the paths of the menus that have it.
    std::map<std::string, std::vector<std::string_view>, std::less<>> m_FlaggedMenus;
};

} // namespace bmcsim
