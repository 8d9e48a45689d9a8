#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include <curl/curl.h>

#include "Http.h"
#include "RequestTarget.h"
#include "TlsCheck.h"
#include "TransportFaults.h"

namespace Tavrine
{

/// What a request proves itself with: the token where there is one, else user and
/// password, else nothing. The texts stay the caller's.
struct Credentials
{
    const std::string& User;
    const std::string& Password;
    const std::string& Token;
};

/// One curl handle and the one TCP connection behind it, which stays open from
/// request to request. Used by one thread at a time; the counters by any.
class CurlConnection
{
  public:
    CurlConnection(Origin origin, TlsRules tls, TransferLimits limits);
    CurlConnection(const CurlConnection&) = delete;
    CurlConnection& operator=(const CurlConnection&) = delete;
    ~CurlConnection();

    /// Sends one request and waits for the whole answer. Follows no redirection and
    /// repeats nothing, but for a GET or a logout whose kept connection turns out to be dead.
    Exchange Run(const HttpRequest& request, const Credentials& credentials);

    const Origin& Place() const { return m_Origin; }

    std::atomic<std::uint64_t> Requests{0};
    std::atomic<std::uint64_t> Connections{0};
    std::atomic<std::uint64_t> BytesReceived{0};

  private:
    struct Reception;

    void Transfer(const HttpRequest& request, const Credentials& credentials, Reception& reception);
    void SetFixedOptions();
    void SetRequest(const HttpRequest& request, const Credentials& credentials, Reception& reception);
    CURLcode Drive(const HttpRequest& request, Reception& reception);
    void Count();

    Origin m_Origin;
    TransferLimits m_Limits;
    TlsCheck m_Tls;
    /// An HTTP answer has come over this connection, so that http is what it speaks.
    bool m_Answered = false;
    std::unique_ptr<CURLM, decltype(&curl_multi_cleanup)> m_Multi;
    std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> m_Easy;
};

} // namespace Tavrine
