#include "TextSearch.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

using Tavrine::Tool::Occurrence;
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
        EXPECT_EQ(search.LookIn(row.Text), row.Found ? Occurrence::Found : Occurrence::None)
            << row.Word << " in " << row.Text;
    }
}

TEST(TextSearch, WhatIsNoExpressionIsTold)
{
    for (const char* word : {"(", "[a", "*", "a{2,1}", "\xFF"})
    {
        const TextSearch search(word, true);
        EXPECT_NE(search.Error(), "") << word;
        EXPECT_EQ(search.LookIn(word), Occurrence::None);
    }
    EXPECT_NE(TextSearch("\xFF", false).Error(), "");
}

/// All of these texts match in the end.
TEST(TextSearch, AnExpressionIsGivenUpWhereItTakesTooManySteps)
{
    const TextSearch search("^(?:(a+)+b|a*!)$", true);
    for (const auto& [length, occurrence] : {std::pair{10, Occurrence::Found},
                                             {30, Occurrence::GivenUp},
                                             {64, Occurrence::GivenUp},
                                             {9, Occurrence::Found}})
    {
        EXPECT_EQ(search.LookIn(std::string(static_cast<std::size_t>(length), 'a') + "!"), occurrence) << length;
    }
}

TEST(TextSearch, StepsCountOverAllPlacesOfAText)
{
    const TextSearch search("x.*[#!]", true);
    EXPECT_EQ(search.LookIn(std::string(300, 'x')), Occurrence::None);
    EXPECT_EQ(search.LookIn(std::string(5000, 'x')), Occurrence::GivenUp);
}

TEST(TextSearch, AnExpressionIsGivenUpWhereItTakesTooMuchMemory)
{
    const TextSearch search("^(?:a|b)*c", true);
    EXPECT_EQ(search.LookIn(std::string(10'000, 'a') + "c"), Occurrence::Found);
    EXPECT_EQ(search.LookIn(std::string(400'000, 'a') + "c"), Occurrence::GivenUp);
}
