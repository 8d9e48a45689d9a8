#include "BiosBasicSettingAssistant.h"

#include <utility>

#include "OrderedLookup.h"
#include "Results.h"
#include "Trace.h"
#include "ValueConversions.h"

namespace Tavrine
{

SettingValueMap BiosBasicSettingAssistant::MergeCurrentValues()
try
{
    // Effective and pending values stand in one order, so that no name is searched for.
    const auto less = m_EffectiveValues.key_comp();
    auto pending = m_PendingValues.begin();
    auto current = m_CurrentValues.begin();
    for (const auto& effective : m_EffectiveValues)
    {
        while (pending != m_PendingValues.end() && pending->first != effective.first &&
               less(pending->first, effective.first))
        {
            ++pending;
        }
        const bool waits = pending != m_PendingValues.end() &&
                           (pending->first == effective.first || !less(effective.first, pending->first));
        const auto& [name, value] = waits ? *pending++ : effective;
        current = PutNear(m_CurrentValues, current, name, value);
    }
    return m_CurrentValues;
}
// GCOV_EXCL_START
// Memory alone can do this; some of the values would be taken for all of them.
catch (...)
{
    m_CurrentValues.clear();
    throw;
}
// GCOV_EXCL_STOP

RedfishConfigResult BiosBasicSettingAssistant::NeedEffectiveValues()
{
    if (!m_EffectiveValues.empty())
    {
        return BareResult(ResultSuccess);
    }
    RedfishConfigResult result = QueryEffectiveValue(m_EffectiveValues);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogDetail) << "Failed to query effective value map with ret=" << result.ErrorCode();
    }
    return result;
}

RedfishConfigResult BiosBasicSettingAssistant::GetEffectiveValueMap(SettingValueMap& values)
{
    RedfishConfigResult result = NeedEffectiveValues();
    if (result == ResultSuccess)
    {
        values = m_EffectiveValues;
    }
    return result;
}

RedfishConfigResult BiosBasicSettingAssistant::ReloadAllSettingValues(SettingValueMap& values)
{
    return BuildCurrentValues(values, true);
}

RedfishConfigResult BiosBasicSettingAssistant::GetCurrentValuesMap(SettingValueMap& values)
{
    if (!m_CurrentValues.empty())
    {
        values = m_CurrentValues;
        return BareResult(ResultSuccess);
    }
    return BuildCurrentValues(values, false);
}

RedfishConfigResult BiosBasicSettingAssistant::BuildCurrentValues(SettingValueMap& values, bool readAnew)
{
    if (readAnew || m_EffectiveValues.empty())
    {
        RedfishConfigResult result = QueryEffectiveValue(m_EffectiveValues);
        if (result != ResultSuccess)
        {
            TAVRINE_LOG(LogFailure) << "Query current value error: " << result.ErrorMsg();
            m_CurrentValues.clear();
            return result;
        }
    }
    if (readAnew || m_PendingValues.empty())
    {
        if (QueryPendingValue(m_PendingValues) != ResultSuccess)
        {
            TAVRINE_LOG(LogFailure) << "Query pending value error, use effective value directly.";
            values = m_EffectiveValues;
            return BareResult(ResultSuccess);
        }
    }
    values = MergeCurrentValues();
    return BareResult(ResultSuccess);
}

RedfishConfigResult BiosBasicSettingAssistant::GetComparePendingValueMap(SettingCompareMap& compare,
                                                                         const std::string& settingName)
{
    TAVRINE_LOG(LogDetail) << "Enter GetComparePendingValueMap(), settingname=" << settingName;
    RedfishConfigResult result = BareResult(ResultSuccess);
    if (m_PendingValues.empty())
    {
        result = QueryPendingValue(m_PendingValues);
        if (result != ResultSuccess)
        {
            TAVRINE_LOG(LogFailure) << "Failed in query pending value.";
            return result;
        }
    }
    if (m_EffectiveValues.empty())
    {
        result = QueryEffectiveValue(m_EffectiveValues);
        if (result != ResultSuccess)
        {
            TAVRINE_LOG(LogFailure) << "Failed in query effective value.";
            return result;
        }
    }

    if (settingName.empty())
    {
        CompareAll(compare);
    }
    else
    {
        CompareOne(compare, settingName);
    }
    if (compare.empty())
    {
        return NothingToCompare(settingName);
    }
    TAVRINE_LOG(LogDetail) << "Exit GetComparePendingValueMap(), result.size()=" << compare.size();
    return result;
}

