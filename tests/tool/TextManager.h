#pragma once

#include <memory>
#include <string>
#include <utility>

#include "Fronts.h"
#include "RegistryText.h"
#include "SettingManager.h"

namespace tooltest
{

/// The ManagerReader of objects that are none of the library's: over the registry's text that
/// they answer with.
inline RedfishConfigResult ReadTextManager(Tavrine::RedfishConfigProc& front,
                                           std::unique_ptr<RedfishConfigSettingManager>& manager)
{
    std::string text;
    const int outputFormat = std::exchange(front.m_Options.OutputFormat, FormatOf(Tavrine::Tool::OutputForm::Registry));
    RedfishConfigResult result = Tavrine::Tool::ReadRegistryText(front, text);
    front.m_Options.OutputFormat = outputFormat;
    if (result != 0)
    {
        return result;
    }
    auto made = std::make_unique<RedfishConfigSettingManager>(text, false, front.m_Options);
    made->GetSettingNames();
    if (const auto errors = made->GetError(); !errors.empty())
    {
        return errors.front();
    }
    manager = std::move(made);
    return result;
}

} // namespace tooltest
