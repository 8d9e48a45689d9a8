#include "BIOSCompatibleModule.h"

#include "GlobalConfig.h"

namespace Tavrine
{

namespace
{

constexpr int CodeNotFound = 20;

RedfishConfigResult NotConverted(const std::string& name, const std::string& cause)
{
    return {CodeNotFound, "No current name for " + name + ": " + cause, name};
}

} // namespace

BIOSCompatibleModule::BIOSCompatibleModule(const Config_Options& options) : m_Options(options) {}

BIOSCompatibleModule::~BIOSCompatibleModule() = default;

RedfishConfigResult BIOSCompatibleModule::ConvertNameFromOldToNew(const std::string oldName, std::string& newName)
{
    if (!m_Options.LegacyNameMode)
    {
        return NotConverted(oldName, "old names are switched off");
    }
    const std::string loadError = GlobalConfig::LoadError();
    if (!loadError.empty())
    {
        return NotConverted(oldName, loadError);
    }
    const auto names = GlobalConfig::GetTable("legacy_names");
    const auto found = names.find(oldName);
    if (found == names.end() || found->second.empty())
    {
        return NotConverted(oldName, "the configuration has none");
    }
    newName = found->second;
    return {0, "", ""};
}

} // namespace Tavrine
