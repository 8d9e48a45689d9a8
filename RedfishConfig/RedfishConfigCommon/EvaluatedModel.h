#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Dependencies.h"
#include "OrderedLookup.h"
#include "SettingModel.h"
#include "ValueTypes.h"

class RedfishConfigSetting;

namespace Tavrine
{

/// The registry of one manager, which others may share, and what its dependencies make
/// of the values that this manager has: worked out when it is asked for, and kept until
/// they move.
class EvaluatedModel
{
  public:
    /// @param values  those of the manager, which outlive this object; its settings keep their places there.
    EvaluatedModel(std::shared_ptr<const SettingModel> model, const SettingValueMap& values);

    const std::shared_ptr<const SettingModel>& Model() const { return m_Model; }

    /// The setting that the manager has made of an attribute; nullptr as long as it has none.
    const RedfishConfigSetting* Kept(std::size_t attribute) const { return m_Settings[attribute]; }
    /// @param setting  lives as long as the manager does.
    void Keep(std::size_t attribute, const RedfishConfigSetting& setting) { m_Settings[attribute] = &setting; }

    /// Of values that have moved ValuesMoved or AllMoved tells before.
    const DependencyEvaluation& Now();
    /// The manager's value of a setting, nullptr for none; settings are asked about in the order of
    /// their names, mostly.
    const OptionalVar* ValueOf(const std::string& name);
    /// @param names  the values that are other than before.
    void ValuesMoved(std::vector<std::string> names);
    /// Which ones is not known.
    void AllMoved();

  private:
    std::shared_ptr<const SettingModel> m_Model;
    const SettingValueMap& m_Values;
    OrderedLookup<const SettingValueMap> m_Lookup;
    /// By attribute.
    std::vector<const RedfishConfigSetting*> m_Settings;
    std::optional<DependencyEvaluation> m_Now;
    /// Moved since m_Now was worked out.
    std::vector<std::string> m_Moved;
};

} // namespace Tavrine
