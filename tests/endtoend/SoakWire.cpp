#include "SoakWire.h"

#include <utility>

using tooltest::Fault;

namespace soak
{

Wire::Wire(const std::string& port)
    : m_Proxy(
          std::make_unique<tooltest::FaultyProxy>(port, [this](int, const std::string& line) { return Judge(line); }))
{
}

TavrineConnection::ConnectionInfo Wire::Info() const
{
    const std::string url = m_Proxy->Url();
    TavrineConnection::ConnectionInfo info;
    info.Host = "127.0.0.1";
    info.Port = static_cast<std::uint16_t>(std::stoi(url.substr(url.rfind(':') + 1)));
    info.User = "admin";
    info.Password = "password";
    info.Flags = TavrineConnection::FlagPlainHttp;
    return info;
}

void Wire::Begin(const Harm* harm, int at)
{
    const std::lock_guard lock(m_Mutex);
    m_Harm = harm;
    m_At = at;
    m_Exchanges.clear();
}

std::vector<Exchange> Wire::End()
{
    const std::lock_guard lock(m_Mutex);
    m_Harm = nullptr;
    return std::exchange(m_Exchanges, {});
}

Fault Wire::Judge(const std::string& line)
{
    const std::lock_guard lock(m_Mutex);
    const bool hit = m_Harm != nullptr && static_cast<int>(m_Exchanges.size()) + 1 == m_At;
    m_Exchanges.push_back({line, hit ? m_Harm : nullptr});
    return hit ? m_Harm->OnTheWay : Fault::None;
}

} // namespace soak
