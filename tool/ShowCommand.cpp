#include "ShowCommand.h"

#include <algorithm>
#include <locale>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <boost/algorithm/string/predicate.hpp>

#include "Bmc.h"
#include "CauseLog.h"
#include "JsonOutput.h"
#include "MissingActions.h"
#include "NamePatterns.h"
#include "Options.h"
#include "SettingNames.h"
#include "SettingSelection.h"
#include "TextOutput.h"

namespace Tavrine::Tool
{
namespace
{

/// Settings in the form of the run's output: one of the two maps is filled.
struct ShownSettings
{
    SettingStringMap Texts;
    TypedSettings Typed;
};

void PutInto(Answer& answer, const ShownSettings& settings, const Options& options)
{
    if (options.Json)
    {
        answer.Data = SettingsObject(settings.Typed);
    }
    else
    {
        answer.Text = SettingLines(settings.Texts);
    }
}

/// Adds what the library gave in the form that the options ask for.
RedfishConfigResult Collect(const SettingStringMap& given, const Options& options, const Prefixes& prefixes,
                            const std::string& prefix, ShownSettings& settings)
{
    if (!options.Json)
    {
        settings.Texts.insert(given.begin(), given.end());
        return {CodeSucceed, "", ""};
    }
    const auto entry = given.find(prefixes.Second);
    const bool good = entry == given.end() || ReadTypedSettings(entry->second, prefix + ".", settings.Typed);
    return {good ? CodeSucceed : CodeInternal, "", ""};
}

RedfishConfigResult ReadGroup(RedfishConfigProc& front, const Options& options, ShownSettings& settings)
{
    const Prefixes prefixes = ShownPrefixes(front);
    SettingStringMap given;
    RedfishConfigResult result = front.QueryGroupSettingValues(given);
    if (!IsSuccess(result.ErrorCode()))
    {
        return result;
    }
    result = Collect(given, options, prefixes, prefixes.Second, settings);
    if (options.Json)
    {
        // The library's own filter sees the one key of the JSON form, not the names in it.
        std::erase_if(settings.Typed,
                      [keywords = HiddenKeywords()](const auto& setting) { return IsHidden(setting.first, keywords); });
    }
    return result;
}

/// Moves a value to the name under which single settings are shown.
/// @return false when the group has no value of that name.
bool TakeFromGroup(const ShownSettings& group, const std::string& groupName, const std::string& shownName,
                   ShownSettings& settings)
{
    if (const auto text = group.Texts.find(groupName); text != group.Texts.end())
    {
        settings.Texts[shownName] = text->second;
        return true;
    }
    const auto typed = group.Typed.find(groupName);
    if (typed == group.Typed.end() || typed->second.is_null())
    {
        return false;
    }
    settings.Typed[shownName] = typed->second;
    return true;
}

/// Looks names up that the registry lacks; reads the group at the first of them.
class GroupLookup
{
  public:
    GroupLookup(RedfishConfigProc& front, const Options& options, const FrontMaker& freshFront)
        : m_Front(front), m_Options(options), m_FreshFront(freshFront)
    {
    }

    /// @return 0; `missing`, the answer about the name, where the group lacks it, too; why nobody can be asked.
    RedfishConfigResult Take(const std::string& name, const RedfishConfigResult& missing, ShownSettings& settings)
    {
        if (const RedfishConfigResult& read = Read(); IsOfTheBmc(read.ErrorCode()))
        {
            return read;
        }
        const Prefixes prefixes = ShownPrefixes(m_Front);
        const bool found = TakeFromGroup(m_Group, prefixes.Second + "." + name, prefixes.First + "." + name, settings);
        return found ? RedfishConfigResult(CodeSucceed, "", "") : missing;
    }

    /// All settings whose names match, under the names of single ones.
    RedfishConfigResult TakeMatching(const std::string& word, ShownSettings& settings)
    {
        RedfishConfigResult result = Read();
        if (!IsSuccess(result.ErrorCode()))
        {
            return result;
        }
        const Prefixes prefixes = ShownPrefixes(m_Front);
        const NamePattern pattern(word, prefixes);
        const auto take = [&](const auto& group, auto& taken)
        {
            bool found = false;
            for (const auto& [name, value] : group)
            {
                if (pattern.Matches(BareGroupKey(name, prefixes)))
                {
                    taken[SingleKey(name, prefixes)] = value;
                    found = true;
                }
            }
            return found;
        };
        const bool foundTexts = take(m_Group.Texts, settings.Texts);
        const bool foundTyped = take(m_Group.Typed, settings.Typed);
        const bool found = foundTexts || foundTyped;
        return {found ? CodeSucceed : CodeNotFound, found ? "" : NothingMatches(word).Message, ""};
    }

