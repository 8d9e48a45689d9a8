#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "ConfigOptions.h"
#include "Export.h"
#include "RedfishConfigResult.h"
#include "RedfishConfigSettingInfo.h"
#include "ValueTypes.h"

class RedfishConfigSetting;

namespace Tavrine
{
class DependencyEvaluation;
class EvaluatedModel;
class SettingModel;
} // namespace Tavrine

/// The model of all settings of one attribute registry (DSP8010,
/// AttributeRegistry schema): what a setting is, what values it may take, how a
/// change must look. The registry is parsed at the first operation, not by the
/// constructors; a text that is no registry makes every operation answer code 27.
///
/// Names of settings are compared exactly; values are found in the maps that the
/// caller gives by the rule of those maps. One object is used by one thread at a
/// time; objects that share a registry (TakeRegistryOf) may be used at once.
class TAVRINE_EXPORT RedfishConfigSettingManager
{
  public:
    /// The constructors differ in the values that the model starts with: copied, taken over, or none.
    /// @param flag  kept for the layout of older system kinds; without effect.
    RedfishConfigSettingManager(const std::string& schema, const Tavrine::SettingValueMap& values, const bool& flag,
                                const Tavrine::Config_Options& options);
    RedfishConfigSettingManager(const std::string& schema, Tavrine::SettingValueMap&& values, const bool& flag,
                                const Tavrine::Config_Options& options);
    RedfishConfigSettingManager(const std::string& schema, const bool& flag, const Tavrine::Config_Options& options);
    RedfishConfigSettingManager(const RedfishConfigSettingManager&) = delete;
    RedfishConfigSettingManager& operator=(const RedfishConfigSettingManager&) = delete;
    ~RedfishConfigSettingManager();

    /// Takes over the registry of another manager instead of its own. It is read once for
    /// both, here where that has not been done yet; the values stay. A text that is no
    /// registry is taken over, too, and shows at the next operation. Both objects are used.
    void TakeRegistryOf(RedfishConfigSettingManager& other);

    /// Brings the model up to these current values: values of settings that
    /// `values` names are replaced, the others stay; dependencies follow. In hexadecimal
    /// mode the others count as not known to the caller, see PreparePatchContext.
    void UpdateSettingValue(const Tavrine::SettingValueMap& values);

    /// The properties of one setting as they stand now, dependencies applied. Its
    /// current value is the one that the model was given, where it was given none
    /// the registry's; dependencies between values never show in it, since a BMC
    /// has applied its own before it reports.
    /// @return 0; 20 with "Unable to find the setting NAME" for an unknown name,
    /// and the name that was perhaps meant where one differs in case alone; 27
    /// with the cause. `info` is untouched on failure.
    RedfishConfigResult GetSettingProperties(const std::string name, Tavrine::RedfishConfigSettingInfoStru& info);
    /// Of the same its name, type, current value and whether it is protected, at a fraction of the cost: for those
    /// who ask about thousands. Everything else is cleared.
    /// @return as GetSettingProperties.
    RedfishConfigResult GetSettingOutline(const std::string& name, Tavrine::RedfishConfigSettingInfoStru& info);

    /// The names of all settings, in the order of the registry; none for a text that is no
    /// registry, and GetError has the code 27 then.
    std::vector<std::string> GetSettingNames();
    /// The registry's own words about one setting, its group, and its current value.
    /// @return as GetSettingProperties; `texts` is untouched on failure.
    RedfishConfigResult GetSettingTexts(const std::string& name, Tavrine::RedfishConfigSettingTexts& texts);
    /// The settings that dependencies connect with one, its menus' included.
    /// @return as GetSettingProperties; `relations` is untouched on failure.
    RedfishConfigResult GetSettingRelations(const std::string& name, Tavrine::RedfishConfigSettingRelations& relations);

    /// Group (menu) name to the names of its settings, replacing what `groups`
    /// held. Group names are the menus' display names joined by "/", without the
    /// root menu, which gives its name to settings that stand directly in it; where
    /// two menus would share a name, the later one has its path behind; a display name of
    /// more than 128 bytes is cut. A setting
    /// whose menu the registry does not know, or that names none, stands under its
    /// own "MenuPath" or under "Other"; a registry without menus gives one group,
    /// "BIOS". A text that is no registry leaves `groups` empty, and GetError has
    /// the code 27.
    void GetGroupList(Tavrine::SettingGroupMap& groups);

    /// The default of one setting as text, exact beyond 64 bits; where a dependency
    /// forces a default now, that one.
    /// @return 0; 20 for an unknown name; 21 with "The setting NAME has no default
    /// value."; 27. `value` is untouched on failure.
    RedfishConfigResult QuerySettingDefaultValue(const std::string name, std::string& value);
    /// The defaults of all settings that have one, replacing what `values` held.
    /// @return 0; 7 when some have none: each of them has its entry of code 21 in the
    /// error list; 27.
    RedfishConfigResult QueryGroupSettingDefaultValues(Tavrine::SettingStringMap& values);

