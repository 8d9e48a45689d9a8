#include "FaultEffects.h"

#include "HttpConnection.h"
#include "RedfishErrors.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <fmt/format.h>
#include <iterator>
#include <limits>
#include <optional>

namespace bmcsim
{
namespace
{

constexpr std::size_t Chunk = std::size_t{64} * 1024;
constexpr std::string_view HeadEnd = "\r\n\r\n";

std::size_t HeadLength(const std::string& answer)
{
    const auto end = answer.find(HeadEnd);
    return end == std::string::npos ? answer.size() : end + HeadEnd.size();
}

/// Where an answer or a body of `size` bytes is cut.
std::size_t CutAt(std::optional<std::int64_t> wish, std::size_t usual, std::size_t size)
{
    return wish ? std::min(static_cast<std::size_t>(*wish), size) : usual;
}

/// Of an effect that has one in every rule, or for which none is the same as 0.
std::int64_t Number(const Fault& fault) { return fault.Amount.value_or(0); }

bool WaitsUntilLeft(const Fault& fault) { return fault.Kind == FaultKind::Stall && Number(fault) == 0; }

HttpResponse StatusAnswer(const Fault& fault)
{
    const int status = static_cast<int>(Number(fault));
    HttpResponse answer;
    if (status >= 400)
    {
        answer = RedfishError(status, Base::GeneralError);
    }
    else if (status != 204 && status != 304)
    {
        answer.Body = "{}";
    }
    answer.Status = status;
    for (const auto& [name, value] : fault.Headers)
    {
        answer.Headers[name] = value;
    }
    return answer;
}

HttpResponse BusyAnswer(const Fault& fault)
{
    HttpResponse answer = RedfishError(503, Base::GeneralError);
    answer.Headers["Retry-After"] = std::to_string(Number(fault));
    return answer;
}

HttpResponse LoopAnswer(const HttpRequest& request)
{
    constexpr std::string_view name = "turn=";
    std::uint64_t turn = 0;
    if (request.Query.starts_with(name))
    {
        const char* query = request.Query.data();
        std::from_chars(query + name.size(), query + request.Query.size(), turn);
    }
    HttpResponse answer;
    answer.Status = 307;
    answer.Headers["Location"] =
        fmt::format("{}?{}{}", request.Target.substr(0, request.Target.find('?')), name, turn + 1);
    answer.Body = "{}";
    return answer;
}

HttpResponse GarbageAnswer()
{
    HttpResponse answer;
    answer.Body = "{\"Attributes\": {\"Mode\": \"On\",, \x01\xff";
    return answer;
}

using Send = bool (*)(const Fault&, const std::string&, HttpConnection&);

bool Write(HttpConnection& connection, std::string_view text)
{
    return connection.write(text.data(), text.size()) == static_cast<ssize_t>(text.size());
}

bool SendNothing(const Fault&, const std::string&, HttpConnection&) { return false; }

bool SendPart(const Fault& fault, const std::string& answer, HttpConnection& connection)
{
    const std::size_t head = HeadLength(answer);
    const std::size_t usual = head == answer.size() ? head / 2 : head + (answer.size() - head) / 2;
    Write(connection, answer.substr(0, CutAt(fault.Amount, usual, answer.size())));
    return false;
}

bool SendAll(const Fault&, const std::string& answer, HttpConnection& connection)
{
    Write(connection, answer);
    return false;
}

/// The head without the header that tells the body's length.
std::string HeadWithoutLength(const std::string& answer)
{
    std::string head = answer.substr(0, HeadLength(answer));
    const auto at = head.find("\r\nContent-Length:");
    if (at != std::string::npos)
    {
        head.erase(at, head.find("\r\n", at + 2) - at);
    }
    return head;
}

bool SendUntilCut(const Fault&, const std::string& answer, HttpConnection& connection)
{
    const std::size_t head = HeadLength(answer);
    Write(connection, HeadWithoutLength(answer) + answer.substr(head, (answer.size() - head) / 2));
    connection.CutWithoutGoodbye();
    return false;
}

bool SendLate(const Fault& fault, const std::string& answer, HttpConnection& connection)
{
    if (WaitsUntilLeft(fault))
    {
        connection.WaitUntilLeft();
        return false;
    }
    // Of a request that was not carried out there is nothing to tell.
    return connection.PauseUnlessLeft(std::chrono::seconds(Number(fault))) && fault.Done && Write(connection, answer);
}

bool SendSlowly(const Fault& fault, const std::string& answer, HttpConnection& connection)
{
    return std::all_of(
        answer.begin(), answer.end(),
        [&](char c) {
            return Write(connection, {&c, 1}) && connection.PauseUnlessLeft(std::chrono::milliseconds(Number(fault)));
        });
}

bool SendWrongLength(const Fault& fault, const std::string& answer, HttpConnection& connection)
{
    std::string head = HeadWithoutLength(answer);
    const auto body = static_cast<std::int64_t>(answer.size() - HeadLength(answer));
    head.insert(head.size() - 2,
                fmt::format("Content-Length: {}\r\n", std::max<std::int64_t>(0, body + Number(fault))));
    return Write(connection, head + answer.substr(HeadLength(answer)));
}

bool SendGarbage(const Fault& fault, const std::string&, HttpConnection& connection)
{
    // Bytes of all kinds, the same ones in every run, and no "HTTP" at their begin.
    std::uint32_t last = 1;
    std::string text(static_cast<std::size_t>(Number(fault)), '\0');
    std::generate(text.begin(), text.end(),
                  [&]
                  {
                      last = last * 1664525U + 1013904223U;
                      return static_cast<char>(last >> 24U);
                  });
    Write(connection, text);
    return false;
}

constexpr std::string_view BigBegin = R"({"Filler":")";
constexpr std::string_view BigEnd = R"("})";

