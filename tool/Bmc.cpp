#include "Bmc.h"

#include <chrono>
#include <exception>
#include <filesystem>
#include <utility>

#include <fmt/format.h>

#include "BiosRedfishConfigProc.h"
#include "BiosSettingManager.h"
#include "EmbeddedSimulator.h"
#include "InputFile.h"
#include "Options.h"
#include "Password.h"
#include "SettingNames.h"
#include "Signals.h"
#include "StandardStreams.h"

namespace Tavrine::Tool
{
namespace
{

/// Milliseconds; doubled for each further one.
constexpr std::uint32_t FirstRetryPause = 200;

std::optional<Failure> CheckReadable(const char* what, const std::string& path, Reading reading)
{
    if (path.empty())
    {
        return std::nullopt;
    }
    const std::string error = WhyNotReadable(path, reading);
    return error.empty() ? std::nullopt
                         : std::optional(Failure{CodeOpenFile, std::string("Unable to read the ") + what + " " + path +
                                                                   ": " + error});
}

/// The library answers 26 where no values of a group can be had, whatever the reason. This tells a BMC that cannot be
/// reached or is not ready from one that refuses.
class GroupTellingProc : public BiosRedfishConfigProc
{
  public:
    GroupTellingProc(const TavrineConnection::BmcConnection& connection, ConfigurateSupportedSystemType systemType,
                     const Config_Options& options)
        : BiosRedfishConfigProc(connection.Info(), systemType, options), m_Connection(connection)
    {
    }

    RedfishConfigResult QueryGroupSettingValues(SettingStringMap& values) override
    {
        const std::uint64_t before = m_Connection.LastFailure().Number;
        const RedfishConfigResult result = BiosRedfishConfigProc::QueryGroupSettingValues(values);
        const TavrineConnection::RequestFailure last = m_Connection.LastFailure();
        return result == CodeQuery && last.Number != before ? last.Result : result;
    }

