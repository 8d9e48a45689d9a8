#pragma once

#include <new>

#include <curl/curl.h>

namespace Tavrine
{

/// Sets an option of a transfer. One that curl finds no memory for must not be left out: it may be
/// what a change depends on, or whom to trust.
/// @throws std::bad_alloc
template <class Value> void SetOption(CURL* handle, CURLoption option, Value value)
{
    if (curl_easy_setopt(handle, option, value) == CURLE_OUT_OF_MEMORY)
    {
        throw std::bad_alloc();
    }
}

} // namespace Tavrine
