#include "AnswerResults.h"

#include <algorithm>
#include <charconv>
#include <ctime>
#include <limits>
#include <system_error>

#include <curl/curl.h>
#include <fmt/format.h>

#include "ChangeDelivery.h"
#include "Log.h"
#include "PlainText.h"

namespace Tavrine
{

namespace
{

constexpr std::size_t MaxWordsBytes = 4000;
constexpr std::size_t MaxPathBytes = 300;

struct StatusWord
{
    int Status;
    std::string_view Word;
};

/// Reason phrases of RFC 9110 and RFC 6585 that a reader of a message profits from.
constexpr StatusWord statusWords[] = {
    {301, "Moved Permanently"},
    {302, "Found"},
    {303, "See Other"},
    {304, "Not Modified"},
    {307, "Temporary Redirect"},
    {308, "Permanent Redirect"},
    {400, "Bad Request"},
    {401, "Unauthorized"},
    {403, "Forbidden"},
    {404, "Not Found"},
    {405, "Method Not Allowed"},
    {409, "Conflict"},
    {410, "Gone"},
    {412, "Precondition Failed"},
    {413, "Content Too Large"},
    {415, "Unsupported Media Type"},
    {428, "Precondition Required"},
    {429, "Too Many Requests"},
    {500, "Internal Server Error"},
    {501, "Not Implemented"},
    {502, "Bad Gateway"},
    {503, "Service Unavailable"},
    {504, "Gateway Timeout"},
    {507, "Insufficient Storage"},
};

bool IsFault(const BmcMessage& message)
{
    return message.Kind == MessageKind::BadValue || message.Kind == MessageKind::Unknown ||
           message.Kind == MessageKind::Refused;
}

bool Holds(const std::vector<BmcMessage>& messages, MessageKind kind)
{
    return std::any_of(messages.begin(), messages.end(), [kind](const BmcMessage& m) { return m.Kind == kind; });
}

int SettingCode(MessageKind kind) { return kind == MessageKind::BadValue ? 10 : kind == MessageKind::Unknown ? 9 : 18; }

/// What the BMC said of what went wrong, each sentence once. "A general error" tells
/// nothing beside anything else.
std::string FaultWords(const std::vector<BmcMessage>& messages)
{
    std::vector<std::string> texts;
    std::string general;
    for (const BmcMessage& message : messages)
    {
        if (!(IsFault(message) || message.Kind == MessageKind::Busy) || message.Text.empty())
        {
            continue;
        }
        if (message.Key == "GeneralError")
        {
            general = message.Text;
        }
        else if (std::find(texts.begin(), texts.end(), message.Text) == texts.end())
        {
            texts.push_back(message.Text);
        }
    }
    return texts.empty() ? general : CleanText(fmt::format("{}", fmt::join(texts, " ")), MaxWordsBytes);
}

std::string Ended(const std::string& text, const std::string& words)
{
    return words.empty() ? text + "." : text + ": " + words;
}

std::string RetryText(const HttpAnswer& answer)
{
    const auto seconds = RetryAfterSeconds(answer);
    return seconds ? fmt::format(", it asks to try again after {} s", *seconds) : std::string();
}

/// A number of seconds and nothing else.
std::optional<std::uint32_t> WholeSeconds(std::string_view text)
{
    std::uint32_t seconds = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    const bool good = ec == std::errc() && end == text.data() + text.size() && !text.empty();
    return good ? std::optional(seconds) : std::nullopt;
}

/// All that the sentences below are made of.
struct Judged
{
    const AnsweredRequest& Request;
    const HttpAnswer& Answer;
    std::string Words;

