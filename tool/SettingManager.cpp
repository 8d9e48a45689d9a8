#include "SettingManager.h"

#include <utility>

#include "Answer.h"
#include "BiosRedfishConfigProc.h"

namespace Tavrine::Tool
{

RedfishConfigResult ReadSettingManager(RedfishConfigProc& front, std::unique_ptr<RedfishConfigSettingManager>& manager,
                                       ManagerValues wanted)
{
    auto* const own = dynamic_cast<BiosRedfishConfigProc*>(&front);
    if (own == nullptr)
    {
        return {CodeInternal, "The front object is none of the library's, so that it shares no registry.", ""};
    }
    std::unique_ptr<RedfishConfigSettingManager> taken;
    RedfishConfigResult result = TakeSettingManager(*own, taken, wanted);
    if (!IsSuccess(result.ErrorCode()))
    {
        return result;
    }
    RedfishConfigSettingTexts none;
    const RedfishConfigResult read = taken->GetSettingTexts("", none);
    if (read == CodeUnusable)
    {
        return read;
    }
    manager = std::move(taken);
    return result;
}

bool DefaultsAreDue(const RedfishConfigProc& front)
{
    const auto* const own = dynamic_cast<const BiosRedfishConfigProc*>(&front);
    return own != nullptr && AwaitsDefaults(*own);
}

bool WarnOfDefaults(const RedfishConfigProc& front, std::vector<std::string>& notes)
{
    const bool due = DefaultsAreDue(front);
    if (due)
    {
        notes.emplace_back("warning: all settings go to their defaults at the next start of the system");
    }
    return due;
}

} // namespace Tavrine::Tool
