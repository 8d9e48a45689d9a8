#pragma once

#include <stdexcept>

#include <curl/curl.h>

namespace Tavrine
{

/// The curl of this machine cannot do what a request depends on, which then must not go out. The text is the end of a
/// sentence.
class UnusableCurl : public std::runtime_error
{
  public:
    using std::runtime_error::runtime_error;
};

/// @throws std::bad_alloc, UnusableCurl for any code but CURLE_OK
void RequireSet(CURLoption option, CURLcode code);

/// Sets an option of a transfer. One that curl does not take must not be left out: it may be
/// what a change depends on, or whom to trust.
/// @throws std::bad_alloc, UnusableCurl
template <class Value> void SetOption(CURL* handle, CURLoption option, Value value)
{
    RequireSet(option, curl_easy_setopt(handle, option, value));
}

/// Sets an option that a transfer can go without where curl does not know it.
/// @throws std::bad_alloc, UnusableCurl
template <class Value> void WishOption(CURL* handle, CURLoption option, Value value)
{
    const CURLcode code = curl_easy_setopt(handle, option, value);
    if (code != CURLE_UNKNOWN_OPTION && code != CURLE_NOT_BUILT_IN)
    {
        RequireSet(option, code);
    }
}

} // namespace Tavrine
