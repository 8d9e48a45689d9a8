#include "MetadataCommands.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <boost/algorithm/string/replace.hpp>
#include <fmt/format.h>

#include "Bmc.h"
#include "JsonOutput.h"
#include "Options.h"
#include "RedfishConfigSettingManager.h"
#include "SettingNames.h"
#include "SettingSelection.h"
#include "TextOutput.h"

namespace Tavrine::Tool
{
namespace
{

/// How the two lists differ.
struct TextQuery
{
    RedfishConfigResult (RedfishConfigProc::*Ask)(SettingStringMap&, const std::string&);
    RedfishConfigResult (RedfishConfigSettingManager::*AskManager)(const std::string, std::string&);
    const char* Lacked;
};

/// Asks about several settings as the library's own operation answers about one, of which each question costs a model
/// of the whole registry: its answer about all settings has the texts, a setting manager says why one has none.
class SharedAnswers
{
  public:
    SharedAnswers(RedfishConfigProc& front, const TextQuery& query, const ManagerReader& readManager)
        : m_Front(front), m_Query(query), m_ReadManager(readManager), m_Prefixes(ShownPrefixes(front)),
          m_Keywords(HiddenKeywords())
    {
    }

    /// @param name  empty for all settings.
    RedfishConfigResult Ask(SettingStringMap& texts, const std::string& name)
    {
        if (!m_AllResult)
        {
            m_AllResult = (m_Front.*m_Query.Ask)(m_All, "");
        }
        if (name.empty() || IsUnreachable(m_AllResult->ErrorCode()))
        {
            texts = m_All;
            return *m_AllResult;
        }
        if (const auto known = m_All.find(m_Prefixes.Second + "." + name); known != m_All.end())
        {
            texts.emplace(m_Prefixes.First + "." + name, known->second);
            return {CodeSucceed, "", ""};
        }
        const std::optional<RedfishConfigResult> refusal = RefusalOf(name);
        return refusal ? *refusal : (m_Front.*m_Query.Ask)(texts, name);
    }

  private:
    /// Why there is no text, in the words that the library has for a single setting. Nothing where that is not known:
    /// a hidden setting has its text, and is missing among all the same.
    std::optional<RedfishConfigResult> RefusalOf(const std::string& name)
    {
        if (!std::exchange(m_ManagerIsAsked, true))
        {
            m_ReadManager(m_Front, m_Manager); // without one each setting is asked about by itself
        }
        if (!m_Manager || IsHidden(name, m_Keywords))
        {
            return std::nullopt;
        }
        std::string text;
        RedfishConfigResult result = (m_Manager.get()->*m_Query.AskManager)(name, text);
        if (IsSuccess(result.ErrorCode()))
        {
            return std::nullopt;
        }
        result.SetErrorMsg(boost::algorithm::replace_all_copy(result.ErrorMsg(), name, m_Prefixes.First + "." + name));
        return result;
    }

    RedfishConfigProc& m_Front;
    const TextQuery& m_Query;
    const ManagerReader& m_ReadManager;
    Prefixes m_Prefixes;
    std::vector<std::string> m_Keywords;
    SettingStringMap m_All;
    std::optional<RedfishConfigResult> m_AllResult;
    std::unique_ptr<RedfishConfigSettingManager> m_Manager;
    bool m_ManagerIsAsked = false;
};

/// Several settings are named by themselves. Old names are translated by rules of the library alone.
bool ShareAnswers(RedfishConfigProc& front, const std::vector<std::string>& names)
{
    const std::vector<std::string> bare = BareNames(names, ShownPrefixes(front));
    return !front.m_Options.LegacyNameMode &&
           std::count_if(bare.begin(), bare.end(), [](const std::string& name) { return !IsPattern(name); }) > 1;
}

Answer ListTexts(RedfishConfigProc& front, const Options& options, const TextQuery& query,
                 const ManagerReader& readManager)
{
    Answer answer;
    SharedAnswers shared(front, query, readManager);
    const bool isShared = ShareAnswers(front, options.Names);
    SettingSelection<SettingStringMap> selection(
        front,
        [&](SettingStringMap& texts, const std::string& name)
        { return isShared ? shared.Ask(texts, name) : (front.*query.Ask)(texts, name); },
        [&](SettingStringMap& known) { return front.QuerySettingDescriptions(known, ""); }, answer);
    selection.Take(options.Names);
    if (!selection.Missing().empty())
    {
        answer.Notes.push_back(fmt::format("note: {} of {} settings have no {}", selection.Missing().size(),
                                           selection.Meant(), query.Lacked));
    }
    if (!options.Json)
    {
        answer.Text = SettingLines(selection.Entries());
        return answer;
    }
    for (const auto& [name, text] : selection.Entries())
    {
        answer.Data[ValidUtf8(name)] = ValidUtf8(text);
    }
    return answer;
}

} // namespace

Answer ListValues(RedfishConfigProc& front, const Options& options, const ManagerReader& readManager)
{
    static constexpr TextQuery Query = {&RedfishConfigProc::QuerySettingValidValues,
                                        &RedfishConfigSettingManager::QuerySettingValidValues,
                                        "valid values in the registry"};
    return ListTexts(front, options, Query, readManager);
}

Answer ListDefaults(RedfishConfigProc& front, const Options& options, const ManagerReader& readManager)
{
    static constexpr TextQuery Query = {&RedfishConfigProc::QuerySettingDefaultValues,
                                        &RedfishConfigSettingManager::QuerySettingDefaultValue, "default value"};
    return ListTexts(front, options, Query, readManager);
}

Answer RunValues(const Options& options, Bmc& bmc)
{
    return ListValues(*bmc.Front(), options, bmc.SettingManagers(ManagerValues::Ordinary));
}

Answer RunDefaults(const Options& options, Bmc& bmc)
{
    return ListDefaults(*bmc.Front(), options, bmc.SettingManagers(ManagerValues::Ordinary));
}

} // namespace Tavrine::Tool
