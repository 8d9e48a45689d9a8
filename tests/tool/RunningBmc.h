#pragma once

#include <string>
#include <vector>

#include "ChildProcess.h"

namespace tooltest
{

/// A tavrine-bmcsim of its own process, listening on a free port.
class RunningBmc
{
  public:
    explicit RunningBmc(const std::vector<std::string>& arguments = {});

    /// "https://127.0.0.1:PORT"
    const std::string& Url() const { return m_Url; }
    std::string Port() const { return m_Url.substr(m_Url.rfind(':') + 1); }
    /// "sha256:HEX"; empty for http.
    const std::string& Pin() const { return m_Pin; }

    /// A launch of the tool with this BMC, its pin and its credentials.
    Launch Tool(std::vector<std::string> arguments) const;

  private:
    ChildProcess m_Process;
    std::string m_Url;
    std::string m_Pin;
};

} // namespace tooltest
