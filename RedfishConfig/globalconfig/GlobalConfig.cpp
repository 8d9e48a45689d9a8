#include "GlobalConfig.h"

#include <cstdlib>
#include <memory>
#include <mutex>

#include "ConfigFile.h"

namespace Tavrine
{

namespace
{

struct Cache
{
    std::mutex Mutex;
    std::shared_ptr<const ConfigFile::Content> Current;
};

// Never destroyed: destructors of other static objects may still ask.
Cache& TheCache()
{
    static Cache& cache = *new Cache;
    return cache;
}

// What is returned stays valid while another thread reloads.
std::shared_ptr<const ConfigFile::Content> CurrentContent()
{
    Cache& cache = TheCache();
    const std::lock_guard lock(cache.Mutex);
    if (!cache.Current)
    {
        const auto candidates = ConfigFile::Candidates([](const char* name) { return std::getenv(name); });
        cache.Current = std::make_shared<const ConfigFile::Content>(ConfigFile::Load(candidates));
    }
    return cache.Current;
}

} // namespace

int GlobalConfig::GetConfigItem(const std::string key, std::string& value)
{
    const auto content = CurrentContent();
    if (!content->Error.empty())
    {
        return 2;
    }
    const auto found = content->Items.find(key);
    if (found == content->Items.end())
    {
        return 1;
    }
    value = found->second;
    return 0;
}

std::map<std::string, std::string> GlobalConfig::GetTable(const std::string& name)
{
    const auto content = CurrentContent();
    const auto found = content->Tables.find(name);
    return found != content->Tables.end() ? found->second : std::map<std::string, std::string>();
}

std::string GlobalConfig::LoadError() { return CurrentContent()->Error; }

std::vector<std::string> GlobalConfig::Unread(const std::set<std::string>& items, const std::set<std::string>& tables)
{
    return ConfigFile::Unread(*CurrentContent(), items, tables);
}

void GlobalConfig::Reload()
{
    Cache& cache = TheCache();
    const std::lock_guard lock(cache.Mutex);
    cache.Current.reset();
}

} // namespace Tavrine
