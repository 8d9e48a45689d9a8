#include "SettingManager.h"

#include <string>
#include <utility>

#include "Answer.h"
#include "BiosRedfishConfigProc.h"
#include "BiosSettingManager.h"
#include "RegistryText.h"

namespace Tavrine::Tool
{

RedfishConfigResult ReadSettingManager(RedfishConfigProc& front, std::unique_ptr<RedfishConfigSettingManager>& manager,
                                       bool withProtected)
{
    auto* const own = dynamic_cast<BiosRedfishConfigProc*>(&front);
    if (own == nullptr)
    {
        return {CodeInternal, "The front object is none of the library's, so that it shares no registry.", ""};
    }
    std::unique_ptr<RedfishConfigSettingManager> taken;
    RedfishConfigResult result = TakeSettingManager(*own, taken, withProtected);
    if (!IsSuccess(result.ErrorCode()))
    {
        return result;
    }
    RedfishConfigSettingTexts none;
    RedfishConfigResult read = taken->GetSettingTexts("", none);
    if (read == CodeUnusable && !withProtected)
    {
        return read; // the words of `schema` come with a read of protected settings
    }
    if (read == CodeUnusable)
    {
        // What is wrong with a registry is told in the words of `schema`.
        std::string text;
        result = ReadRegistryText(front, text);
        return IsSuccess(result.ErrorCode()) ? read : result;
    }
    manager = std::move(taken);
    return result;
}

bool WarnOfDefaults(const RedfishConfigProc& front, std::vector<std::string>& notes)
{
    const auto* const own = dynamic_cast<const BiosRedfishConfigProc*>(&front);
    const bool due = own != nullptr && AwaitsDefaults(*own);
    if (due)
    {
        notes.emplace_back("warning: all settings go to their defaults at the next start of the system");
    }
    return due;
}

} // namespace Tavrine::Tool
