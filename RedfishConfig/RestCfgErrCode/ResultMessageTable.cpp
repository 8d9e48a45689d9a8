#include "ResultMessageTable.h"

namespace Tavrine
{

const std::map<int, std::string> ResultMessageTable = {
    {0, "Succeed."},
    {1, "System reboot is required for the new value to take effect."},
    {2, "There are no pending values on the current system."},
    {3, "BMC account is created successfully."},
    {4, "Password has been changed successfully"},
    {5, "Succeed with notify."},
    {6, "Fail to run command."},
    {7, "One or more setting fails on all group command process."},
    {8, "The property is invalid."},
    {9, "The property does not exist."},
    {10, "New value of the setting is invalid."},
    {11, "Redfish config does not support this function."},
    {13, "Redfish config internal error."},
    {15, "Redfish config external error."},
    {16, "Parameter invalid."},
    {17, "Fail to parse configuration file"},
    {18, "Fail to change the setting to new value."},
    {19, "Fail to show setting value."},
    {20, "Could not find the setting."},
    {21, "The default value of the setting is empty."},
    {22, "The data is not complete."},
    {24, "Current connection could not be used."},
    {25, "Fail to generate the dependency expression of the setting."},
    {26, "Fail to query the setting."},
    {27, "Fail to parse the HTTP response."},
    {28, "Fail in Redfish action."},
    {29, "Fail to parse the template file to generate the certificate."},
    {30, "Some values are invalid in the template file for the certificate."},
    {31, "The certificate does not exist."},
    {32, "BMC Internal error."},
    {33, "BMC is not ready."},
    {34, "The setting is filtered."},
    {38, "Failed to open file."},
};

} // namespace Tavrine
