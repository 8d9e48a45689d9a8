#include "CurlOption.h"

#include <new>
#include <string>

#include <fmt/format.h>

namespace Tavrine
{

void RequireSet(CURLoption option, CURLcode code)
{
    if (code == CURLE_OUT_OF_MEMORY)
    {
        throw std::bad_alloc();
    }
    if (code != CURLE_OK)
    {
        const curl_easyoption* const known = curl_easy_option_by_id(option);
        throw UnusableCurl(fmt::format("curl refuses the option {} ({})",
                                       known != nullptr ? known->name : std::to_string(option),
                                       curl_easy_strerror(code)));
    }
}

} // namespace Tavrine
