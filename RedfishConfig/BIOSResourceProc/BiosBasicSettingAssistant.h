#pragma once

#include <string>
#include <vector>

#include "RedfishConfigResult.h"
#include "ValueTypes.h"

namespace Tavrine
{

/// The value store of one resource: what the BMC reported, what waits for a reboot and
/// what is to be changed. How the resource is read and written is left to the four pure
/// operations. The object is owned by the shared pointer that it was made with, whose
/// control block knows the concrete type. Used by one thread at a time.
///
/// What reads may answer what a request to the BMC ended in (24, 26, 27, 32, 33; a read by POST also 1 and 28).
class BiosBasicSettingAssistant
{
  public:
    /// Sends m_ChangedValues, or nothing where there are none: 0. They are emptied by the request,
    /// whatever came of it, also where none went out for lack of a connection; they stay where what the
    /// request needs was not found.
    virtual RedfishConfigResult FlushChanges() = 0;
    /// The current values by both queries, whatever is cached here. A query need not be a request:
    /// the standard resource takes its effective values from the text that it keeps. A failed
    /// one of effective values drops m_CurrentValues; a failed one of pending values gives the effective ones and 0.
    virtual RedfishConfigResult ReloadAllSettingValues(SettingValueMap& values);
    /// The current values: pending where present, else effective; reads only what is
    /// missing. A failed pending read gives the effective values and 0.
    virtual RedfishConfigResult GetCurrentValuesMap(SettingValueMap& values);
    /// Effective and pending text of each setting in which they differ, or of the named
    /// one. Where `compare`, which is added to, is empty in the end: 2 when there is no difference,
    /// 20 for an unknown name.
    virtual RedfishConfigResult GetComparePendingValueMap(SettingCompareMap& compare, const std::string& settingName);
    /// Shows a staged change, double quotes left out, in the cached pending and current values, where
    /// they hold the name and the text suits the kind of the value there. Always 0.
    virtual RedfishConfigResult UpdateSettingValueCache(const std::string& settingName, const std::string& value);
    /// Gives a text that stands for the resource; only the standard resource has one.
    virtual void SetValueResponse(const std::string& response);
    /// Replaces `values` by those in force; they stay as they were on failure.
    virtual RedfishConfigResult QueryEffectiveValue(SettingValueMap& values) = 0;
    /// The same with those that wait; the standard resource fills m_PendingValues alone.
    virtual RedfishConfigResult QueryPendingValue(SettingValueMap& values) = 0;
    /// Fetches the text of the resource, where there is one.
    virtual RedfishConfigResult QueryValueURLResponse() = 0;

    /// Sees to it that m_EffectiveValues are there: they are read if none are cached.
    RedfishConfigResult NeedEffectiveValues();
    /// A copy of them. `values` is replaced on success.
    RedfishConfigResult GetEffectiveValueMap(SettingValueMap& values);
    /// Lays the pending values of settings that have effective ones, and else these, over
    /// m_CurrentValues, and gives a copy.
    SettingValueMap MergeCurrentValues();

    /// Values that the resource reports as in force.
    SettingValueMap m_EffectiveValues;
    /// Values that wait for a reboot.
    SettingValueMap m_PendingValues;
    SettingValueMap m_CurrentValues;
    /// Staged changes: name to the JSON text of the new value.
    SettingStringMap m_ChangedValues;
    /// Failures of single settings, gathered by every flush.
    std::vector<RedfishConfigResult> m_Errors;
    std::string m_Unused;

  protected:
    ~BiosBasicSettingAssistant() = default;

    /// Ends a flush, whatever became of it: failures are kept, the changes are not.
    void TakeFlushErrors(const std::vector<RedfishConfigResult>& errors);

  private:
    RedfishConfigResult BuildCurrentValues(SettingValueMap& values, bool readAnew);
    void CompareAll(SettingCompareMap& compare) const;
    void CompareOne(SettingCompareMap& compare, const std::string& settingName) const;
    RedfishConfigResult NothingToCompare(const std::string& settingName) const;
};

} // namespace Tavrine
