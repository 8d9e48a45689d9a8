#include "PendingCommand.h"

#include <charconv>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include "BIOSCompatibleModule.h"
#include "Bmc.h"
#include "CauseLog.h"
#include "ConfigOptions.h"
#include "JsonOutput.h"
#include "MissingActions.h"
#include "Options.h"
#include "PendingValues.h"
#include "RedfishConfigSettingManager.h"
#include "SettingManager.h"
#include "SettingNames.h"
#include "SettingSelection.h"
#include "TextOutput.h"
#include "ValueConversions.h"

namespace json = boost::json;

namespace Tavrine::Tool
{
namespace
{

/// A bare 26 where the values in force are there: the library found no way from the Bios
/// resource to a settings object. These values are at hand then, so that asking costs nothing.
Failure ExplainPending(RedfishConfigProc& front, const RedfishConfigResult& result, CauseLog& causes,
                       const std::string& shownName)
{
    Failure failure = causes.Explain(result, shownName);
    SettingStringMap inForce;
    if (result == CodeQuery && RedfishConfigResult(result).ErrorMsg().empty() &&
        IsSuccess(front.QueryGroupSettingValues(inForce).ErrorCode()))
    {
        failure.Message = (shownName.empty() ? "" : shownName + ": ") +
                          "The BMC names no settings object, so that it does not tell what is pending.";
        failure.Cause.clear();
    }
    return failure;
}

/// What the BMC says about all ordinary settings at once, by shown name.
struct AllPending
{
    RedfishConfigResult Result;
    SettingCompareMap Compared;
    SettingStringMap Reported;
};

AllPending ReadAllPending(RedfishConfigProc& front)
{
    AllPending all = {{CodeSucceed, "", ""}, {}, {}};
    all.Result = front.CompareSettingPendingValues(all.Compared, "");
    if (Answered(all.Result))
    {
        const RedfishConfigResult read = front.QueryGroupSettingValues(all.Reported);
        all.Result = IsSuccess(read.ErrorCode()) ? all.Result : read;
    }
    return all;
}

/// Reads single names, each by a comparison of its own; a name that the attribute
/// registry lacks is looked up among all that the BMC reports.
class NamedReader
{
  public:
    NamedReader(Answer& answer, CauseLog& causes, const Options& options, const FormedFrontMaker& freshFront)
        : m_Answer(answer), m_Causes(causes), m_HasProtected(options.SystemType == SystemTypeUefi),
          m_FreshFront(freshFront), m_Front(freshFront(OutputForm::Text))
    {
    }

    void Read(const std::vector<std::string>& names, SettingCompareMap& compared)
    {
        if (names.size() > 1)
        {
            ReadTogether();
        }
        for (const std::string& name : names)
        {
            if (HasNothingPending(name))
            {
                TellUnshown(name);
            }
            else
            {
                ReadOne(name, compared);
            }
        }
    }

    const RedfishConfigProc& Front() const { return *m_Front; }

    /// Whether for each name it is known what waits.
    bool KnowsAll() const { return m_KnowsAll; }

  private:
    /// As long as nothing is pending, the library sends a request for each name.
    void ReadTogether()
    {
        m_All = ReadAllPending(*m_Front);
        m_NothingWaits = m_All->Result == CodeNothingPending;
        m_Causes.Explain(m_All->Result); // the names are to fail by what is told about them
        if (!Answered(m_All->Result))
        {
            m_All.reset(); // a name that needs it reads anew
        }
    }

    /// Whether that is known without a request: for an ordinary setting that the BMC reports, with a value or without.
    bool HasNothingPending(const std::string& name)
    {
        RedfishConfigSettingInfoStru info;
        if (!m_NothingWaits || !Describe(name, info) || (info.IsProtected && m_HasProtected))
        {
            return false;
        }
        SettingStringMap inForce;
        const RedfishConfigResult reported = m_Front->QuerySettingValue(name, inForce);
        return IsSuccess(reported.ErrorCode()) || reported == CodeNoValue;
    }

    /// @return false for a setting that the registry does not have, and without a registry.
    bool Describe(const std::string& name, RedfishConfigSettingInfoStru& info)
    {
        if (!std::exchange(m_IsRegistryRead, true))
        {
            ReadSettingManager(*m_Front, m_Manager, ManagerValues::None);
        }
        std::string key = name;
        BIOSCompatibleModule(m_Front->m_Options).ConvertNameFromOldToNew(name, key);
        return m_Manager != nullptr && m_Manager->GetSettingOutline(key, info) == CodeSucceed;
    }