bool SendHuge(const Fault& fault, const std::string&, HttpConnection& connection)
{
    const std::uint64_t size = static_cast<std::uint64_t>(Number(fault)) * 1024 * 1024;
    bool sent = Write(connection, fmt::format("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\n"
                                              "Content-Length: {}\r\n\r\n{}",
                                              size, BigBegin));
    const std::string filler(Chunk, 'x');
    for (std::uint64_t left = size - BigBegin.size() - BigEnd.size(); sent && left > 0;)
    {
        const std::size_t part = static_cast<std::size_t>(std::min<std::uint64_t>(left, Chunk));
        sent = Write(connection, std::string_view(filler).substr(0, part));
        left -= part;
    }
    return sent && Write(connection, BigEnd);
}

bool SendEndless(const Fault&, const std::string&, HttpConnection& connection)
{
    bool sent = Write(connection, fmt::format("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\n"
                                              "Transfer-Encoding: chunked\r\n\r\n{:x}\r\n{}\r\n",
                                              BigBegin.size(), BigBegin));
    const std::string filler = fmt::format("{:x}\r\n{}\r\n", Chunk, std::string(Chunk, 'x'));
    while (sent)
    {
        sent = Write(connection, filler);
    }
    return false;
}

bool SendHugeHead(const Fault& fault, const std::string& answer, HttpConnection& connection)
{
    constexpr std::size_t lineSize = 1024;
    constexpr std::size_t frameSize = std::string_view("X-Filler-000000: \r\n").size();
    const std::string value(lineSize - frameSize, 'x');
    std::string filler;
    for (std::int64_t i = 0; i < Number(fault); ++i)
    {
        filler += fmt::format("X-Filler-{:06}: {}\r\n", i, value);
    }
    const std::size_t at = HeadLength(answer) - 2;
    return Write(connection, answer.substr(0, at) + filler + answer.substr(at));
}

struct ByteEffect
{
    FaultKind Kind;
    Send Sender;
};

constexpr ByteEffect ByteEffects[] = {
    {FaultKind::CloseBefore, SendNothing},     {FaultKind::CloseWithin, SendPart},  {FaultKind::CloseAfter, SendAll},
    {FaultKind::TlsCut, SendUntilCut},         {FaultKind::Stall, SendLate},        {FaultKind::Slow, SendSlowly},
    {FaultKind::WrongLength, SendWrongLength}, {FaultKind::Garbage, SendGarbage},   {FaultKind::Huge, SendHuge},
    {FaultKind::Endless, SendEndless},         {FaultKind::HugeHead, SendHugeHead},
};

const ByteEffect* FindByteEffect(FaultKind kind)
{
    const auto* found = std::find_if(std::begin(ByteEffects), std::end(ByteEffects),
                                     [&](const ByteEffect& row) { return row.Kind == kind; });
    return found == std::end(ByteEffects) ? nullptr : found;
}

} // namespace

HttpResponse FaultyResponse(const Fault& fault, const HttpRequest& request, HttpResponse answer)
{
    switch (fault.Kind)
    {
    case FaultKind::Status:
        return StatusAnswer(fault);
    case FaultKind::Busy:
        return BusyAnswer(fault);
    case FaultKind::RedirectLoop:
        return LoopAnswer(request);
    case FaultKind::GarbageJson:
        return GarbageAnswer();
    case FaultKind::Truncated:
        answer.Body.resize(CutAt(fault.Amount, answer.Body.size() / 2, answer.Body.size()));
        return answer;
    case FaultKind::ContentType:
        answer.ContentType = fault.Text.empty() ? "text/html" : fault.Text;
        return answer;
    default:
        return answer;
    }
}

bool ActsOnBytes(FaultKind kind) { return FindByteEffect(kind) != nullptr; }

bool IsSilent(const Fault& fault)
{
    const bool stalled = WaitsUntilLeft(fault) || (fault.Kind == FaultKind::Stall && !fault.Done);
    return stalled || fault.Kind == FaultKind::CloseBefore || fault.Kind == FaultKind::Garbage;
}

bool SendFaulty(const Fault& fault, const std::string& answer, HttpConnection& connection)
{
    return FindByteEffect(fault.Kind)->Sender(fault, answer, connection);
}

} // namespace bmcsim
