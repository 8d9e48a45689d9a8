#pragma once

#include "FaultRule.h"

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace bmcsim
{

/// The rules in force and how often each has met its requests. May be used from any
/// thread.
class FaultPlan
{
  public:
    /// Puts other rules in force, counted anew.
    void Set(std::vector<FaultRule> rules);

    /// Counts the request with every rule that names it. @return what the first rule
    /// whose turn it is does to it.
    std::optional<Fault> Next(const std::string& method, const std::string& path);

  private:
    struct Counted
    {
        FaultRule Rule;
        std::uint64_t Met = 0;
    };

    std::mutex m_Mutex;
    std::vector<Counted> m_Rules;
};

} // namespace bmcsim
