#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "AnswerMessages.h"
#include "Http.h"
#include "RedfishConfigResult.h"

namespace Tavrine
{

/// Which request an answer belongs to.
struct AnsweredRequest
{
    HttpVerb Verb = HttpVerb::Get;
    /// A POST whose caller takes failures of single settings.
    bool WithErrorList = false;
    std::string_view Path;
    /// "host:port" for the messages.
    std::string Place;
    /// Credentials were sent with it.
    bool WithCredentials = false;
    /// Texts that are blotted out of the BMC's words; of a short one all the words.
    std::vector<std::string_view> Secrets = {};
    /// The answer is the text of a task that has ended: that a service was busy meanwhile says nothing of the change.
    bool OfTask = false;
    /// The state in which a task ended badly whose answer this is: then the request
    /// counts as refused, whatever the status.
    std::string FailedTask = {};
    /// Finds the words of a message that came without any; empty for none. Asked only
    /// about what went wrong, and not when the BMC is busy or refuses the login.
    std::function<std::string(const BmcMessage&)> FindWords = {};
};

/// The result of a request that was answered, by the table of BMCBaseAssistant; a
/// message beside code 0 or 1 is empty. `errors` receives one entry a refused setting
/// and fault. A GET never answers 1. No success is claimed (code 27) while there are messages
/// that were not read; the log tells of these in any case.
RedfishConfigResult JudgeAnswer(const AnsweredRequest& request, const HttpAnswer& answer,
                                std::vector<RedfishConfigResult>& errors);

/// Status 503, or a message that says that the service will be there later.
bool IsBusy(const HttpAnswer& answer);
/// A message says that the system must be reset.
bool AsksForReset(const HttpAnswer& answer);
/// "Retry-After" in seconds (RFC 9110); the form with a date is taken against the
/// answer's own "Date". Nothing where there is none.
std::optional<std::uint32_t> RetryAfterSeconds(const HttpAnswer& answer);
/// The seconds for which a busy answer asks, by its head or by its message; 0 for none.
std::uint32_t BusySeconds(const HttpAnswer& answer);
/// "404 Not Found".
std::string StatusText(int status);

} // namespace Tavrine
