#include "CodePoints.h"

#include <optional>
#include <string>

#include <gtest/gtest.h>

using Tavrine::CodePoints;

TEST(CodePoints, CountsCodePointsNotBytes)
{
    const struct
    {
        std::string Text;
        std::size_t Count;
    } rows[] = {
        {"", 0},
        {"abc", 3},
        {std::string(1, '\0'), 1},
        {"\x7F", 1},
        {"\xC2\x80", 1},
        {"\xDF\xBF", 1},
        {"\xE0\xA0\x80", 1},
        {"\xED\x9F\xBF", 1},
        {"\xEE\x80\x80", 1},
        {"\xF0\x90\x80\x80", 1},
        {"\xF4\x8F\xBF\xBF", 1},
        {"a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z", 5},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(CodePoints(row.Text), row.Count) << row.Text;
    }
}

TEST(CodePoints, RefusesWhatIsNoUtf8)
{
    const std::string rows[] = {
        "\x80",
        "\xBF",
        "\xC0\x80",
        "\xC1\xBF",
        "\xE0\x80\x80",
        "\xE0\x9F\xBF",
        "\xED\xA0\x80",
        "\xED\xBF\xBF",
        "\xF0\x80\x80\x80",
        "\xF0\x8F\xBF\xBF",
        "\xF4\x90\x80\x80",
        "\xF5\x80\x80\x80",
        "\xF8\x88\x80\x80",
        "\xFE",
        "\xFF",
        "\xC3",
        "\xE2\x82",
        "\xF0\x9F\x98",
        "ab\xC3",
        "\xC3(",
        "\xE2\x28\xA1",
    };
    for (const std::string& row : rows)
    {
        EXPECT_EQ(CodePoints(row), std::nullopt) << testing::PrintToString(row);
    }
}