  private:
    const TavrineConnection::BmcConnection& m_Connection;
};

/// Empty for an empty one.
std::string AbsolutePath(const std::string& path)
{
    return path.empty() ? path : std::filesystem::absolute(path).string();
}

} // namespace

Bmc::Bmc(const Options& options) : m_Options(options) {}

Bmc::~Bmc()
{
    try
    {
        std::vector<std::string> lost;
        Close(lost);
    }
    catch (const std::exception&)
    {
        // It may go because memory has run out, and nobody is left to be told. The connection logs out as it goes.
    }
}

std::vector<std::string> Bmc::Warnings() const
{
    std::vector<std::string> notes;
    if (!m_Options.Simulate && m_Options.Bmc.PlainHttp)
    {
        notes.emplace_back("warning: http: the password and all settings go over the network in clear");
    }
    if (m_Options.Insecure)
    {
        notes.emplace_back("warning: --insecure: the certificate of the BMC is not verified");
    }
    return notes;
}

std::optional<Failure> Bmc::Prepare()
{
    std::optional<Failure> failure =
        CheckReadable("debug configuration file", m_Options.DebugConfigFile, Reading::Often);
    if (!failure)
    {
        failure = CheckReadable("certificate file", m_Options.CaFile, Reading::Once);
    }
    if (!failure && m_Options.Simulate)
    {
        failure = StartSimulator();
    }
    return failure ? failure : MakeConnection();
}

std::optional<Failure> Bmc::StartSimulator()
{
    bmcsim::SimulatorOptions simulated;
    simulated.MachineDir = m_Options.MachineDir;
    simulated.StateFile = m_Options.StateFile;
    std::string error;
    m_Simulator = Tool::StartSimulator(simulated, error);
    return m_Simulator ? std::nullopt
                       : std::optional(Failure{CodeExternal, "Unable to start the simulated BMC: " + error});
}

TavrineConnection::ConnectionInfo Bmc::Record() const
{
    TavrineConnection::ConnectionInfo info;
    info.Host = m_Simulator ? "127.0.0.1" : m_Options.Bmc.Host;
    info.Port = m_Simulator ? m_Simulator->Port() : m_Options.Bmc.Port;
    info.User = m_Simulator ? bmcsim::SimulatorOptions().User : m_Options.User;
    info.Retries = m_Options.Retries;
    info.RetryPause = FirstRetryPause;
    info.RequestTimeout = m_Options.Timeout.value_or(info.RequestTimeout);
    if (!m_Simulator && m_Options.Bmc.PlainHttp)
    {
        info.Flags |= TavrineConnection::FlagPlainHttp;
    }
    if (!m_Simulator && m_Options.Insecure)
    {
        info.Flags |= TavrineConnection::FlagNoTlsVerify;
    }
    return info;
}

std::optional<Failure> Bmc::MakeConnection()
{
    TavrineConnection::ConnectionInfo info = Record();
    PasswordText password;
    if (m_Simulator)
    {
        password.Text() = bmcsim::SimulatorOptions().Password;
    }
    else if (!info.User.empty())
    {
        if (auto failure =
                FindPassword(m_Options.PasswordFile, info.User + " at " + HostAndPort(m_Options.Bmc), password))
        {
            return failure;
        }
    }
    TavrineConnection::ConnectionProfile profile;
    profile.CaFile = AbsolutePath(m_Options.CaFile); // what a connection is trusted by is told apart by this path
    profile.PinnedSha256 = m_Simulator ? m_Simulator->Fingerprint() : m_Options.Pin;
    profile.Language = m_Options.Language;
    profile.RegistryFolder = AbsolutePath(m_Options.CacheDir);
    profile.LongestRequest = m_Options.Timeout.value_or(0);
    profile.BusyPatience = m_Options.WaitReady;
    profile.OnBusy = [name = Name()](std::chrono::milliseconds pause)
    {
        WriteError(fmt::format("tavrine: {} is busy, trying again in {:g} s …\n", name,
                               std::chrono::duration<double>(pause).count()));
    };
    info.Password = password.Text();
    m_Connection = std::make_unique<TavrineConnection::BmcConnection>(info, profile);
    Wipe(info.Password);
    return std::nullopt;
}

std::optional<Failure> Bmc::OpenSession(std::vector<std::string>& notes)
{
    if (m_Connection->Info().User.empty())
    {
        return std::nullopt;
    }
    const RedfishConfigResult opened = m_Connection->OpenSession();
    if (opened == CodeSucceed || opened == CodeNotSupported) // a BMC without sessions: basic authentication serves
    {
        return std::nullopt;
    }
    Failure failure = FailureOf(opened);
    const TavrineConnection::Traffic traffic = m_Connection->Counters();
    const bool isSilent = m_Options.Bmc.PlainHttp && traffic.Connections > 0 && traffic.BytesReceived == 0;
    if (isSilent && StopSignal() == 0 && failure.Message.find("https") == std::string::npos)
    {
        notes.emplace_back("hint: nothing came back over http; the port may want https");
    }
    return failure;
}

void Bmc::Close(std::vector<std::string>& notes)
{
    if (m_Connection)
    {
        const RedfishConfigResult closed = m_Connection->CloseSession();
        if (!IsSuccess(closed.ErrorCode()))
        {
            notes.push_back("warning: the session on the BMC could not be closed: " + FailureOf(closed).Message);
        }
        m_Connection.reset();
    }
    if (m_Simulator)
    {
        if (std::string trouble = m_Simulator->Trouble(); !trouble.empty())
        {
            notes.push_back("warning: simulated BMC: " + std::move(trouble));
        }
        m_Simulator.reset();
    }
}

std::unique_ptr<RedfishConfigProc> Bmc::Front(OutputForm form) const
{
    return MakeFront(form, m_Options.SystemType, m_Options.Hex);
}

std::unique_ptr<RedfishConfigProc> Bmc::DecimalFront() const
{
    return MakeFront(OutputForm::Text, m_Options.SystemType, false);
}

std::unique_ptr<RedfishConfigProc> Bmc::StandardFront(OutputForm form) const
{
    std::unique_ptr<RedfishConfigProc> standard = MakeFront(form, SystemTypeBios, m_Options.Hex);
    const Prefixes prefixes = PrefixesOf(m_Options);
    standard->SetPrefix(prefixes.First, prefixes.Second);
    return standard;
}

RedfishConfigProc& Bmc::Keep(std::unique_ptr<RedfishConfigProc> front)
{
    return *m_Kept.emplace_back(std::move(front));
}

std::unique_ptr<RedfishConfigProc> Bmc::MakeFront(OutputForm form, std::int32_t systemType, bool hex) const
{
    Config_Options options;
    options.HexValueMode = hex;
    options.allowProtectedSettings = m_Options.Protected;
    options.LegacyNameMode = m_Options.LegacyNames;
    options.OutputFormat = FormatOf(form);
    auto front = std::make_unique<GroupTellingProc>(*m_Connection,
                                                    static_cast<ConfigurateSupportedSystemType>(systemType), options);
    if (!m_Options.FirstPrefix.empty())
    {
        front->SetPrefix(m_Options.FirstPrefix, m_Options.SecondPrefix);
    }
    if (!m_Options.DebugConfigFile.empty())
    {
        front->SetDebugConfigFile(m_Options.DebugConfigFile);
    }
    if (m_Registry)
    {
        GiveRegistry(*front, *m_Registry);
    }
    return front;
}

ManagerReader Bmc::SettingManagers(ManagerValues wanted)
{
    return [this, wanted](RedfishConfigProc& front, std::unique_ptr<RedfishConfigSettingManager>& manager)
    {
        RedfishConfigResult result = ReadSettingManager(front, manager, wanted);
        if (IsSuccess(result.ErrorCode()) && !m_Registry)
        {
            m_Registry = std::make_unique<RedfishConfigSettingManager>("", false, Config_Options());
            m_Registry->TakeRegistryOf(*manager);
        }
        return result;
    };
}

std::string Bmc::Name() const { return m_Simulator ? "the simulated BMC" : HostAndPort(m_Options.Bmc); }

} // namespace Tavrine::Tool