    std::string Call() const
    {
        return fmt::format("{} {}", VerbName(Request.Verb), CleanText(Request.Path, MaxPathBytes));
    }
};

RedfishConfigResult Unauthorized(const Judged& judged)
{
    const char* const cause = judged.Request.WithCredentials ? "it refuses the user name or the password"
                                                             : "it asks for a user name and a password";
    return {24, Ended(fmt::format("{}: {} {}", judged.Request.Place, cause, DeliveryWords::NoLogin), judged.Words), ""};
}

RedfishConfigResult Forbidden(const Judged& judged)
{
    return {24,
            Ended(fmt::format("{}: the account has not the privilege for {} {}", judged.Request.Place, judged.Call(),
                              DeliveryWords::NoPrivilege),
                  judged.Words),
            ""};
}

RedfishConfigResult Busy(const Judged& judged)
{
    return {33,
            Ended(fmt::format("{} is not ready ({}){}", judged.Request.Place, StatusText(judged.Answer.Status),
                              RetryText(judged.Answer)),
                  judged.Words),
            ""};
}

RedfishConfigResult Broken(const Judged& judged)
{
    return {32,
            Ended(fmt::format("{} failed inside {} ({})", judged.Call(), judged.Request.Place,
                              StatusText(judged.Answer.Status)),
                  judged.Words),
            ""};
}

std::string AfterRedirects(unsigned int followed)
{
    return followed == 0 ? std::string() : fmt::format(" after {} redirection{}", followed, followed == 1 ? "" : "s");
}

RedfishConfigResult Refused(const Judged& judged)
{
    const int status = judged.Answer.Status;
    if (!judged.Request.FailedTask.empty())
    {
        return {
            RefusalCode(judged.Request.Verb, judged.Request.WithErrorList),
            Ended(fmt::format("{} failed: {} took it as a task, which ended as {}", judged.Call(), judged.Request.Place,
                              AsForeignWords(CleanText(judged.Request.FailedTask, MaxPathBytes))),
                  judged.Words),
            ""};
    }
    const std::string location = AsForeignWords(CleanText(judged.Answer.Header("location"), MaxPathBytes));
    const std::string redirect = status >= 300 && status < 400 && !location.empty()
                                     ? fmt::format(", it redirects to {}, which is not followed", location) +
                                           AfterRedirects(judged.Answer.Redirects)
                                     : std::string();
    return {RefusalCode(judged.Request.Verb, judged.Request.WithErrorList),
            Ended(fmt::format("{} was refused by {} ({}){}", judged.Call(), judged.Request.Place, StatusText(status),
                              redirect),
                  judged.Words),
            ""};
}

void Blot(std::string& text, std::string_view secret)
{
    constexpr std::string_view mark = "********";
    // Marks in the places of one letter would tell which letter it is.
    constexpr std::size_t shortest = 4;
    if (!secret.empty() && secret.size() < shortest && text.find(secret) != std::string::npos)
    {
        text = mark;
        return;
    }
    for (std::size_t at = secret.empty() ? std::string::npos : text.find(secret); at != std::string::npos;
         at = text.find(secret, at + mark.size()))
    {
        text.replace(at, secret.size(), mark);
    }
}

RedfishConfigResult Unread(const Judged& judged, const std::string& why)
{
    return {27,
            fmt::format("{}: the answer of {} ({}) is {}, and may tell of failures.", judged.Call(),
                        judged.Request.Place, StatusText(judged.Answer.Status), why),
            ""};
}

/// What an answer's body says, free of secrets.
MessageList CleanMessages(const AnsweredRequest& request, const HttpAnswer& answer)
{
    const bool failed = !answer.Success() || !request.FailedTask.empty();
    MessageList list = ReadMessages(answer.Body, failed);
    std::vector<BmcMessage>& messages = list.Messages;
    const bool ask =
        request.FindWords && answer.Status != 401 && answer.Status != 503 && !Holds(messages, MessageKind::Busy);
    for (BmcMessage& message : messages)
    {
        if (ask && message.Wordless && IsFault(message))
        {
            const std::string words = CleanText(request.FindWords(message));
            message.Text = words.empty() ? message.Text : words;
        }
        for (const std::string_view secret : request.Secrets)
        {
            Blot(message.Text, secret);
        }
    }
    return list;
}

void ListSettings(const std::vector<BmcMessage>& messages, std::vector<RedfishConfigResult>& errors)
{
    for (const BmcMessage& message : messages)
    {
        for (const std::string& setting : message.Settings)
        {
            if (IsFault(message))
            {
                errors.emplace_back(SettingCode(message.Kind), AsForeignWords(message.Text), setting);
            }
        }
    }
}

} // namespace

RedfishConfigResult JudgeAnswer(const AnsweredRequest& request, const HttpAnswer& answer,
                                std::vector<RedfishConfigResult>& errors)
{
    const int status = answer.Status;
    const auto [messages, unread] = CleanMessages(request, answer);
    const Judged judged{request, answer, AsForeignWords(FaultWords(messages))};
    if (!unread.empty())
    {
        Log(1, __FILE__, __LINE__).Stream()
            << "Not all messages in the answer of " << request.Place << " to " << judged.Call() << " were read.";
    }
    if (status == 401 || status == 403)
    {
        return status == 401 ? Unauthorized(judged) : Forbidden(judged);
    }
    if (status == 503 || (!request.OfTask && Holds(messages, MessageKind::Busy)))
    {
        return Busy(judged);
    }
    if (status >= 500)
    {
        return Broken(judged);
    }
    if (!answer.Success() || !request.FailedTask.empty() || std::any_of(messages.begin(), messages.end(), IsFault))
    {
        ListSettings(messages, errors);
        return Refused(judged);
    }
    if (!unread.empty())
    {
        return Unread(judged, unread);
    }
    const bool reset = request.Verb != HttpVerb::Get && Holds(messages, MessageKind::ResetNeeded);
    return {reset ? 1 : 0, "", ""};
}

bool IsBusy(const HttpAnswer& answer)
{
    return answer.Status == 503 || Holds(ReadMessages(answer.Body, !answer.Success()).Messages, MessageKind::Busy);
}

bool AsksForReset(const HttpAnswer& answer)
{
    return Holds(ReadMessages(answer.Body, !answer.Success()).Messages, MessageKind::ResetNeeded);
}

std::optional<std::uint32_t> RetryAfterSeconds(const HttpAnswer& answer)
{
    const std::string header = answer.Header("retry-after");
    if (const auto seconds = WholeSeconds(header))
    {
        return seconds;
    }
    // The clock of a BMC can be years off, so that only its own two dates compare.
    const std::time_t then = curl_getdate(header.c_str(), nullptr);
    const std::time_t now = curl_getdate(answer.Header("date").c_str(), nullptr);
    const bool good = then >= 0 && now >= 0 && then >= now && then - now <= std::numeric_limits<std::uint32_t>::max();
    return good ? std::optional(static_cast<std::uint32_t>(then - now)) : std::nullopt;
}

std::uint32_t BusySeconds(const HttpAnswer& answer)
{
    if (const auto seconds = RetryAfterSeconds(answer))
    {
        return *seconds;
    }
    const MessageList list = ReadMessages(answer.Body, !answer.Success());
    for (const BmcMessage& message : list.Messages)
    {
        if (message.Key == "ServiceTemporarilyUnavailable" && !message.Arguments.empty())
        {
            return WholeSeconds(message.Arguments.front()).value_or(0);
        }
    }
    return 0;
}

std::string StatusText(int status)
{
    for (const StatusWord& entry : statusWords)
    {
        if (entry.Status == status)
        {
            return fmt::format("{} {}", status, entry.Word);
        }
    }
    return std::to_string(status);
}

} // namespace Tavrine
