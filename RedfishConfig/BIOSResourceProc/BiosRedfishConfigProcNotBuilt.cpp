// Operations of the interface that this class does not offer yet.
#include "BiosRedfishConfigProc.h"

#include "Results.h"

namespace Tavrine
{

RedfishConfigResult BiosRedfishConfigProc::PatchSettingNewValueWithOutCheck(const std::string&, const std::string&,
                                                                            bool)
{
    return BareResult(ResultNotSupported);
}

RedfishConfigResult BiosRedfishConfigProc::QuerySettingValidValues(SettingStringMap&, const std::string&)
{
    return BareResult(ResultNotSupported);
}

RedfishConfigResult BiosRedfishConfigProc::QuerySettingDefaultValues(SettingStringMap&, const std::string&)
{
    return BareResult(ResultNotSupported);
}

RedfishConfigResult BiosRedfishConfigProc::QuerySettingDescriptions(SettingStringMap&, const std::string&)
{
    return BareResult(ResultNotSupported);
}

RedfishConfigResult BiosRedfishConfigProc::PatchSettingNewValue(const std::string&, const std::string&, bool)
{
    return BareResult(ResultNotSupported);
}

RedfishConfigResult BiosRedfishConfigProc::QuerySaveSettingValues(SettingStringMap&)
{
    return BareResult(ResultNotSupported);
}

RedfishConfigResult BiosRedfishConfigProc::Restore(SettingStringMap&, SettingStringMap&, SettingStringMap&, bool, bool)
{
    return BareResult(ResultNotSupported);
}

RedfishConfigResult BiosRedfishConfigProc::PostDefaultvalue(const std::string&, const std::string&)
{
    return BareResult(ResultNotSupported);
}

RedfishConfigResult BiosRedfishConfigProc::CompareSettingPendingValues(SettingCompareMap&, const std::string&)
{
    return BareResult(ResultNotSupported);
}

} // namespace Tavrine
