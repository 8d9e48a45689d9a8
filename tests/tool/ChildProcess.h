#pragma once

#include <atomic>
#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

namespace tooltest
{

/// What `pending` without names prints where no value waits.
inline constexpr const char* NothingPending =
    "Nothing is pending; passwords and protected settings are not looked at.\n";

/// How a child is started. Its environment is that of this process without the
/// tool's own variables, with no configuration file to be found, and with Variables.
/// It has a session of its own and so no controlling terminal.
struct Launch
{
    std::string Program = TAVRINE_PROGRAM;
    std::vector<std::string> Arguments;
    std::map<std::string, std::string> Variables;
    std::string Input;
    /// Where standard output goes instead of a pipe that is read to its end.
    std::string OutputFile;
    /// The reader of standard output goes away after so many bytes.
    std::size_t ReadAtMost = std::string::npos;
    bool CloseOutput = false;
    /// Standard output is a pipe of this many bytes whose writer is not made to wait.
    int NonBlockingOutput = 0;
};

struct Finished
{
    /// Exit status, or 128 and the signal that killed it, as a shell tells it.
    int Status = -1;
    bool Killed = false;
    std::string Output;
    std::string Errors;
};

/// A running child with its pipes. Killed and waited for when this goes.
class ChildProcess
{
  public:
    explicit ChildProcess(const Launch& launch);
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess();

    pid_t Id() const { return m_Id; }
    /// One line of standard output without its end; empty when there is no more.
    std::string ReadOutputLine();
    /// Bytes of standard output that wait to be read.
    int UnreadOutput() const;
    /// From any thread, also while another waits, as long as the child cannot end by itself
    /// meanwhile: its number may be another's then. Nothing once it was waited for.
    void Signal(int signal) const;
    /// Takes in what the child writes until it ends. One that does not end within a
    /// minute is killed.
    Finished Wait();

  private:
    void ReadFrom(int& descriptor, std::string& text, std::size_t atMost);

    Launch m_Launch;
    std::atomic<pid_t> m_Id = -1;
    int m_Output = -1;
    int m_Errors = -1;
    Finished m_Finished;
};

Finished RunToEnd(const Launch& launch);

/// The variables that a child is started with, "NAME=VALUE".
std::vector<std::string> ChildEnvironment(const std::map<std::string, std::string>& variables);

} // namespace tooltest
