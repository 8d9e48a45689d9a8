#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ConfigOptions.h"
#include "ConnectionInfo.h"
#include "Export.h"
#include "RedfishConfigResult.h"
#include "ValueTypes.h"

namespace Tavrine
{

class RedfishClient;

/// The REST client of one BMC (DSP0266 over HTTP/1.1, RFC 9110). All objects made
/// for one ConnectionInfo share one connection and one session; requests of one
/// connection run one after the other, from whatever thread.
///
/// URLs are path and query, used as they stand; one that does not begin with "/" or
/// holds a blank or a control character is refused and not sent. Bodies are JSON
/// text, sent as it stands and never logged. A GET follows redirections within the
/// same scheme, host and port; nothing else follows any. When a session has run out,
/// the client logs in again once and repeats the request; beyond that no change is
/// ever sent twice.
///
/// Every verb can answer: 0; 1 (done, and the answer says that a reset is
/// needed; not for GET); 24 (no connection, name, TLS, time-out, 401 or 403; the message names
/// host, port and cause); 27 (no JSON where JSON is due, or over the size limit,
/// or a 2xx that begins as an object and cannot be read whole, or whose messages need more than 16 MiB of memory,
/// so that failures in it may go unread);
/// 32 (a 5xx other than those of 33); 33 (503, or a message id that says
/// temporarily unavailable, shutting down or starting). A refusal (any other 4xx,
/// or an error inside a 2xx) is 26 for GET, 18 for PATCH and for the POST with an
/// error list, 28 for the POST without one and for DELETE. Messages of refusals
/// end in the BMC's own words; of a message that the BMC sent by its id alone, these
/// are the words of the Base registry, or of the message registry that the BMC serves,
/// which is read for that once.
///
/// A change that is answered with 202 and a task is watched until the task ends
/// (DSP0266, "Asynchronous operations"), all within the time-out of the request, which begins
/// when it goes out (anew, where the BMC was busy before); the final answer counts then. A task that failed or was
/// cancelled is a refusal. One that has not ended by then, or cannot be watched, is 24, whatever hindered it (an answer
/// over the size limit, a new login that failed), with a message that names that and says that
/// the BMC accepted the change. A task that waits for a reset is 1.
///
/// The message of a change that got no answer ends in what is known of it: "nothing was
/// sent", "the change was not done" (turned away, and the new login failed), or
/// "whether the change was done is not known", which is not said of an action that only reads. DeliveryIn
/// (ChangeDelivery.h) reads it. Where the BMC itself says such words they stand between "<<" and ">>".
class TAVRINE_EXPORT BMCBaseAssistant
{
  public:
    BMCBaseAssistant(const TavrineConnection::ConnectionInfo& connection,
                     const ConfigurateSupportedSystemType& systemType);
    virtual ~BMCBaseAssistant();
    BMCBaseAssistant(const BMCBaseAssistant&) = delete;
    BMCBaseAssistant& operator=(const BMCBaseAssistant&) = delete;

    /// @param errors      receives one entry for each refused setting and fault: 10 bad
    ///                    value, 9 unknown, 18 not writable or not told.
    /// @param secretBody  the body may hold values that must not be logged; no body is, so
    ///                    this changes nothing. What the BMC quotes of it stands in the
    ///                    messages: a caller that sends a password looks through them.
    /// @param headers     added to the request; an empty value sends the header
    ///                    with no value. "Expect" is never sent, so that no
    ///                    "100-continue" is waited for.
    virtual RedfishConfigResult PatchData(const std::string url, const std::string body,
                                          std::vector<RedfishConfigResult>& errors, bool secretBody,
                                          const SettingStringMap& headers);
    /// @param response  receives the answer's text, also when the call fails.
    /// @param timeout   seconds; 0 or less takes that of the connection.
    virtual RedfishConfigResult PostData(const std::string url, const std::string body, std::string& response,
                                         std::vector<RedfishConfigResult>& errors, bool secretBody, int timeout);
    virtual RedfishConfigResult PostData(const std::string url, const std::string body, std::string& response,
                                         bool secretBody, int timeout);
    /// `response` is untouched when the call fails. An answer without a body is a
    /// success and an empty text.
    virtual RedfishConfigResult GetData(const std::string url, std::string& response);
    /// `response` is untouched when the call fails.
    virtual RedfishConfigResult DeleteData(const std::string url, std::string& response);

    /// Reads the object "Attributes" of a Bios resource (DSP8010). `values` is
    /// replaced on success and stays as it was on failure. Strings, integers and
    /// booleans become values, null an empty one; other kinds, and integers beyond
    /// 64 bits signed, are passed over with a line of level 4.
    /// @return 0; 27 when the text is no JSON or has no such object.
    RedfishConfigResult ParseSettingValuesFromResponse(const std::string response, SettingValueMap& values);

  private:
    std::shared_ptr<RedfishClient> m_Client;
};

} // namespace Tavrine
