#include "PendingCommand.h"

#include <charconv>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include "Bmc.h"
#include "CauseLog.h"
#include "JsonOutput.h"
#include "MissingActions.h"
#include "Options.h"
#include "PendingValues.h"
#include "SettingManager.h"
#include "SettingNames.h"
#include "SettingPairs.h"
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

/// Reads single names, each by a comparison of its own; a name that the attribute
/// registry lacks is looked up among all that the BMC reports.
class NamedReader
{
  public:
    NamedReader(Answer& answer, CauseLog& causes, const TypedFrontMaker& freshFront)
        : m_Answer(answer), m_Causes(causes), m_FreshFront(freshFront), m_Front(freshFront(false))
    {
    }

    void Read(const std::string& name, SettingCompareMap& compared)
    {
        const std::string shownName = m_Front->m_Prefix + "." + name;
        if (m_Unreachable)
        {
            m_Unreachable->Setting = shownName;
            AddFailure(m_Answer, *m_Unreachable);
            return;
        }
        RedfishConfigResult result = m_Front->CompareSettingPendingValues(compared, name);
        if (Answered(result) || (result == CodeNotFound && TakeFromAll(name, shownName, compared)))
        {
            return;
        }
        result.SetErrorMsg(WithShownName(result.ErrorMsg(), name, shownName));
        const Failure failure = ExplainPending(*m_Front, result, m_Causes, shownName);
        if (MissesAction(failure))
        {
            m_Answer.Notes.emplace_back(MissingActionHint);
        }
        if (IsUnreachable(failure.Code))
        {
            m_Unreachable = failure;
        }
        AddFailure(m_Answer, failure);
    }

    const RedfishConfigProc& Front() const { return *m_Front; }

  private:
    /// @return false when the BMC does not report such a setting either.
    bool TakeFromAll(const std::string& name, const std::string& shownName, SettingCompareMap& compared)
    {
        const std::unique_ptr<RedfishConfigProc> fresh = m_FreshFront(false);
        SettingCompareMap all;
        SettingStringMap reported;
        if (!Answered(fresh->CompareSettingPendingValues(all, "")) ||
            !IsSuccess(fresh->QueryGroupSettingValues(reported).ErrorCode()))
        {
            return false;
        }
        const std::string key = fresh->GetSecondPrefix() + "." + name;
        if (const auto entry = all.find(key); entry != all.end())
        {
            compared[shownName] = entry->second;
        }
        return reported.count(key) != 0;
    }

    Answer& m_Answer;
    CauseLog& m_Causes;
    const TypedFrontMaker& m_FreshFront;
    std::unique_ptr<RedfishConfigProc> m_Front;
    std::optional<Failure> m_Unreachable;
};

/// The kinds of the values in force, by bare name: the library compares texts.
TypedSettings ReadKinds(const TypedFrontMaker& freshFront)
{
    TypedSettings kinds;
    ReadTypedValues(*freshFront(true), kinds); // without them all values are texts
    return kinds;
}

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

void PutInto(Answer& answer, const SettingCompareMap& compared, const Options& options,
             const TypedFrontMaker& freshFront)
{
    const bool kindsMatter = !compared.empty() && (options.Json || options.Hex);
    const TypedSettings kinds = kindsMatter ? ReadKinds(freshFront) : TypedSettings();
    const Prefixes prefixes = PrefixesOf(options);
    for (const auto& [name, texts] : compared)
    {
        const auto kind = kinds.find(BareName(name, prefixes));
        const json::value sample = kind == kinds.end() ? json::value() : kind->second;
        if (options.Json)
        {
            answer.Data[ValidUtf8(name)] = {{"current", ValueOf(texts.first, sample)},
                                            {"pending", ValueOf(texts.second, sample)}};
            continue;
        }
        const auto shown = [&](const std::string& text)
        { return EscapeText(options.Hex && sample.is_number() ? DecToHex(text) : text); };
        answer.Text += EscapeText(name) + "=" + shown(texts.first) + " -> " + shown(texts.second) + "\n";
    }
    if (compared.empty() && answer.Errors.empty())
    {
        answer.Message = StandardText(CodeNothingPending);
        answer.Text = options.Json ? "" : "Nothing is pending.\n";
    }
}

/// What is pending beside single values.
void PutDefaults(const RedfishConfigProc& front, const Options& options, Answer& answer)
{
    if (!WarnOfDefaults(front, answer.Notes))
    {
        return;
    }
    if (answer.Message == StandardText(CodeNothingPending))
    {
        answer.Message = "All settings go to their defaults at the next start of the system.";
        answer.Text = options.Json ? "" : answer.Message + "\n";
    }
}

} // namespace

Answer ShowPending(const Options& options, const TypedFrontMaker& freshFront)
{
    if (options.Names.empty())
    {
        return ShowAllPending(options, *freshFront(false), freshFront);
    }
    Answer answer;
    CauseLog causes;
    SettingCompareMap compared;
    NamedReader reader(answer, causes, freshFront);
    for (const std::string& name : BareNames(options.Names, PrefixesOf(options)))
    {
        reader.Read(name, compared);
    }
    PutInto(answer, compared, options, freshFront);
    PutDefaults(reader.Front(), options, answer);
    return answer;
}

Answer ShowAllPending(const Options& options, RedfishConfigProc& front, const TypedFrontMaker& freshFront)
{
    Answer answer;
    CauseLog causes;
    SettingCompareMap compared;
    const RedfishConfigResult result = front.CompareSettingPendingValues(compared, "");
    if (!Answered(result))
    {
        AddFailure(answer, ExplainPending(front, result, causes, {}));
    }
    PutInto(answer, compared, options, freshFront);
    PutDefaults(front, options, answer);
    return answer;
}

Answer RunPending(const Options& options, Bmc& bmc)
{
    return ShowPending(options, [&](bool typed) { return bmc.Front(typed ? 1 : 0); });
}

} // namespace Tavrine::Tool
