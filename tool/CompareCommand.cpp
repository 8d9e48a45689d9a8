#include "CompareCommand.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>
#include <fmt/format.h>

#include "Bmc.h"
#include "CauseLog.h"
#include "DisplayWidth.h"
#include "InputFile.h"
#include "JsonOutput.h"
#include "JsonValues.h"
#include "MissingActions.h"
#include "NamePatterns.h"
#include "Options.h"
#include "PendingCommand.h"
#include "SavedSettings.h"
#include "SavedValue.h"
#include "Secret.h"
#include "SettingNames.h"
#include "SettingSelection.h"
#include "TextOutput.h"
#include "ValueConversions.h"

namespace json = boost::json;

namespace Tavrine::Tool
{
namespace
{

constexpr const char* CurrentMember = "current";

/// What the two values of one comparison are called: a column has the word in capitals.
struct Titles
{
    /// Heads the column of the member CurrentMember.
    const char* Current;
    /// The other column, and its member.
    const char* Other;
};
/// The library takes what waits for a reboot before what is in force.
constexpr Titles DefaultTitles = {"value", "default"};
constexpr Titles PendingTitles = {"current", "pending"};
constexpr Titles FileTitles = {"current", "saved"};

/// Two values of one setting; null where there is none.
struct ValuePair
{
    json::value Current;
    json::value Other;
    /// The values are shown nowhere: they are passwords, or may be.
    bool Secret = false;
};
/// In the order of the names, each once.
using Comparison = std::vector<std::pair<std::string, ValuePair>>;

std::vector<std::string> NamesBehindFirst(const Options& options)
{
    return {options.Names.begin() + std::min<std::ptrdiff_t>(1, std::ssize(options.Names)), options.Names.end()};
}

/// What of a value of the pair may be shown.
const json::value& Shown(const ValuePair& pair, json::value ValuePair::*which)
{
    static const json::value blot(Blot);
    const json::value& value = pair.*which;
    return pair.Secret && !value.is_null() ? blot : value;
}

std::string ShownText(const json::value& value, const Options& options, const char* absent)
{
    if (value.is_null())
    {
        return absent;
    }
    const std::string text = ValueText(value);
    return EscapeText(options.Hex && value.is_number() ? DecToHex(text) : text);
}

bool SameValue(const ValuePair& pair)
{
    return pair.Current.is_null() || pair.Other.is_null() ? pair.Current.is_null() && pair.Other.is_null()
                                                          : ValueText(pair.Current) == ValueText(pair.Other);
}

std::string Upper(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return text;
}

void PutInto(Answer& answer, const Comparison& comparison, const Titles& titles, const Options& options,
             std::optional<std::size_t> columns)
{
    std::vector<std::vector<std::string>> rows;
    for (const auto& [name, pair] : comparison)
    {
        if (options.Changed && SameValue(pair))
        {
            continue;
        }
        if (options.Json)
        {
            answer.Data[ValidUtf8(name)] = {{CurrentMember, Shown(pair, &ValuePair::Current)},
                                            {titles.Other, Shown(pair, &ValuePair::Other)}};
            continue;
        }
        const char* absent = columns ? "(none)" : "\\N";
        std::vector<std::string>& row = rows.emplace_back(3);
        row[0] = EscapeText(name);
        row[1] = ShownText(Shown(pair, &ValuePair::Current), options, absent);
        row[2] = ShownText(Shown(pair, &ValuePair::Other), options, absent);
    }
    if (!options.Json)
    {
        answer.Text = TableText({"SETTING", Upper(titles.Current), Upper(titles.Other)}, rows, columns);
    }
}

json::value MemberOf(const json::value& object, const char* member)
{
    const json::object* members = object.if_object();
    const json::value* value = members != nullptr ? members->if_contains(member) : nullptr;
    return value != nullptr ? *value : json::value();
}

Options ForPending(Options options, std::vector<std::string> names)
{
    options.Json = true;
    options.Names = std::move(names);
    return options;
}

/// What `pending` says, typed. Its failures are taken over.
json::object PendingData(Answer pending, Answer& answer)
{
    for (Failure& failure : pending.Errors)
    {
        AddFailure(answer, std::move(failure));
    }
    std::move(pending.Notes.begin(), pending.Notes.end(), std::back_inserter(answer.Notes));
    if (answer.Errors.empty() && pending.Data.empty())
    {
        answer.Message = pending.Message;
    }
    return pending.Data;
}

/// The pending settings that match; a pattern without any has to match some setting at
/// least.
void TakePendingMatches(const std::string& word, const json::object& all, RedfishConfigProc& front,
                        std::optional<SettingStringMap>& reported, json::object& taken, Answer& answer)
{
    const Prefixes prefixes = ShownPrefixes(front);
    const NamePattern pattern(word, prefixes);
    bool found = false;
    for (const auto& [key, value] : all)
    {
        if (pattern.Matches(BareGroupKey(key, prefixes)))
        {
            taken[SingleKey(key, prefixes)] = value;
            found = true;
        }
    }
    if (!found && !reported)
    {
        front.QueryGroupSettingValues(reported.emplace());
    }
    if (!found && std::none_of(reported->begin(), reported->end(),
                               [&](const auto& entry) { return pattern.Matches(BareGroupKey(entry.first, prefixes)); }))
    {
        AddFailure(answer, NothingMatches(word));
    }
}

/// A text of a file as a value of the kind that stands beside it, where it suits that; a
/// number may be hexadecimal there, as `show --hex` writes it.
json::value LikeCurrent(const std::string& text, const json::value& current)
{
    const bool hexadecimal = current.is_number() && text.find("0x") != std::string::npos;
    const std::string plain = hexadecimal ? HexToDec(text) : text;
    if (current.is_number() && ValueText(current) == plain)
    {
        return current; // it may be beyond what the library holds
    }
    const bool isText = !current.is_number() && !current.is_bool();
    const OptionalVar value = isText ? std::nullopt : SavedValue(plain, VariantOfJson(ValueText(current)));
    return value ? VariantToJson(*value) : json::value(ValidUtf8(text));
}

/// Tells of which settings of a file the values must not be shown, and which have a way of their own.
class SettingKinds
{
  public:
    /// Reads the registry, and tells where that fails. @return false where nothing can be read any more.
    bool Read(RedfishConfigProc& front, const ManagerReader& read, CauseLog& causes, Answer& answer)
    {
        RedfishConfigResult result = read(front, m_Manager);
        if (IsSuccess(result.ErrorCode()))
        {
            return true;
        }
        AddFailure(answer, causes.Explain(result));
        if (IsUnreachable(answer.Code))
        {
            return false;
        }
        answer.Notes.emplace_back(
            "note: without the attribute registry texts are not shown, since any may be a password");
        return true;
    }

