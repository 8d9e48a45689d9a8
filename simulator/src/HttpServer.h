#pragma once

#include "FaultRule.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

using SSL_CTX = struct ssl_ctx_st;

namespace bmcsim
{

struct HttpRequest
{
    std::string Method;
    /// Decoded, without the query.
    std::string Path;
    /// As it stood in the request line.
    std::string Target;
    std::string Query;
    std::string Body;
    /// Names in small letters; of a repeated header the first.
    std::map<std::string, std::string> Headers;

    /// Empty when the request has no such header. @param name in small letters.
    std::string Header(const std::string& name) const;
};

struct HttpResponse
{
    int Status = 200;
    std::map<std::string, std::string> Headers;
    std::string ContentType = "application/json";
    std::string Body;
};

struct HttpRecord
{
    std::string Method;
    std::string Target;
    int Status = 0;
    std::size_t Bytes = 0;
    unsigned int Connection = 0;
    std::chrono::microseconds Duration{0};
};

struct HttpServerOptions
{
    std::string BindAddress;
    std::uint16_t Port = 0;
    /// Empty: plain http.
    std::shared_ptr<SSL_CTX> Tls;
    std::chrono::milliseconds Latency{0};
};

/// All are called from the connections' threads, several at a time.
struct HttpServerHooks
{
    std::function<HttpResponse(const HttpRequest&)> Handle;
    /// What happens to a request instead of an ordinary answer, nothing for most; may
    /// be empty. Of a request that stays undone Handle never hears.
    std::function<std::optional<Fault>(const HttpRequest&)> ChooseFault;
    /// Page for a request that was refused before it reached Handle.
    std::function<HttpResponse(int status)> Refuse;
    /// Called for every answer just before it is sent, so that who has an answer
    /// also finds its record.
    std::function<void(const HttpRecord&)> Record;
};

/// HTTP/1.1 over TCP or TLS with one thread a connection. Answers are compressed
/// when the client takes that.
class HttpServer
{
  public:
    static constexpr std::size_t MaxBody = std::size_t{1024} * 1024;
    static constexpr std::size_t MaxHead = std::size_t{64} * 1024;
    static constexpr std::size_t MaxConnections = 512;

    /// @return empty when it cannot listen; error then names address and port.
    static std::unique_ptr<HttpServer> Start(HttpServerOptions options, HttpServerHooks hooks, std::string& error);
    /// Closes every connection, busy or idle, and waits for their threads.
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    std::uint16_t Port() const;

  private:
    class Impl;
    explicit HttpServer(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> m_Impl;
};

} // namespace bmcsim
