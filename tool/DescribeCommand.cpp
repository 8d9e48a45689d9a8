#include "DescribeCommand.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "BIOSCompatibleModule.h"
#include "Bmc.h"
#include "CauseLog.h"
#include "DisplayWidth.h"
#include "JsonOutput.h"
#include "MissingActions.h"
#include "Options.h"
#include "RedfishConfigSettingManager.h"
#include "SettingDescription.h"
#include "SettingManager.h"
#include "SettingNames.h"
#include "SettingSelection.h"

namespace Tavrine::Tool
{
namespace
{

/// Where values of a setting are to be asked for.
enum class Reach
{
    Standard,
    Protected,
    Forbidden,
};

/// As the library looks names up: whatever their case.
using ValuesByName = std::map<std::string, std::string, CaseInsensitiveComparator>;

class Describer
{
  public:
    Describer(const DescribeSources& sources, const Options& options, Answer& answer)
        : m_Sources(sources), m_Options(options), m_Answer(answer), m_Prefixes(ShownPrefixes(sources.Standard)),
          m_Keywords(HiddenKeywords())
    {
    }

    /// Reads the registry. @return false when there is none; the failure is told.
    bool Prepare()
    {
        const RedfishConfigResult result = m_Sources.Manager(m_Sources.Standard, m_Manager);
        if (!IsSuccess(result.ErrorCode()))
        {
            AddFailure(m_Answer, m_Causes.Explain(result));
            return false;
        }
        return true;
    }

    std::vector<SettingDescription> Describe()
    {
        std::vector<SettingDescription> descriptions;
        const std::vector<std::string> names = ChosenNames();
        m_Many = names.size() > 1;
        for (const std::string& name : names)
        {
            if (auto description = DescribeOne(name))
            {
                descriptions.push_back(std::move(*description));
            }
        }
        return descriptions;
    }

  private:
    std::string ShownName(const std::string& bare) const { return m_Prefixes.First + "." + bare; }

    bool IsConcealed(const std::string& bare) const { return IsHidden(m_Prefixes.Second + "." + bare, m_Keywords); }

    /// Bare names, patterns replaced by what they match.
    std::vector<std::string> ChosenNames()
    {
        std::vector<std::string> chosen;
        for (const std::string& name : BareNames(m_Options.Names, m_Prefixes))
        {
            if (!IsPattern(name))
            {
                chosen.push_back(name);
                continue;
            }
            const NamePattern pattern(name, m_Prefixes);
            const std::size_t before = chosen.size();
            for (const std::string& setting : m_Manager->GetSettingNames())
            {
                if (!setting.empty() && pattern.Matches(setting) && !IsConcealed(setting))
                {
                    chosen.push_back(setting);
                }
            }
            if (chosen.size() == before)
            {
                AddFailure(m_Answer, NothingMatches(name));
            }
        }
        return BareNames(chosen, m_Prefixes);
    }

    std::optional<SettingDescription> DescribeOne(const std::string& name)
    {
        std::string bare = name;
        BIOSCompatibleModule(m_Sources.Standard.m_Options).ConvertNameFromOldToNew(name, bare);
        SettingDescription description;
        description.ShownName = ShownName(bare);
        RedfishConfigResult result = m_Manager->GetSettingProperties(bare, description.Info);
        if (!IsSuccess(result.ErrorCode()))
        {
            if (result == CodeNotFound)
            {
                result = DescribeUnregistered(bare, result, description);
            }
            if (IsSuccess(result.ErrorCode()))
            {
                return description;
            }
            result.SetErrorMsg(WithShownName(result.ErrorMsg(), bare, description.ShownName));
            AddFailure(m_Answer, m_Causes.Explain(result, description.ShownName));
            return std::nullopt;
        }
        AddTexts(bare, description);
        AddValues(bare, description);
        return description;
    }

