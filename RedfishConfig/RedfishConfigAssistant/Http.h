#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "ChangeDelivery.h"
#include "ValueTypes.h"

namespace Tavrine
{

enum class HttpVerb
{
    Get,
    Post,
    Patch,
    Delete,
};

inline constexpr std::string_view VerbName(HttpVerb verb)
{
    constexpr std::string_view names[] = {"GET", "POST", "PATCH", "DELETE"};
    return names[static_cast<std::size_t>(verb)];
}

/// One request. The texts stay the caller's and must outlive the call.
struct HttpRequest
{
    HttpVerb Verb = HttpVerb::Get;
    /// Path and query as they go over the wire.
    std::string_view Path;
    /// Sent with POST and PATCH, also when it is empty.
    std::string_view Body;
    std::chrono::seconds Timeout{60};
    /// Headers beside those that every request has.
    const SettingStringMap* Headers = nullptr;
    /// The logout: it goes out even after AbortRequests(), may be repeated as a GET may, since to log out twice is no
    /// more than to log out, and nobody waits for the words of its refusal.
    bool EndsSession = false;
};

struct HttpAnswer
{
    int Status = 0;
    /// Names in lower case; of repeated ones the last.
    std::map<std::string, std::string> Headers;
    std::string Body;
    /// How many redirections were followed on the way to it.
    unsigned int Redirects = 0;

    bool Success() const { return Status >= 200 && Status < 300; }
    /// The value of a header, empty where it is missing. No copy: it may be a token.
    const std::string& Header(const std::string& lowerName) const&
    {
        static const std::string none;
        const auto found = Headers.find(lowerName);
        return found == Headers.end() ? none : found->second;
    }
    const std::string& Header(const std::string& lowerName) const&& = delete;
};

/// Why there is no answer: never mixed with an answer's status.
struct TransportFault
{
    /// 24 or 27; after a new login that failed the code of that.
    int Code = 24;
    std::string Text;
    /// No connection stood, so nothing was sent: another try does no harm.
    bool NotConnected = false;
    Delivery Reached = Delivery::NotSent;
    /// The connection ended before the answer did.
    bool Broken = false;
};

/// What came of one request: the answer, or the fault.
struct Exchange
{
    HttpAnswer Answer;
    std::optional<TransportFault> Fault;
    /// When the request went out that this came of, the last one where it was sent again.
    std::chrono::steady_clock::time_point Begun = {};
};

/// The code of a refused request (see BMCBaseAssistant).
inline constexpr int RefusalCode(HttpVerb verb, bool withErrorList)
{
    constexpr int codes[] = {26, 28, 18, 28};
    return verb == HttpVerb::Post && withErrorList ? 18 : codes[static_cast<std::size_t>(verb)];
}

} // namespace Tavrine
