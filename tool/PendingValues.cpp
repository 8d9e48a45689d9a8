#include "PendingValues.h"

#include <utility>

#include "Answer.h"
#include "OrderedLookup.h"
#include "SettingNames.h"

namespace Tavrine::Tool
{
namespace
{

RedfishConfigResult Good() { return {CodeSucceed, "", ""}; }

void Add(const Prefixes& prefixes, const SettingCompareMap& compared, PendingValues& values)
{
    auto effective = values.Effective.begin();
    auto pending = values.Pending.begin();
    for (const auto& [name, texts] : compared)
    {
        const std::string bare = BareName(name, prefixes);
        effective = PutNear(values.Effective, effective, bare, texts.first);
        pending = PutNear(values.Pending, pending, bare, texts.second);
    }
}

} // namespace

bool Answered(const RedfishConfigResult& result)
{
    return IsSuccess(result.ErrorCode()) || result == CodeNothingPending;
}

RedfishConfigResult ReadPendingValues(RedfishConfigProc& front, PendingValues& values)
{
    const Prefixes prefixes = {front.m_Prefix, front.GetSecondPrefix()};
    SettingCompareMap compared;
    RedfishConfigResult result = front.CompareSettingPendingValues(compared, "");
    if (!Answered(result))
    {
        return result;
    }
    SettingStringMap effective;
    result = front.QueryGroupSettingValues(effective);
    if (!IsSuccess(result.ErrorCode()))
    {
        return result;
    }
    auto place = values.Effective.begin();
    for (const auto& [name, text] : effective)
    {
        place = PutNear(values.Effective, place, BareName(name, prefixes), text);
    }
    Add(prefixes, compared, values);
    return Good();
}

void AddPendingValue(RedfishConfigProc& front, const std::string& name, PendingValues& values)
{
    SettingCompareMap compared;
    const RedfishConfigResult result = front.CompareSettingPendingValues(compared, name);
    if (!Answered(result))
    {
        return;
    }
    if (!compared.empty())
    {
        values.Effective[name] = compared.begin()->second.first;
        values.Pending[name] = compared.begin()->second.second;
        return;
    }
    SettingStringMap effective;
    if (IsSuccess(front.QuerySettingValue(name, effective).ErrorCode()) && !effective.empty())
    {
        values.Effective[name] = effective.begin()->second;
    }
}

} // namespace Tavrine::Tool
