#include "HttpParser.h"

#include "FaultEffects.h"
#include "SmallLetters.h"

#include <algorithm>
#include <sstream>
#include <string_view>

namespace bmcsim
{
namespace
{

constexpr std::chrono::minutes KeepAlive{15};
constexpr std::size_t KeepAliveRequests = 1'000'000;

/// The connection whose request this thread is serving: httplib's hooks get the
/// request, but not the stream that it came by.
thread_local HttpConnection* t_Connection = nullptr;

bool MayHaveBody(std::string_view method)
{
    constexpr std::string_view names[] = {"POST", "PUT", "PATCH", "DELETE", "PRI"};
    return std::find(std::begin(names), std::end(names), method) != std::end(names);
}

/// Whether the list of an Accept-Encoding header names gzip, with a weight above 0.
bool TakesGzip(const std::string& list)
{
    std::istringstream items(SmallLetters(list));
    for (std::string item; std::getline(items, item, ',');)
    {
        item.erase(std::remove_if(item.begin(), item.end(), [](char c) { return c == ' ' || c == '\t'; }), item.end());
        const auto semicolon = item.find(';');
        const std::string weight = semicolon == std::string::npos ? "" : item.substr(semicolon + 1);
        const bool refused = weight.starts_with("q=0") && weight.find_first_not_of("0.", 2) == std::string::npos;
        if (item.substr(0, semicolon) == "gzip" && !refused)
        {
            return true;
        }
    }
    return false;
}

HttpRequest ToOwn(const httplib::Request& request, const HttpConnection& connection)
{
    HttpRequest own;
    own.Method = request.method;
    own.Path = connection.Path;
    own.Target = request.target;
    own.Query = connection.Query;
    own.Body = request.body;
    for (const auto& [name, value] : request.headers)
    {
        own.Headers.emplace(SmallLetters(name), value);
    }
    return own;
}

} // namespace

HttpParser::HttpParser(const HttpServerHooks& hooks) : m_Hooks(hooks)
{
    set_keep_alive_max_count(KeepAliveRequests);
    set_keep_alive_timeout(std::chrono::duration_cast<std::chrono::seconds>(KeepAlive).count());
    set_payload_max_length(HttpServer::MaxBody);
    // Requests with a body go through httplib's own routes, which read it; all
    // others are answered before routing.
    const auto answer = [this](const httplib::Request& request, httplib::Response& response)
    { Answer(request, response); };
    Post("/", answer);
    Put("/", answer);
    Patch("/", answer);
    Delete("/", answer);
    set_pre_routing_handler(
        [this](const httplib::Request& request, httplib::Response& response)
        {
            if (MayHaveBody(request.method))
            {
                return HandlerResponse::Unhandled;
            }
            Answer(request, response);
            return HandlerResponse::Handled;
        });
    set_error_handler(HandlerWithResponse([this](const httplib::Request&, httplib::Response& response)
                                          { return FillRefusal(response); }));
    set_post_routing_handler([this](const httplib::Request& request, httplib::Response& response)
                             { Finish(request, response); });
}

bool HttpParser::ServeOne(HttpConnection& connection)
{
    if (!connection.WaitForRequest(KeepAlive))
    {
        return false;
    }
    connection.BeginRequest();
    t_Connection = &connection;
    bool closed = false;
    const bool served =
        process_request(connection, false, closed, [this](httplib::Request& request) { TakeHead(request); });
    t_Connection = nullptr;
    const bool stays = served && !closed && !connection.MustClose;
    return connection.ByteFault ? SendFaulty(*connection.ByteFault, connection.TakeHeldBack(), connection) && stays
                                : stays;
}

void HttpParser::TakeHead(httplib::Request& request)
{
    HttpConnection& connection = *t_Connection;
    connection.EndOfHead();
    const auto mark = request.target.find('?');
    connection.Query = mark == std::string::npos ? "" : request.target.substr(mark + 1);
    connection.Path = std::move(request.path);
    // All paths share one route, so that no expression is ever run over a path
    // from outside.
    request.path.assign(1, '/');

    const bool chunked = request.has_header("Transfer-Encoding");
    if (MayHaveBody(request.method) && !chunked && !request.has_header("Content-Length"))
    {
        // RFC 9112: such a request has no body; httplib would read until the end
        // of the connection.
        request.set_header("Content-Length", "0");
    }
    if (!MayHaveBody(request.method) &&
        (chunked || request.get_header_value("Content-Length", 0).find_first_not_of('0') != std::string::npos))
    {
        connection.MustClose = true;
    }
    // httplib would prefer Brotli, at a level that takes a second for a registry, and
    // overlooks a refusal by weight.
    const bool gzip = TakesGzip(request.get_header_value("Accept-Encoding"));
    request.headers.erase("Accept-Encoding");
    if (gzip)
    {
        request.set_header("Accept-Encoding", "gzip");
    }
    // Everything here is JSON, whatever a client calls it: httplib would take a form
    // apart, and refuse a long one.
    request.headers.erase("Content-Type");
    // A compressed body could grow without bound, so it is passed on as it came.
    if (request.has_header("Content-Encoding"))
    {
        request.set_header("X-Body-Encoding", request.get_header_value("Content-Encoding"));
        request.headers.erase("Content-Encoding");
    }
}

void HttpParser::Answer(const httplib::Request& request, httplib::Response& response)
{
    const HttpRequest asked = ToOwn(request, *t_Connection);
    const std::optional<Fault> fault = m_Hooks.ChooseFault ? m_Hooks.ChooseFault(asked) : std::nullopt;
    HttpResponse own = fault && !fault->Done ? HttpResponse() : m_Hooks.Handle(asked);
    if (fault)
    {
        own = FaultyResponse(*fault, asked, std::move(own));
    }
    if (fault && ActsOnBytes(fault->Kind))
    {
        t_Connection->ByteFault = fault;
        t_Connection->HoldBack();
    }
    response.status = own.Status;
    for (const auto& [name, value] : own.Headers)
    {
        response.set_header(name, value);
    }
    if (!own.Body.empty())
    {
        response.set_header("Content-Type", own.ContentType);
        response.body = std::move(own.Body);
    }
}

httplib::Server::HandlerResponse HttpParser::FillRefusal(httplib::Response& response)
{
    if (!response.body.empty())
    {
        return HandlerResponse::Unhandled;
    }
    // Refused by httplib itself: what is left of the request was not read.
    t_Connection->MustClose = true;
    const HttpResponse own = m_Hooks.Refuse(response.status);
    for (const auto& [name, value] : own.Headers)
    {
        response.set_header(name, value);
    }
    response.set_content(own.Body, own.ContentType);
    return HandlerResponse::Handled;
}

void HttpParser::Finish(const httplib::Request& request, httplib::Response& response)
{
    if (response.status == 204 || response.status == 304)
    {
        response.headers.erase("Content-Length");
    }
    response.set_header("Vary", "Accept-Encoding");
    if (t_Connection->MustClose)
    {
        response.headers.erase("Keep-Alive");
        response.headers.erase("Connection");
        response.set_header("Connection", "close");
    }
    HttpRecord record;
    record.Method = request.method;
    record.Target = request.target;
    const bool silent = t_Connection->ByteFault && IsSilent(*t_Connection->ByteFault);
    record.Status = silent ? 0 : response.status;
    record.Bytes = silent || request.method == "HEAD" ? 0 : response.body.size();
    record.Connection = t_Connection->Number();
    record.Duration =
        std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - t_Connection->Begun());
    m_Hooks.Record(record);
}

} // namespace bmcsim
