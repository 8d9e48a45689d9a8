#pragma once

#include <cstddef>
#include <memory>

#include "ConfigOptions.h"
#include "EvaluatedModel.h"

/// What a setting's type lets it hold.
enum class SettingKind
{
    /// The registry gives no type, or an unknown one.
    Unknown,
    Text,
    Numeric,
    Enumerate,
    Boolean,
    Password,
};

/// One setting of the manager: its kind, and its place in the model that all
/// settings of one registry share. The place to check new values from: exact
/// bounds and the order of value names are in Attribute(), the effect of
/// dependencies in DependencyEvaluation.
class RedfishConfigSetting
{
  public:
    RedfishConfigSetting(SettingKind kind, const Tavrine::Config_Options& options);

    /// Called once, before anything else. All settings of a manager have the same model.
    void Attach(std::shared_ptr<Tavrine::EvaluatedModel> model, std::size_t index);

    SettingKind Kind() const { return m_Kind; }
    const Tavrine::Config_Options& Options() const { return m_Options; }
    std::size_t Index() const { return m_Index; }
    const std::shared_ptr<Tavrine::EvaluatedModel>& Evaluated() const { return m_Model; }
    const Tavrine::SettingModel& Model() const { return *m_Model->Model(); }
    const Tavrine::RegistryAttribute& Attribute() const { return Model().Attribute(m_Index); }

  private:
    SettingKind m_Kind;
    Tavrine::Config_Options m_Options;
    std::shared_ptr<Tavrine::EvaluatedModel> m_Model;
    std::size_t m_Index = Tavrine::NoIndex;
};
