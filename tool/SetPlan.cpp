#include "SetPlan.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <set>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include "BIOSCompatibleModule.h"
#include "JsonOutput.h"
#include "JsonValues.h"
#include "MissingActions.h"
#include "Options.h"
#include "Secret.h"
#include "SettingNames.h"
#include "ValueConversions.h"

namespace json = boost::json;

namespace Tavrine::Tool
{
namespace
{

void Refuse(SetSetting& setting, Failure failure)
{
    setting.Outcome = SetOutcome::Refused;
    setting.Why = std::move(failure);
}

void Refuse(SetSetting& setting, RedfishConfigResult result)
{
    Failure failure = FailureOf(std::move(result), setting.ShownName);
    // An old name stands in the front object's answers, the key in those of the manager.
    for (const std::string& name : {setting.Key, setting.Name})
    {
        failure.Message = WithShownName(failure.Message, name, setting.ShownName);
    }
    Refuse(setting, std::move(failure));
}

/// By name, texts of which some may be passwords.
struct WipedTexts
{
    SettingStringMap Texts;

    ~WipedTexts()
    {
        for (auto& entry : Texts)
        {
            Wipe(entry.second);
        }
    }
};

/// A value as the library writes it, which takes "TRUE", "+3" and "03", too: it compares texts, so that in another form
/// a value that is in place would be sent. Hexadecimal numbers are brought to decimal before they are compared.
std::string PlainForm(const std::string& text, const RedfishConfigSettingInfoStru& info, bool hexadecimal)
{
    const bool number = info.SettingType == "Integer" && !hexadecimal;
    if (!number && info.SettingType != "Boolean")
    {
        return text;
    }
    const OptionalVar kind = number ? SettingVariant(std::int64_t{0}) : SettingVariant(false);
    if (info.CurrentValue && info.CurrentValue->index() != kind->index())
    {
        return text;
    }
    OptionalVar value = kind;
    std::string plain = text;
    const bool plus = number && text.starts_with('+') && !text.starts_with("+-");
    return TransferStringToOptionalVar(value, plus ? text.substr(1) : text) && GetOptionalVarAsString(value, plain)
               ? plain
               : text;
}

class Planner
{
  public:
    Planner(RedfishConfigProc& front, const ManagerReader& readManager, const Options& options, CauseLog& causes)
        : m_Front(front), m_ReadManager(readManager), m_Options(options), m_Causes(causes)
    {
    }

    SetPlan Make(const std::vector<SettingPair>& pairs)
    {
        m_Plan.Settings.reserve(pairs.size());
        for (const SettingPair& pair : pairs)
        {
            SetSetting& setting = m_Plan.Settings.emplace_back();
            setting.Name = setting.Key = pair.Name;
            setting.ShownName = m_Front.m_Prefix + "." + pair.Name;
            setting.Value = pair.Value;
            BIOSCompatibleModule(m_Front.m_Options).ConvertNameFromOldToNew(pair.Name, setting.Key);
        }
        const bool isRead = !RefuseSameSettings() && TakeRegistry() && ReadSettings();
        if (isRead && m_Options.NoCheck)
        {
            PlanUnchecked();
        }
        else if (isRead)
        {
            PlanChecked();
        }
        return std::move(m_Plan);
    }

  private:
    bool Stop(RedfishConfigResult result)
    {
        m_Plan.Stop = m_Causes.Explain(std::move(result));
        HintAtMissingAction(*m_Plan.Stop, m_Plan.Notes);
        return false;
    }

    /// An old and a new name of one setting.
    bool RefuseSameSettings()
    {
        std::set<std::string> keys;
        for (const SetSetting& setting : m_Plan.Settings)
        {
            if (!keys.insert(setting.Key).second)
            {
                m_Plan.Stop =
                    Failure{StatusUsage, "The setting " + setting.Key + " is given twice, by two of its names"};
                return true;
            }
        }
        return false;
    }

