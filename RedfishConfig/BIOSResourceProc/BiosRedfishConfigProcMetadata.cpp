// What the registry says about settings: valid values, defaults, descriptions, what a save
// keeps.
#include "BiosRedfishConfigProc.h"

#include <utility>

#include "RedfishConfigSettingManager.h"
#include "Results.h"
#include "Trace.h"

namespace Tavrine
{

/// How the three queries differ; an empty text is not logged.
struct BiosRedfishConfigProc::MetadataQuery
{
    const char* EntryText;
    RedfishConfigResult (RedfishConfigSettingManager::*All)(SettingStringMap&);
    RedfishConfigResult (RedfishConfigSettingManager::*One)(const std::string, std::string&);
    const char* ErrorText;
    const char* ExitText;
    /// With OutputFormat 2 the whole registry is the answer.
    bool OffersSchema;
};

namespace
{

/// Value of Config_Options::OutputFormat.
constexpr int SchemaOutput = 2;

} // namespace

RedfishConfigResult BiosRedfishConfigProc::QuerySettingValidValues(SettingStringMap& values, const std::string& setting)
{
    static const MetadataQuery Query = {
        "Enter Bios QuerySettingValidValues() for setting ",
        &RedfishConfigSettingManager::QueryGroupSettingValidValues,
        &RedfishConfigSettingManager::QuerySettingValidValues,
        "Query setting valid values error.",
        "",
        true,
    };
    return QueryMetadata(Query, values, setting);
}

RedfishConfigResult BiosRedfishConfigProc::QuerySettingDefaultValues(SettingStringMap& values,
                                                                     const std::string& setting)
{
    static const MetadataQuery Query = {
        "Enter Bios QuerySettingDefaultValues() for setting ",
        &RedfishConfigSettingManager::QueryGroupSettingDefaultValues,
        &RedfishConfigSettingManager::QuerySettingDefaultValue,
        "Query setting default values error.",
        "Exit BiosRedfishConfigProc::QuerySettingDefaultValues()",
        false,
    };
    return QueryMetadata(Query, values, setting);
}

RedfishConfigResult BiosRedfishConfigProc::QuerySettingDescriptions(SettingStringMap& values,
                                                                    const std::string& setting)
{
    // Log readers know this operation by the texts of the defaults.
    static const MetadataQuery Query = {
        "Enter BiosRedfishConfigProc::QuerySettingDescriptions(), try to get the description of ",
        &RedfishConfigSettingManager::QueryGroupSettingDescriptions,
        &RedfishConfigSettingManager::QuerySettingDescription,
        "Query setting default values error.",
        "Exit BiosRedfishConfigProc::QuerySettingDefaultValues()",
        false,
    };
    return QueryMetadata(Query, values, setting);
}

RedfishConfigResult BiosRedfishConfigProc::QueryMetadata(const MetadataQuery& query, SettingStringMap& values,
                                                         const std::string& setting)
{
    TAVRINE_LOG(LogOperation) << query.EntryText << setting;
    RedfishConfigResult result = QuerySettingManager(false);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed to get setting manager with error: " << result.ErrorMsg();
        return result;
    }
    if (query.OffersSchema && m_Options.OutputFormat == SchemaOutput)
    {
        return GenerateSchemaJsonStr(values);
    }

    SettingStringMap found;
    if (setting.empty())
    {
        result = (m_SettingManager.get()->*query.All)(found);
        HiddenSettingsByKeywords(found);
    }
    else
    {
        const std::string workName = CurrentNameOf(setting);
        result = (m_SettingManager.get()->*query.One)(workName, found[setting]);
        if (result != ResultSuccess)
        {
            RenameInMessage(result, workName, ShownName(setting));
            return result;
        }
    }
    if (result != ResultSuccess && result != ResultPartlyFailed)
    {
        TAVRINE_LOG(LogFailure) << query.ErrorText;
        return result;
    }

    if (ShowsBareNames())
    {
        values = std::move(found);
    }
    else
    {
        const std::string& prefix = setting.empty() ? m_SecondPrefix : m_Prefix;
        for (const auto& [name, text] : found)
        {
            values[prefix + "." + name] = text;
        }
    }
    if (*query.ExitText != '\0')
    {
        TAVRINE_LOG(LogOperation) << query.ExitText;
    }
    return result;
}

RedfishConfigResult BiosRedfishConfigProc::QuerySaveSettingValues(SettingStringMap& values)
{
    RedfishConfigResult result = QuerySettingManager(false);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Failed to get setting manager with error: " << result.ErrorMsg();
        return result;
    }
    SettingStringMap found;
    result = m_SettingManager->FetchSaveSettingValues(found, FilterSave);
    if (result != ResultSuccess)
    {
        TAVRINE_LOG(LogFailure) << "Fetch save setting values error.";
        return result;
    }
    HiddenSettingsByKeywords(found);
    for (auto& [name, text] : found)
    {
        // Names with one prefix stay in their order.
        values.insert_or_assign(values.end(), m_SecondPrefix + "." + name, std::move(text));
    }
    return result;
}

} // namespace Tavrine