    /// A value that the BMC reports and no registry describes.
    /// @return 0; `missing`, the answer about the name, where there is none; why the BMC cannot be asked.
    RedfishConfigResult DescribeUnregistered(const std::string& bare, const RedfishConfigResult& missing,
                                             SettingDescription& description)
    {
        if (const RedfishConfigResult& pending = AllPending(); IsOfTheBmc(pending.ErrorCode()))
        {
            return pending;
        }
        const std::string key = m_Prefixes.Second + "." + bare;
        const auto value = Reported().find(key);
        if (value == Reported().end() || value->first != key)
        {
            return IsOfTheBmc(m_ReportedResult.ErrorCode()) ? m_ReportedResult : missing;
        }
        description.InForce.Text = value->second;
        if (const auto pending = m_Compared.find(key); pending != m_Compared.end())
        {
            description.Pending.Text = pending->second.second;
        }
        else if (const RedfishConfigResult& read = AllPending();
                 !IsSuccess(read.ErrorCode()) && read != CodeNothingPending)
        {
            description.Pending.Unknown = FailureOf(read).Message;
        }
        return {CodeSucceed, "", ""};
    }

    using OneText = RedfishConfigResult (RedfishConfigSettingManager::*)(std::string, std::string&);

    /// A text of the model, where it has one.
    std::optional<std::string> TextOf(const std::string& bare, OneText one)
    {
        std::string text;
        return IsSuccess((m_Manager.get()->*one)(bare, text).ErrorCode()) ? std::optional(text) : std::nullopt;
    }

    /// All ordinary values in force, under the second prefix; empty where they cannot be read.
    const ValuesByName& Reported()
    {
        if (!m_Reported)
        {
            SettingStringMap values;
            m_ReportedResult = m_Sources.Standard.QueryGroupSettingValues(values);
            m_Reported.emplace(values.begin(), values.end());
        }
        return *m_Reported;
    }

    void AddTexts(const std::string& bare, SettingDescription& description)
    {
        m_Manager->GetSettingTexts(bare, description.Texts.emplace());
        description.Default = TextOf(bare, &RedfishConfigSettingManager::QuerySettingDefaultValue);
        // Stays empty where there are none.
        description.ValidValues = TextOf(bare, &RedfishConfigSettingManager::QuerySettingValidValues).value_or("");
        RedfishConfigSettingRelations relations;
        m_Manager->GetSettingRelations(bare, relations);
        const auto shown = [&](const std::vector<std::string>& names, std::vector<std::string>& shownNames)
        {
            for (const std::string& other : names)
            {
                if (!IsConcealed(other))
                {
                    shownNames.push_back(ShownName(other));
                }
            }
        };
        shown(relations.DependsOn, description.Relations.DependsOn);
        shown(relations.NeededBy, description.Relations.NeededBy);
    }

    Reach ReachOf(const SettingDescription& description) const
    {
        const bool isProtected = description.Info.IsProtected && m_Options.SystemType == SystemTypeUefi;
        return !isProtected ? Reach::Standard : m_Options.Protected ? Reach::Protected : Reach::Forbidden;
    }

    void AddValues(const std::string& bare, SettingDescription& description)
    {
        const Reach reach = ReachOf(description);
        if (reach == Reach::Forbidden)
        {
            description.InForce.Unknown = description.Pending.Unknown = "protected; give --protected";
            return;
        }
        if (reach == Reach::Protected && m_ProtectedFront == nullptr)
        {
            m_ProtectedFront = m_Sources.FreshFront();
        }
        RedfishConfigProc& front = reach == Reach::Protected ? *m_ProtectedFront : m_Sources.Standard;
        ReadInForce(front, bare, description);
        ReadPending(front, bare, description);
    }

