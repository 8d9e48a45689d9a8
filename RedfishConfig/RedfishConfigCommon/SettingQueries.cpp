#include "RedfishConfigSettingManager.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "Dependencies.h"
#include "OrderedLookup.h"
#include "PatchContexts.h"
#include "RedfishConfigSetting.h"
#include "SettingModel.h"
#include "ValueConversions.h"
#include "ValueRules.h"
#include "ValueTexts.h"

// The operations that tell of settings: defaults, valid values, descriptions, what a
// save keeps.

using Tavrine::DependencyEvaluation;
using Tavrine::filterAction;
using Tavrine::SettingProperty;
using Tavrine::SettingStringMap;

namespace
{

constexpr int CodePartlyDone = 7;
constexpr int CodeWrongParameter = 16;
constexpr int CodeNoDefault = 21;
constexpr int CodeIncomplete = 22;

/// Tells settings that can never be written from those that can be at times.
class LastingLocks
{
  public:
    explicit LastingLocks(const Tavrine::SettingModel& model) : m_Model(model), m_Lifted(model.Slots().size())
    {
        const auto& dependencies = model.Registry().Dependencies;
        for (std::size_t index = 0; index < dependencies.size(); ++index)
        {
            if (dependencies[index].Value == Tavrine::RegistryScalar(false))
            {
                m_Lifted[model.SlotOfDependency(index)] = true;
            }
        }
    }

    /// A flag set by the registry itself, which no dependency can lift.
    bool Lock(std::size_t attribute) const
    {
        return std::any_of(Tavrine::FlagProperties.begin(), Tavrine::FlagProperties.end(),
                           [&](SettingProperty flag) { return Lasts(attribute, flag); });
    }

  private:
    bool IsLifted(std::size_t slot) const { return slot != Tavrine::NoIndex && m_Lifted[slot]; }

    /// On the setting or a menu around it: what is lifted on one of them stays on the others.
    bool Lasts(std::size_t attribute, SettingProperty flag) const
    {
        const auto at = static_cast<std::size_t>(flag);
        const Tavrine::RegistryAttribute& registered = m_Model.Attribute(attribute);
        bool lasts = registered.Flags.test(at) && !IsLifted(m_Model.SlotOfAttribute(attribute, flag));
        const auto& menus = m_Model.Registry().Menus;
        for (std::size_t menu = registered.Menu; menu != Tavrine::NoIndex && !lasts; menu = menus[menu].Parent)
        {
            lasts = menus[menu].Flags[at] && !IsLifted(m_Model.SlotOfMenu(menu, flag));
        }
        return lasts;
    }

    const Tavrine::SettingModel& m_Model;
    /// By slot: some dependency takes the flag away.
    std::vector<bool> m_Lifted;
};

} // namespace

RedfishConfigResult RedfishConfigSettingManager::DefaultText(const RedfishConfigSetting& setting,
                                                             const DependencyEvaluation& now, std::string& text) const
{
    const Tavrine::RegistryScalar& value = now.Now(setting.Index(), SettingProperty::DefaultValue);
    if (!Tavrine::HasValue(value))
    {
        const std::string& name = setting.Attribute().Name();
        return {CodeNoDefault, "The setting " + name + " has no default value.", name};
    }
    text = Tavrine::ScalarText(value);
    return {0, "", ""};
}

RedfishConfigResult RedfishConfigSettingManager::ValidValuesText(const RedfishConfigSetting& setting,
                                                                 const DependencyEvaluation& now,
                                                                 std::string& text) const
{
    const std::string line = ValidValuesLine(RulesOf(setting, KindOfValues(setting, m_Values), now));
    if (line.empty())
    {
        const std::string& name = setting.Attribute().Name();
        return {CodeIncomplete, "The registry gives no value names for the setting " + name + ".", name};
    }
    text = line;
    return {0, "", ""};
}

RedfishConfigResult RedfishConfigSettingManager::DescriptionText(const RedfishConfigSetting& setting,
                                                                 const DependencyEvaluation& now,
                                                                 std::string& text) const
{
    const auto textOf = [&](SettingProperty property)
    {
        const Tavrine::RegistryScalar& value = now.Now(setting.Index(), property);
        const auto* words = std::get_if<std::string>(&value);
        return words != nullptr ? *words : std::string();
    };
    const std::string display = textOf(SettingProperty::DisplayName);
    const std::string help = textOf(SettingProperty::HelpText);
    const std::string warning = textOf(SettingProperty::WarningText);
    text = display.empty() ? setting.Attribute().Name() : display;
    text += help.empty() ? "" : "\n" + help;
    text += warning.empty() ? "" : "\nWarning: " + warning;
    return {0, "", ""};
}

