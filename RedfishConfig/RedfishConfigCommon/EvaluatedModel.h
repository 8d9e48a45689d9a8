#pragma once

#include <memory>
#include <optional>

#include "Dependencies.h"
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
    void ValuesMoved() { m_Now.reset(); }

  private:
    std::shared_ptr<const SettingModel> m_Model;
    std::optional<DependencyEvaluation> m_Now;
};

} // namespace Tavrine
