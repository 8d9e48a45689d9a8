#pragma once

#include "HttpConnection.h"
#include "HttpServer.h"

#include <httplib.h>

namespace bmcsim
{

/// The HTTP/1.1 of httplib (head, body, compression, ranges) over a connection of
/// our own, which it takes no part in accepting or closing.
class HttpParser final : private httplib::Server
{
  public:
    /// @param hooks  must outlive the parser.
    explicit HttpParser(const HttpServerHooks& hooks);

    /// Reads one request and sends its answer.
    /// @return false when no further request can follow on this connection.
    bool ServeOne(HttpConnection& connection);

  private:
    void TakeHead(httplib::Request& request);
    void Answer(const httplib::Request& request, httplib::Response& response);
    HandlerResponse FillRefusal(httplib::Response& response);
    void Finish(const httplib::Request& request, httplib::Response& response);

    const HttpServerHooks& m_Hooks;
};

} // namespace bmcsim
