#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "BmcConnection.h"
#include "ConnectionInfo.h"

namespace Tavrine
{

class RedfishClient;

/// The clients of this process, one for each BMC that is spoken to. It keeps none of
/// them alive. Safe from any thread.
namespace ClientPool
{

/// Makes a client with a profile of its own.
/// @return the client, and the handle under which Acquire finds it while it lives.
std::pair<std::uint32_t, std::shared_ptr<RedfishClient>> Register(const TavrineConnection::ConnectionInfo& info,
                                                                  const TavrineConnection::ConnectionProfile& profile);

/// The client of a record: the one of its ProfileId, or the one that all records of
/// the same content share. A handle whose client is gone gives a client that refuses
/// every request, since what its profile demanded is not known any more. Never null.
std::shared_ptr<RedfishClient> Acquire(const TavrineConnection::ConnectionInfo& info);

} // namespace ClientPool

} // namespace Tavrine
