#include "Tasks.h"

#include "Answers.h"
#include "JsonFile.h"

#include <algorithm>
#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <fmt/format.h>

namespace bmcsim
{
namespace
{

namespace json = boost::json;

/// The messages of an answer, wherever it carries them.
json::array MessagesOf(const HttpResponse& answer)
{
    const auto body = ParseBody(answer.Body);
    const json::object* document = body ? body->if_object() : nullptr;
    const json::object* error = document != nullptr ? FindObject(*document, "error") : nullptr;
    document = error != nullptr ? error : document;
    const json::array* messages = document != nullptr ? FindArray(*document, "@Message.ExtendedInfo") : nullptr;
    return messages != nullptr ? *messages : json::array();
}

json::object Describe(std::uint64_t number, bool running, const HttpResponse& result)
{
    const bool failed = result.Status >= 400;
    return {
        {"@odata.id", fmt::format("{}/{}", Tasks::TaskCollection, number)},
        {"@odata.type", "#Task.v1_7_0.Task"},
        {"Id", std::to_string(number)},
        {"Name", fmt::format("Task {}", number)},
        {"TaskMonitor", fmt::format("{}/{}", Tasks::MonitorCollection, number)},
        {"TaskState", running  ? "Running"
                      : failed ? "Exception"
                               : "Completed"},
        {"TaskStatus", !running && failed ? "Critical" : "OK"},
        {"Messages", running ? json::array() : MessagesOf(result)},
    };
}

HttpResponse RunningAnswer(std::uint64_t number, const HttpResponse& result)
{
    HttpResponse response = JsonAnswer(202, Describe(number, true, result));
    response.Headers["Location"] = fmt::format("{}/{}", Tasks::MonitorCollection, number);
    return response;
}

} // namespace

HttpResponse Tasks::Begin(HttpResponse result)
{
    const std::lock_guard lock(m_Mutex);
    ++m_LastNumber;
    HttpResponse running = RunningAnswer(m_LastNumber, result);
    m_Tasks.push_back({m_LastNumber, m_Looks, std::move(result)});
    if (m_Tasks.size() > MaxKept)
    {
        m_Tasks.pop_front();
    }
    return running;
}

std::optional<Tasks::Task> Tasks::Look(const std::string& id)
{
    const std::lock_guard lock(m_Mutex);
    const auto found = std::find_if(m_Tasks.begin(), m_Tasks.end(),
                                    [&id](const Task& task) { return std::to_string(task.Number) == id; });
    if (found == m_Tasks.end())
    {
        return std::nullopt;
    }
    const Task seen = *found;
    found->LooksLeft -= std::min(found->LooksLeft, 1U);
    return seen;
}

std::optional<HttpResponse> Tasks::LookAtMonitor(const std::string& id)
{
    const auto task = Look(id);
    if (!task)
    {
        return std::nullopt;
    }
    return task->LooksLeft > 0 ? RunningAnswer(task->Number, task->Result) : task->Result;
}

std::optional<HttpResponse> Tasks::LookAtTask(const std::string& id)
{
    const auto task = Look(id);
    return task ? std::optional(JsonAnswer(200, Describe(task->Number, task->LooksLeft > 0, task->Result)))
                : std::nullopt;
}

std::vector<std::string> Tasks::Ids() const
{
    const std::lock_guard lock(m_Mutex);
    std::vector<std::string> ids;
    for (const Task& task : m_Tasks)
    {
        ids.push_back(std::to_string(task.Number));
    }
    return ids;
}

} // namespace bmcsim
