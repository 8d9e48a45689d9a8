#pragma once

#include <string>
#include <string_view>

namespace Tavrine
{

enum class ExpressionOutcome
{
    Matches,
    Differs,
    /// The expression does not compile, or ran into its limits.
    NotJudged,
};

/// Searches `text` (UTF-8) for a registry's value expression (DSP8010,
/// "ValueExpression"). Registries anchor their expressions themselves; "$" is the
/// very end alone. Limits of steps, depth and memory make every search end.
/// @param trouble  filled with the cause of NotJudged.
ExpressionOutcome SearchExpression(std::string_view expression, std::string_view text, std::string& trouble);

} // namespace Tavrine
