#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

/// Words for what became of a setting that more than one command tells.
namespace Tavrine::Tool::OutcomeWords
{

inline constexpr const char* Sent = "sent, takes effect after a reboot";
inline constexpr const char* InPlace = "in place";
inline constexpr const char* Refused = "refused";
inline constexpr const char* NotSent = "not sent";
inline constexpr const char* Unknown = "unknown";

/// Reasons for Unknown.
inline constexpr const char* NotShown = "the BMC does not show it among its pending values";
inline constexpr const char* OtherWaits = "another value waits for a reboot";
inline constexpr const char* OtherMayWait = "another value may wait for a reboot";
inline constexpr const char* NotRead = "its pending value could not be read";

/// Begins the warning of a failure behind which all is as it was meant to be.
inline constexpr const char* ShownAllTheSame = "warning: the request failed, but the BMC shows the changes: ";

/// So many names stand in one message.
inline constexpr std::size_t NamesInMessage = 5;

/// The first of the names, and how many more there are.
inline std::string FirstNames(const std::vector<std::string>& names)
{
    std::string first;
    for (std::size_t index = 0; index < std::min(names.size(), NamesInMessage); ++index)
    {
        first += (index > 0 ? ", " : "") + names[index];
    }
    return names.size() > NamesInMessage ? first + " and " + std::to_string(names.size() - NamesInMessage) + " more"
                                         : first;
}

} // namespace Tavrine::Tool::OutcomeWords
