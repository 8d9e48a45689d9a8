#include "RedfishConfigSetting.h"

#include <utility>

RedfishConfigSetting::RedfishConfigSetting(SettingKind kind, const Tavrine::Config_Options& options)
    : m_Kind(kind), m_Options(options)
{
}

void RedfishConfigSetting::Attach(std::shared_ptr<Tavrine::EvaluatedModel> model, std::size_t index)
{
    m_Model = std::move(model);
    m_Index = index;
}
