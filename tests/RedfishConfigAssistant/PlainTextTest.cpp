#include "PlainText.h"

#include <gtest/gtest.h>

using namespace Tavrine;

TEST(PlainText, CleanTextMakesOneLine)
{
    EXPECT_EQ(CleanText("  a\r\nb\tc\x7f"), "a  b c");
    EXPECT_EQ(CleanText("\n\n"), "");
    EXPECT_EQ(CleanText(""), "");
    EXPECT_EQ(CleanText(std::string_view("a\0b", 3)), "a b");
}

TEST(PlainText, CleanTextCutsBetweenCharacters)
{
    EXPECT_EQ(CleanText("abcd", 4), "abcd");
    EXPECT_EQ(CleanText("abcde", 4), "abcd...");
    EXPECT_EQ(CleanText("abc\xc3\xa4", 4), "abc..."); // the last letter has two bytes
    EXPECT_EQ(CleanText("abc\xc3\xa4", 5), "abc\xc3\xa4");
}

TEST(PlainText, JsonStringsAreEscaped)
{
    std::string text = "x";
    AppendJsonString(text, std::string_view("a\"b\\c\n\0d\xc3\xa4", 10));
    EXPECT_EQ(text, "x\"a\\\"b\\\\c\\u000a\\u0000d\xc3\xa4\"");
}

TEST(PlainText, WipeEmptiesAndOverwritesTheBuffer)
{
    std::string secret(100, 'p');
    const char* const buffer = secret.data();
    Wipe(secret);
    EXPECT_TRUE(secret.empty());
    ASSERT_EQ(secret.data(), buffer); // the same memory, so that it may be looked at
    secret.resize(secret.capacity(), 'x');
    EXPECT_EQ(secret.find('p'), std::string::npos);
}
