#include "RedfishConfigSettingManager.h"

#include <utility>

// The constructors alone: all other operations belong to RedfishConfigCommon. A
// schema that cannot be parsed passes here and shows at the first operation.

RedfishConfigSettingManager::RedfishConfigSettingManager(const std::string& schema, Tavrine::SettingValueMap&& values,
                                                         const bool& flag, const Tavrine::Config_Options& options)
    : m_ErrorList(), m_Schema(schema), m_Values(std::move(values)), m_ForcedProperties(), m_Settings(),
      m_SettingTypeCreators(), m_Flag(flag), m_Options(options), m_Groups(), m_NotTold()
{
    m_SettingTypeCreators["String"] = &RedfishConfigSettingManager::createTextSetting;
    m_SettingTypeCreators["Integer"] = &RedfishConfigSettingManager::createNumericSetting;
    m_SettingTypeCreators["Enumeration"] = &RedfishConfigSettingManager::createEnumerateSetting;
    m_SettingTypeCreators["Boolean"] = &RedfishConfigSettingManager::createBooleanSetting;
    m_SettingTypeCreators["Password"] = &RedfishConfigSettingManager::createPasswordSetting;
}

RedfishConfigSettingManager::RedfishConfigSettingManager(const std::string& schema,
                                                         const Tavrine::SettingValueMap& values, const bool& flag,
                                                         const Tavrine::Config_Options& options)
    : RedfishConfigSettingManager(schema, Tavrine::SettingValueMap(values), flag, options)
{
}

RedfishConfigSettingManager::RedfishConfigSettingManager(const std::string& schema, const bool& flag,
                                                         const Tavrine::Config_Options& options)
    : RedfishConfigSettingManager(schema, Tavrine::SettingValueMap(), flag, options)
{
}
