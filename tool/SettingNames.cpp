#include "SettingNames.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/split.hpp>

#include "BIOSCompatibleModule.h"
#include "ConfigOptions.h"
#include "GlobalConfig.h"
#include "Options.h"
#include "TextBytes.h"

namespace Tavrine::Tool
{
namespace
{

constexpr std::string_view TakenOutOfKeywords = " \t\n\v\f\r\"";

/// By ASCII alone, whatever the locale.
bool SameLetter(char one, char other) { return LowerAscii(one) == LowerAscii(other); }

} // namespace

Prefixes PrefixesOf(const Options& options)
{
    if (!options.FirstPrefix.empty())
    {
        return {options.FirstPrefix, options.SecondPrefix};
    }
    const char* own = options.SystemType == SystemTypeUefi ? "UEFI" : "BIOS";
    return {own, own};
}

std::string BareName(const std::string& name, const Prefixes& prefixes)
{
    for (const std::string& prefix : {prefixes.First, prefixes.Second})
    {
        if (name.size() > prefix.size() && name[prefix.size()] == '.' &&
            std::equal(prefix.begin(), prefix.end(), name.begin(), SameLetter))
        {
            return name.substr(prefix.size() + 1);
        }
    }
    return name;
}

std::string CurrentName(const std::string& name, bool legacyNames)
{
    Config_Options options;
    options.LegacyNameMode = legacyNames;
    std::string current = name;
    BIOSCompatibleModule(options).ConvertNameFromOldToNew(name, current);
    return current;
}

std::string WithShownName(std::string message, const std::string& name, const std::string& shownName)
{
    const std::string bare = "setting " + name;
    const std::size_t at = message.find(bare);
    return at == std::string::npos ? message : message.replace(at, bare.size(), "setting " + shownName);
}

std::vector<std::string> BareNames(const std::vector<std::string>& names, const Prefixes& prefixes)
{
    std::vector<std::string> bare;
    std::set<std::string> seen;
    for (const std::string& name : names)
    {
        std::string stripped = BareName(name, prefixes);
        if (seen.insert(stripped).second)
        {
            bare.push_back(std::move(stripped));
        }
    }
    return bare;
}

std::vector<std::string> SplitKeywords(const std::string& text)
{
    std::vector<std::string> keywords;
    boost::algorithm::split(keywords, text, boost::algorithm::is_any_of(","));
    for (std::string& keyword : keywords)
    {
        std::erase_if(keyword, [](char c) { return TakenOutOfKeywords.find(c) != std::string_view::npos; });
    }
    return keywords;
}

std::vector<std::string> HiddenKeywords()
{
    std::string text;
    return GlobalConfig::GetConfigItem(HiddenKeywordsItem, text) == 0 ? SplitKeywords(text)
                                                                      : std::vector<std::string>();
}

bool IsHidden(const std::string& shownName, const std::vector<std::string>& keywords)
{
    return std::any_of(keywords.begin(), keywords.end(),
                       [&](const std::string& keyword) { return shownName.find(keyword) != std::string::npos; });
}

} // namespace Tavrine::Tool
