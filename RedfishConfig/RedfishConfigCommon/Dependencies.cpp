#include "Dependencies.h"

#include <algorithm>
#include <compare>
#include <optional>
#include <utility>

#include "CodePoints.h"
#include "OrderedLookup.h"

namespace Tavrine
{

namespace
{

constexpr std::size_t MaxConditionText = 400;

bool OrderSuits(TermCondition condition, std::strong_ordering order)
{
    switch (condition)
    {
    case TermCondition::Greater:
        return order > 0;
    case TermCondition::Less:
        return order < 0;
    case TermCondition::GreaterOrEqual:
        return order >= 0;
    default:
        return order <= 0;
    }
}

const char* ConditionWords(TermCondition condition)
{
    static constexpr std::array words = {" is ",       " is not ",      " is above ",
                                         " is below ", " is at least ", " is at most "};
    return words[static_cast<std::size_t>(condition)];
}

/// By attribute: whether some dependency forces or reads it.
std::vector<bool> NamedByDependencies(const AttributeRegistry& registry)
{
    std::vector<bool> named(registry.Attributes.size());
    const auto name = [&](std::size_t attribute)
    {
        if (attribute != NoIndex)
        {
            named[attribute] = true;
        }
    };
    for (const RegistryDependency& dependency : registry.Dependencies)
    {
        name(dependency.Attribute);
        for (const DependencyTerm& term : dependency.Terms)
        {
            name(term.Attribute);
        }
    }
    return named;
}

} // namespace

DependencyEvaluation::DependencyEvaluation(const SettingModel& model, const SettingValueMap& values)
    : m_Model(&model), m_Values(model.Registry().Attributes.size()), m_Named(NamedByDependencies(model.Registry()))
{
    OrderedLookup lookup(values); // of the other names, too, since a registry often has them in this order
    for (std::size_t attribute = 0; attribute < m_Values.size(); ++attribute)
    {
        const auto found = lookup.Find(m_Model->Attribute(attribute).Name());
        if (m_Named[attribute])
        {
            m_Values[attribute].Value = ReportedValue(attribute, found != values.end() ? &found->second : nullptr);
        }
    }
    RunRounds(nullptr);
}

DependencyEvaluation::DependencyEvaluation(const DependencyEvaluation& before, const SettingValueMap& changes)
    : m_Model(before.m_Model), m_Values(before.m_Values), m_Named(before.m_Named)
{
    OrderedLookup lookup(changes);
    for (std::size_t attribute = 0; attribute < m_Values.size(); ++attribute)
    {
        const auto changed = lookup.Find(m_Model->Attribute(attribute).Name());
        if (m_Named[attribute] && changed != changes.end())
        {
            m_Values[attribute] = {ScalarFromValue(changed->second), true};
        }
    }
    RunRounds(changes.empty() ? nullptr : &before);
}

void DependencyEvaluation::MoveValues(const std::vector<std::string>& names, const SettingValueMap& values)
{
    bool moved = false;
    for (const std::string& name : names)
    {
        const auto found = values.find(name);
        const OptionalVar* reported = found != values.end() ? &found->second : nullptr;
        for (const std::size_t attribute : m_Model->AttributesNamed(name))
        {
            if (m_Named[attribute])
            {
                m_Values[attribute].Value = ReportedValue(attribute, reported);
                moved = true;
            }
        }
    }
    if (moved)
    {
        RunRounds(nullptr);
    }
}

RegistryScalar DependencyEvaluation::ReportedValue(std::size_t attribute, const OptionalVar* reported) const
{
    return reported != nullptr ? ScalarFromValue(*reported)
                               : PropertyOfRegistry(m_Model->Attribute(attribute), SettingProperty::CurrentValue);
}

void DependencyEvaluation::RunRounds(const DependencyEvaluation* before)
{
    m_Winners.assign(m_Model->Slots().size(), NoIndex);
    m_MenuFlags.assign(m_Model->Registry().Menus.size(), MenuFlags());
    m_Settled = false;
    m_Rounds = 0;
    m_TermsRead = 0;
    SpreadMenuFlags();
    while (!m_Settled && m_Rounds < MaxRounds)
    {
        m_Settled = !RunRound(before);
        ++m_Rounds;
    }
}

/// @return whether anything moved.
bool DependencyEvaluation::RunRound(const DependencyEvaluation* before)
{
    const std::vector<RegistryDependency>& dependencies = m_Model->Registry().Dependencies;
    std::vector<std::size_t> winners(m_Winners.size(), NoIndex);
    for (std::size_t index = 0; index < dependencies.size(); ++index)
    {
        std::size_t& winner = winners[m_Model->SlotOfDependency(index)];
        if (MayForceValue(dependencies[index], before) && Holds(dependencies[index]) && Beats(index, winner))
        {
            winner = index;
        }
    }
    KeepFormerValues(winners);
    const bool moved = winners != m_Winners;
    m_Winners.swap(winners);
    SpreadMenuFlags();
    return moved;
}

/// Giving a value is an act: it stays done when the value makes its own condition
/// false, as with two ports that must not share one address.
void DependencyEvaluation::KeepFormerValues(std::vector<std::size_t>& winners) const
{
    for (std::size_t slot = 0; slot < winners.size(); ++slot)
    {
        if (winners[slot] == NoIndex && m_Model->Slots()[slot] == SettingProperty::CurrentValue)
        {
            winners[slot] = m_Winners[slot];
        }
    }
}

bool DependencyEvaluation::MayForceValue(const RegistryDependency& dependency, const DependencyEvaluation* before) const
{
    if (dependency.Property != SettingProperty::CurrentValue)
    {
        return true;
    }
    const KnownValue& known = m_Values[dependency.Attribute];
    if (known.Changed || before == nullptr || !HasValue(known.Value))
    {
        return !known.Changed && !HasValue(known.Value);
    }
    return std::any_of(dependency.Terms.begin(), dependency.Terms.end(),
                       [&](const DependencyTerm& term)
                       {
                           return term.Attribute != NoIndex && term.Property &&
                                  Now(term.Attribute, *term.Property) != before->Now(term.Attribute, *term.Property);
                       });
}

bool DependencyEvaluation::Holds(const RegistryDependency& dependency)
{
    bool holds = false;
    for (std::size_t index = 0; index < dependency.Terms.size(); ++index)
    {
        const DependencyTerm& term = dependency.Terms[index];
        ++m_TermsRead;
        const bool termHolds = Holds(term);
        holds = index == 0 ? termHolds : term.Or ? (holds || termHolds) : (holds && termHolds);
    }
    return holds;
}

bool DependencyEvaluation::Holds(const DependencyTerm& term) const
{
    if (term.Attribute == NoIndex || !term.Property)
    {
        return false;
    }
    const RegistryScalar& now = Now(term.Attribute, *term.Property);
    // Nothing can be said of a value that is not known, not even that it differs.
    if (!HasValue(now) && HasValue(term.Value))
    {
        return false;
    }
    if (term.Condition == TermCondition::Equal || term.Condition == TermCondition::NotEqual)
    {
        return SameScalar(now, term.Value) == (term.Condition == TermCondition::Equal);
    }
    const std::optional<std::strong_ordering> order = OrderScalars(now, term.Value);
    return order && OrderSuits(term.Condition, *order);
}

bool DependencyEvaluation::Beats(std::size_t dependency, std::size_t former) const
{
    if (former == NoIndex)
    {
        return true;
    }
    const RegistryDependency& challenger = m_Model->Registry().Dependencies[dependency];
    const RegistryDependency& holder = m_Model->Registry().Dependencies[former];
    if (IsFlag(challenger.Property))
    {
        return challenger.Value == RegistryScalar(true) && holder.Value == RegistryScalar(false);
    }
    return challenger.Value != holder.Value;
}

const RegistryDependency* DependencyEvaluation::WinnerOf(std::size_t slot) const
{
    return slot == NoIndex || m_Winners[slot] == NoIndex ? nullptr : &m_Model->Registry().Dependencies[m_Winners[slot]];
}

DependencyEvaluation::MenuFlag DependencyEvaluation::OwnFlag(std::size_t slot, bool ofRegistry) const
{
    const RegistryDependency* winner = WinnerOf(slot);
    return winner == nullptr ? MenuFlag{ofRegistry, NoIndex}
                             : MenuFlag{ScalarAsFlag(winner->Value).value_or(false), m_Winners[slot]};
}

void DependencyEvaluation::SpreadMenuFlags()
{
    const std::vector<RegistryMenu>& menus = m_Model->Registry().Menus;
    for (std::size_t menu = 0; menu < menus.size(); ++menu)
    {
        for (const SettingProperty flag : FlagProperties)
        {
            const auto at = static_cast<std::size_t>(flag);
            MenuFlag own = OwnFlag(m_Model->SlotOfMenu(menu, flag), menus[menu].Flags[at]);
            if (!own.On && menus[menu].Parent != NoIndex)
            {
                own = m_MenuFlags[menus[menu].Parent][at];
            }
            m_MenuFlags[menu][at] = own;
        }
    }
}

DependencyEvaluation::MenuFlag DependencyEvaluation::FlagWithCause(std::size_t attribute, SettingProperty flag) const
{
    const RegistryAttribute& registered = m_Model->Attribute(attribute);
    const auto at = static_cast<std::size_t>(flag);
    const MenuFlag own = OwnFlag(m_Model->SlotOfAttribute(attribute, flag), registered.Flags.test(at));
    return own.On || registered.Menu == NoIndex ? own : m_MenuFlags[registered.Menu][at];
}

bool DependencyEvaluation::Flag(std::size_t attribute, SettingProperty flag) const
{
    return FlagWithCause(attribute, flag).On;
}

const RegistryScalar& DependencyEvaluation::Now(std::size_t attribute, SettingProperty property) const
{
    if (IsFlag(property))
    {
        return FlagScalar(Flag(attribute, property));
    }
    if (const RegistryDependency* winner = WinnerOf(m_Model->SlotOfAttribute(attribute, property)))
    {
        return winner->Value;
    }
    return property == SettingProperty::CurrentValue ? m_Values[attribute].Value
                                                     : PropertyOfRegistry(m_Model->Attribute(attribute), property);
}

const RegistryDependency* DependencyEvaluation::Cause(std::size_t attribute, SettingProperty property) const
{
    if (!IsFlag(property))
    {
        return WinnerOf(m_Model->SlotOfAttribute(attribute, property));
    }
    const MenuFlag flag = FlagWithCause(attribute, property);
    return flag.On && flag.Cause != NoIndex ? &m_Model->Registry().Dependencies[flag.Cause] : nullptr;
}

bool DependencyEvaluation::MayForce(std::size_t attribute) const
{
    const std::size_t menu = m_Model->Attribute(attribute).Menu;
    return m_Model->HasDependencies(attribute) ||
           (menu != NoIndex && std::any_of(m_MenuFlags[menu].begin(), m_MenuFlags[menu].end(),
                                           [](const MenuFlag& flag) { return flag.Cause != NoIndex; }));
}

std::string ConditionText(const RegistryDependency& dependency)
{
    std::string text;
    for (const DependencyTerm& term : dependency.Terms)
    {
        text += text.empty() ? "" : term.Or ? " or " : " and ";
        text += term.AttributeName;
        if (term.Property && *term.Property != SettingProperty::CurrentValue)
        {
            text.append(" ").append(PropertyWord(*term.Property));
        }
        text += ConditionWords(term.Condition) + ScalarText(term.Value);
        if (text.size() > MaxConditionText)
        {
            break;
        }
    }
    return CutText(std::move(text), MaxConditionText);
}

} // namespace Tavrine
