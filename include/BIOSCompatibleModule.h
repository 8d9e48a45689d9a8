#pragma once

#include <string>

#include "ConfigOptions.h"
#include "Export.h"
#include "RedfishConfigResult.h"

namespace Tavrine
{

/// Old names of settings, taken from the table "legacy_names" of the
/// configuration file (old name = new name, compared exactly; see GlobalConfig). Safe from
/// any thread.
class TAVRINE_EXPORT BIOSCompatibleModule
{
  public:
    explicit BIOSCompatibleModule(const Config_Options& options);
    virtual ~BIOSCompatibleModule();

    /// Writes the current form of `oldName` to `newName`. Where the table has no
    /// such name, or an empty one for it, where the configuration cannot be read, or
    /// LegacyNameMode is off, `newName` stays as it was.
    /// @return 0 when a name was written; 20 otherwise, with the cause.
    RedfishConfigResult ConvertNameFromOldToNew(const std::string oldName, std::string& newName);

  private:
    Config_Options m_Options;
};

} // namespace Tavrine
