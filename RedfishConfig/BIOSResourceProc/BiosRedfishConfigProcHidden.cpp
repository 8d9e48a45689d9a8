// Which settings are taken out of answers: by configured keywords, and by a fixed list for
// one kind of system.
#include "BiosRedfishConfigProc.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <locale>
#include <string>
#include <vector>

#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/split.hpp>

#include "GlobalConfig.h"
#include "Trace.h"

namespace Tavrine
{

namespace
{

const std::string HIDDEN_CONFIG_KEYWORDS_LIST = "HIDDEN_CONFIG_KEYWORDS_LIST";

/// The value of m_SystemKind for which the fixed list holds.
constexpr int HardcodedSystemKind = 4;

constexpr std::array<const char*, 9> HardcodedNames = {
    "Q00066_L1_Stride_Prefetcher",     "Q00090_Memory_Healing_BIST",
    "Q00091_Mem_BIST_Test_Select",     "Q00092_Mem_BIST_Post_Package_Repair_Type",
    "Q00093_Mem_CE_PFA_Test_Mode",     "Q00138_Disable_PCIe_Completion_Timeout",
    "Q00140_PCIe_Ten_Bit_Tag_Support", "Q00099_PMU_Mem_BIST_Test_Select",
    "Q00100_Mem_BIST_Execution_Mode",
};

template <typename Map> void DropMatches(Map& map, const std::vector<std::string>& keywords)
{
    std::erase_if(map,
                  [&keywords](const auto& entry)
                  {
                      return std::any_of(keywords.begin(), keywords.end(),
                                         [&entry](const std::string& keyword)
                                         { return entry.first.find(keyword) != std::string::npos; });
                  });
}

template <typename Map> void DropHardcoded(Map& map, int systemKind, const std::string& secondPrefix)
{
    if (systemKind != HardcodedSystemKind || map.empty())
    {
        return;
    }
    const bool prefixed = std::strstr(map.begin()->first.c_str(), secondPrefix.c_str()) != nullptr;
    for (const char* name : HardcodedNames)
    {
        map.erase(prefixed ? secondPrefix + "." + name : name);
    }
}

} // namespace

std::vector<std::string> BiosRedfishConfigProc::GetGlobalConfigHiddenKeywords()
{
    std::string text;
    if (GlobalConfig::GetConfigItem(HIDDEN_CONFIG_KEYWORDS_LIST, text) != 0)
    {
        TAVRINE_LOG(LogFailure) << "Failed to get the all keywords that be used to hide the settings. Eg. Raid Card";
        return {};
    }
    std::vector<std::string> keywords;
    boost::algorithm::split(keywords, text, boost::algorithm::is_any_of(","));
    // No regular expressions for this: to compile one writes a table of the locale that all threads share.
    const std::locale locale;
    for (std::string& keyword : keywords)
    {
        std::erase_if(keyword, [&](char character) { return character == '"' || std::isspace(character, locale); });
    }
    return keywords;
}

void BiosRedfishConfigProc::HiddenSettingsByKeywords(SettingStringMap& map)
{
    DropMatches(map, GetGlobalConfigHiddenKeywords());
    HardcodeHiddenSettings(map);
}

void BiosRedfishConfigProc::HiddenSettingsByKeywords(SettingCompareMap& map)
{
    DropMatches(map, GetGlobalConfigHiddenKeywords());
    HardcodeHiddenSettings(map);
}

void BiosRedfishConfigProc::HardcodeHiddenSettings(SettingStringMap& map)
{
    DropHardcoded(map, m_SystemKind, m_SecondPrefix);
}

void BiosRedfishConfigProc::HardcodeHiddenSettings(SettingCompareMap& map)
{
    DropHardcoded(map, m_SystemKind, m_SecondPrefix);
}

} // namespace Tavrine
