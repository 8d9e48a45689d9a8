#pragma once

#include <string>
#include <vector>

#include "Export.h"
#include "RedfishConfigResult.h"
#include "ValueTypes.h"

namespace Tavrine
{

/// Keeps the changes that wait for a flush and the failures of the last one. One object
/// is used by one thread at a time.
class TAVRINE_EXPORT RedfishConfigAssistant
{
  public:
    RedfishConfigAssistant();
    virtual ~RedfishConfigAssistant();

    /// Failures gathered by the last flush, one entry a setting, its name filled.
    std::vector<RedfishConfigResult> GetError();
    /// Replaces that list.
    void UpdateError(const std::vector<RedfishConfigResult>& errors);
    /// Remembers the prepared JSON text of a setting's new value for the next
    /// flush; a second text for one name replaces the first.
    void CacheSetContext(const std::string name, const std::string context);

    /// Sends what is cached to `target`. This class has no way to send: 11.
    virtual RedfishConfigResult FlushChanges(const std::string target);

  protected:
    SettingStringMap m_SetContexts;
    std::vector<RedfishConfigResult> m_Errors;
};

} // namespace Tavrine
