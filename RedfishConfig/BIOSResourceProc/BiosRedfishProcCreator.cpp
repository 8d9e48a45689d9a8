#include "BiosRedfishProcCreator.h"

#include "BiosProtectedSettingProc.h"
#include "BiosStandardSettingProc.h"
#include "ResourceNames.h"
#include "Results.h"
#include "Trace.h"

namespace Tavrine
{

BiosRedfishProcCreator::BiosRedfishProcCreator(const TavrineConnection::ConnectionInfo& connection,
                                               ConfigurateSupportedSystemType systemType, Config_Options options)
    : m_ConnectionInfo(connection), m_SystemType(systemType), m_Options(options)
{
    m_CreatorMap.emplace(StandardSettings, [this] { return CreateStandardSettingProc(); });
    m_CreatorMap.emplace(ProtectedSettings, [this] { return CreateProtectedSettingProc(); });
    TAVRINE_LOG(LogDetail) << "The size of m_CreatorMap is " << m_CreatorMap.size();
}

BiosRedfishProcCreator::~BiosRedfishProcCreator()
{
    TAVRINE_LOG(LogDetail) << "Entering  Tavrine::BiosRedfishProcCreator::~BiosRedfishProcCreator";
    TAVRINE_LOG(LogDetail) << "Exiting  Tavrine::BiosRedfishProcCreator::~BiosRedfishProcCreator";
}

std::shared_ptr<BiosBasicSettingProc> BiosRedfishProcCreator::CreateStandardSettingProc()
{
    auto proc = std::make_shared<BiosStandardSettingProc>(m_ConnectionInfo, m_Options);
    if (!m_DebugConfigFile.empty())
    {
        proc->SetDebugConfigFile(m_DebugConfigFile);
    }
    return proc;
}

std::shared_ptr<BiosBasicSettingProc> BiosRedfishProcCreator::CreateProtectedSettingProc()
{
    return std::shared_ptr<BiosBasicSettingProc>(new BiosProtectedSettingProc(m_ConnectionInfo, m_Options));
}

void BiosRedfishProcCreator::KeepProc(const std::string& resource, const std::shared_ptr<BiosBasicSettingProc>& proc)
{
    proc->m_SystemType = m_SystemType;
    proc->m_SecondPrefix = m_SecondPrefix;
    proc->m_Prefix = m_Prefix;
    m_ProcMap[resource] = proc;
}

void BiosRedfishProcCreator::CreateAllProcs(ProcMap& procs)
{
    procs.clear();
    if (m_ProcMap.empty())
    {
        for (const auto& [resource, create] : m_CreatorMap)
        {
            if (m_SystemType != SystemTypeUefi && resource == ProtectedSettings)
            {
                continue;
            }
            KeepProc(resource, create());
        }
    }
    procs = m_ProcMap;
}

RedfishConfigResult BiosRedfishProcCreator::CreateProcForSetting(const RedfishConfigSettingInfoStru& info,
                                                                 std::shared_ptr<BiosBasicSettingProc>& proc)
{
    std::string resource = StandardSettings;
    if (m_SystemType == SystemTypeUefi && info.IsProtected)
    {
        if (!m_Options.allowProtectedSettings)
        {
            TAVRINE_LOG(LogFailure) << "setting is protected.";
            return {ResultHidden,
                    "The operation on setting " + info.AttributeKey.value() + " fails since it is hidden.", ""};
        }
        resource = ProtectedSettings;
    }

    const auto existing = m_ProcMap.find(resource);
    if (existing != m_ProcMap.end())
    {
        proc = existing->second;
        return BareResult(ResultSuccess);
    }
    const auto creator = m_CreatorMap.find(resource);
    if (creator == m_CreatorMap.end())
    {
        return BareResult(ResultInternalError);
    }
    proc = creator->second();
    if (proc == nullptr)
    {
        return BareResult(ResultInternalError);
    }
    KeepProc(resource, proc);
    return BareResult(ResultSuccess);
}

} // namespace Tavrine
