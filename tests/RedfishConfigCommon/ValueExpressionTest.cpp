#include "ValueExpression.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using Tavrine::ExpressionOutcome;
using Tavrine::SearchExpression;
using testing::StartsWith;

namespace
{

ExpressionOutcome Search(const std::string& expression, const std::string& text)
{
    std::string trouble;
    const ExpressionOutcome outcome = SearchExpression(expression, text, trouble);
    EXPECT_EQ(trouble.empty(), outcome != ExpressionOutcome::NotJudged) << trouble;
    return outcome;
}

} // namespace

TEST(ValueExpression, IsSearchedInTheText)
{
    const struct
    {
        const char* Expression;
        std::string Text;
        bool Matches;
    } rows[] = {
        {"^[a-z]+$", "abc", true},
        {"^[a-z]+$", "abc1", false},
        {"^[a-z]+$", "abc\n", false},
        {"[0-9]", "abc1def", true},
        {"[0-9]", "abc", false},
        {"^$|^[0-9]{1,3}$", "", true},
        {"^$|^[0-9]{1,3}$", "12", true},
        {"^$|^[0-9]{1,3}$", "1234", false},
        {"^.$", "\xE2\x82\xAC", true},
        {"^.$", "\xE2\x82\xAC\xE2\x82\xAC", false},
        {"^(?:[^a]|\\x00)+$", std::string("b\0c", 3), true},
        {"a\\.b", "a.b", true},
        {"a\\.b", "axb", false},
        {"^\\d+$", "\xD9\xA1", false},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(Search(row.Expression, row.Text),
                  row.Matches ? ExpressionOutcome::Matches : ExpressionOutcome::Differs)
            << row.Expression << " on " << row.Text;
    }
}

TEST(ValueExpression, ThatDoesNotCompileIsNotJudged)
{
    for (const std::string expression :
         {"(", "[a-", "*", "a{2,1}", "(?<=a*)b", "\\C", "\\", "\xFF", "(?1)", "(?P<a", "(?<n>a)(?<n>b)"})
    {
        std::string trouble;
        EXPECT_EQ(SearchExpression(expression, "text", trouble), ExpressionOutcome::NotJudged) << expression;
        EXPECT_THAT(trouble, StartsWith("it cannot be compiled: ")) << expression;
    }
    std::string trouble;
    EXPECT_EQ(SearchExpression(std::string(64 * 1024 + 1, 'a'), "a", trouble), ExpressionOutcome::NotJudged);
    EXPECT_EQ(SearchExpression(std::string(20'000, '(') + "a" + std::string(20'000, ')'), "a", trouble),
              ExpressionOutcome::NotJudged);
}

TEST(ValueExpression, NothingIsFoundInNothing)
{
    std::string trouble;
    EXPECT_EQ(SearchExpression({}, {}, trouble), ExpressionOutcome::Matches);
    EXPECT_EQ(SearchExpression("a", {}, trouble), ExpressionOutcome::Differs);
    EXPECT_EQ(trouble, "");
}

/// Each of these runs for hours without limits: that the test ends is the point.
TEST(ValueExpression, ThatBacktracksWithoutEndIsGivenUp)
{
    const std::string long_ = std::string(50'000, 'a') + "b";
    for (const char* expression : {"(a+)+$", "^(a+)+$", "^(a|a)*$", "^(([a-z])+.)+[A-Z]([a-z])+$|^(a*)*$",
                                   "^(a?){50}a{50}(a+)*$", "(?:a+){2,}(?:a+){2,}$"})
    {
        std::string trouble;
        EXPECT_EQ(SearchExpression(expression, long_, trouble), ExpressionOutcome::NotJudged) << expression;
        EXPECT_THAT(trouble, StartsWith("the search was given up: ")) << expression;
    }
}

TEST(ValueExpression, RecursionWithoutEndIsGivenUp)
{
    std::string trouble;
    EXPECT_EQ(SearchExpression("^(a(?1)?b|a(?1)*)+$", std::string(50'000, 'a') + "c", trouble),
              ExpressionOutcome::NotJudged);
    EXPECT_THAT(trouble, StartsWith("the search was given up: "));
}
