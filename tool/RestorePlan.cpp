#include "RestorePlan.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

#include "ConfigOptions.h"
#include "JsonValues.h"
#include "OrderedLookup.h"
#include "SavedValue.h"
#include "ValueConversions.h"

namespace Tavrine::Tool
{
namespace
{

using Manager = RedfishConfigSettingManager;

void Settle(RestoreSetting& setting, RestoreOutcome outcome, int code, std::string why)
{
    setting.Outcome = outcome;
    setting.Code = code;
    setting.Why = std::move(why);
}

class Judge
{
  public:
    Judge(Manager& manager, bool sameSystem, RestorePlan& plan)
        : m_Manager(manager), m_Action(sameSystem ? FilterRestoreSameSystem : FilterRestoreOtherSystem), m_Plan(plan)
    {
    }

    void TakeWhatIsKnown(bool uefi, const IsReported& isReported)
    {
        for (RestoreSetting& setting : m_Plan.Settings)
        {
            RedfishConfigSettingInfoStru info;
            RedfishConfigResult known = m_Manager.GetSettingOutline(setting.Name, info);
            std::optional<std::string>& current = m_Current.emplace_back();
            setting.Secret = info.SettingType == "Password";
            setting.Stranger = known.ErrorCode() == CodeNotFound;
            if (known.ErrorCode() != CodeSucceed)
            {
                Settle(setting, RestoreOutcome::NotSent, CodeNotFound, "this system does not know the setting");
            }
            else if (AsksForDefaults(setting.Name, setting.Value))
            {
                Settle(setting, RestoreOutcome::NotSent, CodeSucceed,
                       "it asks for all defaults at the next start, as loaddefault with --post does");
            }
            else if (uefi && info.IsProtected)
            {
                Settle(setting, RestoreOutcome::NotSent, CodeHidden, "it is a protected setting, which set changes");
            }
            else if (std::string text; GetOptionalVarAsString(info.CurrentValue, text))
            {
                if (IsValue(setting.Value, info.CurrentValue))
                {
                    setting.Outcome = RestoreOutcome::InPlace;
                    setting.Value = text;
                }
                current = std::move(text);
            }
            else if (!isReported(setting.Name))
            {
                Settle(setting, RestoreOutcome::NotSent, CodeNotFound, "this system does not report the setting now");
            }
        }
    }

    /// Takes those out of `wanted` that are refused; what the others need may be among
    /// them, so the others are judged again.
    RedfishConfigResult Sift(SettingStringMap& wanted, SettingStringMap& contexts,
                             std::vector<RedfishConfigResult>& refusals)
    {
        while (!wanted.empty())
        {
            RedfishConfigResult result = m_Manager.PreparePatchContext(wanted, contexts, m_Action);
            if (result.ErrorCode() == CodeSucceed)
            {
                break;
            }
            const std::size_t before = wanted.size();
            for (RedfishConfigResult& error : m_Manager.TakeErrors())
            {
                if (wanted.erase(error.ErrorSetting()) != 0)
                {
                    refusals.push_back(error);
                }
            }
            if (wanted.size() == before)
            {
                return result;
            }
        }
        return {CodeSucceed, "", ""};
    }

    RedfishConfigResult Run()
    {
        SettingStringMap wanted;
        for (const RestoreSetting& setting : m_Plan.Settings)
        {
            if (setting.Outcome == RestoreOutcome::Planned)
            {
                wanted.emplace_hint(wanted.end(), setting.Name, setting.Value);
            }
        }
        SettingStringMap contexts;
        std::vector<RedfishConfigResult> refusals;
        RedfishConfigResult result = Sift(wanted, contexts, refusals);
        if (result.ErrorCode() != CodeSucceed)
        {
            return result;
        }
        SettingStringMap locked = Refuse(refusals);
        refusals.clear();
        SettingStringMap lockedContexts;
        result = Sift(locked, lockedContexts, refusals);
        if (result.ErrorCode() != CodeSucceed)
        {
            return result;
        }
        AddCall(locked, lockedContexts);
        AddCall(wanted, contexts);
        return {CodeSucceed, "", ""};
    }

  private:
    /// Of a setting of the plan.
    std::size_t IndexOf(const std::string& name) const
    {
        const auto place = std::ranges::lower_bound(m_Plan.Settings, name, {}, &RestoreSetting::Name);
        return static_cast<std::size_t>(place - m_Plan.Settings.begin());
    }

    /// @return those that the other settings of the file may have locked.
    SettingStringMap Refuse(std::vector<RedfishConfigResult>& refusals)
    {
        SettingStringMap locked;
        for (RedfishConfigResult& refusal : refusals)
        {
            RestoreSetting& setting = m_Plan.Settings[IndexOf(refusal.ErrorSetting())];
            Settle(setting, RestoreOutcome::Refused, refusal.ErrorCode(), refusal.ErrorMsg());
            if (refusal.ErrorCode() == CodeRefused)
            {
                locked.emplace(setting.Name, setting.Value);
            }
        }
        return locked;
    }

    void AddCall(const SettingStringMap& wanted, const SettingStringMap& contexts)
    {
        std::vector<std::size_t> call;
        OrderedLookup sent(contexts);
        for (const auto& entry : wanted)
        {
            const std::size_t index = IndexOf(entry.first);
            RestoreSetting& setting = m_Plan.Settings[index];
            const auto context = sent.Find(entry.first);
            if (context == contexts.end())
            {
                Settle(setting, RestoreOutcome::NotSent, CodeSucceed,
                       "it belongs to one system alone; --same-system brings it back");
                continue;
            }
            // Written by hand it may be "03" or "True"; the BMC will show it as it was sent.
            setting.Value = PlainText(context->second);
            const bool isInPlace = m_Current[index] == setting.Value;
            Settle(setting, isInPlace ? RestoreOutcome::InPlace : RestoreOutcome::Planned, CodeSucceed, {});
            if (!isInPlace)
            {
                call.push_back(index);
            }
        }
        if (!call.empty())
        {
            m_Plan.Calls.push_back(std::move(call));
        }
    }

    Manager& m_Manager;
    filterAction m_Action;
    RestorePlan& m_Plan;
    /// By setting of the plan.
    std::vector<std::optional<std::string>> m_Current;
};

} // namespace

std::string TakeSavedNames(const SavedSettings& saved, const Prefixes& prefixes, RestorePlan& plan, bool legacyNames)
{
    SettingStringMap bare;
    if (std::string error = TakeBareSettings(saved, prefixes, bare, legacyNames); !error.empty())
    {
        return error;
    }
    plan = {};
    plan.Settings.reserve(bare.size());
    for (auto& [name, value] : bare)
    {
        RestoreSetting& setting = plan.Settings.emplace_back();
        setting.Name = name;
        setting.Value = std::move(value);
    }
    return {};
}

RedfishConfigResult JudgeRestore(RedfishConfigSettingManager& manager, bool sameSystem, bool uefi,
                                 const IsReported& isReported, RestorePlan& plan)
{
    Judge judge(manager, sameSystem, plan);
    judge.TakeWhatIsKnown(uefi, isReported);
    return judge.Run();
}

} // namespace Tavrine::Tool
