#include "BiosRedfishConfigProc.h"

#include <utility>

#include "BiosRedfishProcCreator.h"
#include "BiosSettingAssistant.h"
#include "RedfishConfigSettingManager.h"
#include "Results.h"
#include "Trace.h"

namespace Tavrine
{

BiosRedfishConfigProc::BiosRedfishConfigProc(const TavrineConnection::ConnectionInfo& connection,
                                             ConfigurateSupportedSystemType systemType, const Config_Options& options)
{
    TAVRINE_LOG(LogDetail) << "Entering  Tavrine::BiosRedfishConfigProc::BiosRedfishConfigProc";
    m_Options = options;
    m_ProcCreator.reset(new BiosRedfishProcCreator(connection, systemType, options));
    const char* defaultPrefix = systemType == SystemTypeUefi ? "UEFI" : "BIOS";
    for (std::string* prefix : {&m_Prefix, &m_SecondPrefix})
    {
        if (prefix->empty())
        {
            *prefix = defaultPrefix;
        }
    }
    BiosRedfishConfigProc::SetPrefix(m_Prefix, m_SecondPrefix);
    m_SettingAssistant = std::make_shared<BiosSettingAssistant>(connection, systemType);
    TAVRINE_LOG(LogDetail) << "Exiting  Tavrine::BiosRedfishConfigProc::BiosRedfishConfigProc";
}

BiosRedfishConfigProc::BiosRedfishConfigProc(const BiosRedfishConfigProc& other) = default;
BiosRedfishConfigProc& BiosRedfishConfigProc::operator=(const BiosRedfishConfigProc& other) = default;
BiosRedfishConfigProc::~BiosRedfishConfigProc() = default;

void BiosRedfishConfigProc::SetPrefix(const std::string& first, const std::string& second)
{
    RedfishConfigProc::SetPrefix(first, second);
    if (m_ProcCreator == nullptr)
    {
        return;
    }
    // The arguments may be members of this object or of the creator, so both are copied before either is written.
    std::string firstCopy = first;
    std::string secondCopy = second;
    m_ProcCreator->m_Prefix = std::move(firstCopy);
    m_ProcCreator->m_SecondPrefix = std::move(secondCopy);
}

RedfishConfigResult BiosRedfishConfigProc::ExportUEFICustomDefaultFile(std::string& content)
{
    return m_SettingAssistant->ExportUEFICustomDefaultFile(content);
}

RedfishConfigResult BiosRedfishConfigProc::ImportUEFICustomDefaultFile(const std::string& content)
{
    return m_SettingAssistant->ImportUEFICustomDefaultFile(content);
}

RedfishConfigResult BiosRedfishConfigProc::CheckSettingCouldbeSupported(const std::string&)
{
    return BareResult(ResultSuccess);
}

} // namespace Tavrine
