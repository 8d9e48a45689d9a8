#pragma once

#include <string>
#include <string_view>
#include <vector>

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
    /// Texts that are blotted out of the BMC's words.
    std::vector<std::string_view> Secrets = {};
};

/// The result of a request that was answered, by the table of BMCBaseAssistant; a
/// message beside code 0 or 1 is empty. `errors` receives one entry a refused setting
/// and fault. A GET never answers 1.
RedfishConfigResult JudgeAnswer(const AnsweredRequest& request, const HttpAnswer& answer,
                                std::vector<RedfishConfigResult>& errors);

} // namespace Tavrine
