#include "RegistryText.h"

#include <utility>

#include "Answer.h"

namespace Tavrine::Tool
{

RedfishConfigResult ReadRegistryText(RedfishConfigProc& front, std::string& text)
{
    SettingStringMap given;
    const RedfishConfigResult result = front.QuerySettingValidValues(given, "");
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