    /// Whether its value in force comes of an action of its own.
    bool IsProtected(const std::string& bare) const
    {
        RedfishConfigSettingInfoStru info;
        return m_Manager && m_Manager->GetSettingOutline(bare, info) == CodeSucceed && info.IsProtected;
    }

    /// Without a registry any setting may be a password whose value in force is no number and no boolean.
    bool IsSecret(const std::string& bare, const json::value& current) const
    {
        if (!m_Manager)
        {
            return !current.is_number() && !current.is_bool();
        }
        RedfishConfigSettingInfoStru info;
        m_Manager->GetSettingOutline(bare, info); // a setting that the registry lacks has no type
        return info.SettingType == "Password";
    }

  private:
    std::unique_ptr<RedfishConfigSettingManager> m_Manager;
};

/// Reads the values in force of protected settings, each by itself, where that is allowed.
class ProtectedValues
{
  public:
    /// @param front  of typed output.
    ProtectedValues(RedfishConfigProc& front, const Options& options, CauseLog& causes, Answer& answer)
        : m_Front(front), m_Options(options), m_Causes(causes), m_Answer(answer)
    {
    }

    /// @return null where the setting has none, nothing where it is not known.
    std::optional<json::value> Of(const std::string& bare, const std::string& shownName)
    {
        m_Withheld += m_Options.Protected ? 0U : 1U;
        if (!m_Options.Protected || m_HasFailed)
        {
            return std::nullopt;
        }
        SettingStringMap given;
        RedfishConfigResult result = m_Front.QuerySettingValue(bare, given);
        TypedSettings single;
        if (IsSuccess(result.ErrorCode()) && !given.empty() && !ReadTypedSettings(given.begin()->second, "", single))
        {
            result = CodeInternal;
        }
        if (IsSuccess(result.ErrorCode()) || result == CodeNoValue || result == CodeNotFound)
        {
            return single.empty() ? json::value() : single.begin()->second;
        }
        Fail(m_Causes.Explain(result, shownName));
        return std::nullopt;
    }

