#pragma once

#include "BiosBasicSettingProc.h"
#include "ConnectionInfo.h"

namespace Tavrine
{

/// The handler of the protected attributes. A debug file never stands in for them.
class BiosProtectedSettingProc : public BiosBasicSettingProc
{
  public:
    BiosProtectedSettingProc(const TavrineConnection::ConnectionInfo& connection, const Config_Options& options);
    ~BiosProtectedSettingProc() override = default;
};

} // namespace Tavrine
