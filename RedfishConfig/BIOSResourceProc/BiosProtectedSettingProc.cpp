#include "BiosProtectedSettingProc.h"

#include <memory>

#include "BiosProtectedSettingAssistant.h"

namespace Tavrine
{

BiosProtectedSettingProc::BiosProtectedSettingProc(const TavrineConnection::ConnectionInfo& connection,
                                                   const Config_Options& options)
{
    TakeAssistant(std::make_shared<BiosProtectedSettingAssistant>(connection), options);
}

} // namespace Tavrine