    /// Where the BMC shows no value, or no true one as of a password, another one may wait.
    void TellUnshown(const std::string& name)
    {
        RedfishConfigSettingInfoStru info;
        SettingStringMap inForce;
        const bool isPassword = Describe(name, info) && info.SettingType == "Password";
        if (isPassword || m_Front->QuerySettingValue(name, inForce) == CodeNoValue)
        {
            m_KnowsAll = false;
            m_Answer.Notes.push_back(m_Front->m_Prefix + "." + name + ": whether a change waits is not known, since " +
                                     (isPassword ? "it is a password" : "the BMC shows no value of it"));
        }
    }

    void ReadOne(const std::string& name, SettingCompareMap& compared)
    {
        const std::string shownName = m_Front->m_Prefix + "." + name;
        if (m_Unreachable)
        {
            m_Unreachable->Setting = shownName;
            AddFailure(m_Answer, *m_Unreachable);
            return;
        }
        RedfishConfigResult result = m_Front->CompareSettingPendingValues(compared, name);
        if (result == CodeNothingPending || (IsSuccess(result.ErrorCode()) && !compared.contains(shownName)))
        {
            TellUnshown(name);
            return;
        }
        if (result == CodeNotFound)
        {
            result = TakeFromAll(name, shownName, result, compared);
        }
        if (Answered(result))
        {
            return;
        }
        result.SetErrorMsg(WithShownName(result.ErrorMsg(), name, shownName));
        const Failure failure = ExplainPending(*m_Front, result, m_Causes, shownName);
        HintAtMissingAction(failure, m_Answer.Notes);
        if (IsUnreachable(failure.Code))
        {
            m_Unreachable = failure;
        }
        AddFailure(m_Answer, failure);
    }

    /// @return 0; `missing`, the answer about the name, where the BMC does not report such a setting either; why it
    /// cannot be asked.
    RedfishConfigResult TakeFromAll(const std::string& name, const std::string& shownName,
                                    const RedfishConfigResult& missing, SettingCompareMap& compared)
    {
        if (!m_All)
        {
            m_All = ReadAllPending(*m_FreshFront(OutputForm::Text));
        }
        if (!Answered(m_All->Result))
        {
            return IsOfTheBmc(m_All->Result.ErrorCode()) ? m_All->Result : missing;
        }
        const std::string key = m_Front->GetSecondPrefix() + "." + name;
        if (const auto entry = m_All->Compared.find(key); entry != m_All->Compared.end())
        {
            compared[shownName] = entry->second;
        }
        return m_All->Reported.count(key) != 0 ? RedfishConfigResult(CodeSucceed, "", "") : missing;
    }

    Answer& m_Answer;
    CauseLog& m_Causes;
    bool m_HasProtected;
    const FormedFrontMaker& m_FreshFront;
    std::unique_ptr<RedfishConfigProc> m_Front;
    std::optional<AllPending> m_All;
    bool m_NothingWaits = false;
    bool m_IsRegistryRead = false;
    /// Null where the registry could not be read.
    std::unique_ptr<RedfishConfigSettingManager> m_Manager;
    std::optional<Failure> m_Unreachable;
    bool m_KnowsAll = true;
};

/// Tells the kinds of settings by their values in force: the library compares texts.
class KindReader
{
  public:
    KindReader(Answer& answer, CauseLog& causes, const FormedFrontMaker& freshFront)
        : m_Answer(answer), m_Causes(causes), m_Front(freshFront(OutputForm::Typed))
    {
    }

    /// @return false when all ordinary settings cannot be read; the failure is told.
    bool Read()
    {
        const RedfishConfigResult result = ReadTypedValues(*m_Front, m_Kinds);
        return IsSuccess(result.ErrorCode()) || Fail(result, {});
    }

    /// @return nothing when the kind cannot be read; the failure is told.
    std::optional<json::value> KindOf(const std::string& shownName, const std::string& name)
    {
        const auto known = m_Kinds.find(name);
        if (known != m_Kinds.end())
        {
            return known->second;
        }
        SettingStringMap given; // protected, hidden, or by an old name
        RedfishConfigResult result = m_Front->QuerySettingValue(name, given);
        TypedSettings single;
        if (IsSuccess(result.ErrorCode()) && (given.empty() || !ReadTypedSettings(given.begin()->second, "", single)))
        {
            result = CodeInternal;
        }
        if (!IsSuccess(result.ErrorCode()))
        {
            Fail(result, shownName);
            return std::nullopt;
        }
        return single.empty() ? json::value() : single.begin()->second;
    }

  private:
    /// @return false.
    bool Fail(const RedfishConfigResult& result, const std::string& shownName)
    {
        Failure failure = m_Causes.Explain(result);
        failure.Setting = shownName;
        failure.Message.insert(0, shownName.empty() ? "The kinds of the values could not be read: "
                                                    : shownName + ": the kind of its values could not be read: ");
        AddFailure(m_Answer, std::move(failure));
        return false;
    }

