// Addresses of BMCs and pins of certificates: what is taken leads, by another reader of
// URLs, to that host and port and nothing else; written again it reads the same.
#include "BmcAddress.h"

#include <memory>

#include <curl/curl.h>

#include "Oracle.h"

using namespace fuzztest;
using namespace Tavrine::Tool;

namespace
{

std::string Part(CURLU* url, CURLUPart part)
{
    char* text = nullptr;
    if (curl_url_get(url, part, &text, CURLU_DEFAULT_PORT) != CURLUE_OK)
    {
        return {};
    }
    std::string copy(text);
    curl_free(text);
    return copy;
}

void CheckAgainstCurl(const BmcAddress& address, const std::string& url)
{
    const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> read(curl_url(), &curl_url_cleanup);
    if (address.Host.find('%') != std::string::npos)
    {
        return; // zones are written in another way there
    }
    if (curl_url_set(read.get(), CURLUPART_URL, url.c_str(), 0) != CURLUE_OK)
    {
        return; // it knows fewer hosts
    }
    const std::string host = Part(read.get(), CURLUPART_HOST);
    const std::string bare = host.starts_with('[') ? host.substr(1, host.size() - 2) : host;
    // It writes address literals in their one normal form.
    const bool literal = address.Host.find_first_not_of("0123456789abcdefABCDEFxX.:") == std::string::npos;
    FUZZ_REQUIRE(literal || Lowered(bare) == Lowered(address.Host), url);
    FUZZ_REQUIRE(Part(read.get(), CURLUPART_PORT) == std::to_string(address.Port), url);
    FUZZ_REQUIRE(Part(read.get(), CURLUPART_SCHEME) == (address.PlainHttp ? "http" : "https"), url);
    FUZZ_REQUIRE(Part(read.get(), CURLUPART_USER).empty() && Part(read.get(), CURLUPART_QUERY).empty(), url);
    FUZZ_REQUIRE(Part(read.get(), CURLUPART_PATH) == "/", url);
}

void CheckAddress(std::string_view text)
{
    BmcAddress address{"kept", 7, true};
    const std::string error = ParseBmcAddress(text, address);
    if (!error.empty())
    {
        FUZZ_REQUIRE(address.Host == "kept" && address.Port == 7 && address.PlainHttp, text);
        FUZZ_REQUIRE(OnOneLine(error), error);
        return;
    }
    FUZZ_REQUIRE(!address.Host.empty() && address.Port != 0 && OnOneLine(address.Host), text);
    FUZZ_REQUIRE(address.Host.find_first_of(" /?#@[]\\") == std::string::npos, text);
    const std::string url = (address.PlainHttp ? "http://" : "https://") + HostAndPort(address);
    BmcAddress again;
    FUZZ_REQUIRE(ParseBmcAddress(url, again).empty(), url);
    FUZZ_REQUIRE(again.Host == address.Host && again.Port == address.Port && again.PlainHttp == address.PlainHttp, url);
    CheckAgainstCurl(address, url);
    // As it was written, so that the ports that nobody writes are the right ones.
    CheckAgainstCurl(address, (text.find("://") == std::string_view::npos ? "https://" : "") + std::string(text));
}

void CheckPin(std::string_view text)
{
    std::string digits = "kept";
    const std::string error = ParsePin(text, digits);
    if (!error.empty())
    {
        FUZZ_REQUIRE(digits == "kept" && OnOneLine(error), text);
        return;
    }
    FUZZ_REQUIRE(digits.size() == 64 && digits.find_first_not_of("0123456789abcdef") == std::string::npos, text);
    std::string again;
    FUZZ_REQUIRE(ParsePin("sha256:" + digits, again).empty() && again == digits, text);
    // Without the colons it is the text itself.
    std::string bare;
    for (const char c : Lowered(text).substr(7))
    {
        bare.append(c == ':' ? "" : std::string(1, c));
    }
    FUZZ_REQUIRE(bare == digits, text);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text = Text(data, size);
    CheckAddress(text);
    CheckPin(text);
    CheckPin("sha256:" + std::string(text));
    return 0;
}
