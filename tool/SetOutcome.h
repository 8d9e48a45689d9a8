#pragma once

#include <optional>

#include "Answer.h"
#include "SetPlan.h"

namespace Tavrine::Tool
{

struct Options;

/// Puts what became of each setting into an answer: the good news as text or data, the
/// others as failures, those first of which least is known. Values of passwords occur
/// nowhere in it.
/// @param failure  what failed beyond single settings.
Answer AnswerOf(const SetPlan& plan, const std::optional<Failure>& failure, const Options& options);

/// The same for `--dry-run`: the bodies that would be sent, a line each, or in data
/// the member "bodies".
Answer DryRunAnswerOf(const SetPlan& plan, const Options& options);

} // namespace Tavrine::Tool
