#pragma once

#include <optional>

#include "Answer.h"
#include "SetPlan.h"

namespace Tavrine::Tool
{

struct Options;

/// A failure as it may be shown: without the values of settings that are shown nowhere, which
/// the BMC was sent and may repeat.
/// @param subject  the setting that it is about; null for the whole call.
Failure WithoutPasswords(const SetPlan& plan, const SetSetting* subject, Failure failure);

/// Puts what became of each setting into an answer: the good news as text or data, the
/// others as failures, those first of which least is known. Values of passwords occur
/// nowhere in it.
/// @param failure  what failed beyond single settings.
Answer AnswerOf(const SetPlan& plan, const std::optional<Failure>& failure, const Options& options);

/// The same for `--dry-run`: the bodies that would be sent, a line each, or in data
/// the member "bodies".
Answer DryRunAnswerOf(const SetPlan& plan, const Options& options);

} // namespace Tavrine::Tool
