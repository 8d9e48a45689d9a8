#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "RegistryScalar.h"
#include "SettingModel.h"
#include "SettingProperty.h"
#include "ValueTypes.h"

namespace Tavrine
{

/// The properties of all settings as dependencies shape them over given values.
///
/// `values` are the facts, as the BMC reports them: its own firmware has applied
/// its dependencies before. So a dependency never replaces a reported value by
/// itself; it gives a value to a setting that has none.
///
/// `changes` are laid on top: what would stand after a change. They are never
/// replaced. A dependency does replace the reported value of a setting outside
/// `changes` when its condition reads something that the changes have moved.
///
/// A value given in this way is seen by other conditions, here alone, and stays
/// until another dependency gives another; no map is written to. Where several dependencies force one property, true
/// wins over false for flags, and else the last one that holds.
///
/// Conditions may form circles, so all of them are evaluated in rounds on the
/// outcome of the round before, until nothing moves or MaxRounds is reached. A
/// round is linear in the number of terms.
class DependencyEvaluation
{
  public:
    static constexpr unsigned MaxRounds = 16;

    /// Works all out at once. The model must outlive this object, the map need
    /// not.
    DependencyEvaluation(const SettingModel& model, const SettingValueMap& values);
    /// Works out what stands by the values of `before` with the changes on top.
    /// @param before  made without changes; it need not outlive this object.
    DependencyEvaluation(const DependencyEvaluation& before, const SettingValueMap& changes);

    const SettingModel& Model() const { return *m_Model; }

    /// Works all out anew after some values have moved; only for one made without changes.
    /// @param names  the values that are other than before, in any case.
    /// @param values  all of them.
    void MoveValues(const std::vector<std::string>& names, const SettingValueMap& values);

    /// Flags count as set, too, where a menu around the setting has them. The
    /// current value of a setting that no dependency names is not known here. The reference is good
    /// until MoveValues; it is no copy, since texts may be long and conditions read them over and over.
    const RegistryScalar& Now(std::size_t attribute, SettingProperty property) const;
    bool Flag(std::size_t attribute, SettingProperty flag) const;

    /// The dependency that gives a property its present value, directly or by a
    /// menu; nullptr for none. For a flag: that sets it.
    const RegistryDependency* Cause(std::size_t attribute, SettingProperty property) const;

    /// Whether some property of the attribute may have such a cause.
    bool MayForce(std::size_t attribute) const;

    /// False when the bound was hit first: then this is the outcome of the last
    /// round.
    bool Settled() const { return m_Settled; }
    unsigned Rounds() const { return m_Rounds; }
    /// Terms evaluated in all rounds, the cost.
    std::size_t TermsRead() const { return m_TermsRead; }

  private:
    struct KnownValue
    {
        RegistryScalar Value;
        bool Changed = false;
    };
    struct MenuFlag
    {
        bool On = false;
        std::size_t Cause = NoIndex;
    };
    using MenuFlags = std::array<MenuFlag, FlagProperties.size()>;

    RegistryScalar ReportedValue(std::size_t attribute, const OptionalVar* reported) const;
    void RunRounds(const DependencyEvaluation* before);
    bool RunRound(const DependencyEvaluation* before);
    void KeepFormerValues(std::vector<std::size_t>& winners) const;
    bool MayForceValue(const RegistryDependency& dependency, const DependencyEvaluation* before) const;
    bool Holds(const RegistryDependency& dependency);
    bool Holds(const DependencyTerm& term) const;
    bool Beats(std::size_t dependency, std::size_t former) const;
    void SpreadMenuFlags();
    const RegistryDependency* WinnerOf(std::size_t slot) const;
    MenuFlag OwnFlag(std::size_t slot, bool ofRegistry) const;
    MenuFlag FlagWithCause(std::size_t attribute, SettingProperty flag) const;

    const SettingModel* m_Model;
    std::vector<KnownValue> m_Values;
    /// By attribute: some dependency names it.
    std::vector<bool> m_Named;
    /// By slot: the dependency that holds and wins, or NoIndex.
    std::vector<std::size_t> m_Winners;
    /// By menu, those of the menus around it included.
    std::vector<MenuFlags> m_MenuFlags;
    bool m_Settled = false;
    unsigned m_Rounds = 0;
    std::size_t m_TermsRead = 0;
};

/// The condition in words, such as "BootMode is LegacyBios and Tpm is not Off",
/// cut at a length that a line of output bears.
std::string ConditionText(const RegistryDependency& dependency);

} // namespace Tavrine
