#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Tavrine::Tool
{

/// Where a BMC is, as `--bmc` tells it.
struct BmcAddress
{
    /// Host name or address literal; an IPv6 literal without its brackets.
    std::string Host;
    std::uint16_t Port = 443;
    bool PlainHttp = false;
};

/// Reads `URL|HOST[:PORT]`. Without a scheme it is https; the ports are 443 and, for
/// http, 80 where none is written. An address carries nothing else: no user, no
/// path, no query.
/// @return empty and `address` filled, or what is wrong with the text. The answer
///         never repeats the text, which may hold a password.
std::string ParseBmcAddress(std::string_view text, BmcAddress& address);

/// Host and port as a person writes them, brackets included.
std::string HostAndPort(const BmcAddress& address);

/// Reads `sha256:HEX` or `sha256 Fingerprint=HEX`: 32 bytes in hexadecimal, with or without colons between them.
/// @return empty and `digits` filled with 64 small digits, or what is wrong.
std::string ParsePin(std::string_view text, std::string& digits);

} // namespace Tavrine::Tool
