#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace bmcsim
{

/// What a simulated BMC is made of. Everything has a usable default.
struct SimulatorOptions
{
    std::string BindAddress = "127.0.0.1";
    /// 0: any free port.
    std::uint16_t Port = 0;
    /// Serve http instead of https.
    bool PlainHttp = false;
    /// PEM files; where both are empty a self-signed certificate for 127.0.0.1 and
    /// localhost is made in memory.
    std::string TlsCertFile;
    std::string TlsKeyFile;
    std::string User = "admin";
    std::string Password = "password";
    /// Folder with bios.json, registry.LANG.json and, where it has them,
    /// settings.json, registryfile.json and protected.json; or a tree of index.json
    /// files. Empty: the built-in machine.
    std::string MachineDir;
    /// Not 0: a machine of so many attributes is made up, for measurements.
    unsigned int Attributes = 0;
    /// File that keeps the state (values in force and pending) from run to run;
    /// made when it is missing. Empty: each run starts afresh.
    std::string StateFile;
    /// File that receives one JSON line a request. Empty: none.
    std::string AccessLogFile;
    /// Pause before each answer.
    std::chrono::milliseconds Latency{0};
    /// A session that was not used for so long is gone.
    std::chrono::milliseconds SessionTimeout{std::chrono::minutes(30)};
    /// How long a start of the system takes; what is pending comes into force at its
    /// end. 0: within the request that asks for the reset.
    std::chrono::milliseconds RebootTime{0};
    /// Changes and actions are carried out, but answered with a task (DSP0266): its
    /// monitor tells so many times that it is running, and then the answer.
    bool AnswerWithTasks = false;
    unsigned int TaskLooks = 2;
    /// What goes wrong, as FaultHelp() tells; docs/simulator-faults.md tells more.
    std::vector<std::string> FaultRules;
};

/// One request as the access log tells it.
struct AccessRecord
{
    std::string Method;
    /// As it stood in the request line, with its query.
    std::string Path;
    /// 0: a fault kept the whole answer back.
    int Status = 0;
    std::size_t Bytes = 0;
    /// Counted from 1 in the order in which TCP connections were seen.
    unsigned int Connection = 0;
};

/// How a fault rule is written, with all that can happen, a line each.
std::string FaultHelp();

/// One line that quotes the rule and tells what is wrong with it; empty when nothing is.
std::string FaultRuleError(const std::string& rule);

/// What a program needs of a simulator that it loads when it is asked for (SimulatorModule.h).
class EmbeddedSimulator
{
  public:
    virtual ~EmbeddedSimulator() = default;
    virtual std::uint16_t Port() const = 0;
    /// SHA-256 of the certificate in DER, 64 small hexadecimal digits; empty for http.
    virtual std::string Fingerprint() const = 0;
    /// Empty when all is well, else what was lost (a state file that could not be
    /// written, for example).
    virtual std::string Trouble() const = 0;
};

/// A Redfish service (DSP0266) of one simulated server, in threads of its own.
/// Stops when it is destroyed. All operations may be called from any thread.
class BmcSimulator final : public EmbeddedSimulator
{
  public:
    static constexpr unsigned int MaxAttributes = 100'000;

    /// @param error  one line that names what failed (a file, the port).
    /// @return empty on failure; otherwise the simulator, listening.
    static std::unique_ptr<BmcSimulator> Start(const SimulatorOptions& options, std::string& error);
    ~BmcSimulator() override;
    BmcSimulator(const BmcSimulator&) = delete;
    BmcSimulator& operator=(const BmcSimulator&) = delete;

    /// Puts other fault rules in force, counted anew; none at all where the list is empty.
    /// @return false when one of them cannot be read; those in force then stay.
    bool SetFaultRules(const std::vector<std::string>& rules, std::string& error);

    /// "https://127.0.0.1:PORT" or the same with http.
    std::string Url() const;
    std::uint16_t Port() const override;
    std::string Fingerprint() const override;
    /// The server's certificate; empty for http.
    std::string CertificatePem() const;
    std::vector<AccessRecord> AccessLog() const;
    std::string Trouble() const override;

  private:
    class Impl;
    explicit BmcSimulator(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> m_Impl;
};

} // namespace bmcsim
