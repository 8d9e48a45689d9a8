#include "Sessions.h"

#include "Digest.h"

#include <algorithm>

namespace bmcsim
{

std::optional<Sessions::Opened> Sessions::Open()
{
    const std::lock_guard lock(m_Mutex);
    DropExpired();
    const std::string token = RandomHex(16);
    if (token.empty())
    {
        return std::nullopt;
    }
    if (m_Sessions.size() >= MaxOpen)
    {
        m_Sessions.pop_front();
    }
    const Session& session =
        m_Sessions.emplace_back(Session{std::to_string(++m_LastNumber), token, std::chrono::steady_clock::now()});
    return Opened{session.Id, session.Token};
}

bool Sessions::Use(const std::string& token)
{
    const std::lock_guard lock(m_Mutex);
    DropExpired();
    const auto found = std::find_if(m_Sessions.begin(), m_Sessions.end(),
                                    [&token](const Session& session) { return SameSecret(session.Token, token); });
    if (found == m_Sessions.end())
    {
        return false;
    }
    found->LastUse = std::chrono::steady_clock::now();
    return true;
}

bool Sessions::IsOpen(const std::string& id)
{
    const std::lock_guard lock(m_Mutex);
    DropExpired();
    return Find(id) != m_Sessions.end();
}

bool Sessions::Close(const std::string& id)
{
    const std::lock_guard lock(m_Mutex);
    DropExpired();
    const auto found = Find(id);
    if (found == m_Sessions.end())
    {
        return false;
    }
    m_Sessions.erase(found);
    return true;
}

std::vector<std::string> Sessions::Ids()
{
    const std::lock_guard lock(m_Mutex);
    DropExpired();
    std::vector<std::string> ids;
    for (const Session& session : m_Sessions)
    {
        ids.push_back(session.Id);
    }
    return ids;
}

void Sessions::DropExpired()
{
    const auto now = std::chrono::steady_clock::now();
    m_Sessions.remove_if([&](const Session& session) { return now - session.LastUse >= m_Timeout; });
}

std::list<Sessions::Session>::iterator Sessions::Find(const std::string& id)
{
    return std::find_if(m_Sessions.begin(), m_Sessions.end(),
                        [&id](const Session& session) { return session.Id == id; });
}

} // namespace bmcsim