void BiosBasicSettingAssistant::CompareAll(SettingCompareMap& compare) const
{
    OrderedLookup lookup(m_EffectiveValues);
    for (const auto& [name, pending] : m_PendingValues)
    {
        std::string pendingText;
        if (!GetOptionalVarAsString(pending, pendingText))
        {
            TAVRINE_LOG(LogDetail) << name << " pending value is invalid, so skipped.";
            continue;
        }
        TAVRINE_LOG(LogDetail) << "Start to find the effective value for setting " << name
                               << " with pendingvalue=" << pendingText;
        const auto effective = lookup.Find(name);
        std::string effectiveText;
        if (effective == m_EffectiveValues.end() || !GetOptionalVarAsString(effective->second, effectiveText))
        {
            continue;
        }
        if (pending != effective->second)
        {
            compare.insert_or_assign(compare.end(), name, std::pair(std::move(effectiveText), std::move(pendingText)));
        }
    }
}

void BiosBasicSettingAssistant::CompareOne(SettingCompareMap& compare, const std::string& settingName) const
{
    const auto pending = m_PendingValues.find(settingName);
    const auto effective = m_EffectiveValues.find(settingName);
    if (pending == m_PendingValues.end() || effective == m_EffectiveValues.end())
    {
        return;
    }
    std::string pendingText;
    std::string effectiveText;
    if (GetOptionalVarAsString(pending->second, pendingText) &&
        GetOptionalVarAsString(effective->second, effectiveText) && pending->second != effective->second)
    {
        compare[settingName] = {effectiveText, pendingText};
    }
}

RedfishConfigResult BiosBasicSettingAssistant::NothingToCompare(const std::string& settingName) const
{
    if (settingName.empty())
    {
        return BareResult(ResultNoPendingValue);
    }
    if (m_EffectiveValues.find(settingName) == m_EffectiveValues.end())
    {
        TAVRINE_LOG(LogDetail) << "Unable to find the setting " << settingName;
        return BareResult(ResultUnknownSetting);
    }
    TAVRINE_LOG(LogDetail) << "Setting " << settingName << " has no pending value.";
    return {ResultNoPendingValue, "Setting has no pending value.", ""};
}

RedfishConfigResult BiosBasicSettingAssistant::UpdateSettingValueCache(const std::string& settingName,
                                                                       const std::string& value)
{
    TAVRINE_LOG(LogDetail) << "Enter UpdateSettingValueCache to update setting: " << settingName;
    std::string bareValue = value;
    std::erase(bareValue, '"');
    for (SettingValueMap* cache : {&m_PendingValues, &m_CurrentValues})
    {
        const auto entry = cache->find(settingName);
        if (entry != cache->end())
        {
            TransferStringToOptionalVar(entry->second, bareValue);
        }
    }
    TAVRINE_LOG(LogDetail) << "Exit BiosBasicSettingAssistant::UpdateSettingValueCache()";
    return BareResult(ResultSuccess);
}

void BiosBasicSettingAssistant::SetValueResponse(const std::string&) {}

void BiosBasicSettingAssistant::TakeFlushErrors(const std::vector<RedfishConfigResult>& errors)
{
    m_Errors.insert(m_Errors.end(), errors.begin(), errors.end());
    m_ChangedValues.clear();
}

} // namespace Tavrine