  private:
    const RedfishConfigResult& Read()
    {
        if (!m_Result)
        {
            m_Result = ReadGroup(m_Front, m_Options, m_Group);
            if (!IsSuccess(m_Result->ErrorCode()) && !IsUnreachable(m_Result->ErrorCode()))
            {
                // An object that served a protected setting first gives no others as a group.
                if (const std::unique_ptr<RedfishConfigProc> fresh = m_FreshFront())
                {
                    m_Result = ReadGroup(*fresh, m_Options, m_Group);
                }
            }
        }
        return *m_Result;
    }

    RedfishConfigProc& m_Front;
    const Options& m_Options;
    const FrontMaker& m_FreshFront;
    std::optional<RedfishConfigResult> m_Result;
    ShownSettings m_Group;
};

/// Puts the result of a typed query under the name that text output would show.
void RestoreTypedName(const std::string& name, const Options& options, const Prefixes& prefixes, ShownSettings& single)
{
    const std::locale plain = std::locale::classic();
    const bool standardPrefix = boost::algorithm::iequals(prefixes.First, "bios", plain) ||
                                boost::algorithm::iequals(prefixes.First, "uefi", plain);
    if (options.LegacyNames && !standardPrefix && single.Typed.size() == 1)
    {
        auto entry = single.Typed.extract(single.Typed.begin());
        entry.key() = name;
        single.Typed.insert(std::move(entry));
    }
}

RedfishConfigResult ReadOne(RedfishConfigProc& front, const std::string& name, const Options& options,
                            ShownSettings& settings)
{
    const Prefixes prefixes = ShownPrefixes(front);
    SettingStringMap given;
    RedfishConfigResult result = front.QuerySettingValue(name, given);
    if (!IsSuccess(result.ErrorCode()))
    {
        return result;
    }
    ShownSettings single;
    result = Collect(given, options, prefixes, prefixes.First, single);
    RestoreTypedName(name, options, prefixes, single);
    settings.Texts.merge(single.Texts);
    settings.Typed.merge(single.Typed);
    return result;
}

} // namespace

Answer ShowAll(RedfishConfigProc& front, const Options& options)
{
    Answer answer;
    CauseLog causes;
    ShownSettings settings;
    const RedfishConfigResult result = ReadGroup(front, options, settings);
    if (!IsSuccess(result.ErrorCode()))
    {
        AddFailure(answer, causes.Explain(result));
    }
    PutInto(answer, settings, options);
    return answer;
}

Answer ShowNames(RedfishConfigProc& front, const Options& options, const FrontMaker& freshFront)
{
    Answer answer;
    CauseLog causes;
    ShownSettings settings;
    GroupLookup lookup(front, options, freshFront);
    const Prefixes prefixes = ShownPrefixes(front);
    std::optional<Failure> unreachable;
    for (const std::string& name : BareNames(options.Names, prefixes))
    {
        const bool pattern = IsPattern(name);
        const std::string shownName = pattern ? name : prefixes.First + "." + name;
        if (unreachable)
        {
            unreachable->Setting = shownName;
            AddFailure(answer, *unreachable);
            continue;
        }
        RedfishConfigResult result =
            pattern ? lookup.TakeMatching(name, settings) : ReadOne(front, name, options, settings);
        if (!pattern && result == CodeNotFound)
        {
            result = lookup.Take(name, result, settings);
        }
        if (IsSuccess(result.ErrorCode()))
        {
            continue;
        }
        const Failure failure = causes.Explain(result, shownName);
        HintAtMissingAction(failure, answer.Notes);
        if (IsUnreachable(failure.Code))
        {
            unreachable = failure;
        }
        AddFailure(answer, failure);
    }
    PutInto(answer, settings, options);
    return answer;
}

Answer RunShow(const Options& options, Bmc& bmc)
{
    const OutputForm form = options.Json ? OutputForm::Typed : OutputForm::Text;
    RedfishConfigProc& front = bmc.Keep(bmc.Front(form));
    if (options.Names.empty())
    {
        return ShowAll(front, options);
    }
    return ShowNames(front, options, [&] { return bmc.Front(form); });
}

} // namespace Tavrine::Tool
