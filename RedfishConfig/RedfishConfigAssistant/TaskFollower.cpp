#include "TaskFollower.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <utility>
#include <vector>

#include <boost/json/value.hpp>
#include <fmt/format.h>

#include "AbortFlag.h"
#include "AnswerResults.h"
#include "JsonParts.h"
#include "JsonText.h"
#include "Log.h"
#include "PlainText.h"

namespace Tavrine
{

namespace
{

namespace json = boost::json;
using std::chrono::milliseconds;
using std::chrono::seconds;
using Clock = std::chrono::steady_clock;

constexpr milliseconds FirstPause{200};
constexpr milliseconds LongestPause{5'000};
constexpr std::uint32_t LongestRetryAfter = 30;
constexpr std::size_t MaxPathBytes = 300;
/// Looks in a row without an answer: a service may start anew under a change.
constexpr unsigned int MaxFaults = 3;

enum class Progress
{
    /// Not the text of a task.
    NoTask,
    Working,
    /// It may wait for something that this request will not see.
    Waiting,
    Done,
    Failed,
};

struct StateWord
{
    std::string_view Word;
    Progress Meaning;
};

/// "TaskState" (DSP2046, Task) and "JobState" (Job) with the words that services add;
/// all others are states of a task at work.
constexpr StateWord stateWords[] = {
    {"Completed", Progress::Done},
    {"Service", Progress::Done},
    {"Exception", Progress::Failed},
    {"Killed", Progress::Failed},
    {"Cancelled", Progress::Failed},
    {"Failed", Progress::Failed},
    {"CompletedWithErrors", Progress::Failed},
    {"Pending", Progress::Waiting},
    {"Suspended", Progress::Waiting},
    {"Scheduled", Progress::Waiting},
};

struct TaskView
{
    Progress State = Progress::NoTask;
    /// Why it cannot be told, going on from "it is"; empty where it can.
    std::string Unread;
    /// The BMC's word for the state.
    std::string Word;
    std::string Monitor;
    std::string Self;
};

std::string_view FirstText(const json::value& document, std::string_view name, std::string_view otherName)
{
    const std::string_view text = TextMember(&document, name);
    return text.empty() ? TextMember(&document, otherName) : text;
}

Progress MeaningOf(std::string_view word)
{
    const auto* const found = std::find_if(std::begin(stateWords), std::end(stateWords),
                                           [word](const StateWord& entry) { return entry.Word == word; });
    return found == std::end(stateWords) ? Progress::Working : found->Meaning;
}

/// What of an answer can tell of a task: its messages and what services add can be long.
Keep TaskParts(std::string_view parent, std::string_view name)
{
    constexpr std::array<std::string_view, 7> names = {"@odata.id",  "@odata.type", "TaskMonitor", "TaskState",
                                                       "TaskStatus", "JobState",    "JobStatus"};
    return parent.empty() && std::find(names.begin(), names.end(), name) != names.end() ? Keep::All : Keep::Nothing;
}

TaskView LookAtTask(std::string_view body)
{
    TaskView view;
    JsonParts parts = ParseParts(body, TaskParts);
    const auto& document = parts.Document;
    view.Unread = std::move(parts.Fault);
    if (!document || !view.Unread.empty())
    {
        return view;
    }
    const std::string_view type = TextMember(&*document, "@odata.type");
    const std::string_view word = FirstText(*document, "TaskState", "JobState");
    view.Monitor = TextMember(&*document, "TaskMonitor");
    if (word.empty() && view.Monitor.empty() && type.rfind("#Task.", 0) != 0 && type.rfind("#Job.", 0) != 0)
    {
        return view;
    }
    view.State = MeaningOf(word);
    view.Word = CleanText(word, 100);
    view.Self = TextMember(&*document, "@odata.id");
    if (view.State == Progress::Done && FirstText(*document, "TaskStatus", "JobStatus") == "Critical")
    {
        view.State = Progress::Failed;
        view.Word += ", Critical";
    }
    return view;
}

bool HasEnded(const TaskView& view) { return view.State == Progress::Done || view.State == Progress::Failed; }

/// The answer that a task's own text stands for.
TaskEnd EndOf(const TaskView& view, const HttpAnswer& answer)
{
    TaskEnd end;
    end.Answer = answer;
    end.Answer.Status = 200;
    end.IsTask = HasEnded(view);
    end.FailedState = view.State == Progress::Failed ? view.Word : std::string();
    return end;
}

TaskEnd DoubtfulEnd(std::string doubt)
{
    TaskEnd end;
    end.Doubt = std::move(doubt);
    return end;
}

/// One task from its first answer to its end.
class Follower
{
  public:
    Follower(const TaskWatch& watch, std::vector<std::string> paths) : m_Watch(watch), m_Paths(std::move(paths)) {}

    TaskEnd Run(const HttpAnswer& accepted)
    {
        m_RetryAfter = RetryAfterSeconds(accepted);
        for (unsigned int look = 0;; ++look)
        {
            const auto left = std::chrono::ceil<milliseconds>(m_Watch.Deadline - Clock::now());
            if (left.count() <= 0)
            {
                return TimeOut();
            }
            if (!AbortFlag::Pause(std::min(PauseBeforeLook(look, m_RetryAfter), left)))
            {
                return Doubtful("but the wait for its end was aborted");
            }
            if (auto end = Look())
            {
                return *end;
            }
        }
    }

  private:
    const std::string& Path() const { return m_Paths[m_At]; }

    TaskEnd Doubtful(const std::string& why) const
    {
        return DoubtfulEnd(fmt::format("as task {}, {}", CleanText(Path(), MaxPathBytes), why));
    }

    TaskEnd TimeOut() const
    {
        const auto waited = std::chrono::round<seconds>(m_Watch.Deadline - m_Watch.Begun).count();
        const std::string trouble = m_Trouble.empty() ? "" : fmt::format(" ({})", m_Trouble);
        return DoubtfulEnd(fmt::format("and still works on it{} after {} s: task {}", trouble, waited,
                                       CleanText(Path(), MaxPathBytes)));
    }

    /// One look at the task; nothing when another one is due.
    std::optional<TaskEnd> Look()
    {
        const auto left = std::chrono::ceil<seconds>(m_Watch.Deadline - Clock::now());
        const Exchange exchange = m_Watch.Read(Path(), std::max(left, seconds(1)));
        m_RetryAfter.reset();
        if (exchange.Fault)
        {
            m_Trouble = exchange.Fault->Text;
            const int code = exchange.Fault->Code;
            m_Faults += code == 33 ? 0 : 1; // a service that has started anew lets nobody in for a while
            const bool passes = code == 24 || code == 32 || code == 33;
            const bool final = !passes || m_Faults == MaxFaults;
            return final ? std::optional(Doubtful("but it cannot be watched any more: " + m_Trouble)) : std::nullopt;
        }
        m_Faults = 0;
        return Weigh(exchange.Answer);
    }

    std::optional<TaskEnd> Weigh(const HttpAnswer& answer)
    {
        m_RetryAfter = RetryAfterSeconds(answer);
        const TaskView view = answer.Success() ? LookAtTask(answer.Body) : TaskView();
        // What a task that has ended tells of a busy service was so while it ran.
        if (!HasEnded(view) && IsBusy(answer))
        {
            m_Trouble = "the BMC is not ready";
            return std::nullopt;
        }
        if (answer.Status == 404 || answer.Status == 410)
        {
            // A monitor may go as soon as its task has ended, while the task is kept.
            return ++m_At < m_Paths.size() ? Look() : Gone(answer);
        }
        if (answer.Status == 401 || answer.Status == 403 || (answer.Status >= 300 && answer.Status < 400))
        {
            return Doubtful("but it cannot be watched, it is answered with " + StatusText(answer.Status));
        }
        if (!view.Unread.empty())
        {
            return Doubtful("but its text is " + view.Unread);
        }
        m_Trouble = view.Word;
        if (HasEnded(view) || (view.State == Progress::Waiting && AsksForReset(answer)))
        {
            return EndOf(view, answer);
        }
        const bool working = answer.Status == 202 || view.State != Progress::NoTask;
        return working ? std::nullopt : std::optional(TaskEnd{answer, false, {}, {}});
    }

    TaskEnd Gone(const HttpAnswer& answer)
    {
        m_At = m_Paths.size() - 1;
        return Doubtful("which is gone without a word of its end (" + StatusText(answer.Status) + ")");
    }

    const TaskWatch& m_Watch;
    std::vector<std::string> m_Paths;
    std::size_t m_At = 0;
    unsigned int m_Faults = 0;
    std::optional<std::uint32_t> m_RetryAfter;
    /// What the last look showed.
    std::string m_Trouble;
};

} // namespace

milliseconds PauseBeforeLook(unsigned int look, std::optional<std::uint32_t> retryAfter)
{
    if (retryAfter && *retryAfter > 0)
    {
        return seconds(std::min(*retryAfter, LongestRetryAfter));
    }
    return std::min(FirstPause * (1U << std::min(look, 10U)), LongestPause);
}

std::optional<TaskEnd> FollowTask(const HttpAnswer& accepted, const TaskWatch& watch)
{
    const TaskView view = LookAtTask(accepted.Body);
    if (HasEnded(view))
    {
        return EndOf(view, accepted);
    }
    std::vector<std::string> paths;
    std::string unusable;
    for (const std::string& reference : {accepted.Header("location"), view.Monitor, view.Self})
    {
        const auto path = ResolveWithin(watch.Place, watch.Path, reference);
        if (path && std::find(paths.begin(), paths.end(), *path) == paths.end())
        {
            paths.push_back(*path);
        }
        unusable = unusable.empty() && !path ? reference : unusable;
    }
    if (!paths.empty())
    {
        Log(4, __FILE__, __LINE__).Stream() << "Following the task " << CleanText(paths.front(), MaxPathBytes);
        return Follower(watch, std::move(paths)).Run(accepted);
    }
    if (!view.Unread.empty())
    {
        return DoubtfulEnd("as a task, in an answer that is " + view.Unread);
    }
    if (unusable.empty())
    {
        return std::nullopt;
    }
    return DoubtfulEnd(fmt::format("as a task at {}, a place that is not asked", CleanText(unusable, MaxPathBytes)));
}

} // namespace Tavrine
