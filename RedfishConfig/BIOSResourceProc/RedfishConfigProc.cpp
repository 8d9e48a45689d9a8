#include "RedfishConfigProc.h"

#include "RedfishConfigAssistant.h"
#include "Results.h"

namespace Tavrine
{

namespace
{

RedfishConfigResult NotSupported() { return BareResult(ResultNotSupported); }

} // namespace

RedfishConfigProc::RedfishConfigProc() = default;
RedfishConfigProc::~RedfishConfigProc() = default;

RedfishConfigResult RedfishConfigProc::UnsupportedOperation1() { return NotSupported(); }
RedfishConfigResult RedfishConfigProc::UnsupportedOperation2() { return NotSupported(); }
RedfishConfigResult RedfishConfigProc::ImportUEFICustomDefaultFile(const std::string&) { return NotSupported(); }
RedfishConfigResult RedfishConfigProc::ExportUEFICustomDefaultFile(std::string&) { return NotSupported(); }
RedfishConfigResult RedfishConfigProc::UnsupportedOperation3() { return NotSupported(); }
RedfishConfigResult RedfishConfigProc::UnsupportedOperation4() { return NotSupported(); }
RedfishConfigResult RedfishConfigProc::UnsupportedOperation5() { return NotSupported(); }
RedfishConfigResult RedfishConfigProc::UnsupportedOperation6() { return NotSupported(); }
RedfishConfigResult RedfishConfigProc::UnsupportedOperation7() { return NotSupported(); }
RedfishConfigResult RedfishConfigProc::UnsupportedOperation8() { return NotSupported(); }
RedfishConfigResult RedfishConfigProc::UnsupportedOperation9() { return NotSupported(); }
RedfishConfigResult RedfishConfigProc::UnsupportedOperation10() { return NotSupported(); }

void RedfishConfigProc::SetPrefix(const std::string& first, const std::string& second)
{
    m_Prefix = first;
    m_SecondPrefix = second;
}

RedfishConfigResult RedfishConfigProc::FlushChanges()
{
    m_ErrorList.clear();
    if (m_Assistant == nullptr)
    {
        return BareResult(ResultInternalError);
    }
    RedfishConfigResult result = m_Assistant->FlushChanges(m_FlushTarget);
    const std::vector<RedfishConfigResult> errors = m_Assistant->GetError();
    m_ErrorList.insert(m_ErrorList.end(), errors.begin(), errors.end());
    return result;
}

RedfishConfigResult RedfishConfigProc::CompareSettingDefaultValues(SettingCompareMap&, const std::string&)
{
    return NotSupported();
}

std::string RedfishConfigProc::GetSecondPrefix() { return m_SecondPrefix; }

void RedfishConfigProc::SetDebugConfigFile(const std::string& path) { m_DebugConfigFile = path; }

} // namespace Tavrine
