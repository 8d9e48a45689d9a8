#pragma once

#include <map>
#include <memory>
#include <string>

#include "ChildProcess.h"

namespace tooltest
{

/// A service over plain HTTP without sessions that answers GET from a table, and
/// everything else with 404.
class FakeBmc
{
  public:
    explicit FakeBmc(const std::map<std::string, std::string>& resources);
    FakeBmc(const FakeBmc&) = delete;
    FakeBmc& operator=(const FakeBmc&) = delete;
    ~FakeBmc();

    std::string Url() const;
    /// A launch of the tool with this BMC.
    Launch Tool(const std::vector<std::string>& arguments) const;

  private:
    class Impl;
    std::unique_ptr<Impl> m_Impl;
};

} // namespace tooltest
