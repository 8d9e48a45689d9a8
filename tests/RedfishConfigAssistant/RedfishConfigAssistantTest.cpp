#include "RedfishConfigAssistant.h"

#include <gtest/gtest.h>

#include "TestServer.h"

using Tavrine::RedfishConfigAssistant;

TEST(RedfishConfigAssistant, UpdateErrorReplacesTheList)
{
    RedfishConfigAssistant assistant;
    EXPECT_TRUE(assistant.GetError().empty());
    assistant.UpdateError({{10, "bad", "A"}, {9, "unknown", "B"}});
    ASSERT_EQ(assistant.GetError().size(), 2U);
    EXPECT_EQ(assistant.GetError()[1].ErrorSetting(), "B");
    assistant.UpdateError({{18, "no", "C"}});
    ASSERT_EQ(assistant.GetError().size(), 1U);
    EXPECT_EQ(assistant.GetError()[0].ErrorSetting(), "C");
}

TEST(RedfishConfigAssistant, HasNoWayToSend)
{
    RedfishConfigAssistant assistant;
    assistant.CacheSetContext("A", "1");
    EXPECT_THAT(assistant.FlushChanges("/x"), resttest::HasCode(11));
}
