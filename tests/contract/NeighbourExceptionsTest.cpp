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

SettingStringMap values;
SettingCompareMap compared;
SettingGroupMap groups;

const std::vector<ThrowingCase> Cases = {
    {"QueryGroupSettingValues", "GET " + SystemsUrl, [](auto& front) { front.QueryGroupSettingValues(values); }},
    {"QuerySettingValue", "GET " + BiosUrl, [](auto& front) { front.QuerySettingValue("Wake", values); }},
    {"QuerySettingValueOfAnOldName", "ConvertNameFromOldToNew Old",
     [](auto& front) { front.QuerySettingValue("Old", values); }},
    {"QuerySettingValueInTheModel", "GetSettingProperties Wake",
     [](auto& front) { front.QuerySettingValue("Wake", values); }},
    {"QueryGroupList", "SCHEMA " + BiosUrl, [](auto& front) { front.QueryGroupList(groups); }},
    {"QuerySettingValidValues", "QuerySettingValidValues Wake",
     [](auto& front) { front.QuerySettingValidValues(values, "Wake"); }},
    {"QuerySettingDefaultValues", "QueryGroupSettingDefaultValues",
     [](auto& front) { front.QuerySettingDefaultValues(values, ""); }},
    {"QuerySettingDescriptions", "QuerySettingDescription Wake",
     [](auto& front) { front.QuerySettingDescriptions(values, "Wake"); }},
    {"QuerySaveSettingValues", "FetchSaveSettingValues 14", [](auto& front) { front.QuerySaveSettingValues(values); }},
    {"PatchSettingNewValue", "PreparePatchContext BootMode=Legacy 8",
     [](auto& front) { front.PatchSettingNewValue("BootMode", "Legacy", false); }},
    {"PatchSettingNewValueAtTheFlush", "PATCH " + SettingsUrl,
     [](auto& front) { front.PatchSettingNewValue("BootMode", "Legacy", false); }},
    {"PatchSettingNewValueWithOutCheck", "GetSettingProperties BootMode",
     [](auto& front) { front.PatchSettingNewValueWithOutCheck("BootMode", "Legacy", false); }},
    {"Restore", "PreparePatchContext {BootMode=Legacy} 16",
     [](auto& front)
     {
         SettingStringMap wanted{{"BootMode", "Legacy"}};
         SettingStringMap done;
         SettingStringMap failed;
         front.Restore(wanted, done, failed, false, false);
     }},
    {"RestoreAtTheModel", "UpdateSettingValue",
     [](auto& front)
     {
         SettingStringMap wanted{{"BootMode", "Legacy"}};
         SettingStringMap done;
         SettingStringMap failed;
         front.Restore(wanted, done, failed, false, false);
     }},
    {"CompareSettingPendingValues", "GET " + SettingsUrl,
     [](auto& front) { front.CompareSettingPendingValues(compared, ""); }},
    {"CompareSettingDefaultValues", "QuerySettingDefaultValue Wake",
     [](auto& front) { front.CompareSettingDefaultValues(compared, "Wake"); }},
    {"PostDefaultvalue", "GET " + BiosUrl, [](auto& front) { front.PostDefaultvalue("", "reset-bios"); }},
};

INSTANTIATE_TEST_SUITE_P(Operation, NeighbourExceptions, testing::ValuesIn(Cases),
                         [](const auto& instance) { return instance.param.Name; });

} // namespace
