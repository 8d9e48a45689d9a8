#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "../tool/FaultyProxy.h"
#include "ConnectionInfo.h"

namespace soak
{

/// What goes wrong with one request: on the way to the BMC, or in the BMC itself.
struct Harm
{
    const char* Name;
    tooltest::Fault OnTheWay = tooltest::Fault::None;
    /// Effect of a rule of the simulated BMC.
    const char* Effect = nullptr;
    /// The BMC carries the request out all the same.
    bool Done = false;
};

/// One request of an operation, and what was done with it.
struct Exchange
{
    std::string Line;
    const Harm* What = nullptr;

    /// The BMC carried it out, whatever came back.
    bool Arrived() const { return What == nullptr || What->Done; }
};

/// The way from the library to the BMC: it tells what went over it, and does harm to order.
class Wire
{
  public:
    explicit Wire(const std::string& port);
    Wire(const Wire&) = delete;
    Wire& operator=(const Wire&) = delete;

    TavrineConnection::ConnectionInfo Info() const;
    /// @param harm  null for none.
    /// @param at  the request of the coming operation that it hits, from 1.
    void Begin(const Harm* harm, int at);
    /// The requests since Begin.
    std::vector<Exchange> End();

  private:
    tooltest::Fault Judge(const std::string& line);

    std::mutex m_Mutex;
    const Harm* m_Harm = nullptr;
    int m_At = 0;
    std::vector<Exchange> m_Exchanges;
    /// Last: it stops before what it judges by goes.
    std::unique_ptr<tooltest::FaultyProxy> m_Proxy;
};

} // namespace soak
