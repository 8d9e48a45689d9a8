#include "SettingSelection.h"

namespace Tavrine::Tool
{

Prefixes ShownPrefixes(RedfishConfigProc& front) { return {front.m_Prefix, front.GetSecondPrefix()}; }

std::string BareGroupKey(const std::string& key, const Prefixes& prefixes)
{
    return key.starts_with(prefixes.Second + ".") ? key.substr(prefixes.Second.size() + 1) : key;
}

std::string SingleKey(const std::string& key, const Prefixes& prefixes)
{
    return key.starts_with(prefixes.Second + ".") ? prefixes.First + key.substr(prefixes.Second.size()) : key;
}

} // namespace Tavrine::Tool
