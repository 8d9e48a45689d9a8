#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "BmcConnection.h"
#include "ConnectionInfo.h"
#include "RedfishConfigResult.h"
#include "RegistryStore.h"

namespace Tavrine
{

class RedfishClient;

/// Completes the identifier of a registry to the path of its text.
using RegistryFinder = std::function<RedfishConfigResult(std::string& path)>;

/// Reads the attribute registries of one BMC, and keeps them on disk where the profile
/// says so. A copy serves only while the BMC itself says, to each read, that what lies where
/// the copy was found is still the same (RFC 9110, If-None-Match); the lists of registries
/// are not read then. The copies of one BMC are never offered to another, nor those
/// that came over a less trusted connection.
class RegistryCache
{
  public:
    RegistryCache(const TavrineConnection::ConnectionInfo& info, const TavrineConnection::ConnectionProfile& profile);

    /// @param find  asked where no copy serves.
    /// @return as `find` or RedfishClient::Get; `text` is untouched on failure.
    RedfishConfigResult Read(RedfishClient& client, const std::string& identifier, const RegistryFinder& find,
                             std::string& text) const;

  private:
    std::string KeyOf(const std::string& identifier) const;

    RegistryStore m_Store;
    std::string m_Peer;
    std::string m_Trust;
    std::string m_Language;
};

/// Whether an ETag is fit for If-None-Match: the form of RFC 9110, or the same without
/// its quotes, as some services send it. "*" is none, and neither is one that is empty.
bool IsUsableTag(std::string_view tag);

} // namespace Tavrine
