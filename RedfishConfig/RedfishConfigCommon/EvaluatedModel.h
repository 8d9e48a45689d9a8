#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Dependencies.h"
#include "OrderedLookup.h"
#include "SettingModel.h"
#include "ValueTypes.h"

namespace Tavrine
{

/// The registry of one manager, which others may share, and what its dependencies make
/// of the values that this manager has: worked out when it is asked for, and kept until
/// they move.
class EvaluatedModel
{
  public:
    explicit EvaluatedModel(std::shared_ptr<const SettingModel> model);

    const std::shared_ptr<const SettingModel>& Model() const { return m_Model; }

    /// @param values  those of the manager, the same until ValuesMoved is called.
    const DependencyEvaluation& Now(const SettingValueMap& values);
    /// What `values` holds for a setting, nullptr for nothing; settings are asked about in the order of
    /// their names, mostly. Always the same map, from which nothing is taken.
    const OptionalVar* ValueOf(const std::string& name, const SettingValueMap& values);
    /// @param names  the values that are other than before.
    void ValuesMoved(std::vector<std::string> names);

  private:
    std::shared_ptr<const SettingModel> m_Model;
    std::optional<DependencyEvaluation> m_Now;
    std::optional<OrderedLookup<const SettingValueMap>> m_Values;
    /// Moved since m_Now was worked out.
    std::vector<std::string> m_Moved;
};

} // namespace Tavrine
