#include "GivenOptions.h"

#include <cstdarg>

#include <dlfcn.h>

namespace
{

thread_local resttest::GivenOptions* listener = nullptr;

} // namespace

/// Stands before curl's, and leads on to it. A number is handed over as wide as a pointer.
extern "C" CURLcode(curl_easy_setopt)(CURL* handle, CURLoption option, ...)
{
    std::va_list values;
    va_start(values, option);
    void* const value = va_arg(values, void*);
    va_end(values);
    if (listener != nullptr)
    {
        listener->Take(option, reinterpret_cast<std::intptr_t>(value));
    }
    static const auto original =
        reinterpret_cast<CURLcode (*)(CURL*, CURLoption, ...)>(dlsym(RTLD_NEXT, "curl_easy_setopt"));
    return original(handle, option, value);
}

namespace resttest
{

GivenOptions::GivenOptions(CURLoption option) : m_Option(option) { listener = this; }

GivenOptions::~GivenOptions() { listener = nullptr; }

void GivenOptions::Take(CURLoption option, std::intptr_t value)
{
    if (option == m_Option)
    {
        m_Values.push_back(value);
    }
}

} // namespace resttest
