#include "FaultPlan.h"

#include <utility>

namespace bmcsim
{

void FaultPlan::Set(std::vector<FaultRule> rules)
{
    std::vector<Counted> counted;
    for (FaultRule& rule : rules)
    {
        counted.push_back({std::move(rule)});
    }
    const std::lock_guard lock(m_Mutex);
    m_Rules = std::move(counted);
}

std::optional<Fault> FaultPlan::Next(const std::string& method, const std::string& path)
{
    const std::lock_guard lock(m_Mutex);
    std::optional<Fault> chosen;
    for (Counted& counted : m_Rules)
    {
        if (!counted.Rule.Names(method, path))
        {
            continue;
        }
        ++counted.Met;
        if (!chosen && counted.Met >= counted.Rule.First && counted.Met <= counted.Rule.Last)
        {
            chosen = counted.Rule.What;
        }
    }
    return chosen;
}

} // namespace bmcsim
