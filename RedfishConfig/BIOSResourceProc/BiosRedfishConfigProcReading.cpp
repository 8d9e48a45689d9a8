// What settings hold now.
#include "BiosRedfishConfigProc.h"

#include <boost/algorithm/string/predicate.hpp>

#include "BIOSCompatibleModule.h"
#include "BiosBasicSettingProc.h"
#include "BiosRedfishProcCreator.h"
#include "RedfishConfigSettingManager.h"
#include "RequestedName.h"
#include "ResourceNames.h"
#include "Results.h"
#include "Trace.h"

namespace Tavrine
{

namespace
{

/// What `values` has already stays.
template <class Map> void MoveInto(Map& values, Map& found)
{
    if (values.empty())
    {
        values.swap(found); // no name is searched for
    }
    else
    {
        values.merge(found);
    }
}

} // namespace

RedfishConfigResult BiosRedfishConfigProc::QuerySettingValue(const std::string& setting, SettingStringMap& values)
{
    TAVRINE_LOG(LogOperation) << "Enter BiosRedfishConfigProc::QuerySettingValue(), try to get the current value of "
                              << setting;
    RedfishConfigResult result = QuerySettingManagerWithoutValue();
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed to get setting manager with error: " << result.ErrorMsg();
        return result;
    }

    const std::string internalName = CurrentNameOf(setting);
    RedfishConfigSettingInfoStru info;
    result = m_SettingManager->GetSettingProperties(internalName, info);
    if (result != ResultSuccess)
    {
        RenameInMessage(result, setting, ShownName(setting));
        TAVRINE_LOG(LogFailure) << "Failed to get setting info: " << result.ErrorMsg();
        return result;
    }

    std::shared_ptr<BiosBasicSettingProc> proc;
    result = m_ProcCreator->CreateProcForSetting(info, proc);
    if (result == ResultSuccess && proc != nullptr)
    {
        result = proc->QuerySettingValue(internalName, values);
        if (result == ResultSuccess)
        {
            RestoreRequestedName(values, internalName, setting);
        }
        TAVRINE_LOG(LogOperation) << "Exit BiosRedfishConfigProc::QuerySettingValue() of setting BIOS." << setting;
    }
    else
    {
        TAVRINE_LOG(LogFailure) << "Can not create BIOS redfish procs.";
    }
    RenameInMessage(result, internalName, setting);
    return result;
}

std::string BiosRedfishConfigProc::CurrentNameOf(const std::string& setting)
{
    std::string name = setting;
    if (m_Options.LegacyNameMode)
    {
        BIOSCompatibleModule(m_Options).ConvertNameFromOldToNew(setting, name);
    }
    return name;
}

bool BiosRedfishConfigProc::ShowsBareNames() const
{
    const bool defaultPrefix =
        boost::algorithm::iequals(m_Prefix, "uefi") || boost::algorithm::iequals(m_Prefix, "bios");
    return m_Options.LegacyNameMode && !defaultPrefix;
}

std::string BiosRedfishConfigProc::ShownName(const std::string& setting) const
{
    return m_Options.LegacyNameMode ? setting : m_Prefix + "." + setting;
}

void BiosRedfishConfigProc::RestoreRequestedName(SettingStringMap& values, const std::string& keyName,
                                                 const std::string& requestedName)
{
    if (ShowsBareNames())
    {
        MoveToRequestedName(values, keyName, requestedName);
    }
}

void BiosRedfishConfigProc::RestoreRequestedName(SettingCompareMap& values, const std::string& keyName,
                                                 const std::string& requestedName)
{
    if (ShowsBareNames())
    {
        MoveToRequestedName(values, keyName, requestedName);
    }
}

RedfishConfigResult BiosRedfishConfigProc::QueryGroupSettingValues(SettingStringMap& values)
{
    TAVRINE_LOG(LogOperation) << "Enter BiosRedfishConfigProc::QueryGroupSettingValues()";
    ProcMap procs;
    m_ProcCreator->CreateAllProcs(procs);
    if (procs.empty())
    {
        TAVRINE_LOG(LogFailure) << "Failed to create BIOS redfish procs.";
        return BareResult(ResultInternalError);
    }
    SettingStringMap found;
    for (const auto& [resource, proc] : procs)
    {
        // A proc that fails gives no values; the others still do.
        if (resource != ProtectedSettings && proc->QueryGroupSettingValues(found) == ResultSuccess)
        {
            MoveInto(values, found);
        }
    }
    if (values.empty())
    {
        return BareResult(ResultQueryFailed);
    }
    HiddenSettingsByKeywords(values);
    TAVRINE_LOG(LogOperation) << "Exit BiosRedfishConfigProc::QueryGroupSettingValues()";
    return BareResult(ResultSuccess);
}

RedfishConfigResult BiosRedfishConfigProc::CollectValues(ProcRead read, SettingValueMap& values, bool includeProtected)
{
    ProcMap procs;
    m_ProcCreator->CreateAllProcs(procs);
    if (procs.empty())
    {
        TAVRINE_LOG(LogFailure) << "Can not create BIOS redfish procs.";
        return BareResult(ResultInternalError);
    }
    SettingValueMap found;
    for (const auto& [resource, proc] : procs)
    {
        if (!includeProtected && resource == ProtectedSettings)
        {
            continue;
        }
        RedfishConfigResult result = (proc.get()->*read)(found);
        if (result != ResultSuccess)
        {
            TAVRINE_LOG(LogFailure) << "Failed in get current value map though: " << result.ErrorMsg();
            return result;
        }
        MoveInto(values, found);
    }
    return BareResult(values.empty() ? ResultQueryFailed : ResultSuccess);
}

RedfishConfigResult BiosRedfishConfigProc::GetCurrentValuesMap(SettingValueMap& values, bool includeProtected)
{
    return CollectValues(&BiosBasicSettingProc::GetCurrentValuesMap, values, includeProtected);
}

/// All current values where they are: at the one assistant that there is once it has them, since a batch of
/// changes looks at them before each. `values` points there or to `read`, and holds until a change is staged.
RedfishConfigResult BiosRedfishConfigProc::FindCurrentValues(SettingValueMap& read, const SettingValueMap*& values)
{
    ProcMap procs;
    m_ProcCreator->CreateAllProcs(procs);
    const BiosBasicSettingAssistant* only = procs.size() == 1 ? procs.begin()->second->m_Assistant.get() : nullptr;
    if (only != nullptr && !only->m_CurrentValues.empty())
    {
        values = &only->m_CurrentValues;
        return BareResult(ResultSuccess);
    }
    values = &read;
    return GetCurrentValuesMap(read, true);
}

RedfishConfigResult BiosRedfishConfigProc::ReloadAllSettingValues(SettingValueMap& values, bool includeProtected)
{
    return CollectValues(&BiosBasicSettingProc::ReloadAllSettingValues, values, includeProtected);
}

} // namespace Tavrine
