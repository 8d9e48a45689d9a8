#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Tavrine
{

/// The one place where requests of a client go.
struct Origin
{
    bool PlainHttp = false;
    std::string Host;
    std::uint16_t Port = 443;

    /// "https://host:port", an IPv6 literal in brackets.
    std::string Url() const;
    /// "host:port" for messages.
    std::string Text() const;
};

/// What is wrong with the name of a host; empty when it can stand in a URL.
std::string HostFault(std::string_view host);

/// What is wrong with a path as a request's target; empty when nothing is. It must
/// begin with "/" and hold neither blanks nor control characters, so that no text
/// of a BMC can choose another host or put a line into a request.
std::string PathFault(std::string_view path);

/// The path and query to which `reference` (RFC 3986, absolute or relative) leads
/// from `basePath`; nothing when it leads away from `origin` or is malformed.
std::optional<std::string> ResolveWithin(const Origin& origin, std::string_view basePath, std::string_view reference);

/// What is wrong with a header for a request; empty when nothing is.
std::string HeaderFault(std::string_view name, std::string_view value);

} // namespace Tavrine
