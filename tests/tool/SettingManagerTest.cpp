#include "SettingManager.h"

#include <gtest/gtest.h>

#include "BiosRedfishConfigProc.h"
#include "KnowingFront.h"
#include "SmallRegistry.h"
#include "TemporaryFolder.h"

using namespace Tavrine::Tool;

TEST(SettingManager, AnObjectThatIsNoneOfTheLibrarysSharesNoRegistry)
{
    tooltest::KnowingFront front;
    front.Registry = {{0, "", ""}, tooltest::SmallRegistry};
    std::unique_ptr<RedfishConfigSettingManager> manager;
    RedfishConfigResult result = ReadSettingManager(front, manager);
    EXPECT_EQ(result.ErrorCode(), 13);
    EXPECT_NE(result.ErrorMsg(), "");
    EXPECT_EQ(manager, nullptr);
    EXPECT_TRUE(front.Asked.empty());
}

TEST(SettingManager, WhatIsWrongWithARegistryIsToldWithoutReadingAnythingElse)
{
    const testdata::TemporaryFolder folder;
    Tavrine::BiosRedfishConfigProc front({}, Tavrine::SystemTypeBios, {});
    front.SetDebugConfigFile(folder.Write("debug.json", R"({"schema":{"Id":"x"},"resource":{"Attributes":{"A":1}}})"));
    Tavrine::SettingStringMap none;
    RedfishConfigResult told = front.QuerySettingValue("A", none);
    for (const Tavrine::ManagerValues wanted :
         {Tavrine::ManagerValues::None, Tavrine::ManagerValues::Ordinary, Tavrine::ManagerValues::All})
    {
        std::unique_ptr<RedfishConfigSettingManager> manager;
        RedfishConfigResult result = ReadSettingManager(front, manager, wanted);
        EXPECT_EQ(result.ErrorCode(), 27);
        EXPECT_NE(result.ErrorMsg(), "");
        EXPECT_EQ(result.ErrorMsg(), told.ErrorMsg());
        EXPECT_EQ(manager, nullptr);
    }
    EXPECT_EQ(front.m_Options.OutputFormat, 0);
}
