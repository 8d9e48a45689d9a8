#include "PatchContexts.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <variant>

#include "CodePoints.h"
#include "Log.h"
#include "OrderedLookup.h"
#include "ValueTexts.h"

namespace Tavrine
{

namespace
{

constexpr int CodeInvalidValue = 10;
constexpr int CodeNotChangeable = 18;
/// Settings of one call that get an evaluation of their own; later ones are judged by
/// the values in force.
constexpr std::size_t MostOwnEvaluations = 64;
constexpr std::size_t LeastOwnEvaluations = 4;
/// What those evaluations may cost together, in attributes and dependencies.
constexpr std::size_t OwnEvaluationBudget = 500'000;

std::size_t OwnEvaluations(const AttributeRegistry& registry)
{
    const std::size_t cost = registry.Attributes.size() + registry.Dependencies.size();
    return std::clamp(OwnEvaluationBudget / (cost + 1), LeastOwnEvaluations, MostOwnEvaluations);
}

struct Lock
{
    SettingProperty Flag;
    const char* Words;
};

constexpr std::array Locks = {
    Lock{SettingProperty::ReadOnly, "read-only"},
    Lock{SettingProperty::Immutable, "immutable"},
    Lock{SettingProperty::Hidden, "hidden"},
    Lock{SettingProperty::GrayOut, "grayed out"},
};

std::string Because(const DependencyEvaluation& evaluation, std::size_t attribute, SettingProperty property)
{
    const RegistryDependency* cause = evaluation.Cause(attribute, property);
    return cause != nullptr ? " because " + ConditionText(*cause) : "";
}

bool CallerSaw(const std::string& name, const std::vector<RedfishConfigSettingInfoStru>& unseen)
{
    const CaseInsensitiveComparator less;
    const auto place = std::lower_bound(unseen.begin(), unseen.end(), name,
                                        [&](const RedfishConfigSettingInfoStru& info, const std::string& wanted)
                                        { return less(*info.AttributeKey, wanted); });
    return place == unseen.end() || less(name, *place->AttributeKey);
}

/// @param unseen  numbers of `values` that the caller did not have, in the order of their names.
NumberForm FormOf(const RedfishConfigSetting& setting, const SettingValueMap& values,
                  const std::vector<RedfishConfigSettingInfoStru>& unseen, filterAction action)
{
    if (!setting.Options().HexValueMode || action == FilterDefaultOne || action == FilterDefaultAll)
    {
        return NumberForm::Decimal;
    }
    const auto current = values.find(setting.Attribute().Name());
    const bool converted = current != values.end() && current->second &&
                           std::holds_alternative<std::int64_t>(*current->second) && CallerSaw(current->first, unseen);
    return converted ? NumberForm::DecimalFromHex : NumberForm::Hexadecimal;
}

RedfishConfigResult RefusedValue(const WantedValue& wanted, const ValueRules& rules, const std::string& reason)
{
    const RegistryAttribute& attribute = *rules.Attribute;
    const std::string& name = attribute.Name();
    std::string message = "The new value is invalid: the setting " + name + " takes ";
    message += (CodePoints(wanted.Text) ? AcceptedWords(rules, wanted.Form) : "text in UTF-8") + reason + ".";
    const std::string meant = rules.Kind == SettingKind::Enumerate ? NameMeant(attribute, wanted.Text) : "";
    if (!meant.empty() && MayBeQuoted(attribute, meant))
    {
        message += " Did you mean " + meant + "?";
    }
    return {CodeInvalidValue, message, name};
}

} // namespace

std::string LockedWords(const DependencyEvaluation& evaluation, std::size_t attribute)
{
    std::string words;
    for (const Lock& lock : Locks)
    {
        if (evaluation.Flag(attribute, lock.Flag))
        {
            words += (words.empty() ? "" : ", and ") + (lock.Words + Because(evaluation, attribute, lock.Flag));
        }
    }
    return words;
}

WantedValue ReadWanted(const RedfishConfigSetting& setting, const std::string& text, const SettingValueMap& values,
                       const std::vector<RedfishConfigSettingInfoStru>& unseen, filterAction action)
{
    WantedValue wanted{&setting, text, KindOfValues(setting, values), FormOf(setting, values, unseen, action), {}};
    wanted.Value = ReadValue(wanted.Kind, setting.Attribute(), text, wanted.Form);
    return wanted;
}

RedfishConfigResult JudgeWanted(const WantedValue& wanted, const DependencyEvaluation& evaluation, std::string& context)
{
    const RedfishConfigSetting& setting = *wanted.Setting;
    const std::string& name = setting.Attribute().Name();
    const std::string locked = LockedWords(evaluation, setting.Index());
    if (!locked.empty())
    {
        return {CodeNotChangeable, "The setting " + name + " cannot be changed: it is " + locked + ".", name};
    }
    const ValueRules rules = RulesOf(setting, wanted.Kind, evaluation);
    if (!HasValue(wanted.Value))
    {
        return RefusedValue(wanted, rules, "");
    }
    std::string trouble;
    if (const std::optional<SettingProperty> broken = BrokenRule(rules, wanted.Value, trouble))
    {
        return RefusedValue(wanted, rules, Because(evaluation, setting.Index(), *broken));
    }
    if (!trouble.empty())
    {
        Log(4, __FILE__, __LINE__).Stream()
            << "Value expression of setting " << name << " is left to the BMC, since " << trouble;
    }
    if (wanted.Kind == SettingKind::Enumerate && setting.Attribute().ValueNames.empty())
    {
        Log(4, __FILE__, __LINE__).Stream()
            << "Setting " << name << " has no value names, so the BMC judges its value.";
    }
    context = JsonText(wanted.Value);
    return {0, "", ""};
}

JointEvaluation::JointEvaluation(const DependencyEvaluation& now, const std::vector<WantedValue>& wanted)
    : m_Model(now.Model()), m_Now(now), m_EvaluationsLeft(OwnEvaluations(m_Model.Registry()))
{
    auto place = m_Changes.begin();
    for (const WantedValue& one : wanted)
    {
        if (HasValue(one.Value))
        {
            place = PutNear(m_Changes, place, one.Setting->Attribute().Name(), ValueFromScalar(one.Value));
        }
    }
    FindSelfReaders();
    m_Joint = WithChanges();
    const std::size_t all = m_Changes.size();
    for (const WantedValue& one : wanted)
    {
        if (m_SelfReaders.count(one.Setting->Index()) == 0 && !LockedWords(*m_Joint, one.Setting->Index()).empty())
        {
            m_Changes.erase(one.Setting->Attribute().Name());
        }
    }
    if (m_Changes.size() != all)
    {
        m_Joint = WithChanges();
    }
}

std::unique_ptr<DependencyEvaluation> JointEvaluation::WithChanges() const
{
    return std::make_unique<DependencyEvaluation>(m_Now, m_Changes);
}

void JointEvaluation::FindSelfReaders()
{
    const AttributeRegistry& registry = m_Model.Registry();
    for (const RegistryDependency& dependency : registry.Dependencies)
    {
        for (const DependencyTerm& term : dependency.Terms)
        {
            bool reads = term.Attribute != NoIndex && term.Attribute == dependency.Attribute;
            std::size_t menu = term.Attribute != NoIndex ? registry.Attributes[term.Attribute].Menu : NoIndex;
            for (; dependency.Menu != NoIndex && menu != NoIndex && !reads; menu = registry.Menus[menu].Parent)
            {
                reads = menu == dependency.Menu;
            }
            if (reads)
            {
                m_SelfReaders.insert(term.Attribute);
            }
        }
    }
}

const DependencyEvaluation& JointEvaluation::For(const WantedValue& wanted)
{
    const bool readsItself = m_SelfReaders.count(wanted.Setting->Index()) != 0;
    if (!readsItself && m_Changes.size() != 1)
    {
        return *m_Joint;
    }
    const auto own = m_Changes.find(wanted.Setting->Attribute().Name());
    if (own != m_Changes.end() && m_Changes.size() == 1)
    {
        return m_Now;
    }
    if (own == m_Changes.end() || !readsItself)
    {
        return *m_Joint;
    }
    if (m_EvaluationsLeft == 0)
    {
        return m_Now;
    }
    --m_EvaluationsLeft;
    auto kept = m_Changes.extract(own);
    m_WithoutOne = WithChanges();
    m_Changes.insert(std::move(kept));
    return *m_WithoutOne;
}

} // namespace Tavrine
