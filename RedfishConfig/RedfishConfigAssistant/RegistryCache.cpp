#include "RegistryCache.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include <boost/json/array.hpp>
#include <boost/json/serialize.hpp>

#include "Log.h"
#include "PlainText.h"
#include "RedfishClient.h"
#include "RequestTarget.h"

namespace Tavrine
{

namespace
{

using TavrineConnection::ConnectionInfo;
using TavrineConnection::ConnectionProfile;

constexpr std::size_t MaxTagBytes = 256;
/// BMCBaseAssistant: a GET that was refused.
constexpr int CodeRefused = 26;

Origin OriginOf(const ConnectionInfo& info)
{
    return {(info.Flags & TavrineConnection::FlagPlainHttp) != 0, LowerAscii(info.Host), info.Port};
}

/// By what the other end of the connection is known to be the BMC.
std::string TrustOf(const ConnectionInfo& info, const ConnectionProfile& profile)
{
    if (!profile.PinnedSha256.empty())
    {
        return "pin " + LowerAscii(profile.PinnedSha256);
    }
    if ((info.Flags & TavrineConnection::FlagNoTlsVerify) != 0)
    {
        return "none";
    }
    return profile.CaFile.empty() ? "system" : "ca " + profile.CaFile;
}

bool IsBareTagCharacter(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
           std::string_view("-._:+/=").find(c) != std::string_view::npos;
}

} // namespace

bool IsUsableTag(std::string_view tag)
{
    if (tag.size() > MaxTagBytes)
    {
        return false;
    }
    const std::string_view opaque = tag.starts_with("W/\"") ? tag.substr(2) : tag;
    if (!opaque.starts_with('"'))
    {
        return !opaque.empty() && !opaque.starts_with("W/") &&
               std::all_of(opaque.begin(), opaque.end(), IsBareTagCharacter);
    }
    if (opaque.size() < 3 || !opaque.ends_with('"'))
    {
        return false;
    }
    const std::string_view content = opaque.substr(1, opaque.size() - 2);
    return std::all_of(content.begin(), content.end(), [](char c) { return c > 0x20 && c < 0x7f && c != '"'; });
}

RegistryCache::RegistryCache(const ConnectionInfo& info, const ConnectionProfile& profile)
    : m_Store(profile.RegistryFolder), m_Peer(OriginOf(info).Url()), m_Trust(TrustOf(info, profile)),
      m_Language(profile.Language)
{
}

std::string RegistryCache::KeyOf(const std::string& identifier) const
{
    return boost::json::serialize(boost::json::array{m_Peer, m_Trust, identifier, m_Language});
}

RedfishConfigResult RegistryCache::Read(RedfishClient& client, const std::string& identifier,
                                        const RegistryFinder& find, std::string& text) const
{
    const std::string key = KeyOf(identifier);
    std::optional<StoredText> kept = m_Store.Load(key);
    StoredText fresh;
    if (kept && IsUsableTag(kept->Tag) && PathFault(kept->Path).empty())
    {
        Revalidation check{kept->Tag};
        RedfishConfigResult result = client.Get(kept->Path, fresh.Text, &check);
        if (check.Unchanged)
        {
            Log(4, __FILE__, __LINE__).Stream()
                << "The copy of the registry " << CleanText(identifier, 200) << " holds";
            text = std::move(kept->Text);
            return result;
        }
        // It may lie elsewhere now, and some services refuse a condition instead of passing over it.
        if (result != 0 && result != CodeRefused)
        {
            return result;
        }
        fresh.Path = result == 0 ? kept->Path : std::string();
        fresh.Tag = check.Tag;
    }
    std::string path;
    RedfishConfigResult result = find(path);
    if (result == 0 && path != fresh.Path)
    {
        Revalidation check;
        result = client.Get(path, fresh.Text, &check);
        fresh.Path = path;
        fresh.Tag = check.Tag;
    }
    if (result != 0)
    {
        return result;
    }
    if (fresh.Text.empty() || !IsUsableTag(fresh.Tag))
    {
        m_Store.Drop(key);
    }
    else
    {
        m_Store.Save(key, fresh);
    }
    text = std::move(fresh.Text);
    return result;
}

} // namespace Tavrine
