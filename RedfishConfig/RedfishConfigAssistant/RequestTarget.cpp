#include "RequestTarget.h"

#include <algorithm>
#include <memory>

#include <curl/curl.h>

#include "PlainText.h"

namespace Tavrine
{

namespace
{

constexpr std::size_t MaxPathBytes = 8192;
constexpr std::size_t MaxHostBytes = 255;
constexpr std::size_t MaxHeaderBytes = 8192;

bool IsBlankOrControl(char c)
{
    const auto byte = static_cast<unsigned char>(c);
    return byte <= 0x20 || byte == 0x7f;
}

bool HasBlankOrControl(std::string_view text) { return std::any_of(text.begin(), text.end(), IsBlankOrControl); }

using UrlHandle = std::unique_ptr<CURLU, decltype(&curl_url_cleanup)>;

std::string Part(CURLU* url, CURLUPart part, unsigned int flags = 0)
{
    char* text = nullptr;
    if (curl_url_get(url, part, &text, flags) != CURLUE_OK)
    {
        return {};
    }
    std::string copy(text);
    curl_free(text);
    return copy;
}

/// Scheme, host and port in a form that can be compared.
std::string Site(CURLU* url)
{
    return Part(url, CURLUPART_SCHEME) + "://" + Part(url, CURLUPART_HOST) + ":" +
           Part(url, CURLUPART_PORT, CURLU_DEFAULT_PORT);
}

bool IsTokenCharacter(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
           std::string_view("!#$%&'*+-.^_`|~").find(c) != std::string_view::npos;
}

} // namespace

std::string Origin::Text() const
{
    const bool literal = Host.find(':') != std::string::npos;
    return (literal ? "[" + Host + "]" : Host) + ":" + std::to_string(Port);
}

std::string Origin::Url() const
{
    std::string place = Text();
    const std::size_t zone = place.find('%');
    if (zone != std::string::npos)
    {
        place.replace(zone, 1, "%25"); // RFC 6874
    }
    return (PlainHttp ? "http://" : "https://") + place;
}

std::string HostFault(std::string_view host)
{
    if (host.empty())
    {
        return "no host is named";
    }
    if (host.size() > MaxHostBytes)
    {
        return "the name of the host is too long";
    }
    if (HasBlankOrControl(host) || host.find_first_of("/\\?#@[]\"<>") != std::string_view::npos)
    {
        return "the name of the host holds a character that no name has";
    }
    return {};
}

std::string PathFault(std::string_view path)
{
    if (path.empty())
    {
        return "it is empty";
    }
    if (path.front() != '/')
    {
        return "it does not begin with \"/\"";
    }
    if (path.size() > MaxPathBytes)
    {
        return "it is longer than " + std::to_string(MaxPathBytes) + " bytes";
    }
    if (HasBlankOrControl(path))
    {
        return "it holds a blank or a control character";
    }
    return {};
}

std::optional<std::string> ResolveWithin(const Origin& origin, std::string_view basePath, std::string_view reference)
{
    if (reference.empty() || reference.size() > MaxPathBytes || HasBlankOrControl(reference))
    {
        return std::nullopt;
    }
    const UrlHandle base(curl_url(), &curl_url_cleanup);
    const UrlHandle target(curl_url(), &curl_url_cleanup);
    const std::string baseUrl = origin.Url() + std::string(basePath);
    if (!base || !target || curl_url_set(base.get(), CURLUPART_URL, baseUrl.c_str(), 0) != CURLUE_OK ||
        curl_url_set(target.get(), CURLUPART_URL, baseUrl.c_str(), 0) != CURLUE_OK ||
        curl_url_set(target.get(), CURLUPART_URL, std::string(reference).c_str(), 0) != CURLUE_OK)
    {
        return std::nullopt;
    }
    const bool namesUser =
        !Part(target.get(), CURLUPART_USER).empty() || !Part(target.get(), CURLUPART_PASSWORD).empty();
    if (namesUser || LowerAscii(Site(base.get())) != LowerAscii(Site(target.get())))
    {
        return std::nullopt;
    }
    const std::string query = Part(target.get(), CURLUPART_QUERY);
    const std::string path = Part(target.get(), CURLUPART_PATH) + (query.empty() ? "" : "?" + query);
    return PathFault(path).empty() ? std::optional(path) : std::nullopt;
}

std::string HeaderFault(std::string_view name, std::string_view value)
{
    if (name.empty() || !std::all_of(name.begin(), name.end(), IsTokenCharacter))
    {
        return "its name is malformed";
    }
    if (name.size() + value.size() > MaxHeaderBytes)
    {
        return "it is longer than " + std::to_string(MaxHeaderBytes) + " bytes";
    }
    const auto forbidden = [](char c) { return c != '\t' && c != ' ' && IsBlankOrControl(c); };
    if (std::any_of(value.begin(), value.end(), forbidden))
    {
        return "its value holds a control character";
    }
    return {};
}

} // namespace Tavrine