    /// Asked first, since then the library looks at both kinds of settings, and keeps what it
    /// has read.
    bool TakeRegistry()
    {
        const RedfishConfigResult result = m_ReadManager(m_Front, m_Manager);
        // Without the check a BMC that serves no protected settings is good enough.
        if (IsSuccess(result.ErrorCode()) || (m_Options.NoCheck && MissesAction(FailureOf(result))))
        {
            return true;
        }
        return Stop(result);
    }

    bool ReadSettings()
    {
        for (SetSetting& setting : m_Plan.Settings)
        {
            RedfishConfigResult read = ReadEffective(setting);
            RedfishConfigSettingInfoStru info;
            RedfishConfigResult known = m_Manager ? m_Manager->GetSettingProperties(setting.Key, info)
                                                  : RedfishConfigResult(CodeSucceed, "", "");
            m_Reported.push_back(read == CodeSucceed || read == CodeNoValue);
            if (read == CodeHidden || (read == CodeNotFound && (m_Options.NoCheck || known == CodeNotFound)))
            {
                Refuse(setting, read);
                continue;
            }
            const bool usable = m_Reported.back() || read == CodeNotFound;
            if (!usable || known != CodeSucceed)
            {
                return Stop(usable ? known : read);
            }
            setting.Key = info.AttributeKey.value_or(setting.Key);
            setting.Protected = info.IsProtected && m_Options.SystemType == SystemTypeUefi;
            setting.Password = info.SettingType == "Password";
            setting.Number = info.SettingType.value_or("Integer") == "Integer";
            setting.Secret = setting.Password || !m_Manager;
            if (!m_Options.NoCheck)
            {
                setting.Value = PlainForm(setting.Value, info, m_Options.Hex);
            }
        }
        return true;
    }

    RedfishConfigResult ReadEffective(SetSetting& setting)
    {
        SettingStringMap values;
        RedfishConfigResult result = m_Front.QuerySettingValue(setting.Name, values);
        TypedSettings typed;
        if (IsSuccess(result.ErrorCode()) && !values.empty() && ReadTypedSettings(values.begin()->second, "", typed) &&
            !typed.empty())
        {
            setting.Effective = typed.begin()->second;
        }
        return result;
    }

    void PlanUnchecked()
    {
        for (const bool wantProtected : {true, false})
        {
            for (std::size_t index = 0; index < m_Plan.Settings.size(); ++index)
            {
                SetSetting& setting = m_Plan.Settings[index];
                if (setting.Outcome == SetOutcome::Planned && setting.Protected == wantProtected &&
                    MakeUncheckedContext(setting))
                {
                    AddToRequests(index, false);
                }
            }
        }
    }

    /// The library puts quotes around the text of a string and lets all others stand, so
    /// that only a text that is JSON already leaves the rest of the body alone.
    bool MakeUncheckedContext(SetSetting& setting) const
    {
        const bool raw = setting.Effective && (setting.Effective->is_number() || setting.Effective->is_bool());
        if (!raw)
        {
            if (Secret(ValidUtf8(setting.Value)).Text() != setting.Value)
            {
                return CannotSend(setting, "it is no text in UTF-8");
            }
            setting.Context = Secret(QuotedJson(setting.Value)).Text();
            setting.UncheckedText.assign(setting.Context, 1, setting.Context.size() - 2);
            return true;
        }
        const bool hexadecimal = m_Options.Hex && setting.Effective->is_number();
        if (hexadecimal && !isHexString(setting.Value))
        {
            return CannotSend(setting, "the BMC holds a number, and with --hex it must be a hexadecimal one");
        }
        const std::string text = hexadecimal ? HexToDec(setting.Value) : setting.Value;
        json::error_code failure;
        const json::value value = json::parse(text, failure);
        if (failure || value.is_structured())
        {
            return CannotSend(setting, "the BMC holds a number or a boolean, so that even without the check it must "
                                       "be a number, true, false, null or a text in double quotes");
        }
        setting.Context = text;
        setting.UncheckedText = setting.Value;
        return true;
    }

