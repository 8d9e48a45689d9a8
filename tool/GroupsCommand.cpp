#include "GroupsCommand.h"

#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

#include "Bmc.h"
#include "CauseLog.h"
#include "JsonOutput.h"
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
    const SettingGroupMap shown = ShownGroups(groups, front.GetSecondPrefix());
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
    return ListGroups(*bmc.Front(0), options, isatty(STDOUT_FILENO) == 1);
}

} // namespace Tavrine::Tool
