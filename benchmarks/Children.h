#pragma once

#include <map>
#include <memory>
#include <string>
#include <sys/types.h>
#include <vector>

namespace bench
{

/// What one process cost. PeakMiB counts what this program had in memory when it made
/// the process, so this program stays small.
struct Cost
{
    double WallMs = 0;
    double CpuMs = 0;
    double PeakMiB = 0;
};

using Words = std::vector<std::string>;

/// Runs a program to its end, its standard output thrown away.
/// @param variables  added to this process's environment.
/// @throws std::runtime_error with what it wrote to standard error when it ends with
///         anything but 0.
Cost RunMeasured(const Words& command, const std::map<std::string, std::string>& variables = {});

/// One request as the simulator's access log tells it.
struct Request
{
    std::string Method;
    std::string Path;
    int Status = 0;
    std::size_t Bytes = 0;
    int Connection = 0;
};

/// A tavrine-bmcsim on a free port. Killed and waited for when this goes.
class Simulator
{
  public:
    /// @param log  file that receives the access log.
    Simulator(const std::string& program, const Words& arguments, std::string log);
    Simulator(const Simulator&) = delete;
    Simulator& operator=(const Simulator&) = delete;
    ~Simulator();

    const std::string& Url() const { return m_Url; }
    /// "sha256:HEX"; empty for http.
    const std::string& Pin() const { return m_Pin; }
    /// The requests since the last call; waits until a session was closed.
    std::vector<Request> TakeRequests();

  private:
    std::string m_Log;
    std::streamoff m_Read = 0;
    pid_t m_Id = -1;
    std::string m_Url;
    std::string m_Pin;
};

} // namespace bench
