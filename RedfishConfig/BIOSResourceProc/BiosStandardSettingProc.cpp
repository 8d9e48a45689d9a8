#include "BiosStandardSettingProc.h"

#include <memory>

#include "BiosStandardSettingAssistant.h"
#include "JsonNodes.h"

namespace Tavrine
{

BiosStandardSettingProc::BiosStandardSettingProc(const TavrineConnection::ConnectionInfo& connection,
                                                 const Config_Options& options)
{
    TakeAssistant(std::make_shared<BiosStandardSettingAssistant>(connection), options);
}

void BiosStandardSettingProc::SetDebugConfigFile(const std::string& path)
{
    m_DebugConfigFile = path;
    if (path.empty())
    {
        return;
    }
    const std::string resource = ReadDebugConfigNode(path, "resource");
    if (!resource.empty() && m_Assistant != nullptr)
    {
        m_Assistant->SetValueResponse(resource);
    }
}

} // namespace Tavrine