RedfishConfigResult RedfishConfigSettingManager::QueryOne(const std::string& name, std::string& text, TextQuery query)
{
    const RedfishConfigSetting* setting = nullptr;
    const RedfishConfigResult result = FindSetting(name, setting);
    return result == 0 ? (this->*query)(*setting, Now(), text) : result;
}

RedfishConfigResult RedfishConfigSettingManager::QueryAll(SettingStringMap& texts, TextQuery query)
{
    m_ErrorList.clear();
    texts.clear();
    const RedfishConfigResult result = ReadModel();
    if (result != 0 || m_Settings.empty())
    {
        return result;
    }
    const DependencyEvaluation& now = Now();
    for (const std::size_t index : Model().ByName())
    {
        const std::shared_ptr<RedfishConfigSetting> setting = MakeSetting(Evaluated(), index);
        std::string text;
        const RedfishConfigResult one = (this->*query)(*setting, now, text);
        if (one == 0)
        {
            texts.emplace_hint(texts.end(), setting->Attribute().Name(), std::move(text));
        }
        else
        {
            m_ErrorList.push_back(one);
        }
    }
    if (m_ErrorList.empty())
    {
        return result;
    }
    return {CodePartlyDone,
            std::to_string(m_ErrorList.size()) + " of " + std::to_string(Model().ByName().size()) +
                " settings are missing.",
            ""};
}

RedfishConfigResult RedfishConfigSettingManager::QuerySettingDefaultValue(const std::string name, std::string& value)
{
    return QueryOne(name, value, &RedfishConfigSettingManager::DefaultText);
}

RedfishConfigResult RedfishConfigSettingManager::QueryGroupSettingDefaultValues(SettingStringMap& values)
{
    return QueryAll(values, &RedfishConfigSettingManager::DefaultText);
}

RedfishConfigResult RedfishConfigSettingManager::QuerySettingValidValues(const std::string name, std::string& value)
{
    return QueryOne(name, value, &RedfishConfigSettingManager::ValidValuesText);
}

RedfishConfigResult RedfishConfigSettingManager::QueryGroupSettingValidValues(SettingStringMap& values)
{
    return QueryAll(values, &RedfishConfigSettingManager::ValidValuesText);
}

RedfishConfigResult RedfishConfigSettingManager::QuerySettingDescription(const std::string name, std::string& value)
{
    return QueryOne(name, value, &RedfishConfigSettingManager::DescriptionText);
}

RedfishConfigResult RedfishConfigSettingManager::QueryGroupSettingDescriptions(SettingStringMap& values)
{
    return QueryAll(values, &RedfishConfigSettingManager::DescriptionText);
}

RedfishConfigResult RedfishConfigSettingManager::FetchSaveSettingValues(SettingStringMap& values, filterAction action)
{
    m_ErrorList.clear();
    values.clear();
    if (action != Tavrine::FilterSave)
    {
        return {CodeWrongParameter, "Action " + std::to_string(action) + " lists no settings.", ""};
    }
    const RedfishConfigResult result = ReadModel();
    if (result != 0 || m_Settings.empty())
    {
        return result;
    }
    const Tavrine::SettingModel& model = Model();
    const LastingLocks locks(model);
    Tavrine::OrderedLookup known(m_Values);
    for (const std::size_t index : model.ByName())
    {
        const std::shared_ptr<RedfishConfigSetting> setting = MakeSetting(Evaluated(), index);
        const std::string& name = setting->Attribute().Name();
        const auto reported = known.Find(name);
        const Tavrine::OptionalVar value =
            reported != m_Values.end()
                ? reported->second
                : ValueFromScalar(PropertyOfRegistry(setting->Attribute(), SettingProperty::CurrentValue));
        std::string text;
        if (setting->Kind() != SettingKind::Password && !locks.Lock(setting->Index()) &&
            Tavrine::GetOptionalVarAsString(value, text))
        {
            values.emplace_hint(values.end(), name, std::move(text));
        }
    }
    return result;
}
