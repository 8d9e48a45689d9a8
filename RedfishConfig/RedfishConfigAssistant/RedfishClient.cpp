#include "RedfishClient.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include <fmt/format.h>

#include "AbortFlag.h"
#include "AnswerResults.h"
#include "ChangeDelivery.h"
#include "JsonText.h"
#include "Log.h"
#include "RegistryLookup.h"
#include "RequestTarget.h"
#include "TaskFollower.h"
#include "TlsCheck.h"

namespace Tavrine
{

namespace
{

using TavrineConnection::ConnectionInfo;
using TavrineConnection::ConnectionProfile;

constexpr unsigned int MaxRedirects = 5;
constexpr std::uint64_t MaxPauseMilliseconds = 60'000;
/// Milliseconds before a BMC that is busy and does not tell for how long, or tells "0", is tried again; each
/// further pause is twice as long.
constexpr std::int64_t FirstOwnWait = 1'000;
constexpr std::int64_t FirstWaitOfZero = 100;
constexpr std::int64_t LongestOwnWait = 30'000;
/// The words of a refusal are not worth a longer wait: seconds.
constexpr int LookupTimeout = 5;
constexpr std::chrono::seconds LookupTimeoutOfAll{15};

std::chrono::seconds AtLeastOne(std::uint16_t seconds) { return std::chrono::seconds(std::max<int>(seconds, 1)); }

bool HasFlag(const ConnectionInfo& info, std::uint8_t flag) { return (info.Flags & flag) != 0; }

TlsRules MakeRules(const ConnectionInfo& info, const ConnectionProfile& profile)
{
    return {!HasFlag(info, TavrineConnection::FlagNoTlsVerify), profile.CaFile, ParseSha256(profile.PinnedSha256)};
}

/// What makes a record unusable; empty when nothing does.
std::string SetupFault(const ConnectionInfo& info, const ConnectionProfile& profile)
{
    if (std::string fault = HostFault(info.Host); !fault.empty())
    {
        return fault;
    }
    if (profile.PinnedSha256.empty())
    {
        return {};
    }
    if (HasFlag(info, TavrineConnection::FlagPlainHttp))
    {
        return "a certificate is pinned, but http shows none";
    }
    return ParseSha256(profile.PinnedSha256) ? "" : "the pinned SHA-256 does not have 64 hexadecimal digits";
}

bool IsRedirect(int status)
{
    constexpr std::array<int, 5> statuses = {301, 302, 303, 307, 308};
    return std::find(statuses.begin(), statuses.end(), status) != statuses.end();
}

/// Whether a request changes nothing: the actions for protected settings and for files read, too.
bool OnlyReads(const HttpRequest& request)
{
    constexpr std::array<std::string_view, 2> actions = {".GetProtectedAttributes", ".DSReadFile"};
    return request.Verb == HttpVerb::Get ||
           (request.Verb == HttpVerb::Post &&
            std::any_of(actions.begin(), actions.end(),
                        [&](std::string_view action) { return request.Path.ends_with(action); }));
}

std::string Call(const HttpRequest& request)
{
    return fmt::format("{} {}", VerbName(request.Verb), AsForeignWords(CleanText(request.Path, 300)));
}

std::string_view WithoutPoint(std::string_view text)
{
    text.remove_suffix(text.ends_with('.') ? 1 : 0);
    return text;
}

constexpr int CodeBroken = 32;
/// Of an answer whose messages were not all read.
constexpr int CodeUnread = 27;

/// Whether a BMC that answers a change so may have done it, or part of it. What it does not
/// know how to do it has not done.
bool LeavesOpen(int code, int status)
{
    return code == CodeUnread || (code == CodeBroken && status >= 500 && status != 501 && status != 505);
}

std::string WithDelivery(std::string_view sentence, Delivery reached)
{
    return fmt::format("{}; {}.", WithoutPoint(sentence), WordsOf(reached));
}

/// What is known of a request that got no answer.
std::string TextAfterChange(const HttpRequest& request, const TransportFault& fault)
{
    const bool harmless = fault.Reached == Delivery::Sent && OnlyReads(request);
    return harmless ? fault.Text : WithDelivery(fault.Text, fault.Reached);
}

} // namespace

RedfishClient::RedfishClient(const ConnectionInfo& info, const ConnectionProfile& profile)
    : m_User(info.User), m_Password(info.Password), m_Language(profile.Language), m_Registries(info, profile),
      m_LongestRequest(profile.LongestRequest), m_RequestTimeout(TimeoutOf(std::max<int>(info.RequestTimeout, 1))),
      m_Retries(info.Retries), m_RetryPause(info.RetryPause), m_OnBusy(profile.OnBusy),
      m_Patience(std::int64_t{profile.BusyPatience} * 1000), m_Closed(SetupFault(info, profile)),
      m_Connection({HasFlag(info, TavrineConnection::FlagPlainHttp), info.Host, info.Port}, MakeRules(info, profile),
                   {AtLeastOne(info.ConnectTimeout), m_RequestTimeout, info.MaxResponseBytes})
{
}

RedfishClient::~RedfishClient() = default;

std::shared_ptr<RedfishClient> RedfishClient::MakeClosed(const ConnectionInfo& info)
{
    auto client = std::make_shared<RedfishClient>(info, ConnectionProfile());
    client->m_Closed = "the connection that this record belongs to is closed";
    return client;
}

RedfishConfigResult RedfishClient::Get(std::string_view path, std::string& response, Revalidation* copy)
{
    return Noted(GetOnce(path, response, copy));
}

RedfishConfigResult RedfishClient::GetOnce(std::string_view path, std::string& response, Revalidation* copy)
{
    SettingStringMap condition;
    if (copy != nullptr && !copy->Tag.empty())
    {
        condition["If-None-Match"] = copy->Tag;
    }
    const HttpRequest request{HttpVerb::Get, path, {}, m_RequestTimeout, &condition, false};
    if (const std::string fault = RequestFault(request); !fault.empty())
    {
        return {RefusalCode(HttpVerb::Get, false), fault, ""};
    }
    Exchange exchange = Send(request);
    if (copy != nullptr && !exchange.Fault)
    {
        copy->Unchanged = !condition.empty() && exchange.Answer.Status == 304;
        if (copy->Unchanged)
        {
            return {0, "", ""};
        }
        copy->Tag = exchange.Answer.Success() ? exchange.Answer.Header("etag") : copy->Tag;
    }
    if (!exchange.Fault && exchange.Answer.Success())
    {
        const JsonShape shape = exchange.Answer.Body.empty() ? JsonShape() : LookAtJson(exchange.Answer.Body);
        if (!shape.Fault.empty())
        {
            return {
                27,
                fmt::format("{} from {}: the answer is {}.", Call(request), m_Connection.Place().Text(), shape.Fault),
                ""};
        }
        if (!shape.HasError)
        {
            response = std::move(exchange.Answer.Body);
            return {0, "", ""};
        }
    }
    const std::lock_guard lock(m_Mutex);
    RedfishConfigResult result = Judge(request, exchange, nullptr);
    if (result == 0)
    {
        response = std::move(exchange.Answer.Body);
    }
    return result;
}

RedfishConfigResult RedfishClient::Change(const HttpRequest& request, std::string& response,
                                          std::vector<RedfishConfigResult>* errors)
{
    return Noted(ChangeOnce(request, response, errors));
}

RedfishConfigResult RedfishClient::Noted(RedfishConfigResult result)
{
    if (result != 0 && result != 1)
    {
        const std::lock_guard lock(m_LastFailureMutex);
        m_LastFailure = {m_LastFailure.Number + 1, result};
    }
    return result;
}

TavrineConnection::RequestFailure RedfishClient::LastFailure() const
{
    const std::lock_guard lock(m_LastFailureMutex);
    return m_LastFailure;
}

RedfishConfigResult RedfishClient::ChangeOnce(const HttpRequest& request, std::string& response,
                                              std::vector<RedfishConfigResult>* errors)
{
    response.clear();
    if (const std::string fault = RequestFault(request); !fault.empty())
    {
        return {RefusalCode(request.Verb, errors != nullptr), fault, ""};
    }
    Exchange exchange = Send(request);
    if (exchange.Fault)
    {
        return {exchange.Fault->Code, TextAfterChange(request, *exchange.Fault), ""};
    }
    RedfishConfigResult result = ConcludeTask(request, exchange, errors);
    response = std::move(exchange.Answer.Body);
    return result;
}

RedfishConfigResult RedfishClient::Delete(std::string_view path, std::string& response)
{
    std::string answer;
    RedfishConfigResult result =
        Change({HttpVerb::Delete, path, {}, m_RequestTimeout, nullptr, false}, answer, nullptr);
    if (result == 0 || result == 1)
    {
        response = std::move(answer);
    }
    return result;
}

/// The result of an answered change, that of its task included, whose last answer is
/// left in `exchange`.
RedfishConfigResult RedfishClient::ConcludeTask(const HttpRequest& request, Exchange& exchange,
                                                std::vector<RedfishConfigResult>* errors)
{
    std::optional<TaskEnd> task;
    if (exchange.Answer.Status == 202)
    {
        const auto read = [this](const std::string& path, std::chrono::seconds timeout)
        {
            const std::lock_guard lock(m_Mutex);
            return SendOnce({HttpVerb::Get, path, {}, timeout, nullptr, false});
        };
        // What was waited for before, a busy BMC or another thread, is none of the request's own time.
        task = FollowTask(exchange.Answer,
                          {m_Connection.Place(), request.Path, exchange.Begun, exchange.Begun + request.Timeout, read});
    }
    const std::lock_guard lock(m_Mutex);
    if (!task)
    {
        return JudgeChange(request, exchange, errors, {});
    }
    if (!task->Doubt.empty())
    {
        const std::string text = fmt::format("{}: the BMC accepted {} {}.", m_Connection.Place().Text(), Call(request),
                                             WithoutPoint(task->Doubt));
        return {24, OnlyReads(request) ? text : WithDelivery(text, Delivery::Sent), ""};
    }
    const bool reset = AsksForReset(exchange.Answer);
    exchange.Answer = std::move(task->Answer);
    RedfishConfigResult result = JudgeChange(request, exchange, errors, *task);
    return result == 0 && reset ? RedfishConfigResult(1, "", "") : result;
}

std::string RedfishClient::RequestFault(const HttpRequest& request) const
{
    std::string fault = PathFault(request.Path);
    if (!fault.empty())
    {
        return fmt::format("{}{}{}: the path is unusable, {}.", Call(request), DeliveryWords::KeptBack,
                           m_Connection.Place().Text(), fault);
    }
    static const SettingStringMap none;
    for (const auto& [name, value] : request.Headers == nullptr ? none : *request.Headers)
    {
        fault = HeaderFault(name, value);
        if (!fault.empty())
        {
            return fmt::format("{}{}{}: the header \"{}\" is unusable, {}.", Call(request), DeliveryWords::KeptBack,
                               m_Connection.Place().Text(), CleanText(name, 100), fault);
        }
    }
    return {};
}

/// An action that is done twice may restart a system twice, or use a password up: it goes out
/// once, even where the BMC says that it turned it away.
Exchange RedfishClient::Send(const HttpRequest& request)
{
    const bool once = request.Verb == HttpVerb::Post && !OnlyReads(request);
    const Repeat change = once ? Repeat::Never : Repeat::TurnedAway;
    return Persist(request.Verb == HttpVerb::Get ? Repeat::Safe : change,
                   [&]
                   {
                       const std::lock_guard lock(m_Mutex);
                       return SendOnce(request);
                   });
}

/// Sends by `once` until there is an answer to live with.
Exchange RedfishClient::Persist(Repeat repeat, const std::function<Exchange()>& once)
{
    std::uint32_t failures = 0;
    for (std::uint32_t refusals = 0;;)
    {
        Exchange exchange = once();
        if (!exchange.Fault)
        {
            if (repeat == Repeat::Never || !WaitOut(exchange, refusals++))
            {
                return exchange;
            }
            continue;
        }
        const bool again = (exchange.Fault->NotConnected && repeat >= Repeat::Unsent) ||
                           (exchange.Fault->Broken && repeat == Repeat::Safe);
        if (!again || failures >= m_Retries || !PauseBeforeRetry(failures++))
        {
            return exchange;
        }
    }
}

/// Waits where the BMC turned a request away for now, which it then should not have done.
/// @return whether it is to be sent again.
bool RedfishClient::WaitOut(const Exchange& exchange, std::uint32_t turn)
{
    const std::int64_t left = m_Patience;
    if (left <= 0 || exchange.Answer.Success() || !IsBusy(exchange.Answer))
    {
        return false;
    }
    const auto asked = RetryAfterSeconds(exchange.Answer);
    const std::int64_t first = asked ? FirstWaitOfZero : FirstOwnWait;
    const std::int64_t own = std::min({first << std::min(turn, 10U), LongestOwnWait, left});
    const std::int64_t pause = asked.value_or(0) > 0 ? std::int64_t{*asked} * 1000 : own;
    if (m_Patience.fetch_sub(pause) < pause)
    {
        m_Patience += pause;
        return false;
    }
    if (m_OnBusy)
    {
        m_OnBusy(std::chrono::milliseconds(pause));
    }
    return AbortFlag::Pause(std::chrono::milliseconds(pause));
}

bool RedfishClient::PauseBeforeRetry(std::uint32_t attempt) const
{
    const std::uint64_t doubled = std::uint64_t{m_RetryPause} << std::min<std::uint32_t>(attempt, 20);
    return AbortFlag::Pause(
        std::chrono::milliseconds(std::min(doubled, std::max<std::uint64_t>(MaxPauseMilliseconds, m_RetryPause))));
}

Exchange RedfishClient::SendOnce(const HttpRequest& request)
{
    Exchange exchange = FollowRedirects(request);
    if (exchange.Fault || exchange.Answer.Status != 401 || m_Session.Token.Get().empty())
    {
        return exchange;
    }
    // The session has run out. A request that was answered with 401 was not done, so
    // it may go out again, a change as well.
    Log(4, __FILE__, __LINE__).Stream() << "The session is gone, logging in again.";
    m_Session.Token.Clear();
    RedfishConfigResult login = LogIn();
    if (login != 0 && login != 11)
    {
        return {{}, TransportFault{login.ErrorCode(), login.ErrorMsg(), false, Delivery::TurnedAway}};
    }
    return FollowRedirects(request);
}

Exchange RedfishClient::FollowRedirects(const HttpRequest& request)
{
    HttpRequest current = request;
    std::string path;
    for (unsigned int followed = 0;; ++followed)
    {
        Exchange exchange = Run(current);
        exchange.Answer.Redirects = followed;
        if (exchange.Fault || request.Verb != HttpVerb::Get || !IsRedirect(exchange.Answer.Status) ||
            followed == MaxRedirects)
        {
            return exchange;
        }
        const auto target = ResolveWithin(m_Connection.Place(), current.Path, exchange.Answer.Header("location"));
        if (!target)
        {
            return exchange;
        }
        path = *target;
        current.Path = path;
    }
}

Exchange RedfishClient::Run(const HttpRequest& request)
{
    if (!m_Closed.empty())
    {
        return {{}, TransportFault{24, m_Connection.Place().Text() + ": " + m_Closed + ".", false, Delivery::NotSent}};
    }
    Log(4, __FILE__, __LINE__).Stream() << Call(request) << " to " << m_Connection.Place().Text();
    const Credentials credentials{m_User.Get(), m_Password.Get(), m_Session.Token.Get()};
    const auto begun = std::chrono::steady_clock::now();
    Exchange exchange = m_Connection.Run(request, credentials);
    exchange.Begun = begun;
    if (exchange.Fault)
    {
        Log(4, __FILE__, __LINE__).Stream() << Call(request) << " failed: " << exchange.Fault->Text;
    }
    else
    {
        Log(4, __FILE__, __LINE__).Stream() << Call(request) << " was answered with " << exchange.Answer.Status << ", "
                                            << exchange.Answer.Body.size() << " bytes";
    }
    return exchange;
}

RedfishConfigResult RedfishClient::Judge(const HttpRequest& request, const Exchange& exchange,
                                         std::vector<RedfishConfigResult>* errors, const TaskEnd& task)
{
    if (exchange.Fault)
    {
        return {exchange.Fault->Code, exchange.Fault->Text, ""};
    }
    const bool authenticated = !m_Session.Token.Get().empty() || !m_User.Get().empty();
    AnsweredRequest answered{request.Verb,  errors != nullptr,
                             request.Path,  m_Connection.Place().Text(),
                             authenticated, {m_Password.Get(), m_Session.Token.Get()}};
    answered.OfTask = task.IsTask;
    answered.FailedTask = task.FailedState;
    const auto deadline = std::chrono::steady_clock::now() + LookupTimeoutOfAll;
    // After a refused login a read would send the same password once more.
    const bool login = request.Verb == HttpVerb::Post && request.Path == SessionsPath;
    if (!login && !request.EndsSession)
    {
        answered.FindWords = [this, deadline](const BmcMessage& message) { return FindWords(message, deadline); };
    }
    std::vector<RedfishConfigResult> unwanted;
    RedfishConfigResult result = JudgeAnswer(answered, exchange.Answer, errors != nullptr ? *errors : unwanted);
    if (result == 33)
    {
        m_RetryAfter = BusySeconds(exchange.Answer);
    }
    return result;
}

RedfishConfigResult RedfishClient::JudgeChange(const HttpRequest& request, const Exchange& exchange,
                                               std::vector<RedfishConfigResult>* errors, const TaskEnd& task)
{
    RedfishConfigResult result = Judge(request, exchange, errors, task);
    if (!LeavesOpen(result, exchange.Answer.Status) || OnlyReads(request))
    {
        return result;
    }
    return {result.ErrorCode(), WithDelivery(result.ErrorMsg(), Delivery::Sent), ""};
}

/// Nothing in here may log in: the answer that is being judged points to the token.
std::string RedfishClient::FindWords(const BmcMessage& message, std::chrono::steady_clock::time_point deadline)
{
    const ResourceReader read = [&](const std::string& path, std::string& text) -> RedfishConfigResult
    {
        const auto left = std::chrono::floor<std::chrono::seconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() < 1 || !PathFault(path).empty())
        {
            return {24, "", ""};
        }
        Exchange exchange =
            FollowRedirects({HttpVerb::Get, path, {}, std::min(left, TimeoutOf(LookupTimeout)), nullptr, false});
        if (exchange.Fault || exchange.Answer.Status != 200)
        {
            return {exchange.Fault ? 24 : 26, "", ""};
        }
        text = std::move(exchange.Answer.Body);
        return {0, "", ""};
    };
    return m_MessageRegistries.WordsOf(message, read, m_Language);
}

std::chrono::seconds RedfishClient::TimeoutOf(int seconds) const
{
    const std::chrono::seconds wanted = seconds > 0 ? std::chrono::seconds(seconds) : m_RequestTimeout;
    return m_LongestRequest > std::chrono::seconds(0) ? std::min(wanted, m_LongestRequest) : wanted;
}

TavrineConnection::Traffic RedfishClient::Counters() const
{
    return {m_Connection.Requests.load(), m_Connection.Connections.load(), m_Connection.BytesReceived.load()};
}

} // namespace Tavrine