    void ReadInForce(RedfishConfigProc& front, const std::string& bare, SettingDescription& description)
    {
        // One question about all of them is cheaper than one about each.
        if (m_Many && &front == &m_Sources.Standard && !IsConcealed(bare) && !Reported().empty())
        {
            if (const auto value = Reported().find(m_Prefixes.Second + "." + bare); value != Reported().end())
            {
                description.InForce.Text = value->second;
            }
            return;
        }
        SettingStringMap values;
        const RedfishConfigResult result = front.QuerySettingValue(bare, values);
        if (IsSuccess(result.ErrorCode()) && !values.empty())
        {
            description.InForce.Text = values.begin()->second;
        }
        else if (!IsSuccess(result.ErrorCode()) && result != CodeNoValue && result != CodeNotFound)
        {
            description.InForce.Unknown = Tell(m_Causes.Explain(result, description.ShownName));
        }
    }

    /// Asks once about all ordinary settings: as long as nothing is pending, each question
    /// costs a request.
    const RedfishConfigResult& AllPending()
    {
        if (!m_AllPending)
        {
            m_AllPending = m_Sources.Standard.CompareSettingPendingValues(m_Compared, "");
        }
        return *m_AllPending;
    }

    /// Not every BMC has pending values to give, so that their lack alone is no failure.
    void ReadPending(RedfishConfigProc& front, const std::string& bare, SettingDescription& description)
    {
        SettingCompareMap compared;
        RedfishConfigResult result =
            &front == &m_Sources.Standard ? AllPending() : RedfishConfigResult(CodeSucceed, "", "");
        if (IsSuccess(result.ErrorCode()))
        {
            result = front.CompareSettingPendingValues(compared, bare);
        }
        if (IsSuccess(result.ErrorCode()) && !compared.empty())
        {
            description.Pending.Text = compared.begin()->second.second;
        }
        else if (IsUnreachable(result.ErrorCode()))
        {
            description.Pending.Unknown = Tell(m_Causes.Explain(result, description.ShownName));
        }
        else if (!IsSuccess(result.ErrorCode()) && result != CodeNothingPending && result != CodeNotFound)
        {
            description.Pending.Unknown = FailureOf(result).Message;
        }
        else if (description.Info.SettingType == "Password")
        {
            description.Pending.Unknown = "it is a password"; // no BMC shows it, whether one waits or not
        }
    }

    /// Puts a failure among those of the answer. @return its message.
    std::string Tell(Failure failure)
    {
        HintAtMissingAction(failure, m_Answer.Notes);
        std::string message = failure.Message;
        AddFailure(m_Answer, std::move(failure));
        return message;
    }

    const DescribeSources& m_Sources;
    const Options& m_Options;
    Answer& m_Answer;
    Prefixes m_Prefixes;
    std::vector<std::string> m_Keywords;
    CauseLog m_Causes;
    std::unique_ptr<RedfishConfigSettingManager> m_Manager;
    std::unique_ptr<RedfishConfigProc> m_ProtectedFront;
    bool m_Many = false;
    std::optional<ValuesByName> m_Reported;
    RedfishConfigResult m_ReportedResult = {CodeSucceed, "", ""};
    std::optional<RedfishConfigResult> m_AllPending;
    SettingCompareMap m_Compared;
};

} // namespace

Answer DescribeSettings(const DescribeSources& sources, const Options& options, std::optional<std::size_t> columns)
{
    Answer answer;
    Describer describer(sources, options, answer);
    if (!describer.Prepare())
    {
        return answer;
    }
    for (const SettingDescription& description : describer.Describe())
    {
        if (options.Json)
        {
            answer.Data[ValidUtf8(description.ShownName)] = DescriptionObject(description, options.Hex);
        }
        else
        {
            answer.Text += (answer.Text.empty() ? "" : "\n") + DescriptionText(description, columns, options.Hex);
        }
    }
    return answer;
}

Answer RunDescribe(const Options& options, Bmc& bmc)
{
    RedfishConfigProc& standard = bmc.Keep(bmc.StandardFront());
    Answer answer =
        DescribeSettings({standard, bmc.SettingManagers(), [&] { return bmc.Front(); }}, options, TerminalWidth());
    WarnOfDefaults(standard, answer.Notes);
    return answer;
}

} // namespace Tavrine::Tool
