#include "AttributeRules.h"

#include "JsonFile.h"
#include "Scalars.h"

#include <algorithm>
#include <boost/json/array.hpp>

namespace bmcsim
{
namespace
{

namespace json = boost::json;

constexpr std::string_view WriteLocks[] = {"ReadOnly", "Immutable", "GrayOut", "Hidden"};

bool IsFlag(std::string_view property)
{
    return property == "WriteOnly" ||
           std::find(std::begin(WriteLocks), std::end(WriteLocks), property) != std::end(WriteLocks);
}

/// The registry that the Bios resource names; of several languages any, since they
/// differ in texts alone.
const json::object* FindRegistry(const Machine& machine)
{
    const std::string name = machine.Bios ? FindText(*machine.Bios, "AttributeRegistry") : std::string();
    const json::object* any = nullptr;
    for (const auto& [path, resource] : machine.Resources)
    {
        const json::object* entries = FindObject(resource, "RegistryEntries");
        if (entries == nullptr || FindArray(*entries, "Attributes") == nullptr)
        {
            continue;
        }
        if (FindText(resource, "Id") == name)
        {
            return entries;
        }
        any = entries;
    }
    return any;
}

bool IsTrue(const json::object& entry, std::string_view key)
{
    const json::value* value = entry.if_contains(key);
    return value != nullptr && ScalarFlag(*value);
}

bool OrderSuits(const std::string& condition, long double left, long double right)
{
    return condition == "GTR"   ? left > right
           : condition == "LSS" ? left < right
           : condition == "GEQ" ? left >= right
                                : condition == "LEQ" && left <= right;
}

/// "./Network" is around "./Network/Iscsi" and around itself.
bool IsAround(std::string_view menu, std::string_view path)
{
    return !menu.empty() && path.starts_with(menu) &&
           (menu.back() == '/' || path.size() == menu.size() || path[menu.size()] == '/');
}

template <typename Take> void ForEachObject(const json::object& entries, std::string_view key, const Take& take)
{
    if (const json::array* list = FindArray(entries, key))
    {
        for (const json::value& element : *list)
        {
            if (const json::object* object = element.if_object())
            {
                take(*object);
            }
        }
    }
}

} // namespace

AttributeRules::AttributeRules(const Machine& machine)
{
    const json::object* entries = FindRegistry(machine);
    if (entries == nullptr)
    {
        return;
    }
    m_HasRegistry = true;
    ForEachObject(*entries, "Attributes",
                  [this](const json::object& entry) { m_Entries.emplace(FindText(entry, "AttributeName"), &entry); });
    ForEachObject(*entries, "Menus", [this](const json::object& entry) { TakeMenu(entry); });
    ForEachObject(*entries, "Dependencies", [this](const json::object& entry) { TakeDependency(entry); });
}

void AttributeRules::TakeMenu(const json::object& entry)
{
    m_Menus.push_back({FindText(entry, "MenuName"), FindText(entry, "MenuPath"), &entry});
}

void AttributeRules::TakeDependency(const json::object& entry)
{
    const json::object* body = FindObject(entry, "Dependency");
    const json::value* value = body != nullptr ? body->if_contains("MapToValue") : nullptr;
    if (value == nullptr || FindText(*body, "MapToProperty") == "CurrentValue")
    {
        return;
    }
    Dependency dependency{{}, FindText(*body, "MapToAttribute"), FindText(*body, "MapToProperty"), value};
    ForEachObject(*body, "MapFrom",
                  [&dependency](const json::object& term)
                  {
                      dependency.Terms.push_back({FindText(term, "MapFromAttribute"), FindText(term, "MapFromProperty"),
                                                  FindText(term, "MapFromCondition"), term.if_contains("MapFromValue"),
                                                  FindText(term, "MapTerms") == "OR"});
                  });
    m_Dependencies.push_back(std::move(dependency));
}

const json::object* AttributeRules::Entry(std::string_view name) const
{
    const auto found = m_Entries.find(name);
    return found != m_Entries.end() ? found->second : nullptr;
}

bool AttributeRules::IsSecret(std::string_view name) const
{
    const json::object* entry = Entry(name);
    return entry != nullptr && FindText(*entry, "Type") == "Password";
}

bool AttributeRules::IsOrder(std::string_view name) const
{
    const json::object* entry = Entry(name);
    return entry != nullptr && IsTrue(*entry, "WriteOnly");
}

bool AttributeRules::IsFixed(std::string_view name) const
{
    const json::object* entry = Entry(name);
    return entry != nullptr && (IsTrue(*entry, "ReadOnly") || IsTrue(*entry, "Immutable"));
}

RulesNow::RulesNow(const AttributeRules& rules, ValueLookup values) : m_Rules(rules), m_Values(std::move(values))
{
    SpreadMenuFlags();
    for (unsigned int round = 0; round < MaxRounds; ++round)
    {
        Forced next = Round();
        if (next == m_Forced)
        {
            break;
        }
        m_Forced = std::move(next);
        SpreadMenuFlags();
    }
}

void RulesNow::SpreadMenuFlags()
{
    m_FlaggedMenus.clear();
    for (const std::string_view flag : WriteLocks)
    {
        for (const AttributeRules::Menu& menu : m_Rules.m_Menus)
        {
            const json::value* forced = ForcedValue(menu.Name, flag);
            if (forced != nullptr ? ScalarFlag(*forced) : IsTrue(*menu.Entry, flag))
            {
                m_FlaggedMenus[std::string(flag)].push_back(menu.Path);
            }
        }
    }
}

RulesNow::Forced RulesNow::Round() const
{
    Forced forced;
    for (const AttributeRules::Dependency& dependency : m_Rules.m_Dependencies)
    {
        if (!Holds(dependency))
        {
            continue;
        }
        const json::value*& value = forced[{dependency.Target, dependency.Property}];
        // A lock that one dependency sets is not lifted by another.
        if (value == nullptr || !IsFlag(dependency.Property) || !ScalarFlag(*value))
        {
            value = dependency.Value;
        }
    }
    return forced;
}

bool RulesNow::Holds(const AttributeRules::Dependency& dependency) const
{
    bool holds = false;
    bool first = true;
    for (const AttributeRules::Term& term : dependency.Terms)
    {
        const bool termHolds = Holds(term);
        holds = first ? termHolds : term.Or ? (holds || termHolds) : (holds && termHolds);
        first = false;
    }
    return holds;
}

bool RulesNow::Holds(const AttributeRules::Term& term) const
{
    const json::value flag = IsFlag(term.Property) && Flag(term.Attribute, term.Property);
    const json::value* now = term.Property == "CurrentValue" ? m_Values(term.Attribute)
                             : IsFlag(term.Property)         ? &flag
                                                             : Property(term.Attribute, term.Property);
    const auto left = now != nullptr ? ScalarText(*now) : std::nullopt;
    const auto right = term.Value != nullptr ? ScalarText(*term.Value) : std::nullopt;
    if (term.Condition == "EQU" || term.Condition == "NEQ")
    {
        // Of a value that is not there nothing can be said, not even that it differs.
        return (left || !right) && (left == right) == (term.Condition == "EQU");
    }
    const auto leftNumber = left ? ScalarNumber(*now) : std::nullopt;
    const auto rightNumber = right ? ScalarNumber(*term.Value) : std::nullopt;
    return leftNumber && rightNumber && OrderSuits(term.Condition, *leftNumber, *rightNumber);
}

const json::value* RulesNow::ForcedValue(std::string_view name, std::string_view property) const
{
    const auto found = m_Forced.find(std::pair<std::string, std::string>(name, property));
    return found != m_Forced.end() ? found->second : nullptr;
}

const json::value* RulesNow::Property(std::string_view name, std::string_view property) const
{
    const json::value* forced = ForcedValue(name, property);
    const json::object* entry = m_Rules.Entry(name);
    return forced != nullptr ? forced : entry != nullptr ? entry->if_contains(property) : nullptr;
}

bool RulesNow::Flag(std::string_view name, std::string_view flag) const
{
    const json::value* own = Property(name, flag);
    if (own != nullptr && ScalarFlag(*own))
    {
        return true;
    }
    const json::object* entry = m_Rules.Entry(name);
    const auto menus = m_FlaggedMenus.find(flag);
    if (entry == nullptr || menus == m_FlaggedMenus.end())
    {
        return false;
    }
    const std::string path = FindText(*entry, "MenuPath");
    return std::any_of(menus->second.begin(), menus->second.end(),
                       [&path](std::string_view menu) { return IsAround(menu, path); });
}

bool RulesNow::IsWritable(std::string_view name) const
{
    return std::none_of(std::begin(WriteLocks), std::end(WriteLocks),
                        [&](std::string_view lock) { return Flag(name, lock); });
}

} // namespace bmcsim
