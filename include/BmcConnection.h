#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "ConnectionInfo.h"
#include "Export.h"
#include "RedfishConfigResult.h"

namespace Tavrine
{
class RedfishClient;
}

namespace TavrineConnection
{

/// What a ConnectionInfo has no room for.
struct ConnectionProfile
{
    /// PEM file of the certificate authorities to trust instead of the system's.
    std::string CaFile;
    /// SHA-256 of the one certificate to trust (of its DER form): 64 hexadecimal
    /// digits. It stands in for every other check, FlagNoTlsVerify included; any other
    /// text, or plain http, makes every request fail.
    std::string PinnedSha256;
    /// Language of the attribute registry (RFC 5646), "en" or "ja" for example.
    std::string Language = "en";
    /// Folder, absolute, in which attribute registries are kept from run to run; each
    /// use asks the BMC whether the copy still holds. Empty: nothing is kept on disk.
    /// A folder that cannot be used is no failure; the log says so.
    std::string RegistryFolder = {};
    /// Seconds that no request takes longer, whatever time-out of its own it has (actions of
    /// the library have one of 60 s); 0 for no such limit.
    std::uint16_t LongestRequest = 0;
    /// Seconds that may be spent, over all requests, waiting for a BMC that is not ready
    /// (code 33) and sending again what it turned away; 0 for none. It waits as long as
    /// the BMC asks (Retry-After), and not at all where that is longer than what is left.
    /// A POST that may do more than read is not sent again, a login aside: a restart done twice
    /// does harm.
    std::uint32_t BusyPatience = 0;
    /// Called before each such wait with its length, from the thread of the request; may be
    /// empty. Several threads may be in it at once. It must use neither this connection nor any
    /// object made from its record: during a login these wait for the very request that it is
    /// called for. It is kept for as long as such an object lives, also after the connection.
    std::function<void(std::chrono::milliseconds)> OnBusy = {};
};

/// What went over one connection so far.
struct Traffic
{
    std::uint64_t Requests = 0;
    std::uint64_t Connections = 0;
    std::uint64_t BytesReceived = 0;
};

/// What a request ended in that failed.
struct RequestFailure
{
    /// Counts those of one connection, from 1; 0 for none.
    std::uint64_t Number = 0;
    RedfishConfigResult Result = {0, "", ""};
};

/// One BMC as its caller sees it: owns the profile, the shared client and the
/// session (DSP0266, "Session management"). All library objects made from Info()
/// use them. Those that outlive this object go on over the same connection, by the profile's rules, but without the
/// session: each request then carries the password. One that is made when this object and all the others are
/// gone answers 24 to everything, since what the profile demanded is gone too. Construction sends nothing; destruction
/// closes the session if one is open. Its operations may be called from any
/// thread.
class TAVRINE_EXPORT BmcConnection
{
  public:
    BmcConnection(const ConnectionInfo& info, const ConnectionProfile& profile);
    ~BmcConnection();
    BmcConnection(const BmcConnection&) = delete;
    BmcConnection& operator=(const BmcConnection&) = delete;

    /// The record to hand to the library; its ProfileId leads back here. It is without the password, as are all
    /// copies of it, and is of no use for a connection of its own.
    const ConnectionInfo& Info() const;

    /// Logs in with the User and the Password that this object was made with.
    /// @return 0, also when a session is open already; 11 when the service has no
    ///         sessions (basic authentication serves then); 24 also without a User;
    ///         otherwise the codes of BMCBaseAssistant.
    RedfishConfigResult OpenSession();
    /// Logs out. Without a session, or when it has run out, this answers 0; 28 when
    /// the BMC never told where the session can be closed; otherwise the codes of
    /// BMCBaseAssistant for DELETE. The session is not used any more, whatever the result.
    RedfishConfigResult CloseSession();

    /// Single requests over the same connection and session, as
    /// BMCBaseAssistant::GetData, PostData without an error list, and DeleteData:
    /// what is said there of URLs, codes, tasks and messages holds here.
    RedfishConfigResult Get(const std::string& url, std::string& response);
    /// @param timeoutSeconds  for the whole of it; 0 or less takes that of the connection.
    RedfishConfigResult Post(const std::string& url, const std::string& body, std::string& response,
                             int timeoutSeconds);
    RedfishConfigResult Delete(const std::string& url, std::string& response);

    /// Seconds after which the BMC asked to try again when it last answered a request
    /// of this connection with code 33, as it told them, however many; 0 when it told
    /// none or was never busy.
    std::uint32_t RetryAfter() const;

    Traffic Counters() const;

    /// The last GET, POST, PATCH or DELETE over this connection that failed, also of an object made from Info(), by
    /// code and message. Some operations of those answer with a code of their own, 26 say, and this tells whether it
    /// was the BMC that could not be reached or was not ready. Logins and logouts do not count.
    RequestFailure LastFailure() const;

    /// Makes every request of this process that runs now or is made later fail
    /// with code 24, but those of CloseSession; waits between requests end, too.
    /// Takes effect within a fraction of a second. Safe in a signal handler.
    static void AbortRequests();

  private:
    ConnectionInfo m_Info;
    std::shared_ptr<Tavrine::RedfishClient> m_Client;
};

} // namespace TavrineConnection
