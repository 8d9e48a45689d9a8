#include <algorithm>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RealBiosValues.h"
#include "RedfishConfigSettingManager.h"
#include "SharedData.h"
#include "ValidValuesSplit.h"

using namespace Tavrine;
using testing::IsEmpty;

namespace
{

namespace json = boost::json;

class RealMachines : public testing::Test
{
  protected:
    void SetUp() override
    {
        if (testdata::Machines().empty())
        {
            GTEST_SKIP() << "no answers of real machines beside this checkout";
        }
        for (const std::filesystem::path& path : testdata::Machines())
        {
            const std::string registry = testdata::ReadFile(path / "registry.en.json");
            Machine& machine = m_Machines[path.filename().string()];
            machine.Registry = json::parse(registry);
            machine.Values = BiosValues(path);
            machine.Manager =
                std::make_unique<RedfishConfigSettingManager>(registry, machine.Values, false, Config_Options());
        }
    }

    struct Machine
    {
        json::value Registry;
        SettingValueMap Values;
        std::unique_ptr<RedfishConfigSettingManager> Manager;

        const json::array& Attributes() const { return Registry.at("RegistryEntries").at("Attributes").as_array(); }
    };

    std::map<std::string, Machine> m_Machines;
};

std::string NameOf(const json::value& attribute) { return std::string(attribute.at("AttributeName").as_string()); }

bool IsLocked(const RedfishConfigSettingInfoStru& info)
{
    return info.ReadOnly || info.Hidden || info.GrayOut || info.Immutable;
}

} // namespace

TEST_F(RealMachines, EveryWritableCurrentValueIsTakenAsItsOwnNewValue)
{
    std::map<std::string, std::vector<std::string>> refused;
    int takenInAll = 0;
    for (const auto& [name, machine] : m_Machines)
    {
        int taken = 0;
        int locked = 0;
        for (const json::value& attribute : machine.Attributes())
        {
            const std::string setting = NameOf(attribute);
            const auto value = machine.Values.find(setting);
            RedfishConfigSettingInfoStru info;
            ASSERT_EQ(machine.Manager->GetSettingProperties(setting, info), 0);
            if (value == machine.Values.end() || !value->second)
            {
                continue;
            }
            const json::value wanted = std::visit([](const auto& held) { return json::value(held); }, *value->second);
            const std::string text = wanted.is_string() ? std::string(wanted.get_string()) : json::serialize(wanted);
            std::string context;
            RedfishConfigResult result = machine.Manager->PreparePatchContext(setting, text, context, FilterChange);
            if (IsLocked(info))
            {
                EXPECT_EQ(result.ErrorCode(), 18) << setting;
                ++locked;
            }
            else if (result.ErrorCode() != 0)
            {
                refused[name].push_back(result.ErrorMsg());
            }
            else
            {
                EXPECT_EQ(json::parse(context), wanted) << setting;
                ++taken;
            }
        }
        RecordProperty(name + ".taken", taken);
        RecordProperty(name + ".locked", locked);
        takenInAll += taken;
    }
    EXPECT_THAT(refused, IsEmpty());
    EXPECT_TRUE(m_Machines.empty() || takenInAll > 100) << takenInAll;
}

TEST_F(RealMachines, EveryAttributeHasADescriptionAndValidValuesThatSplit)
{
    for (const auto& [name, machine] : m_Machines)
    {
        SettingStringMap descriptions;
        SettingStringMap values;
        EXPECT_EQ(machine.Manager->QueryGroupSettingDescriptions(descriptions), 0) << name;
        EXPECT_EQ(machine.Manager->QueryGroupSettingValidValues(values), 0) << name;
        EXPECT_EQ(descriptions.size(), machine.Attributes().size()) << name;
        EXPECT_EQ(values.size(), machine.Attributes().size()) << name;
        for (const json::value& attribute : machine.Attributes())
        {
            const std::string setting = NameOf(attribute);
            EXPECT_THAT(descriptions[setting],
                        testing::StartsWith(std::string(attribute.at("DisplayName").as_string())));
            if (attribute.at("Type") != "Enumeration")
            {
                EXPECT_EQ(std::count(values[setting].begin(), values[setting].end(), '\n'), 0) << setting;
                EXPECT_THAT(values[setting], testing::HasSubstr(" to ")) << setting;
                continue;
            }
            std::vector<validvalues::Item> items;
            for (const json::value& value : attribute.at("Value").as_array())
            {
                const std::string valueName(value.at("ValueName").as_string());
                const json::value* display = value.as_object().if_contains("ValueDisplayName");
                items.push_back({valueName, display != nullptr ? std::string(display->as_string()) : valueName});
            }
            EXPECT_EQ(validvalues::SplitItems(values[setting]), items) << values[setting];
        }
    }
}

