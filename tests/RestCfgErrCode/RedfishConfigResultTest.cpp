#include "RedfishConfigResult.h"

#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace
{

TEST(RedfishConfigResult, KeepsExactlyWhatItIsBuiltFrom)
{
    RedfishConfigResult result(20, "Unable to find the setting X", "X");
    EXPECT_EQ(result.ErrorCode(), 20);
    EXPECT_EQ(result.ErrorMsg(), "Unable to find the setting X");
    EXPECT_EQ(result.ErrorSetting(), "X");
}

TEST(RedfishConfigResult, EmptyMessageStaysEmptyForEveryCode)
{
    for (const int code : {-1, 0, 1, 13, 14, 38, 39})
    {
        RedfishConfigResult result(code, "", "");
        EXPECT_EQ(result.ErrorCode(), code);
        EXPECT_EQ(result.ErrorMsg(), "") << code;
        EXPECT_EQ(result.ErrorSetting(), "") << code;
    }
}

TEST(RedfishConfigResult, ComparesItsCodeAlone)
{
    const RedfishConfigResult result(7, "some members failed", "A");
    EXPECT_TRUE(result == 7);
    EXPECT_FALSE(result == 0);
    EXPECT_TRUE(result != 0);
    EXPECT_FALSE(result != 7);
}

TEST(RedfishConfigResult, StreamsAsItsCode)
{
    std::ostringstream stream;
    stream << RedfishConfigResult(33, "busy", "A");
    EXPECT_EQ(stream.str(), "33");
    const int code = RedfishConfigResult(26, "", "");
    EXPECT_EQ(code, 26);
}

TEST(RedfishConfigResult, AssignmentFromCodeMakesItBare)
{
    RedfishConfigResult result(20, "Unable to find the setting X", "X");
    RedfishConfigResult& returned = (result = 6);
    EXPECT_EQ(&returned, &result);
    EXPECT_EQ(result.ErrorCode(), 6);
    EXPECT_EQ(result.ErrorMsg(), "");
    EXPECT_EQ(result.ErrorSetting(), "");
}

TEST(RedfishConfigResult, SetErrorMsgReplacesTheMessageAlone)
{
    RedfishConfigResult result(14, "first", "X");
    result.SetErrorMsg("second");
    EXPECT_EQ(result.ErrorCode(), 14);
    EXPECT_EQ(result.ErrorMsg(), "second");
    EXPECT_EQ(result.ErrorSetting(), "X");
    result.SetErrorMsg("");
    EXPECT_EQ(result.ErrorMsg(), "");
}

TEST(RedfishConfigResult, CopiesAreIndependent)
{
    RedfishConfigResult first(10, "Setting new value is invalid.", "A");
    RedfishConfigResult copy(first);
    copy.SetErrorMsg("other");
    RedfishConfigResult assigned(0, "", "");
    assigned = first;
    first = 0;
    EXPECT_EQ(copy.ErrorMsg(), "other");
    EXPECT_EQ(assigned.ErrorCode(), 10);
    EXPECT_EQ(assigned.ErrorMsg(), "Setting new value is invalid.");
    EXPECT_EQ(assigned.ErrorSetting(), "A");
}

TEST(RedfishConfigResult, IsCollectedByValueInOrder)
{
    std::vector<RedfishConfigResult> errors;
    for (int i = 0; i < 100; ++i)
    {
        errors.emplace_back(i, "m" + std::to_string(i), "s" + std::to_string(i));
    }
    const std::vector<RedfishConfigResult> copy = errors;
    errors.clear();
    for (int i = 0; i < 100; ++i)
    {
        RedfishConfigResult result = copy[static_cast<std::size_t>(i)];
        EXPECT_EQ(result.ErrorCode(), i);
        EXPECT_EQ(result.ErrorMsg(), "m" + std::to_string(i));
        EXPECT_EQ(result.ErrorSetting(), "s" + std::to_string(i));
    }
}

TEST(RedfishConfigResult, IsNotBuiltFromACodeAlone)
{
    EXPECT_FALSE((std::is_constructible_v<RedfishConfigResult, int>));
    EXPECT_FALSE(std::is_default_constructible_v<RedfishConfigResult>);
    EXPECT_TRUE((std::is_same_v<decltype(std::declval<RedfishConfigResult&>().ErrorMsg()), std::string>));
}

} // namespace
