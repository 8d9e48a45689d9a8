// Exceptions of the neighbours are no business of the library: they pass through it.
#include <functional>
#include <ostream>
#include <stdexcept>

#include "ChangeFixture.h"

using namespace changing;
using namespace Tavrine;
using reading::BiosUrl;
using reading::SettingsUrl;
using reading::SystemsUrl;

namespace
{

struct ThrowingCase
{
    std::string Name;
    /// What throws; its text is that of the exception.
    std::string What;
    std::function<void(BiosRedfishConfigProc&)> Call;
};

void PrintTo(const ThrowingCase& param, std::ostream* out) { *out << param.What; }

class NeighbourExceptions : public ChangeTest, public testing::WithParamInterface<ThrowingCase>
{
};

TEST_P(NeighbourExceptions, PassThrough)
{
    StartReal();
    Accept("BootMode", "\"Legacy\"");
    TellContexts({{"BootMode", "\"Legacy\""}});
    world.Tell("PATCH", SettingsUrl, "");
    m_Front->m_Options.LegacyNameMode = true;
    world.Throws = {GetParam().What};
    try
    {
        GetParam().Call(*m_Front);
        FAIL() << "nothing was thrown";
    }
    catch (const std::runtime_error& error)
    {
        EXPECT_EQ(error.what(), GetParam().What);
    }
    // The object stands, and works once the neighbour does.
    world.Throws.clear();
    SettingStringMap values;
    EXPECT_THAT(m_Front->QuerySettingValue("Wake", values), IsBare(0));
    EXPECT_EQ(values, (SettingStringMap{{"BIOS.Wake", "true"}}));
}

/// Calls an operation of this signature with a map of its own.
template <class Map> auto Into(RedfishConfigResult (BiosRedfishConfigProc::*operation)(Map&))
{
    return [operation](BiosRedfishConfigProc& front)
    {
        Map map;
        (front.*operation)(map);
    };
}
template <class Map>
auto Into(RedfishConfigResult (BiosRedfishConfigProc::*operation)(Map&, const std::string&), const char* setting)
{
    return [operation, setting](BiosRedfishConfigProc& front)
    {
        Map map;
        (front.*operation)(map, setting);
    };
}
auto QueryInto(const char* setting)
{
    return [setting](BiosRedfishConfigProc& front)
    {
        SettingStringMap map;
        front.QuerySettingValue(setting, map);
    };
}

void RestoreBootMode(BiosRedfishConfigProc& front)
{
    SettingStringMap wanted{{"BootMode", "Legacy"}};
    SettingStringMap done;
    SettingStringMap failed;
    front.Restore(wanted, done, failed, false, false);
}

const std::vector<ThrowingCase> Cases = {
    {"QueryGroupSettingValues", "GET " + SystemsUrl, Into(&BiosRedfishConfigProc::QueryGroupSettingValues)},
    {"QuerySettingValue", "GET " + BiosUrl, QueryInto("Wake")},
    {"QuerySettingValueOfAnOldName", "ConvertNameFromOldToNew Old", QueryInto("Old")},
    {"QuerySettingValueInTheModel", "GetSettingProperties Wake", QueryInto("Wake")},
    {"QueryGroupList", "SCHEMA " + BiosUrl, Into(&BiosRedfishConfigProc::QueryGroupList)},
    {"QuerySettingValidValues", "QuerySettingValidValues Wake",
     Into(&BiosRedfishConfigProc::QuerySettingValidValues, "Wake")},
    {"QuerySettingDefaultValues", "QueryGroupSettingDefaultValues",
     Into(&BiosRedfishConfigProc::QuerySettingDefaultValues, "")},
    {"QuerySettingDescriptions", "QuerySettingDescription Wake",
     Into(&BiosRedfishConfigProc::QuerySettingDescriptions, "Wake")},
    {"QuerySaveSettingValues", "FetchSaveSettingValues 14", Into(&BiosRedfishConfigProc::QuerySaveSettingValues)},
    {"PatchSettingNewValue", "PreparePatchContext BootMode=Legacy 8",
     [](auto& front) { front.PatchSettingNewValue("BootMode", "Legacy", false); }},
    {"PatchSettingNewValueAtTheFlush", "PATCH " + SettingsUrl,
     [](auto& front) { front.PatchSettingNewValue("BootMode", "Legacy", false); }},
    {"PatchSettingNewValueWithOutCheck", "GetSettingProperties BootMode",
     [](auto& front) { front.PatchSettingNewValueWithOutCheck("BootMode", "Legacy", false); }},
    {"Restore", "PreparePatchContext {BootMode=Legacy} 16", RestoreBootMode},
    {"RestoreAtTheModel", "UpdateSettingValue", RestoreBootMode},
    {"CompareSettingPendingValues", "GET " + SettingsUrl,
     Into(&BiosRedfishConfigProc::CompareSettingPendingValues, "")},
    {"CompareSettingDefaultValues", "QuerySettingDefaultValue Wake",
     Into(&BiosRedfishConfigProc::CompareSettingDefaultValues, "Wake")},
    {"PostDefaultvalue", "GET " + BiosUrl, [](auto& front) { front.PostDefaultvalue("", "reset-bios"); }},
};

INSTANTIATE_TEST_SUITE_P(Operation, NeighbourExceptions, testing::ValuesIn(Cases),
                         [](const auto& instance) { return instance.param.Name; });

} // namespace
