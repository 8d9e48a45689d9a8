#include "ExactInteger.h"

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

using namespace Tavrine;

TEST(ExactInteger, OrdersOverTheWholeRange)
{
    const std::vector<std::string> rising = {
        "-9223372036854775808", "-9223372036854775807", "-1", "0", "1", "9223372036854775807",
        "9223372036854775808",  "18446744073709551615"};
    for (std::size_t left = 0; left < rising.size(); ++left)
    {
        for (std::size_t right = 0; right < rising.size(); ++right)
        {
            EXPECT_EQ(*ParseExact(rising[left], 10) < *ParseExact(rising[right], 10), left < right)
                << rising[left] << " < " << rising[right];
        }
    }
}

TEST(ExactInteger, ZeroIsNeverNegative) { EXPECT_EQ(*ParseExact("-0", 10), ExactFrom(0)); }

TEST(ExactInteger, RefusesWhatIsNoIntegerOfTheRange)
{
    for (const char* text : {"", "-", "+1", " 1", "1 ", "--1", "-+1", "a", "18446744073709551616",
                             "-9223372036854775809", "99999999999999999999999999"})
    {
        EXPECT_FALSE(ParseExact(text, 10)) << text;
    }
}

TEST(ExactInteger, NarrowsToTheNearestSignedNumber)
{
    constexpr auto highest = std::numeric_limits<std::int64_t>::max();
    constexpr auto lowest = std::numeric_limits<std::int64_t>::min();
    EXPECT_EQ(Narrowed(ExactFromUnsigned(std::uint64_t{1} << 63)), highest);
    EXPECT_EQ(Narrowed(ExactFromUnsigned(std::numeric_limits<std::uint64_t>::max())), highest);
    EXPECT_EQ(Narrowed(ExactFrom(lowest)), lowest);
    EXPECT_FALSE(FitsSigned(ExactFromUnsigned(std::uint64_t{1} << 63)));
    EXPECT_TRUE(FitsSigned(ExactFrom(lowest)));
}

RC_GTEST_PROP(ExactIntegerProperty, TextAndNarrowingSurviveTheRoundTrip, (std::int64_t number))
{
    const ExactInteger exact = ExactFrom(number);
    RC_ASSERT(ExactText(exact, 10) == std::to_string(number));
    RC_ASSERT(*ParseExact(ExactText(exact, 16), 16) == exact);
    RC_ASSERT(Narrowed(exact) == number);
}

RC_GTEST_PROP(ExactIntegerProperty, OrderIsThatOfTheNumbers, (std::int64_t left, std::int64_t right))
{
    RC_ASSERT((ExactFrom(left) < ExactFrom(right)) == (left < right));
    RC_ASSERT((ExactFrom(left) == ExactFrom(right)) == (left == right));
}
