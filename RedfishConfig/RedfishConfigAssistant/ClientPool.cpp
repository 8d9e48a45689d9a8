#include "ClientPool.h"

#include <map>
#include <mutex>
#include <string>

#include "PlainText.h"
#include "RedfishClient.h"
#include "TlsCheck.h"

namespace Tavrine::ClientPool
{

namespace
{

using TavrineConnection::ConnectionInfo;
using TavrineConnection::ConnectionProfile;

/// All fields of a record as one digest, so that the table of clients holds no
/// password.
Sha256Digest ContentOf(const ConnectionInfo& info)
{
    SecretText content;
    std::string& text = content.Buffer();
    text.reserve(info.Host.size() + info.User.size() + info.Password.size() + 200);
    for (const std::string* field : {&info.Host, &info.User, &info.Password})
    {
        text.append(std::to_string(field->size())).append(":").append(*field);
    }
    for (const std::uint32_t number :
         {std::uint32_t{info.Port}, std::uint32_t{info.ConnectTimeout}, std::uint32_t{info.RequestTimeout},
          info.MaxResponseBytes, info.Retries, info.RetryPause, std::uint32_t{info.Flags}})
    {
        text.append(",").append(std::to_string(number));
    }
    return Sha256Of(text);
}

template <typename Key> void DropDead(std::map<Key, std::weak_ptr<RedfishClient>>& clients)
{
    std::erase_if(clients, [](const auto& entry) { return entry.second.expired(); });
}

struct Pool
{
    std::mutex Mutex;
    std::map<std::uint32_t, std::weak_ptr<RedfishClient>> ByHandle;
    std::map<Sha256Digest, std::weak_ptr<RedfishClient>> ByContent;
    std::uint32_t LastHandle = 0;
};

Pool& ThePool()
{
    // Never destroyed: static objects of a program may use it to the very end.
    static Pool* const pool = new Pool;
    return *pool;
}

} // namespace

std::pair<std::uint32_t, std::shared_ptr<RedfishClient>> Register(const ConnectionInfo& info,
                                                                  const ConnectionProfile& profile)
{
    auto client = std::make_shared<RedfishClient>(info, profile);
    Pool& pool = ThePool();
    const std::lock_guard lock(pool.Mutex);
    DropDead(pool.ByHandle);
    do
    {
        ++pool.LastHandle;
    } while (pool.LastHandle == 0 || pool.ByHandle.contains(pool.LastHandle));
    pool.ByHandle[pool.LastHandle] = client;
    return {pool.LastHandle, client};
}

std::shared_ptr<RedfishClient> Acquire(const ConnectionInfo& info)
{
    Pool& pool = ThePool();
    const std::lock_guard lock(pool.Mutex);
    if (info.ProfileId != 0)
    {
        const auto found = pool.ByHandle.find(info.ProfileId);
        std::shared_ptr<RedfishClient> client = found == pool.ByHandle.end() ? nullptr : found->second.lock();
        return client ? client : RedfishClient::MakeClosed(info);
    }
    DropDead(pool.ByContent);
    std::weak_ptr<RedfishClient>& entry = pool.ByContent[ContentOf(info)];
    std::shared_ptr<RedfishClient> client = entry.lock();
    if (!client)
    {
        client = std::make_shared<RedfishClient>(info, ConnectionProfile());
        entry = client;
    }
    return client;
}

} // namespace Tavrine::ClientPool
