#include "GroupsCommand.h"

#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

#include "Bmc.h"
#include "CauseLog.h"
#include "JsonOutput.h"
#include "NamePatterns.h"
#include "Options.h"
#include "SettingNames.h"
#include "TextOutput.h"

namespace Tavrine::Tool
{
namespace
{

SettingGroupMap ShownGroups(const SettingGroupMap& groups, const std::string& prefix)
{
    const std::vector<std::string> keywords = HiddenKeywords();
    SettingGroupMap shown;
    for (const auto& [group, names] : groups)
    {
        for (const std::string& name : names)
        {
            if (std::string shownName = prefix + "." + name; !IsHidden(shownName, keywords))
            {
                shown[group].push_back(std::move(shownName));
            }
        }
    }
    return shown;
}

/// The groups that a command line names; what names none is a failure.
SettingGroupMap ChosenGroups(const SettingGroupMap& shown, const std::vector<std::string>& names, Answer& answer)
{
    SettingGroupMap chosen;
    for (const std::string& name : names)
    {
        // A group's own name comes first: it may hold the characters of a pattern.
        const bool exact = shown.contains(name);
        bool found = false;
        for (const auto& group : shown)
        {
            if (exact ? group.first == name : IsPattern(name) && MatchesPattern(name, group.first))
            {
                chosen.insert(group);
                found = true;
            }
        }
        if (!found)
        {
            AddFailure(answer, {CodeNotFound, "Unable to find the group " + name});
        }
    }
    return chosen;
}

} // namespace

Answer ListGroups(RedfishConfigProc& front, const Options& options, bool tree)
{
    Answer answer;
    CauseLog causes;
    SettingGroupMap groups;
    const RedfishConfigResult result = front.QueryGroupList(groups);
    if (!IsSuccess(result.ErrorCode()))
    {
        AddFailure(answer, causes.Explain(result));
        return answer;
    }
    SettingGroupMap shown = ShownGroups(groups, front.GetSecondPrefix());
    if (!options.Names.empty())
    {
        shown = ChosenGroups(shown, options.Names, answer);
    }
    if (options.Json)
    {
        answer.Data = GroupsObject(shown);
    }
    else
    {
        answer.Text = tree ? GroupTree(shown) : GroupLines(shown);
    }
    return answer;
}

Answer RunGroups(const Options& options, Bmc& bmc)
{
    return ListGroups(*bmc.Front(), options, isatty(STDOUT_FILENO) == 1);
}

} // namespace Tavrine::Tool
