#include "Examples.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using docs::Example;

TEST(Examples, AreTheCommandsOfFencedBlocksThatBeginWithAPrompt)
{
    const std::vector<Example> examples = docs::ExamplesOf("$ no example\n```\n$ a b\none\n\ntwo\n$ c\n```\nafter\n"
                                                           "```\nplain\n$ no command\n```\n```\n$ d\n");
    ASSERT_EQ(examples.size(), 3U);
    EXPECT_EQ(examples[0].Line, 3U);
    EXPECT_EQ(examples[0].Command, "a b");
    EXPECT_EQ(examples[0].Output, "one\n\ntwo\n");
    EXPECT_EQ(examples[1].Command, "c");
    EXPECT_EQ(examples[1].Output, "");
    EXPECT_EQ(examples[2].Line, 15U);
}

TEST(Examples, BlocksOfALanguageKeepTheirText)
{
    EXPECT_EQ(docs::BlocksOf("```cpp\nint a;\n\n  int b;\n```\n```\nx\n```\n```cpp\n```\n", "cpp"),
              (std::vector<std::string>{"int a;\n\n  int b;\n", ""}));
}

TEST(Examples, OnlyTimesAreMadeEqual)
{
    EXPECT_EQ(docs::Normalised("at 2026-01-02T03:04:05Z, 2026-01-02T03:04:05.5+01:00, 2026-01-02\n"),
              "at TIME, TIME, 2026-01-02\n");
}