TEST_F(RealMachines, DefaultsPassButThoseThatBreakTheirOwnRules)
{
    std::map<std::string, std::vector<std::string>> refused;
    for (const auto& [name, machine] : m_Machines)
    {
        SettingStringMap defaults;
        const RedfishConfigResult all = machine.Manager->QueryGroupSettingDefaultValues(defaults);
        EXPECT_EQ(all.ErrorCode(), defaults.size() == machine.Attributes().size() ? 0 : 7) << name;
        EXPECT_EQ(defaults.size() + machine.Manager->TakeErrors().size(), machine.Attributes().size()) << name;
        // Nothing is known, so nothing is locked but by the registry itself.
        RedfishConfigSettingManager unknowing(json::serialize(machine.Registry), false, Config_Options());
        for (const auto& [setting, value] : defaults)
        {
            std::string context;
            const int code = unknowing.PreparePatchContext(setting, value, context, FilterDefaultOne);
            EXPECT_TRUE(code == 0 || code == 10 || code == 18) << setting;
            if (code == 10)
            {
                refused[name].push_back(setting);
            }
        }
        SettingStringMap contexts;
        EXPECT_EQ(machine.Manager->PreparePatchContext(defaults, contexts, FilterDefaultAll), 0) << name;
        std::cout << name << ": " << defaults.size() << " defaults, " << contexts.size() << " writable now\n";
    }
    if (m_Machines.count("hpe-DL360") != 0)
    {
        EXPECT_THAT(refused["hpe-DL360"], testing::ElementsAre("SgxEpoch", "SgxLePublicKeyHash0", "SgxLePublicKeyHash1",
                                                               "SgxLePublicKeyHash2", "SgxLePublicKeyHash3"));
        refused.erase("hpe-DL360");
    }
    EXPECT_THAT(refused, IsEmpty());
}

TEST_F(RealMachines, RefusedValuesNameTheirSettingOnce)
{
    for (const auto& [name, machine] : m_Machines)
    {
        RedfishConfigSettingManager unknowing(json::serialize(machine.Registry), false, Config_Options());
        int refused = 0;
        for (const json::value& attribute : machine.Attributes())
        {
            const std::string setting = NameOf(attribute);
            std::string context;
            RedfishConfigResult result = unknowing.PreparePatchContext(setting, "\xFF", context, FilterChange);
            ASSERT_NE(result.ErrorCode(), 0) << setting;
            if (attribute.at("Type") == "Enumeration")
            {
                result = unknowing.PreparePatchContext(setting, "no such value", context, FilterChange);
            }
            std::string message = result.ErrorMsg();
            const std::size_t place = message.find(setting);
            ASSERT_NE(place, std::string::npos) << message;
            EXPECT_EQ(message.find(setting, place + 1), std::string::npos) << message;
            EXPECT_EQ(result.ErrorSetting(), setting);
            ++refused;
        }
        EXPECT_EQ(refused, static_cast<int>(machine.Attributes().size()));
    }
}

TEST_F(RealMachines, SaveIsRestoredOnTheSameMachine)
{
    std::size_t savedInAll = 0;
    for (const auto& [name, machine] : m_Machines)
    {
        SettingStringMap saved;
        ASSERT_EQ(machine.Manager->FetchSaveSettingValues(saved, FilterSave), 0) << name;
        savedInAll += saved.size();
        SettingStringMap contexts;
        RedfishConfigResult result = machine.Manager->PreparePatchContext(saved, contexts, FilterRestoreSameSystem);
        EXPECT_THAT(result.ErrorCode(), testing::AnyOf(0, 7)) << name << ": " << result.ErrorMsg();
        EXPECT_EQ(contexts.size() + machine.Manager->GetError().size(), saved.size()) << name;
        for (RedfishConfigResult& error : machine.Manager->TakeErrors())
        {
            EXPECT_EQ(error.ErrorCode(), 18) << error.ErrorMsg();
            EXPECT_THAT(error.ErrorMsg(), testing::HasSubstr(" because "))
                << "only what a dependency locks at the moment";
        }
    }
    EXPECT_TRUE(m_Machines.empty() || savedInAll > 100U) << savedInAll;
}
