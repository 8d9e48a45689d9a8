// Paths and references that a BMC sends: none leads away from the one place where requests
// go, and none puts a line into a request.
#include <algorithm>
#include <memory>

#include <curl/curl.h>

#include "Oracle.h"
#include "RequestTarget.h"

using namespace fuzztest;
using namespace Tavrine;

namespace
{

const Origin origins[] = {{false, "bmc.example", 443}, {true, "192.0.2.7", 8080}, {false, "2001:db8::1", 8443}};

using UrlHandle = std::unique_ptr<CURLU, decltype(&curl_url_cleanup)>;

std::string Part(const UrlHandle& url, CURLUPart part)
{
    char* text = nullptr;
    if (curl_url_get(url.get(), part, &text, CURLU_DEFAULT_PORT) != CURLUE_OK)
    {
        return {};
    }
    std::string copy(text);
    curl_free(text);
    return copy;
}

/// The host and port to which the client itself would go for a path.
void CheckPlace(const Origin& origin, const std::string& path)
{
    const UrlHandle url(curl_url(), &curl_url_cleanup);
    const std::string whole = origin.Url() + path;
    if (curl_url_set(url.get(), CURLUPART_URL, whole.c_str(), 0) != CURLUE_OK)
    {
        return; // never sent
    }
    std::string host = Part(url, CURLUPART_HOST);
    const bool literal = host.size() > 2 && host.front() == '[';
    host = literal ? host.substr(1, host.size() - 2) : host;
    FUZZ_REQUIRE(host == origin.Host, whole);
    FUZZ_REQUIRE(Part(url, CURLUPART_PORT) == std::to_string(origin.Port), whole);
    FUZZ_REQUIRE(Part(url, CURLUPART_SCHEME) == (origin.PlainHttp ? "http" : "https"), whole);
    FUZZ_REQUIRE(Part(url, CURLUPART_USER).empty(), whole);
}

/// A reference that names a host names this one.
void CheckSameHost(const Origin& origin, std::string reference)
{
    reference = Lowered(reference);
    const std::string scheme = origin.PlainHttp ? "http:" : "https:";
    const std::size_t start = reference.starts_with(scheme + "//") ? scheme.size() : 0;
    const std::size_t end = reference.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789+-.");
    // A word of more letters than any scheme has is taken for the start of a path.
    constexpr std::size_t longest = 30;
    const bool hasScheme = end != std::string::npos && end > 0 && end <= longest &&
                           reference.compare(end, 3, "://") == 0 && reference.front() >= 'a' &&
                           reference.front() <= 'z';
    FUZZ_REQUIRE(start != 0 || !hasScheme, reference);
    if (reference.compare(start, 2, "//") != 0)
    {
        return;
    }
    // An empty user with an empty password is none.
    const std::size_t behind = start + 2 + (reference.compare(start + 2, 2, ":@") == 0 ? 1 : 0);
    const std::size_t from = behind + (reference.compare(behind, 1, "@") == 0 ? 1 : 0);
    const std::string authority = reference.substr(from, reference.find_first_of("/?#", from) - from);
    const std::size_t colon = authority.rfind(':');
    const std::string host = authority.substr(0, colon);
    // No digits are the usual port, and zeros in front of them are nothing.
    const std::string digits = colon == std::string::npos ? std::string() : authority.substr(colon + 1);
    const std::string port = digits.substr(std::min(digits.find_first_not_of('0'), digits.size()));
    // Literals have many forms, and letters can be escaped.
    const bool plain = authority.find_first_not_of("0123456789abcdefx.:[]") != std::string::npos &&
                       authority.find('%') == std::string::npos;
    const std::string usual = origin.PlainHttp ? "80" : "443";
    FUZZ_REQUIRE(!plain || (host == origin.Host && (port.empty() ? usual : port) == std::to_string(origin.Port)),
                 reference);
}

/// What a reference led to is a path of its own. It leads there again, bytes beyond ASCII
/// escaped at most.
void CheckStays(const Origin& origin, const std::string& base, const std::string& path)
{
    if (path.starts_with("//"))
    {
        return; // as a reference it names a host
    }
    const std::optional<std::string> again = ResolveWithin(origin, base, path);
    FUZZ_REQUIRE(again || path.size() * 3 > 8192, path);
    FUZZ_REQUIRE(!again || again->starts_with("//") || ResolveWithin(origin, base, *again) == again, path);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // A reference, the path that it stands on, a host, and a header's name and value.
    const std::vector<std::string_view> parts = Parts(Text(data, size), 5);
    const bool usable = PathFault(parts[0]).empty();
    FUZZ_REQUIRE(!usable || (parts[0].front() == '/' && OnOneLine(parts[0]) &&
                             parts[0].find(' ') == std::string_view::npos && parts[0].size() <= 8192),
                 parts[0]);
    const std::string base = PathFault(parts[1]).empty() ? std::string(parts[1]) : "/redfish/v1/Systems";
    for (const Origin& origin : origins)
    {
        if (usable)
        {
            CheckPlace(origin, std::string(parts[0]));
        }
        if (const std::optional<std::string> path = ResolveWithin(origin, base, parts[0]))
        {
            FUZZ_REQUIRE(PathFault(*path).empty(), *path);
            CheckPlace(origin, *path);
            CheckStays(origin, base, *path);
            CheckSameHost(origin, std::string(parts[0]));
        }
    }
    if (HostFault(parts[2]).empty())
    {
        FUZZ_REQUIRE(!parts[2].empty() && parts[2].size() <= 255 && OnOneLine(parts[2]), parts[2]);
        FUZZ_REQUIRE(parts[2].find_first_of(" /?#@") == std::string_view::npos, parts[2]);
    }
    if (HeaderFault(parts[3], parts[4]).empty())
    {
        FUZZ_REQUIRE(!parts[3].empty() && OnOneLine(parts[3]) && parts[3].find(':') == std::string_view::npos,
                     parts[3]);
        FUZZ_REQUIRE(parts[4].find_first_of("\r\n") == std::string_view::npos, parts[4]);
        FUZZ_REQUIRE(parts[4].find('\0') == std::string_view::npos, parts[4]);
    }
    return 0;
}
