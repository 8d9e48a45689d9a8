#include "AnswerMessages.h"

#include <gtest/gtest.h>

using namespace Tavrine;

TEST(AnswerMessages, ArgumentsAndNamesAreTakenUpToTheLimits)
{
    std::string arguments;
    std::string settings;
    for (int i = 0; i < 21; ++i)
    {
        arguments += (i == 0 ? "\"" : ",\"") + std::to_string(i) + "\"";
        settings += (i == 0 ? "\"" : ",\"") + ("/Attributes/S" + std::to_string(i)) + "\"";
    }
    const MessageList list =
        ReadMessages(R"({"@Message.ExtendedInfo":[{"MessageId":"Oem.1.0.)" + std::string(300, 'x') +
                         R"(","MessageArgs":[)" + arguments + R"(],"RelatedProperties":[)" + settings + "]}]}",
                     true);
    ASSERT_EQ(list.Messages.size(), 1U);
    EXPECT_EQ(list.Messages[0].Arguments.size(), 20U);
    EXPECT_EQ(list.Messages[0].Settings.size(), 20U);
    EXPECT_LE(list.Messages[0].Id.size(), 256U + 3U);
    EXPECT_LT(list.Messages[0].Id.size(), 300U);
}
