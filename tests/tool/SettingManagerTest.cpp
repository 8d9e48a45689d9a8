#include "SettingManager.h"

#include <gtest/gtest.h>

#include "KnowingFront.h"
#include "SmallRegistry.h"

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
