#include "FindCommand.h"

#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <fmt/format.h>

#include "Bmc.h"
#include "CauseLog.h"
#include "DisplayWidth.h"
#include "JsonOutput.h"
#include "Options.h"
#include "SettingManager.h"
#include "SettingNames.h"
#include "SettingSelection.h"
#include "Signals.h"
#include "TextOutput.h"
#include "TextSearch.h"

namespace json = boost::json;

namespace Tavrine::Tool
{
namespace
{

/// Where a word can be, in the order in which it is told, with the text there.
using SearchedTexts = std::vector<std::pair<const char*, std::string>>;

struct Found
{
    std::string DisplayName;
    std::vector<std::string> Places;
};

struct Findings
{
    std::map<std::string, Found> Settings;
    /// Texts that were given up on, so that a setting or one of its places may be missing.
    std::size_t GivenUp = 0;
};

SearchedTexts TextsOf(const std::string& name, const RedfishConfigSettingTexts& words)
{
    SearchedTexts texts = {
        {"name", name}, {"display name", words.DisplayName}, {"help", words.HelpText}, {"warning", words.WarningText}};
    for (const auto& [value, displayName] : words.Values)
    {
        texts.emplace_back("values", value);
        texts.emplace_back("values", displayName);
    }
    if (words.Type != "Password")
    {
        texts.emplace_back("values", words.CurrentValue);
    }
    return texts;
}

/// What one setting has to do with the words.
struct Searched
{
    /// By text: it has one of the words.
    std::vector<bool> Hits;
    /// By text: one of the words was given up on there.
    std::vector<bool> GivenUp;
    /// Every word is in some text.
    bool IsFound = true;
    /// A word is in none of them, and was given up on nowhere.
    bool IsRuledOut = false;
};

Searched LookFor(const std::vector<TextSearch>& words, const SearchedTexts& texts)
{
    Searched searched{std::vector<bool>(texts.size()), std::vector<bool>(texts.size())};
    for (const TextSearch& word : words)
    {
        bool found = false;
        bool givenUp = false;
        for (std::size_t index = 0; index < texts.size(); ++index)
        {
            const std::string& text = texts[index].second;
            const Occurrence occurrence = text.empty() ? Occurrence::None : word.LookIn(text);
            if (occurrence == Occurrence::Found)
            {
                searched.Hits[index] = found = true;
            }
            else if (occurrence == Occurrence::GivenUp)
            {
                searched.GivenUp[index] = givenUp = true;
            }
        }
        searched.IsFound = searched.IsFound && found;
        if (!found && !givenUp)
        {
            searched.IsRuledOut = true;
            break;
        }
    }
    return searched;
}

/// Each place once that has one of the words.
std::vector<std::string> PlacesOf(const SearchedTexts& texts, const std::vector<bool>& hits)
{
    std::vector<std::string> places;
    for (std::size_t index = 0; index < texts.size(); ++index)
    {
        if (hits[index] && (places.empty() || places.back() != texts[index].first))
        {
            places.emplace_back(texts[index].first);
        }
    }
    return places;
}

/// How many texts were given up on whose place is none of these.
std::size_t CountGivenUp(const SearchedTexts& texts, const std::vector<bool>& givenUp,
                         const std::vector<std::string>& places)
{
    std::size_t count = 0;
    for (std::size_t index = 0; index < texts.size(); ++index)
    {
        const bool isTold = std::find(places.begin(), places.end(), texts[index].first) != places.end();
        count += givenUp[index] && !isTold ? 1U : 0U;
    }
    return count;
}

/// Adds the setting where it has all the words, and counts what may be missing of it: the whole setting, or a place.
void Judge(const std::string& shownName, const std::string& displayName, const SearchedTexts& texts,
           const std::vector<TextSearch>& words, Findings& findings)
{
    const Searched searched = LookFor(words, texts);
    if (searched.IsRuledOut)
    {
        return;
    }
    std::vector<std::string> places = searched.IsFound ? PlacesOf(texts, searched.Hits) : std::vector<std::string>();
    findings.GivenUp += CountGivenUp(texts, searched.GivenUp, places);
    if (searched.IsFound)
    {
        findings.Settings[shownName] = {displayName, std::move(places)};
    }
}

/// All settings, those included that have a value and are in no registry. A stop signal ends it with a failure.
RedfishConfigResult Search(RedfishConfigProc& front, const ManagerReader& readManager,
                           const std::vector<TextSearch>& words, Findings& findings)
{
    std::unique_ptr<RedfishConfigSettingManager> manager;
    RedfishConfigResult result = readManager(front, manager);
    if (!IsSuccess(result.ErrorCode()))
    {
        return result;
    }
    const Prefixes prefixes = ShownPrefixes(front);
    const std::vector<std::string> keywords = HiddenKeywords();
    const auto judge = [&](const std::string& bare, const std::string& displayName, const SearchedTexts& texts)
    {
        const std::string shownName = prefixes.Second + "." + bare;
        if (!IsHidden(shownName, keywords))
        {
            Judge(shownName, displayName, texts, words, findings);
        }
    };
    std::set<std::string> registered;
    for (const std::string& name : manager->GetSettingNames())
    {
        if (name.empty() || StopSignal() != 0)
        {
            continue;
        }
        RedfishConfigSettingTexts texts;
        manager->GetSettingTexts(name, texts);
        judge(name, texts.DisplayName, TextsOf(name, texts));
        registered.insert(name);
    }
    SettingStringMap values;
    result = front.QueryGroupSettingValues(values);
    for (const auto& [key, value] : values)
    {
        const std::string bare = BareGroupKey(key, prefixes);
        if (!registered.contains(bare) && StopSignal() == 0)
        {
            judge(bare, {}, {{"name", bare}, {"values", value}});
        }
    }
    return StopSignal() == 0 ? result : RedfishConfigResult(CodeConnection, "The search was stopped", "");
}

json::object FoundObject(const std::map<std::string, Found>& found)
{
    json::object object;
    for (const auto& [name, setting] : found)
    {
        json::object entry;
        entry["displayName"] = ValidUtf8(setting.DisplayName);
        entry["places"] = json::array(setting.Places.begin(), setting.Places.end());
        object[ValidUtf8(name)] = std::move(entry);
    }
    return object;
}

std::string FoundTable(const std::map<std::string, Found>& found, std::optional<std::size_t> columns)
{
    std::vector<std::vector<std::string>> rows;
    for (const auto& [name, setting] : found)
    {
        std::vector<std::string>& row = rows.emplace_back(3);
        row[0] = EscapeText(name);
        row[1] = EscapeText(setting.DisplayName);
        row[2] = fmt::format("{}", fmt::join(setting.Places, ", "));
    }
    return TableText({"SETTING", "DISPLAY NAME", "FOUND IN"}, rows, columns);
}

} // namespace

Answer FindSettings(RedfishConfigProc& front, const ManagerReader& readManager, const Options& options,
                    std::optional<std::size_t> columns)
{
    Answer answer;
    CauseLog causes;
    std::vector<TextSearch> words;
    for (const std::string& word : options.Names)
    {
        words.emplace_back(word, options.Regex);
    }
    Findings findings;
    const RedfishConfigResult result = Search(front, readManager, words, findings);
    if (!IsSuccess(result.ErrorCode()))
    {
        AddFailure(answer, causes.Explain(result));
        return answer;
    }
    if (findings.GivenUp > 0)
    {
        answer.Notes.push_back("warning: the search was given up on " + std::to_string(findings.GivenUp) +
                               (findings.GivenUp == 1 ? " text" : " texts") +
                               " as it took too long, so that settings or places may be missing");
    }
    if (findings.Settings.empty())
    {
        AddFailure(answer, {CodeNotFound, findings.GivenUp == 0
                                              ? "Unable to find a setting with what is looked for"
                                              : "No setting with what is looked for was found before the search was "
                                                "given up"});
    }
    if (options.Json && findings.GivenUp > 0)
    {
        answer.More["givenUp"] = findings.GivenUp;
    }
    if (options.Json)
    {
        answer.Data = FoundObject(findings.Settings);
    }
    else
    {
        answer.Text = FoundTable(findings.Settings, columns);
    }
    return answer;
}

std::string FindFault(const Options& options)
{
    for (const std::string& word : options.Names)
    {
        if (word.empty())
        {
            return "find needs a word that is not empty";
        }
        if (const TextSearch search(word, options.Regex); !search.Error().empty())
        {
            return "Unable to look for " + word + ": " + search.Error();
        }
    }
    return {};
}

void AddFindOptions(CLI::App& command, Options& options)
{
    command.add_flag("--regex", options.Regex, "The words are regular expressions (PCRE)");
}

Answer RunFind(const Options& options, Bmc& bmc)
{
    return FindSettings(*bmc.StandardFront(), bmc.SettingManagers(), options, TerminalWidth());
}

} // namespace Tavrine::Tool