    /// The values that one setting takes, dependencies applied, in one line that a
    /// program can split by the setting's type:
    ///
    ///     Enumeration       ITEM; ITEM; ...   ITEM is NAME, or NAME [DISPLAY] where
    ///                       the display name differs
    ///     Boolean           true; false
    ///     Integer           LOWER to UPPER, then ", step N" where not every whole
    ///                       number between them is taken (steps count from LOWER, or
    ///                       from 0); in hexadecimal mode the same in hexadecimal
    ///                       follows in " (...)"
    ///     String, Password  MIN to MAX characters, then ", pattern REGEX", which
    ///                       reaches to the end of the text
    ///
    /// "any" stands for an absent bound or maximal length. A NAME or DISPLAY that is
    /// empty, begins or ends with a blank, or holds one of ; [ ] " \ or a control
    /// character, is written as a JSON string. A setting of no known type reads as
    /// an enumeration when it has value names, else as the kind of its current
    /// value, else as a String; changes to it are made in the same way.
    /// @return 0; 20 for an unknown name; 22 for an enumeration without value names;
    /// 27. `value` is untouched on failure.
    RedfishConfigResult QuerySettingValidValues(const std::string name, std::string& value);
    /// The same of all settings, replacing what `values` held.
    /// @return 0; 7 when some failed, each with its entry in the error list; 27.
    RedfishConfigResult QueryGroupSettingValidValues(Tavrine::SettingStringMap& values);

    /// What one setting is, in lines: the display name (the name where there is
    /// none), the help text, and "Warning: " with the warning text. Missing texts
    /// have no line; texts of the registry may themselves have several.
    /// @return 0; 20 for an unknown name; 27. `value` is untouched on failure.
    RedfishConfigResult QuerySettingDescription(const std::string name, std::string& value);
    /// The same of all settings, replacing what `values` held.
    /// @return 0; 27.
    RedfishConfigResult QueryGroupSettingDescriptions(Tavrine::SettingStringMap& values);

    /// The current values that a save keeps, as text, replacing what `values` held.
    /// Left out are settings without a value, passwords, and those that can never be
    /// written back: read-only, write-only, immutable, hidden or grayed out by the
    /// registry itself, on the setting or on a menu around it, with no dependency that
    /// could lift it there. What a dependency locks at the moment is kept, since a restore changes the cause as well.
    /// @return 0; 16 for an action other than FilterSave; 27.
    RedfishConfigResult FetchSaveSettingValues(Tavrine::SettingStringMap& values, Tavrine::filterAction action);

    /// Checks a new value and writes the JSON text to send for it: a string with
    /// everything escaped, an integer, true or false. A write-only setting (a
    /// password, for example) can be changed: that is what it is for. A value that
    /// cannot be judged is left to the BMC, with a line of level 4: an enumeration
    /// without value names, a value expression that does not compile or that runs
    /// into its limits.
    ///
    /// In hexadecimal mode the text of a setting whose current value is a number has
    /// been turned into decimal before; where the last UpdateSettingValue had no such
    /// value, or the model knows none, it is taken as hexadecimal here. Defaults are always
    /// decimal.
    ///
    /// Refusals name the setting once and say what it takes, never the value.
    /// @param action  FilterChange and the two restores take any writable setting; the
    ///                two defaults settings that have a default.
    /// @return 0; 10 for a value that the setting does not take; 16 for FilterSave; 18
    /// when the setting is read-only, immutable, hidden or grayed out now, with the
    /// condition that makes it so; 20 for an unknown name; 21 for a default action on
    /// a setting without one; 27. Any of them but 16 and 27 is also the one entry of the error list.
    /// `context` is untouched on failure.
    RedfishConfigResult PreparePatchContext(const std::string name, const std::string value, std::string& context,
                                            Tavrine::filterAction action);
    /// The same for many: each value is judged as all the others of the call leave
    /// the dependencies. `contexts` is replaced by those that passed. Left out with
    /// a line of level 4, and no failure: settings unique to a system for
    /// FilterRestoreOtherSystem; settings without a default, or that cannot be
    /// written now, for the two defaults.
    /// @return 0 when nothing failed; 7 when some passed; the result itself where a
    /// single one was refused and none passed; 18 when several were and none passed; 16 and 27 as
    /// above, with no contexts. The error list has one entry a refusal, in the order of `values`.
    RedfishConfigResult PreparePatchContext(const Tavrine::SettingStringMap& values,
                                            Tavrine::SettingStringMap& contexts, Tavrine::filterAction action);

