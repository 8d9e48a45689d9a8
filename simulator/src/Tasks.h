#pragma once

#include "HttpServer.h"

#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace bmcsim
{

/// Answers that are handed over as tasks (DSP0266, "Asynchronous operations"): at
/// first a task that runs, and after some looks at it the answer itself. Safe to use
/// from several threads.
class Tasks
{
  public:
    /// Older ones are forgotten.
    static constexpr std::size_t MaxKept = 256;
    static constexpr const char* TaskCollection = "/redfish/v1/TaskService/Tasks";
    static constexpr const char* MonitorCollection = "/redfish/v1/TaskService/TaskMonitors";

    /// @param looks  how often a task is still running when it is looked at.
    explicit Tasks(unsigned int looks) : m_Looks(looks) {}

    /// @return the answer of status 202 that stands for `result` until later.
    HttpResponse Begin(HttpResponse result);
    /// What the task's monitor answers; empty when there is no such task.
    std::optional<HttpResponse> LookAtMonitor(const std::string& id);
    /// What the task's own resource answers; empty when there is no such task.
    std::optional<HttpResponse> LookAtTask(const std::string& id);
    std::vector<std::string> Ids() const;

  private:
    struct Task
    {
        std::uint64_t Number = 0;
        unsigned int LooksLeft = 0;
        HttpResponse Result;
    };
    /// The task as this look finds it.
    std::optional<Task> Look(const std::string& id);

    const unsigned int m_Looks;
    mutable std::mutex m_Mutex;
    std::uint64_t m_LastNumber = 0;
    std::deque<Task> m_Tasks;
};

} // namespace bmcsim
