#include "RedfishConfigSettingManager.h"

#include <gtest/gtest.h>

using namespace Tavrine;

// This file alone is compiled without access control.

namespace
{

const Config_Options Options = {.HexValueMode = true, .OutputFormat = 2};

void ExpectArgumentsAndNothingElse(const RedfishConfigSettingManager& manager)
{
    EXPECT_EQ(manager.m_Schema, "no registry at all");
    EXPECT_EQ(manager.m_Values, (SettingValueMap{{"A", "a"}}));
    EXPECT_TRUE(manager.m_Flag);
    EXPECT_TRUE(manager.m_Options.HexValueMode);
    EXPECT_EQ(manager.m_Options.OutputFormat, 2);
    EXPECT_EQ(manager.m_SettingTypeCreators.size(), 5U);
    EXPECT_TRUE(manager.m_ErrorList.empty());
    EXPECT_TRUE(manager.m_ForcedProperties.empty());
    EXPECT_TRUE(manager.m_Settings.empty());
    EXPECT_TRUE(manager.m_Groups.empty());
    EXPECT_TRUE(manager.m_NotTold.empty());
}

} // namespace

TEST(SettingManagerConstruction, KeepsItsArgumentsAndParsesNothing)
{
    const SettingValueMap values{{"A", "a"}};
    ExpectArgumentsAndNothingElse(RedfishConfigSettingManager("no registry at all", values, true, Options));
    EXPECT_EQ(values.size(), 1U);
}

TEST(SettingManagerConstruction, TakesAMapOver)
{
    SettingValueMap values{{"A", "a"}};
    ExpectArgumentsAndNothingElse(RedfishConfigSettingManager("no registry at all", std::move(values), true, Options));
}

TEST(SettingManagerConstruction, WithoutValuesDiffersInTheValuesAlone)
{
    const RedfishConfigSettingManager manager("{}", false, Config_Options());
    EXPECT_EQ(manager.m_Schema, "{}");
    EXPECT_TRUE(manager.m_Values.empty());
    EXPECT_FALSE(manager.m_Flag);
    EXPECT_EQ(manager.m_SettingTypeCreators.size(), 5U);
}

TEST(SettingManagerConstruction, EveryTypeWordHasItsCreateFunction)
{
    using Manager = RedfishConfigSettingManager;
    const std::map<std::string, Manager::CreateFunction> expected = {
        {"String", &Manager::createTextSetting},           {"Integer", &Manager::createNumericSetting},
        {"Enumeration", &Manager::createEnumerateSetting}, {"Boolean", &Manager::createBooleanSetting},
        {"Password", &Manager::createPasswordSetting},
    };
    EXPECT_EQ(Manager("", SettingValueMap(), false, Config_Options()).m_SettingTypeCreators, expected);
    EXPECT_EQ(Manager("", false, Config_Options()).m_SettingTypeCreators, expected);
}

TEST(SettingManagerConstruction, OfSettingsThatAnUpdateDoesNotNameOnlyNumbersAreKept)
{
    const SettingValueMap values{{"Flag", true},
                                 {"Named", std::int64_t{1}},
                                 {"None", std::nullopt},
                                 {"Number", std::int64_t{2}},
                                 {"Other", std::int64_t{3}},
                                 {"Text", "a"}};
    RedfishConfigSettingManager manager("{}", values, false, Options);
    manager.UpdateSettingValue({{"Named", std::int64_t{4}}});
    ASSERT_EQ(manager.m_NotTold.size(), 2U);
    EXPECT_EQ(manager.m_NotTold[0].AttributeKey, "Number");
    EXPECT_EQ(manager.m_NotTold[1].AttributeKey, "Other");
}
