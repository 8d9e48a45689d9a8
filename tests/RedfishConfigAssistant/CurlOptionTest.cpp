#include "CurlOption.h"

#include <memory>

#include <gtest/gtest.h>

using namespace Tavrine;

namespace
{

using Handle = std::unique_ptr<CURL, decltype(&curl_easy_cleanup)>;

/// No option of any curl.
constexpr auto NoOption = static_cast<CURLoption>(9'999);

} // namespace

TEST(CurlOption, OneThatCurlDoesNotKnowIsRefusedUnlessItIsAWish)
{
    const Handle curl(curl_easy_init(), curl_easy_cleanup);
    ASSERT_NE(curl, nullptr);
    EXPECT_THROW(SetOption(curl.get(), NoOption, 1L), UnusableCurl);
    EXPECT_NO_THROW(WishOption(curl.get(), NoOption, 1L));
}

TEST(CurlOption, AValueThatIsNotTakenIsRefused)
{
    const Handle curl(curl_easy_init(), curl_easy_cleanup);
    ASSERT_NE(curl, nullptr);
    EXPECT_THROW(SetOption(curl.get(), CURLOPT_PORT, 70'000L), UnusableCurl);
    EXPECT_THROW(WishOption(curl.get(), CURLOPT_PORT, 70'000L), UnusableCurl);
    EXPECT_NO_THROW(WishOption(curl.get(), CURLOPT_PORT, 443L));
}
