#pragma once

#include <cstdint>
#include <vector>

#include <curl/curl.h>

namespace resttest
{

/// Listens to the numbers that this thread gives its transfers for an option of curl. One listens at a time.
class GivenOptions
{
  public:
    explicit GivenOptions(CURLoption option);
    GivenOptions(const GivenOptions&) = delete;
    GivenOptions& operator=(const GivenOptions&) = delete;
    ~GivenOptions();

    /// In the order in which they were given.
    const std::vector<std::intptr_t>& Values() const { return m_Values; }
    void Take(CURLoption option, std::intptr_t value);

  private:
    CURLoption m_Option;
    std::vector<std::intptr_t> m_Values;
};

} // namespace resttest
