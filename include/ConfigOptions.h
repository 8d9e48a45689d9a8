#pragma once

#include <cstdint>

namespace Tavrine
{

/// Options of one front object, copied by value wherever they are needed.
struct Config_Options
{
    /// New values of settings whose current value is a number are taken in hexadecimal, and the text
    /// output of values shows such settings so; lists of valid values have both forms. JSON,
    /// defaults, saves and comparisons stay decimal.
    bool HexValueMode = false;
    /// On a UEFI system: values, pending values and changes of single protected settings are allowed;
    /// without it they are answered with code 34.
    bool allowProtectedSettings = false;
    /// Kept for the layout; nothing reads it.
    bool ReservedOption = false;
    /// Names from the caller may be old names (see BIOSCompatibleModule), which answers then
    /// give back (see RedfishConfigProc).
    bool LegacyNameMode = false;
    /// Of values and of comparisons with pending ones: 0 text, one entry a setting; 1 JSON text
    /// under one key; any other, nothing. 2: valid values are answered with the whole
    /// attribute registry.
    std::int32_t OutputFormat = 0;
};
static_assert(sizeof(Config_Options) == 8);

/// The kind of system that a front object manages. The numbers are fixed; a
/// value without a name counts as an ordinary BIOS system.
enum ConfigurateSupportedSystemType : std::int32_t
{
    SystemTypeBios = 0,
    /// Systems whose reset action wants a "ResetType" in its body.
    SystemTypeResetTypeFirst = 1,
    SystemTypeResetTypeSecond = 4,
    /// Settings may be protected; the OEM actions carry those.
    SystemTypeUefi = 5,
    /// What the value assistants hand to their REST client.
    SystemTypeValueResource = 6,
};

/// Tells the setting manager what a context or a listing is made for.
enum filterAction : std::int32_t
{
    FilterChange = 8,
    FilterSave = 14,
    FilterRestoreSameSystem = 15,
    FilterRestoreOtherSystem = 16,
    FilterDefaultOne = 17,
    FilterDefaultAll = 18,
};

} // namespace Tavrine
