#pragma once

#include "BiosBasicSettingProc.h"
#include "ConnectionInfo.h"

namespace Tavrine
{

/// The handler of the ordinary BIOS settings.
class BiosStandardSettingProc : public BiosBasicSettingProc
{
  public:
    BiosStandardSettingProc(const TavrineConnection::ConnectionInfo& connection, const Config_Options& options);
    ~BiosStandardSettingProc() override = default;

    /// Lets the node "resource" of the file stand in for the BMC's Bios resource. A file
    /// that cannot be used leaves the text of a JSON null there, which no read takes.
    void SetDebugConfigFile(const std::string& path) override;
};

} // namespace Tavrine
