#include "AnswerMessages.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Tavrine;
using testing::ElementsAre;

namespace
{

/// One message with these elements in two of its lists.
std::string Message(const std::string& arguments, const std::string& related, const std::string& id = "Oem.1.0.Odd")
{
    return R"({"MessageId":")" + id + R"(","MessageArgs":[)" + arguments + R"(],"RelatedProperties":[)" + related +
           "]}";
}

std::string Answer(const std::string& messages) { return R"({"@Message.ExtendedInfo":[)" + messages + "]}"; }

/// The numbers from one up to another as texts behind a prefix.
std::string Numbers(const std::string& prefix, std::size_t first, std::size_t end)
{
    std::string numbers;
    for (std::size_t i = first; i < end; ++i)
    {
        numbers += (i == first ? "\"" : ",\"") + prefix + std::to_string(i) + "\"";
    }
    return numbers;
}

} // namespace

TEST(AnswerMessages, ArgumentsAndIdsAreTakenUpToTheLimits)
{
    const MessageList list =
        ReadMessages(Answer(Message(Numbers("", 0, 21), "", "Oem.1.0." + std::string(300, 'x'))), true);
    ASSERT_EQ(list.Messages.size(), 1U);
    EXPECT_EQ(list.Messages[0].Arguments.size(), 20U);
    EXPECT_LE(list.Messages[0].Id.size(), 256U + 3U);
    EXPECT_LT(list.Messages[0].Id.size(), 300U);
    EXPECT_EQ(list.Unread, "");
}

TEST(AnswerMessages, SettingsAreTakenUpToTheLimit)
{
    const std::string half = Message("", Numbers("/Attributes/S", 0, 2500));
    const MessageList all = ReadMessages(Answer(half + "," + Message("", Numbers("/Attributes/S", 2500, 5000))), true);
    ASSERT_EQ(all.Messages.size(), 2U);
    EXPECT_EQ(all.Messages[0].Settings.size(), 2500U);
    EXPECT_EQ(all.Messages[1].Settings.back(), "S4999");
    EXPECT_EQ(all.Unread, "");

    const MessageList cut = ReadMessages(Answer(half + "," + Message("", Numbers("/Attributes/S", 2500, 5001))), true);
    ASSERT_EQ(cut.Messages.size(), 2U);
    EXPECT_EQ(cut.Messages[1].Settings.size(), 2500U);
    EXPECT_EQ(cut.Unread, "full of names");
    const MessageList behind =
        ReadMessages(Answer(Message("", Numbers("/Attributes/S", 0, 5001)) + "," +
                            R"({"MessageId":"Base.1.8.PropertyNotWritable","Message":"Locked.","RelatedProperties":[]})"),
                     true);
    ASSERT_EQ(behind.Messages.size(), 2U);
    EXPECT_EQ(behind.Messages[0].Settings.size(), 5000U);
    EXPECT_EQ(behind.Messages[1].Text, "Locked.");
}

TEST(AnswerMessages, WhatIsNoPointerNamesNoSetting)
{
    const MessageList list = ReadMessages(
        Answer(
            Message(R"(null,7,{},"\"Lit\"")",
                    R"(null,7,{},{"@odata.id":"/Attributes/C"},"","/Attributes/B","#/Attributes/A","/Attributes/B")")),
        true);
    ASSERT_EQ(list.Messages.size(), 1U);
    EXPECT_THAT(list.Messages[0].Settings, ElementsAre("B", "A"));
    EXPECT_THAT(list.Messages[0].Arguments, ElementsAre("null", "7", "{}", "Lit"));
}
