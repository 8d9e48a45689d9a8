// What the setting model is made from: the registry's text, and the current values.
#include "BiosRedfishConfigProc.h"

#include <utility>

#include "BiosRedfishProcCreator.h"
#include "BiosSettingAssistant.h"
#include "JsonNodes.h"
#include "RedfishConfigSettingManager.h"
#include "Results.h"
#include "Trace.h"

namespace Tavrine
{

namespace
{

// Cannot run: an allocation that fails throws, so that there is a manager after it. The answer is
// promised all the same.
// GCOV_EXCL_START
RedfishConfigResult ManagerMissing()
{
    TAVRINE_LOG(LogFailure) << "construct manager error.";
    return BareResult(ResultInternalError);
}
// GCOV_EXCL_STOP

} // namespace

bool BiosRedfishConfigProc::ManagerFlag() const
{
    constexpr unsigned int FlaggedKinds = 2;
    return static_cast<unsigned int>(m_SystemKind) - 1U < FlaggedKinds;
}

RedfishConfigResult BiosRedfishConfigProc::FetchSchema(const char* missingAssistantText)
{
    if (!m_Schema.empty())
    {
        return BareResult(ResultSuccess);
    }
    if (m_SettingAssistant == nullptr)
    {
        TAVRINE_LOG(LogFailure) << missingAssistantText;
        return BareResult(ResultInternalError);
    }
    RedfishConfigResult result = m_SettingAssistant->GetSchema(m_Schema);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed to get schema though: " << result.ErrorMsg();
    }
    return result;
}

RedfishConfigResult BiosRedfishConfigProc::QuerySettingManager(bool includeProtected)
{
    SettingValueMap values;
    RedfishConfigResult valuesResult = GetCurrentValuesMap(values, includeProtected);
    if (valuesResult != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed to get current value map though: " << valuesResult.ErrorMsg();
        return valuesResult;
    }
    RedfishConfigResult schemaResult = FetchSchema("[Notice]: assistant is nullptr during we query schema.");
    if (schemaResult != ResultSuccess)
    {
        return schemaResult;
    }
    m_SettingManager =
        std::make_shared<RedfishConfigSettingManager>(m_Schema, std::move(values), ManagerFlag(), m_Options);
    return m_SettingManager != nullptr ? valuesResult : ManagerMissing();
}

RedfishConfigResult BiosRedfishConfigProc::QuerySettingManagerWithoutValue()
{
    if (m_SettingManager != nullptr)
    {
        return BareResult(ResultSuccess);
    }
    RedfishConfigResult result = FetchSchema("Construct assistant error.");
    if (result != ResultSuccess)
    {
        return result;
    }
    m_SettingManager = std::make_shared<RedfishConfigSettingManager>(m_Schema, ManagerFlag(), m_Options);
    return m_SettingManager != nullptr ? BareResult(ResultSuccess) : ManagerMissing();
}

void BiosRedfishConfigProc::SetDebugConfigFile(const std::string& path)
{
    m_DebugConfigFile = path;
    if (path.empty())
    {
        return;
    }
    const std::string schema = ReadDebugConfigNode(path, "schema");
    if (!schema.empty())
    {
        m_Schema = schema;
    }
    m_ProcCreator->m_DebugConfigFile = path;
}

} // namespace Tavrine
