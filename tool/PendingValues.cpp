#include "PendingValues.h"

#include <utility>

#include "Answer.h"
#include "SettingNames.h"

namespace Tavrine::Tool
{
namespace
{

/// "There are no pending values": an answer, not a failure.
constexpr int CodeNothingPending = 2;

bool Answered(const RedfishConfigResult& result)
{
    return IsSuccess(result.ErrorCode()) || result == CodeNothingPending;
}

RedfishConfigResult Good() { return {CodeSucceed, "", ""}; }

void Add(const Prefixes& prefixes, const SettingCompareMap& compared, PendingValues& values)
{
    for (const auto& [name, texts] : compared)
    {
        values.Effective[BareName(name, prefixes)] = texts.first;
        values.Pending[BareName(name, prefixes)] = texts.second;
    }
}

} // namespace

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
    for (const auto& [name, text] : effective)
    {
        values.Effective[BareName(name, prefixes)] = text;
    }
    Add(prefixes, compared, values);
    return Good();
}

RedfishConfigResult AddPendingValue(RedfishConfigProc& front, const std::string& name, PendingValues& values)
{
    const Prefixes prefixes = {front.m_Prefix, front.GetSecondPrefix()};
    SettingCompareMap compared;
    RedfishConfigResult result = front.CompareSettingPendingValues(compared, name);
    if (!Answered(result))
    {
        return result;
    }
    SettingStringMap effective;
    result = front.QuerySettingValue(name, effective);
    if (!IsSuccess(result.ErrorCode()))
    {
        return result;
    }
    if (!effective.empty())
    {
        values.Effective[name] = effective.begin()->second;
    }
    if (!compared.empty())
    {
        values.Effective[name] = compared.begin()->second.first;
        values.Pending[name] = compared.begin()->second.second;
    }
    return Good();
}

} // namespace Tavrine::Tool
