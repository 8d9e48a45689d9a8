// Value expressions of registries: every search ends, says why where it cannot judge, and
// is right where another way to tell exists.
#include "ValueExpression.h"

#include <algorithm>

#include "Oracle.h"

using namespace fuzztest;
using namespace Tavrine;

namespace
{

bool IsLiteral(std::string_view text)
{
    return std::all_of(text.begin(), text.end(),
                       [](char c)
                       { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); });
}

ExpressionOutcome Search(std::string_view expression, std::string_view text)
{
    std::string trouble;
    const ExpressionOutcome outcome = SearchExpression(expression, text, trouble);
    FUZZ_REQUIRE((outcome == ExpressionOutcome::NotJudged) == !trouble.empty(), expression);
    FUZZ_REQUIRE(OnOneLine(trouble), trouble);
    return outcome;
}

ExpressionOutcome Told(bool matches) { return matches ? ExpressionOutcome::Matches : ExpressionOutcome::Differs; }

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::vector<std::string_view> parts = Parts(Text(data, size), 2);
    const std::string_view expression = parts[0];
    const std::string_view text = parts[1];
    const ExpressionOutcome outcome = Search(expression, text);
    FUZZ_REQUIRE(Search(expression, text) == outcome, expression);
    FUZZ_REQUIRE(IsUtf8(expression) || outcome == ExpressionOutcome::NotJudged, expression);
    if (IsLiteral(expression) && IsUtf8(text))
    {
        const std::string literal(expression);
        FUZZ_REQUIRE(outcome == Told(text.find(literal) != std::string_view::npos), expression);
        FUZZ_REQUIRE(Search("^" + literal + "$", text) == Told(text == literal), expression);
        FUZZ_REQUIRE(Search("^" + literal, text) == Told(text.starts_with(literal)), expression);
        FUZZ_REQUIRE(Search(literal + "$", text) == Told(text.ends_with(literal)), expression);
    }
    return 0;
}
