#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "ConfigOptions.h"
#include "Dependencies.h"
#include "RedfishConfigResult.h"
#include "RedfishConfigSetting.h"
#include "RedfishConfigSettingInfo.h"
#include "RegistryScalar.h"
#include "ValueRules.h"
#include "ValueTypes.h"

namespace Tavrine
{

/// One wanted value on its way to a context.
struct WantedValue
{
    const RedfishConfigSetting* Setting = nullptr;
    std::string Text;
    SettingKind Kind = SettingKind::Text;
    NumberForm Form = NumberForm::Decimal;
    /// Null for a text that is no value of this kind.
    RegistryScalar Value;
};

/// Reads the text of a new value.
/// @param values  the current ones.
/// @param unseen  the numbers of them, in order, that the caller does not have, so that it has not turned
///                a hexadecimal one into decimal.
WantedValue ReadWanted(const RedfishConfigSetting& setting, const std::string& text, const SettingValueMap& values,
                       const std::vector<RedfishConfigSettingInfoStru>& unseen, filterAction action);

/// Judges one wanted value by an evaluation that does not know it.
/// @return 0 with the JSON text, 10 or 18.
RedfishConfigResult JudgeWanted(const WantedValue& wanted, const DependencyEvaluation& evaluation,
                                std::string& context);

/// The flag that keeps a setting from being written now; empty text for none, else
/// "read-only", and the condition where a dependency is the cause.
std::string LockedWords(const DependencyEvaluation& evaluation, std::size_t attribute);

/// What stands once all wanted values of one call are in place, seen by each setting
/// without its own: a change neither locks nor frees itself. Settings that can be
/// seen locked by the others are not among those that count, nor are values that
/// are none. Its cost is that of a fixed number of evaluations.
class JointEvaluation
{
  public:
    /// @param now  what stands without them. It must outlive this object.
    JointEvaluation(const DependencyEvaluation& now, const std::vector<WantedValue>& wanted);

    const DependencyEvaluation& For(const WantedValue& wanted);

  private:
    void FindSelfReaders();
    std::unique_ptr<DependencyEvaluation> WithChanges() const;

    const SettingModel& m_Model;
    SettingValueMap m_Changes;
    const DependencyEvaluation& m_Now;
    std::unique_ptr<DependencyEvaluation> m_Joint;
    std::unique_ptr<DependencyEvaluation> m_WithoutOne;
    /// Attributes that some dependency both reads and forces.
    std::unordered_set<std::size_t> m_SelfReaders;
    std::size_t m_EvaluationsLeft;
};

} // namespace Tavrine
