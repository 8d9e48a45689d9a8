#include "TextSearch.h"

#include <gtest/gtest.h>

using Tavrine::Tool::TextSearch;

TEST(TextSearch, WordsAreFoundInWhateverCase)
{
    struct Row
    {
        const char* Word;
        bool Regex;
        const char* Text;
        bool Found;
    };
    const Row rows[] = {
        {"numa", false, "Sub-NUMA Clustering", true},
        {"NUMA", false, "numa", true},
        {"a.c", false, "abc", false},
        {"a.c", false, "xA.Cx", true},
        {"(", false, "Intel(R)", true},
        {"ÜBER", false, "über", true},
        {"設定", false, "この設定は", true},
        {"設定", false, "設 定", false},
        {"a.c", true, "ABC", true},
        {"^proc", true, "ProcTurbo", true},
        {"^proc", true, "MyProc", false},
        {"x|turbo$", true, "ProcTurbo", true},
        {"^.$", true, "設", true},
        {"straße", true, "STRAßE", true},
        {"abc", false, "a\xFF abc", true},
        {"abc", false, "", false},
    };
    for (const Row& row : rows)
    {
        const TextSearch search(row.Word, row.Regex);
        EXPECT_EQ(search.Error(), "") << row.Word;
        EXPECT_EQ(search.FoundIn(row.Text), row.Found) << row.Word << " in " << row.Text;
    }
}

TEST(TextSearch, WhatIsNoExpressionIsTold)
{
    for (const char* word : {"(", "[a", "*", "a{2,1}", "\xFF"})
    {
        const TextSearch search(word, true);
        EXPECT_NE(search.Error(), "") << word;
        EXPECT_FALSE(search.FoundIn(word));
    }
    EXPECT_NE(TextSearch("\xFF", false).Error(), "");
}

TEST(TextSearch, AnExpressionThatNeverEndsMatchesNothing)
{
    const TextSearch search("^(a+)+$", true);
    EXPECT_FALSE(search.FoundIn(std::string(64, 'a') + "!"));
    EXPECT_FALSE(TextSearch("(x+x+)+y", true).FoundIn(std::string(100000, 'x')));
}