    static bool CannotSend(SetSetting& setting, const std::string& reason)
    {
        Refuse(setting, Failure{CodeInvalidValue, setting.ShownName + ": the new value cannot be sent: " + reason,
                                setting.ShownName});
        return false;
    }

    /// The text that the library compares and checks: decimal where it converts. A number that it does not
    /// convert, as it is beyond 64 bits, could still be read as a decimal one; as it stands here it is refused.
    std::string CheckedText(const SetSetting& setting, const OptionalVar& current) const
    {
        const bool hexadecimal = m_Options.Hex && IsNumSetting(current);
        return !hexadecimal                 ? setting.Value
               : isHexString(setting.Value) ? HexToDec(setting.Value)
               : setting.Number             ? "0x" + setting.Value
                                            : setting.Value;
    }

    void PlanChecked()
    {
        for (std::size_t index = 0; index < m_Plan.Settings.size(); ++index)
        {
            SetSetting& setting = m_Plan.Settings[index];
            RedfishConfigSettingInfoStru info;
            if (setting.Outcome == SetOutcome::Planned && m_Reported[index] &&
                m_Manager->GetSettingProperties(setting.Key, info) == CodeSucceed)
            {
                m_Current[setting.Key] = info.CurrentValue;
                std::string text;
                if (setting.Effective && GetOptionalVarAsString(info.CurrentValue, text) &&
                    text == CheckedText(setting, info.CurrentValue))
                {
                    // What counts as current is the pending value, where there is one.
                    const json::value value = VariantToJson(*info.CurrentValue);
                    setting.Outcome = SetOutcome::Already;
                    setting.Context = json::serialize(value);
                    setting.InForce = value == *setting.Effective;
                }
            }
        }
        m_Manager->UpdateSettingValue(m_Current);
        if (JudgeTogether())
        {
            PutInOrder();
        }
    }

    std::string TextOf(const SetSetting& setting) const
    {
        const auto entry = m_Current.find(setting.Key);
        return CheckedText(setting, entry == m_Current.end() ? OptionalVar() : entry->second);
    }

    /// @return false when nothing can be judged.
    bool JudgeTogether()
    {
        WipedTexts wanted;
        for (const SetSetting& setting : m_Plan.Settings)
        {
            if (setting.Outcome == SetOutcome::Planned)
            {
                wanted.Texts[setting.Key] = TextOf(setting);
            }
        }
        if (wanted.Texts.empty())
        {
            return true;
        }
        WipedTexts contexts;
        RedfishConfigResult result = m_Manager->PreparePatchContext(wanted.Texts, contexts.Texts, FilterChange);
        std::unordered_map<std::string, RedfishConfigResult> errors;
        for (RedfishConfigResult& error : m_Manager->TakeErrors())
        {
            errors.try_emplace(error.ErrorSetting(), error);
        }
        if (result != CodeSucceed && errors.empty())
        {
            return Stop(result);
        }
        for (SetSetting& setting : m_Plan.Settings)
        {
            if (const auto error = errors.find(setting.Key); error != errors.end())
            {
                Refuse(setting, error->second);
            }
        }
        return true;
    }

    /// The library judges one change after the other, each by those that are queued. So a
    /// setting that another one of the call must set free goes behind that one.
    void PutInOrder()
    {
        for (bool progress = true; std::exchange(progress, false);)
        {
            for (const bool wantProtected : {true, false})
            {
                for (std::size_t index = 0; index < m_Plan.Settings.size(); ++index)
                {
                    SetSetting& setting = m_Plan.Settings[index];
                    const bool waits = setting.Outcome == SetOutcome::Planned && setting.Context.empty();
                    if (waits && setting.Protected == wantProtected && Queue(index))
                    {
                        progress = true;
                    }
                }
            }
        }
        for (SetSetting& setting : m_Plan.Settings)
        {
            if (setting.Outcome == SetOutcome::Planned && setting.Context.empty())
            {
                std::string context;
                Refuse(setting, m_Manager->PreparePatchContext(setting.Key, TextOf(setting), context, FilterChange));
            }
        }
    }

