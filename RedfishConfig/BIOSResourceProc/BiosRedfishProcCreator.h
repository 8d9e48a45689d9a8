#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "BiosBasicSettingProc.h"
#include "ConfigOptions.h"
#include "ConnectionInfo.h"
#include "RedfishConfigResult.h"
#include "RedfishConfigSettingInfo.h"

namespace Tavrine
{

/// Resource name to its proc, in byte order: the protected resource comes first.
using ProcMap = std::map<std::string, std::shared_ptr<BiosBasicSettingProc>>;

/// Makes the proc of each resource when it is first needed, keeps it, and decides which
/// proc serves a setting. Its factories are bound to the object, so it is not copied.
class BiosRedfishProcCreator
{
  public:
    BiosRedfishProcCreator(const TavrineConnection::ConnectionInfo& connection,
                           ConfigurateSupportedSystemType systemType, Config_Options options);
    BiosRedfishProcCreator(const BiosRedfishProcCreator&) = delete;
    BiosRedfishProcCreator& operator=(const BiosRedfishProcCreator&) = delete;
    ~BiosRedfishProcCreator();

    /// All procs that there are, or, where there are none yet, all that this kind of
    /// system can have. A proc made alone by CreateProcForSetting therefore stays alone
    /// here until a setting of the other resource is asked for.
    void CreateAllProcs(ProcMap& procs);
    /// The proc that serves a setting. 34 for a protected setting that may not be
    /// touched, 13 when there is no proc; `proc` is then untouched or null.
    RedfishConfigResult CreateProcForSetting(const RedfishConfigSettingInfoStru& info,
                                             std::shared_ptr<BiosBasicSettingProc>& proc);

    TavrineConnection::ConnectionInfo m_ConnectionInfo;
    std::map<std::string, std::function<std::shared_ptr<BiosBasicSettingProc>()>> m_CreatorMap;
    ProcMap m_ProcMap;
    ConfigurateSupportedSystemType m_SystemType;
    Config_Options m_Options;
    /// Handed to procs when they are made; later changes do not reach them.
    std::string m_Prefix;
    std::string m_SecondPrefix;
    std::string m_DebugConfigFile;

  private:
    std::shared_ptr<BiosBasicSettingProc> CreateStandardSettingProc();
    std::shared_ptr<BiosBasicSettingProc> CreateProtectedSettingProc();
    void KeepProc(const std::string& resource, const std::shared_ptr<BiosBasicSettingProc>& proc);
};

} // namespace Tavrine
