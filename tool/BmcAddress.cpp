#include "BmcAddress.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cctype>
#include <charconv>
#include <netinet/in.h>

#include "TextBytes.h"

namespace Tavrine::Tool
{
namespace
{

constexpr std::size_t LongestHostName = 253;

bool IsAlnum(char c) { return (c >= '0' && c <= '9') || (LowerAscii(c) >= 'a' && LowerAscii(c) <= 'z'); }

bool TakePrefix(std::string_view& text, std::string_view prefix)
{
    if (text.size() < prefix.size() ||
        !std::equal(prefix.begin(), prefix.end(), text.begin(), [](char p, char t) { return LowerAscii(t) == p; }))
    {
        return false;
    }
    text.remove_prefix(prefix.size());
    return true;
}

std::string ParseScheme(std::string_view& text, BmcAddress& address)
{
    if (TakePrefix(text, "http://"))
    {
        address.PlainHttp = true;
        address.Port = 80;
        return {};
    }
    if (!TakePrefix(text, "https://") && text.find("://") != std::string_view::npos)
    {
        return "the scheme must be https or http";
    }
    return {};
}

std::string ParsePort(std::string_view text, std::uint16_t& port)
{
    const char* end = text.data() + text.size();
    const auto [stop, failure] = std::from_chars(text.data(), end, port);
    const bool whole = failure == std::errc() && stop == end && port != 0;
    return whole ? std::string() : "the port must be a number from 1 to 65535";
}

/// Splits "[literal]rest"; the literal may carry a zone ("fe80::1%eth0").
std::string TakeIPv6(std::string_view& text, std::string& host)
{
    const std::size_t close = text.find(']');
    if (close == std::string_view::npos)
    {
        return "the bracket of an IPv6 address is not closed";
    }
    host = std::string(text.substr(1, close - 1));
    text.remove_prefix(close + 1);

    const std::size_t zone = host.find('%');
    const std::string literal = host.substr(0, zone);
    in6_addr parsed{};
    const bool zoneIsGood =
        zone == std::string::npos ||
        (zone + 1 < host.size() && std::all_of(host.begin() + static_cast<std::ptrdiff_t>(zone) + 1, host.end(),
                                               [](char c) { return IsAlnum(c) || c == '.' || c == '-' || c == '_'; }));
    // What follows a NUL is not looked at there.
    const bool whole = literal.find('\0') == std::string::npos;
    return whole && inet_pton(AF_INET6, literal.c_str(), &parsed) == 1 && zoneIsGood
               ? std::string()
               : "what stands in brackets must be an IPv6 address";
}

std::string TakeHostName(std::string_view& text, std::string& host)
{
    if (std::count(text.begin(), text.end(), ':') > 1)
    {
        return "an IPv6 address stands in brackets, as in [2001:db8::1]:443";
    }
    host = std::string(text.substr(0, text.find(':')));
    text.remove_prefix(host.size());
    if (host.empty())
    {
        return "the host is missing";
    }
    const bool good =
        host.size() <= LongestHostName && host.front() != '-' &&
        std::all_of(host.begin(), host.end(), [](char c) { return IsAlnum(c) || c == '.' || c == '-' || c == '_'; });
    return good ? std::string() : "this is no host name or address";
}

} // namespace

std::string ParseBmcAddress(std::string_view text, BmcAddress& address)
{
    BmcAddress parsed;
    if (std::string error = ParseScheme(text, parsed); !error.empty())
    {
        return error;
    }
    if (text.find('@') != std::string_view::npos)
    {
        return "a user name or password does not belong in the address; give --user and --password-file";
    }
    if (text.find_first_of("?#") != std::string_view::npos)
    {
        return "an address has no query";
    }
    if (!text.empty() && text.back() == '/')
    {
        text.remove_suffix(1);
    }
    if (text.find('/') != std::string_view::npos)
    {
        return "an address has no path";
    }
    const bool literal = !text.empty() && text.front() == '[';
    if (std::string error = literal ? TakeIPv6(text, parsed.Host) : TakeHostName(text, parsed.Host); !error.empty())
    {
        return error;
    }
    if (!text.empty())
    {
        if (text.front() != ':')
        {
            return "only a port can follow the IPv6 address";
        }
        if (std::string error = ParsePort(text.substr(1), parsed.Port); !error.empty())
        {
            return error;
        }
    }
    address = std::move(parsed);
    return {};
}

std::string HostAndPort(const BmcAddress& address)
{
    const bool literal = address.Host.find(':') != std::string::npos;
    return (literal ? "[" + address.Host + "]" : address.Host) + ":" + std::to_string(address.Port);
}

std::string ParsePin(std::string_view text, std::string& digits)
{
    constexpr std::size_t Digits = 64;
    // The second is what "openssl x509 -fingerprint" prints, in whatever case.
    if (!TakePrefix(text, "sha256:") && !TakePrefix(text, "sha256 fingerprint="))
    {
        return "a pin reads sha256: and behind that 64 hexadecimal digits, with or without colons between the bytes";
    }
    std::string read;
    bool colon = true;
    for (const char c : text)
    {
        if (std::isxdigit(static_cast<unsigned char>(c)) != 0)
        {
            read.push_back(LowerAscii(c));
            colon = false;
        }
        else if (c != ':' || colon || read.size() % 2 != 0)
        {
            return "a pin has hexadecimal digits, and single colons between its bytes alone";
        }
        else
        {
            colon = true;
        }
    }
    if (read.size() != Digits || colon)
    {
        return "a pin has exactly 64 hexadecimal digits";
    }
    digits = std::move(read);
    return {};
}

} // namespace Tavrine::Tool
