#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include <curl/curl.h>

#include "Http.h"
#include "TlsCheck.h"

namespace Tavrine
{

/// What is known of a transfer that gave no answer.
struct TransferEnd
{
    CURLcode Code = CURLE_OK;
    /// curl's own words, may be empty.
    std::string Words;
    /// errno of the last system call that failed, 0 for none.
    int SystemError = 0;
    /// The connection stood (TLS included) before the transfer failed, and the
    /// request began to go out.
    bool Connected = false;
    bool Aborted = false;
    bool BodyTooLarge = false;
    bool HeadTooLarge = false;
    /// The connection died under a change, which must not be sent a second time.
    bool ChangeCutOff = false;
};

/// The limits that were in force, for the messages.
struct TransferLimits
{
    std::chrono::seconds ConnectTimeout{10};
    std::chrono::seconds RequestTimeout{60};
    std::uint64_t MaxBody = 0;
};

/// What one person would tell another about it; names host and port.
/// @param maybeHttps  http is spoken to a port that never gave an answer to it.
TransportFault ExplainTransferEnd(const TransferEnd& end, const TransferLimits& limits, const TlsCheck& tls,
                                  const std::string& place, bool maybeHttps);

} // namespace Tavrine
