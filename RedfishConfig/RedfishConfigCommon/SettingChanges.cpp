#include "RedfishConfigSettingManager.h"

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "Dependencies.h"
#include "Log.h"
#include "PatchContexts.h"
#include "RedfishConfigSetting.h"
#include "ValueConversions.h"

// The operations that check new values.

using Tavrine::DependencyEvaluation;
using Tavrine::filterAction;
using Tavrine::Log;
using Tavrine::SettingStringMap;
using Tavrine::SettingValueMap;
using Tavrine::WantedValue;

namespace
{

constexpr int CodePartlyDone = 7;
constexpr int CodeWrongParameter = 16;
constexpr int CodeNotChangeable = 18;

bool IsDefaultAction(filterAction action)
{
    return action == Tavrine::FilterDefaultOne || action == Tavrine::FilterDefaultAll;
}

RedfishConfigResult CheckAction(filterAction action)
{
    const bool known = action == Tavrine::FilterChange || action == Tavrine::FilterRestoreSameSystem ||
                       action == Tavrine::FilterRestoreOtherSystem || IsDefaultAction(action);
    return known ? RedfishConfigResult{0, "", ""}
                 : RedfishConfigResult{CodeWrongParameter, "Action " + std::to_string(action) + " changes no setting.",
                                       ""};
}

/// Callers that compare with the values in force pass every number of hexadecimal
/// mode through HexToDec, decimal defaults included.
std::string DefaultAsDecimal(const RedfishConfigSetting& setting, const std::string& text,
                             const DependencyEvaluation& now)
{
    const Tavrine::RegistryScalar& number = now.Now(setting.Index(), Tavrine::SettingProperty::DefaultValue);
    const std::string decimal = Tavrine::ScalarText(number);
    const bool converted = setting.Options().HexValueMode && std::holds_alternative<Tavrine::ExactInteger>(number) &&
                           text == Tavrine::HexToDec(decimal);
    return converted ? decimal : text;
}

/// Why a setting is left out of an operation on many; nullptr when it is not.
const char* ReasonToLeaveOut(const RedfishConfigSetting& setting, filterAction action, const DependencyEvaluation* now)
{
    if (action == Tavrine::FilterRestoreOtherSystem && setting.Attribute().IsSystemUnique)
    {
        return "it is unique to its system";
    }
    const bool noDefault =
        now != nullptr && !Tavrine::HasValue(now->Now(setting.Index(), Tavrine::SettingProperty::DefaultValue));
    return noDefault ? "it has no default value" : nullptr;
}

void LogLeftOut(const std::string& name, const std::string& reason)
{
    Log(4, __FILE__, __LINE__).Stream() << "Setting " << name << " is left out, since " << reason << ".";
}

using Failures = std::map<std::string, RedfishConfigResult>;

void JudgeAll(const std::vector<WantedValue>& wanted, filterAction action, SettingStringMap& contexts,
              Failures& failures)
{
    if (wanted.empty())
    {
        return;
    }
    Tavrine::JointEvaluation joint(wanted.front().Setting->Evaluated()->Now(), wanted);
    for (const WantedValue& one : wanted)
    {
        const std::string& name = one.Setting->Attribute().Name();
        const DependencyEvaluation& evaluation = joint.For(one);
        const std::string locked = IsDefaultAction(action) ? LockedWords(evaluation, one.Setting->Index()) : "";
        if (!locked.empty())
        {
            LogLeftOut(name, "it is " + locked);
            continue;
        }
        std::string context;
        RedfishConfigResult result = JudgeWanted(one, evaluation, context);
        if (result == 0)
        {
            contexts.emplace_hint(contexts.end(), name, std::move(context));
        }
        else
        {
            failures.emplace(name, result);
        }
    }
}

RedfishConfigResult Outcome(std::size_t passed, const Failures& failures)
{
    if (failures.empty())
    {
        return {0, "", ""};
    }
    const std::string count = std::to_string(failures.size());
    if (passed != 0)
    {
        return {CodePartlyDone, count + " of " + std::to_string(passed + failures.size()) + " new values are refused.",
                ""};
    }
    return failures.size() == 1
               ? failures.begin()->second
               : RedfishConfigResult{CodeNotChangeable, "All " + count + " new values are refused.", ""};
}

} // namespace

RedfishConfigResult RedfishConfigSettingManager::PreparePatchContext(const std::string name, const std::string value,
                                                                     std::string& context, filterAction action)
{
    m_ErrorList.clear();
    RedfishConfigResult result = CheckAction(action);
    if (result == 0)
    {
        result = ReadModel();
    }
    if (result != 0)
    {
        return result;
    }
    const RedfishConfigSetting* const known = SettingNamed(name);
    if (known == nullptr)
    {
        result = UnknownSetting(name);
    }
    else
    {
        const RedfishConfigSetting& setting = *known;
        const DependencyEvaluation& now = Now();
        if (IsDefaultAction(action))
        {
            std::string registered;
            result = DefaultText(setting, now, registered);
        }
        if (result == 0)
        {
            result = JudgeWanted(ReadWanted(setting, value, m_Values, m_NotTold, action), now, context);
        }
    }
    if (result != 0)
    {
        m_ErrorList.push_back(result);
    }
    return result;
}

RedfishConfigResult RedfishConfigSettingManager::PreparePatchContext(const SettingStringMap& values,
                                                                     SettingStringMap& contexts, filterAction action)
{
    m_ErrorList.clear();
    SettingStringMap passed;
    RedfishConfigResult result = CheckAction(action);
    if (result == 0)
    {
        result = ReadModel();
    }
    if (result != 0)
    {
        contexts.clear();
        return result;
    }
    const DependencyEvaluation* now = IsDefaultAction(action) && !m_Settings.empty() ? &Now() : nullptr;
    Failures failures;
    std::vector<WantedValue> wanted;
    for (const auto& [name, text] : values)
    {
        const RedfishConfigSetting* const known = SettingNamed(name);
        if (known == nullptr)
        {
            failures.emplace(name, UnknownSetting(name));
            continue;
        }
        const RedfishConfigSetting& setting = *known;
        if (const char* reason = ReasonToLeaveOut(setting, action, now))
        {
            LogLeftOut(name, reason);
            continue;
        }
        wanted.push_back(ReadWanted(setting, now != nullptr ? DefaultAsDecimal(setting, text, *now) : text, m_Values,
                                    m_NotTold, action));
    }
    JudgeAll(wanted, action, passed, failures);
    contexts = std::move(passed);
    for (const auto& [name, failure] : failures)
    {
        m_ErrorList.push_back(failure);
    }
    return Outcome(contexts.size(), failures);
}

std::vector<RedfishConfigResult> RedfishConfigSettingManager::TakeErrors() { return std::exchange(m_ErrorList, {}); }
