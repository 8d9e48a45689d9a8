#include "BmcSimulator.h"

#include "Certificate.h"
#include "FaultPlan.h"
#include "FaultRule.h"
#include "HttpServer.h"
#include "Machine.h"
#include "RedfishErrors.h"
#include "RequestLog.h"
#include "Service.h"
#include "State.h"

#include <fmt/format.h>

namespace bmcsim
{
namespace
{

/// The host that a client on this machine reaches a bound address by.
std::string HostInUrl(const std::string& address)
{
    if (address == "0.0.0.0")
    {
        return "127.0.0.1";
    }
    if (address == "::")
    {
        return "[::1]";
    }
    return address.find(':') == std::string::npos ? address : fmt::format("[{}]", address);
}

std::optional<Machine> MakeMachine(const SimulatorOptions& options, std::string& error)
{
    if (options.Attributes == 0)
    {
        return LoadMachine(options.MachineDir, error);
    }
    if (!options.MachineDir.empty() || options.Attributes > BmcSimulator::MaxAttributes)
    {
        error = options.MachineDir.empty()
                    ? fmt::format("a machine has at most {} attributes", BmcSimulator::MaxAttributes)
                    : fmt::format("machine folder '{}' has its own number of attributes", options.MachineDir);
        return std::nullopt;
    }
    return GenerateMachine(options.Attributes, error);
}

/// @return false when https was asked for and cannot be had.
bool MakeIdentity(const SimulatorOptions& options, TlsIdentity& identity, std::string& error)
{
    if (options.PlainHttp)
    {
        return true;
    }
    if (options.TlsCertFile.empty() != options.TlsKeyFile.empty())
    {
        error = "a certificate file needs a key file and a key file a certificate file";
        return false;
    }
    identity = options.TlsCertFile.empty() ? MakeSelfSigned(options.BindAddress, error)
                                           : LoadIdentity(options.TlsCertFile, options.TlsKeyFile, error);
    return identity.Context != nullptr;
}

/// @return nothing when a rule cannot be read or cannot happen.
std::optional<std::vector<FaultRule>> ReadRules(const std::vector<std::string>& texts, bool plainHttp,
                                                std::string& error)
{
    std::vector<FaultRule> rules;
    for (const std::string& text : texts)
    {
        auto rule = ParseFaultRule(text, error);
        if (!rule)
        {
            return std::nullopt;
        }
        if (plainHttp && rule->What.Kind == FaultKind::TlsCut)
        {
            error = fmt::format("fault rule '{}': over http there is no TLS to cut", text);
            return std::nullopt;
        }
        rules.push_back(std::move(*rule));
    }
    return rules;
}

} // namespace

class BmcSimulator::Impl
{
  public:
    static std::unique_ptr<Impl> Start(const SimulatorOptions& options, std::string& error)
    {
        auto machine = MakeMachine(options, error);
        if (!machine)
        {
            return nullptr;
        }
        auto impl = std::make_unique<Impl>();
        impl->m_PlainHttp = options.PlainHttp;
        if (!impl->SetFaultRules(options.FaultRules, error))
        {
            return nullptr;
        }
        if (!MakeIdentity(options, impl->m_Identity, error))
        {
            return nullptr;
        }
        impl->m_State = State::Open(*machine, options.StateFile, error);
        impl->m_Log = impl->m_State ? RequestLog::Open(options.AccessLogFile, error) : nullptr;
        if (!impl->m_Log)
        {
            return nullptr;
        }
        impl->m_Service =
            std::make_unique<Service>(std::move(*machine), *impl->m_State,
                                      ServiceOptions{options.User, options.Password, options.SessionTimeout,
                                                     options.RebootTime, options.AnswerWithTasks, options.TaskLooks});
        HttpServerHooks hooks;
        hooks.Handle = [&service = *impl->m_Service](const HttpRequest& request) { return service.Handle(request); };
        hooks.ChooseFault = [&plan = impl->m_Faults](const HttpRequest& request)
        { return plan.Next(request.Method, request.Path); };
        hooks.Refuse = RefusalPage;
        hooks.Record = [&log = *impl->m_Log](const HttpRecord& record) { log.Add(record); };
        impl->m_Server = HttpServer::Start(
            {options.BindAddress, options.Port, impl->m_Identity.Context, options.Latency}, std::move(hooks), error);
        if (!impl->m_Server)
        {
            return nullptr;
        }
        impl->m_Url = fmt::format("{}://{}:{}", options.PlainHttp ? "http" : "https", HostInUrl(options.BindAddress),
                                  impl->m_Server->Port());
        return impl;
    }

    bool SetFaultRules(const std::vector<std::string>& texts, std::string& error)
    {
        auto rules = ReadRules(texts, m_PlainHttp, error);
        if (rules)
        {
            m_Faults.Set(std::move(*rules));
        }
        return rules.has_value();
    }

    const TlsIdentity& Identity() const { return m_Identity; }
    const std::string& Url() const { return m_Url; }
    std::uint16_t Port() const { return m_Server->Port(); }
    std::vector<AccessRecord> Records() const { return m_Log->Records(); }

    std::string Trouble() const
    {
        const std::string state = m_State->Trouble();
        return state.empty() ? m_Log->Trouble() : state;
    }

  private:
    bool m_PlainHttp = false;
    FaultPlan m_Faults;
    TlsIdentity m_Identity;
    std::unique_ptr<State> m_State;
    std::unique_ptr<RequestLog> m_Log;
    std::unique_ptr<Service> m_Service;
    // Last, so that it stops before what its threads use goes away.
    std::unique_ptr<HttpServer> m_Server;
    std::string m_Url;
};

BmcSimulator::BmcSimulator(std::unique_ptr<Impl> impl) : m_Impl(std::move(impl)) {}
BmcSimulator::~BmcSimulator() = default;

std::unique_ptr<BmcSimulator> BmcSimulator::Start(const SimulatorOptions& options, std::string& error)
{
    auto impl = Impl::Start(options, error);
    return impl ? std::unique_ptr<BmcSimulator>(new BmcSimulator(std::move(impl))) : nullptr;
}

bool BmcSimulator::SetFaultRules(const std::vector<std::string>& rules, std::string& error)
{
    return m_Impl->SetFaultRules(rules, error);
}

std::string BmcSimulator::Url() const { return m_Impl->Url(); }
std::uint16_t BmcSimulator::Port() const { return m_Impl->Port(); }
std::string BmcSimulator::Fingerprint() const { return m_Impl->Identity().Fingerprint; }
std::string BmcSimulator::CertificatePem() const { return m_Impl->Identity().CertificatePem; }
std::vector<AccessRecord> BmcSimulator::AccessLog() const { return m_Impl->Records(); }
std::string BmcSimulator::Trouble() const { return m_Impl->Trouble(); }

} // namespace bmcsim
