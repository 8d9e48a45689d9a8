#include "BiosSettingManager.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <boost/json/value.hpp>

#include "BiosBasicSettingProc.h"
#include "BiosRedfishProcCreator.h"
#include "BiosStandardSettingAssistant.h"
#include "JsonNodes.h"
#include "ResourceNames.h"
#include "Results.h"
#include "Trace.h"

namespace Tavrine
{

RedfishConfigResult TakeSettingManager(BiosRedfishConfigProc& front,
                                       std::unique_ptr<RedfishConfigSettingManager>& manager, ManagerValues wanted)
{
    // As with the registry's text: ordinary values, the registry, protected values.
    SettingValueMap values;
    RedfishConfigResult result =
        wanted == ManagerValues::None ? BareResult(ResultSuccess) : front.GetCurrentValuesMap(values, false);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed to get current value map though: " << result.ErrorMsg();
        return result;
    }
    result = front.QuerySettingManagerWithoutValue();
    if (result != ResultSuccess)
    {
        return result;
    }
    ProcMap procs;
    front.m_ProcCreator->CreateAllProcs(procs);
    if (wanted == ManagerValues::All && procs.contains(ProtectedSettings))
    {
        values.clear();
        result = front.GetCurrentValuesMap(values, true);
        if (result != ResultSuccess)
        {
            TAVRINE_LOG(LogFailure) << "Failed to get current values map though: " << result.ErrorMsg();
            return result;
        }
    }
    // The registry's own value stands where the BMC reports none.
    std::erase_if(values, [](const auto& entry) { return !entry.second; });
    auto taken =
        std::make_unique<RedfishConfigSettingManager>("", std::move(values), front.ManagerFlag(), front.m_Options);
    taken->TakeRegistryOf(*front.m_SettingManager);
    manager = std::move(taken);
    return result;
}

void GiveRegistry(BiosRedfishConfigProc& front, RedfishConfigSettingManager& manager)
{
    front.m_SettingManager = std::make_shared<RedfishConfigSettingManager>("", front.ManagerFlag(), front.m_Options);
    front.m_SettingManager->TakeRegistryOf(manager);
}

bool AwaitsDefaults(const BiosRedfishConfigProc& front)
{
    constexpr std::string_view member = "ResetBiosToDefaultsPending";
    const ProcMap& procs = front.m_ProcCreator->m_ProcMap;
    const auto standard = procs.find(StandardSettings);
    const auto* const assistant =
        standard == procs.end()
            ? nullptr
            : dynamic_cast<const BiosStandardSettingAssistant*>(standard->second->m_Assistant.get());
    if (assistant == nullptr)
    {
        return false;
    }
    const std::string setting(PostLoadSetting);
    const SettingValueMap& waiting = assistant->m_PendingValues;
    const SettingValueMap& values = waiting.contains(setting) ? waiting : assistant->m_EffectiveValues;
    const auto load = values.find(setting);
    if (load != values.end() && load->second == OptionalVar(std::string(PostLoadValue)))
    {
        return true;
    }
    // Most resources say no or nothing, and are long.
    if (assistant->m_ValueResponse.find(member) == std::string::npos)
    {
        return false;
    }
    const std::optional<boost::json::value> resource = ParseNodes(assistant->m_ValueResponse);
    const boost::json::value* const due = resource ? FindNode(*resource, {member}) : nullptr;
    return due != nullptr && *due == true;
}

} // namespace Tavrine
