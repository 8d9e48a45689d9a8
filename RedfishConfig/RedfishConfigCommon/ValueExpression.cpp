#include "ValueExpression.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

namespace Tavrine
{

namespace
{

constexpr std::size_t MaxExpressionBytes = 64 * 1024;
/// Steps of one search, over all places where it starts; the library's own limit
/// counts anew at each place.
constexpr std::uint32_t StepBudget = 4'000'000;
constexpr std::uint32_t LeastSteps = 200;
constexpr std::uint32_t MaxDepth = 20'000;
constexpr std::uint32_t MaxHeapKibibytes = 20 * 1024;

template <auto Free> struct Freed
{
    template <class Held> void operator()(Held* held) const { Free(held); }
};
template <class Held, auto Free> using Owned = std::unique_ptr<Held, Freed<Free>>;

using Code = Owned<pcre2_code, pcre2_code_free>;
using CompileContext = Owned<pcre2_compile_context, pcre2_compile_context_free>;
using MatchContext = Owned<pcre2_match_context, pcre2_match_context_free>;
using MatchData = Owned<pcre2_match_data, pcre2_match_data_free>;

/// Never null, which the library refuses even of no length.
PCRE2_SPTR Units(std::string_view text) { return reinterpret_cast<PCRE2_SPTR>(text.empty() ? "" : text.data()); }

std::string ErrorText(int error)
{
    std::array<PCRE2_UCHAR, 256> text{};
    pcre2_get_error_message(error, text.data(), text.size());
    return reinterpret_cast<const char*>(text.data());
}

Code Compile(std::string_view expression, std::string& trouble)
{
    const CompileContext context(pcre2_compile_context_create(nullptr));
    int error = PCRE2_ERROR_NOMEMORY;
    std::size_t place = 0;
    Code code;
    if (context)
    {
        pcre2_set_max_pattern_length(context.get(), MaxExpressionBytes);
        code.reset(pcre2_compile(Units(expression), expression.size(),
                                 PCRE2_UTF | PCRE2_DOLLAR_ENDONLY | PCRE2_NEVER_BACKSLASH_C, &error, &place,
                                 context.get()));
    }
    if (!code)
    {
        trouble = "it cannot be compiled: " + ErrorText(error);
    }
    return code;
}

std::uint32_t StepsAtOnePlace(const pcre2_code* code, std::size_t length)
{
    std::uint32_t options = 0;
    pcre2_pattern_info(code, PCRE2_INFO_ALLOPTIONS, &options);
    const bool anchored = (options & PCRE2_ANCHORED) != 0;
    const std::size_t places = anchored ? 1 : length + 1;
    return std::max(LeastSteps, static_cast<std::uint32_t>(StepBudget / places));
}

} // namespace

ExpressionOutcome SearchExpression(std::string_view expression, std::string_view text, std::string& trouble)
{
    const Code code = Compile(expression, trouble);
    if (!code)
    {
        return ExpressionOutcome::NotJudged;
    }
    const MatchContext context(pcre2_match_context_create(nullptr));
    const MatchData data(pcre2_match_data_create(1, nullptr));
    int found = PCRE2_ERROR_NOMEMORY;
    if (context && data)
    {
        pcre2_set_match_limit(context.get(), StepsAtOnePlace(code.get(), text.size()));
        pcre2_set_depth_limit(context.get(), MaxDepth);
        pcre2_set_heap_limit(context.get(), MaxHeapKibibytes);
        found = pcre2_match(code.get(), Units(text), text.size(), 0, 0, data.get(), context.get());
    }
    if (found >= 0)
    {
        return ExpressionOutcome::Matches;
    }
    if (found == PCRE2_ERROR_NOMATCH)
    {
        return ExpressionOutcome::Differs;
    }
    trouble = "the search was given up: " + ErrorText(found);
    return ExpressionOutcome::NotJudged;
}

} // namespace Tavrine
