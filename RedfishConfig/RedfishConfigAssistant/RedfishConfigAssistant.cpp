#include "RedfishConfigAssistant.h"

namespace Tavrine
{

RedfishConfigAssistant::RedfishConfigAssistant() = default;
RedfishConfigAssistant::~RedfishConfigAssistant() = default;

std::vector<RedfishConfigResult> RedfishConfigAssistant::GetError() { return m_Errors; }

void RedfishConfigAssistant::UpdateError(const std::vector<RedfishConfigResult>& errors) { m_Errors = errors; }

void RedfishConfigAssistant::CacheSetContext(const std::string name, const std::string context)
{
    m_SetContexts[name] = context;
}

RedfishConfigResult RedfishConfigAssistant::FlushChanges(const std::string /*target*/) { return {11, "", ""}; }

} // namespace Tavrine
