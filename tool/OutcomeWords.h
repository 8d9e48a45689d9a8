#pragma once

/// Words for what became of a setting that more than one command tells.
namespace Tavrine::Tool::OutcomeWords
{

inline constexpr const char* Sent = "sent, takes effect after a reboot";
inline constexpr const char* InPlace = "in place";
inline constexpr const char* NotSent = "not sent";
inline constexpr const char* Unknown = "unknown";

/// Reasons for Unknown.
inline constexpr const char* NotShown = "the BMC does not show it among its pending values";
inline constexpr const char* NotRead = "its pending value could not be read";

} // namespace Tavrine::Tool::OutcomeWords
