// change_setting HOST PORT USER SHA256 SETTING [VALUE]
// Shows a setting, or changes it. The password is what BMC_PASSWORD holds.
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>

#include "BiosRedfishConfigProc.h"
#include "BmcConnection.h"

namespace
{

/// 0, 1 for what is in force only after a reboot, and 4 for a password are success.
bool IsGood(const RedfishConfigResult& result) { return result == 0 || result == 1 || result == 4; }

/// A bare result has no text of its own; ResultMessageTable has those of the codes.
int Fail(RedfishConfigResult result)
{
    std::cerr << "code " << result.ErrorCode() << ": " << result.ErrorMsg() << "\n";
    return 1;
}

int Show(const TavrineConnection::ConnectionInfo& bmc, const std::string& setting)
{
    Tavrine::BiosRedfishConfigProc bios(bmc, Tavrine::SystemTypeUefi, {});
    Tavrine::SettingStringMap values;
    const RedfishConfigResult result = bios.QuerySettingValue(setting, values);
    for (const auto& [name, value] : values)
    {
        std::cout << name << " is " << value << "\n";
    }
    return IsGood(result) ? 0 : Fail(result);
}

int Change(const TavrineConnection::ConnectionInfo& bmc, const std::string& setting, const std::string& value)
{
    Tavrine::BiosRedfishConfigProc bios(bmc, Tavrine::SystemTypeUefi, {});
    // Checked against the attribute registry and kept; FlushChanges sends what was kept.
    RedfishConfigResult result = bios.PatchSettingNewValue(setting, value, true);
    if (IsGood(result))
    {
        result = bios.FlushChanges();
    }
    for (RedfishConfigResult& error : bios.m_ErrorList)
    {
        std::cerr << error.ErrorSetting() << ": " << error.ErrorMsg() << "\n";
    }
    if (!IsGood(result))
    {
        return Fail(result);
    }
    // An object keeps what it has read, so a new one looks again.
    Tavrine::BiosRedfishConfigProc fresh(bmc, Tavrine::SystemTypeUefi, {});
    Tavrine::SettingCompareMap pending;
    result = fresh.CompareSettingPendingValues(pending, setting);
    for (const auto& [name, values] : pending)
    {
        std::cout << name << " is " << values.first << " and becomes " << values.second << "\n";
    }
    return result == 0 || result == 2 ? 0 : Fail(result); // 2: nothing waits, as with a value that was in place
}

} // namespace

int main(int argc, char** argv)
{
    const char* password = std::getenv("BMC_PASSWORD");
    if (argc < 6 || argc > 7 || password == nullptr)
    {
        std::cerr << "BMC_PASSWORD=... change_setting HOST PORT USER SHA256 SETTING [VALUE]\n";
        return 2;
    }
    TavrineConnection::ConnectionInfo info;
    info.Host = argv[1];
    info.Port = static_cast<std::uint16_t>(std::stoi(argv[2]));
    info.User = argv[3];
    info.Password = password;
    TavrineConnection::ConnectionProfile profile;
    profile.PinnedSha256 = argv[4];

    // Outlives everything that is made from its record.
    TavrineConnection::BmcConnection connection(info, profile);
    const RedfishConfigResult opened = connection.OpenSession();
    if (opened != 0 && opened != 11) // 11: a BMC without sessions is asked with the password each time
    {
        return Fail(opened);
    }
    return argc == 6 ? Show(connection.Info(), argv[5]) : Change(connection.Info(), argv[5], argv[6]);
}