    Answer& m_Answer;
    CauseLog& m_Causes;
    std::unique_ptr<RedfishConfigProc> m_Front;
    TypedSettings m_Kinds;
};

json::value ValueOf(const std::string& text, const json::value& kind)
{
    std::int64_t number = 0;
    const char* end = text.data() + text.size();
    if (kind.is_number() && std::from_chars(text.data(), end, number).ptr == end && !text.empty())
    {
        return number;
    }
    if (kind.is_bool() && (text == "true" || text == "false"))
    {
        return text == "true";
    }
    return json::value(ValidUtf8(text));
}

void PutOne(Answer& answer, const Options& options, const std::string& name,
            const std::pair<std::string, std::string>& texts, const json::value& kind)
{
    if (options.Json)
    {
        answer.Data[ValidUtf8(name)] = {{"current", ValueOf(texts.first, kind)},
                                        {"pending", ValueOf(texts.second, kind)}};
        return;
    }
    const auto shown = [&](const std::string& text)
    { return EscapeText(options.Hex && kind.is_number() ? DecToHex(text) : text); };
    answer.Text += EscapeText(name) + "=" + shown(texts.first) + " -> " + shown(texts.second) + "\n";
}

/// @param kinds  tells how values are to be shown; none where their texts do for that.
void PutAll(Answer& answer, const SettingCompareMap& compared, const Options& options, KindReader* kinds)
{
    if (kinds != nullptr && !kinds->Read())
    {
        return; // a number that is taken for a text shows another value with --hex
    }
    const Prefixes prefixes = PrefixesOf(options);
    for (const auto& [name, texts] : compared)
    {
        const std::optional<json::value> kind =
            kinds != nullptr ? kinds->KindOf(name, BareName(name, prefixes)) : std::optional(json::value());
        if (kind)
        {
            PutOne(answer, options, name, texts, *kind);
        }
    }
}

/// @param nothing  what is said where no value is pending.
/// @return whether none is.
bool PutInto(Answer& answer, CauseLog& causes, const SettingCompareMap& compared, const Options& options,
             const FormedFrontMaker& freshFront, bool typed, const std::string& nothing)
{
    std::optional<KindReader> kinds;
    if (typed && !compared.empty() && (options.Json || options.Hex))
    {
        kinds.emplace(answer, causes, freshFront);
    }
    PutAll(answer, compared, options, kinds ? &*kinds : nullptr);
    const bool isNothing = compared.empty() && answer.Errors.empty();
    if (isNothing)
    {
        answer.Message = nothing;
        answer.Text = options.Json ? "" : nothing + "\n";
    }
    return isNothing;
}

/// What is pending beside single values.
void PutDefaults(const RedfishConfigProc& front, const Options& options, bool isNothing, Answer& answer)
{
    const bool due = WarnOfDefaults(front, answer.Notes);
    if (options.Json)
    {
        // A protected setting that is asked about by itself needs no resource that would tell, and a failed read tells
        // nothing.
        const bool isKnown = due || (IsSuccess(answer.Code) && (options.Names.empty() || !options.Protected));
        answer.More["defaultsPending"] = isKnown ? json::value(due) : json::value();
    }
    if (due && isNothing)
    {
        answer.Message = "All settings go to their defaults at the next start of the system.";
        answer.Text = options.Json ? "" : answer.Message + "\n";
    }
}

} // namespace

Answer ShowPending(const Options& options, const FormedFrontMaker& freshFront, bool typed)
{
    if (options.Names.empty())
    {
        return ShowAllPending(options, *freshFront(OutputForm::Text), freshFront, typed);
    }
    Answer answer;
    CauseLog causes;
    SettingCompareMap compared;
    NamedReader reader(answer, causes, options, freshFront);
    reader.Read(BareNames(options.Names, PrefixesOf(options)), compared);
    const bool isNothing =
        PutInto(answer, causes, compared, options, freshFront, typed,
                reader.KnowsAll() ? "Nothing is pending." : "Nothing is pending that the BMC shows.");
    PutDefaults(reader.Front(), options, isNothing, answer);
    return answer;
}

Answer ShowAllPending(const Options& options, RedfishConfigProc& front, const FormedFrontMaker& freshFront, bool typed)
{
    Answer answer;
    CauseLog causes;
    SettingCompareMap compared;
    const RedfishConfigResult result = front.CompareSettingPendingValues(compared, "");
    if (!Answered(result))
    {
        AddFailure(answer, ExplainPending(front, result, causes, {}));
    }
    const bool isNothing = PutInto(answer, causes, compared, options, freshFront, typed,
                                   "Nothing is pending; passwords and protected settings are not looked at.");
    PutDefaults(front, options, isNothing, answer);
    return answer;
}

Answer RunPending(const Options& options, Bmc& bmc)
{
    return ShowPending(options, [&](OutputForm form) { return bmc.Front(form); });
}

} // namespace Tavrine::Tool