    void TellWithheld(std::size_t all) const
    {
        if (m_Withheld != 0)
        {
            m_Answer.Notes.push_back(fmt::format("note: {} of {} settings of the file are protected, so that their "
                                                 "values are not read; give --protected",
                                                 m_Withheld, all));
        }
    }

  private:
    /// All of them come by one action, which would fail for the others as well.
    void Fail(Failure failure)
    {
        m_HasFailed = true;
        HintAtMissingAction(failure, m_Answer.Notes);
        AddFailure(m_Answer, std::move(failure));
    }

    RedfishConfigProc& m_Front;
    const Options& m_Options;
    CauseLog& m_Causes;
    Answer& m_Answer;
    std::size_t m_Withheld = 0;
    bool m_HasFailed = false;
};

/// The settings of a file that a command line means, under the names to be shown: all
/// that are not hidden, or those that are named.
std::map<std::string, std::string> ChosenOfFile(const SettingStringMap& saved, const Options& options,
                                                const Prefixes& prefixes, Answer& answer)
{
    const std::vector<std::string> names = NamesBehindFirst(options);
    const std::vector<std::string> keywords = HiddenKeywords();
    std::map<std::string, std::string> chosen;
    const auto take = [&](const auto& test, const std::string& prefix)
    {
        bool found = false;
        for (const auto& setting : saved)
        {
            if (!IsHidden(prefixes.Second + "." + setting.first, keywords) && test(setting.first))
            {
                chosen[prefix + "." + setting.first] = setting.first;
                found = true;
            }
        }
        return found;
    };
    if (names.empty())
    {
        take([](const std::string&) { return true; }, prefixes.Second);
    }
    for (const std::string& name : names)
    {
        const std::string bare = CurrentName(BareName(name, prefixes), options.LegacyNames);
        if (IsPattern(name))
        {
            const NamePattern pattern(name, prefixes);
            if (!take([&](const std::string& setting) { return pattern.Matches(setting); }, prefixes.First))
            {
                AddFailure(answer, NothingMatches(name));
            }
        }
        else if (saved.contains(bare))
        {
            chosen[prefixes.First + "." + bare] = bare;
        }
        else
        {
            const std::string shownName = prefixes.First + "." + bare;
            AddFailure(answer,
                       {CodeNotFound, InputNameFirst(options.Names.front()) + " does not have the setting " + shownName,
                        shownName});
        }
    }
    return chosen;
}

} // namespace

Answer CompareDefaults(RedfishConfigProc& front, const Options& options, std::optional<std::size_t> columns)
{
    Answer answer;
    SettingSelection<SettingCompareMap> selection(
        front,
        [&](SettingCompareMap& values, const std::string& name)
        { return front.CompareSettingDefaultValues(values, name); },
        [&](SettingStringMap& known) { return front.QuerySettingDescriptions(known, ""); }, answer);
    selection.Take(NamesBehindFirst(options));
    if (!selection.Missing().empty())
    {
        answer.Notes.push_back(fmt::format("note: {} of {} settings have no value or no default value",
                                           selection.Missing().size(), selection.Meant()));
    }
    Comparison comparison;
    comparison.reserve(selection.Entries().size());
    for (const auto& [name, texts] : selection.Entries())
    {
        comparison.emplace_back(name,
                                ValuePair{json::value(ValidUtf8(texts.first)), json::value(ValidUtf8(texts.second))});
    }
    PutInto(answer, comparison, DefaultTitles, options, columns);
    return answer;
}

Answer ComparePending(const Options& options, const CompareWay& way)
{
    Answer answer;
    std::vector<std::string> plain;
    std::vector<std::string> patterns;
    for (const std::string& name : NamesBehindFirst(options))
    {
        (IsPattern(name) ? patterns : plain).push_back(name);
    }
    const bool typed = options.Json || options.Hex;
    json::object data;
    if (!plain.empty() || patterns.empty())
    {
        data = PendingData(ShowPending(ForPending(options, plain), way.FreshFront, typed), answer);
    }
    if (!patterns.empty())
    {
        const std::unique_ptr<RedfishConfigProc> front = way.FreshFront(OutputForm::Text);
        const json::object all =
            PendingData(ShowAllPending(ForPending(options, {}), *front, way.FreshFront, typed), answer);
        std::optional<SettingStringMap> reported;
        for (const std::string& word : patterns)
        {
            TakePendingMatches(word, all, *front, reported, data, answer);
        }
    }
    Comparison comparison;
    for (const auto& [name, pair] : data)
    {
        comparison.emplace_back(name, ValuePair{MemberOf(pair, CurrentMember), MemberOf(pair, PendingTitles.Other)});
    }
    std::ranges::sort(comparison, {}, &Comparison::value_type::first);
    if (comparison.empty() && !answer.Message.empty() && IsSuccess(answer.Code))
    {
        answer.Notes.push_back("note: " + answer.Message);
    }
    PutInto(answer, comparison, PendingTitles, options, way.Columns);
    return answer;
}

Answer CompareFile(const Options& options, const CompareWay& way)
{
    Answer answer;
    const std::string& path = options.Names.front();
    SavedSettings file;
    if (std::optional<Failure> failure = ReadSavedSettings(path, file))
    {
        AddFailure(answer, std::move(*failure));
        return answer;
    }
    CauseLog causes;
    const std::unique_ptr<RedfishConfigProc> front = way.FreshFront(OutputForm::Typed);
    const Prefixes prefixes = ShownPrefixes(*front);
    SettingStringMap saved;
    if (const std::string error = TakeBareSettings(file, prefixes, saved, options.LegacyNames); !error.empty())
    {
        AddFailure(answer, {CodeParameter, InputNameFirst(path) + " cannot be compared: " + error});
        return answer;
    }
    TypedSettings inForce;
    const RedfishConfigResult result = ReadTypedValues(*front, inForce);
    if (!IsSuccess(result.ErrorCode()))
    {
        AddFailure(answer, causes.Explain(result));
        return answer;
    }
    SettingKinds kinds;
    if (!kinds.Read(*front, way.Manager, causes, answer))
    {
        return answer;
    }
    ProtectedValues protectedValues(*front, options, causes, answer);
    Comparison comparison;
    std::size_t absent = 0;
    for (const auto& [shownName, bare] : ChosenOfFile(saved, options, prefixes, answer))
    {
        const auto current = inForce.find(bare);
        std::optional<json::value> known = current != inForce.end() ? current->second : json::value();
        if (options.SystemType == SystemTypeUefi && known->is_null() && kinds.IsProtected(bare))
        {
            known = protectedValues.Of(bare, shownName);
        }
        const json::value value = known.value_or(json::value());
        absent += known && value.is_null() ? 1U : 0U;
        comparison.emplace_back(shownName,
                                ValuePair{value, LikeCurrent(saved.at(bare), value), kinds.IsSecret(bare, value)});
    }
    protectedValues.TellWithheld(comparison.size());
    if (absent != 0)
    {
        answer.Notes.push_back(
            fmt::format("note: {} of {} settings of the file have no value on the machine", absent, comparison.size()));
    }
    PutInto(answer, comparison, FileTitles, options, way.Columns);
    return answer;
}

void AddCompareOptions(CLI::App& command, Options& options)
{
    command.add_flag("--changed", options.Changed, "Only the settings whose two values differ");
    command.footer(
        "The first word is what to compare with: defaults, pending, or a saved FILE (./defaults for one of\n"
        "that name). defaults stand beside what waits for a reboot, where something does, and else beside what is in\n"
        "force; the two others beside what is in force. With --hex defaults and what stands beside them stay\n"
        "decimal. Passwords of a FILE are compared and not shown, and its protected settings need --protected.\n"
        "A value that is not there or not known is \\N, in a table on a terminal (none).\n"
        "Further options: tavrine --help");
}

Answer RunCompare(const Options& options, Bmc& bmc)
{
    const std::string& other = options.Names.front();
    if (other == "defaults")
    {
        return CompareDefaults(bmc.Keep(bmc.Front()), options, TerminalWidth());
    }
    const CompareWay way = {[&](OutputForm form) { return bmc.Front(form); }, TerminalWidth(),
                            bmc.SettingManagers(ManagerValues::None)};
    return other == "pending" ? ComparePending(options, way) : CompareFile(options, way);
}

} // namespace Tavrine::Tool