    bool Queue(std::size_t index)
    {
        SetSetting& setting = m_Plan.Settings[index];
        if (m_Manager->PreparePatchContext(setting.Key, TextOf(setting), setting.Context, FilterChange) != CodeSucceed)
        {
            return false;
        }
        RedfishConfigSettingInfoStru info;
        m_Manager->GetSettingProperties(setting.Key, info);
        AddToRequests(index, IsRelated(setting.Key, info.DependencyNames));
        if (!info.DependencyNames.empty())
        {
            EnterValue(setting);
        }
        return true;
    }

    /// Lets the checks that follow see the change, as the library's value cache does. Only where another setting looks:
    /// in hexadecimal mode it costs a walk over the whole registry, and the manager does not wipe what it keeps.
    void EnterValue(const SetSetting& setting)
    {
        OptionalVar value = VariantOfJson(setting.Context);
        if (!value)
        {
            return;
        }
        const auto entry = m_Current.insert_or_assign(setting.Key, std::move(value)).first;
        if (m_Options.Hex)
        {
            m_Manager->UpdateSettingValue(m_Current); // what is not named counts as not turned into decimal
            return;
        }
        m_Manager->UpdateSettingValue({*entry});
    }

    /// The library's rule for sending what is queued before a related setting joins it.
    /// Like there, what was sent otherwise still counts.
    bool IsRelated(const std::string& name, const std::vector<std::string>& dependencies)
    {
        const bool related =
            m_QueuedDependencies.contains(name) ||
            std::ranges::any_of(dependencies, [this](const std::string& one) { return m_QueuedNames.contains(one); });
        if (related)
        {
            m_QueuedDependencies.clear();
            m_QueuedNames.clear();
        }
        m_QueuedDependencies.insert(dependencies.begin(), dependencies.end());
        m_QueuedNames.insert(name);
        return related;
    }

    void AddToRequests(std::size_t index, bool startsAnew)
    {
        auto& requests = m_Plan.Requests;
        if (requests.empty() || startsAnew ||
            m_Plan.Settings[requests.back().back()].Protected != m_Plan.Settings[index].Protected)
        {
            requests.emplace_back();
        }
        requests.back().push_back(index);
    }

    RedfishConfigProc& m_Front;
    const ManagerReader& m_ReadManager;
    const Options& m_Options;
    CauseLog& m_Causes;
    SetPlan m_Plan;
    /// Null where the BMC keeps its registry and values to itself.
    std::unique_ptr<RedfishConfigSettingManager> m_Manager;
    /// By index: the BMC names the setting among its values.
    std::vector<bool> m_Reported;
    /// Of the settings that the BMC names, as they stand with what is queued and others look at.
    SettingValueMap m_Current;
    std::unordered_set<std::string> m_QueuedNames;
    std::unordered_set<std::string> m_QueuedDependencies;
};

} // namespace

SetSetting::~SetSetting()
{
    Wipe(Value);
    Wipe(UncheckedText);
    Wipe(Context);
}

SetPlan MakeSetPlan(RedfishConfigProc& front, const ManagerReader& readManager, const Options& options,
                    const std::vector<SettingPair>& pairs, CauseLog& causes)
{
    return Planner(front, readManager, options, causes).Make(pairs);
}

void Abandon(SetPlan& plan, SetOutcome outcome, int code, const std::string& reason)
{
    for (SetSetting& setting : plan.Settings)
    {
        if (setting.Outcome == SetOutcome::Planned)
        {
            setting.Outcome = outcome;
            setting.Why = Failure{code, setting.ShownName + ": " + reason, setting.ShownName};
        }
    }
}

} // namespace Tavrine::Tool
