#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "BmcConnection.h"
#include "ConnectionInfo.h"
#include "CurlConnection.h"
#include "Http.h"
#include "MessageRegistries.h"
#include "PlainText.h"
#include "RedfishConfigResult.h"
#include "RegistryCache.h"
#include "TaskFollower.h"

namespace Tavrine
{

/// What a caller tells of its copy of a resource, and learns of it.
struct Revalidation
{
    /// ETag of the copy, empty for none; after a success that of the resource.
    std::string Tag;
    /// The copy still holds, and no body was sent.
    bool Unchanged = false;
};

/// Everything that is spoken with one BMC: one connection, one session, requests one
/// after the other from whatever thread.
class RedfishClient
{
  public:
    RedfishClient(const TavrineConnection::ConnectionInfo& info, const TavrineConnection::ConnectionProfile& profile);
    RedfishClient(const RedfishClient&) = delete;
    RedfishClient& operator=(const RedfishClient&) = delete;
    ~RedfishClient();

    /// A client that refuses every request with code 24.
    static std::shared_ptr<RedfishClient> MakeClosed(const TavrineConnection::ConnectionInfo& info);

    /// A GET whose answer must be JSON or empty; `response` is untouched on failure.
    /// @param copy  what the caller has of it already; null for nothing.
    RedfishConfigResult Get(std::string_view path, std::string& response, Revalidation* copy = nullptr);
    /// Any other verb; `response` receives the body in every case. An answer with status
    /// 202 is followed to the end of its task within the request's time; what stands at
    /// the task's end is the answer then.
    /// @param errors  null for a caller that takes no failures of single settings.
    RedfishConfigResult Change(const HttpRequest& request, std::string& response,
                               std::vector<RedfishConfigResult>* errors);
    /// A DELETE; `response` is untouched on failure.
    RedfishConfigResult Delete(std::string_view path, std::string& response);

    RedfishConfigResult OpenSession();
    RedfishConfigResult CloseSession();

    TavrineConnection::Traffic Counters() const;
    TavrineConnection::RequestFailure LastFailure() const;
    const std::string& Language() const { return m_Language; }
    const RegistryCache& Registries() const { return m_Registries; }
    std::chrono::seconds RequestTimeout() const { return m_RequestTimeout; }
    /// `seconds`, or the time-out of the connection where that is 0 or less; no more than the longest
    /// that the connection allows.
    std::chrono::seconds TimeoutOf(int seconds) const;
    /// Seconds that the last answer with code 33 asked to wait; 0 for none.
    std::uint32_t RetryAfter() const { return m_RetryAfter; }

  private:
    /// DSP0266 lets the service root name another place; every service has this one.
    static constexpr std::string_view SessionsPath = "/redfish/v1/SessionService/Sessions";

    struct Session
    {
        SecretText Token;
        /// Where to log out; empty when the BMC did not tell.
        std::string Path;
    };

    /// What may be sent again; each includes the one before.
    enum class Repeat
    {
        Never,
        /// What the BMC turned away for now, where a second time would do no harm, should
        /// it have been carried out all the same.
        TurnedAway,
        /// What surely was not sent.
        Unsent,
        /// What does no harm when it is done twice.
        Safe,
    };

    RedfishConfigResult GetOnce(std::string_view path, std::string& response, Revalidation* copy);
    RedfishConfigResult ChangeOnce(const HttpRequest& request, std::string& response,
                                   std::vector<RedfishConfigResult>* errors);
    /// Keeps a failure.
    RedfishConfigResult Noted(RedfishConfigResult result);
    Exchange Send(const HttpRequest& request);
    Exchange Persist(Repeat repeat, const std::function<Exchange()>& once);
    bool WaitOut(const Exchange& exchange, std::uint32_t turn);
    RedfishConfigResult ConcludeTask(const HttpRequest& request, Exchange& exchange,
                                     std::vector<RedfishConfigResult>* errors);
    bool PauseBeforeRetry(std::uint32_t attempt) const;
    std::string RequestFault(const HttpRequest& request) const;

    // What follows is called with m_Mutex held.
    Exchange SendOnce(const HttpRequest& request);
    Exchange FollowRedirects(const HttpRequest& request);
    Exchange Run(const HttpRequest& request);
    RedfishConfigResult LogIn();
    RedfishConfigResult TakeSession(const HttpAnswer& answer);
    RedfishConfigResult Judge(const HttpRequest& request, const Exchange& exchange,
                              std::vector<RedfishConfigResult>* errors, const TaskEnd& task = {});
    RedfishConfigResult JudgeChange(const HttpRequest& request, const Exchange& exchange,
                                    std::vector<RedfishConfigResult>* errors, const TaskEnd& task);
    std::string FindWords(const BmcMessage& message, std::chrono::steady_clock::time_point deadline);

    std::mutex m_Mutex;
    SecretText m_User;
    SecretText m_Password;
    std::string m_Language;
    RegistryCache m_Registries;
    std::chrono::seconds m_LongestRequest;
    std::chrono::seconds m_RequestTimeout;
    std::uint32_t m_Retries;
    std::uint32_t m_RetryPause;
    std::function<void(std::chrono::milliseconds)> m_OnBusy;
    /// Milliseconds that may still be spent waiting for a busy BMC.
    std::atomic<std::int64_t> m_Patience;
    /// Why no request is sent at all; empty for a usable client.
    std::string m_Closed;
    Session m_Session;
    MessageRegistries m_MessageRegistries;
    std::atomic<std::uint32_t> m_RetryAfter{0};
    mutable std::mutex m_LastFailureMutex;
    TavrineConnection::RequestFailure m_LastFailure;
    CurlConnection m_Connection;
};

} // namespace Tavrine
