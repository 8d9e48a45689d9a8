#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "Http.h"
#include "RequestTarget.h"

namespace Tavrine
{

/// What is needed to watch a task (DSP0266, "Asynchronous operations").
struct TaskWatch
{
    const Origin& Place;
    /// Path of the request that was answered with 202.
    std::string_view Path;
    std::chrono::steady_clock::time_point Begun;
    std::chrono::steady_clock::time_point Deadline;
    /// Sends one GET along the connection; `path` has been checked.
    std::function<Exchange(const std::string& path, std::chrono::seconds timeout)> Read;
};

/// How a change ended that the BMC took as a task.
struct TaskEnd
{
    /// The answer that stands for the whole change.
    HttpAnswer Answer;
    /// It is the text of a task that has ended, whose messages tell how things were while it ran.
    bool IsTask = false;
    /// The state of a task that ended badly; empty for one that ended well.
    std::string FailedState;
    /// Why the outcome is not known, as the end of a sentence that begins with "the BMC
    /// accepted PATCH /x "; empty when it is known.
    std::string Doubt;
};

/// Watches the task that `accepted`, an answer with status 202, names until it ends or
/// waits for a reset, the deadline is over, or an abort is raised. The place to watch
/// is the task monitor of "Location", or else "TaskMonitor" or the task itself in the
/// body; one that leads away from the BMC is not asked. Between two looks it waits as
/// PauseBeforeLook says.
/// @return nothing when `accepted` names no task.
std::optional<TaskEnd> FollowTask(const HttpAnswer& accepted, const TaskWatch& watch);

/// How long to wait before the look number `look`, counted from 0: what the BMC asked
/// for, half a minute at the most; else 0.2 s, doubled each time up to 5 s.
std::chrono::milliseconds PauseBeforeLook(unsigned int look, std::optional<std::uint32_t> retryAfter);

} // namespace Tavrine
