#pragma once

#include <string>
#include <sys/types.h>

namespace soak
{

/// The built-in machine, simulated in a process of its own, so that this one's memory is the
/// library's. It is told what goes wrong while it runs.
class SoakBmc
{
  public:
    /// Before this process has threads.
    SoakBmc();
    SoakBmc(const SoakBmc&) = delete;
    SoakBmc& operator=(const SoakBmc&) = delete;
    ~SoakBmc();

    const std::string& Port() const { return m_Port; }
    /// Puts this rule alone in force, counted anew; none where it is empty.
    void SetFaultRule(const std::string& rule) const;

  private:
    int m_Socket = -1;
    pid_t m_Id = -1;
    std::string m_Port;
};

} // namespace soak
