#include "RedfishConfigSettingManager.h"

#include <algorithm>
#include <array>

#include "RedfishConfigSetting.h"
#include "ValueConversions.h"

// What the registry says, no dependency applied.

using Tavrine::RedfishConfigSettingRelations;
using Tavrine::RedfishConfigSettingTexts;
using Tavrine::RegistryAttribute;
using Tavrine::SettingProperty;

namespace
{

constexpr std::array NumberProperties = {SettingProperty::LowerBound,      SettingProperty::UpperBound,
                                         SettingProperty::ScalarIncrement, SettingProperty::MinLength,
                                         SettingProperty::MaxLength,       SettingProperty::DisplayOrder};

std::string TextOf(const RegistryAttribute& attribute, SettingProperty property)
{
    const Tavrine::RegistryScalar value = Tavrine::PropertyOfRegistry(attribute, property);
    return Tavrine::HasValue(value) ? Tavrine::ScalarText(value) : std::string();
}

} // namespace

std::vector<std::string> RedfishConfigSettingManager::GetSettingNames()
{
    m_ErrorList.clear();
    std::vector<std::string> names;
    const RedfishConfigResult result = ReadModel();
    if (result != 0)
    {
        m_ErrorList.push_back(result);
    }
    else if (!m_Settings.empty())
    {
        for (const RegistryAttribute& attribute : Model().Registry().Attributes)
        {
            names.push_back(attribute.Name());
        }
    }
    return names;
}

RedfishConfigResult RedfishConfigSettingManager::GetSettingTexts(const std::string& name,
                                                                 RedfishConfigSettingTexts& texts)
{
    const RedfishConfigSetting* setting = nullptr;
    const RedfishConfigResult result = FindSetting(name, setting);
    if (result != 0)
    {
        return result;
    }
    const RegistryAttribute& attribute = setting->Attribute();
    texts = {};
    texts.Type = attribute.Type.value_or(std::string());
    texts.DisplayName = TextOf(attribute, SettingProperty::DisplayName);
    texts.HelpText = TextOf(attribute, SettingProperty::HelpText);
    texts.WarningText = TextOf(attribute, SettingProperty::WarningText);
    texts.Group = setting->Model().GroupOf(setting->Index());
    for (const Tavrine::RegistryValueName& value : attribute.ValueNames)
    {
        texts.Values.emplace_back(value.Name, value.DisplayName.value_or(std::string()));
    }
    const auto value = m_Values.find(name);
    if (value == m_Values.end())
    {
        texts.CurrentValue = TextOf(attribute, SettingProperty::CurrentValue);
    }
    else
    {
        Tavrine::GetOptionalVarAsString(value->second, texts.CurrentValue);
    }
    for (const SettingProperty number : NumberProperties)
    {
        if (std::string text = TextOf(attribute, number); !text.empty())
        {
            texts.Numbers.emplace(Tavrine::PropertyWord(number), std::move(text));
        }
    }
    return result;
}

RedfishConfigResult RedfishConfigSettingManager::GetSettingRelations(const std::string& name,
                                                                     RedfishConfigSettingRelations& relations)
{
    const RedfishConfigSetting* setting = nullptr;
    const RedfishConfigResult result = FindSetting(name, setting);
    if (result == 0)
    {
        relations = setting->Model().Relations(setting->Index());
    }
    return result;
}
