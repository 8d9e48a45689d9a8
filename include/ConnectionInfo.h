#pragma once

#include <cstdint>
#include <string>

namespace TavrineConnection
{

/// Bits of ConnectionInfo::Flags.
inline constexpr std::uint8_t FlagPlainHttp = 1;   ///< http instead of https
inline constexpr std::uint8_t FlagNoTlsVerify = 2; ///< any certificate is taken

/// How to reach one BMC: a plain record, copied by value into everything that
/// speaks to that BMC. What does not fit a plain record (CA file, pinned
/// certificate, session, registry language) belongs to a BmcConnection, which
/// leaves its handle in ProfileId.
struct ConnectionInfo
{
    /// Host name or address literal; an IPv6 literal without its brackets.
    std::string Host;
    /// Credentials of HTTP basic authentication (RFC 7617), used where no
    /// session is open. An empty User sends none.
    std::string User;
    std::string Password;

    /// TCP port.
    std::uint16_t Port = 443;
    /// Seconds until a connection must stand (TCP and TLS), 1 to 65535.
    std::uint16_t ConnectTimeout = 10;
    /// Seconds for one whole request but POST, which is told its own; 0 counts as 1.
    std::uint16_t RequestTimeout = 60;

    /// Largest body that is taken from the BMC, in bytes, after decompression.
    std::uint32_t MaxResponseBytes = 64U * 1024U * 1024U;
    /// How many times a GET is tried again that could not connect or whose connection
    /// ended before the answer did, and a login that could not connect.
    std::uint32_t Retries = 0;
    /// Milliseconds before the first of these; doubled for each further one.
    std::uint32_t RetryPause = 500;
    /// Handle given by BmcConnection; 0 for none.
    std::uint32_t ProfileId = 0;

    /// Bits as named above.
    std::uint8_t Flags = 0;
};

} // namespace TavrineConnection