    /// What failed in the last change or operation on many settings, one entry a
    /// setting. Each of them starts with an empty list.
    std::vector<RedfishConfigResult> GetError() const;
    /// The same list, which is empty afterwards.
    std::vector<RedfishConfigResult> TakeErrors();

  private:
    using CreateFunction = RedfishConfigSetting* (
        RedfishConfigSettingManager::*)(Tavrine::RedfishConfigSettingInfoStru&, const Tavrine::Config_Options&);

    RedfishConfigSetting* createNumericSetting(Tavrine::RedfishConfigSettingInfoStru& info,
                                               const Tavrine::Config_Options& options);
    RedfishConfigSetting* createTextSetting(Tavrine::RedfishConfigSettingInfoStru& info,
                                            const Tavrine::Config_Options& options);
    RedfishConfigSetting* createEnumerateSetting(Tavrine::RedfishConfigSettingInfoStru& info,
                                                 const Tavrine::Config_Options& options);
    RedfishConfigSetting* createBooleanSetting(Tavrine::RedfishConfigSettingInfoStru& info,
                                               const Tavrine::Config_Options& options);
    RedfishConfigSetting* createPasswordSetting(Tavrine::RedfishConfigSettingInfoStru& info,
                                                const Tavrine::Config_Options& options);

    using TextQuery = RedfishConfigResult (RedfishConfigSettingManager::*)(const RedfishConfigSetting&,
                                                                           const Tavrine::DependencyEvaluation&,
                                                                           std::string&) const;

    RedfishConfigResult DefaultText(const RedfishConfigSetting& setting, const Tavrine::DependencyEvaluation& now,
                                    std::string& text) const;
    RedfishConfigResult ValidValuesText(const RedfishConfigSetting& setting, const Tavrine::DependencyEvaluation& now,
                                        std::string& text) const;
    RedfishConfigResult DescriptionText(const RedfishConfigSetting& setting, const Tavrine::DependencyEvaluation& now,
                                        std::string& text) const;
    RedfishConfigResult QueryOne(const std::string& name, std::string& text, TextQuery query);
    RedfishConfigResult QueryAll(Tavrine::SettingStringMap& texts, TextQuery query);

    RedfishConfigResult ReadModel();
    void TakeModel(const std::shared_ptr<const Tavrine::SettingModel>& model);
    std::shared_ptr<RedfishConfigSetting> MakeSetting(const std::shared_ptr<Tavrine::EvaluatedModel>& model,
                                                      std::size_t index);
    /// Once for each setting.
    const RedfishConfigSetting* KeepSetting(const std::shared_ptr<Tavrine::EvaluatedModel>& model, std::size_t index);
    /// What all settings share, which hangs on each of them: null before the registry has been read, and for a
    /// registry without settings.
    const std::shared_ptr<Tavrine::EvaluatedModel>& Evaluated() const;
    /// These two where there is at least one setting.
    const Tavrine::SettingModel& Model() const;
    const Tavrine::DependencyEvaluation& Now() const;
    /// nullptr for an unknown name. Once the registry has been read.
    const RedfishConfigSetting* SettingNamed(const std::string& name);
    /// What the model knows better than the registry that `info` is of: which types there are, and the value now.
    void TypeAndValue(const RedfishConfigSetting& setting, Tavrine::RedfishConfigSettingInfoStru& info) const;
    const Tavrine::SettingStringMap& ForcedOn(const RedfishConfigSetting& setting);
    RedfishConfigResult UnknownSetting(const std::string& name) const;
    /// @return as GetSettingProperties; `setting` is untouched on failure.
    RedfishConfigResult FindSetting(const std::string& name, const RedfishConfigSetting*& setting);

    std::vector<RedfishConfigResult> m_ErrorList;
    std::string m_Schema;
    Tavrine::SettingValueMap m_Values;
    /// Settings that were asked about to the properties that dependencies force on them now, each
    /// with the condition that does it.
    std::map<std::string, Tavrine::SettingStringMap> m_ForcedProperties;
    /// Made when they are asked for by name; the first one of the registry as soon as that is read, for
    /// the model that all of them share.
    std::map<std::string, std::shared_ptr<RedfishConfigSetting>> m_Settings;
    std::map<std::string, CreateFunction> m_SettingTypeCreators;
    bool m_Flag;
    Tavrine::Config_Options m_Options;
    Tavrine::SettingGroupMap m_Groups;
    /// In hexadecimal mode the settings, by AttributeKey alone and in the order of m_Values, that hold a
    /// number and that the last UpdateSettingValue did not name: the caller does not know their values.
    std::vector<Tavrine::RedfishConfigSettingInfoStru> m_NotTold;
};
