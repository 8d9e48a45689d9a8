#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "../tool/FaultyProxy.h"
#include "ConnectionInfo.h"

namespace soak
{

/// One request of an operation, and what was done with it.
struct Exchange
{
    std::string Line;
    tooltest::Fault Fault = tooltest::Fault::None;

    /// The BMC got it, whatever came back.
    bool Arrived() const { return Fault != tooltest::Fault::Busy && Fault != tooltest::Fault::CutBefore; }
};

/// The way from the library to the BMC: it tells what went over it, and does harm to order.
class Wire
{
  public:
    explicit Wire(const std::string& port);
    Wire(const Wire&) = delete;
    Wire& operator=(const Wire&) = delete;

    TavrineConnection::ConnectionInfo Info() const;
    /// @param at  the request of the coming operation that the fault hits, from 1; 0 for none.
    void Begin(tooltest::Fault fault, int at);
    /// The requests since Begin.
    std::vector<Exchange> End();

  private:
    tooltest::Fault Judge(const std::string& line);

    std::mutex m_Mutex;
    tooltest::Fault m_Fault = tooltest::Fault::None;
    int m_At = 0;
    std::vector<Exchange> m_Exchanges;
    /// Last: it stops before what it judges by goes.
    std::unique_ptr<tooltest::FaultyProxy> m_Proxy;
};

} // namespace soak
