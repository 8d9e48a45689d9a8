#include "RegistryText.h"

#include <utility>

#include "Answer.h"

namespace Tavrine::Tool
{
namespace
{

/// Value of Config_Options::OutputFormat that makes valid values the whole registry.
constexpr int RegistryOutput = 2;

} // namespace

RedfishConfigResult ReadRegistryText(RedfishConfigProc& front, std::string& text)
{
    SettingStringMap given;
    const int outputFormat = std::exchange(front.m_Options.OutputFormat, RegistryOutput);
    const RedfishConfigResult result = front.QuerySettingValidValues(given, "");
    front.m_Options.OutputFormat = outputFormat;
    if (!IsSuccess(result.ErrorCode()))
    {
        return result;
    }
    if (given.empty() || given.begin()->second.empty())
    {
        return {CodeQuery, "The BMC gave no attribute registry.", ""};
    }
    text = std::move(given.begin()->second);
    return {CodeSucceed, "", ""};
}

} // namespace Tavrine::Tool
